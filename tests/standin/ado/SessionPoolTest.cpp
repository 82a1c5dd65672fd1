#include "standin/ado/SessionPool.h"

#include <atomic>
#include <deque>
#include <thread>
#include <vector>

#include "com/Text.h"
#include "tests/standin/DataFile.h"
#include "tests/standin/Worker.h"

namespace standin::test {
namespace {

using ado::PooledSession;
using ado::SessionPool;

class SessionPoolTest : public testing::Test {
 protected:
  ~SessionPoolTest() override {
    SessionPool::ClearAll();
    AllowUnloading();
  }
  // What COM asks a DLL before it unloads it: the DLL's own pool ends.
  static HRESULT AllowUnloading() {
    using Entry = HRESULT STDAPICALLTYPE();
    auto* canUnload = reinterpret_cast<Entry*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ErpStandIn.dll"), "DllCanUnloadNow")));
    CoFreeUnusedLibraries();
    return canUnload();
  }
  static Object Connect(const std::wstring& dsn) {
    Object connection = New(L"ADODB.Connection");
    connection.Call(L"Open", dsn);
    return connection;
  }
  static std::wstring Column(const Object& connection, const wchar_t* sql) {
    return ColumnText(connection.Call(L"Execute", sql).AsObject());
  }
  std::string path() const { return com::ToUtf8(file_.path()); }

  DataFile file_{1};
};

TEST_F(SessionPoolTest, GivesAnIdleSessionToTheNextUser) {
  PooledSession first = SessionPool::Take(path());
  const tsql::Session* const session = first.get();
  const PooledSession second = SessionPool::Take(path());
  EXPECT_NE(second.get(), session) << "it is in use";
  first = {};
  EXPECT_EQ(SessionPool::Take(path()).get(), session);
  EXPECT_EQ(SessionPool::Take(path()).get(), session) << "and again";
}

TEST_F(SessionPoolTest, GivesNoneToAnotherThread) {
  const tsql::Session* const session = SessionPool::Take(path()).get();
  const tsql::Session* other = nullptr;
  bool isOther = false;
  std::thread([&] {
    const PooledSession own = SessionPool::Take(path());
    other = own.get();
    isOther = other != session;
  }).join();
  EXPECT_TRUE(isOther);
  EXPECT_EQ(SessionPool::Take(path()).get(), session);
}

TEST_F(SessionPoolTest, KeepsNoSessionThatEndsOnAnotherThread) {
  PooledSession session = SessionPool::Take(path());
  std::thread([&] { const PooledSession moved = std::move(session); }).join();
  EXPECT_FALSE(file_.IsOpen());
}

TEST_F(SessionPoolTest, KeepsAFewOfEachThread) {
  constexpr size_t kMany = 20;
  std::vector<PooledSession> sessions;
  for (size_t i = 0; i < kMany; ++i) sessions.push_back(SessionPool::Take(path()));
  sessions.clear();
  EXPECT_TRUE(file_.IsOpen());
  SessionPool::ClearThread();
  EXPECT_FALSE(file_.IsOpen());
}

TEST_F(SessionPoolTest, LeavesInMemoryDatabasesAlone) {
  const std::string name = com::ToUtf8(NextMemoryName());
  { const PooledSession session = SessionPool::Take(name); }
  EXPECT_THROW(tsql::Database::Open(name, tsql::OpenMode::Existing), tsql::Error);
}

TEST_F(SessionPoolTest, TellsFilesOfOneNameApart) {
  const DataFile other{2};
  std::wstring folder(MAX_PATH, L'\0');
  folder.resize(GetCurrentDirectoryW(MAX_PATH, folder.data()));
  const std::wstring dsn = L"Data Source=data.db";
  SetCurrentDirectoryW(file_.folder().c_str());
  EXPECT_EQ(Column(Connect(dsn), L"SELECT FInterID FROM t"), L"1");
  SetCurrentDirectoryW(other.folder().c_str());
  EXPECT_EQ(Column(Connect(dsn), L"SELECT FInterID FROM t"), L"2");
  SetCurrentDirectoryW(folder.c_str());
  const Raised raised = RaisedBy([&] { Connect(dsn); });
  EXPECT_EQ(raised.code, E_FAIL);
  EXPECT_NE(raised.description.find(L"data.db"), std::wstring::npos);
  AllowUnloading();
}

TEST_F(SessionPoolTest, TheNextUserFindsNothingOfTheLastOne) {
  {
    const Object connection = Connect(file_.Dsn() + L";Now=2001-02-03");
    connection.Call(L"Execute", L"CREATE TABLE #own (FID int) SET NOCOUNT ON SET XACT_ABORT ON");
    connection.Call(L"BeginTrans");
    connection.Call(L"Execute", L"UPDATE t SET FName = 'x' CREATE TABLE ##all (FID int)");
  }
  ASSERT_TRUE(file_.IsOpen()) << "it is pooled";
  const Object connection = Connect(file_.Dsn());
  EXPECT_EQ(Column(connection, L"SELECT FName FROM t"), L"one");
  for (const wchar_t* sql : {L"SELECT * FROM #own", L"SELECT * FROM ##all"})
    EXPECT_EQ(RaisedBy([&] { connection.Call(L"Execute", sql); }).code, static_cast<HRESULT>(0x80040E37));
  EXPECT_NE(Column(connection, L"SELECT YEAR(GETDATE())"), L"2001");
  EXPECT_EQ(Column(connection, L"SELECT @@TRANCOUNT"), L"0");
  Variant affected;
  connection.Call(L"Execute", L"UPDATE t SET FName = 'y'", Variant::Reference(affected));
  EXPECT_EQ(affected, Variant(1)) << "NOCOUNT is off";
  connection.Call(L"BeginTrans");
  RaisedBy([&] { connection.Call(L"Execute", L"SELECT 1 / 0"); });
  EXPECT_EQ(Column(connection, L"SELECT @@TRANCOUNT"), L"1") << "XACT_ABORT is off";
  connection.Call(L"RollbackTrans");
}

TEST_F(SessionPoolTest, KeepsTheFileUntilTheModuleMayGo) {
  { const Object connection = Connect(file_.Dsn()); }
  EXPECT_TRUE(file_.IsOpen());
  EXPECT_EQ(AllowUnloading(), S_OK);
  EXPECT_FALSE(file_.IsOpen());
}

TEST_F(SessionPoolTest, EndsWithItsThread) {
  bool pooled = false;
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    { const Object connection = Connect(file_.Dsn()); }
    pooled = file_.IsOpen();
    CoUninitialize();
  }).join();
  EXPECT_TRUE(pooled);
  EXPECT_FALSE(file_.IsOpen());
}

