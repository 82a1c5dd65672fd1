// The classes of the component as its registered type library describes them.
#pragma once

#include <oaidl.h>

#include <string>
#include <vector>

namespace bomcall {

struct ParameterInfo {
  std::wstring name;
  VARTYPE type = VT_EMPTY; // VT_DISPATCH for an object
  bool inOut = false;
  bool optional = false;
};

struct MethodInfo {
  std::wstring name;
  std::wstring description;  // empty where the library has none
  VARTYPE result = VT_EMPTY; // VT_EMPTY: none
  bool property = false;
  std::vector<ParameterInfo> parameters;
};

struct ClassInfo {
  std::wstring name;
  std::wstring description;
  std::vector<MethodInfo> methods;

  // Null when there is no such method; the name in any case.
  const MethodInfo* Find(const std::wstring& methodName) const;
};

using ClassDescriptions = std::vector<ClassInfo>;

// Reads the type library of the registered component. Throws com::ComError where none is registered.
ClassDescriptions ReadClassDescriptions();

// Null when there is no such class; the name in any case.
const ClassInfo* FindClass(const ClassDescriptions& classes, const std::wstring& className);

// "BeginSave(sDsn: text, SaveVect: object, in/out, ReturnMsg: text, in/out) -> boolean"
std::wstring Describe(const MethodInfo& method);
// "SaveVect: object in/out"
std::wstring Describe(const ParameterInfo& parameter);

} // namespace bomcall
