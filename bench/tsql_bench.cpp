// The engine beside the same work written by hand with SQLite's C API, on tables of the same rows, both in
// memory. tsql_bench [TURNS]
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bench/SideBySide.h"
#include "tsql/Script.h"
#include "tsql/tsql.h"

namespace {

constexpr int kRows = 100000;
constexpr int kCalls = 20000;
constexpr int64_t kScale = 10000; // decimal(18,4), by hand an integer

[[noreturn]] void Die(const std::string& what) {
  std::fprintf(stderr, "tsql_bench: %s\n", what.c_str());
  std::exit(1);
}

double Seconds(const std::function<void()>& work) {
  return bench::SecondsOf([&] {
    work();
    return 0;
  });
}

// ---- the two sides

// Looks at every value, as a caller would.
struct Reader : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> values) override {
    for (const tsql::Value& value : values)
      sum +=
          value.integer + static_cast<int64_t>(value.decimal.low) + static_cast<int64_t>(value.text.size());
  }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { Die(error.what()); }
  int64_t sum = 0;
};

class Engine {
 public:
  Engine() : session_(tsql::Session::Open(tsql::Database::Open(":memory:bench", tsql::OpenMode::Create))) {}
  void Run(std::string_view batch, std::span<tsql::Parameter> parameters = {}) {
    session_->Execute(batch, parameters, reader);
  }
  Reader reader;

 private:
  std::unique_ptr<tsql::Session> session_;
};

class Hand {
 public:
  Hand() {
    if (sqlite3_open_v2("file:/hand?vfs=memdb", &db_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI, nullptr) != SQLITE_OK)
      Die("SQLite does not open");
  }
  Hand(const Hand&) = delete;
  Hand& operator=(const Hand&) = delete;
  ~Hand() {
    for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
    sqlite3_close(db_);
  }
  sqlite3* Handle() const { return db_; }
  void Run(const char* sql) const {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) Die(sqlite3_errmsg(db_));
  }
  sqlite3_stmt* Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
      Die(sqlite3_errmsg(db_));
    statements_.push_back(statement);
    return statement;
  }
  // Steps to the end, looking at every value.
  void StepAll(sqlite3_stmt* statement) {
    int result = sqlite3_step(statement);
    const int columns = sqlite3_column_count(statement);
    for (; result == SQLITE_ROW; result = sqlite3_step(statement)) {
      for (int i = 0; i < columns; ++i) {
        if (sqlite3_column_type(statement, i) == SQLITE_TEXT) {
          sqlite3_column_text(statement, i);
          sum += sqlite3_column_bytes(statement, i);
        } else {
          sum += sqlite3_column_int64(statement, i);
        }
      }
    }
    if (result != SQLITE_DONE) Die(sqlite3_errmsg(db_));
    sqlite3_reset(statement);
  }
  // Reads one int by a single step. SQLite adds in 64 bits, so the range is compared here.
  void StepOnce(sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result == SQLITE_ROW && sqlite3_column_type(statement, 0) == SQLITE_INTEGER) {
      const int64_t value = sqlite3_column_int64(statement, 0);
      if (value != static_cast<int32_t>(value)) Die("overflow");
      sum += value;
    } else if (result != SQLITE_ROW && result != SQLITE_DONE) {
      Die(sqlite3_errmsg(db_));
    }
    sqlite3_reset(statement);
  }
  int64_t sum = 0;

 private:
  sqlite3* db_ = nullptr;
  std::vector<sqlite3_stmt*> statements_;
};

// A decimal(28,10) by hand: 16 bytes with a 128-bit number of 10^-10, doubled and raised by one exactly.
__extension__ using Wide = __int128;

void DoubleAndOne(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  constexpr int64_t kOne = 10000000000;
  Wide number = 0;
  std::memcpy(&number, sqlite3_value_blob(values[0]), sizeof number);
  number = number * 2 + kOne;
  sqlite3_result_blob64(context, &number, sizeof number, SQLITE_TRANSIENT);
}

