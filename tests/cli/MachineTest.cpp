#include "cli/Machine.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "com/Object.h"
#include "com/Text.h"

namespace bomcall {
namespace {

const TriedClass* Find(const std::vector<TriedClass>& classes, const std::wstring& progId) {
  for (const TriedClass& tried : classes)
    if (tried.progId == progId) return &tried;
  return nullptr;
}

TEST(Machine, HasEverythingInTheTests) {
  const std::vector<TriedClass> classes = TryClasses();
  for (const TriedClass& tried : classes)
    EXPECT_EQ(tried.error, L"") << com::ToUtf8(tried.progId) << ": " << com::ToUtf8(tried.error);
  EXPECT_TRUE(AllThere(classes));
  for (const wchar_t* progId : {L"QorvaneGlobal.Global", L"ruvo10.Vector", L"TarnelResLoader.Loader",
                                L"ADODB.Recordset", L"QorvaneMBomBill.BomUpdate", L"QorvaneMBomBill.BomView"})
    EXPECT_NE(Find(classes, progId), nullptr) << com::ToUtf8(progId);
}

TEST(Machine, SaysWhichObjectIsMissing) {
  // The stand-in registers its classes anew at the end.
  const com::Object keepsItLoaded = com::Object::Create(L"ErpStandIn.Host");
  auto* const registerAgain = reinterpret_cast<HRESULT STDAPICALLTYPE (*)()>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ErpStandIn.dll"), "DllRegisterServer")));
  ASSERT_NE(registerAgain, nullptr);
  ASSERT_EQ(RegDeleteTreeW(HKEY_CLASSES_ROOT, L"QorvaneBillDataAccess.clsBillPackage"), ERROR_SUCCESS);
  const std::vector<TriedClass> classes = TryClasses();
  ASSERT_EQ(registerAgain(), S_OK);
  EXPECT_FALSE(AllThere(classes));
  for (const TriedClass& tried : classes)
    EXPECT_EQ(tried.error.empty(), tried.progId != L"QorvaneBillDataAccess.clsBillPackage")
        << com::ToUtf8(tried.progId);
  const TriedClass* const package = Find(classes, L"QorvaneBillDataAccess.clsBillPackage");
  ASSERT_NE(package, nullptr);
  EXPECT_EQ(package->error, L"cannot create QorvaneBillDataAccess.clsBillPackage: it is not registered");
  EXPECT_NE(TableOf(GridOf(classes), 0, false).find(L"it is not registered"), std::wstring::npos);
}

} // namespace
} // namespace bomcall
