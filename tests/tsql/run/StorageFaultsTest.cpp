// A disk that is full or broken at any of its operations, files that can only be read or that somebody has
// damaged, and a clock that goes backwards: whoever calls is told why, no unit of work is half there, and the
// next call is as good as ever. STORAGE_SEED in the environment is the seed of the damage, STORAGE_TIMES
// makes that many times the files.
#include <sqlite3.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>

#include "tests/tsql/FailingStorage.h"
#include "tests/tsql/FileTest.h"

namespace tsql::test {
namespace {

int64_t Setting(const char* name, int64_t usual) {
  const char* const value = std::getenv(name);
  return value != nullptr ? std::atoll(value) : usual;
}

class StorageFaultsTest : public FileTest {
 protected:
  StorageFaultsTest() {
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    EXPECT_TRUE(
        RunOn(
            *session,
            "CREATE TABLE account (id INT NOT NULL PRIMARY KEY, amount INT NOT NULL)"
            " CREATE TABLE journal (n INT NOT NULL, text VARCHAR(8000) COLLATE Chinese_PRC_CS_AS NOT NULL)"
            " CREATE TABLE changes (step INT IDENTITY(5,5), by_how_much INT NOT NULL, text VARCHAR(8000) NOT NULL)"
            " CREATE TABLE share (id INT NULL REFERENCES account ON UPDATE CASCADE)"
            " INSERT INTO account VALUES (1, 0), (2, 0) INSERT INTO journal VALUES (0, 'x')"
            " INSERT INTO share VALUES (2)")
            .errors.empty());
    EXPECT_TRUE(RunOn(*session, "CREATE FUNCTION Plus (@n INT) RETURNS INT AS BEGIN DECLARE @t TABLE (a INT)"
                                " INSERT @t VALUES (1) SELECT @n = @n + a FROM @t RETURN @n END")
                    .errors.empty());
    EXPECT_TRUE(RunOn(*session,
                      "CREATE TRIGGER on_account ON account FOR UPDATE AS"
                      " INSERT INTO changes SELECT i.amount - d.amount, REPLICATE('z', 500) FROM inserted i"
                      " JOIN deleted d ON d.id = i.id DELETE FROM changes WHERE by_how_much < 0")
                    .errors.empty());
  }

  // Moves one from account to account, by a cursor and a function, and counts that in the journal, where a
  // line of some pages comes and goes, and which goes to another schema and back. The number of an account
  // changes for a moment, and with it what refers to it. What failed, empty when it
  // was committed.
  static std::string Work(Session& session) {
    std::string failures;
    try {
      session.Begin();
      for (const Error& error :
           RunOn(session,
                 "DECLARE c CURSOR LOCAL FOR SELECT amount FROM account WHERE id = 1 OPEN c FETCH c"
                 " UPDATE account SET amount = amount - 1 WHERE CURRENT OF c"
                 " DECLARE @o TABLE (id INT)"
                 " UPDATE account SET amount = dbo.Plus(amount) OUTPUT deleted.id INTO @o WHERE id = 2"
                 " INSERT INTO journal VALUES (0, REPLICATE('y', 8000))"
                 " UPDATE journal SET n = n + 1, text = REPLICATE('x', 4000 + n % 2 * 4000)"
                 " WHERE text LIKE 'x%' MERGE journal AS j USING (VALUES (1), (0)) AS s (m)"
                 " ON j.text LIKE CASE m WHEN 1 THEN 'y%' ELSE 'z%' END"
                 " WHEN MATCHED AND m = 1 THEN DELETE"
                 " WHEN NOT MATCHED THEN INSERT VALUES (m, REPLICATE('z', 6000));"
                 " DELETE FROM journal WHERE text LIKE 'z%'"
                 " UPDATE account SET id = 3 WHERE id = 2 UPDATE account SET id = 2 WHERE id = 3"
                 " EXEC ('CREATE SCHEMA passing') ALTER SCHEMA passing TRANSFER journal"
                 " EXEC sp_rename 'passing.journal.n', 'm' EXEC sp_rename 'passing.journal.m', 'n'"
                 " EXEC sp_rename 'passing.journal', 'diary' EXEC sp_rename 'passing.diary', 'journal'"
                 " ALTER SCHEMA dbo TRANSFER passing.journal DROP SCHEMA passing")
               .errors)
        failures += error.what();
      if (failures.empty()) session.Commit();
    } catch (const Error& error) {
      failures += error.what();
    }
    return failures;
  }
  static void EndWork(Session& session) {
    if (session.TransactionCount() > 0) session.Rollback();
  }