void MakeWide(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  const Wide number = static_cast<Wide>(sqlite3_value_int64(values[0])) * 1000000;
  sqlite3_result_blob64(context, &number, sizeof number, SQLITE_TRANSIENT);
}

void Fill(Engine& engine, Hand& hand) {
  engine.Run(
      "SET NOCOUNT ON CREATE TABLE t (id INT NOT NULL PRIMARY KEY, item INT NOT NULL, qty DECIMAL(18,4) NULL,"
      " wide DECIMAL(28,10) NULL, name VARCHAR(40) NULL, day DATETIME NULL)"
      " CREATE TABLE u (id INT NOT NULL PRIMARY KEY, item INT NOT NULL, qty DECIMAL(18,4) NULL, name "
      "VARCHAR(40) NULL)"
      " CREATE TABLE w (id INT NOT NULL PRIMARY KEY, wide DECIMAL(28,10) NULL)"
      " CREATE TABLE c (id INT NOT NULL PRIMARY KEY, n INT NOT NULL) INSERT INTO c VALUES (1, 0)");
  hand.Run(
      "CREATE TABLE t (id INTEGER PRIMARY KEY, item INTEGER NOT NULL, qty INTEGER, wide BLOB,"
      " name TEXT COLLATE NOCASE, day INTEGER);"
      "CREATE TABLE u (id INTEGER PRIMARY KEY, item INTEGER NOT NULL, qty INTEGER, name TEXT COLLATE NOCASE);"
      "CREATE TABLE w (id INTEGER PRIMARY KEY, wide BLOB);"
      "CREATE TABLE c (id INTEGER PRIMARY KEY, n INTEGER NOT NULL); INSERT INTO c VALUES (1, 0)");
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  sqlite3_create_function_v2(hand.Handle(), "double_and_one", 1, kFlags, nullptr, DoubleAndOne, nullptr,
                             nullptr, nullptr);
  sqlite3_create_function_v2(hand.Handle(), "make_wide", 1, kFlags, nullptr, MakeWide, nullptr, nullptr,
                             nullptr);
  constexpr int kChunk = 1000;
  for (int first = 1; first <= kRows; first += kChunk) {
    std::string rows;
    std::string handRows;
    for (int id = first; id < first + kChunk; ++id) {
      const std::string quantity = std::to_string(id % 997) + ".25";
      const std::string scaled = std::to_string(id % 997 * kScale + kScale / 4);
      const std::string name = "'Item number " + std::to_string(id * 7919LL % kRows) + "'";
      std::string start = id > first ? ", (" : "(";
      start.append(std::to_string(id)).append(", ").append(std::to_string(id % 500)).append(", ");
      rows.append(start).append(quantity).append(", ").append(quantity).append(", ").append(name);
      rows.append(", '2026-01-01')");
      handRows.append(start).append(scaled).append(", make_wide(").append(scaled).append("), ").append(name);
      handRows.append(", 13806720000)");
    }
    engine.Run("INSERT INTO t VALUES " + rows);
    hand.Run(("INSERT INTO t VALUES " + handRows).c_str());
  }
}

// ---- measuring

bench::RowName Named(const char* what, double aim) {
  return {what, "SQLite by hand", {.ratio = aim}};
}

void PointSelects(Engine& engine, Hand& hand, int turns) {
  std::vector<tsql::Parameter> parameters(1);
  parameters[0].name = "@id";
  parameters[0].type.id = tsql::TypeId::Int;
  parameters[0].value.kind = tsql::Value::Kind::Integer;
  sqlite3_stmt* select = hand.Prepare("SELECT name, qty, item FROM t WHERE id = ?");
  bench::SideBySide(
      Named("point select, plan reused", 1.2), turns, kCalls,
      [&] {
        return Seconds([&] {
          for (int i = 0; i < kCalls; ++i) {
            parameters[0].value.integer = i * 37 % kRows + 1;
            engine.Run("SELECT name, qty, item FROM t WHERE id = @id", parameters);
          }
        });
      },
      [&] {
        return Seconds([&] {
          for (int i = 0; i < kCalls; ++i) {
            sqlite3_bind_int64(select, 1, i * 37 % kRows + 1);
            hand.StepAll(select);
          }
        });
      });
}

