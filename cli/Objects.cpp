#include "cli/Objects.h"

#include <objbase.h>
#include <oleauto.h>

#include <array>
#include <vector>

namespace bomcall {
namespace {

using com::ComError;
using com::Object;
using com::Variant;

DISPID MemberId(const Object& object, const std::wstring& name) {
  wchar_t* names = const_cast<wchar_t*>(name.c_str());
  DISPID id = DISPID_UNKNOWN;
  com::Check(object.pointer()->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id));
  return id;
}

bool NamesAnArgument(HRESULT error) {
  return error == DISP_E_TYPEMISMATCH || error == DISP_E_PARAMNOTFOUND || error == DISP_E_OVERFLOW ||
         error == DISP_E_BADVARTYPE || error == DISP_E_PARAMNOTOPTIONAL;
}

bool HasKey(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

// Where a class is registered for the other width only, its ProgID is there all the same. The system is not
// asked: it may look for a server elsewhere, and take half a minute for it.
bool IsRegistered(const std::wstring& progId) {
  CLSID classId;
  if (FAILED(CLSIDFromProgID(progId.c_str(), &classId))) return false;
  std::array<wchar_t, 40> text{};
  StringFromGUID2(classId, text.data(), static_cast<int>(text.size()));
  const std::wstring key = L"CLSID\\" + std::wstring(text.data());
  return HasKey(key + L"\\InprocServer32") || HasKey(key + L"\\LocalServer32");
}

std::wstring ReasonOf(const std::wstring& progId, const ComError& error) {
  if (!IsRegistered(progId)) return L"it is not registered";
  return error.code() == CO_E_CLASSSTRING || error.code() == REGDB_E_CLASSNOTREG
             ? L"an object that it needs is not registered"
             : error.description();
}

} // namespace

Object CreateObject(const std::wstring& progId) {
  try {
    return Object::Create(progId.c_str());
  } catch (const ComError& error) {
    throw ComError(error.code(), L"bomcall", L"cannot create " + progId + L": " + ReasonOf(progId, error));
  }
}

Object CreateIfRegistered(const std::wstring& progId) {
  return IsRegistered(progId) ? CreateObject(progId) : Object();
}

Variant CallMember(const Object& object, const std::wstring& name, std::span<const Variant> arguments) {
  const DISPID id = MemberId(object, name);
  std::vector<VARIANTARG> reversed;
  for (size_t i = arguments.size(); i-- > 0;) reversed.push_back(arguments[i].raw());
  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  Variant result;
  EXCEPINFO info{};
  UINT bad = 0;
  const HRESULT hr =
      object.pointer()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                               &params, result.Out(), &info, &bad);
  if (hr == DISP_E_EXCEPTION) {
    SetErrorInfo(0, nullptr);
    throw ComError::FromExcepInfo(info);
  }
  if (NamesAnArgument(hr) && bad < arguments.size())
    throw BadArgument(ComError::FromSystem(hr), arguments.size() - 1 - bad);
  com::Check(hr);
  return result;
}

} // namespace bomcall
