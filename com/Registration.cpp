#include "com/Registration.h"

#include <oleauto.h>

#include <array>
#include <vector>

#include "com/Module.h"
#include "com/Text.h"

namespace com {
namespace {

// The proxy of every dispinterface, part of Automation itself.
constexpr wchar_t kDispatchProxy[] = L"{00020420-0000-0000-C000-000000000046}";
constexpr size_t kGuidLength = 38;

std::wstring GuidText(REFGUID guid) {
  std::array<wchar_t, kGuidLength + 1> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

// A key and its values, relative to Software\Classes.
struct Entry {
  std::wstring key;
  const wchar_t* name; // null is the key's default value
  std::wstring value;
};

// Everything that one registration consists of: the values to write, and the top keys to delete.
struct Plan {
  std::vector<Entry> entries;
  std::vector<std::wstring> keys;

  void Own(const std::wstring& key) { keys.push_back(key); }
  void Set(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    entries.push_back({key, name, value});
  }
};

struct LibraryAttributes {
  explicit LibraryAttributes(ITypeLib& typeLibrary) : library(typeLibrary) {
    Check(library.GetLibAttr(&attributes));
  }
  ~LibraryAttributes() { library.ReleaseTLibAttr(attributes); }
  LibraryAttributes(const LibraryAttributes&) = delete;
  LibraryAttributes& operator=(const LibraryAttributes&) = delete;

  std::wstring Version() const {
    return std::to_wstring(attributes->wMajorVerNum) + L"." + std::to_wstring(attributes->wMinorVerNum);
  }

  ITypeLib& library;
  TLIBATTR* attributes = nullptr;
};

std::wstring DocumentationName(ITypeLib& library, int index, bool description) {
  BSTR name = nullptr;
  BSTR text = nullptr;
  Check(library.GetDocumentation(index, &name, &text, nullptr, nullptr));
  const std::wstring takenName = TakeBstr(name);
  const std::wstring takenText = TakeBstr(text);
  return description && !takenText.empty() ? takenText : takenName;
}

void PlanTypeLibrary(Plan& plan, ITypeLib& library, const std::wstring& path) {
  const LibraryAttributes attributes(library);
  const std::wstring libraryId = GuidText(attributes.attributes->guid);
  const std::wstring top = L"TypeLib\\" + libraryId;
  const std::wstring version = top + L"\\" + attributes.Version();
  plan.Own(top);
  plan.Set(version, nullptr, DocumentationName(library, -1, true));
  plan.Set(version + L"\\0\\" + (sizeof(void*) == 8 ? L"win64" : L"win32"), nullptr, path);
  plan.Set(version + L"\\FLAGS", nullptr, L"0");
  plan.Set(version + L"\\HELPDIR", nullptr, path.substr(0, path.find_last_of(L'\\')));

  for (UINT i = 0; i < library.GetTypeInfoCount(); ++i) {
    TYPEKIND kind;
    Check(library.GetTypeInfoType(i, &kind));
    if (kind != TKIND_DISPATCH) continue;
    Ptr<ITypeInfo> info;
    Check(library.GetTypeInfo(i, info.Out()));
    TYPEATTR* typeAttributes = nullptr;
    Check(info->GetTypeAttr(&typeAttributes));
    const std::wstring key = L"Interface\\" + GuidText(typeAttributes->guid);
    info->ReleaseTypeAttr(typeAttributes);
    plan.Own(key);
    plan.Set(key, nullptr, DocumentationName(library, static_cast<int>(i), false));
    plan.Set(key + L"\\ProxyStubClsid32", nullptr, kDispatchProxy);
    plan.Set(key + L"\\TypeLib", nullptr, libraryId);
    plan.Set(key + L"\\TypeLib", L"Version", attributes.Version());
  }
}

void PlanClass(Plan& plan, const ClassEntry& entry, const std::wstring& path, ITypeLib* library) {
  const std::wstring classId = GuidText(entry.classId);
  const std::wstring key = L"CLSID\\" + classId;
  plan.Own(key);
  plan.Set(key, nullptr, entry.description);
  plan.Set(key + L"\\InprocServer32", nullptr, path);
  plan.Set(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
  plan.Set(key + L"\\ProgID", nullptr, entry.progId);
  plan.Set(key + L"\\VersionIndependentProgID", nullptr, entry.progId);
  plan.Set(key + L"\\Programmable", nullptr, L"");
  if (library) {
    const LibraryAttributes attributes(*library);
    plan.Set(key + L"\\TypeLib", nullptr, GuidText(attributes.attributes->guid));
    plan.Set(key + L"\\Version", nullptr, attributes.Version());
  }
  plan.Own(entry.progId);
  plan.Set(entry.progId, nullptr, entry.description);
  plan.Set(std::wstring(entry.progId) + L"\\CLSID", nullptr, classId);
}

Plan MakePlan(const RegistrationInfo& info) {
  Plan plan;
  Ptr<ITypeLib> library;
  if (info.typeLibrary) {
    Check(LoadModuleTypeLibrary(info.modulePath, library));
    PlanTypeLibrary(plan, *library, info.modulePath);
  }
  for (const ClassEntry& entry : info.classes) PlanClass(plan, entry, info.modulePath, library.Get());
  return plan;
}

std::wstring ClassesKey(const std::wstring& key) {
  return L"Software\\Classes\\" + key;
}

LSTATUS Write(HKEY root, const Entry& entry) {
  HKEY key = nullptr;
  LSTATUS status = RegCreateKeyExW(root, ClassesKey(entry.key).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_WRITE, nullptr, &key, nullptr);
  if (status != ERROR_SUCCESS) return status;
  const auto size = static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t));
  status =
      RegSetValueExW(key, entry.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(entry.value.c_str()), size);
  RegCloseKey(key);
  return status;
}

LSTATUS Delete(HKEY root, const Plan& plan) {
  LSTATUS first = ERROR_SUCCESS;
  for (const std::wstring& key : plan.keys) {
    const LSTATUS status = RegDeleteTreeW(root, ClassesKey(key).c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND && first == ERROR_SUCCESS) first = status;
  }
  return first;
}

LSTATUS WriteAll(HKEY root, const Plan& plan) {
  for (const Entry& entry : plan.entries) {
    if (const LSTATUS status = Write(root, entry); status != ERROR_SUCCESS) {
      Delete(root, plan);
      return status;
    }
  }
  return ERROR_SUCCESS;
}

} // namespace

HRESULT Register(const RegistrationInfo& info) noexcept {
  try {
    const Plan plan = MakePlan(info);
    LSTATUS status = WriteAll(HKEY_LOCAL_MACHINE, plan);
    if (status == ERROR_ACCESS_DENIED) status = WriteAll(HKEY_CURRENT_USER, plan);
    return HRESULT_FROM_WIN32(status);
  } catch (...) {
    return ReportCurrentException(nullptr);
  }
}

HRESULT Unregister(const RegistrationInfo& info) noexcept {
  try {
    const Plan plan = MakePlan(info);
    const LSTATUS user = Delete(HKEY_CURRENT_USER, plan);
    const LSTATUS machine = Delete(HKEY_LOCAL_MACHINE, plan);
    // A user without rights cannot remove the machine's registration, and need not where there is none of his
    // own.
    return HRESULT_FROM_WIN32(machine != ERROR_SUCCESS ? machine : user);
  } catch (...) {
    return ReportCurrentException(nullptr);
  }
}

} // namespace com
