// The DLL's four entry points, its registration and its resources.
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <array>

#include "com/ClassesKey.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "src/server/Classes.h"
#include "src/server/Tables.h"
#include "tests/src/server/LoadedDll.h"
#include "tests/support/DllImage.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using GetClassObjectFunction = HRESULT __stdcall(REFCLSID, REFIID, void**);
using EntryPoint = HRESULT __stdcall();

std::wstring ClassesValue(const std::wstring& key, const wchar_t* name = nullptr) {
  std::array<wchar_t, 1024> text{};
  DWORD size = sizeof text;
  const LSTATUS status =
      RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
  return status == ERROR_SUCCESS ? text.data() : L"(missing)";
}

std::wstring GuidText(REFGUID guid) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

TEST(Dll, RefusesUnknownClasses) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  ASSERT_TRUE(dll);
  auto* getClassObject = dll.Export<GetClassObjectFunction>("DllGetClassObject");
  ASSERT_NE(getClassObject, nullptr);
  void* object = &object;
  EXPECT_EQ(getClassObject(CLSID_NULL, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(object, nullptr);
}

TEST(Dll, RefusesAggregation) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  auto* getClassObject = dll.Export<GetClassObjectFunction>("DllGetClassObject");
  for (const com::ClassEntry& entry : PublicClasses()) {
    com::Ptr<IClassFactory> factory;
    ASSERT_EQ(getClassObject(entry.classId, IID_IClassFactory, factory.OutVoid()), S_OK);
    com::Ptr<IUnknown> object;
    EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IUnknown, object.OutVoid()), CLASS_E_NOAGGREGATION);
  }
}

TEST(Dll, MayBeUnloadedOnlyWhenNothingIsHeld) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  auto* getClassObject = dll.Export<GetClassObjectFunction>("DllGetClassObject");
  auto* canUnloadNow = dll.Export<EntryPoint>("DllCanUnloadNow");
  EXPECT_EQ(canUnloadNow(), S_OK);
  com::Ptr<IClassFactory> factory;
  ASSERT_EQ(getClassObject(PublicClasses()[0].classId, IID_IClassFactory, factory.OutVoid()), S_OK);
  EXPECT_EQ(canUnloadNow(), S_FALSE);
  factory->LockServer(TRUE);
  com::Ptr<IClassFactory> kept = std::move(factory);
  kept->LockServer(FALSE);
  EXPECT_EQ(canUnloadNow(), S_FALSE);
  kept = nullptr;
  EXPECT_EQ(canUnloadNow(), S_OK);
}

TEST(Dll, RegistersEveryClassWithItsTypeLibrary) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  ASSERT_EQ(dll.Export<EntryPoint>("DllRegisterServer")(), S_OK);
  for (const com::ClassEntry& entry : PublicClasses()) {
    SCOPED_TRACE(com::ToUtf8(entry.progId));
    CLSID classId;
    ASSERT_EQ(CLSIDFromProgID(entry.progId, &classId), S_OK);
    EXPECT_EQ(classId, entry.classId);
    const std::wstring key = L"CLSID\\" + GuidText(entry.classId);
    EXPECT_EQ(ClassesValue(key + L"\\InprocServer32"), BesideTheTest(L"QorvaneMBomBill.dll"));
    EXPECT_EQ(ClassesValue(key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    EXPECT_EQ(ClassesValue(key + L"\\VersionIndependentProgID"), entry.progId);

    const std::wstring libraryId = ClassesValue(key + L"\\TypeLib");
    GUID guid;
    ASSERT_EQ(CLSIDFromString(libraryId.c_str(), &guid), S_OK);
    com::Ptr<ITypeLib> library;
    EXPECT_EQ(LoadRegTypeLib(guid, 1, 0, 0, library.Out()), S_OK);
  }
}

TEST(Dll, RemovesItsRegistrationAndRegistersAgain) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  ASSERT_EQ(dll.Export<EntryPoint>("DllUnregisterServer")(), S_OK);
  CLSID classId;
  for (const com::ClassEntry& entry : PublicClasses()) {
    const std::wstring key = L"CLSID\\" + GuidText(entry.classId);
    EXPECT_EQ(ClassesValue(key), L"(missing)");
    // The other width may be registered, too, and needs the ProgID then.
    const bool needed = static_cast<bool>(com::ClassesKey(HKEY_LOCAL_MACHINE, key, com::kOtherView));
    EXPECT_EQ(CLSIDFromProgID(entry.progId, &classId), needed ? S_OK : CO_E_CLASSSTRING);
  }
  EXPECT_EQ(dll.Export<EntryPoint>("DllUnregisterServer")(), S_OK);
  ASSERT_EQ(dll.Export<EntryPoint>("DllRegisterServer")(), S_OK);
  EXPECT_EQ(CLSIDFromProgID(L"QorvaneMBomBill.BomUpdate", &classId), S_OK);
}