void Bulk(Engine& engine, Hand& hand, int turns) {
  struct Work {
    const char* what;
    const char* before; // on both
    const char* engine;
    const char* hand;
    double aim;
  };
  constexpr Work kWorks[] = {
      {"INSERT ... SELECT of 100000 rows", "DELETE FROM u",
       "INSERT INTO u (id, item, qty, name) SELECT id, item, qty, name FROM t",
       "INSERT INTO u (id, item, qty, name) SELECT id, item, qty, name FROM t", 1.5},
      {"INSERT ... SELECT computing a decimal(18,4)", "DELETE FROM u",
       "INSERT INTO u (id, item, qty, name) SELECT id, item + 1, qty * 2 + 1, name FROM t",
       "INSERT INTO u (id, item, qty, name) SELECT id, item + 1, qty * 2 + 10000, name FROM t", 1.15},
      {"INSERT ... SELECT computing a decimal(28,10)", "DELETE FROM w",
       "INSERT INTO w SELECT id, wide * 2 + 1 FROM t", "INSERT INTO w SELECT id, double_and_one(wide) FROM t",
       1.5},
      {"UPDATE ... FROM a join of 100000 rows",
       "DELETE FROM u; INSERT INTO u (id, item, qty, name) SELECT id, item, 0, name FROM t",
       "UPDATE a SET a.qty = b.qty FROM u a INNER JOIN t b ON a.id = b.id",
       "UPDATE u SET qty = t.qty FROM t WHERE t.id = u.id", 1.5},
      {"a window over 100000 rows", "",
       "SELECT id, ROW_NUMBER() OVER (PARTITION BY item ORDER BY id), MAX(id) OVER (PARTITION BY item) FROM t",
       "SELECT id, ROW_NUMBER() OVER (PARTITION BY item ORDER BY id), MAX(id) OVER (PARTITION BY item) FROM t",
       1.1},
      {"grouped select over 100000 rows", "",
       "SELECT item, COUNT(*), SUM(qty), MAX(id) FROM t GROUP BY item ORDER BY item",
       "SELECT item, COUNT(*), SUM(qty), MAX(id) FROM t GROUP BY item ORDER BY item", 1.5},
      {"grouped select by text, with MAX of text", "",
       "SELECT SUBSTRING(name, 1, 14), COUNT(*), MAX(name) FROM t GROUP BY SUBSTRING(name, 1, 14) ORDER BY 1",
       "SELECT substr(name, 1, 14), COUNT(*), MAX(name) FROM t GROUP BY substr(name, 1, 14) COLLATE NOCASE "
       "ORDER BY 1",
       1.15}};
  for (const Work& work : kWorks) {
    sqlite3_stmt* statement = hand.Prepare(work.hand);
    bench::SideBySide(
        Named(work.what, work.aim), turns, 1,
        [&] {
          engine.Run(work.before);
          return Seconds([&] { engine.Run(work.engine); });
        },
        [&] {
          hand.Run(work.before);
          return Seconds([&] { hand.StepAll(statement); });
        });
  }
}

