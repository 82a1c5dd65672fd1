#include "cli/Objects.h"

#include <objbase.h>
#include <oleauto.h>

#include <vector>

#include "com/Ptr.h"

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

// The ProgID is there, but not the class, where it is registered for the other width only.
bool SaysNotRegistered(HRESULT error) {
  return error == CO_E_CLASSSTRING || error == REGDB_E_CLASSNOTREG;
}

bool IsRegistered(const std::wstring& progId) {
  CLSID classId;
  com::Ptr<IUnknown> factory;
  return SUCCEEDED(CLSIDFromProgID(progId.c_str(), &classId)) &&
         SUCCEEDED(CoGetClassObject(classId, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, nullptr,
                                    IID_IUnknown, factory.OutVoid()));
}

} // namespace

Object CreateObject(const std::wstring& progId) {
  try {
    return Object::Create(progId.c_str());
  } catch (const ComError& error) {
    std::wstring why = error.description();
    if (SaysNotRegistered(error.code()))
      why = IsRegistered(progId) ? L"an object that it needs is not registered" : L"it is not registered";
    throw ComError(error.code(), L"bomcall", L"cannot create " + progId + L": " + why);
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
