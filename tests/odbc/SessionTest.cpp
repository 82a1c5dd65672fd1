// Sessions and their pool on SQLite's driver, and what is said when there is no connection. What ADO is
// promised of a session is in tests/standin/ado/ServerSessionTest.cpp.
#include "odbc/Session.h"

#include <gtest/gtest.h>

#include <thread>

#include "com/Text.h"
#include "odbc/SessionPool.h"
#include "tests/standin/SqliteFile.h"

namespace odbc {
namespace {

using Kind = tsql::Value::Kind;

// What comes out of a batch, as a text.
struct Script : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> columns) override {
    for (const tsql::Column& column : columns) text += column.name + ' ';
    text += ':';
  }
  void Row(std::span<const tsql::Value> values) override {
    for (const tsql::Value& value : values) {
      text += ' ';
      if (value.kind == Kind::Integer) text += std::to_string(value.integer);
      if (value.kind == Kind::Text) text += value.text;
      if (value.kind == Kind::Null) text += "NULL";
    }
    text += ';';
  }
  void EndRows(int64_t count) override { text += " (" + std::to_string(count) + ")"; }
  void RowCount(int64_t count) override { text += std::to_string(count); }
  void Message(const tsql::Error& info) override { text += info.what(); }
  void Failed(const tsql::Error& error) override {
    text += "!" + static_cast<const Error&>(error).sqlState + ' ' + error.what();
  }
  std::string text;
};

std::string Sent(Session& session, std::wstring_view batch) {
  Script script;
  const bool succeeded = session.Execute(batch, {}, script);
  EXPECT_EQ(succeeded, script.text.find('!') == std::string::npos) << script.text;
  return script.text;
}

// The error of a connection that cannot be made.
std::optional<Error> RefusalOf(const std::wstring& connectionString) {
  try {
    const Session session(connectionString);
    return std::nullopt;
  } catch (const Error& error) {
    return error;
  }
}

class OdbcSessionTest : public testing::Test {
 protected:
  void SetUp() override { SKIP_WITHOUT_SQLITE_DRIVER(); }
  void TearDown() override { SessionPool::Clear(); }

  standin::test::SqliteFile file_;
};

TEST_F(OdbcSessionTest, SaysInTheDriversWordsWhyThereIsNoConnection) {
  const auto driver = RefusalOf(L"DRIVER={No such driver};Server=x;UID=sa;PWD=open sesame");
  ASSERT_TRUE(driver);
  EXPECT_NE(std::string(driver->what()).find("No such driver"), std::string::npos) << driver->what();
  const auto source = RefusalOf(L"DSN=no such source;PWD=open sesame");
  ASSERT_TRUE(source);
  EXPECT_EQ(source->sqlState, "IM002");
  std::wstring missing = file_.ConnectionText();
  missing.insert(missing.rfind(L"data.db"), L"missing/");
  const auto folder = RefusalOf(missing);
  ASSERT_TRUE(folder);
  constexpr int kSqliteCannotOpen = 14;
  EXPECT_EQ(folder->number, kSqliteCannotOpen);
  EXPECT_TRUE(RefusalOf(L""));
  EXPECT_TRUE(RefusalOf(L"no connection string"));
}

TEST_F(OdbcSessionTest, NeverShowsAPassword) {
  // A driver's name is part of the message, so a password that is the same must not be in it either.
  const auto refusal = RefusalOf(L"DRIVER={sesame};UID=sa;PWD=sesame");
  ASSERT_TRUE(refusal);
  EXPECT_EQ(std::string(refusal->what()).find("sesame"), std::string::npos) << refusal->what();
  EXPECT_NE(std::string(refusal->what()).find("***"), std::string::npos) << refusal->what();
}

TEST_F(OdbcSessionTest, FindsAServerThatIsNotThere) {
  const auto refusal = RefusalOf(
      L"DRIVER={FreeTDS};Server=127.0.0.1;Port=1;UID=sa;PWD=open sesame;Database=x;TDS_Version=7.4");
  if (refusal && std::string(refusal->what()).find("Can't open lib") != std::string::npos &&
      sizeof(void*) == 4)
    GTEST_SKIP() << "no 32-bit FreeTDS: " << refusal->what();
  ASSERT_TRUE(refusal);
  EXPECT_TRUE(refusal->EndsConnection()) << refusal->sqlState << ' ' << refusal->what();
  constexpr int kUnableToConnect = 20009;
  EXPECT_EQ(refusal->number, kUnableToConnect) << refusal->what();
  EXPECT_EQ(std::string(refusal->what()).find("sesame"), std::string::npos);
}

TEST_F(OdbcSessionTest, HandsOverRowsCountsAndFailures) {
  Session session(file_.ConnectionText());
  Sent(session, L"CREATE TABLE t (n int, FText varchar(20))");
  EXPECT_EQ(Sent(session, L"INSERT INTO t VALUES (1, 'one'), (2, NULL)"), "2");
  EXPECT_EQ(Sent(session, L"SELECT n, FText FROM t ORDER BY n"), "n FText : 1 one; 2 NULL; (2)");
  EXPECT_EQ(Sent(session, L"SELECT n FROM t WHERE n > 7"), "n : (0)");
  EXPECT_EQ(Sent(session, L"SELECT * FROM nowhere"), "!HY000 no such table: nowhere (1)");
  EXPECT_EQ(Sent(session, L"DELETE FROM t WHERE n > 7"), "0");
}

