// Apartments in several processes on one file, or on one server, through the host: what was completed is
// there exactly once, what was aborted is not, readers see whole units of work, and nobody fails but by
// waiting too long for a lock. HOST_CALLS in the environment sets how many calls each apartment makes.
#include "tests/tsql/Processes.h"

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "com/Text.h"
#include "tests/standin/DataFile.h"
#include "tests/standin/Worker.h"
#include "tests/support/TdsServer.h"

namespace standin::test {
namespace {

constexpr int kProcesses = 4;
constexpr int kApartments = 8;
constexpr int kWriters = 2; // of them

int Calls() {
  const char* const calls = std::getenv("HOST_CALLS");
  return calls ? std::atoi(calls) : 20;
}

// One apartment's calls; how many units of work it has completed. Anything but a lock's time-out fails the
// test.
int Work(const std::wstring& dsn, bool writes, std::atomic<int>& wrong) {
  int completed = 0;
  const Object worker = HostedWorker();
  for (int i = 0; i < Calls(); ++i) {
    const bool completes = i % 3 != 2;
    const std::wstring change = L"bind|UPDATE t SET FInterID = FInterID + 1|INSERT INTO done VALUES (1)|";
    // A row that was half there would end the call with an error.
    const std::wstring look =
        L"bind|IF (SELECT COUNT(*) FROM done) <> (SELECT FInterID FROM t) RAISERROR('half', 16, 1)";
    const Raised raised = RaisedBy(
        [&] { worker.Call(L"Run", dsn, writes ? change + (completes ? L"complete" : L"abort") : look); });
    if (raised.code == S_OK) {
      completed += writes && completes ? 1 : 0;
    } else if (raised.description.find(L"Lock request time out") == std::wstring::npos) {
      ++wrong;
      ADD_FAILURE() << com::ToUtf8(raised.description);
    }
  }
  return completed;
}

void WorkInApartments(const std::wstring& dsn) {
  std::atomic<int> completed{0};
  std::atomic<int> wrong{0};
  std::vector<std::thread> apartments;
  apartments.reserve(kApartments);
  for (int i = 0; i < kApartments; ++i)
    apartments.emplace_back([&, i] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      completed += Work(dsn, i < kWriters, wrong);
      CoUninitialize();
    });
  for (std::thread& apartment : apartments) apartment.join();
  EXPECT_EQ(wrong, 0);
  const Object connection = New(L"ADODB.Connection");
  connection.Call(L"Open", dsn);
  connection.Call(L"Execute", L"INSERT INTO told VALUES (" + std::to_wstring(completed) + L")");
}

// One process for each role, which is the descriptor.
void ShareAmongProcesses(const char* test, const std::wstring& dsn) {
  const Object connection = New(L"ADODB.Connection");
  connection.Call(L"Open", dsn);
  connection.Call(L"Execute", L"CREATE TABLE done (n int NOT NULL) CREATE TABLE told (n int NOT NULL)");
  EXPECT_EQ(tsql::test::RunAgain(test, std::vector<std::string>(kProcesses, com::ToUtf8(dsn))),
            std::vector<int>(kProcesses, 0));
  const auto value = [&](const wchar_t* sql) {
    return ColumnText(connection.Call(L"Execute", sql).AsObject());
  };
  const std::wstring told = value(L"SELECT SUM(n) FROM told");
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM told"), std::to_wstring(kProcesses));
  EXPECT_GT(std::stoi(told), 0);
  EXPECT_EQ(value(L"SELECT FInterID FROM t"), told);
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM done"), told);
}

TEST(Processes, ShareAFile) {
  const std::string role = tsql::test::GivenRole();
  if (!role.empty()) return WorkInApartments(com::FromUtf8(role));
  const DataFile file(0);
  ShareAmongProcesses("Processes.ShareAFile", file.Dsn());
}

TEST(Processes, ShareAServer) {
  const std::string role = tsql::test::GivenRole();
  if (!role.empty()) return WorkInApartments(com::FromUtf8(role));
  SKIP_WITHOUT_TDS_SERVER();
  const com::test::TdsServer server;
  const Object connection = New(L"ADODB.Connection");
  connection.Call(L"Open", server.Dsn());
  connection.Call(L"Execute", L"CREATE TABLE t (FInterID int NOT NULL) INSERT INTO t VALUES (0)");
  ShareAmongProcesses("Processes.ShareAServer", server.Dsn());
}

} // namespace
} // namespace standin::test
