// DispatchTable: the late-bound face of one plain C++ class.
//
// A table lists the class's members, each with its DISPID, its name, its parameters and a pointer to the C++
// member that does the work. Types, results and in/out parameters are derived from that member's signature:
//
//   const Text&/Object&/Variant&, bool, int16_t, int32_t, double    in
//   Text&, Object&, Variant&, bool&, int16_t&, int32_t&             in/out
//
// Invoke does what a type-library dispatcher does (named arguments, optional ones, DISP_E_… with the
// argument's position) and also takes an in/out argument as script passes it: a reference to a variant of any
// type that converts. In/out arguments are written back even when the member throws: what was set before a
// failure stays set.
#pragma once

#include <oaidl.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "com/Arguments.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "com/Signature.h"
#include "com/Text.h"
#include "com/Variant.h"

namespace com {

constexpr DISPID kNextId = DISPID_UNKNOWN; // a member without an id of its own gets the next free one

struct Member {
  DISPID id;
  const wchar_t* name;
  WORD kind; // DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
  VARTYPE result;
  std::vector<Parameter> parameters;
  Variant (*call)(void* instance, const Arguments& arguments);
  // Null, or to be tried first: Signature::CallInPlace.
  bool (*callInPlace)(void* instance, const DISPPARAMS& params, WORD flags, VARIANT* result) = nullptr;
};

template <auto Function>
Member MakeMember(WORD kind, DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters) {
  using Shape = SignatureOf<decltype(Function)>;
  Member member{id, name, kind, Shape::resultType, parameters, &Shape::template Call<Function>};
  if constexpr (Shape::takesValues) member.callInPlace = &Shape::template CallInPlace<Function>;
  // A table that does not fit its class is a programming error, found when the table is first used.
  if (parameters.size() != Shape::count || Shape::count > Arguments::kMost) std::terminate();
  for (size_t i = 0; i < Shape::count; ++i) {
    member.parameters[i].type = Shape::types[i];
    member.parameters[i].inOut = Shape::inOut[i];
  }
  return member;
}

template <auto Function>
Member Method(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters = {}) {
  return MakeMember<Function>(DISPATCH_METHOD, id, name, parameters);
}
template <auto Function>
Member PropertyGet(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters = {}) {
  return MakeMember<Function>(DISPATCH_PROPERTYGET, id, name, parameters);
}
// The last parameter is the new value. Serves assignments by value and by reference alike.
template <auto Function>
Member PropertyPut(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters) {
  return MakeMember<Function>(DISPATCH_PROPERTYPUT, id, name, parameters);
}

class DispatchTable {
 public:
  // `interfaceId` is the dispinterface of the class in the module's type library; IID_NULL when it has none.
  DispatchTable(REFIID interfaceId, std::initializer_list<Member> members);

  REFIID interfaceId() const noexcept { return interfaceId_; }
  const std::vector<Member>& members() const noexcept { return members_; }

  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept;
  // The name of the member that Invoke would call; empty when there is none.
  const wchar_t* NameOf(DISPID id, WORD flags) const noexcept {
    const Member* const member = Find(id, flags);
    return member ? member->name : L"";
  }
  // Never throws: failures come back as HRESULT, EXCEPINFO and the thread's error object.
  HRESULT Invoke(void* instance, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* info,
                 UINT* badArgument) const noexcept {
    if (!params) return E_INVALIDARG;
    if (result) *result = {};
    const Member* member = Find(id, flags);
    if (!member) return DISP_E_MEMBERNOTFOUND;
    try {
      if (member->callInPlace && member->callInPlace(instance, *params, flags, result)) return S_OK;
      return Call(*member, instance, flags, *params, result, info, badArgument);
    } catch (...) {
      return ReportCurrentException(info);
    }
  }

 private:
  const Member* Find(DISPID id, WORD flags) const noexcept {
    const WORD wanted = (flags & DISPATCH_PROPERTYPUTREF) != 0 ? flags | DISPATCH_PROPERTYPUT : flags;
    for (const Member& member : members_)
      if (member.id == id && (member.kind & wanted) != 0) return &member;
    return nullptr;
  }
  static HRESULT Call(const Member& member, void* instance, WORD flags, DISPPARAMS& params, VARIANT* result,
                      EXCEPINFO* info, UINT* badArgument);

  IID interfaceId_;
  std::vector<Member> members_;
};

// Each class that is called through COM defines its table beside it.
template <class T>
const DispatchTable& TableOf();

} // namespace com
