#include "standin/foundation/Enumerator.h"

#include <oleauto.h>

#include <algorithm>
#include <memory>
#include <new>

#include "com/RefCounted.h"

namespace standin {
namespace {

using com::Variant;
using Values = std::vector<Variant>;

class Enumerator final : public com::RefCounted<IEnumVARIANT> {
 public:
  Enumerator(std::shared_ptr<const Values> elements, size_t next)
      : elements_(std::move(elements)), next_(next) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IEnumVARIANT) return E_NOINTERFACE;
    *object = static_cast<IEnumVARIANT*>(this);
    AddRef();
    return S_OK;
  }

  STDMETHODIMP Next(ULONG wanted, VARIANT* out, ULONG* fetched) override {
    if (!out || (wanted != 1 && !fetched)) return E_POINTER;
    ULONG given = 0;
    HRESULT hr = S_OK;
    for (; given < wanted && next_ < elements_->size() && SUCCEEDED(hr); ++given) {
      VariantInit(&out[given]);
      hr = VariantCopy(&out[given], const_cast<VARIANT*>(&(*elements_)[next_].raw()));
      if (FAILED(hr)) break;
      ++next_;
    }
    if (fetched) *fetched = given;
    if (FAILED(hr)) return hr;
    return given == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const size_t left = elements_->size() - next_;
    next_ += std::min<size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    next_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** copy) override {
    if (!copy) return E_POINTER;
    *copy = new (std::nothrow) Enumerator(elements_, next_);
    if (!*copy) return E_OUTOFMEMORY;
    (*copy)->AddRef();
    return S_OK;
  }

 private:
  std::shared_ptr<const Values> elements_;
  size_t next_;
};

} // namespace

com::Ptr<IUnknown> MakeEnumerator(Values elements) {
  return com::Ptr<IUnknown>(new Enumerator(std::make_shared<const Values>(std::move(elements)), 0));
}

} // namespace standin
