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
      "WHILE 1 = 1 BEGIN CREATE TABLE made (a INT NOT NULL PRIMARY KEY, b VARCHAR(9) UNIQUE)"
      " INSERT INTO made VALUES (1, 'x') CREATE INDEX i ON made (b, a) PRINT 'there'"
      " DROP TABLE made PRINT 'gone' END";
  for (const int steps : {1, 2, 3, 10, 41, 62}) {
    RunAndKill(batch, steps);
    if (HasFatalFailure()) return;
    const Lines exists = Rows("SELECT ISNULL(OBJECT_ID('made', 'U'), 0)");
    if (exists == Lines({"0"})) continue;
    Must("DELETE FROM made INSERT INTO made VALUES (2, 'y') SELECT * FROM made DROP TABLE made");
  }
  EXPECT_EQ(Run("DROP TABLE made").errors.at(0).number, 3701);
}

} // namespace
} // namespace tsql::test
