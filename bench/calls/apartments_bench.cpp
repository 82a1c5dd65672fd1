// Benchmarks of apartments: hosted reads from one, two, four and eight of them side by side, and from one
// beside another that writes all the time.
//
// apartments_bench [FOLDER]: the database is made in FOLDER, by default in build/bench.
#include <algorithm>
#include <atomic>
#include <thread>

#include "bench/UnderCom.h"
#include "bench/calls/Caller.h"
#include "bench/view/BrowserData.h"

namespace bench {
namespace {

using com::Object;

constexpr int kReads = 100; // of an apartment in a turn
constexpr int kBoms = 100;
constexpr DWORD kMillisecondsOfAWrite = 50;

// Reads the lines of kReads BOMs, each apartment from another one on; returns how long the longest took.
double ReadBoms(const Data& data, int apartment) {
  const Object view = Create(L"BomView", true);
  double longest = 0;
  for (int i = 0; i < kReads; ++i) {
    const std::wstring bom = L"a.FInterID=" + std::to_wstring(1 + (7 * apartment + i) % kBoms);
    longest = std::max(longest, SecondsOf([&] {
                         return view.Call(L"GetBomEntryLdgInfo", data.Dsn(), 0, bom, L"a.FEntryID");
                       }));
  }
  return longest;
}

// Runs `work` on a thread with an apartment of its own.
template <class Work>
std::thread InApartment(const Work& work) {
  return std::thread([work] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    work();
    CoUninitialize();
  });
}

// The seconds of a read, on the average of all that so many apartments make side by side.
double SecondsOfARead(const Data& data, int apartments) {
  return SecondsOf([&] {
           std::vector<std::thread> threads;
           threads.reserve(static_cast<size_t>(apartments));
           for (int i = 0; i < apartments; ++i)
             threads.push_back(InApartment([&data, i] { ReadBoms(data, i); }));
           for (std::thread& thread : threads) thread.join();
           return 0;
         }) /
         (apartments * kReads);
}

// Writes as long as it lives, in units of work that each last kMillisecondsOfAWrite.
class Writer {
 public:
  explicit Writer(const Data& data) : thread_(InApartment([this, &data] { Write(data); })) {}
  ~Writer() {
    over_ = true;
    thread_.join();
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

 private:
  void Write(const Data& data) const {
    const Data own(data.file());
    while (!over_) {
      own.Begin();
      own.Run(L"UPDATE ICBOMChild SET FNote = 'written' WHERE FInterID = 1");
      Sleep(kMillisecondsOfAWrite);
      own.Commit();
    }
  }

  std::atomic<bool> over_ = false;
  std::thread thread_;
};

void RunAll(const std::wstring& folder) {
  const std::wstring file = folder + L"\\apartments.db";
  Build(file, {.boms = kBoms, .linesPerBom = 50});
  const Data data(file);
  const auto cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  for (const int apartments : {2, 4, 8})
    SideBySide(
        {"a read, from one apartment",
         "from " + std::to_string(apartments) + " side by side",
         {.ratio = 0.75 * std::min(apartments, cores), .isLeast = true}},
        kTurns, 1, [&] { return SecondsOfARead(data, 1); }, [&] { return SecondsOfARead(data, apartments); });
  SideBySide(
      {"a read, from one apartment beside a writer", "alone", {.ratio = 1.5}}, kTurns, 1,
      [&] {
        const Writer writer(data);
        return SecondsOfARead(data, 1);
      },
      [&] { return SecondsOfARead(data, 1); });
  const Writer writer(data);
  PrintValue({"the longest of 100 reads beside a writer", "the least of its units of work", {.ratio = 1}},
             ReadBoms(data, 0), kMillisecondsOfAWrite / 1000.0);
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  return bench::UnderCom(argc, argv, 0, bench::RunAll);
}