TEST_F(OdbcSessionTest, RefusesAValueThatItWouldHaveToCut) {
  Session session(file_.ConnectionText());
  // SQLite keeps what a column's type does not allow.
  Sent(session, L"CREATE TABLE t (n int, FText varchar(3))");
  Sent(session, L"INSERT INTO t VALUES (1, 'abc')");
  EXPECT_EQ(Sent(session, L"SELECT FText FROM t"), "FText : abc; (1)");
  Sent(session, L"INSERT INTO t VALUES (2, 'abcd')");
  const std::string cut = Sent(session, L"SELECT FText FROM t ORDER BY n");
  EXPECT_EQ(cut, "FText : abc;!22001 Column 'FText' holds more than its type allows.");
  EXPECT_EQ(Sent(session, L"SELECT n FROM t WHERE n = 1"), "n : 1; (1)") << "the session goes on";
}

TEST_F(OdbcSessionTest, ReadsBytes) {
  Session session(file_.ConnectionText());
  Sent(session, L"CREATE TABLE t (n int, b varbinary(10), l image)");
  Sent(session, L"INSERT INTO t VALUES (1, X'00FF1A', X'')");
  struct Bytes : Script {
    void Row(std::span<const tsql::Value> values) override {
      ASSERT_EQ(values[0].kind, Kind::Bytes);
      bytes = values[0].text;
    }
    std::string bytes;
  } sink;
  EXPECT_TRUE(session.Execute(L"SELECT b FROM t", {}, sink));
  EXPECT_EQ(sink.bytes, std::string("\0\xFF\x1A", 3));
  sink.bytes.clear();
  EXPECT_TRUE(session.Execute(L"SELECT b, l FROM t", {}, sink));
  EXPECT_EQ(sink.bytes, std::string("\0\xFF\x1A", 3)) << "piece by piece";
}

TEST_F(OdbcSessionTest, ThrowsWhatATransactionCannotDo) {
  Session session(file_.ConnectionText());
  EXPECT_THROW(session.Commit(), Error);
  EXPECT_THROW(session.Rollback(), Error);
  session.Begin();
  EXPECT_THROW(session.Begin(), Error) << "SQLite's do not nest";
  session.Rollback();
}

TEST_F(OdbcSessionTest, IsPooledByConnectionStringAndThread) {
  const standin::test::SqliteFile other;
  const Session* session = nullptr;
  {
    const PooledSession first = SessionPool::Take(file_.ConnectionText());
    session = first.get();
    EXPECT_NE(SessionPool::Take(file_.ConnectionText()).get(), session) << "it is in use";
  }
  SessionPool::Clear();
  session = SessionPool::Take(file_.ConnectionText()).get();
  EXPECT_EQ(SessionPool::Take(file_.ConnectionText()).get(), session);
  EXPECT_NE(SessionPool::Take(other.ConnectionText()).get(), session);
  bool isOther = false;
  std::thread([&] {
    isOther = SessionPool::Take(file_.ConnectionText()).get() != session;
    SessionPool::ReleaseThread();
  }).join();
  EXPECT_TRUE(isOther);
  EXPECT_EQ(SessionPool::Take(file_.ConnectionText()).get(), session);
}

TEST_F(OdbcSessionTest, OfAThreadThatEndedIsAnybodys) {
  const Session* session = nullptr;
  std::thread([&] {
    session = SessionPool::Take(file_.ConnectionText()).get();
    SessionPool::ReleaseThread();
  }).join();
  EXPECT_EQ(SessionPool::Take(file_.ConnectionText()).get(), session);
}

TEST_F(OdbcSessionTest, GoesBackToThePoolRolledBack) {
  {
    const PooledSession session = SessionPool::Take(file_.ConnectionText());
    Sent(*session.get(), L"CREATE TABLE t (n int)");
    session->Begin();
    EXPECT_EQ(Sent(*session.get(), L"INSERT INTO t VALUES (1)"), "1");
  }
  Session second(file_.ConnectionText());
  EXPECT_EQ(Sent(second, L"INSERT INTO t VALUES (2)"), "1") << "nothing is locked";
  EXPECT_EQ(Sent(*SessionPool::Take(file_.ConnectionText()).get(), L"SELECT n FROM t"), "n : 2; (1)");
}

TEST_F(OdbcSessionTest, WithATemporaryTableIsNotPooled) {
  Sent(*SessionPool::Take(file_.ConnectionText()).get(), L"CREATE TEMP TABLE own (n int)");
  EXPECT_EQ(Sent(*SessionPool::Take(file_.ConnectionText()).get(), L"SELECT * FROM own"),
            "!HY000 no such table: own (1)");
}

TEST(OdbcError, SaysWhetherTheConnectionIsOfFurtherUse) {
  EXPECT_TRUE(Error(0, "08S01", "x").EndsConnection());
  EXPECT_TRUE(Error(0, "HYT00", "x").EndsConnection());
  EXPECT_FALSE(Error(1205, "40001", "x").EndsConnection());
  EXPECT_TRUE(Error(0, "HYT00", "x").IsTimeout());
  EXPECT_FALSE(Error(1222, "HY000", "x").IsTimeout());
  EXPECT_TRUE(Error(0, "01000", "x", true).IsInformation());
}

} // namespace
} // namespace odbc
