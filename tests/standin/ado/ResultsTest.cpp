// The results of a batch, one after another, with a failure where the server sent it.
#include "com/Text.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

constexpr auto kNoTable = static_cast<HRESULT>(0x80040E37);
constexpr auto kIntegrity = static_cast<HRESULT>(0x80040E2F);
constexpr auto kInCommand = static_cast<HRESULT>(0x80040E14);
constexpr wchar_t kDuplicate[] = L" INSERT INTO t (FInterID) VALUES (1)";
// Fails at the row with FInterID 3.
constexpr wchar_t kCutRows[] = L" SELECT FInterID, 1 / (3 - FInterID) AS FQuotient FROM t ORDER BY FInterID";

Object Next(const Object& recordset, Variant& affected) {
  return recordset.Call(L"NextRecordset", Variant::Reference(affected)).AsObject();
}

Object Next(const Object& recordset) {
  Variant ignored;
  return Next(recordset, ignored);
}

HRESULT CodeOf(const Object& recordset) {
  return RaisedBy([&] { recordset.Call(L"NextRecordset"); }).code;
}

int32_t NativeErrorOf(const Database& database) {
  const Object errors = database.connection().Get(L"Errors").AsObject();
  return errors.Get(L"Item", 0).AsObject().Get(L"NativeError").AsLong();
}

// "count", "rows" or a failure's code for each of the batch's results, joined by blanks.
std::wstring SequenceOf(const Database& database, const std::wstring& batch) {
  std::wstring sequence;
  Variant affected;
  Object result;
  const auto describe = [&](HRESULT raised) {
    if (!sequence.empty()) sequence += L' ';
    if (FAILED(raised)) {
      wchar_t code[9];
      swprintf(code, std::size(code), L"%08X", static_cast<unsigned>(raised));
      sequence += code;
    } else if (result.Get(L"State") == Variant(1)) {
      sequence += L"rows";
    } else {
      sequence += std::to_wstring(affected.AsLong());
    }
  };
  HRESULT raised =
      RaisedBy([&] {
        result = database.connection().Call(L"Execute", batch, Variant::Reference(affected)).AsObject();
      }).code;
  describe(raised);
  while (result) {
    Object next;
    raised = RaisedBy([&] { next = Next(result, affected); }).code;
    if (FAILED(raised)) {
      describe(raised);
      continue;
    }
    result = next;
    if (result) describe(S_OK);
  }
  return sequence;
}

TEST(Results, AFailureBehindACountIsRaisedWhenTheClientMovesOnToIt) {
  const Database database;
  const Object first = database.Execute(L"UPDATE t SET FName = 'x'" + std::wstring(kDuplicate));
  EXPECT_EQ(first.Get(L"State"), Variant(0));
  EXPECT_EQ(database.connection().Get(L"Errors").AsObject().Get(L"Count"), Variant(0));
  const Raised raised = RaisedBy([&] { first.Call(L"NextRecordset"); });
  EXPECT_EQ(raised.code, kIntegrity);
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_TRUE(raised.description.starts_with(L"Violation of PRIMARY KEY constraint"));
  EXPECT_EQ(NativeErrorOf(database), 2627);
  EXPECT_FALSE(Next(first)) << "nothing follows it";
}

TEST(Results, WhatFollowsAFailureComesNext) {
  const Database database;
  const Object first =
      database.Execute(L"UPDATE t SET FName = 'x'" + std::wstring(kDuplicate) + L" SELECT 7 AS seven");
  EXPECT_EQ(CodeOf(first), kIntegrity);
  const Object seven = Next(first);
  ASSERT_TRUE(seven);
  EXPECT_EQ(ValueOf(seven, L"seven"), Variant(7));
  EXPECT_FALSE(Next(seven));
}

TEST(Results, AFailureInFrontOfAllResultsIsRaisedAtOnce) {
  const Database database;
  EXPECT_EQ(RaisedBy([&] { database.Execute(kDuplicate + std::wstring(L" SELECT 7 AS seven")); }).code,
            kIntegrity);
  EXPECT_EQ(RaisedBy([&] {
              database.Execute(L"SET NOCOUNT ON UPDATE t SET FName = 'x' SELECT * FROM nowhere");
            }).code,
            kNoTable);
  EXPECT_EQ(database.Column(L"SELECT FName FROM t"), L"x,x,x") << "what ran before it stays";
  EXPECT_EQ(RaisedBy([&] { database.Open(kDuplicate, 3); }).code, kIntegrity);
}

