#include "src/frame/Collections.h"

#include "com/ComError.h"

namespace mbom {

com::Variant Dictionary::Require(const wchar_t* key) const {
  constexpr int kInvalidCall = 5;
  if (!Holds(key))
    com::RaiseRuntimeError(kInvalidCall, L"QorvaneMBomBill",
                           (L"The Dictionary has no value '" + std::wstring(key) + L"'.").c_str());
  return (*this)[key];
}

} // namespace mbom
