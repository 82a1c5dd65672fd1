#include "com/DispatchTable.h"

#include <oleauto.h>

#include <algorithm>

namespace com {

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
