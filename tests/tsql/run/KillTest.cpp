// A process that is killed in the middle of a batch: the file opens, what was committed is there whole, what
// was not is gone, temporary tables too, and nobody has to wait for a lock. Native only: it forks.
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/wait.h>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

// Tells the parent about each statement that has ended.
struct Progress : ResultSink {
  explicit Progress(int pipeEnd) : pipe(pipeEnd) {}
  void BeginRows(std::span<const Column> /*columns*/) override {}
  void Row(std::span<const Value> /*values*/) override {}
  void EndRows(int64_t /*count*/) override { Tell('r'); }
  void RowCount(int64_t /*count*/) override { Tell('c'); }
  void Message(const Error& /*info*/) override { Tell('m'); }
  void Failed(const Error& /*error*/) override { Tell('!'); }
  void Tell(char what) const {
    if (write(pipe, &what, 1) != 1) _exit(3);
  }
  int pipe;
};

class KillTest : public ::testing::Test {
 protected:
  KillTest()
      : path_((std::filesystem::temp_directory_path() / ("tsql_kill_" + std::to_string(getpid()) + ".db"))
                  .string()) {
    Remove();
    Must("CREATE TABLE account (id INT NOT NULL PRIMARY KEY, amount INT NOT NULL)"
         " CREATE TABLE journal (n INT IDENTITY PRIMARY KEY, text VARCHAR(2000) NOT NULL)"
         " INSERT INTO account VALUES (1, 0), (2, 0)");
  }
  ~KillTest() override { Remove(); }

  void Remove() const {
    for (const char* suffix : {"", "-wal", "-shm"}) std::remove((path_ + suffix).c_str());
  }

  // Runs the batch in a process of its own and kills that after `steps` ended statements.
  void RunAndKill(const std::string& batch, int steps) const {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      Progress progress(ends[1]);
      const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
      session->Execute(batch, {}, progress);
      _exit(4); // it must not get here
    }
    close(ends[1]);
    for (char what = 0; steps > 0; --steps) {
      ASSERT_EQ(read(ends[0], &what, 1), 1) << "the batch ended by itself";
      ASSERT_NE(what, '!') << "a statement failed";
    }
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    close(ends[0]);
  }

  // In a session that does not wait for locks.
  Output Run(const std::string& batch) const {
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    session->SetLockTimeout(0);
    Output output;
    session->Execute(batch, {}, output);
    return output;
  }
  void Must(const std::string& batch) const {
    for (const Error& error : Run(batch).errors) ADD_FAILURE() << error.number << " " << error.what();
  }
  Lines Rows(const std::string& query) const {
    const Output output = Run(query);
    for (const Error& error : output.errors) ADD_FAILURE() << error.number << " " << error.what();
    return output.results.empty() ? Lines{"no result"} : output.results[0];
  }

  std::string path_;
};

TEST_F(KillTest, TransactionsAreWholeOrGone) {
  // Each round moves 1 and writes a line; it is killed after the first, the second or the third statement.
  const std::string batch =
      "CREATE TABLE #mine (a INT) CREATE TABLE ##everybodys (a INT)"
      " WHILE 1 = 1 BEGIN BEGIN TRAN UPDATE account SET amount = amount - 1 WHERE id = 1"
      " UPDATE account SET amount = amount + 1 WHERE id = 2"
      " INSERT INTO journal VALUES (REPLICATE('x', 2000)) COMMIT END";
  for (const int steps : {1, 2, 3, 50, 100, 151, 500, 1001, 1502}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT SUM(amount), MAX(amount) - (SELECT COUNT(*) FROM journal) FROM account"),
              Lines({"0|0"}));
    EXPECT_EQ(Run("SELECT * FROM #mine").errors.at(0).number, 208);
    EXPECT_EQ(Run("SELECT * FROM ##everybodys").errors.at(0).number, 208);
    Must("UPDATE account SET amount = amount"); // nobody holds the lock
  }
  // A round is seen to have ended by the first statement of the next.
  EXPECT_GE(std::stoi(Rows("SELECT COUNT(*) FROM journal").at(0)), 1098);
}

