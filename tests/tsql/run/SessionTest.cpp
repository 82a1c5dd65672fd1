// Databases, sessions, transactions and locks.
#include <sqlite3.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "tests/tsql/FileTest.h"

namespace tsql::test {
namespace {

class SessionTest : public EngineTest {};

TEST_F(SessionTest, MemoryDatabaseLivesAsLongAsItsHandles) {
  const std::string name = UniqueMemoryName();
  EXPECT_EQ(OpenError(name, OpenMode::Existing), 4060);
  auto database = Database::Open(name, OpenMode::Create);
  Output output;
  Session::Open(database)->Execute("CREATE TABLE t (a INT)", {}, output);
  EXPECT_EQ(OpenError(name, OpenMode::Existing), 0);
  EXPECT_EQ(RunOn(*Session::Open(Database::Open(name, OpenMode::Existing)), "SELECT a FROM t").errors.size(),
            0U);
  database.reset();
  EXPECT_EQ(OpenError(name, OpenMode::Existing), 4060);
}

TEST_F(FileTest, FileKeepsDataAndDefinitions) {
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 4060);
  {
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    EXPECT_TRUE(RunOn(*session, "CREATE TABLE t (a VARCHAR(3) NOT NULL DEFAULT 'x', b INT IDENTITY(5,1))")
                    .errors.empty());
    EXPECT_TRUE(RunOn(*session, "INSERT INTO t DEFAULT VALUES").errors.empty());
  }
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*session, "SELECT a, b FROM T").results, std::vector<Lines>({{"x|5"}}));
  EXPECT_EQ(RunOn(*session, "INSERT INTO t (a) VALUES ('long')").errors.at(0).number, 8152);
}

TEST_F(FileTest, OtherFilesAreRefused) {
  std::FILE* file = std::fopen(path_.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::fputs("this is no database, and long enough not to be taken for an empty one by accident", file);
  std::fclose(file);
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 4060);
}

TEST_F(FileTest, AMissingFileIsNamedByItsPath) {
  try {
    Database::Open(path_, OpenMode::Existing);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, 4060);
    EXPECT_NE(std::string(error.what()).find(path_), std::string::npos) << error.what();
  }
  EXPECT_FALSE(std::filesystem::exists(path_)) << "looking for it does not make it";
}

#ifndef _WIN32
TEST_F(FileTest, AFileThatIsThereAndCannotBeOpenedIsNotMissing) {
  { const auto made = Session::Open(Database::Open(path_, OpenMode::Create)); }
  // The process may open no more files.
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit none = before;
  none.rlim_cur = 3;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const int error = OpenError(path_, OpenMode::Existing);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(error, 823);
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0);
}
#endif

TEST_F(FileTest, AFolderIsNoDatabase) {
  EXPECT_EQ(OpenError(std::filesystem::temp_directory_path().string(), OpenMode::Existing), 4060);
}

TEST_F(FileTest, AProcessHasOneDatabaseAFile) {
  const auto database = Database::Open(path_, OpenMode::Create);
  const std::filesystem::path path(path_);
  const std::filesystem::path other = path.parent_path() / "." / "x" / ".." / path.filename();
  EXPECT_EQ(Database::Open(other.string(), OpenMode::Existing), database);
}

TEST_F(FileTest, AFileThatHasGoneIsNotMadeAnew) {
  const auto database = Database::Open(path_, OpenMode::Create);
  std::filesystem::remove(path_);
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0) << "the object is still there";
  try {
    Session::Open(database);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, 4060);
  }
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(FileTest, OpeningWaitsForALockAndThenSaysSo) {
  { const auto made = Session::Open(Database::Open(path_, OpenMode::Create)); }
  sqlite3* holder = nullptr;
  ASSERT_EQ(sqlite3_open_v2(path_.c_str(), &holder, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  // In this mode no one else can read the file while it is locked.
  ASSERT_EQ(
      sqlite3_exec(holder, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
      SQLITE_OK);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 1222);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    sqlite3_close(holder);
  });
  EXPECT_EQ(OpenError(path_, OpenMode::Existing), 0);
  release.join();
}

TEST_F(FileTest, SecondWriterWaitsAndTimesOut) {
  const auto database = Database::Open(path_, OpenMode::Create);
  const auto first = Session::Open(database);
  const auto second = Session::Open(database);
  RunOn(*first, "CREATE TABLE t (a INT)");
  RunOn(*first, "INSERT INTO t VALUES (1)");
  second->SetLockTimeout(50);
  first->Begin();
  RunOn(*first, "UPDATE t SET a = 2");
  const auto start = std::chrono::steady_clock::now();
  const Output output = RunOn(*second, "\nUPDATE t SET a = 3");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_EQ(output.errors[0].number, 1222);
  EXPECT_EQ(output.errors[0].line, 2);
  EXPECT_STREQ(output.errors[0].what(), "Lock request time out period exceeded.");
  // A reader is not held up and sees what is committed.
  EXPECT_EQ(RunOn(*second, "SELECT a FROM t").results, std::vector<Lines>({{"1"}}));
  first->Commit();
  EXPECT_EQ(RunOn(*second, "UPDATE t SET a = a + 1").counts, std::vector<int64_t>({1}));
  EXPECT_EQ(RunOn(*first, "SELECT a FROM t").results, std::vector<Lines>({{"3"}}));
}

