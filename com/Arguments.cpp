#include "com/Arguments.h"

#include <oleauto.h>

#include <algorithm>

#include "com/ComError.h"
#include "com/Object.h"

namespace com {
namespace {

// Whether there is something at the end of a reference. A variant may be a reference itself, but not to
// another variant.
bool HasTarget(const VARIANTARG& argument) {
  if ((argument.vt & VT_BYREF) == 0) return true;
  if (argument.byref == nullptr) return false;
  if (argument.vt != (VT_BYREF | VT_VARIANT)) return true;
  const VARIANT& target = *argument.pvarVal;
  return (target.vt & VT_BYREF) == 0 || (target.byref != nullptr && target.vt != argument.vt);
}

} // namespace

HRESULT Arguments::Bind(const DISPPARAMS& params, WORD flags, UINT* badArgument) {
  const size_t most = parameters_.size();
  first_ = params.rgvarg;
  if (InPlace(params, flags, most))
    for (size_t i = 0; i < most; ++i) given_[i] = first_ + (most - 1 - i);
  else if (const HRESULT hr = Sort(params, flags, badArgument); FAILED(hr))
    return hr;

  for (size_t i = 0; i < most; ++i) {
    if (given_[i] && !HasTarget(*given_[i])) {
      if (badArgument) *badArgument = Position(i);
      return E_INVALIDARG;
    }
    if (given_[i] && !IsOmitted(*given_[i])) continue;
    if (parameters_[i].optional) {
      given_[i] = nullptr;
      continue;
    }
    if (!given_[i]) return params.cNamedArgs ? DISP_E_PARAMNOTOPTIONAL : DISP_E_BADPARAMCOUNT;
    if (badArgument) *badArgument = Position(i);
    return DISP_E_PARAMNOTOPTIONAL;
  }
  return S_OK;
}

HRESULT Arguments::Sort(const DISPPARAMS& params, WORD flags, UINT* badArgument) {
  const size_t most = parameters_.size();
  if (params.cArgs > most || params.cNamedArgs > params.cArgs) return DISP_E_BADPARAMCOUNT;
  // Named arguments come first in the array, the positional ones after them, last first.
  const size_t positional = params.cArgs - params.cNamedArgs;
  for (size_t i = 0; i < most; ++i) given_[i] = i < positional ? first_ + (params.cArgs - 1 - i) : nullptr;
  for (UINT position = 0; position < params.cNamedArgs; ++position) {
    const DISPID name = params.rgdispidNamedArgs[position];
    const size_t parameter = IsNewValue(name, flags) ? most - 1 : static_cast<size_t>(name);
    if (parameter >= most || given_[parameter]) {
      if (badArgument) *badArgument = position;
      return DISP_E_PARAMNOTFOUND;
    }
    given_[parameter] = first_ + position;
  }
  return S_OK;
}

Variant Arguments::In(size_t i) const {
  const Parameter& parameter = parameters_[i];
  if (given_[i]) {
    Variant value(*given_[i]);
    // A reference to a variable that was itself an omitted argument of its procedure.
    if (!(value.IsMissing() && parameter.optional)) return value;
  }
  if (!parameter.fallback.IsMissing() || parameter.type == VT_VARIANT) return parameter.fallback;
  if (parameter.type == VT_DISPATCH) return Variant(Object());
  return Variant().As(parameter.type);
}

VARIANTARG* Arguments::Out(size_t i) const {
  return given_[i] && (given_[i]->vt & VT_BYREF) != 0 ? given_[i] : nullptr;
}

bool CanWriteBack(const VARIANTARG& reference, VARTYPE type) {
  if (reference.vt == (VT_BYREF | VT_VARIANT))
    return (reference.pvarVal->vt & VT_BYREF) == 0 || CanWriteBack(*reference.pvarVal, type);
  if (type == VT_VARIANT) return true;
  switch (reference.vt & ~VT_BYREF) {
  case VT_INT: return type == VT_I4;
  case VT_UNKNOWN: return type == VT_DISPATCH;
  default: return type == (reference.vt & ~VT_BYREF);
  }
}

void WriteBack(const VARIANTARG& reference, const Variant& value) {
  if (reference.vt == (VT_BYREF | VT_VARIANT)) {
    if ((reference.pvarVal->vt & VT_BYREF) != 0) return WriteBack(*reference.pvarVal, value);
    Check(VariantCopy(reference.pvarVal, const_cast<VARIANT*>(&value.raw())));
    return;
  }
  const VARTYPE type = reference.vt & static_cast<VARTYPE>(~VT_BYREF);
  Variant copy = value.type() == type ? value : value.As(type);
  VARIANT converted = copy.Detach();
  switch (type) {
  case VT_BSTR: SysFreeString(std::exchange(*reference.pbstrVal, converted.bstrVal)); break;
  case VT_DISPATCH:
  case VT_UNKNOWN:
    if (IUnknown* old = std::exchange(*reference.ppunkVal, converted.punkVal)) old->Release();
    break;
  case VT_BOOL: *reference.pboolVal = converted.boolVal; break;
  case VT_I2: *reference.piVal = converted.iVal; break;
  case VT_I4:
  case VT_INT: *reference.plVal = converted.lVal; break;
  case VT_R4: *reference.pfltVal = converted.fltVal; break;
  case VT_R8:
  case VT_DATE: *reference.pdblVal = converted.dblVal; break;
  case VT_CY: *reference.pcyVal = converted.cyVal; break;
  default: VariantClear(&converted); throw ComError::FromSystem(DISP_E_TYPEMISMATCH);
  }
}

} // namespace com
