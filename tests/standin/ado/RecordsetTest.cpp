#include "tests/standin/Support.h"

namespace standin::test {
namespace {

constexpr wchar_t kAll[] = L"SELECT FInterID, FName FROM t ORDER BY FInterID";

TEST(Recordset, OfExecuteIsForwardOnlyReadOnlyAndNotCounted) {
  const Database database;
  const Object recordset = database.Execute(kAll);
  EXPECT_EQ(recordset.Get(L"State"), Variant(1));
  EXPECT_EQ(recordset.Get(L"CursorType"), Variant(0));
  EXPECT_EQ(recordset.Get(L"LockType"), Variant(1));
  EXPECT_EQ(recordset.Get(L"CursorLocation"), Variant(2));
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(-1));
  EXPECT_EQ(recordset.Get(L"AbsolutePosition"), Variant(-1));
  EXPECT_EQ(recordset.Get(L"Source"), Variant(kAll));
  EXPECT_EQ(recordset.Get(L"ActiveConnection").AsObject(), database.connection());
  EXPECT_EQ(ColumnText(recordset), L"1,2,3");
}

TEST(Recordset, ForwardOnlyDoesNotGoBack) {
  const Database database;
  const Object recordset = database.Execute(kAll);
  recordset.Call(L"MoveFirst");
  recordset.Call(L"MoveNext");
  const Raised back = RaisedBy([&] { recordset.Call(L"MovePrevious"); });
  EXPECT_EQ(back.code, static_cast<HRESULT>(0x80040E24));
  EXPECT_EQ(back.description, L"Rowset does not support fetching backward.");
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MoveFirst"); }).code, static_cast<HRESULT>(0x80040E18));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MoveLast"); }).code, static_cast<HRESULT>(0x80040E24));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Move", -1); }).code, static_cast<HRESULT>(0x80040E24));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"AbsolutePosition", 1); }).code, Numbered(3251));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Clone"); }).code, Numbered(3251));
  EXPECT_EQ(ValueOf(recordset, L"FInterID"), Variant(2));
}

TEST(Recordset, OfAClientSideConnectionIsStaticAndCounted) {
  const Database database;
  database.connection().Put(L"CursorLocation", kClient);
  const Object recordset = database.Execute(kAll);
  database.connection().Put(L"CursorLocation", kServer);
  EXPECT_EQ(recordset.Get(L"CursorType"), Variant(3));
  EXPECT_EQ(recordset.Get(L"CursorLocation"), Variant(3));
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(3));
}

TEST(Recordset, ClientSideIsStaticWhateverIsAskedFor) {
  const Database database;
  const Object recordset = New(L"ADODB.Recordset");
  recordset.Put(L"CursorLocation", kClient);
  recordset.Call(L"Open", kAll, database.connection(), 0, 1);
  EXPECT_EQ(recordset.Get(L"CursorType"), Variant(3));
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(3));
}

TEST(Recordset, MovesInBothDirectionsWithinItsBounds) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  const auto id = [&] { return ValueOf(recordset, L"FInterID"); };
  EXPECT_EQ(recordset.Get(L"AbsolutePosition"), Variant(1));
  recordset.Call(L"MoveLast");
  EXPECT_EQ(id(), Variant(3));
  recordset.Call(L"MovePrevious");
  EXPECT_EQ(id(), Variant(2));
  recordset.Call(L"MoveFirst");
  EXPECT_EQ(id(), Variant(1));
  recordset.Call(L"MovePrevious");
  EXPECT_EQ(recordset.Get(L"BOF"), Variant(true));
  EXPECT_EQ(recordset.Get(L"EOF"), Variant(false));
  EXPECT_EQ(recordset.Get(L"AbsolutePosition"), Variant(-2));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MovePrevious"); }).code, Numbered(3021));
  EXPECT_EQ(RaisedBy(id).code, Numbered(3021));
  recordset.Call(L"Move", 2);
  EXPECT_EQ(id(), Variant(2));
  recordset.Call(L"Move", 1, 1);
  EXPECT_EQ(id(), Variant(2)) << "one after the first";
  recordset.Call(L"Move", 5);
  EXPECT_EQ(recordset.Get(L"EOF"), Variant(true));
  EXPECT_EQ(recordset.Get(L"AbsolutePosition"), Variant(-3));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MoveNext"); }).code, Numbered(3021));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Move", 1); }).code, Numbered(3021));
  recordset.Put(L"AbsolutePosition", 2);
  EXPECT_EQ(id(), Variant(2));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"AbsolutePosition", 4); }).code, Numbered(3001));
}