TEST(Results, OnlyChangesAndRowsAreResults) {
  const Database database;
  EXPECT_EQ(SequenceOf(database, L"INSERT INTO t (FInterID) VALUES (8), (9) UPDATE t SET FName = 'x' "
                                 L"DELETE FROM t WHERE FInterID > 7 SELECT * INTO #copy FROM t "
                                 L"SELECT FInterID FROM t"),
            L"2 5 2 3 rows");
  EXPECT_EQ(SequenceOf(database, L"CREATE TABLE u (FID int) DECLARE @n int SET @n = 1 SELECT @n = 2 "
                                 L"IF @n = 2 PRINT 'two' ALTER TABLE u ADD FName int NULL DROP TABLE u "
                                 L"DELETE FROM t WHERE FInterID = 99"),
            L"0");
  EXPECT_EQ(SequenceOf(database, L"DECLARE @n int SET @n = 1"), L"-1");
  EXPECT_EQ(SequenceOf(database, L"SET NOCOUNT ON UPDATE t SET FName = 'y' SELECT 1 AS x SET NOCOUNT OFF "
                                 L"UPDATE t SET FName = 'z'"),
            L"rows 3");
}

TEST(Results, EachFailureStandsBetweenItsNeighbours) {
  const Database database;
  const std::wstring update = L" UPDATE t SET FName = 'x'";
  EXPECT_EQ(SequenceOf(database, update + kDuplicate + update + L" SELECT 1 AS x" + kDuplicate),
            L"3 80040E2F 3 rows 80040E2F");
  // The batch ends with this one.
  EXPECT_EQ(SequenceOf(database, update + L" SELECT * FROM nowhere" + update), L"3 80040E37");
  EXPECT_EQ(SequenceOf(database, update + L" BEGIN TRY" + kDuplicate + L" END TRY BEGIN CATCH" + update +
                                     L" END CATCH"),
            L"3 3")
      << "a failure that is caught is none";
}

TEST(Results, FailuresInARowBelongTogether) {
  const Database database;
  const Object errors = database.connection().Get(L"Errors").AsObject();
  const Object first = database.Execute(L"UPDATE t SET FName = 'x'" + std::wstring(kDuplicate) +
                                        L" INSERT INTO t (FInterID) VALUES (NULL) DELETE FROM t");
  EXPECT_EQ(CodeOf(first), kIntegrity);
  ASSERT_EQ(errors.Get(L"Count"), Variant(2));
  EXPECT_EQ(errors.Get(L"Item", 0).AsObject().Get(L"NativeError"), Variant(2627));
  EXPECT_EQ(errors.Get(L"Item", 1).AsObject().Get(L"NativeError"), Variant(515));
  Variant affected;
  EXPECT_TRUE(Next(first, affected));
  EXPECT_EQ(affected, Variant(3));
}

TEST(Results, RowsThatAreCutShortFailWhereTheMissingRowWouldBe) {
  const Database database;
  const Object rows = database.Execute(kCutRows + std::wstring(L" SELECT 7 AS seven"));
  EXPECT_EQ(ValueOf(rows, L"FInterID"), Variant(1));
  rows.Call(L"MoveNext");
  EXPECT_EQ(ValueOf(rows, L"FInterID"), Variant(2));
  const Raised raised = RaisedBy([&] { rows.Call(L"MoveNext"); });
  EXPECT_EQ(raised.code, kInCommand);
  EXPECT_EQ(raised.description, L"Divide by zero error encountered.");
  EXPECT_EQ(NativeErrorOf(database), 8134);
  EXPECT_EQ(rows.Get(L"EOF"), Variant(true));
  EXPECT_EQ(RaisedBy([&] { rows.Call(L"MoveNext"); }).code, Numbered(3021));
  EXPECT_EQ(ValueOf(Next(rows), L"seven"), Variant(7));
}

TEST(Results, GetRowsAndMoveMeetTheMissingRowToo) {
  const Database database;
  const Object first = database.Execute(kCutRows);
  EXPECT_EQ(RaisedBy([&] { first.Call(L"GetRows"); }).code, kInCommand);
  const Object second = database.Execute(kCutRows);
  EXPECT_EQ(RaisedBy([&] { second.Call(L"Move", 2); }).code, kInCommand);
  const Object third = database.Execute(kCutRows);
  EXPECT_FALSE(Next(third)) << "the client leaves the result before it comes to the row";
}

TEST(Results, ACursorThatIsCompleteWhenItOpensFailsThen) {
  const Database database;
  EXPECT_EQ(RaisedBy([&] { database.Open(kCutRows, 3); }).code, kInCommand);
  const Object counted = New(L"ADODB.Recordset");
  constexpr int32_t kStatic = 3;
  EXPECT_EQ(RaisedBy([&] { counted.Call(L"Open", kCutRows, database.connection(), kStatic); }).code,
            kInCommand);
  EXPECT_EQ(counted.Get(L"State"), Variant(0));
  const Object forward = database.Open(kCutRows, 2);
  EXPECT_EQ(ValueOf(forward, L"FQuotient"), Variant(0)) << "1 / 2";
  const Object count = database.Open(L"DELETE FROM t WHERE 1 = 2" + std::wstring(kCutRows), 3);
  EXPECT_EQ(CodeOf(count), kInCommand);
  EXPECT_FALSE(Next(count));
}

