#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>

#include "cli/Batch.h"
#include "cli/Call.h"
#include "cli/Show.h"
#include "cli/bom/Reports.h"
#include "com/Text.h"
#include "tests/support/Client.h"

namespace bomcall {
namespace {

class WithoutStandIn : public testing::Test {
 protected:
  void SetUp() override { keepsItLoaded_ = com::Object::Create(L"ErpStandIn.Host"); }
  void TearDown() override { ASSERT_EQ(Export("DllRegisterServer"), S_OK); }

  static HRESULT Export(const char* name) {
    auto* const function = reinterpret_cast<HRESULT STDAPICALLTYPE (*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ErpStandIn.dll"), name)));
    return function ? function() : E_NOINTERFACE;
  }
  // Only the names are taken away: for a class whose name is left, but not its server in the width of this
  // program, Wine looks for a server of its own process, which takes it ten seconds.
  static void Remove(std::initializer_list<const wchar_t*> progIds) {
    for (const wchar_t* progId : progIds) ASSERT_EQ(RegDeleteTreeW(HKEY_CLASSES_ROOT, progId), ERROR_SUCCESS);
  }
  // As with the ERP: what the component calls is there, but no host and no trace of the stand-in.
  static void LeaveTheRest() { Remove({L"ErpStandIn.Host", L"ErpStandIn.Trace"}); }
  Outcome Call(std::vector<std::wstring> arguments) const {
    arguments.insert(arguments.end(), {L"--dsn", database_.Dsn()});
    return MakeCall(catalog_, ParseCommandLine(arguments));
  }

  com::Object keepsItLoaded_;
  const mbom::test::TestDatabase database_;
  const ClassDescriptions catalog_ = ReadClassDescriptions();
};

TEST_F(WithoutStandIn, CallsDirectly) {
  LeaveTheRest();
  EXPECT_EQ(ShowAsText(Call({L"clsMCustBOM.TransMode"})), L"Result: 3\n");
  EXPECT_EQ(ShowAsText(Call({L"BomUpdate.EndSave", L"SaveVect=[]"})).find(L"Result: False\n"), 0u);
}

TEST_F(WithoutStandIn, HasNoTraceAndNoUnitOfWork) {
  LeaveTheRest();
  EXPECT_THROW(Call({L"clsMCustBOM.TransMode", L"--trace"}), UsageError);
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / (L"bomcall-alone-" + std::to_wstring(GetCurrentProcessId()));
  std::ofstream(file) << "\n";
  const auto run = [&](const std::vector<std::wstring>& options) {
    std::vector<std::wstring> arguments{L"--batch", file.wstring()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunBatch(catalog_, ParseCommandLine(arguments), {});
  };
  EXPECT_THROW(run({}), UsageError);
  EXPECT_EQ(run({L"--keep-going"}).calls, 0u);
  std::filesystem::remove(file);
}

TEST_F(WithoutStandIn, SaysWhichClassIsMissing) {
  Remove({L"ErpStandIn.Host", L"ruvo10.Vector", L"QorvaneGlobal.Global"});
  const auto message = [](const std::function<void()>& action) {
    try {
      action();
    } catch (const com::ComError& error) {
      return com::ToUtf8(error.description());
    }
    return std::string("(none)");
  };
  EXPECT_EQ(message([&] {
              Call({L"BomUpdate.EndSave", L"SaveVect=[]"});
            }),
            "cannot create ruvo10.Vector: it is not registered");
  EXPECT_EQ(message([&] {
              bom::MakeReport(ParseCommandLine({L"bom", L"check"}), L"x", 0, false);
            }),
            "cannot connect: cannot create QorvaneGlobal.Global: it is not registered");
}

} // namespace
} // namespace bomcall