TEST_F(SessionPoolTest, AHostedCallLeavesNoTransactionBehind) {
  const Object worker = HostedWorker();
  for (int i = 0; i < 3; ++i) worker.Call(L"Run", file_.Dsn(), L"bind|UPDATE t SET FName = 'x'|abort");
  worker.Call(L"Run", file_.Dsn(), L"bind|UPDATE t SET FInterID = FInterID + 1|complete");
  EXPECT_EQ(Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t WHERE FName = 'one'"), L"2");
}

// What the system counts as open in this process.
size_t OpenFiles() {
  size_t count = 0;
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileW(L"Z:\\proc\\self\\fd\\*", &found);
  if (search == INVALID_HANDLE_VALUE) return 0;
  do ++count;
  while (FindNextFileW(search, &found));
  FindClose(search);
  return count;
}

// The lowest number that no handle has. Wine does not count handles.
uintptr_t NextHandle() {
  HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  CloseHandle(event);
  return reinterpret_cast<uintptr_t>(event);
}
constexpr uintptr_t kHandleStep = 4; // between two numbers

TEST_F(SessionPoolTest, NothingGrowsOverCallsOfManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kCalls = 20;
  constexpr int kRounds = 4;
  std::atomic<int> failed{0};
  const auto round = [&] {
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
      threads.emplace_back([&, thread] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        const std::wstring steps =
            thread == 0 ? L"bind|UPDATE t SET FInterID = FInterID + 1|complete" : L"bind|SELECT * FROM t";
        try {
          const Object worker = HostedWorker();
          for (int i = 0; i < kCalls; ++i) worker.Call(L"Run", file_.Dsn(), steps);
        } catch (const com::ComError&) {
          ++failed;
        }
        CoUninitialize();
      });
    for (std::thread& thread : threads) thread.join();
  };
  round();
  int grown = 0;
  for (int i = 0; i < kRounds; ++i) {
    const size_t files = OpenFiles();
    const uintptr_t handle = NextHandle();
    round();
    // One file or handle for each of the threads would show.
    if (OpenFiles() >= files + kThreads || NextHandle() >= handle + kThreads * kHandleStep) ++grown;
  }
  EXPECT_LT(grown, kRounds);
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t"),
            std::to_wstring(1 + kCalls * (kRounds + 1)));
}

TEST_F(SessionPoolTest, AReaderDoesNotWaitForAWriter) {
  const Object writer = Connect(file_.Dsn());
  writer.Call(L"BeginTrans");
  writer.Call(L"Execute", L"UPDATE t SET FInterID = 2");
  // The writer does not end meanwhile: whoever waited for it would fail in the end.
  EXPECT_EQ(Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t"), L"1");
  HostedWorker().Call(L"Run", file_.Dsn(), L"bind|SELECT * FROM t|complete");
  writer.Call(L"CommitTrans");
  EXPECT_EQ(Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t"), L"2");
}

TEST_F(SessionPoolTest, NothingGrowsOverThousandsOfCalls) {
  const Object worker = HostedWorker();
  int calls = 0;
  const auto call = [&] {
    ++calls;
    worker.Call(L"Run", file_.Dsn(), L"bind|UPDATE t SET FInterID = FInterID + 1|complete");
    Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t");
  };
  for (int i = 0; i < 500; ++i) call();
  const uintptr_t handleBefore = NextHandle();
  {
    const size_t before = OpenFiles();
    // Open files are counted. Wine itself opens and closes a few at any time.
    std::deque<DataFile> files;
    std::vector<Object> connections;
    connections.reserve(30);
    for (int i = 0; i < 30; ++i) connections.push_back(Connect(files.emplace_back(3).Dsn()));
    EXPECT_GT(OpenFiles(), before + 15);
  }
  AllowUnloading();
  // What grows with the calls grows in each of the rounds; what Wine opens by itself does not.
  constexpr int kRounds = 3;
  int grown = 0;
  for (int round = 0; round < kRounds && grown == round; ++round) {
    const size_t before = OpenFiles();
    for (int i = 0; i < 2500; ++i) call();
    if (OpenFiles() > before + 20) ++grown;
  }
  EXPECT_LT(grown, kRounds) << "one in 100 calls would show";
  EXPECT_LE(NextHandle(), handleBefore + 10 * kHandleStep) << "handles are open that were not before";
  EXPECT_EQ(Column(Connect(file_.Dsn()), L"SELECT FInterID FROM t"), std::to_wstring(calls + 1));
}

} // namespace
} // namespace standin::test
