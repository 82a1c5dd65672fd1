// Several hosts on one file or one server: processes with apartments, of which half import, take numbers,
// copy and audit and the others read, all at the same time, each call a unit of work of its own. Identifiers
// are unique, what was done is there exactly once, a call that came to nothing, because another one held what
// it needed, works when it is made again, readers wait for nobody, and the processes do not grow.
// HOST_SECONDS in the environment sets how long each apartment goes on after its first rounds.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "com/Text.h"
#include "tests/src/view/BrowserData.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/DatabaseFolder.h"
#include "tests/support/ImportedBom.h"
#include "tests/support/TdsServer.h"
#include "tests/support/Unloading.h"
#include "tests/tsql/Processes.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using com::test::Left;
using Clock = std::chrono::steady_clock;

constexpr int kProcesses = 4;
constexpr int kWriters = 4; // apartments of each process
constexpr int kReaders = 4;
constexpr int kFirstRounds = 3;

std::chrono::seconds Duration() {
  const char* const seconds = std::getenv("HOST_SECONDS");
  return std::chrono::seconds(seconds ? std::atoi(seconds) : 0);
}

Object Connect(const std::wstring& dsn) {
  Object connection = Object::Create(L"ADODB.Connection");
  connection.Call(L"Open", dsn);
  return connection;
}

// What the apartments of a process tell it.
struct Figures {
  std::atomic<int64_t> calls{0};
  std::atomic<int64_t> again{0};   // calls that came to nothing
  std::atomic<int64_t> longest{0}; // milliseconds until a call was answered

  // Makes the call, which says whether it has done its work.
  template <typename Call>
  bool Make(Call isDone) {
    const Clock::time_point start = Clock::now();
    const bool done = isDone();
    const int64_t took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    for (int64_t most = longest; took > most && !longest.compare_exchange_weak(most, took);) continue;
    ++calls;
    if (!done) ++again;
    return done;
  }
  // The same until it has done its work.
  template <typename Call>
  void Repeat(const char* what, Call isDone) {
    constexpr int kMost = 1000;
    for (int i = 0; i < kMost; ++i)
      if (Make(isDone)) return;
    throw std::runtime_error(std::string(what) + " does not get through");
  }
};

bool IsLockTimeout(const std::wstring& description) {
  return description.find(L"Lock request time out") != std::wstring::npos;
}

// Whether the call has worked; anything but a lock's time-out against it is the test's failure.
template <typename Call>
bool Works(Call call) {
  const Raised raised = RaisedBy(call);
  if (raised.code != S_OK && !IsLockTimeout(raised.description))
    throw std::runtime_error(com::ToUtf8(raised.description));
  return raised.code == S_OK;
}

// An apartment that writes: its rounds, and the table in which it tells of the identifiers and numbers that
// it was given.
class Writer {
 public:
  Writer(std::wstring dsn, std::wstring name, Figures& figures)
      : dsn_(std::move(dsn)), name_(std::move(name)), figures_(figures), told_(Connect(dsn_)) {}

  void DoRound(int round) const {
    const std::wstring number = name_ + std::to_wstring(round);
    figures_.Repeat("an import", [&] {
      return Works([&] {
        importer_.Call(L"UpdateBOM", dsn_, ImportedBom(L"I" + number, 3, 501, {502, 3, 0}));
      });
    });
    std::wstring serial;
    figures_.Repeat("a number", [&] {
      serial = function_.Call(L"GetBomCodeNumEx", dsn_, 501).AsText();
      return !serial.empty();
    });
    int32_t copy = -1;
    figures_.Repeat("a copy", [&] {
      copy = function_
                 .Call(L"CopyBom", dsn_,
                       MakeDictionary({{L"FInterID", 51},
                                       {L"FBOMNumber", (L"C" + number).c_str()},
                                       {L"FParentID", 3},
                                       {L"FCheckID", 16},
                                       {L"FOperatorID", 17}}))
                 .AsLong();
      return copy != -1;
    });
    figures_.Repeat("an audit", [&] { return Audit(copy, L"C" + number); });
    figures_.Repeat("the report", [&] {
      return Works([&] {
        told_.Call(L"Execute", L"INSERT INTO told VALUES ('number', " + serial + L"), ('copy', " +
                                   std::to_wstring(copy) + L"), ('round', " + std::to_wstring(round) + L")");
      });
    });
  }

