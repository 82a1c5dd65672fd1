// odbc_bench [CONNECTION [ROWS]]: what it takes to read many rows of three short columns through an ODBC
// driver, as the session reads them (blocks of rows in bound columns) and by a plain loop of SQLGetData, and
// the memory that reading needs. CONNECTION is a connection string of ODBC; without one it is a temporary
// file of SQLite's driver. The rows are in a table "bench_rows", made anew.

// clang-format off
#include <windows.h>
#include <psapi.h> // wants the other one in front of it
// clang-format on

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "bench/SideBySide.h"
#include "com/Text.h"
#include "odbc/Api.h"
#include "odbc/Error.h"
#include "odbc/Handle.h"
#include "odbc/Session.h"

namespace {

constexpr int kTurns = 5;
constexpr wchar_t kQuery[] = L"SELECT n, FName, FQty FROM bench_rows";

// Counts what comes, and adds up the first column.
struct Counter : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> values) override {
    ++rows;
    sum += values[0].integer;
  }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override { throw static_cast<const odbc::Error&>(error); }
  int64_t rows = 0;
  int64_t sum = 0;
};

void Run(odbc::Session& session, const std::wstring& batch) {
  Counter counter;
  session.Execute(batch, {}, counter);
}

void Fill(odbc::Session& session, int rows) {
  try {
    Run(session, L"DROP TABLE bench_rows");
  } catch (const odbc::Error&) {
    // It is the first run.
  }
  Run(session, L"CREATE TABLE bench_rows (n int NOT NULL, FName nvarchar(40), FQty decimal(28,10))");
  Run(session, L"INSERT INTO bench_rows VALUES (1, 'a part of a bicycle', 12.5)");
  for (int have = 1; have < rows; have *= 2)
    Run(session, L"INSERT INTO bench_rows SELECT n + " + std::to_wstring(have) +
                     L", FName, FQty FROM bench_rows WHERE n + " + std::to_wstring(have) + L" <= " +
                     std::to_wstring(rows));
}

int64_t ReadPlainly(SQLHDBC connection) {
  const odbc::Statement statement(connection);
  std::wstring query = kQuery;
  SQLExecDirectW(statement.get(), query.data(), SQL_NTS);
  int64_t rows = 0;
  int64_t sum = 0;
  while (SQL_SUCCEEDED(SQLFetch(statement.get()))) {
    int64_t number = 0;
    std::array<wchar_t, 64> name{};
    std::array<char, 64> quantity{};
    SQLLEN length = 0;
    SQLGetData(statement.get(), 1, SQL_C_SBIGINT, &number, sizeof(number), &length);
    SQLGetData(statement.get(), 2, SQL_C_WCHAR, name.data(), sizeof(name), &length);
    SQLGetData(statement.get(), 3, SQL_C_CHAR, quantity.data(), sizeof(quantity), &length);
    ++rows;
    sum += number;
  }
  return sum == rows * (rows + 1) / 2 ? rows : -1;
}

int64_t ReadInBlocks(odbc::Session& session) {
  Counter counter;
  session.Execute(kQuery, {}, counter);
  return counter.sum == counter.rows * (counter.rows + 1) / 2 ? counter.rows : -1;
}

size_t PeakMemory() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PeakWorkingSetSize;
}

// How long reading takes, in seconds.
double SecondsOf(const std::function<int64_t()>& read, int64_t rows) {
  return bench::SecondsOf([&] {
    if (read() != rows) throw std::runtime_error("not all of the rows were read");
    return 0;
  });
}

// A file of the Linux machine's, for its driver reads it.
class TemporaryFile {
 public:
  ~TemporaryFile() { DeleteFileW((L"Z:" + path_).c_str()); }
  std::wstring ConnectionText() const { return L"DRIVER={SQLite3};Database=" + path_; }

 private:
  std::wstring path_ = L"/tmp/odbc_bench" + std::to_wstring(GetCurrentProcessId()) + L".db";
};

} // namespace

int main(int argc, char** argv) {
  try {
    const TemporaryFile file;
    const std::wstring text = argc > 1 ? com::FromUtf8(argv[1]) : file.ConnectionText();
    const int rows = argc > 2 ? std::atoi(argv[2]) : 64000;
    odbc::Session session(text);
    Fill(session, rows);

    const odbc::Environment environment(nullptr);
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, odbc::AsPointer(SQL_OV_ODBC3), 0);
    const odbc::Connection connection(environment.get());
    std::wstring writable = text;
    SQLSMALLINT length = 0;
    SQLDriverConnectW(connection.get(), nullptr, writable.data(), SQL_NTS, nullptr, 0, &length,
                      SQL_DRIVER_NOPROMPT);

    const size_t before = PeakMemory();
    ReadInBlocks(session);
    const size_t added = PeakMemory() - before;
    const std::string what = "ODBC: " + std::to_string(rows) + " rows in blocks";
    bench::SideBySide(
        {what, "a loop of SQLGetData"}, kTurns, 1,
        [&] { return SecondsOf([&] { return ReadInBlocks(session); }, rows); },
        [&] { return SecondsOf([&] { return ReadPlainly(connection.get()); }, rows); });
    bench::PrintValue({what + ": memory added at its peak", "a megabyte"}, static_cast<double>(added),
                      1024 * 1024);
    SQLDisconnect(connection.get());
    Run(session, L"DROP TABLE bench_rows");
  } catch (const odbc::Error& error) {
    std::fprintf(stderr, "%s %d: %s\n", error.sqlState.c_str(), error.number, error.what());
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "odbc_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
