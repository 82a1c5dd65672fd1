#include "src/frame/Collections.h"

#include "com/ComError.h"

namespace mbom {

com::Variant Dictionary::Require(const wchar_t* key) const {
  if (!Holds(key))
    com::Raise(com::RuntimeError::InvalidCall, L"QorvaneMBomBill",
               L"The Dictionary has no value '" + std::wstring(key) + L"'.");
  return (*this)[key];
}

} // namespace mbom