TEST_F(KillTest, AMergeIsWholeOrGone) {
  // Each one moves 1 and adds an account.
  const std::string batch =
      "WHILE 1 = 1 MERGE account AS a USING (SELECT 1 AS id, -1 AS n UNION SELECT 2, 1 UNION"
      " SELECT MAX(id) + 1, 0 FROM account) AS s ON a.id = s.id WHEN MATCHED THEN UPDATE SET amount += n"
      " WHEN NOT MATCHED THEN INSERT VALUES (s.id, n);";
  for (const int steps : {1, 2, 50, 151}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT SUM(amount), MAX(amount) - COUNT(*) FROM account"), Lines({"0|-2"}));
    Must("UPDATE account SET amount = amount"); // nobody holds the lock
  }
}

TEST_F(KillTest, TransactionsWithCursorsFunctionsAndTableVariablesAreWholeOrGone) {
  Must("CREATE FUNCTION one () RETURNS INT AS BEGIN DECLARE @x TABLE (a INT) INSERT @x VALUES (1)"
       " RETURN (SELECT a FROM @x) END");
  // Each round has four statements that are seen to end.
  const std::string batch =
      "DECLARE @t TABLE (a INT) DECLARE @a INT WHILE 1 = 1 BEGIN"
      " DECLARE c CURSOR LOCAL FOR SELECT id FROM account ORDER BY id BEGIN TRAN OPEN c FETCH c INTO @a"
      " UPDATE account SET amount = amount - dbo.one() WHERE CURRENT OF c FETCH c INTO @a"
      " UPDATE account SET amount = amount + dbo.one() WHERE CURRENT OF c INSERT @t VALUES (1)"
      " INSERT INTO journal VALUES ('x') DEALLOCATE c COMMIT END";
  for (const int steps : {1, 2, 3, 4, 101, 203}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT SUM(amount), MAX(amount) - (SELECT COUNT(*) FROM journal) FROM account"),
              Lines({"0|0"}));
    Must("UPDATE account SET amount = amount + dbo.one() - 1");
  }
  EXPECT_GE(std::stoi(Rows("SELECT COUNT(*) FROM journal").at(0)), 75);
}

TEST_F(KillTest, StatementsWithTriggersAreWholeOrGone) {
  Must("CREATE TRIGGER on_account ON account FOR UPDATE AS"
       " UPDATE a SET amount = a.amount + 1 FROM account a JOIN deleted d ON d.id = 1 WHERE a.id = 2"
       " INSERT INTO journal SELECT REPLICATE('x', 2000) FROM inserted");
  // One statement, of which three are seen to end: two of the trigger and itself.
  for (const int steps : {1, 2, 3, 4, 101, 302}) {
    RunAndKill("WHILE 1 = 1 UPDATE account SET amount = amount - 1 WHERE id = 1", steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT SUM(amount), MAX(amount) - (SELECT COUNT(*) FROM journal) FROM account"),
              Lines({"0|0"}));
    Must("DISABLE TRIGGER ALL ON account UPDATE account SET amount = amount ENABLE TRIGGER ALL ON account");
  }
  EXPECT_GE(std::stoi(Rows("SELECT COUNT(*) FROM journal").at(0)), 130);
}

TEST_F(KillTest, StatementsWithReferentialActionsAreWholeOrGone) {
  Must("CREATE TABLE share (id INT NULL REFERENCES account ON UPDATE CASCADE) INSERT INTO share VALUES (2)");
  Must(
      "CREATE TRIGGER on_share ON share FOR UPDATE AS INSERT INTO journal SELECT REPLICATE('x', 2000) FROM inserted");
  // One statement, of which two are seen to end: the trigger's and itself.
  for (const int steps : {1, 2, 3, 4, 101, 202}) {
    RunAndKill("WHILE 1 = 1 UPDATE account SET id = id + 1 WHERE id > 1", steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT s.id - MAX(a.id), s.id - (SELECT COUNT(*) FROM journal) FROM account a, share s"
                   " GROUP BY s.id"),
              Lines({"0|2"}));
  }
  EXPECT_GE(std::stoi(Rows("SELECT COUNT(*) FROM journal").at(0)), 150);
}

