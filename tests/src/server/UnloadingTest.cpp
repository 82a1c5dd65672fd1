// The DLL loaded, used and unloaded again and again: nothing of it stays in the process.
//
// The outside objects that the component keeps for each thread are never released, so here they are ones
// whose memory is the test's.
#include "tests/support/Unloading.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <sstream>
#include <thread>

#include "com/ClassObject.h"
#include "src/server/Classes.h"
#include "tests/support/Client.h"
#include "tests/support/PlayedDataAccess.h"
#include "tests/support/Printing.h"
#include "tests/support/Raised.h"

namespace mbom::test {
namespace {

using com::Object;
using com::test::LoadedServer;
using com::test::RaisedBy;

// One global object for everybody who asks.
com::Ptr<IDispatch> SharedGlobal(REFCLSID /*classId*/) {
  static const com::Ptr<IDispatch> global = com::CreateDispatchObject<PlayedGlobal>(CLSID_NULL);
  return global;
}

class UnloadingTest : public testing::Test {
 protected:
  UnloadingTest() {
    CLSID classId;
    com::Check(CLSIDFromProgID(L"QorvaneGlobal.Global", &classId));
    entries_ = {com::ClassEntry{classId, L"", L"", &SharedGlobal}};
    com::Check(com::GetClassObject(entries_, classId, IID_IUnknown, factory_.OutVoid()));
    Register(cookie_);
    PlayedDataAccess::connection = [] { return Object(); };
  }
  ~UnloadingTest() override { CoRevokeClassObject(cookie_); }

  // For the calling thread's apartment.
  void Register(DWORD& cookie) const {
    com::Check(CoRegisterClassObject(entries_[0].classId, factory_.Get(), CLSCTX_INPROC_SERVER,
                                     REGCLS_MULTIPLEUSE, &cookie));
  }

  // A call that succeeds, one that is refused, one that raises.
  static void Use(const LoadedServer& server) {
    const auto create = [&](size_t index) { return server.Create(PublicClasses()[index].classId); };
    EXPECT_EQ(create(0).Get(L"TransMode"), com::Variant(2));
    EXPECT_NE(RaisedBy([&] { create(0).Call(L"UpdateIcBomStatus", L"D", L"B1"); }).code, 0);
    EXPECT_EQ(create(0).Call(L"EndSave", L"D", MakeVector({}), L""), com::Variant(false));
    SetErrorInfo(0, nullptr);
    PlayedDataAccess::calls.clear();
  }

  const com::test::DllCopy dll_{L"QorvaneMBomBill.dll"};
  std::array<com::ClassEntry, 1> entries_{};
  com::Ptr<IUnknown> factory_;
  DWORD cookie_ = 0;
};

TEST_F(UnloadingTest, LeavesNothingBehind) {
  const auto cycle = [&] {
    {
      const LoadedServer server(dll_.path());
      Use(server);
      EXPECT_TRUE(server.MayGo());
    }
    ASSERT_FALSE(dll_.IsLoaded());
  };
  std::ostringstream figures;
  EXPECT_LT(com::test::GrowingRounds(cycle, figures), 2) << figures.str();
  RecordProperty("figures", figures.str());
}

TEST_F(UnloadingTest, LeavesNothingBehindInOtherThreads) {
  // A thread that lives on uses the DLL, then this one does and unloads it.
  HANDLE go = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  HANDLE done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  std::atomic<bool> ends = false;
  std::thread other([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    DWORD cookie = 0;
    Register(cookie);
    for (WaitForSingleObject(go, INFINITE); !ends; WaitForSingleObject(go, INFINITE)) {
      Use(LoadedServer(dll_.path()));
      SetEvent(done);
    }
    CoRevokeClassObject(cookie);
    CoUninitialize();
  });
  const auto cycle = [&] {
    {
      const LoadedServer server(dll_.path());
      SetEvent(go);
      WaitForSingleObject(done, INFINITE);
      Use(server);
    }
    ASSERT_FALSE(dll_.IsLoaded());
  };
  std::ostringstream figures;
  EXPECT_LT(com::test::GrowingRounds(cycle, figures), 2) << figures.str();
  ends = true;
  SetEvent(go);
  other.join();
  CloseHandle(go);
  CloseHandle(done);
}

} // namespace
} // namespace mbom::test