TEST(Results, WhenNotEvenTheFirstRowCameTheCallFails) {
  const Database database;
  EXPECT_EQ(
      RaisedBy([&] { database.Execute(L"SELECT 1 / (FInterID - 1) AS x FROM t ORDER BY FInterID"); }).code,
      kInCommand);
}

TEST(Results, WithoutRecordsAllOfThemAreGoneThrough) {
  const Database database;
  constexpr int32_t kTextWithoutRecords = 1 + 128;
  const std::wstring batch = L"UPDATE t SET FName = 'x'" + std::wstring(kDuplicate);
  EXPECT_EQ(RaisedBy([&] {
              database.connection().Call(L"Execute", batch, Variant::Missing(), kTextWithoutRecords);
            }).code,
            kIntegrity);
}

TEST(Results, NextRecordsetNeedsAnOpenConnection) {
  const Database database;
  const Object count = database.Execute(L"UPDATE t SET FName = 'x' SELECT 1 AS x");
  database.connection().Call(L"Close");
  EXPECT_EQ(CodeOf(count), Numbered(3704));
}

TEST(Results, OfAProcedureComeInTheSameOrder) {
  const Database database;
  database.Execute(L"CREATE PROCEDURE p AS BEGIN UPDATE t SET FName = 'x'" + std::wstring(kDuplicate) +
                   L" SELECT 7 AS seven END");
  const Object command = New(L"ADODB.Command");
  command.Put(L"ActiveConnection", database.connection());
  command.Put(L"CommandText", L"p");
  command.Put(L"CommandType", 4);
  Variant affected;
  const Object count = command.Call(L"Execute", Variant::Reference(affected)).AsObject();
  EXPECT_EQ(affected, Variant(3));
  EXPECT_EQ(CodeOf(count), kIntegrity);
  EXPECT_EQ(ValueOf(Next(count), L"seven"), Variant(7));
}

class OutputTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"CREATE PROCEDURE p @out int OUTPUT AS BEGIN SET @out = 5 UPDATE t SET FName = 'x' "
                      L"SELECT FInterID FROM t RETURN 9 END");
    database_.Execute(L"CREATE PROCEDURE q @out int OUTPUT AS SET @out = 6");
    command_.Put(L"ActiveConnection", database_.connection());
    command_.Put(L"CommandType", 4);
    constexpr int32_t kInteger = 3;
    constexpr int32_t kReturnValue = 4;
    constexpr int32_t kOutput = 2;
    for (const int32_t direction : {kReturnValue, kOutput})
      command_.Get(L"Parameters")
          .AsObject()
          .Call(L"Append", command_.Call(L"CreateParameter", L"", kInteger, direction).AsObject());
  }
  Object Execute(const wchar_t* procedure) const {
    command_.Put(L"CommandText", procedure);
    return command_.Call(L"Execute").AsObject();
  }
  Variant Parameter(int32_t index) const {
    return command_.Get(L"Parameters").AsObject().Get(L"Item", index).AsObject().Get(L"Value");
  }

  Database database_;
  Object command_ = New(L"ADODB.Command");
};

TEST_F(OutputTest, HasItsValueAtOnceWithoutResults) {
  Execute(L"q");
  EXPECT_EQ(Parameter(1), Variant(6));
  EXPECT_EQ(Parameter(0), Variant(0));
}

TEST_F(OutputTest, ComesBehindTheLastResult) {
  const Object count = Execute(L"p");
  EXPECT_TRUE(Parameter(1).IsEmpty());
  const Object rows = Next(count);
  rows.Call(L"MoveNext");
  EXPECT_TRUE(Parameter(1).IsEmpty());
  EXPECT_EQ(ColumnText(rows), L"2,3");
  EXPECT_EQ(Parameter(1), Variant(5));
  EXPECT_EQ(Parameter(0), Variant(9));
}

TEST_F(OutputTest, ComesWhenTheRestIsGivenUp) {
  Object rows = Next(Execute(L"p"));
  EXPECT_TRUE(Parameter(1).IsEmpty());
  rows.Call(L"Close");
  EXPECT_EQ(Parameter(1), Variant(5));
}

TEST_F(OutputTest, ComesWhenTheRecordsetIsReleased) {
  Object count = Execute(L"p");
  EXPECT_TRUE(Parameter(1).IsEmpty());
  count = Object();
  EXPECT_EQ(Parameter(1), Variant(5));
}

TEST_F(OutputTest, ComesWithTheLastRowsOfAClientSideCursor) {
  command_.Put(L"CommandText", L"p");
  const Object count = New(L"ADODB.Recordset");
  count.Put(L"CursorLocation", 3);
  count.Call(L"Open", command_);
  EXPECT_TRUE(Parameter(1).IsEmpty());
  const Object rows = Next(count);
  EXPECT_EQ(Parameter(1), Variant(5)) << "the client has all rows";
  EXPECT_EQ(rows.Get(L"RecordCount"), Variant(3));
}

} // namespace
} // namespace standin::test