  // How often the work was committed; -1 when a part of it was.
  static int Done(Session& session) {
    const Output output =
        RunOn(session, "SELECT CASE WHEN SUM(amount) = 0"
                       " AND MAX(amount) = (SELECT SUM(n) FROM journal)"
                       " AND MAX(amount) = (SELECT ISNULL(SUM(by_how_much), 0) FROM changes)"
                       " AND MAX(amount) = (SELECT COUNT(DISTINCT step) FROM changes WHERE step % 5 = 0)"
                       " AND 2 = (SELECT id FROM share) THEN MAX(amount) ELSE -1 END FROM account");
    for (const Error& error : output.errors) ADD_FAILURE() << error.what();
    return output.results.empty() ? -2 : std::stoi(output.results[0].at(0));
  }

  // SQLite's own check of the file.
  std::string Check() const {
    sqlite3* connection = nullptr;
    std::string answer = "not opened";
    if (sqlite3_open(path_.c_str(), &connection) == SQLITE_OK)
      sqlite3_exec(
          connection, "PRAGMA integrity_check",
          [](void* text, int, char** values, char**) {
            *static_cast<std::string*>(text) = values[0];
            return 0;
          },
          &answer, nullptr);
    sqlite3_close(connection);
    return answer;
  }

  std::unique_ptr<Session> Open() const { return Session::Open(Database::Open(path_, OpenMode::Existing)); }
};

struct Disk {
  StorageFault fault;
  bool stays;
};

class DiskTest : public StorageFaultsTest, public ::testing::WithParamInterface<Disk> {};

TEST_P(DiskTest, AUnitOfWorkIsWholeOrGone) {
  FailingStorage storage;
  int done = 0;
  int faults = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("operation " + std::to_string(nth));
    auto session = Open();
    storage.FailAt(GetParam().fault, nth, GetParam().stays);
    const std::string failure = Work(*session);
    const bool failed = storage.Mend();
    EndWork(*session);
    if (failure.empty()) ++done;
    EXPECT_EQ(Done(*session), done) << failure;
    EXPECT_EQ(Work(*session), "") << "the next one, after: " << failure;
    EXPECT_EQ(Done(*session), ++done);
    EXPECT_EQ(Done(*Open()), done);
    // The last session writes what is in the log into the file.
    storage.FailAt(GetParam().fault, nth, GetParam().stays);
    session.reset();
    storage.Mend();
    EXPECT_EQ(Done(*Open()), done);
    EXPECT_EQ(Check(), "ok");
    if (HasFailure()) return;
    if (!failed) break;
    ++faults;
    EXPECT_TRUE(failure.empty() || failure.find("The storage engine failed: ") == 0) << failure;
  }
  EXPECT_GT(faults, 0);
}

TEST_P(DiskTest, OpeningSaysWhatIsWrong) {
  { EXPECT_EQ(Work(*Open()), ""); }
  FailingStorage storage;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("operation " + std::to_string(nth));
    storage.FailAt(GetParam().fault, nth, GetParam().stays);
    try {
      EXPECT_NE(Open(), nullptr);
    } catch (const Error& error) {
      EXPECT_EQ(error.number, 823) << error.what();
    }
    const bool failed = storage.Mend();
    EXPECT_EQ(Done(*Open()), 1);
    if (HasFailure() || !failed) break;
  }
}

