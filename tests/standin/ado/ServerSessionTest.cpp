// What ADO is promised of every server that a connection may have, tried with each of them: the embedded
// engine, SQLite through its ODBC driver, and the engine again behind FreeTDS and a wire. What a server or
// its driver cannot do is skipped, with its name.
#include "standin/ado/ServerSession.h"

#include <array>
#include <memory>
#include <ostream>

#include "com/Text.h"
#include "com/ValueText.h"
#include "tests/standin/DataFile.h"
#include "tests/standin/SqliteFile.h"
#include "tests/standin/Worker.h"
#include "tests/support/TdsServer.h"

namespace standin::test {
namespace {

// A database of the test's own.
class TestServer {
 public:
  virtual ~TestServer() = default;
  virtual std::wstring Dsn() const = 0;
};

class EmbeddedServer final : public TestServer {
 public:
  std::wstring Dsn() const override { return file_.Dsn(); }

 private:
  DataFile file_{0};
};

class WireServer final : public TestServer {
 public:
  std::wstring Dsn() const override { return server_.Dsn(); }

 private:
  com::test::TdsServer server_;
};

class SqliteServer final : public TestServer {
 public:
  std::wstring Dsn() const override { return file_.Dsn(); }

 private:
  SqliteFile file_;
};

struct Kind {
  const char* name;
  std::unique_ptr<TestServer> (*make)();
  const char* cannot; // what its tests are skipped for, as a list of words
  HRESULT duplicate;  // of a key
  int32_t duplicateNumber;
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

constexpr int32_t kInteger = 3;
constexpr int32_t kNumeric = 131;
constexpr int32_t kTimeStamp = 135;
constexpr int32_t kVarWChar = 202;
constexpr int32_t kVarBinary = 204;
constexpr int32_t kDouble = 5;

class ServerSessionTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    if (GetParam().make == MakeSqlite) SKIP_WITHOUT_SQLITE_DRIVER();
    if (GetParam().make == MakeWire) SKIP_WITHOUT_TDS_SERVER();
    server_ = GetParam().make();
    connection_ = Connect();
    Execute(L"CREATE TABLE things (FInterID int NOT NULL PRIMARY KEY, FName nvarchar(20) NULL)");
    Execute(L"INSERT INTO things (FInterID, FName) VALUES (1, 'one'), (2, 'two'), (3, NULL)");
  }
  void TearDown() override {
    if (connection_) RaisedBy([&] { connection_.Call(L"RollbackTrans"); });
  }

  static bool Can(std::string_view what) {
    return std::string_view(GetParam().cannot).find(what) == std::string_view::npos;
  }

  Object Connect() const {
    Object connection = New(L"ADODB.Connection");
    connection.Call(L"Open", server_->Dsn());
    return connection;
  }
  Object Execute(const std::wstring& sql) const { return connection_.Call(L"Execute", sql).AsObject(); }
  std::wstring Column(const std::wstring& sql) const { return ColumnText(Execute(sql)); }
  Object Error(int32_t index) const {
    return connection_.Get(L"Errors").AsObject().Get(L"Item", index).AsObject();
  }
  Object NewCommand(const std::wstring& text) const {
    Object command = New(L"ADODB.Command");
    command.Put(L"ActiveConnection", connection_);
    command.Put(L"CommandText", text);
    return command;
  }
  static void Append(const Object& command, int32_t type, int32_t size, const Variant& value) {
    const Object parameter = command.Call(L"CreateParameter", L"", type, 1, size, value).AsObject();
    if (type == kNumeric) {
      parameter.Put(L"Precision", 20);
      parameter.Put(L"NumericScale", 4);
    }
    command.Get(L"Parameters").AsObject().Call(L"Append", parameter);
  }
  // A table "many" of the numbers from 1 on.
  void Fill(int rows) const {
    Execute(L"CREATE TABLE many (n int NOT NULL, FText nvarchar(40))");
    Execute(L"INSERT INTO many VALUES (1, 'row')");
    for (int have = 1; have < rows; have *= 2)
      Execute(L"INSERT INTO many SELECT n + " + std::to_wstring(have) + L", FText FROM many WHERE n + " +
              std::to_wstring(have) + L" <= " + std::to_wstring(rows));
  }