void Loops(Engine& engine, Hand& hand, int turns) {
  constexpr int kCopies = 100; // of the statement, so that it outweighs the loop
  constexpr int kPasses = kCalls / kCopies;
  const std::string head = "DECLARE @i INT SET @i = 0 WHILE @i < " + std::to_string(kPasses) + " BEGIN ";
  const std::string tail = " SET @i = @i + 1 END";
  const auto timeOf = [&](const std::string& body) {
    const std::string batch = head + body + tail;
    return Seconds([&] { engine.Run(batch); });
  };
  struct Work {
    const char* what;
    const char* engine;
    const char* hand;
    void (Hand::*step)(sqlite3_stmt*);
    double aim;
  };
  constexpr Work kWorks[] = {
      {"statement of a WHILE loop: an update", "UPDATE c SET n = @i WHERE id = 1",
       "UPDATE c SET n = ? WHERE id = 1", &Hand::StepAll, 1.2},
      {"statement of a WHILE loop: SELECT @v = ", "SELECT @n = n FROM c WHERE id = 1",
       "SELECT n FROM c WHERE id = 1", &Hand::StepAll, 1.2},
      {"statement of a WHILE loop: SET", "SET @n = @i + 1", "SELECT ? + 1", &Hand::StepOnce, 1.2},
      {"statement of a WHILE loop: IF", "IF @i < 0 SET @n = 1", "SELECT 1 WHERE ? < 0", &Hand::StepOnce,
       1.2}};
  for (const Work& work : kWorks) {
    sqlite3_stmt* statement = hand.Prepare(work.hand);
    const bool hasParameter = sqlite3_bind_parameter_count(statement) > 0;
    std::string copies = "DECLARE @n INT";
    for (int i = 0; i < kCopies; ++i) copies += std::string(" ") + work.engine;
    bench::SideBySide(
        Named(work.what, work.aim), turns, kCalls,
        [&] {
          // The loop alone is taken off: what remains is the statement.
          const double empty = timeOf("DECLARE @n INT");
          return timeOf(copies) - empty;
        },
        [&] {
          return Seconds([&] {
            for (int n = 0; n < kCalls; ++n) {
              if (hasParameter) sqlite3_bind_int64(statement, 1, n);
              (hand.*work.step)(statement);
            }
          });
        });
  }
}

// Runs a prepared statement for each call, as a function by hand would.
void CallByHand(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto* const statement = static_cast<sqlite3_stmt*>(sqlite3_user_data(context));
  sqlite3_bind_value(statement, 1, values[0]);
  if (sqlite3_step(statement) != SQLITE_ROW) Die("a call by hand");
  sqlite3_result_value(context, sqlite3_column_value(statement, 0));
  sqlite3_reset(statement);
}

void FunctionCalls(Engine& engine, Hand& hand, int turns) {
  engine.Run("CREATE FUNCTION f (@n INT) RETURNS INT AS BEGIN RETURN @n * 2 + 1 END");
  sqlite3_create_function_v2(hand.Handle(), "f", 1, SQLITE_UTF8, hand.Prepare("SELECT ?1 * 2 + 1"),
                             CallByHand, nullptr, nullptr, nullptr);
  const std::string where = " FROM t WHERE id <= " + std::to_string(kCalls);
  sqlite3_stmt* select = hand.Prepare(("SELECT MAX(f(id))" + where).c_str());
  const std::string batch = "SELECT MAX(dbo.f(id))" + where;
  bench::SideBySide(
      Named("call of a scalar function", 3), turns, kCalls,
      [&] { return Seconds([&] { engine.Run(batch); }); },
      [&] { return Seconds([&] { hand.StepAll(select); }); });
}

void TableVariableRows(Engine& engine, Hand& hand, int turns) {
  const std::string declare = "DECLARE @v TABLE (id INT NOT NULL, item INT NOT NULL, name VARCHAR(40) NULL) ";
  hand.Run("CREATE TEMP TABLE v (id INTEGER NOT NULL, item INTEGER NOT NULL, name TEXT COLLATE NOCASE)");
  sqlite3_stmt* insert = hand.Prepare("INSERT INTO v SELECT id, item, name FROM t");
  bench::SideBySide(
      Named("INSERT ... SELECT of 100000 rows into a table variable", 1.2), turns, 1,
      [&] { return Seconds([&] { engine.Run(declare + "INSERT @v SELECT id, item, name FROM t"); }); },
      [&] {
        return Seconds([&] {
          hand.StepAll(insert);
          hand.Run("DELETE FROM v"); // the variable ends with its batch
        });
      });
}