// A table that is made anew on the way has all of its rows, as it was or as it was to be.
TEST_P(DiskTest, AChangedTableIsWhole) {
  FailingStorage storage;
  bool isWide = false;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("operation " + std::to_string(nth));
    auto session = Open();
    storage.FailAt(GetParam().fault, nth, GetParam().stays);
    const Output output = RunOn(*session, isWide ? "ALTER TABLE account ALTER COLUMN amount INT NOT NULL"
                                                 : "ALTER TABLE account ALTER COLUMN amount BIGINT NOT NULL");
    const bool failed = storage.Mend();
    if (output.errors.empty()) isWide = !isWide;
    session.reset();
    session = Open();
    EXPECT_EQ(RunOn(*session, "SELECT id, amount, COL_LENGTH('account', 'amount') FROM account ORDER BY id")
                  .results,
              isWide ? std::vector<Lines>({{"1|0|8", "2|0|8"}}) : std::vector<Lines>({{"1|0|4", "2|0|4"}}));
    EXPECT_EQ(Check(), "ok");
    if (HasFailure() || !failed) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Disks, DiskTest,
                         ::testing::Values(Disk{StorageFault::Full, false}, Disk{StorageFault::Full, true},
                                           Disk{StorageFault::NoWrite, false},
                                           Disk{StorageFault::NoWrite, true},
                                           Disk{StorageFault::NoRead, false},
                                           Disk{StorageFault::NoRead, true}),
                         [](const ::testing::TestParamInfo<Disk>& disk) {
                           const char* const fault = disk.param.fault == StorageFault::Full      ? "Full"
                                                     : disk.param.fault == StorageFault::NoWrite ? "NoWrite"
                                                                                                 : "NoRead";
                           return std::string(fault) + (disk.param.stays ? "Stays" : "Once");
                         });

TEST_F(StorageFaultsTest, AFileThatCanOnlyBeReadIsRead) {
  { EXPECT_EQ(Work(*Open()), ""); }
  FailingStorage storage;
  storage.SetReadOnly(true);
  {
    const auto session = Open();
    EXPECT_EQ(Done(*session), 1);
    const std::string failure = Work(*session);
    EndWork(*session);
    EXPECT_NE(failure.find("readonly"), std::string::npos) << failure;
    EXPECT_EQ(Done(*session), 1);
  }
  storage.SetReadOnly(false);
  EXPECT_EQ(Work(*Open()), "");
  EXPECT_EQ(Done(*Open()), 2);
}

TEST_F(StorageFaultsTest, DamagedFilesEndNothingButTheirCalls) {
  {
    const auto session = Open();
    for (int i = 0; i < 20; ++i) EXPECT_EQ(Work(*session), "");
  }
  std::ifstream file(path_, std::ios::binary);
  const std::string whole{std::istreambuf_iterator<char>(file), {}};
  file.close();
  const auto seed = static_cast<unsigned>(Setting("STORAGE_SEED", 1));
  const auto files = static_cast<unsigned>(100 * Setting("STORAGE_TIMES", 1));
  std::printf("seed %u, %u files\n", seed, files);
  int refused = 0;
  for (unsigned number = 0; number < files; ++number) {
    SCOPED_TRACE("file " + std::to_string(number));
    std::mt19937 random(seed + number);
    std::string damaged = whole;
    if (random() % 8 == 0) damaged.resize(random() % damaged.size());
    for (auto changes = random() % 60 + 1; changes > 0 && !damaged.empty(); --changes)
      damaged[random() % (random() % 2 == 0 ? damaged.size() : std::min<size_t>(damaged.size(), 4096))] =
          static_cast<char>(random());
    for (const char* suffix : {"-wal", "-shm"}) std::remove((path_ + suffix).c_str());
    std::ofstream(path_, std::ios::binary) << damaged;
    try {
      const auto session = Open();
      for (const char* batch :
           {"SELECT * FROM account", "SELECT COUNT(*), MAX(text) FROM journal", "SELECT * FROM nowhere"}) {
        for (const Error& error : RunOn(*session, batch).errors) {
          EXPECT_GT(error.number, 0);
          EXPECT_NE(std::string(error.what()), "");
        }
      }
      if (!Work(*session).empty()) ++refused;
      EndWork(*session);
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()), "");
      ++refused;
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(refused, 0);
  for (const char* suffix : {"-wal", "-shm"}) std::remove((path_ + suffix).c_str());
  std::ofstream(path_, std::ios::binary) << whole;
  EXPECT_EQ(Done(*Open()), 20);
  EXPECT_EQ(Work(*Open()), "");
}

TEST_F(StorageFaultsTest, AClockThatGoesBackwardsHurtsNothing) {
  const auto session = Open();
  session->SetTimeLimit(std::chrono::seconds(20));
  for (int year = 0; year < 20; ++year) {
    session->SetNow(DateTime{45000 - year * 366, 0});
    EXPECT_EQ(Work(*session), "");
  }
  EXPECT_EQ(Done(*session), 20);
  EXPECT_EQ(RunOn(*session, "SELECT CONVERT(VARCHAR(10), GETDATE(), 120)").results,
            std::vector<Lines>({{"2004-03-02"}}));
}

} // namespace
} // namespace tsql::test