TEST(Recordset, WithoutRowsIsAtBothEnds) {
  const Database database;
  for (const int32_t location : {kServer, kClient}) {
    const Object recordset = database.Open(L"SELECT * FROM t WHERE 1 = 2", location);
    EXPECT_EQ(recordset.Get(L"State"), Variant(1));
    EXPECT_EQ(recordset.Get(L"BOF"), Variant(true));
    EXPECT_EQ(recordset.Get(L"EOF"), Variant(true));
    EXPECT_EQ(recordset.Get(L"Fields").AsObject().Get(L"Count"), Variant(2));
    EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MoveFirst"); }).code, Numbered(3021));
    EXPECT_EQ(RaisedBy([&] { recordset.Call(L"MoveNext"); }).code, Numbered(3021));
  }
}

TEST(Recordset, OfAStatementWithoutRowsIsClosed) {
  const Database database;
  const Object recordset = database.Execute(L"UPDATE t SET FName = 'x'");
  EXPECT_EQ(recordset.Get(L"State"), Variant(0));
  const Raised raised = RaisedBy([&] { recordset.Get(L"EOF"); });
  EXPECT_EQ(raised.code, Numbered(3704));
  EXPECT_EQ(raised.source, L"ADODB.Recordset");
  EXPECT_EQ(raised.description, L"Operation is not allowed when the object is closed.");
  for (const wchar_t* member : {L"BOF", L"RecordCount", L"MoveNext", L"MoveFirst", L"Close", L"GetRows"})
    EXPECT_EQ(RaisedBy([&] { recordset.Get(member); }).code, Numbered(3704));
  EXPECT_EQ(recordset.Get(L"Fields").AsObject().Get(L"Count"), Variant(0));
  EXPECT_EQ(RaisedBy([&] { recordset.Get(L"Fields").AsObject().Get(L"Item", 0); }).code, Numbered(3265));
}

TEST(Recordset, ShowsEachRowCountAsAResultOfItsOwn) {
  const Database database;
  const Object counts =
      database.Execute(L"UPDATE t SET FName = 'x' WHERE FInterID < 3 SELECT FInterID FROM t "
                       L"DELETE FROM t SELECT 7 AS seven");
  EXPECT_EQ(counts.Get(L"State"), Variant(0));
  Variant affected;
  const Object rows = counts.Call(L"NextRecordset", Variant::Reference(affected)).AsObject();
  EXPECT_EQ(affected, Variant(-1));
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
  const Object deleted = rows.Call(L"NextRecordset", Variant::Reference(affected)).AsObject();
  EXPECT_EQ(affected, Variant(3));
  EXPECT_EQ(deleted.Get(L"State"), Variant(0));
  EXPECT_EQ(rows.Get(L"State"), Variant(0)) << "it has moved on";
  const Object seven = deleted.Call(L"NextRecordset").AsObject();
  EXPECT_EQ(ValueOf(seven, L"seven"), Variant(7));
  EXPECT_FALSE(seven.Call(L"NextRecordset").AsObject());
}

TEST(Recordset, WithNocountStartsWithTheRows) {
  const Database database;
  const Object recordset =
      database.Execute(L"SET NOCOUNT ON UPDATE t SET FName = 'x' SELECT FInterID FROM t");
  EXPECT_EQ(ColumnText(recordset), L"1,2,3");
}

TEST(Recordset, ClientSideStaysWhenItIsDisconnected) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  recordset.Put(L"ActiveConnection", Object());
  EXPECT_FALSE(recordset.Get(L"ActiveConnection").AsObject());
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(3));
  database.connection().Call(L"Close");
  EXPECT_EQ(ColumnText(recordset), L"1,2,3");
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Requery"); }).code, Numbered(3709));
}

TEST(Recordset, IsAttachedAgain) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  recordset.Put(L"ActiveConnection", Variant::Null());
  recordset.Put(L"ActiveConnection", database.connection());
  database.Execute(L"DELETE FROM t WHERE FInterID = 1");
  recordset.Call(L"Requery");
  EXPECT_EQ(ColumnText(recordset), L"2,3");
}

TEST(Recordset, ServerSideCannotBeDisconnected) {
  const Database database;
  const Object recordset = database.Execute(kAll);
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"ActiveConnection", Object()); }).code, Numbered(3705));
  EXPECT_EQ(ColumnText(recordset), L"1,2,3");
}

TEST(Recordset, ClosesWithItsConnection) {
  const Database database;
  const Object server = database.Execute(kAll);
  const Object client = database.Open(kAll, kClient);
  const Object field = server.Get(L"Fields").AsObject().Get(L"Item", 0).AsObject();
  database.connection().Call(L"Close");
  EXPECT_EQ(server.Get(L"State"), Variant(0));
  EXPECT_EQ(client.Get(L"State"), Variant(0));
  EXPECT_EQ(RaisedBy([&] { server.Get(L"EOF"); }).code, Numbered(3704));
  EXPECT_EQ(RaisedBy([&] { field.Get(L"Value"); }).code, Numbered(3704));
}