TEST_F(KillTest, OpenTransactionIsUndone) {
  RunAndKill(
      "BEGIN TRAN DELETE FROM account SELECT * INTO #copy FROM journal INSERT INTO journal VALUES ('a')"
      " WHILE 1 = 1 UPDATE journal SET text = 'b'",
      400);
  EXPECT_EQ(Rows("SELECT id FROM account ORDER BY 1"), Lines({"1", "2"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM journal"), Lines({"0"}));
}

TEST_F(KillTest, DefinitionsAreWholeOrGone) {
  const std::string batch =
      "WHILE 1 = 1 BEGIN CREATE TABLE made (a INT NOT NULL PRIMARY KEY, b VARCHAR(9) COLLATE Chinese_PRC_CS_AS "
      "UNIQUE)"
      " INSERT INTO made VALUES (1, 'x') CREATE INDEX i ON made (b, a) PRINT 'there'"
      " DROP TABLE made PRINT 'gone' END";
  for (const int steps : {1, 2, 3, 10, 41, 62}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    const Lines exists = Rows("SELECT ISNULL(OBJECT_ID('made', 'U'), 0)");
    if (exists == Lines({"0"})) continue;
    Must("DELETE FROM made INSERT INTO made VALUES (2, 'y'), (3, 'Y') SELECT * FROM made DROP TABLE made");
  }
  EXPECT_EQ(Run("DROP TABLE made").errors.at(0).number, 3701);
}

TEST_F(KillTest, SchemasAreWholeOrGone) {
  Must("CREATE TABLE made (id INT IDENTITY PRIMARY KEY, a INT NULL UNIQUE) INSERT INTO made VALUES (1), (2)"
       " CREATE TABLE child (id INT REFERENCES made) INSERT INTO child VALUES (1)");
  Must("CREATE TRIGGER on_made ON made FOR INSERT AS INSERT INTO dbo.journal VALUES ('x')");
  const std::string batch =
      "WHILE 1 = 1 BEGIN EXEC ('CREATE SCHEMA s') PRINT 'there' ALTER SCHEMA s TRANSFER made"
      " EXEC sp_rename 's.made.a', 'b' PRINT 'in' EXEC sp_rename 's.made.b', 'a' ALTER SCHEMA dbo TRANSFER s.made PRINT 'out' DROP SCHEMA s PRINT 'gone' END";
  for (const int steps : {1, 2, 3, 4, 17, 30}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    Must("IF COL_LENGTH('s.made', 'b') IS NOT NULL EXEC sp_rename 's.made.b', 'a'"
         " IF OBJECT_ID('s.made') IS NOT NULL ALTER SCHEMA dbo TRANSFER s.made");
    EXPECT_EQ(Rows("SELECT id, a FROM made ORDER BY id"), Lines({"1|1", "2|2"}));
    Must(
        "BEGIN TRAN INSERT INTO made VALUES (3) IF NOT EXISTS (SELECT * FROM journal) RAISERROR ('no trigger', 16, 1)"
        " ROLLBACK");
    EXPECT_EQ(Run("DELETE FROM made").errors.at(0).number, 547);
    EXPECT_EQ(Run("INSERT INTO made VALUES (2)").errors.at(0).number, 2627);
    Must("DROP SCHEMA IF EXISTS s");
  }
}

// Each way of changing a table, with rows in it: what is there afterwards is the table before one of the
// statements or after it, and all of its rows.
TEST_F(KillTest, ChangedTablesAreWhole) {
  Must("CREATE TABLE made (id INT IDENTITY PRIMARY KEY, a INT NOT NULL, b VARCHAR(2000) NULL)");
  Must(
      "DECLARE @i INT = 0 WHILE @i < 50 BEGIN INSERT INTO made VALUES (@i, REPLICATE('x', 2000)) SET @i = @i + 1 END");
  const std::string batch =
      "WHILE 1 = 1 BEGIN EXEC ('ALTER TABLE made ALTER COLUMN a BIGINT NOT NULL') PRINT 'altered'"
      " EXEC ('ALTER TABLE made ADD c AS a + 1 PERSISTED, CONSTRAINT ck CHECK (a >= 0)') PRINT 'added'"
      " EXEC ('ALTER TABLE made DROP COLUMN c, CONSTRAINT ck') PRINT 'dropped'"
      " EXEC ('ALTER TABLE made ALTER COLUMN a INT NOT NULL') PRINT 'altered back' END";
  for (const int steps : {1, 2, 3, 4, 9, 14}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    EXPECT_EQ(Rows("SELECT COUNT(*), SUM(a), MIN(LEN(b)), MAX(id) FROM made"), Lines({"50|1225|2000|50"}));
    Must(
        "BEGIN TRAN INSERT INTO made (a) VALUES (7) UPDATE made SET a = 8 WHERE id = 51 ROLLBACK"
        " EXEC ('IF COL_LENGTH(''made'', ''c'') IS NOT NULL ALTER TABLE made DROP COLUMN c, CONSTRAINT ck')");
  }
}

} // namespace
} // namespace tsql::test
