// An Automation object whose calls a test sees as they arrive, references and all.
#pragma once

#include <oaidl.h>

#include <functional>
#include <string>
#include <vector>

#include "com/Object.h"
#include "com/RefCounted.h"

namespace mbom::test {

class RawObject final : public com::RefCounted<IDispatch> {
 public:
  // Called with each member's name and its arguments, which stand in reverse order; gives the result.
  using Handler = std::function<com::Variant(const std::wstring& member, const DISPPARAMS& arguments)>;

  static com::Object Make(Handler handler) {
    return com::Object(com::Ptr<IDispatch>(new RawObject(std::move(handler))));
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != IID_IDispatch) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = this;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID /*iid*/, LPOLESTR* names, UINT /*count*/, LCID /*locale*/,
                                          DISPID* ids) override {
    members_.emplace_back(names[0]);
    ids[0] = static_cast<DISPID>(members_.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID /*iid*/, LCID /*locale*/, WORD /*flags*/,
                                   DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* /*info*/,
                                   UINT* /*argument*/) override {
    com::Variant value = handler_(members_.at(static_cast<size_t>(id) - 1), *arguments);
    if (result) *result = value.Detach();
    return S_OK;
  }

 private:
  explicit RawObject(Handler handler) : handler_(std::move(handler)) {}

  Handler handler_;
  std::vector<std::wstring> members_;
};

} // namespace mbom::test
