// Memory that runs out at any allocation, the engine's own or SQLite's: whoever calls is told, nothing that
// was not asked for is written, and the same session does the same work when there is memory again.
// ALLOCATIONS_EVERY=n in the environment lets every n-th allocation fail, 1 each of them.
#include <sqlite3.h>

#include <cstdlib>

#include "tests/support/FailingAllocations.h"
#include "tests/tsql/FileTest.h"

namespace tsql::test {
namespace {

using ::test::FailingAllocations;
using Then = FailingAllocations::Then;

// Each how-manieth allocation fails, where nobody asks for another number than the usual one.
int64_t Every(int64_t usual) {
  const char* const every = std::getenv("ALLOCATIONS_EVERY");
  return every != nullptr ? std::max(std::atoll(every), 1LL) : usual;
}

// Something of everything that the engine does: functions of text, dates and decimals, a subquery, an
// aggregate, a temporary table, an error that is caught, variables, a procedure, a function, a table
// variable, a MERGE, a PIVOT, a cursor, a change with OUTPUT, a trigger, a key that others follow, a
// collation and a schema.
constexpr char kTables[] =
    "CREATE TABLE account (id INT NOT NULL PRIMARY KEY, amount DECIMAL(28,10) NOT NULL CHECK (amount < 99999999))"
    " CREATE TABLE journal (n INT IDENTITY PRIMARY KEY, text NVARCHAR(2000) NOT NULL)"
    " CREATE TABLE share (id INT NULL REFERENCES account ON UPDATE CASCADE) CREATE TABLE seen (n INT IDENTITY(1,2), text NVARCHAR(2000) COLLATE Chinese_PRC_CS_AS NULL, was NVARCHAR(2000) NULL)"
    " INSERT INTO account VALUES (1, 0), (2, 0) INSERT INTO share VALUES (2)";
constexpr char kProcedure[] = "CREATE PROCEDURE CountLines @text NVARCHAR(40), @lines INT OUTPUT AS"
                              " CREATE TABLE #found (n INT NOT NULL)"
                              " INSERT INTO #found SELECT n FROM journal WHERE text LIKE '%' + @text"
                              " SELECT @lines = COUNT(*) FROM #found";
constexpr char kFunction[] = "CREATE FUNCTION Plus (@n INT) RETURNS INT AS BEGIN DECLARE @t TABLE (a INT)"
                             " INSERT @t VALUES (1) SELECT @n = @n + a FROM @t RETURN @n END";
constexpr char kTrigger[] =
    "CREATE TRIGGER on_journal ON journal FOR INSERT, UPDATE AS DECLARE @t TABLE (n INT)"
    " INSERT @t SELECT n FROM inserted"
    " INSERT INTO seen SELECT i.text, d.text FROM inserted i JOIN @t t ON t.n = i.n"
    " LEFT JOIN deleted d ON d.n = i.n";
constexpr char kWork[] =
    "DECLARE @before INT SELECT @before = COUNT(*) FROM journal"
    " CREATE TABLE #t (a INT NOT NULL, b NVARCHAR(40) NULL)"
    " INSERT INTO #t SELECT id, REPLICATE(N'\xe5\xad\x97', id) + CONVERT(VARCHAR(10), GETDATE(), 120)"
    " FROM account"
    " BEGIN TRY INSERT INTO #t VALUES (1 / 0, 'x') END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH"
    " UPDATE a SET a.amount = a.amount - (SELECT COUNT(*) FROM #t WHERE a = 1) FROM account a"
    " JOIN #t b ON a.id = b.a WHERE a.id = 1"
    " DECLARE @v TABLE (a INT NOT NULL PRIMARY KEY) INSERT @v SELECT id FROM account WHERE id = 2"
    " MERGE @v AS v USING (SELECT a, COUNT(*) AS n FROM #t GROUP BY a) AS s ON v.a = s.a"
    " WHEN MATCHED AND n > 5 THEN DELETE WHEN NOT MATCHED THEN INSERT VALUES (s.a + 100);"
    " SELECT @before = @before + [1] - 1 FROM (SELECT a, a AS k FROM #t) s PIVOT (COUNT(a) FOR k IN ([1])) p"
    " DECLARE c CURSOR LOCAL FOR SELECT id FROM account ORDER BY id DESC DECLARE @id INT OPEN c FETCH c INTO @id"
    " DECLARE @o TABLE (id INT) UPDATE account SET amount = dbo.Plus(amount) OUTPUT inserted.id INTO @o"
    " WHERE id = (SELECT a FROM @v WHERE a = @id)"
    " IF EXISTS (SELECT 1 FROM #t WHERE a > 1)"
    " INSERT INTO journal (text) SELECT TOP 1 b + UPPER('x') FROM #t ORDER BY a DESC"
    " SELECT SUM(amount), CAST(AVG(amount) AS DECIMAL(20,4)), (SELECT COUNT(*) FROM journal) - @before"
    " FROM account WHERE EXISTS (SELECT * FROM @o)"
    " UPDATE account SET id = 3 WHERE id = 2 UPDATE account SET id = id - 1 WHERE id = 3"
    " DROP TABLE #t EXEC ('CREATE SCHEMA passing') ALTER SCHEMA passing TRANSFER seen"
    " UPDATE passing.seen SET was = was WHERE text <> 'X' ALTER SCHEMA dbo TRANSFER passing.seen DROP SCHEMA passing";

// What a unit of work came to.
struct Outcome {
  std::string failure; // empty when it was committed
  Output output;
  int64_t lines = -1;
};

Outcome Work(Session& session) {
  Outcome outcome;
  try {
    session.Begin();
    session.Execute(kWork, {}, outcome.output);
    std::vector<Parameter> parameters(2);
    parameters[0].name = "@text";
    parameters[0].type = {TypeId::NVarChar, 40};
    parameters[0].value.kind = Value::Kind::Text;
    parameters[0].value.text = "X";
    parameters[1].name = "@lines";
    parameters[1].output = true;
    session.Call("CountLines", parameters, outcome.output);
    for (const Error& error : outcome.output.errors) outcome.failure += error.what();
    if (outcome.failure.empty()) session.Commit();
    outcome.lines = parameters[1].value.integer;
  } catch (const Error& error) {
    outcome.failure += error.what();
  } catch (const std::bad_alloc&) {
    outcome.failure += "bad_alloc";
  }
  return outcome;
}

// How often the work has been committed; -1 when a part of it was.
int Done(Session& session) {
  Output output;
  session.Execute(
      "SELECT CASE WHEN SUM(amount) = 0 AND MAX(amount) = (SELECT COUNT(*) FROM journal)"
      " AND MAX(amount) = (SELECT COUNT(*) FROM seen WHERE was IS NULL) AND 2 = (SELECT id FROM share)"
      " AND (SELECT COUNT(*) FROM seen) = (SELECT COUNT(DISTINCT n) FROM seen WHERE n % 2 = 1) THEN CAST(MAX(amount) AS INT) ELSE -1 END FROM account",
      {}, output);
  EXPECT_TRUE(output.errors.empty());
  return output.results.empty() ? -2 : std::stoi(output.results[0].at(0));
}

// The work prints the error that it catches: any one while there is no memory.
constexpr char kCaught[] = "Divide by zero error encountered.";

void ExpectGoodWork(const Outcome& outcome, int done) {
  EXPECT_EQ(outcome.failure, "");
  EXPECT_EQ(outcome.output.results, std::vector<Lines>({{"0.0000000000|0.0000|1"}}));
  EXPECT_EQ(outcome.lines, done);
}

class OutOfMemoryTest : public FileTest, public ::testing::WithParamInterface<Then> {
 protected:
  static void MakeTables(Session& session) {
    for (const char* batch : {kTables, kProcedure, kFunction, kTrigger})
      EXPECT_TRUE(RunOn(session, batch).errors.empty());
  }