TEST_F(FileTest, TransactionReadsBeforeItWritesDoNotConflict) {
  const auto database = Database::Open(path_, OpenMode::Create);
  const auto first = Session::Open(database);
  const auto second = Session::Open(database);
  RunOn(*first, "CREATE TABLE t (a INT)");
  RunOn(*first, "INSERT INTO t VALUES (1)");
  first->Begin();
  EXPECT_EQ(RunOn(*first, "SELECT a FROM t").results, std::vector<Lines>({{"1"}}));
  RunOn(*second, "UPDATE t SET a = 10");
  EXPECT_TRUE(RunOn(*first, "UPDATE t SET a = a + 1").errors.empty());
  first->Commit();
  EXPECT_EQ(RunOn(*second, "SELECT a FROM t").results, std::vector<Lines>({{"11"}}));
}

TEST_F(FileTest, SchemaChangesReachOtherSessions) {
  const auto first = Session::Open(Database::Open(path_, OpenMode::Create));
  const auto second = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*second, "SELECT a FROM t").errors.at(0).number, 208);
  RunOn(*first, "CREATE TABLE t (a INT)");
  EXPECT_TRUE(RunOn(*second, "SELECT a FROM t").errors.empty());
  EXPECT_EQ(RunOn(*second, "SELECT b FROM t").errors.at(0).number, 207);
  RunOn(*first, "ALTER TABLE t ADD b INT NULL");
  EXPECT_TRUE(RunOn(*second, "SELECT b FROM t").errors.empty());
  RunOn(*first, "CREATE VIEW v AS SELECT a FROM t");
  EXPECT_TRUE(RunOn(*second, "SELECT a FROM v").errors.empty());
}

TEST_F(SessionTest, AnEmptyBatchDoesNothing) {
  Output output;
  for (int run = 0; run < 3; ++run) EXPECT_TRUE(session_->Execute(std::string_view(), {}, output));
  EXPECT_TRUE(output.results.empty());
}

TEST_F(SessionTest, ResetMakesItNew) {
  Must("CREATE TABLE t (a INT IDENTITY(1,1), b INT) INSERT INTO t (b) VALUES (7)");
  session_->SetTimeLimit(std::chrono::milliseconds(50));
  session_->SetNow(DateTime{40000, 0});
  Must("SET NOCOUNT ON SET XACT_ABORT ON SET LOCK_TIMEOUT 1 SET IDENTITY_INSERT t ON "
       "CREATE TABLE #local (a INT) CREATE TABLE ##shared (a INT)");
  session_->Begin();
  Must("UPDATE t SET b = 8 CREATE TABLE #second (a INT)");
  session_->Reset();
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_FALSE(session_->NoCount());
  EXPECT_EQ(Rows("SELECT b FROM t"), Lines({"7"}));
  for (const char* table : {"#local", "#second", "##shared"})
    EXPECT_EQ(ErrorOf(std::string("SELECT * FROM ") + table), 208) << table;
  EXPECT_EQ(Scalar("@@IDENTITY"), "NULL");
  EXPECT_NE(Scalar("CONVERT(VARCHAR(10), GETDATE(), 120)"), "2009-07-08");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, b) VALUES (9, 9)"), 544) << "IDENTITY_INSERT";
  session_->Begin();
  EXPECT_EQ(ErrorOf("SELECT 1 / 0"), 8134);
  EXPECT_EQ(session_->TransactionCount(), 1) << "XACT_ABORT";
  session_->Rollback();
  Must("DECLARE @i INT SET @i = 0 WHILE @i < 30000 SET @i = @i + 1");
  // Its names are free again, and it works on.
  Must("CREATE TABLE #local (b INT) INSERT INTO #local VALUES (1)");
  EXPECT_EQ(Rows("SELECT b FROM #local"), Lines({"1"}));
}

TEST_F(SessionTest, ChangeStampTellsOwnAndOthersChanges) {
  const std::string name = UniqueMemoryName();
  const auto database = Database::Open(name, OpenMode::Create);
  const auto reader = Session::Open(database);
  const auto writer = Session::Open(database);
  RunOn(*writer, "CREATE TABLE t (a INT)");
  RunOn(*reader, "SELECT a FROM t");
  const ChangeStamp before = reader->GetChangeStamp();
  RunOn(*reader, "SELECT a FROM t");
  EXPECT_EQ(reader->GetChangeStamp(), before);
  RunOn(*reader, "INSERT INTO t VALUES (1)");
  const ChangeStamp own = reader->GetChangeStamp();
  EXPECT_NE(own, before);
  RunOn(*writer, "INSERT INTO t VALUES (2)");
  EXPECT_NE(reader->GetChangeStamp(), own);
}