 public:
  static std::unique_ptr<TestServer> MakeEmbedded() { return std::make_unique<EmbeddedServer>(); }
  static std::unique_ptr<TestServer> MakeWire() { return std::make_unique<WireServer>(); }
  static std::unique_ptr<TestServer> MakeSqlite() { return std::make_unique<SqliteServer>(); }

 protected:
  std::unique_ptr<TestServer> server_;
  Object connection_;
};

#define SKIP_UNLESS_IT_CAN(what)                                                                             \
  if (!Can(what)) GTEST_SKIP() << "the driver of " << GetParam().name << " cannot do this: " << what

TEST_P(ServerSessionTest, CountsTheRowsThatAStatementChanged) {
  Variant affected;
  const Object changed =
      connection_
          .Call(L"Execute", L"UPDATE things SET FName = 'x' WHERE FInterID > 1", Variant::Reference(affected))
          .AsObject();
  EXPECT_EQ(affected, Variant(2));
  EXPECT_EQ(changed.Get(L"State"), Variant(0)) << "a statement without rows gives a closed recordset";
  connection_.Call(L"Execute", L"DELETE FROM things WHERE FInterID = 9", Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(0));
  connection_.Call(L"Execute", L"SELECT FInterID FROM things", Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(-1));
}

TEST_P(ServerSessionTest, GivesRowsWithTheirNamesAndNulls) {
  const Object rows = Execute(L"SELECT FInterID, FName AS FOther FROM things ORDER BY FInterID");
  EXPECT_EQ(rows.Get(L"Fields").AsObject().Get(L"Count"), Variant(2));
  EXPECT_EQ(ValueOf(rows, L"finterid"), Variant(1));
  EXPECT_EQ(ValueOf(rows, L"FOther"), Variant(L"one"));
  rows.Call(L"Move", 2);
  EXPECT_TRUE(ValueOf(rows, L"FOther").IsNull());
  rows.Call(L"MoveNext");
  EXPECT_EQ(rows.Get(L"EOF"), Variant(true));
  const Object none = Execute(L"SELECT FInterID FROM things WHERE FInterID = 9");
  EXPECT_EQ(none.Get(L"State"), Variant(1));
  EXPECT_EQ(none.Get(L"EOF"), Variant(true));
}

TEST_P(ServerSessionTest, GivesEachTypeAsAdoDoes) {
  Execute(
      L"CREATE TABLE v (a tinyint, b smallint, c int, d bigint, e bit, f float, g real, h decimal(20,4), "
      L"i money, j datetime, k smalldatetime, l nvarchar(20), m varchar(20), n text, o uniqueidentifier)");
  Execute(L"INSERT INTO v VALUES (255, -32768, -2147483648, 9007199254740993, 1, 0.1, 0.5, "
          L"12345.6789, -1.25, '2026-03-05 14:30:09', '2026-03-05 14:30:00', 'wide', 'narrow', "
          L"'long', '6F9619FF-8B86-D011-B42D-00C04FC964FF')");
  const Object row = Execute(L"SELECT * FROM v");
  struct Expected {
    const wchar_t* column;
    VARTYPE type;
    int32_t adoType;
    const wchar_t* text;
  };
  constexpr int32_t kGuid = 72;
  const std::array expected{
      Expected{L"a", VT_UI1, 17, L"255"},
      Expected{L"b", VT_I2, 2, L"-32768"},
      Expected{L"c", VT_I4, 3, L"-2147483648"},
      Expected{L"d", VT_I8, 20, L"9007199254740993"},
      Expected{L"e", VT_BOOL, 11, L"True"},
      Expected{L"f", VT_R8, 5, L"0.1"},
      Expected{L"g", VT_R4, 4, L"0.5"},
      Expected{L"h", VT_DECIMAL, 131, L"12345.6789"},
      Expected{L"i", VT_CY, 6, L"-1.25"},
      Expected{L"j", VT_DATE, 135, nullptr},
      Expected{L"k", VT_DATE, 135, nullptr},
      Expected{L"l", VT_BSTR, 202, L"wide"},
      Expected{L"m", VT_BSTR, 200, L"narrow"},
      Expected{L"n", VT_BSTR, 201, L"long"},
      Expected{L"o", VT_BSTR, kGuid, L"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
  };
  for (const Expected& type : expected) {
    const std::string column = com::ToUtf8(type.column);
    const Object field = row.Get(L"Fields", type.column).AsObject();
    EXPECT_EQ(field.Get(L"Type"), Variant(type.adoType)) << column;
    const Variant value = field.Get(L"Value");
    EXPECT_EQ(value.type(), type.type) << column;
    if (type.text) {
      EXPECT_EQ(com::ToText(value), type.text) << column;
    }
  }
  // 2026-03-05 is Automation's day 46086.
  EXPECT_EQ(ValueOf(row, L"j"), Variant::Date(46086 + 52209.0 / 86400));
  EXPECT_EQ(ValueOf(row, L"k"), Variant::Date(46086 + 52200.0 / 86400));
}

TEST_P(ServerSessionTest, TakesEachTypeAsAParameter) {
  Execute(
      L"CREATE TABLE v (a int, b nvarchar(30), c decimal(20,4), d datetime, e float, f varbinary(10), g int)");
  const Object command = NewCommand(L"INSERT INTO v VALUES (?, ?, ?, ?, ?, ?, 3-?)");
  Append(command, kInteger, 0, -7);
  Append(command, kVarWChar, 30, L"it's 自行车 ?");
  Append(command, kNumeric, 0, L"-12345.6789");
  Append(command, kTimeStamp, 0, Variant::Date(46086.5));
  Append(command, kDouble, 0, 0.1);
  Append(command, kVarBinary, 10, Variant::Null());
  Append(command, kInteger, 0, -4);
  command.Call(L"Execute");
  const Object row = Execute(L"SELECT a, b, c, d, e, f, g FROM v");
  EXPECT_EQ(ValueOf(row, L"a"), Variant(-7));
  EXPECT_EQ(ValueOf(row, L"b"), Variant(L"it's 自行车 ?"));
  EXPECT_EQ(ValueOf(row, L"d"), Variant::Date(46086.5));
  EXPECT_EQ(ValueOf(row, L"e"), Variant(0.1));
  EXPECT_TRUE(ValueOf(row, L"f").IsNull());
  EXPECT_EQ(ValueOf(row, L"g"), Variant(7)) << "3 - -4";
  EXPECT_EQ(com::ToText(ValueOf(row, L"c")), L"-12345.6789");
}

TEST_P(ServerSessionTest, LeavesAMarkerWithinATextAlone) {
  const Object command = NewCommand(L"SELECT '?' AS mark, FName FROM things WHERE FInterID = ?");
  Append(command, kInteger, 0, 2);
  const Object row = command.Call(L"Execute").AsObject();
  EXPECT_EQ(ValueOf(row, L"mark"), Variant(L"?"));
  EXPECT_EQ(ValueOf(row, L"FName"), Variant(L"two"));
}

TEST_P(ServerSessionTest, PassesChineseBothWays) {
  Execute(L"CREATE TABLE w (编号 int, 名称 nvarchar(20))");
  Execute(L"INSERT INTO w VALUES (1, '自行车　ａ')");
  const Object row = Execute(L"SELECT 编号, 名称 FROM w WHERE 名称 = '自行车　ａ'");
  EXPECT_EQ(ValueOf(row, L"编号"), Variant(1));
  EXPECT_EQ(ValueOf(row, L"名称"), Variant(L"自行车　ａ"));
}

TEST_P(ServerSessionTest, ReadsAnyNumberOfRows) {
  constexpr int kRows = 1100;
  Fill(kRows);
  // Around the sizes of blocks of rows.
  for (const int32_t count : {0, 1, 2, 255, 256, 257, 511, 512, 513, 1023, 1024, 1025, kRows}) {
    const Object rows = New(L"ADODB.Recordset");
    rows.Put(L"CursorLocation", kClient);
    rows.Call(L"Open", L"SELECT n, FText FROM many WHERE n <= " + std::to_wstring(count) + L" ORDER BY n",
              connection_);
    ASSERT_EQ(rows.Get(L"RecordCount"), Variant(count));
    for (int32_t i = 1; i <= count; ++i, rows.Call(L"MoveNext")) {
      ASSERT_EQ(ValueOf(rows, L"n"), Variant(i));
      ASSERT_EQ(ValueOf(rows, L"FText"), Variant(L"row"));
    }
    rows.Put(L"ActiveConnection", Object());
  }
}

TEST_P(ServerSessionTest, PassesTextsOfAnyLength) {
  Execute(L"CREATE TABLE long (FID int, FText text, FBehind int)");
  // Around the sizes of the pieces in which they are read.
  for (const size_t length : {size_t{0}, size_t{1}, size_t{16382}, size_t{16383}, size_t{16384},
                              size_t{32766}, size_t{32767}, size_t{60000}}) {
    std::wstring text;
    while (text.size() < length) text += L"一个零件 of a bicycle. ";
    text.resize(length);
    Execute(L"DELETE FROM long");
    const Object command = NewCommand(L"INSERT INTO long VALUES (1, ?, 7)");
    constexpr int32_t kLongVarWChar = 203;
    Append(command, kLongVarWChar, 0x3FFFFFFF, text);
    command.Call(L"Execute");
    const Object row = Execute(L"SELECT FID, FText, FBehind FROM long");
    EXPECT_EQ(ValueOf(row, L"FID"), Variant(1));
    EXPECT_TRUE(ValueOf(row, L"FText") == Variant(text)) << "a text of " << length << " characters";
    EXPECT_EQ(ValueOf(row, L"FBehind"), Variant(7));
  }
}

TEST_P(ServerSessionTest, RunsABatchOfSixtyThousandCharacters) {
  std::wstring batch = L"SELECT FInterID FROM things WHERE FInterID = 2 OR FName = '";
  batch.resize(60000, L'a');
  EXPECT_EQ(Column(batch + L"'"), L"2");
}

TEST_P(ServerSessionTest, RaisesAnErrorWithItsNumberAndGoesOn) {
  const Raised raised = RaisedBy([&] { Execute(L"INSERT INTO things (FInterID) VALUES (1)"); });
  EXPECT_EQ(raised.code, GetParam().duplicate);
  EXPECT_NE(raised.description, L"");
  EXPECT_EQ(raised.description.find(L'['), std::wstring::npos) << "without the names of drivers";
  EXPECT_EQ(Error(0).Get(L"NativeError"), Variant(GetParam().duplicateNumber));
  EXPECT_EQ(Error(0).Get(L"SQLState").AsText().size(), 5U);
  EXPECT_EQ(Error(0).Get(L"Description"), Variant(raised.description));
  for (const wchar_t* wrong : {L"SELEC 1", L"SELECT * FROM nowhere", L"SELECT FNone FROM things"})
    EXPECT_TRUE(FAILED(RaisedBy([&] { Execute(wrong); }).code)) << com::ToUtf8(wrong);
  EXPECT_EQ(Column(L"SELECT FInterID FROM things ORDER BY FInterID"), L"1,2,3");
}

TEST_P(ServerSessionTest, EndsItsTransactions) {
  connection_.Call(L"BeginTrans");
  Execute(L"DELETE FROM things WHERE FInterID = 1");
  connection_.Call(L"RollbackTrans");
  EXPECT_EQ(Column(L"SELECT FInterID FROM things ORDER BY FInterID"), L"1,2,3");
  connection_.Call(L"BeginTrans");
  Execute(L"DELETE FROM things WHERE FInterID = 1");
  connection_.Call(L"CommitTrans");
  EXPECT_EQ(Column(L"SELECT FInterID FROM things ORDER BY FInterID"), L"2,3");
  EXPECT_EQ(RaisedBy([&] { connection_.Call(L"CommitTrans"); }).code, static_cast<HRESULT>(0x8004D00E));
}

TEST_P(ServerSessionTest, KeepsATransactionThroughAFailedStatement) {
  connection_.Call(L"BeginTrans");
  Execute(L"UPDATE things SET FName = 'x' WHERE FInterID = 3");
  EXPECT_TRUE(FAILED(RaisedBy([&] { Execute(L"INSERT INTO things (FInterID) VALUES (1)"); }).code));
  connection_.Call(L"CommitTrans");
  EXPECT_EQ(Column(L"SELECT FName FROM things WHERE FInterID = 3"), L"x");
}

TEST_P(ServerSessionTest, RollsBackWhenItGoesInATransaction) {
  {
    const Object second = Connect();
    second.Call(L"BeginTrans");
    second.Call(L"Execute", L"DELETE FROM things");
  }
  EXPECT_EQ(Column(L"SELECT FInterID FROM things ORDER BY FInterID"), L"1,2,3");
}

TEST_P(ServerSessionTest, CommitsAndRollsBackWithTheHost) {
  const Object worker = HostedWorker();
  worker.Call(L"Run", server_->Dsn(), L"bind|UPDATE things SET FName = 'x'|abort");
  EXPECT_EQ(Column(L"SELECT FName FROM things WHERE FInterID = 1"), L"one");
  EXPECT_TRUE(FAILED(RaisedBy([&] {
                       worker.Call(L"Run", server_->Dsn(), L"bind|UPDATE things SET FName = 'x'|SELEC");
                     }).code));
  EXPECT_EQ(Column(L"SELECT FName FROM things WHERE FInterID = 1"), L"one");
  worker.Call(L"Run", server_->Dsn(),
              L"bind|UPDATE things SET FName = 'x'|bind|DELETE FROM things WHERE FInterID = 2|complete");
  EXPECT_EQ(Column(L"SELECT FName FROM things ORDER BY FInterID"), L"x,x");
}

TEST_P(ServerSessionTest, LeavesTheNextUserNothingOfTheLastOne) {
  const std::wstring temporary =
      GetParam().make == MakeSqlite ? L"CREATE TEMP TABLE own (FID int)" : L"CREATE TABLE #own (FID int)";
  {
    const Object first = Connect();
    first.Call(L"Execute", temporary);
    first.Call(L"BeginTrans");
    first.Call(L"Execute", L"UPDATE things SET FName = 'x'");
  }
  const Object second = Connect();
  EXPECT_EQ(ColumnText(second.Call(L"Execute", L"SELECT FName FROM things WHERE FInterID = 1").AsObject()),
            L"one");
  second.Call(L"Execute", temporary);
}

TEST_P(ServerSessionTest, GivesSeveralResultsInTheirOrder) {
  SKIP_UNLESS_IT_CAN("several statements in a batch");
  const Object count = Execute(L"UPDATE things SET FName = 'x' SELECT FInterID FROM things ORDER BY FInterID "
                               L"INSERT INTO things (FInterID) VALUES (1) SELECT 7 AS seven");
  Variant affected;
  const Object rows = count.Call(L"NextRecordset", Variant::Reference(affected)).AsObject();
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
  EXPECT_EQ(RaisedBy([&] { rows.Call(L"NextRecordset"); }).code, GetParam().duplicate);
  EXPECT_EQ(ValueOf(rows.Call(L"NextRecordset").AsObject(), L"seven"), Variant(7));
}

TEST_P(ServerSessionTest, KeepsWhatComesBehindRows) {
  SKIP_UNLESS_IT_CAN("several statements in a batch");
  const Object rows = Execute(L"SELECT FInterID FROM things ORDER BY FInterID UPDATE things SET FName = 'x' "
                              L"WHERE FInterID > 1 SELECT 7 AS seven");
  EXPECT_EQ(ColumnText(rows), L"1,2,3");
  Variant affected;
  const Object count = rows.Call(L"NextRecordset", Variant::Reference(affected)).AsObject();
  EXPECT_EQ(affected, Variant(2));
  EXPECT_EQ(ColumnText(count.Call(L"NextRecordset").AsObject()), L"7");
}

TEST_P(ServerSessionTest, RaisesAFailureAmidRows) {
  SKIP_UNLESS_IT_CAN("a failure amid rows");
  Fill(1100);
  // In the first block of rows, behind one, and in the last one.
  for (const int32_t wrong : {1, 2, 512, 513, 514, 1099, 1100}) {
    const Raised raised = RaisedBy([&] {
      const Object rows = Execute(L"SELECT 1 / (n - " + std::to_wstring(wrong) + L") FROM many ORDER BY n");
      while (!rows.Get(L"EOF").AsBool()) rows.Call(L"MoveNext");
    });
    EXPECT_EQ(raised.description, L"Divide by zero error encountered.") << wrong;
  }
}

TEST_P(ServerSessionTest, CallsAProcedureWithItsOutputs) {
  SKIP_UNLESS_IT_CAN("procedures");
  Execute(L"CREATE PROCEDURE p @from int, @count int OUTPUT AS SELECT @count = COUNT(*) FROM things WHERE "
          L"FInterID >= @from RETURN 5");
  const Object command = NewCommand(L"p");
  command.Put(L"CommandType", 4);
  const Object parameters = command.Get(L"Parameters").AsObject();
  for (const int32_t direction : {4, 1, 2})
    parameters.Call(L"Append", command.Call(L"CreateParameter", L"", kInteger, direction).AsObject());
  parameters.Get(L"Item", 1).AsObject().Put(L"Value", 2);
  command.Call(L"Execute");
  EXPECT_EQ(parameters.Get(L"Item", 0).AsObject().Get(L"Value"), Variant(5));
  EXPECT_EQ(parameters.Get(L"Item", 2).AsObject().Get(L"Value"), Variant(2));
}

TEST_P(ServerSessionTest, EndsAStatementThatTakesTooLong) {
  SKIP_UNLESS_IT_CAN("time limits");
  Fill(64);
  connection_.Put(L"CommandTimeout", 1);
  const Raised raised =
      RaisedBy([&] { Execute(L"SELECT COUNT(*) FROM many a, many b, many c, many d, many e, many f"); });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x80040E31));
  EXPECT_EQ(raised.description, L"Timeout expired");
  EXPECT_EQ(Column(L"SELECT FInterID FROM things ORDER BY FInterID"), L"1,2,3");
}

INSTANTIATE_TEST_SUITE_P(Embedded, ServerSessionTest,
                         testing::Values(Kind{"Embedded", ServerSessionTest::MakeEmbedded, "",
                                              static_cast<HRESULT>(0x80040E2F), 2627}));
INSTANTIATE_TEST_SUITE_P(Tds, ServerSessionTest,
                         testing::Values(Kind{"Tds", ServerSessionTest::MakeWire, "",
                                              static_cast<HRESULT>(0x80040E2F), 2627}));
constexpr int32_t kSqliteConstraint = 19;
INSTANTIATE_TEST_SUITE_P(Odbc, ServerSessionTest,
                         testing::Values(Kind{
                             "Sqlite", ServerSessionTest::MakeSqlite,
                             "several statements in a batch, a failure amid rows, procedures, time limits",
                             static_cast<HRESULT>(0x80040E14), kSqliteConstraint}));

} // namespace
} // namespace standin::test
