#include <thread>

#include "tests/standin/Worker.h"

namespace standin::test {
namespace {

TEST(Trace, RecordsWhatTheComponentAsksInOrder) {
  const Database database;
  const std::wstring dsn = database.Dsn(L"User ID=16394;Language=en");
  const Trace trace;
  const Object context = New(L"QorvaneGlobal.Global").Call(L"GetDataContext").AsObject();
  context.Call(L"VoteAbort");
  context.Call(L"BindDsn", dsn);
  context.Call(L"GetCallerInfo");
  const Object connection = context.Call(L"GetConnection").AsObject();
  context.Call(L"GetConnectionObject");
  connection.Call(L"Execute", L"SELECT  FName\r\nFROM t ");
  const Object recordset = New(L"ADODB.Recordset");
  recordset.Call(L"Open", L"select 1 AS x", connection);
  const Object loader = New(L"TarnelResLoader.Loader");
  loader.Call(L"LoadString", L"成本对象表");
  New(L"QorvaneWoskBase.ObjectFactory").Call(L"CreateServerObject", L"QorvaneWoskBase.SecurityInfo");
  context.Call(L"VoteComplete");
  EXPECT_EQ(trace.Events(),
            (Texts{L"GetDataContext", L"VoteAbort", L"BindDsn\t" + dsn, L"GetCallerInfo", L"GetConnection",
                   L"GetConnectionObject", L"Execute\tSELECT  FName\r\nFROM t ", L"Open\tselect 1 AS x",
                   L"LoadString\t成本对象表", L"CreateServerObject\tQorvaneWoskBase.SecurityInfo",
                   L"VoteComplete"}));
}

TEST(Trace, RecordsACommandWithItsInputParameters) {
  const Database database;
  const Object command = New(L"ADODB.Command");
  command.Put(L"ActiveConnection", database.connection());
  command.Put(L"CommandText", L"SELECT FName FROM t WHERE FInterID = ? AND FName = ?");
  const Object parameters = command.Get(L"Parameters").AsObject();
  parameters.Call(L"Append", command.Call(L"CreateParameter", L"@id", 3, 1, 0, 2));
  parameters.Call(L"Append", command.Call(L"CreateParameter", L"", 202, 1, 30, L"two"));
  const Trace trace;
  command.Call(L"Execute");
  New(L"ADODB.Recordset").Call(L"Open", command);
  const std::wstring event = L"Command\tSELECT FName FROM t WHERE FInterID = ? AND FName = ?\t@id=2\t=two";
  EXPECT_EQ(trace.Events(), (Texts{event, event}));
}

TEST(Trace, RecordsAnEventThatFails) {
  const Database database;
  const Trace trace;
  EXPECT_TRUE(FAILED(RaisedBy([&] { database.Execute(L"SELECT * FROM nowhere"); }).code));
  EXPECT_EQ(trace.Events(), Texts{L"Execute\tSELECT * FROM nowhere"});
}

TEST(Trace, StandsStillUntilStartedAndAfterStop) {
  const Object trace = New(L"ErpStandIn.Trace");
  const Object global = New(L"QorvaneGlobal.Global");
  global.Call(L"GetDataContext");
  EXPECT_EQ(trace.Get(L"Count"), Variant(0));
  trace.Call(L"Start");
  global.Call(L"GetDataContext");
  trace.Call(L"Stop");
  global.Call(L"GetDataContext");
  EXPECT_EQ(trace.Get(L"Count"), Variant(1));
  EXPECT_EQ(trace.Get(L"Item", 1), Variant(L"GetDataContext"));
  EXPECT_EQ(RaisedBy([&] { trace.Get(L"Item", 2); }).code, Numbered(9));
  EXPECT_EQ(RaisedBy([&] { trace.Get(L"Item", 0); }).code, Numbered(9));
  trace.Call(L"Clear");
  EXPECT_EQ(trace.Get(L"Count"), Variant(0));
}

TEST(Trace, IsItsThreadsOwn) {
  const Trace trace;
  Texts others;
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
      const Trace other;
      New(L"QorvaneGlobal.Global").Call(L"GetDataContext");
      others = other.Events();
    }
    CoUninitialize();
  }).join();
  EXPECT_EQ(others, Texts{L"GetDataContext"});
  EXPECT_EQ(trace.Events(), Texts{});
}

TEST(Trace, LeavesOutWhatTheStandInDoesItself) {
  const Database database;
  database.Execute(
      L"CREATE TABLE t_SystemProfile (FCategory varchar(30), FKey varchar(30), FValue varchar(100))");
  const Object worker = HostedWorker();
  const Trace trace;
  worker.Get(L"Seven");
  New(L"QorvaneWoskBase.SystemProfile").Call(L"GetProfile", database.Dsn(), L"IC", L"UseShortNumber");
  EXPECT_EQ(trace.Events(), Texts{});
}

} // namespace
} // namespace standin::test
