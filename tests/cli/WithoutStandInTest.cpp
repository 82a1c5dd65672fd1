#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "cli/Batch.h"
#include "cli/Call.h"
#include "cli/Show.h"
#include "cli/bom/Reports.h"
#include "com/Text.h"

namespace bomcall {
namespace {

// A machine on which the component is registered and nothing of what it calls.
class WithoutStandIn : public testing::Test {
 protected:
  void SetUp() override {
    keepsItLoaded_ = com::Object::Create(L"ErpStandIn.Host");
    ASSERT_EQ(Export("DllUnregisterServer"), S_OK);
  }
  void TearDown() override { ASSERT_EQ(Export("DllRegisterServer"), S_OK); }

  static HRESULT Export(const char* name) {
    auto* const function = reinterpret_cast<HRESULT STDAPICALLTYPE (*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ErpStandIn.dll"), name)));
    return function ? function() : E_NOINTERFACE;
  }
  Outcome Call(std::vector<std::wstring> arguments) const {
    arguments.insert(arguments.end(), {L"--dsn", L"x"});
    return MakeCall(catalog_, ParseCommandLine(arguments));
  }

  com::Object keepsItLoaded_;
  const ClassDescriptions catalog_ = ReadClassDescriptions();
};

TEST_F(WithoutStandIn, CallsDirectly) {
  EXPECT_EQ(ShowAsText(Call({L"clsMCustBOM.TransMode"})), L"Result: 3\n");
}

TEST_F(WithoutStandIn, SaysWhichClassIsMissing) {
  try {
    Call({L"BomUpdate.EndSave", L"SaveVect=[]"});
    FAIL();
  } catch (const com::ComError& error) {
    EXPECT_EQ(error.description().find(L"cannot create ruvo10.Vector: "), 0u);
  }
  try {
    bom::MakeReport(ParseCommandLine({L"bom", L"check"}), L"x", 0, false);
    FAIL();
  } catch (const com::ComError& error) {
    EXPECT_EQ(error.description().find(L"cannot connect: cannot create QorvaneGlobal.Global: "), 0u);
  }
}

TEST_F(WithoutStandIn, HasNoTraceAndNoUnitOfWork) {
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

} // namespace
} // namespace bomcall
