#include <windows.h>
#include <winver.h>

#include "com/Module.h"
#include "com/Text.h"
#include "tests/standin/Support.h"
#include "tests/support/DllImage.h"

namespace standin::test {
namespace {

HMODULE Dll() {
  return GetModuleHandleW(L"ErpStandIn.dll");
}

template <class Function>
Function* Export(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(Dll(), name)));
}

// Every class by its ProgID, and one member that shows that it is the right one.
TEST(Dll, CreatesEveryClassByItsProgId) {
  const std::vector<std::pair<const wchar_t*, const wchar_t*>> classes{
      {L"ruvo10.Dictionary", L"Exists"},
      {L"ruvo10.Vector", L"UBound"},
      {L"ruvo10.Global", L"FormatText"},
      {L"TarnelResLoader.Loader", L"LoadString"},
      {L"QorvaneGlobal.Global", L"GetDataContext"},
      {L"QorvaneWoskBase.ObjectFactory", L"CreateServerObject"},
      {L"QorvaneWoskBase.SecurityInfo", L"GetCurrentUserID"},
      {L"QorvaneWoskBase.SystemProfile", L"GetProfile"},
      {L"VexoLogMsg.Log", L"LogStart"},
      {L"ErpStandIn.Host", L"CreateObject"},
      {L"ErpStandIn.Trace", L"Start"},
      {L"ErpStandIn.Faults", L"Fail"},
      {L"ADODB.Connection", L"BeginTrans"},
      {L"ADODB.Recordset", L"MoveNext"},
      {L"ADODB.Command", L"CreateParameter"},
      {L"ADODB.Parameter", L"NumericScale"},
  };
  for (const auto& [progId, member] : classes) {
    const Object object = New(progId);
    wchar_t* name = const_cast<wchar_t*>(member);
    DISPID id = 0;
    EXPECT_EQ(object.pointer()->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK) << com::ToUtf8(progId);
  }
}

TEST(Dll, UnloadsWhenNothingIsInUse) {
  auto* const canUnload = Export<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow");
  ASSERT_TRUE(canUnload);
  CoFreeUnusedLibraries();
  ASSERT_EQ(canUnload(), S_OK);
  {
    const Object vector = New(L"ruvo10.Vector");
    EXPECT_EQ(canUnload(), S_FALSE);
    const Variant enumerator = vector.Get(L"_NewEnum");
    const_cast<Object&>(vector) = Object();
    EXPECT_EQ(canUnload(), S_FALSE) << "the enumerator is an object too";
  }
  EXPECT_EQ(canUnload(), S_OK);
}

TEST(Dll, KnowsItsOwnClassesOnly) {
  using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
  auto* const getClassObject = Export<GetClassObject>("DllGetClassObject");
  ASSERT_TRUE(getClassObject);
  void* object = nullptr;
  EXPECT_EQ(getClassObject(IID_IDispatch, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
  CLSID vector{};
  ASSERT_EQ(CLSIDFromProgID(L"ruvo10.Vector", &vector), S_OK);
  com::Ptr<IClassFactory> factory;
  EXPECT_EQ(getClassObject(vector, IID_IClassFactory, factory.OutVoid()), S_OK);
}

TEST(Dll, RegistersAndUnregisters) {
  auto* const registerServer = Export<HRESULT STDAPICALLTYPE()>("DllRegisterServer");
  auto* const unregisterServer = Export<HRESULT STDAPICALLTYPE()>("DllUnregisterServer");
  CLSID id{};
  CLSID dictionary{};
  ASSERT_EQ(CLSIDFromProgID(L"ruvo10.Dictionary", &dictionary), S_OK);
  com::Ptr<IUnknown> object;
  EXPECT_EQ(unregisterServer(), S_OK);
  // The ProgID stays where the other width is registered, too; the class does not.
  EXPECT_EQ(CoCreateInstance(dictionary, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, object.OutVoid()),
            REGDB_E_CLASSNOTREG);
  EXPECT_EQ(unregisterServer(), S_OK) << "nothing to remove is no failure";
  EXPECT_EQ(registerServer(), S_OK);
  EXPECT_EQ(CLSIDFromProgID(L"ruvo10.Dictionary", &id), S_OK);
  EXPECT_EQ(CLSIDFromProgID(L"ADODB.Recordset", &id), S_OK);
}

TEST(Dll, SaysWhatItIs) {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(Dll(), path.data(), MAX_PATH));
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
  ASSERT_NE(size, 0U);
  std::vector<std::byte> info(size);
  ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, info.data()));
  wchar_t* name = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(info.data(), L"\\StringFileInfo\\040904B0\\OriginalFilename",
                             reinterpret_cast<void**>(&name), &length));
  EXPECT_STREQ(name, L"ErpStandIn.dll");
}

TEST(Dll, ProtectsItsHost) {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(Dll(), path.data(), MAX_PATH));
  EXPECT_EQ(com::test::WeaknessesOf(com::test::ReadImage(path)), std::vector<std::string>());
}

} // namespace
} // namespace standin::test
