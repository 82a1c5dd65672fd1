// The procedure log: what is asked of the log component, and that nothing of it reaches the caller. Each test
// plays the component on a thread of its own.
#include "src/frame/modVexoLogMsg.h"

#include <gtest/gtest.h>

#include "com/RefCounted.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"
#include "tests/support/Replacement.h"

namespace mbom::test {
namespace {

using com::ComError;
using com::Variant;
using Texts = std::vector<std::wstring>;

// How the component behaves, and what was asked of it.
struct Play {
  bool missing = false;
  bool enabled = true;
  bool failing = false;
  Variant handle = Variant(41);
  int32_t created = 0;
  int32_t alive = 0;
  Texts calls;
};
Play g_play;

class PlayedLog {
 public:
  PlayedLog() {
    ++g_play.created;
    if (g_play.missing) throw ComError::FromSystem(REGDB_E_CLASSNOTREG);
    ++g_play.alive;
  }
  ~PlayedLog() { --g_play.alive; }
  PlayedLog(const PlayedLog&) = delete;
  PlayedLog& operator=(const PlayedLog&) = delete;

  bool IsEnabled() const {
    g_play.calls.emplace_back(L"IsEnabled");
    if (g_play.failing) Fail();
    return g_play.enabled;
  }
  Variant LogStart(std::wstring& procedure) const {
    g_play.calls.push_back(L"LogStart " + procedure);
    if (g_play.failing) Fail();
    return g_play.handle;
  }
  void LogEnd(int32_t& handle, int32_t& value) const {
    g_play.calls.push_back(L"LogEnd " + std::to_wstring(handle) + L" " + std::to_wstring(value));
    if (g_play.failing) Fail();
  }

 private:
  static void Fail() { throw ComError(E_FAIL, L"VexoLogMsg", L"the log is full"); }
};

// A call as it comes over IDispatch: the member, and its arguments' types in their order.
struct BareCall {
  DISPID id;
  std::vector<VARTYPE> types;
  bool operator==(const BareCall&) const = default;
};
std::vector<BareCall> g_bareCalls;

// The component without anything between it and its caller: it sees an argument's type as it was passed.
class BareLog final : public com::RefCounted<IDispatch> {
 public:
  static constexpr DISPID kIsEnabled = 1;
  static constexpr DISPID kLogStart = 2;
  static constexpr DISPID kLogEnd = 3;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != IID_IDispatch) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID /*iid*/, LPOLESTR* names, UINT /*count*/, LCID /*locale*/,
                             DISPID* ids) override {
    const std::wstring name = names[0];
    *ids = name == L"IsEnabled"  ? kIsEnabled
           : name == L"LogStart" ? kLogStart
           : name == L"LogEnd"   ? kLogEnd
                                 : DISPID_UNKNOWN;
    return *ids == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
  }
  STDMETHODIMP Invoke(DISPID id, REFIID /*iid*/, LCID /*locale*/, WORD /*flags*/, DISPPARAMS* params,
                      VARIANT* result, EXCEPINFO* /*info*/, UINT* /*badArgument*/) override {
    if (id != kIsEnabled) {
      BareCall call{id, {}};
      for (UINT i = params->cArgs; i > 0; --i) call.types.push_back(params->rgvarg[i - 1].vt);
      g_bareCalls.push_back(call);
    }
    if (result) *result = (id == kIsEnabled ? Variant(true) : Variant(41)).Detach();
    return S_OK;
  }
};

} // namespace
} // namespace mbom::test

template <>
com::Ptr<IDispatch> com::CreateDispatchObject<mbom::test::BareLog>(REFCLSID /*classId*/) {
  return Ptr<IDispatch>(new mbom::test::BareLog);
}

template <>
const com::DispatchTable& com::TableOf<mbom::test::PlayedLog>() {
  using mbom::test::PlayedLog;
  static const DispatchTable table(IID_NULL,
                                   {
                                       Method<&PlayedLog::IsEnabled>(1, L"IsEnabled"),
                                       Method<&PlayedLog::LogStart>(2, L"LogStart", {L"procedure"}),
                                       Method<&PlayedLog::LogEnd>(3, L"LogEnd", {L"handle", L"value"}),
                                   });
  return table;
}