  // Works on one session after another while each allocation fails, until the work needs no further one.
  // `open` makes the session for each attempt.
  template <class Open>
  void WorkShortOfMemory(int64_t every, const Open& open) {
    int done = Done(*open());
    for (int64_t nth = 1, attempts = 1;; nth += every, ++attempts) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      const auto session = open();
      Outcome outcome;
      bool failed = false;
      {
        const FailingAllocations memory(nth, GetParam());
        outcome = Work(*session);
        failed = memory.HasFailed();
      }
      if (session->TransactionCount() > 0) session->Rollback();
      // What succeeds without the memory has done all of it.
      if (outcome.failure.empty()) ExpectGoodWork(outcome, ++done);
      EXPECT_EQ(Done(*session), done) << outcome.failure;
      const Outcome next = Work(*session);
      ExpectGoodWork(next, ++done);
      EXPECT_EQ(next.output.messages, Lines({kCaught}));
      EXPECT_EQ(Done(*open()), done);
      if (HasFailure()) return;
      if (!failed) {
        std::printf("%lld of %lld allocations failed\n", static_cast<long long>(attempts - 1),
                    static_cast<long long>(nth));
        EXPECT_GT(attempts, 10);
        return;
      }
    }
  }
};

TEST_P(OutOfMemoryTest, ANewSessionLosesNothing) {
  const auto database = Database::Open(UniqueMemoryName(), OpenMode::Create);
  MakeTables(*Session::Open(database));
  // It compiles all that it does, and so allocates a lot.
  WorkShortOfMemory(Every(61), [&] { return Session::Open(database); });
}

TEST_P(OutOfMemoryTest, ASessionInUseLosesNothing) {
  const auto database = Database::Open(path_, OpenMode::Create);
  std::shared_ptr<Session> session = Session::Open(database);
  MakeTables(*session);
  WorkShortOfMemory(Every(8), [&] { return session; });
}

TEST_P(OutOfMemoryTest, OpeningFailsWithAReason) {
  MakeTables(*Session::Open(Database::Open(path_, OpenMode::Create)));
  const int64_t every = Every(2);
  for (int64_t nth = 1;; nth += every) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    bool opened = false;
    bool failed = false;
    {
      const FailingAllocations memory(nth, GetParam());
      try {
        opened = Session::Open(Database::Open(path_, OpenMode::Existing)) != nullptr;
      } catch (const Error& error) {
        EXPECT_NE(std::string(error.what()), "");
        EXPECT_NE(error.number, 4060) << "the file is there: " << error.what();
      } catch (const std::bad_alloc&) {
      }
      failed = memory.HasFailed();
    }
    EXPECT_TRUE(opened || failed);
    EXPECT_EQ(Done(*Session::Open(Database::Open(path_, OpenMode::Existing))), 0);
    if (HasFailure() || !failed) break;
  }
}

