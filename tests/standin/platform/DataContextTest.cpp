#include "tests/standin/Support.h"

namespace standin::test {
namespace {

Object NewContext() {
  return New(L"QorvaneGlobal.Global").Call(L"GetDataContext").AsObject();
}

Object Bound(const std::wstring& dsn) {
  Object context = NewContext();
  context.Call(L"BindDsn", dsn);
  return context;
}

Variant CallerKey(const Object& context) {
  return context.Call(L"GetCallerInfo").AsObject().Get(L"CallerKey");
}

TEST(DataContext, HandsOutTheOpenConnectionOfItsDescriptor) {
  const Database database;
  const Object context = Bound(L"Language=en;" + database.Dsn() + L";SubID=7;");
  const Object connection = context.Call(L"GetConnection").AsObject();
  EXPECT_EQ(connection.Get(L"State"), Variant(1));
  EXPECT_EQ(ColumnText(connection.Call(L"Execute", L"SELECT FName FROM t").AsObject()), L"one,two,NULL");
  EXPECT_EQ(context.Call(L"GetConnectionObject").AsObject(), connection);
}

TEST(DataContext, HasNoConnectionBeforeItIsBound) {
  const Object context = NewContext();
  EXPECT_TRUE(FAILED(RaisedBy([&] { context.Call(L"GetConnection"); }).code));
  const Raised raised = RaisedBy([&] { context.Call(L"GetConnectionObject"); });
  EXPECT_EQ(raised.source, L"QorvaneGlobal");
  EXPECT_NE(raised.description, L"");
}

TEST(DataContext, EveryContextHasItsOwnSession) {
  const Database database;
  const Object first = Bound(database.Dsn()).Call(L"GetConnection").AsObject();
  const Object second = Bound(database.Dsn()).Call(L"GetConnection").AsObject();
  EXPECT_NE(first, second);
  first.Call(L"Execute", L"CREATE TABLE #own (FID int)");
  EXPECT_EQ(RaisedBy([&] { second.Call(L"Execute", L"SELECT * FROM #own"); }).code,
            static_cast<HRESULT>(0x80040E37));
}

TEST(DataContext, ACallerIsTheDescriptorsUser) {
  const Database database;
  const Object security = New(L"QorvaneWoskBase.SecurityInfo");
  const auto userOf = [&](const Object& context) {
    return security.Call(L"GetCurrentUserID", CallerKey(context));
  };
  EXPECT_EQ(CallerKey(NewContext()).type(), VT_BSTR);
  EXPECT_EQ(userOf(NewContext()), Variant(0));
  EXPECT_EQ(userOf(Bound(database.Dsn())), Variant(0));
  EXPECT_EQ(userOf(Bound(database.Dsn(L"user id=16394"))), Variant(16394));
}

TEST(DataContext, NowFixesTheClockOfItsSession) {
  const Database database;
  const auto today = [](const Object& context) {
    return ColumnText(context.Call(L"GetConnection")
                          .AsObject()
                          .Call(L"Execute", L"SELECT CONVERT(varchar(19), GETDATE(), 120)")
                          .AsObject());
  };
  EXPECT_EQ(today(Bound(database.Dsn(L"Now=2026-03-05 14:30:09"))), L"2026-03-05 14:30:09");
  EXPECT_EQ(today(Bound(database.Dsn(L"Now=2024-02-29"))), L"2024-02-29 00:00:00");
  EXPECT_NE(today(Bound(database.Dsn())), L"2026-03-05 14:30:09");
}

TEST(DataContext, RefusesAClockThatIsNone) {
  const Database database;
  for (const wchar_t* now : {L"yesterday", L"2026-02-30", L"2026-03-05 25:00:00", L"2026-03-05 14:30:09 x"}) {
    const Raised raised = RaisedBy([&] { Bound(database.Dsn(std::wstring(L"Now=") + now)); });
    EXPECT_TRUE(FAILED(raised.code));
    EXPECT_NE(raised.description.find(now), std::wstring::npos) << "in its text";
  }
}

TEST(DataContext, NeedsADataSource) {
  EXPECT_EQ(RaisedBy([] { Bound(L"Language=en"); }).code, E_INVALIDARG);
  EXPECT_EQ(RaisedBy([] { Bound(L""); }).code, E_INVALIDARG);
}

TEST(DataContext, NamesTheFileThatIsNotThere) {
  const Raised raised = RaisedBy([] { Bound(L"Data Source=C:\\no such folder\\factory.db"); });
  EXPECT_TRUE(FAILED(raised.code));
  EXPECT_NE(raised.description.find(L"factory.db"), std::wstring::npos);
}

TEST(DataContext, ShowsNoPasswordInTheTrace) {
  const Trace trace;
  EXPECT_TRUE(FAILED(
      RaisedBy([] { Bound(L"Provider=ODBC;Connection={DRIVER={none};PWD=sesame};Language=en"); }).code));
  EXPECT_EQ(trace.Events().back(), L"BindDsn\tProvider=ODBC;Connection={DRIVER={none};PWD=***};Language=en");
}

TEST(DataContext, PassesAnyOtherProviderToAdo) {
  // Under Wine that is this library's own, which knows one provider only.
  EXPECT_EQ(RaisedBy([] { Bound(L"Provider=SQLOLEDB;Data Source=server"); }).code, Numbered(3706));
}

} // namespace
} // namespace standin::test