// A cursor's row beside a row of a statement that is left open.
void CursorRows(Engine& engine, Hand& hand, int turns) {
  constexpr int kCopies = 100; // of the FETCH, so that it outweighs the loop
  const std::string head = "DECLARE @i INT, @id INT, @item INT, @name VARCHAR(40) SET @i = 0"
                           " DECLARE k CURSOR LOCAL FOR SELECT id, item, name FROM t WHERE id <= " +
                           std::to_string(kCalls) + " OPEN k WHILE @i < " + std::to_string(kCalls / kCopies) +
                           " BEGIN";
  const std::string tail = " SET @i = @i + 1 END";
  std::string fetches;
  for (int i = 0; i < kCopies; ++i) fetches += " FETCH k INTO @id, @item, @name";
  const std::string loop = "DECLARE @i INT SET @i = 0 WHILE @i < " + std::to_string(kCalls / kCopies) +
                           " BEGIN SET @i = @i + 1 END";
  const std::string batch = head + fetches + tail;
  sqlite3_stmt* select =
      hand.Prepare(("SELECT id, item, name FROM t WHERE id <= " + std::to_string(kCalls)).c_str());
  bench::SideBySide(
      Named("row of a cursor", 2), turns, kCalls,
      [&] {
        // The loop alone is taken off: what remains is the cursor.
        const double empty = Seconds([&] { engine.Run(loop); });
        return Seconds([&] { engine.Run(batch); }) - empty;
      },
      [&] { return Seconds([&] { hand.StepAll(select); }); });
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) Die(path + " cannot be read");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A text that was never seen is compiled; the difference to the same text again is the compilation.
void Compiling(int turns) {
  const std::string root = TSQL_SOURCE_DIR;
  const auto session = tsql::Session::Open(tsql::Database::Open(":memory:compile", tsql::OpenMode::Create));
  Reader reader;
  for (const char* script : {"/standin/database/schema.sql", "/standin/database/factory.sql"}) {
    std::ifstream file(root + script, std::ios::binary);
    tsql::ScriptReader batches(file);
    while (const auto batch = batches.Next()) session->Execute(batch->text, {}, reader);
  }
  struct Statement {
    const char* what;
    const char* file;
  };
  constexpr Statement kStatements[] = {
      {"a point select", "CEcnInfo.ReturnEcnStatus"},
      {"an update from a join", "CEcnInfo.EndSave.snapshot"},
      {"the line ledger: 13 joins", "BomView.GetBomEntryLdgInfo"},
      {"the group tree: a batch of 17 statements", "BomView.GetBomGroupList.all"}};
  int unique = 0;
  for (const Statement& statement : kStatements) {
    const std::string text = ReadText(root + "/statements/" + statement.file + ".sql");
    std::string fresh;
    const auto run = [&] { return Seconds([&] { session->Execute(fresh, {}, reader); }); };
    std::vector<double> first;
    std::vector<double> again;
    for (int i = 0; i < turns * 3; ++i) {
      fresh = "--" + std::to_string(++unique) + "\n" + text;
      first.push_back(run());
      again.push_back(run());
    }
    bench::PrintRow({std::string("compiled and run: ") + statement.what, "run again", {}}, first, again);
  }
}

} // namespace

int main(int argc, char** argv) {
  constexpr int kRepetitions = 9;
  const int turns = argc > 1 ? std::max(std::atoi(argv[1]), 1) : kRepetitions;
  Engine engine;
  Hand hand;
  Fill(engine, hand);
  PointSelects(engine, hand, turns);
  Bulk(engine, hand, turns);
  Loops(engine, hand, turns);
  FunctionCalls(engine, hand, turns);
  TableVariableRows(engine, hand, turns);
  CursorRows(engine, hand, turns);
  Compiling(turns);
  return 0;
}
