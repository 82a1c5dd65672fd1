// The server's errors as a client of the provider gets them.
#include "com/Text.h"
#include "standin/ado/ProviderError.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

struct Case {
  const wchar_t* statement;
  unsigned code;
  int32_t native;
  const wchar_t* sqlState;
  const wchar_t* text;
};

TEST(ProviderError, HasTheCodeOfItsKindAndTheServersText) {
  const Database database;
  database.Execute(L"CREATE TABLE u (FInterID int NOT NULL, FShort varchar(3), FTiny tinyint)");
  const std::array cases{
      Case{L"SELECT FROM t", 0x80040E14, 156, L"42000", L"Incorrect syntax near the keyword 'FROM'."},
      Case{L"SELECT * FROM nowhere", 0x80040E37, 208, L"42S02", L"Invalid object name 'nowhere'."},
      Case{L"SELECT FNone FROM t", 0x80040E14, 207, L"42S22", L"Invalid column name 'FNone'."},
      Case{L"INSERT INTO t (FInterID) VALUES (1)", 0x80040E2F, 2627, L"23000",
           L"Violation of PRIMARY KEY constraint"},
      Case{L"INSERT INTO u (FInterID) VALUES (NULL)", 0x80040E2F, 515, L"23000",
           L"Cannot insert the value NULL into column 'FInterID'"},
      Case{L"INSERT INTO u (FInterID, FShort) VALUES (1, 'four')", 0x80040E57, 8152, L"22001",
           L"String or binary data would be truncated."},
      Case{L"SELECT CAST('abc' AS int) AS x", 0x80040E07, 245, L"22018",
           L"Conversion failed when converting the varchar value 'abc' to data type int."},
      Case{L"SELECT CAST('abc' AS datetime) AS x", 0x80040E07, 241, L"22007",
           L"Conversion failed when converting date and/or time from character string."},
  };
  for (const Case& expected : cases) {
    const Raised raised = RaisedBy([&] { database.Execute(expected.statement); });
    const std::string what = com::ToUtf8(expected.statement);
    EXPECT_EQ(static_cast<unsigned>(raised.code), expected.code) << what;
    EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server") << what;
    EXPECT_TRUE(raised.description.starts_with(expected.text))
        << what << ": " << com::ToUtf8(raised.description);
    const Object errors = database.connection().Get(L"Errors").AsObject();
    ASSERT_GE(errors.Get(L"Count").AsLong(), 1) << what;
    const Object error = errors.Get(L"Item", 0).AsObject();
    EXPECT_EQ(error.Get(L"Number"), Variant(static_cast<int32_t>(expected.code))) << what;
    EXPECT_EQ(error.Get(L"NativeError"), Variant(expected.native)) << what;
    EXPECT_EQ(error.Get(L"SQLState"), Variant(expected.sqlState)) << what;
    EXPECT_EQ(error.Get(L"Description"), Variant(raised.description)) << what;
    EXPECT_EQ(error.Get(L"Source"), Variant(raised.source)) << what;
  }
}

TEST(ProviderError, StaysInErrorsUntilTheNextOneOrClear) {
  const Database database;
  const Object errors = database.connection().Get(L"Errors").AsObject();
  EXPECT_EQ(errors.Get(L"Count"), Variant(0));
  RaisedBy([&] { database.Execute(L"SELECT * FROM nowhere"); });
  database.Execute(L"SELECT * FROM t");
  EXPECT_EQ(errors.Get(L"Count"), Variant(1));
  RaisedBy([&] { database.Execute(L"SELECT FNone FROM t"); });
  EXPECT_EQ(errors.Get(L"Item", 0).AsObject().Get(L"NativeError"), Variant(207));
  EXPECT_EQ(RaisedBy([&] { errors.Get(L"Item", 1); }).code, Numbered(3265));
  errors.Call(L"Clear");
  EXPECT_EQ(errors.Get(L"Count"), Variant(0));
}

TEST(ProviderError, OfADriverIsKnownByItsNumberOrElseByItsState) {
  struct DriverError {
    int32_t number;
    const wchar_t* state;
    unsigned code;
  };
  for (const DriverError& error :
       {DriverError{2627, L"23000", 0x80040E2F}, DriverError{208, L"HY000", 0x80040E37},
        DriverError{1205, L"40001", 0x80004005}, DriverError{1222, L"HY000", 0x80040E31},
        DriverError{0, L"08S01", 0x80004005}, DriverError{18456, L"28000", 0x80040E4D},
        DriverError{0, L"IM002", 0x80004005}, DriverError{7, L"23505", 0x80040E2F},
        DriverError{0, L"22001", 0x80040E57}, DriverError{1, L"HY000", 0x80040E14}}) {
    const ado::ProviderError mapped = ado::FromDriver({error.number, 16, 0, 0, "said so"}, error.state);
    EXPECT_EQ(static_cast<unsigned>(mapped.hr), error.code) << error.number;
    EXPECT_EQ(mapped.native, error.number);
    EXPECT_EQ(mapped.sqlState, error.state);
    EXPECT_EQ(mapped.description, L"said so");
  }
  const ado::ProviderError late = ado::FromDriver({0, 16, 0, 0, "Query timeout"}, L"HYT00");
  EXPECT_EQ(static_cast<unsigned>(late.hr), 0x80040E31);
  EXPECT_EQ(late.native, 0);
  EXPECT_EQ(late.sqlState, L"HYT00");
  EXPECT_EQ(late.description, L"Timeout expired");
}

TEST(ProviderError, ComesThroughRecordsetsAndCommandsToo) {
  const Database database;
  EXPECT_EQ(RaisedBy([&] { database.Open(L"SELECT * FROM nowhere", 2); }).code,
            static_cast<HRESULT>(0x80040E37));
  const Object command = New(L"ADODB.Command");
  command.Put(L"ActiveConnection", database.connection());
  command.Put(L"CommandText", L"SELECT * FROM nowhere");
  EXPECT_EQ(RaisedBy([&] { command.Call(L"Execute"); }).code, static_cast<HRESULT>(0x80040E37));
  command.Put(L"CommandText", L"NoSuchProcedure");
  command.Put(L"CommandType", 4);
  const Raised raised = RaisedBy([&] { command.Call(L"Execute"); });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(raised.description, L"Could not find stored procedure 'NoSuchProcedure'.");
}

} // namespace
} // namespace standin::test
