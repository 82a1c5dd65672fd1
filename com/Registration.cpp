#include "com/Registration.h"

#include <oleauto.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "com/ClassesKey.h"
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

// What the two widths are called below a type library.
constexpr const wchar_t* kOwnPlatform = sizeof(void*) == 8 ? L"win64" : L"win32";
constexpr const wchar_t* kOtherPlatform = sizeof(void*) == 8 ? L"win32" : L"win64";

struct PlannedClass {
  std::wstring key; // CLSID\{…}
  std::wstring classId;
  std::wstring progId;
};

struct PlannedLibrary {
  std::wstring id;
  std::wstring version;
  std::vector<std::wstring> interfaces; // their keys

  std::wstring VersionKey() const { return L"TypeLib\\" + id + L"\\" + version; }
  std::wstring Leaf(const wchar_t* platform) const { return VersionKey() + L"\\0\\" + platform; }
};

// Everything that one registration consists of: the values to write, and what is to be found again when it is
// removed.
struct Plan {
  std::wstring path;
  std::vector<ClassesValue> values;
  std::vector<PlannedClass> classes;
  std::optional<PlannedLibrary> library;

  void Set(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    values.push_back({key, name, text});
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

void PlanTypeLibrary(Plan& plan, ITypeLib& library) {
  const LibraryAttributes attributes(library);
  PlannedLibrary planned{GuidText(attributes.attributes->guid), attributes.Version(), {}};
  const std::wstring version = planned.VersionKey();
  plan.Set(version, nullptr, DocumentationName(library, -1, true));
  plan.Set(planned.Leaf(kOwnPlatform), nullptr, plan.path);
  plan.Set(version + L"\\FLAGS", nullptr, L"0");
  plan.Set(version + L"\\HELPDIR", nullptr, plan.path.substr(0, plan.path.find_last_of(L'\\')));

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
    planned.interfaces.push_back(key);
    plan.Set(key, nullptr, DocumentationName(library, static_cast<int>(i), false));
    plan.Set(key + L"\\ProxyStubClsid32", nullptr, kDispatchProxy);
    plan.Set(key + L"\\TypeLib", nullptr, planned.id);
    plan.Set(key + L"\\TypeLib", L"Version", planned.version);
  }
  plan.library = std::move(planned);
}

void PlanClass(Plan& plan, const ClassEntry& entry) {
  const std::wstring classId = GuidText(entry.classId);
  const std::wstring key = L"CLSID\\" + classId;
  plan.classes.push_back({key, classId, entry.progId});
  plan.Set(key, nullptr, entry.description);
  plan.Set(key + L"\\InprocServer32", nullptr, plan.path);
  plan.Set(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
  plan.Set(key + L"\\ProgID", nullptr, entry.progId);
  plan.Set(key + L"\\VersionIndependentProgID", nullptr, entry.progId);
  plan.Set(key + L"\\Programmable", nullptr, L"");
  if (plan.library) {
    plan.Set(key + L"\\TypeLib", nullptr, plan.library->id);
    plan.Set(key + L"\\Version", nullptr, plan.library->version);
  }
  plan.Set(entry.progId, nullptr, entry.description);
  plan.Set(std::wstring(entry.progId) + L"\\CLSID", nullptr, classId);
}

Plan MakePlan(const RegistrationInfo& info) {
  Plan plan;
  plan.path = info.modulePath;
  if (info.typeLibrary) {
    Ptr<ITypeLib> library;
    Check(LoadModuleTypeLibrary(info.modulePath, library));
    PlanTypeLibrary(plan, *library);
  }
  for (const ClassEntry& entry : info.classes) PlanClass(plan, entry);
  return plan;
}

// The path under its long name, if there is such a file.
std::wstring LongPath(const std::wstring& path) {
  std::wstring longPath(GetLongPathNameW(path.c_str(), nullptr, 0), L'\0');
  longPath.resize(GetLongPathNameW(path.c_str(), longPath.data(), static_cast<DWORD>(longPath.size())));
  return longPath.empty() ? path : longPath;
}

bool Exists(HKEY root, const std::wstring& key, REGSAM view) {
  return static_cast<bool>(ClassesKey(root, key, view));
}

// The default value of a key of the own view.
std::wstring DefaultValue(HKEY root, const std::wstring& key) {
  return ClassesKey(root, key, kOwnView).Text(nullptr).value_or(L"");
}

// Whether the key's default value is the module's path.
bool NamesModule(HKEY root, const std::wstring& key, const std::wstring& path) {
  const std::wstring named = DefaultValue(root, key);
  return EqualsNoCase(named, path) || EqualsNoCase(LongPath(named), LongPath(path));
}

// A class of which another file is the server stays, and so does its ProgID.
void RemoveClass(HKEY root, const Plan& plan, const PlannedClass& planned, ClassesRemoval& removal) {
  if (NamesModule(root, planned.key + L"\\InprocServer32", plan.path)) removal.Tree(planned.key);
  const bool needed = Exists(root, planned.key, kOwnView) ||
                      (Exists(root, planned.key, kOtherView) && IsShared(root, planned.progId)) ||
                      !EqualsNoCase(DefaultValue(root, planned.progId + L"\\CLSID"), planned.classId);
  if (!needed) removal.Tree(planned.progId);
}

// The library goes with its last file; its interfaces go with the last file that who sees them could need.
void RemoveTypeLibrary(HKEY root, const Plan& plan, const PlannedLibrary& library, ClassesRemoval& removal) {
  const std::wstring leaf = library.Leaf(kOwnPlatform);
  if (NamesModule(root, leaf, plan.path)) removal.Tree(leaf);
  const bool ownStays = Exists(root, leaf, kOwnView);
  const bool otherStays = Exists(root, library.Leaf(kOtherPlatform), kOwnView);
  for (const std::wstring& key : library.interfaces) {
    const ClassesKey reference(root, key + L"\\TypeLib", kOwnView);
    const bool needed = ownStays || (otherStays && IsShared(root, key)) ||
                        reference.Text(nullptr) != library.id ||
                        reference.Text(L"Version") != library.version;
    if (!needed) removal.Tree(key);
  }
  const std::wstring version = library.VersionKey();
  removal.Empty(version + L"\\0");
  const auto says = [](const std::wstring& name) {
    return EqualsNoCase(name, L"FLAGS") || EqualsNoCase(name, L"HELPDIR");
  };
  // No language and no platform is left.
  if (std::ranges::all_of(ClassesKey(root, version, kOwnView).Subkeys(), says)) removal.Tree(version);
  removal.Empty(L"TypeLib\\" + library.id);
}

LSTATUS Remove(HKEY root, const Plan& plan) {
  ClassesRemoval removal(root);
  for (const PlannedClass& planned : plan.classes) RemoveClass(root, plan, planned, removal);
  if (plan.library) RemoveTypeLibrary(root, plan, *plan.library, removal);
  return removal.status();
}

LSTATUS WriteAll(HKEY root, const Plan& plan) {
  ClassesWriting writing(root);
  for (const ClassesValue& value : plan.values) {
    if (const LSTATUS status = writing.Write(value); status != ERROR_SUCCESS) {
      writing.TakeBack();
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
    const LSTATUS user = Remove(HKEY_CURRENT_USER, plan);
    const LSTATUS machine = Remove(HKEY_LOCAL_MACHINE, plan);
    // A user without rights cannot remove the machine's registration, and need not where there is none of his
    // own.
    return HRESULT_FROM_WIN32(machine != ERROR_SUCCESS ? machine : user);
  } catch (...) {
    return ReportCurrentException(nullptr);
  }
}

} // namespace com