TEST(Dll, DoesNotRegisterWithoutItsTypeLibrary) {
  const LoadedDll dll(L"NoTypeLibrary.dll");
  ASSERT_TRUE(dll);
  EXPECT_EQ(dll.Export<EntryPoint>("DllRegisterServer")(), TYPE_E_CANTLOADLIBRARY);
}

// The class object of BomUpdate in a DLL that need not be registered.
com::Object CreateFrom(const LoadedDll& dll) {
  com::Ptr<IClassFactory> factory;
  com::Ptr<IDispatch> object;
  com::Check(dll.Export<GetClassObjectFunction>("DllGetClassObject")(PublicClasses()[0].classId,
                                                                     IID_IClassFactory, factory.OutVoid()));
  com::Check(factory->CreateInstance(nullptr, IID_IDispatch, object.OutVoid()));
  return com::Object(object);
}

GUID GuidOf(ITypeInfo& info) {
  TYPEATTR* attributes = nullptr;
  com::Check(info.GetTypeAttr(&attributes));
  const GUID guid = attributes->guid;
  info.ReleaseTypeAttr(attributes);
  return guid;
}

TEST(Dll, ItsObjectsDescribeThemselves) {
  const LoadedDll dll(L"QorvaneMBomBill.dll");
  const com::Object bom = CreateFrom(dll);
  UINT count = 0;
  EXPECT_EQ(bom.pointer()->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  com::Ptr<ITypeInfo> info;
  ASSERT_EQ(bom.pointer()->GetTypeInfo(0, LOCALE_NEUTRAL, info.Out()), S_OK);
  EXPECT_EQ(GuidOf(*info), DIID__BomUpdate);
  EXPECT_EQ(bom.pointer()->GetTypeInfo(1, LOCALE_NEUTRAL, info.Out()), DISP_E_BADINDEX);

  com::Ptr<IProvideClassInfo> provider;
  ASSERT_EQ(bom.pointer()->QueryInterface(IID_IProvideClassInfo, provider.OutVoid()), S_OK);
  ASSERT_EQ(provider->GetClassInfo(info.Out()), S_OK);
  EXPECT_EQ(GuidOf(*info), PublicClasses()[0].classId);

  com::Ptr<ISupportErrorInfo> errorInfo;
  ASSERT_EQ(bom.pointer()->QueryInterface(IID_ISupportErrorInfo, errorInfo.OutVoid()), S_OK);
  EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
  EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(DIID__BomUpdate), S_OK);
  EXPECT_EQ(errorInfo->InterfaceSupportsErrorInfo(IID_IClassFactory), S_FALSE);

  com::Ptr<IDispatch> byInterface;
  EXPECT_EQ(bom.pointer()->QueryInterface(DIID__BomUpdate, byInterface.OutVoid()), S_OK);
  EXPECT_EQ(byInterface.Get(), bom.pointer());
}

TEST(Dll, ServesLateBoundCallsWithoutItsTypeLibrary) {
  const LoadedDll dll(L"NoTypeLibrary.dll");
  const com::Object bom = CreateFrom(dll);
  EXPECT_EQ(bom.Get(L"TransMode"), com::Variant(2));
  com::Ptr<ITypeInfo> info;
  EXPECT_EQ(bom.pointer()->GetTypeInfo(0, LOCALE_NEUTRAL, info.Out()), TYPE_E_CANTLOADLIBRARY);
}

TEST(Dll, SaysItsVersion) {
  const std::wstring path = BesideTheTest(L"QorvaneMBomBill.dll");
  DWORD handle = 0;
  std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &handle));
  ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT size = 0;
  ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size));
  EXPECT_EQ(fixed->dwFileVersionMS, 0x00010000u);
  EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST(Dll, ProtectsItsHost) {
  using com::test::HeadersOf;
  using com::test::WeaknessesOf;
  const com::test::Image image = com::test::ReadImage(BesideTheTest(L"QorvaneMBomBill.dll"));
  EXPECT_EQ(WeaknessesOf(image), std::vector<std::string>());

  com::test::Image weak = image;
  HeadersOf(weak).OptionalHeader.DllCharacteristics = 0;
  EXPECT_GE(WeaknessesOf(weak).size(), 2u);
  weak = image;
  IMAGE_FIRST_SECTION(&HeadersOf(weak))->Characteristics |= IMAGE_SCN_MEM_WRITE;
  EXPECT_EQ(WeaknessesOf(weak), std::vector<std::string>{"writable code: .text"});
  weak = image;
  const std::string check = "__stack_chk_fail";
  for (auto at = weak.begin(); (at = std::search(at, weak.end(), check.begin(), check.end())) != weak.end();)
    *at = 'x';
  EXPECT_EQ(WeaknessesOf(weak), std::vector<std::string>{"no stack protector"});
}

} // namespace
} // namespace mbom::test