TEST_P(OutOfMemoryTest, EndingASessionGivesItsLockBack) {
  const auto database = Database::Open(path_, OpenMode::Create);
  MakeTables(*Session::Open(database));
  for (int64_t nth = 1;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    auto session = Session::Open(database);
    session->Begin();
    EXPECT_TRUE(RunOn(*session, "CREATE TABLE ##everybodys (a INT) CREATE TABLE #mine (a INT)"
                                " UPDATE account SET amount = 5")
                    .errors.empty());
    bool failed = false;
    {
      const FailingAllocations memory(nth, GetParam());
      session.reset();
      failed = memory.HasFailed();
    }
    const auto next = Session::Open(database);
    next->SetLockTimeout(0);
    EXPECT_EQ(Done(*next), 0);
    EXPECT_TRUE(RunOn(*next, "UPDATE account SET amount = amount").errors.empty());
    if (HasFailure() || !failed) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Memory, OutOfMemoryTest, ::testing::Values(Then::Recovers, Then::StaysShort),
                         [](const ::testing::TestParamInfo<Then>& then) {
                           return then.param == Then::Recovers ? "Recovers" : "StaysShort";
                         });

// ---- SQLite's allocations are counted with the others

sqlite3_mem_methods g_plain;

void* Allocate(int size) {
  return FailingAllocations::Allow() ? g_plain.xMalloc(size) : nullptr;
}

void* Reallocate(void* memory, int size) {
  return FailingAllocations::Allow() ? g_plain.xRealloc(memory, size) : nullptr;
}

} // namespace
} // namespace tsql::test

int main(int argc, char** argv) {
  using namespace tsql::test;
  if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_plain) != SQLITE_OK) return 1;
  sqlite3_mem_methods counted = g_plain;
  counted.xMalloc = Allocate;
  counted.xRealloc = Reallocate;
  if (sqlite3_config(SQLITE_CONFIG_MALLOC, &counted) != SQLITE_OK) return 1;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