 private:
  bool Audit(int32_t interId, const std::wstring& number) const {
    constexpr int32_t kAuditor = 7;
    constexpr int32_t kAudited = 1;
    Variant message(L"");
    const int32_t result =
        check_.Call(L"BomCheck", dsn_, interId, number.c_str(), kAuditor, Variant::Reference(message))
            .AsLong();
    if (result != kAudited && !IsLockTimeout(message.AsText()))
      throw std::runtime_error(com::ToUtf8(message.AsText()));
    return result == kAudited;
  }

  std::wstring dsn_;
  std::wstring name_;
  Figures& figures_;
  Object told_;
  Object importer_ = Hosted(L"BOMImport");
  Object function_ = Hosted(L"CBomFunction");
  Object check_ = Hosted(L"CBomCheck");
};

// An apartment that reads: the BOM that everybody copies, which nobody changes.
class Reader {
 public:
  Reader(std::wstring dsn, Figures& figures) : dsn_(std::move(dsn)), figures_(figures) {}

  void DoRound(int /*round*/) const {
    const bool waited = !figures_.Make([&] {
      return Works([&] {
        const Object bom = view_.Call(L"GetBomLdgInfo", dsn_, L"FInterID=51").AsObject();
        Expect(bom.Get(L"UBound").AsLong(), 1);
        const Object lines = view_.Call(L"GetBomEntryLdgInfo", dsn_, 0, L"a.FInterID=51").AsObject();
        Expect(lines.Get(L"UBound").AsLong(), 2);
      });
    });
    if (waited) throw std::runtime_error("a reader waited for a lock");
  }

 private:
  static void Expect(int32_t rows, int32_t expected) {
    if (rows != expected) throw std::runtime_error(std::to_string(rows) + " rows are read");
  }

  std::wstring dsn_;
  Figures& figures_;
  Object view_ = Hosted(L"BomView");
};

// The first rounds, or what comes after them until the time is over.
struct Rounds {
  int first = 0;
  int last = 0;
  Clock::time_point until;

  template <class Apartment>
  void Run(const Apartment& apartment) const {
    for (int round = first; round < last || Clock::now() < until; ++round) apartment.DoRound(round);
  }
};

void RunApartments(const std::wstring& dsn, const Rounds& rounds, Figures& figures) {
  const auto start = [&](auto makeApartment) {
    return StartApartment([&rounds, makeApartment] {
      try {
        rounds.Run(makeApartment());
      } catch (const std::exception& failure) {
        ADD_FAILURE() << failure.what();
      }
    });
  };
  std::vector<std::thread> apartments;
  apartments.reserve(kWriters + kReaders);
  for (int i = 0; i < kWriters; ++i)
    apartments.push_back(start([&dsn, &figures, i] {
      return Writer(dsn, std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(i) + L"-", figures);
    }));
  for (int i = 0; i < kReaders; ++i)
    apartments.push_back(start([&dsn, &figures] { return Reader(dsn, figures); }));
  for (std::thread& apartment : apartments) apartment.join();
}

// What the host's process has left at a moment; nothing where its heaps cannot be walked.
std::optional<Left> LeftNow() {
  try {
    return Left::Now();
  } catch (const std::runtime_error& failure) {
    std::printf("not compared: %s\n", failure.what());
    return std::nullopt;
  }
}

// A host: a process with apartments. Each apartment's outside objects stay in the process, so what the first
// ones have left is what the others may leave, however many calls they make.
void Serve(const std::wstring& dsn) {
  Figures figures;
  const std::optional<Left> atFirst = LeftNow();
  RunApartments(dsn, {0, kFirstRounds, {}}, figures);
  const std::optional<Left> before = LeftNow();
  RunApartments(dsn, {kFirstRounds, kFirstRounds + 1, Clock::now() + Duration()}, figures);
  const std::optional<Left> after = LeftNow();
  std::printf("%lld calls, %lld of them made again, the longest answer took %lld ms\n",
              static_cast<long long>(figures.calls), static_cast<long long>(figures.again),
              static_cast<long long>(figures.longest));
  if (!atFirst || !before || !after) return;
  std::printf("blocks %zu, %zu, %zu, bytes %zu, %zu, %zu, handle %zu, %zu, %zu\n", atFirst->heap.blocks,
              before->heap.blocks, after->heap.blocks, atFirst->heap.bytes, before->heap.bytes,
              after->heap.bytes, static_cast<size_t>(atFirst->handle), static_cast<size_t>(before->handle),
              static_cast<size_t>(after->handle));
  const auto growsNoMore = [&](auto left) { EXPECT_LE(left(*after) + left(*atFirst), 2 * left(*before)); };
  growsNoMore([](const Left& left) { return left.heap.blocks; });
  growsNoMore([](const Left& left) { return left.heap.bytes; });
  // A mutex has an event of its own from the first time on that a thread waits for it: a few may come late.
  // What an apartment or a call leaves is more.
  constexpr uintptr_t kNextHandle = 4;
  EXPECT_LT(after->handle, before->handle + (kWriters + kReaders) * kNextHandle);
}

