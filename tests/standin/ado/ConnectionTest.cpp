#include "tests/standin/Support.h"

namespace standin::test {
namespace {

TEST(Connection, OpensOnItsDescriptorAndCloses) {
  const Object connection = New(L"ADODB.Connection");
  EXPECT_EQ(connection.Get(L"State"), Variant(0));
  EXPECT_EQ(connection.Get(L"Version"), Variant(L"2.5"));
  EXPECT_EQ(connection.Get(L"CursorLocation"), Variant(2));
  EXPECT_EQ(connection.Get(L"CommandTimeout"), Variant(30));
  const std::wstring descriptor = L"Provider=Embedded;Data Source=" + NextMemoryName();
  connection.Put(L"ConnectionString", descriptor);
  connection.Call(L"Open");
  EXPECT_EQ(connection.Get(L"State"), Variant(1));
  EXPECT_EQ(connection.Get(L"ConnectionString"), Variant(descriptor));
  EXPECT_EQ(connection.Get(L"Provider"), Variant(L"Embedded"));
  connection.Call(L"Close");
  EXPECT_EQ(connection.Get(L"State"), Variant(0));
  connection.Call(L"Open", L"Data Source=" + NextMemoryName());
  EXPECT_EQ(connection.Get(L"State"), Variant(1));
}

TEST(Connection, RefusesWhatItsStateForbids) {
  const Object connection = New(L"ADODB.Connection");
  const Raised closed = RaisedBy([&] { connection.Call(L"Close"); });
  EXPECT_EQ(closed.code, Numbered(3704));
  EXPECT_EQ(closed.source, L"ADODB.Connection");
  EXPECT_EQ(closed.description, L"Operation is not allowed when the object is closed.");
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"Execute", L"SELECT 1"); }).code, Numbered(3704));
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"BeginTrans"); }).code, Numbered(3704));
  connection.Call(L"Open", L"Data Source=" + NextMemoryName());
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"Open"); }).code, Numbered(3705));
  EXPECT_EQ(RaisedBy([&] { connection.Put(L"ConnectionString", L"x"); }).code, Numbered(3705));
  EXPECT_EQ(RaisedBy([&] { connection.Put(L"CursorLocation", 1); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { connection.Put(L"CommandTimeout", -1); }).code, Numbered(3001));
}

TEST(Connection, RefusesAnotherProvider) {
  const Raised raised =
      RaisedBy([] { New(L"ADODB.Connection").Call(L"Open", L"Provider=SQLOLEDB;Data Source=x"); });
  EXPECT_EQ(raised.code, Numbered(3706));
  EXPECT_EQ(raised.description, L"Provider cannot be found. It may not be properly installed.");
}

TEST(Connection, SharesADatabaseInMemoryByItsName) {
  const Database database;
  const Object second = New(L"ADODB.Connection");
  second.Call(L"Open", database.Dsn());
  EXPECT_EQ(ColumnText(second.Call(L"Execute", L"SELECT FName FROM t").AsObject()), L"one,two,NULL");
}

TEST(Connection, CountsTheRowsThatAStatementAffected) {
  const Database database;
  Variant affected(99);
  database.connection().Call(L"Execute", L"UPDATE t SET FName = 'x' WHERE FInterID > 1",
                             Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(2));
  database.connection().Call(L"Execute", L"SELECT * FROM t", Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(-1));
  LONG typed = 0;
  VARIANT reference{};
  reference.vt = VT_BYREF | VT_I4;
  reference.plVal = &typed;
  VARIANT text{};
  text.vt = VT_BSTR;
  text.bstrVal = SysAllocString(L"DELETE FROM t");
  std::array<VARIANTARG, 2> arguments{reference, text};
  DISPPARAMS params{arguments.data(), nullptr, 2, 0};
  DISPID id = 0;
  wchar_t* name = const_cast<wchar_t*>(L"Execute");
  IDispatch* const object = database.connection().pointer();
  ASSERT_EQ(object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
  EXPECT_EQ(object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(typed, 3);
  SysFreeString(text.bstrVal);
}

TEST(Connection, ExecuteWithoutRecordsReturnsNothing) {
  const Database database;
  constexpr int32_t kTextWithoutRecords = 1 + 128;
  const Variant result =
      database.connection().Call(L"Execute", L"SELECT * FROM t", Variant::Missing(), kTextWithoutRecords);
  EXPECT_FALSE(result.AsObject());
}

TEST(Connection, ExecutesATableAndAProcedureByName) {
  const Database database;
  constexpr int32_t kTable = 2;
  constexpr int32_t kProcedure = 4;
  EXPECT_EQ(ColumnText(database.connection().Call(L"Execute", L"t", Variant::Missing(), kTable).AsObject()),
            L"1,2,3");
  database.Execute(L"CREATE PROCEDURE p AS SELECT FInterID FROM t WHERE FName = 'two'");
  EXPECT_EQ(
      ColumnText(database.connection().Call(L"Execute", L"p", Variant::Missing(), kProcedure).AsObject()),
      L"2");
}

TEST(Connection, EndsItsTransactions) {
  const Database database;
  const Object connection = database.connection();
  EXPECT_EQ(connection.Call(L"BeginTrans"), Variant(1));
  database.Execute(L"DELETE FROM t WHERE FInterID = 1");
  connection.Call(L"RollbackTrans");
  EXPECT_EQ(database.Column(L"SELECT FInterID FROM t"), L"1,2,3");
  connection.Call(L"BeginTrans");
  database.Execute(L"DELETE FROM t WHERE FInterID = 1");
  connection.Call(L"CommitTrans");
  EXPECT_EQ(database.Column(L"SELECT FInterID FROM t"), L"2,3");
}

TEST(Connection, KnowsOneTransactionAtATime) {
  const Database database;
  const Object connection = database.connection();
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"CommitTrans"); }).code, static_cast<HRESULT>(0x8004D00E));
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"RollbackTrans"); }).code, static_cast<HRESULT>(0x8004D00E));
  connection.Call(L"BeginTrans");
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"BeginTrans"); }).code, static_cast<HRESULT>(0x8004D013));
  EXPECT_EQ(RaisedBy([&] { connection.Call(L"Close"); }).code, Numbered(3246));
  connection.Call(L"RollbackTrans");
  connection.Call(L"Close");
}

TEST(Connection, RollsBackWhenItGoesInATransaction) {
  const Database database;
  {
    const Object second = New(L"ADODB.Connection");
    second.Call(L"Open", database.Dsn());
    second.Call(L"BeginTrans");
    second.Call(L"Execute", L"DELETE FROM t");
  }
  EXPECT_EQ(database.Column(L"SELECT FInterID FROM t"), L"1,2,3");
}

} // namespace
} // namespace standin::test
