// Memory over many calls: what a call takes it gives back.
#include <array>
#include <functional>
#include <memory>
#include <thread>

#include "tests/standin/Worker.h"
#include "tests/support/HeapUse.h"

namespace standin::test {
namespace {

// The growth over many rounds after some to warm up.
template <class Round>
size_t Growth(int rounds, Round round) {
  for (int i = 0; i < rounds / 4; ++i) round();
  const size_t before = com::test::HeapUse::Now().bytes;
  for (int i = 0; i < rounds; ++i) round();
  const size_t after = com::test::HeapUse::Now().bytes;
  return after > before ? after - before : 0;
}

// Caches and buffers that settle: far less than a small object in each of the rounds.
constexpr size_t kNoise = 4096;

TEST(Memory, IsMeasured) {
  std::vector<std::unique_ptr<Object>> kept;
  EXPECT_GT(Growth(400, [&] { kept.push_back(std::make_unique<Object>()); }), kNoise);
}

TEST(Memory, IsFlatOverCollections) {
  const auto round = [] {
    const Object rows = New(L"ruvo10.Vector");
    for (int i = 0; i < 5; ++i) {
      const Object row = New(L"ruvo10.Dictionary");
      for (int field = 0; field < 20; ++field)
        row.Put(L"Value", L"FField" + std::to_wstring(field), L"a text that is longer than a small string");
      rows.Call(L"Add", row);
    }
  };
  EXPECT_LT(Growth(400, round), kNoise);
}

TEST(Memory, IsFlatOverUnitsOfWork) {
  const Database database;
  const Object worker = HostedWorker();
  const std::wstring dsn = database.Dsn();
  const auto round = [&] {
    worker.Call(L"Run", dsn, L"bind|UPDATE t SET FName = 'x' WHERE FInterID = 1|complete");
    RaisedBy([&] { worker.Call(L"Run", dsn, L"bind|DELETE FROM t|abort|raise"); });
  };
  EXPECT_LT(Growth(400, round), kNoise);
}

TEST(Memory, IsFlatOverRecordsets) {
  const Database database;
  for (int i = 4; i < 200; ++i)
    database.Execute(L"INSERT INTO t VALUES (" + std::to_wstring(i) + L", 'a name of twenty chr')");
  const auto round = [&] {
    const Object recordset = database.Open(L"SELECT FInterID, FName FROM t", 3);
    const Object field = recordset.Get(L"Fields").AsObject().Get(L"Item", 1).AsObject();
    recordset.Put(L"ActiveConnection", Object());
    for (; !recordset.Get(L"EOF").AsBool(); recordset.Call(L"MoveNext")) field.Get(L"Value");
    RaisedBy([&] { database.Execute(L"SELECT * FROM nowhere"); });
  };
  EXPECT_LT(Growth(400, round), kNoise);
}

TEST(Threads, WorkSideBySideWithTheirOwnUnits) {
  const Database database;
  // An exception must not leave the thread.
  const auto work = [&](int first, std::string& failure) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    try {
      const Object worker = HostedWorker();
      for (int i = 0; i < 5; ++i) {
        const std::wstring id = std::to_wstring(first + i);
        worker.Call(L"Run", database.Dsn(),
                    L"bind|INSERT INTO t (FInterID) VALUES (" + id + L")|" +
                        (i % 2 ? L"abort" : L"complete"));
      }
    } catch (const com::ComError& error) {
      failure = error.what();
    }
    CoUninitialize();
  };
  std::array<std::string, 2> failures;
  std::thread first(work, 100, std::ref(failures[0]));
  std::thread second(work, 200, std::ref(failures[1]));
  first.join();
  second.join();
  EXPECT_EQ(failures[0], "");
  EXPECT_EQ(failures[1], "");
  EXPECT_EQ(database.Column(L"SELECT FInterID FROM t WHERE FInterID >= 100 ORDER BY FInterID"),
            L"100,102,104,200,202,204");
}

} // namespace
} // namespace standin::test
