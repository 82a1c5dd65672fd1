#include "com/Variant.h"

#include <oleauto.h>

#include <new>

#include "com/ComError.h"
#include "com/Object.h"
#include "com/Text.h"

namespace com {

Variant::Variant(bool value) noexcept : Variant() {
  v_.vt = VT_BOOL;
  v_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(int16_t value) noexcept : Variant() {
  v_.vt = VT_I2;
  v_.iVal = value;
}

Variant::Variant(int32_t value) noexcept : Variant() {
  v_.vt = VT_I4;
  v_.lVal = value;
}

Variant::Variant(double value) noexcept : Variant() {
  v_.vt = VT_R8;
  v_.dblVal = value;
}

Variant::Variant(std::wstring_view text) : Variant() {
  v_.bstrVal = NewBstr(text);
  v_.vt = VT_BSTR;
}

Variant::Variant(const Object& object) noexcept : Variant() {
  v_.vt = VT_DISPATCH;
  v_.pdispVal = Ptr<IDispatch>(object.pointer()).Detach();
}

Variant::Variant(Object&& object) noexcept : Variant() {
  v_.vt = VT_DISPATCH;
  v_.pdispVal = object.Detach();
}

Variant::Variant(const VARIANT& value) : Variant() {
  Check(VariantCopyInd(&v_, const_cast<VARIANT*>(&value)));
}

void Variant::CopyOwned(const Variant& other) {
  v_ = {};
  Check(VariantCopy(&v_, const_cast<VARIANT*>(&other.v_)));
}

Variant Variant::Null() noexcept {
  Variant result;
  result.v_.vt = VT_NULL;
  return result;
}

Variant Variant::Missing() noexcept {
  Variant result;
  result.v_.vt = VT_ERROR;
  result.v_.scode = DISP_E_PARAMNOTFOUND;
  return result;
}

Variant Variant::Attach(const VARIANT& owned) noexcept {
  Variant result;
  result.v_ = owned;
  return result;
}

Variant Variant::FromUnknown(const Ptr<IUnknown>& object) noexcept {
  Variant result;
  result.v_.vt = VT_UNKNOWN;
  result.v_.punkVal = Ptr<IUnknown>(object).Detach();
  return result;
}

Variant Variant::Date(double days) noexcept {
  Variant result;
  result.v_.vt = VT_DATE;
  result.v_.date = days;
  return result;
}

Variant Variant::Array(const Variant* values, size_t count) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count));
  if (!array) throw std::bad_alloc();
  Variant result;
  result.v_.vt = VT_ARRAY | VT_VARIANT;
  result.v_.parray = array;
  for (LONG i = 0; i < static_cast<LONG>(count); ++i)
    Check(SafeArrayPutElement(array, &i, const_cast<VARIANT*>(&values[i].v_)));
  return result;
}

Variant Variant::Reference(Variant& target) noexcept {
  Variant result;
  result.v_.vt = VT_BYREF | VT_VARIANT;
  result.v_.pvarVal = &target.v_;
  return result;
}

Variant Variant::TypedReference(Variant& target) noexcept {
  Variant result;
  result.v_.vt = VT_BYREF | target.v_.vt;
  result.v_.byref = &target.v_.lVal;
  return result;
}

bool Variant::operator==(const Variant& other) const noexcept {
  if (v_.vt != other.v_.vt) return false;
  switch (v_.vt) {
  case VT_EMPTY:
  case VT_NULL: return true;
  case VT_BSTR: return FromBstr(v_.bstrVal) == FromBstr(other.v_.bstrVal);
  case VT_BOOL:
  case VT_I2: return v_.iVal == other.v_.iVal;
  case VT_I4:
  case VT_ERROR: return v_.lVal == other.v_.lVal;
  case VT_DISPATCH:
  case VT_UNKNOWN: return v_.punkVal == other.v_.punkVal;
  case VT_R8:
  case VT_DATE: return v_.dblVal == other.v_.dblVal;
  case VT_CY:
  case VT_I8: return v_.llVal == other.v_.llVal;
  case VT_DECIMAL:
    return VarDecCmp(const_cast<DECIMAL*>(&v_.decVal), const_cast<DECIMAL*>(&other.v_.decVal)) == VARCMP_EQ;
  // Arrays and the rest are never the same: who asks must not miss a change.
  default: return false;
  }
}

Variant Variant::As(VARTYPE type) const {
  Variant result;
  Check(
      VariantChangeTypeEx(&result.v_, const_cast<VARIANT*>(&v_), LOCALE_INVARIANT, VARIANT_ALPHABOOL, type));
  return result;
}

bool Variant::AsBool() const {
  return (v_.vt == VT_BOOL ? v_.boolVal : As(VT_BOOL).v_.boolVal) != VARIANT_FALSE;
}

int16_t Variant::AsShort() const {
  return As(VT_I2).v_.iVal;
}

int32_t Variant::AsLong() const {
  return v_.vt == VT_I4 ? v_.lVal : As(VT_I4).v_.lVal;
}

double Variant::AsDouble() const {
  return As(VT_R8).v_.dblVal;
}

std::wstring Variant::AsText() const {
  return FromBstr(v_.vt == VT_BSTR ? v_.bstrVal : As(VT_BSTR).v_.bstrVal);
}

Object Variant::AsObject() const {
  const VARIANT& v = v_.vt == (VT_BYREF | VT_VARIANT) ? *v_.pvarVal : v_;
  if (v.vt == VT_DISPATCH) return Object(Ptr<IDispatch>(v.pdispVal));
  if (v.vt == VT_UNKNOWN) {
    Ptr<IDispatch> dispatch;
    if (v.punkVal) Check(v.punkVal->QueryInterface(IID_IDispatch, dispatch.OutVoid()));
    return Object(dispatch);
  }
  throw ComError::FromSystem(DISP_E_TYPEMISMATCH);
}

VARIANT* Variant::Out() noexcept {
  VariantClear(&v_);
  return &v_;
}

} // namespace com