TEST(Recordset, OutlivesTheReferencesToItsConnection) {
  Object field;
  Object recordset;
  {
    const Database database;
    recordset = database.Execute(kAll);
    field = recordset.Get(L"Fields").AsObject().Get(L"Item", L"FName").AsObject();
  }
  EXPECT_EQ(field.Get(L"Value"), Variant(L"one"));
  EXPECT_EQ(ColumnText(recordset), L"1,2,3");
  recordset = Object();
  EXPECT_EQ(field.Get(L"Name"), Variant(L"FName"));
  EXPECT_EQ(RaisedBy([&] { field.Get(L"Value"); }).code, Numbered(3704));
}

TEST(Recordset, OpensOnItsPropertiesAndOnADescriptor) {
  const Database database;
  const Object recordset = New(L"ADODB.Recordset");
  EXPECT_EQ(recordset.Get(L"CursorLocation"), Variant(2));
  EXPECT_EQ(recordset.Get(L"Source"), Variant(L""));
  recordset.Put(L"Source", kAll);
  recordset.Put(L"ActiveConnection", database.Dsn());
  recordset.Put(L"CursorType", 3);
  recordset.Call(L"Open");
  EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(3)) << "server-side and static";
  EXPECT_EQ(recordset.Get(L"ActiveConnection").AsObject().Get(L"State"), Variant(1));
}

TEST(Recordset, OpensAgainAfterClose) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Open", kAll, database.connection()); }).code, Numbered(3705));
  recordset.Call(L"Close");
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Close"); }).code, Numbered(3704));
  recordset.Call(L"Open", L"SELECT 7 AS seven", database.connection(), -1, -1, -1);
  EXPECT_EQ(ValueOf(recordset, L"seven"), Variant(7));
}

TEST(Recordset, KeepsItsSettingsWhileItIsOpen) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  for (const wchar_t* member : {L"CursorLocation", L"CursorType", L"LockType"})
    EXPECT_EQ(RaisedBy([&] { recordset.Put(member, 3); }).code, Numbered(3705));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"Source", kAll); }).code, Numbered(3705));
}

TEST(Recordset, RefusesWhatIsNoConnectionSourceOrSetting) {
  const Database database;
  const Object recordset = New(L"ADODB.Recordset");
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Open", Variant::Missing(), database.connection()); }).code,
            Numbered(3001));
  recordset.Put(L"ActiveConnection", Object());
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Open", kAll); }).code, Numbered(3709));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Open", kAll, New(L"ruvo10.Vector")); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"Open", kAll, New(L"ADODB.Connection")); }).code, Numbered(3709));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"CursorLocation", 1); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"CursorType", 4); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"LockType", 0); }).code, Numbered(3001));
  EXPECT_EQ(RaisedBy([&] { recordset.Put(L"Filter", L"FInterID = 1"); }).code, Numbered(3251));
}

TEST(Recordset, ClonesMoveOnTheirOwn) {
  const Database database;
  const Object recordset = database.Open(kAll, kClient);
  recordset.Call(L"MoveLast");
  const Object clone = recordset.Call(L"Clone").AsObject();
  EXPECT_EQ(ValueOf(clone, L"FInterID"), Variant(1));
  EXPECT_EQ(clone.Get(L"RecordCount"), Variant(3));
  recordset.Call(L"Close");
  EXPECT_EQ(ColumnText(clone), L"1,2,3");
}

TEST(Recordset, GivesItsRowsAsAnArray) {
  const Database database;
  const Object recordset = database.Execute(kAll);
  const auto at = [](const Variant& rows, LONG field, LONG row) {
    std::array<LONG, 2> index{field, row};
    Variant value;
    EXPECT_EQ(SafeArrayGetElement(rows.raw().parray, index.data(), value.Out()), S_OK);
    return value;
  };
  const Variant two = recordset.Call(L"GetRows", 2);
  ASSERT_EQ(two.type(), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(SafeArrayGetDim(two.raw().parray), 2U);
  EXPECT_EQ(at(two, 0, 0), Variant(1));
  EXPECT_EQ(at(two, 1, 0), Variant(L"one"));
  EXPECT_EQ(at(two, 0, 1), Variant(2));
  const Variant rest = recordset.Call(L"GetRows", -1, Variant::Missing(), L"FName");
  EXPECT_TRUE(at(rest, 0, 0).IsNull());
  EXPECT_EQ(recordset.Get(L"EOF"), Variant(true));
  EXPECT_EQ(RaisedBy([&] { recordset.Call(L"GetRows"); }).code, Numbered(3021));
}

} // namespace
} // namespace standin::test
