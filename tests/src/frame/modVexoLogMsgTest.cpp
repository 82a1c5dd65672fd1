// The procedure log: what is asked of the log component, and that nothing of it reaches the caller. Each test
// plays the component on a thread of its own.
#include "src/frame/modVexoLogMsg.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace mbom::test

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

} // namespace
} // namespace mbom::test
