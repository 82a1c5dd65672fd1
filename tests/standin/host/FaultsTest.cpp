#include <functional>

#include "com/Text.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

constexpr auto kCode = static_cast<HRESULT>(0x80041234);

class FaultsTest : public testing::Test {
 protected:
  ~FaultsTest() override { faults_.Call(L"Clear"); }
  void Fail(const wchar_t* kind, int32_t nth, HRESULT code = kCode, const wchar_t* text = L"armed") const {
    faults_.Call(L"Fail", kind, nth, static_cast<int32_t>(code), text);
  }
  Raised GetContext() const {
    return RaisedBy([&] { global_.Call(L"GetDataContext"); });
  }

  Object faults_ = New(L"ErpStandIn.Faults");
  Object global_ = New(L"QorvaneGlobal.Global");
};

TEST_F(FaultsTest, FailsTheNthEventOfItsKindOnce) {
  Fail(L"GetDataContext", 2);
  EXPECT_EQ(GetContext().code, 0);
  New(L"TarnelResLoader.Loader").Call(L"LoadString", L"another kind");
  const Raised raised = GetContext();
  EXPECT_EQ(raised.code, kCode);
  EXPECT_EQ(raised.source, L"ErpStandIn");
  EXPECT_EQ(raised.description, L"armed");
  EXPECT_EQ(GetContext().code, 0);
}

TEST_F(FaultsTest, TakesSeveralAtATime) {
  Fail(L"GetDataContext", 1, E_ABORT);
  Fail(L"getdatacontext", 3, E_FAIL);
  Fail(L"LoadString", 1, E_POINTER);
  EXPECT_EQ(GetContext().code, E_ABORT);
  EXPECT_EQ(GetContext().code, 0);
  EXPECT_EQ(GetContext().code, E_FAIL);
  EXPECT_EQ(RaisedBy([] { New(L"TarnelResLoader.Loader").Call(L"LoadString", L"x"); }).code, E_POINTER);
}

TEST_F(FaultsTest, RecordsTheEventThatFails) {
  Fail(L"GetDataContext", 1);
  const Trace trace;
  EXPECT_EQ(GetContext().code, kCode);
  EXPECT_EQ(trace.Events(), Texts{L"GetDataContext"});
}

TEST_F(FaultsTest, IsGoneAfterClear) {
  Fail(L"GetDataContext", 1);
  faults_.Call(L"Clear");
  EXPECT_EQ(GetContext().code, 0);
}

TEST_F(FaultsTest, RefusesWhatCouldNeverHappen) {
  EXPECT_EQ(RaisedBy([&] { Fail(L"NoSuchKind", 1); }).code, Numbered(5));
  EXPECT_EQ(RaisedBy([&] { Fail(L"Execute", 0); }).code, Numbered(5));
  EXPECT_EQ(RaisedBy([&] { Fail(L"Execute", 1, S_OK); }).code, Numbered(5));
}

TEST_F(FaultsTest, TheFailingEventDoesNotRun) {
  const Database database;
  Fail(L"Execute", 1);
  EXPECT_EQ(RaisedBy([&] { database.Execute(L"DELETE FROM t"); }).code, kCode);
  EXPECT_EQ(database.Column(L"SELECT FInterID FROM t"), L"1,2,3");
}

// Every kind that there is, each on the call that makes it.
TEST_F(FaultsTest, ReachesEveryKind) {
  const Database database;
  const Object context = global_.Call(L"GetDataContext").AsObject();
  context.Call(L"BindDsn", database.Dsn());
  const Object command = New(L"ADODB.Command");
  command.Put(L"ActiveConnection", database.connection());
  command.Put(L"CommandText", L"SELECT 1 AS x");
  const Object log = New(L"VexoLogMsg.Log");
  const std::vector<std::pair<const wchar_t*, std::function<void()>>> calls{
      {L"GetDataContext", [&] { global_.Call(L"GetDataContext"); }},
      {L"GetCallerInfo", [&] { context.Call(L"GetCallerInfo"); }},
      {L"BindDsn", [&] { context.Call(L"BindDsn", database.Dsn()); }},
      {L"VoteAbort", [&] { context.Call(L"VoteAbort"); }},
      {L"VoteComplete", [&] { context.Call(L"VoteComplete"); }},
      {L"GetConnection", [&] { context.Call(L"GetConnection"); }},
      {L"GetConnectionObject", [&] { context.Call(L"GetConnectionObject"); }},
      {L"Execute", [&] { database.Execute(L"SELECT 1 AS x"); }},
      {L"Open", [&] { database.Open(L"SELECT 1 AS x", 3); }},
      {L"Command", [&] { command.Call(L"Execute"); }},
      {L"CreateServerObject",
       [] { New(L"QorvaneWoskBase.ObjectFactory").Call(L"CreateServerObject", L"ruvo10.Vector"); }},
      {L"LoadString", [] { New(L"TarnelResLoader.Loader").Call(L"LoadString", L"x"); }},
      {L"LogStart", [&] { log.Call(L"LogStart", L"a.b.c"); }},
      {L"LogEnd", [&] { log.Call(L"LogEnd", 1, 0); }},
  };
  for (const auto& [kind, call] : calls) {
    Fail(kind, 1);
    EXPECT_EQ(RaisedBy(call).code, kCode) << com::ToUtf8(kind);
  }
}

} // namespace
} // namespace standin::test
