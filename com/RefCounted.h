// RefCounted: the base of every COM object. It counts references, starting at none, and deletes the object
// with the last one; while it lives it is a use of the module. QueryInterface is the object's own.
#pragma once

#include <unknwn.h>

#include <atomic>

#include "com/Module.h"

namespace com {

template <class... Interfaces>
class RefCounted : public Interfaces... {
 public:
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;

  STDMETHODIMP_(ULONG) AddRef() final { return ++references_; }
  STDMETHODIMP_(ULONG) Release() final {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  RefCounted() = default;
  virtual ~RefCounted() = default;

 private:
  std::atomic<ULONG> references_{0};
  ModuleUse use_;
};

} // namespace com