namespace mbom::test {
namespace {

template <class Test>
void WithPlayedLog(Test test) {
  g_play = {};
  InApartment([&test] {
    const Replacement<PlayedLog> log(L"VexoLogMsg.Log");
    test();
  });
}

std::wstring PendingText() {
  return ComError::FromThread(E_ABORT).description();
}

TEST(ProcedureLog, ReportsTheStartAndTheEnd) {
  WithPlayedLog([] {
    EXPECT_EQ(LogStart(L"a.b.c"), 41);
    LogEnd(41, 7);
    EXPECT_EQ(g_play.calls, (Texts{L"IsEnabled", L"LogStart a.b.c", L"IsEnabled", L"LogEnd 41 7"}));
    EXPECT_EQ(g_play.created, 1);
  });
}

TEST(ProcedureLog, TakesTheHandleAsANumber) {
  WithPlayedLog([] {
    g_play.handle = Variant(L"12");
    EXPECT_EQ(LogStart(L"a.b.c"), 12);
    g_play.handle = Variant(12.5); // halves round to even
    EXPECT_EQ(LogStart(L"a.b.c"), 12);
    g_play.handle = Variant(L"no number");
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
  });
}

TEST(ProcedureLog, IsSilentWithoutTheComponent) {
  WithPlayedLog([] {
    g_play.missing = true;
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    LogEnd(5, 0);
    EXPECT_EQ(PendingText(), L"the caller's own");
    EXPECT_EQ(g_play.calls, Texts{});
    // It may come later: this thread does not look for it again.
    g_play.missing = false;
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
    EXPECT_EQ(g_play.created, 1);
  });
}

TEST(ProcedureLog, LogsNothingMoreOnceItIsDisabled) {
  WithPlayedLog([] {
    g_play.enabled = false;
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
    EXPECT_EQ(g_play.alive, 0); // released
    g_play.enabled = true;
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
    LogEnd(0, 0);
    EXPECT_EQ(g_play.calls, Texts{L"IsEnabled"});
    EXPECT_EQ(g_play.created, 1);
  });
}

TEST(ProcedureLog, GivesUpWhenDisabledAtTheEnd) {
  WithPlayedLog([] {
    EXPECT_EQ(LogStart(L"a.b.c"), 41);
    g_play.enabled = false;
    LogEnd(41, 0);
    EXPECT_EQ(g_play.alive, 0);
    EXPECT_EQ(g_play.calls, (Texts{L"IsEnabled", L"LogStart a.b.c", L"IsEnabled"}));
  });
}

TEST(ProcedureLog, AnEndAloneCreatesNothing) {
  WithPlayedLog([] {
    LogEnd(3, 0);
    EXPECT_EQ(g_play.created, 0);
  });
}

TEST(ProcedureLog, KeepsItsFailuresToItself) {
  WithPlayedLog([] {
    EXPECT_EQ(LogStart(L"a.b.c"), 41);
    g_play.failing = true;
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    EXPECT_EQ(LogStart(L"a.b.c"), 0);
    EXPECT_EQ(PendingText(), L"the caller's own");
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    LogEnd(41, 0);
    EXPECT_EQ(PendingText(), L"the caller's own");
    // A failure is no answer: the component is asked again.
    g_play.failing = false;
    EXPECT_EQ(LogStart(L"a.b.c"), 41);
  });
}

TEST(ProcedureLog, KeepsAllOfThePendingError) {
  WithPlayedLog([] {
    ComError(E_ABORT, L"Caller", L"text", L"help.chm", 17).SetOnThread();
    LogEnd(LogStart(L"a.b.c"), 0);
    const ComError kept = ComError::FromThread(E_ABORT);
    EXPECT_EQ(kept.source(), L"Caller");
    EXPECT_EQ(kept.description(), L"text");
    EXPECT_EQ(kept.helpFile(), L"help.chm");
    EXPECT_EQ(kept.helpContext(), 17U);
    // Nothing is pending now, and nothing is after a call.
    LogEnd(LogStart(L"a.b.c"), 0);
    com::Ptr<IErrorInfo> none;
    EXPECT_EQ(GetErrorInfo(0, none.Out()), S_FALSE);
  });
}

TEST(ProcedureLog, IsOneAThread) {
  g_play = {};
  for (int i = 0; i < 2; ++i)
    InApartment([] {
      const Replacement<PlayedLog> log(L"VexoLogMsg.Log");
      LogStart(L"a.b.c");
      LogStart(L"a.b.c");
    });
  EXPECT_EQ(g_play.created, 2);
}

TEST(ProcedureLog, ClosesALoggedProcedureHoweverItIsLeft) {
  WithPlayedLog([] {
    const Raised raised = RaisedBy([] {
      const LoggedProcedure log(L"a.b.c");
      throw ComError(E_ABORT, L"Caller", L"on its way");
    });
    EXPECT_EQ(raised.description, L"on its way");
    EXPECT_EQ(g_play.calls.back(), L"LogEnd 41 0");
  });
}

TEST(ProcedureLog, PassesItsArgumentsByReference) {
  g_bareCalls.clear();
  InApartment([] {
    const Replacement<BareLog> log(L"VexoLogMsg.Log");
    EXPECT_EQ(LogStart(L"a.b.c"), 41);
    LogEnd(41, 7);
  });
  ASSERT_EQ(g_bareCalls.size(), 2U);
  EXPECT_EQ(g_bareCalls[0], (BareCall{BareLog::kLogStart, {VT_BSTR | VT_BYREF}}));
  EXPECT_EQ(g_bareCalls[1], (BareCall{BareLog::kLogEnd, {VT_I4 | VT_BYREF, VT_I4 | VT_BYREF}}));
}

} // namespace
} // namespace mbom::test
