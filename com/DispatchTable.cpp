#include "com/DispatchTable.h"

#include <oleauto.h>

#include <algorithm>

namespace com {
HRESULT Arguments::Bind(const DISPPARAMS& params, WORD flags, UINT* badArgument) {
  const size_t most = parameters_.size();
  first_ = params.rgvarg;
  if (InPlace(params, flags, most))
    for (size_t i = 0; i < most; ++i) given_[i] = first_ + (most - 1 - i);
  else if (const HRESULT hr = Sort(params, flags, badArgument); FAILED(hr))
    return hr;

  for (size_t i = 0; i < most; ++i) {
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

DispatchTable::DispatchTable(REFIID interfaceId, std::initializer_list<Member> members)
    : interfaceId_(interfaceId), members_(members) {
  DISPID next = 1;
  for (Member& member : members_) {
    if (member.id != kNextId) continue;
    const auto same = std::ranges::find_if(members_, [&](const Member& other) {
      return other.id != kNextId && EqualsNoCase(other.name, member.name);
    });
    if (same != members_.end()) {
      member.id = same->id;
      continue;
    }
    while (std::ranges::find(members_, next, &Member::id) != members_.end()) ++next;
    member.id = next;
  }
}

HRESULT DispatchTable::GetIDsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept {
  if (!names || !ids || count == 0) return E_INVALIDARG;
  std::fill_n(ids, count, DISPID_UNKNOWN);
  const auto member = std::ranges::find_if(
      members_, [&](const Member& candidate) { return EqualsNoCase(candidate.name, names[0]); });
  if (member == members_.end()) return DISP_E_UNKNOWNNAME;
  ids[0] = member->id;
  HRESULT hr = S_OK;
  for (UINT i = 1; i < count; ++i) {
    const auto parameter = std::ranges::find_if(member->parameters, [&](const Parameter& candidate) {
      return EqualsNoCase(candidate.name, names[i]);
    });
    if (parameter == member->parameters.end())
      hr = DISP_E_UNKNOWNNAME;
    else
      ids[i] = static_cast<DISPID>(parameter - member->parameters.begin());
  }
  return hr;
}

HRESULT DispatchTable::Call(const Member& member, void* instance, WORD flags, DISPPARAMS& params,
                            VARIANT* result, EXCEPINFO* info, UINT* badArgument) {
  // `recordset.Fields("FName")`: arguments for a property that takes none go to the collection it returns.
  if (member.kind == DISPATCH_PROPERTYGET && member.parameters.empty() && params.cArgs > 0) {
    // There is no parameter to bind.
    const Variant collection = member.call(instance, Arguments(member.parameters));
    if (collection.type() != VT_DISPATCH || !collection.raw().pdispVal) return DISP_E_BADPARAMCOUNT;
    return collection.raw().pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                             result, info, badArgument);
  }
  Arguments arguments(member.parameters);
  if (const HRESULT hr = arguments.Bind(params, flags, badArgument); FAILED(hr)) return hr;
  try {
    Variant value = member.call(instance, arguments);
    if (result) *result = value.Detach();
    return S_OK;
  } catch (const ArgumentError& error) {
    if (badArgument) *badArgument = arguments.Position(error.parameter);
    return error.hr;
  }
}

} // namespace com