TEST_F(SessionTest, TransactionsNestAsTranCount) {
  Must("CREATE TABLE t (a INT)");
  session_->Begin();
  Must("INSERT INTO t VALUES (1)");
  EXPECT_EQ(Scalar("@@TRANCOUNT"), "1");
  Must("BEGIN TRAN");
  EXPECT_EQ(session_->TransactionCount(), 2);
  Must("COMMIT TRANSACTION");
  EXPECT_EQ(session_->TransactionCount(), 1);
  session_->Rollback();
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
  session_->Begin();
  Must("BEGIN TRAN INSERT INTO t VALUES (1) ROLLBACK TRAN");
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_THROW(session_->Commit(), Error);
  EXPECT_EQ(ErrorText("COMMIT"),
            "3902 1 The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  EXPECT_EQ(ErrorOf("ROLLBACK TRAN"), 3903);
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
}

TEST_F(SessionTest, RollbackUndoesDefinitions) {
  session_->Begin();
  Must("CREATE TABLE t (a INT)");
  Must("CREATE TABLE #t (a INT)");
  session_->Rollback();
  EXPECT_EQ(ErrorOf("SELECT * FROM t"), 208);
  EXPECT_EQ(ErrorOf("SELECT * FROM #t"), 208);
  Must("CREATE TABLE t (a INT) CREATE TABLE #t (a INT)");
}

TEST_F(SessionTest, ClosedSessionRollsBack) {
  Must("CREATE TABLE t (a INT)");
  {
    const auto other = Session::Open(database_);
    other->Begin();
    RunOn(*other, "INSERT INTO t VALUES (1)");
  }
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
}

TEST_F(SessionTest, FailedStatementUndoesItselfOnly) {
  Must("CREATE TABLE t (a INT NOT NULL, b TINYINT NULL)");
  session_->Begin();
  Must("INSERT INTO t VALUES (1, 100), (2, 200)");
  EXPECT_EQ(ErrorText("UPDATE t SET b = b + b"),
            "220 1 Arithmetic overflow error for data type tinyint, value = 400.");
  EXPECT_EQ(Rows("SELECT a, b FROM t ORDER BY a"), Lines({"1|100", "2|200"}));
  session_->Commit();
  EXPECT_EQ(Scalar("SUM(b) FROM t"), "300");
}

TEST_F(SessionTest, ConversionErrorEndsBatchAndTransaction) {
  Must("CREATE TABLE t (a INT)");
  session_->Begin();
  Must("INSERT INTO t VALUES (1)");
  const Output output = Run("SELECT CAST('abc' AS INT)\nINSERT INTO t VALUES (2)");
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_STREQ(output.errors[0].what(),
               "Conversion failed when converting the varchar value 'abc' to data type int.");
  EXPECT_TRUE(output.counts.empty());
  EXPECT_EQ(session_->TransactionCount(), 0);
  EXPECT_EQ(Scalar("COUNT(*) FROM t"), "0");
}

TEST_F(SessionTest, SetNowFixesGetdate) {
  session_->SetNow(DateTime{0, 300});
  EXPECT_EQ(Scalar("GETDATE()"), "0:300");
  session_->SetNow(std::nullopt);
  EXPECT_EQ(Scalar("CASE WHEN GETDATE() > '2020-01-01' THEN 1 ELSE 0 END"), "1");
}

TEST_F(SessionTest, SinkExceptionPassesThrough) {
  struct Thrower : Output {
    void Row(std::span<const Value>) override { throw std::runtime_error("enough"); }
  };
  Thrower sink;
  EXPECT_THROW(session_->Execute("SELECT 1", {}, sink), std::runtime_error);
  EXPECT_EQ(Scalar("2"), "2");
}

TEST_F(SessionTest, GlobalTemporaryTablesEndWithTheirCreator) {
  auto creator = Session::Open(database_);
  RunOn(*creator, "CREATE TABLE ##g (a INT) INSERT INTO ##g VALUES (4)");
  EXPECT_EQ(Rows("SELECT a FROM ##g"), Lines({"4"}));
  EXPECT_EQ(ErrorText("CREATE TABLE ##g (a INT)"),
            "2714 1 There is already an object named '##g' in the database.");
  creator.reset();
  EXPECT_EQ(ErrorText("SELECT a FROM ##g"), "208 1 Invalid object name '##g'.");
}

TEST_F(SessionTest, LocalTemporaryTablesAreTheSessionsOwn) {
  Must("CREATE TABLE #t (a INT)");
  const auto other = Session::Open(database_);
  EXPECT_EQ(RunOn(*other, "SELECT a FROM #t").errors.at(0).number, 208);
  EXPECT_TRUE(RunOn(*other, "CREATE TABLE #t (b VARCHAR(2)) INSERT INTO #t VALUES ('x')").errors.empty());
  EXPECT_EQ(Scalar("COUNT(*) FROM #t"), "0");
}

} // namespace
} // namespace tsql::test
