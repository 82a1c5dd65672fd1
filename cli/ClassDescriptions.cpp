#include "cli/ClassDescriptions.h"

#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <array>

#include "com/ComError.h"
#include "com/Ptr.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Ptr;
using com::TakeBstr;

constexpr wchar_t kAnyClass[] = L"QorvaneMBomBill.BomUpdate";

// The identity of the type library that a registered class belongs to.
GUID LibraryId() {
  CLSID classId;
  const HRESULT found = CLSIDFromProgID(kAnyClass, &classId);
  if (FAILED(found))
    throw com::ComError(found, L"bomcall", std::wstring(L"no class is registered as ") + kAnyClass);
  std::array<wchar_t, 40> text{};
  StringFromGUID2(classId, text.data(), static_cast<int>(text.size()));
  const std::wstring key = L"CLSID\\" + std::wstring(text.data()) + L"\\TypeLib";
  DWORD size = sizeof text;
  com::Check(HRESULT_FROM_WIN32(
      RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text.data(), &size)));
  GUID result;
  com::Check(CLSIDFromString(text.data(), &result));
  return result;
}

VARTYPE PlainType(const TYPEDESC* type) {
  while (type->vt == VT_PTR) type = type->lptdesc;
  return type->vt == VT_USERDEFINED ? static_cast<VARTYPE>(VT_DISPATCH) : type->vt;
}

MethodInfo ReadMethod(ITypeInfo& info, const FUNCDESC& function) {
  std::vector<BSTR> names(static_cast<size_t>(function.cParams) + 1, nullptr);
  UINT count = 0;
  com::Check(info.GetNames(function.memid, names.data(), static_cast<UINT>(names.size()), &count));
  MethodInfo method;
  method.name = TakeBstr(names[0]);
  BSTR description = nullptr;
  com::Check(info.GetDocumentation(function.memid, nullptr, &description, nullptr, nullptr));
  method.description = TakeBstr(description);
  method.property = function.invkind == INVOKE_PROPERTYGET;
  const TYPEDESC& result = function.elemdescFunc.tdesc;
  method.result = result.vt == VT_VOID ? static_cast<VARTYPE>(VT_EMPTY) : PlainType(&result);
  for (size_t i = 1; i < names.size(); ++i) {
    const ELEMDESC& element = function.lprgelemdescParam[i - 1];
    const USHORT flags = element.paramdesc.wParamFlags;
    method.parameters.push_back({TakeBstr(names[i]), PlainType(&element.tdesc), (flags & PARAMFLAG_FOUT) != 0,
                                 (flags & PARAMFLAG_FOPT) != 0});
  }
  return method;
}

ClassInfo ReadClass(ITypeInfo& coclass) {
  ClassInfo result;
  BSTR name = nullptr;
  BSTR description = nullptr;
  com::Check(coclass.GetDocumentation(MEMBERID_NIL, &name, &description, nullptr, nullptr));
  result.name = TakeBstr(name);
  result.description = TakeBstr(description);

  HREFTYPE reference = 0;
  Ptr<ITypeInfo> dispatch;
  com::Check(coclass.GetRefTypeOfImplType(0, &reference));
  com::Check(coclass.GetRefTypeInfo(reference, dispatch.Out()));
  TYPEATTR* attributes = nullptr;
  com::Check(dispatch->GetTypeAttr(&attributes));
  const UINT functions = attributes->cFuncs;
  dispatch->ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < functions; ++i) {
    FUNCDESC* function = nullptr;
    com::Check(dispatch->GetFuncDesc(i, &function));
    // IDispatch's own members are described too.
    if ((function->wFuncFlags & FUNCFLAG_FRESTRICTED) == 0)
      result.methods.push_back(ReadMethod(*dispatch.Get(), *function));
    dispatch->ReleaseFuncDesc(function);
  }
  return result;
}

const wchar_t* TypeName(VARTYPE type) {
  switch (type) {
  case VT_BSTR: return L"text";
  case VT_BOOL: return L"boolean";
  case VT_I2: return L"16-bit integer";
  case VT_I4:
  case VT_INT: return L"integer";
  case VT_DISPATCH:
  case VT_UNKNOWN: return L"object";
  default: return L"value";
  }
}

} // namespace

const MethodInfo* ClassInfo::Find(const std::wstring& methodName) const {
  const auto found = std::ranges::find_if(
      methods, [&](const MethodInfo& method) { return com::EqualsNoCase(method.name, methodName); });
  return found == methods.end() ? nullptr : &*found;
}

ClassDescriptions ReadClassDescriptions() {
  Ptr<ITypeLib> library;
  com::Check(LoadRegTypeLib(LibraryId(), 1, 0, LOCALE_NEUTRAL, library.Out()));
  ClassDescriptions classes;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    TYPEKIND kind;
    com::Check(library->GetTypeInfoType(i, &kind));
    if (kind != TKIND_COCLASS) continue;
    Ptr<ITypeInfo> coclass;
    com::Check(library->GetTypeInfo(i, coclass.Out()));
    classes.push_back(ReadClass(*coclass.Get()));
  }
  return classes;
}

const ClassInfo* FindClass(const ClassDescriptions& classes, const std::wstring& className) {
  const auto found = std::ranges::find_if(
      classes, [&](const ClassInfo& info) { return com::EqualsNoCase(info.name, className); });
  return found == classes.end() ? nullptr : &*found;
}

std::wstring Describe(const ParameterInfo& parameter) {
  std::wstring text = parameter.name + L": " + TypeName(parameter.type);
  if (parameter.inOut) text += L" in/out";
  if (parameter.optional) text += L" optional";
  return text;
}

std::wstring Describe(const MethodInfo& method) {
  std::wstring text = method.name;
  if (!method.property) text += L"(";
  for (const ParameterInfo& parameter : method.parameters) {
    if (&parameter != method.parameters.data()) text += L", ";
    text += Describe(parameter);
  }
  if (!method.property) text += L")";
  if (method.result != VT_EMPTY) text += std::wstring(L" -> ") + TypeName(method.result);
  return text;
}

} // namespace bomcall
