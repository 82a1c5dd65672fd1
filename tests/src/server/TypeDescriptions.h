// Reading what a type library says.
#pragma once

#include <oaidl.h>

namespace mbom::test {

// The type of a parameter or a result, without the references that in/out adds. An object is a pointer to the
// dispatch interface, which the library may keep as a reference to it.
inline VARTYPE PlainType(const TYPEDESC& type, bool inOut) {
  const TYPEDESC* inner = inOut ? type.lptdesc : &type;
  if (inner->vt == VT_PTR) inner = inner->lptdesc;
  return inner->vt == VT_USERDEFINED ? static_cast<VARTYPE>(VT_DISPATCH) : inner->vt;
}

} // namespace mbom::test