void Fill(const TestDatabase& database) {
  FillBrowserData(database);
  for (
      const wchar_t* batch :
      {L"CREATE TABLE told (kind varchar(10) NOT NULL, n int NOT NULL)",
       L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 60)",
       L"INSERT INTO ICBillNo (FBillID, FBillName, FCurNo) VALUES (50, 'BOM', 5)",
       L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FUnitID, FUseStatus, FStatus, FParentID, "
       L"FRoutingID, FVersion, FCheckID) VALUES (51, 'P1', 501, 1, 1072, 0, 3, 0, '', 5)",
       L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty) VALUES (51, 1, 502, 2, "
       L"2, 2), (51, 2, 504, 1, 1, 1)"})
    database.Execute(batch);
}

// The test of that full name, in processes that are hosts of the database `dsn`.
void Share(const char* test, const std::wstring& dsn) {
  const TestDatabase database(dsn);
  Fill(database);
  EXPECT_EQ(
      tsql::test::RunAgain(test, std::vector<std::string>(kProcesses, com::ToUtf8(dsn + L";User ID=16394"))),
      std::vector<int>(kProcesses, 0));

  const auto value = [&](const std::wstring& sql) { return database.Value(sql); };
  const int rounds = std::stoi(value(L"SELECT COUNT(*) FROM told WHERE kind = 'round'"));
  EXPECT_GE(rounds, kProcesses * kWriters * (kFirstRounds + 1));
  const auto times = [&](int factor) { return std::to_wstring(rounds * factor); };
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber LIKE 'I%' AND FNote = N'自行车'"), times(1));
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber LIKE 'C%'"), times(1));
  EXPECT_EQ(value(L"SELECT COUNT(DISTINCT FInterID) FROM ICBOM WHERE FInterID > 60"), times(2));
  EXPECT_EQ(value(L"SELECT FMaxNum - 60 FROM ICMaxNum WHERE FTableName = 'ICBOM'"), times(2));
  EXPECT_EQ(
      value(L"SELECT COUNT(*) FROM ICBOMChild c, ICBOM b WHERE c.FInterID = b.FInterID AND b.FInterID > 60"),
      times(3))
      << "an import has one line, a copy two";
  EXPECT_EQ(
      value(L"SELECT COUNT(DISTINCT t.n) FROM told t, ICBOM b WHERE t.kind = 'copy' AND b.FInterID = t.n AND "
            L"b.FBOMNumber LIKE 'C%' AND b.FStatus = 1 AND b.FCheckerID = 7"),
      times(1))
      << "each copy is the one that its maker was told of, and is audited";
  EXPECT_EQ(value(L"SELECT COUNT(DISTINCT n) FROM told WHERE kind = 'number'"), times(1));
  EXPECT_EQ(value(L"SELECT FCurNo - 5 FROM ICBillNo WHERE FBillID = 50"), times(1));
}

TEST(Hosts, ShareAFile) {
  const std::string role = tsql::test::GivenRole();
  if (!role.empty()) return Serve(com::FromUtf8(role));
  const com::test::DatabaseFolder folder;
  Share("Hosts.ShareAFile", folder.Dsn());
}

TEST(Hosts, ShareAServer) {
  const std::string role = tsql::test::GivenRole();
  if (!role.empty()) return Serve(com::FromUtf8(role));
  SKIP_WITHOUT_TDS_SERVER();
  const com::test::TdsServer server;
  Share("Hosts.ShareAServer", server.Dsn());
}

} // namespace
} // namespace mbom::test
