// Several processes and threads on one file, each opening it for every call as clients do that come and go:
// no call is lost, and no writing is. TSQL_SHARED_FILE_TIMES=100 makes that many times the calls, in as many
// rounds: Wine keeps what a process has closed of a file open as long as anybody has a lock on it, and after
// 20,000 such openings it opens nothing more. At the end of a round nobody has one.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <sstream>
#include <thread>

#include "tests/tsql/FileTest.h"
#include "tests/tsql/Processes.h"

namespace tsql::test {
namespace {

// What one of the processes does, as its role says: "PATH|THREADS|CALLS|WRITERS"; that many of its threads
// write.
struct Work {
  std::string path;
  int threads = 0;
  int calls = 0;
  int writers = 0;
};

class SharedFileTest : public FileTest {
 protected:
  static int Times() {
    const char* times = std::getenv("TSQL_SHARED_FILE_TIMES");
    return times != nullptr ? std::max(std::atoi(times), 1) : 1;
  }
  SharedFileTest() {
    if (!GivenRole().empty()) return;
    const auto session = Session::Open(Database::Open(path_, OpenMode::Create));
    EXPECT_TRUE(RunOn(*session, "CREATE TABLE t (a INT NOT NULL PRIMARY KEY, n INT NOT NULL)"
                                " INSERT INTO t VALUES (1, 0), (2, 0)")
                    .errors.empty());
  }

  static Work ReadRole() {
    Work work;
    char bar = 0;
    std::istringstream role(GivenRole());
    std::getline(role, work.path, '|');
    role >> work.threads >> bar >> work.calls >> bar >> work.writers;
    return work;
  }
  std::string Role(int threads, int calls, int writers) const {
    return path_ + "|" + std::to_string(threads) + "|" + std::to_string(calls) + "|" +
           std::to_string(writers);
  }

  // The error of a call, empty when it succeeds.
  static std::string Call(const std::string& path, bool writes) {
    try {
      const auto session = Session::Open(Database::Open(path, OpenMode::Existing));
      const Output output =
          RunOn(*session, writes ? "UPDATE t SET n = n + 1" : "SELECT MAX(n) - MIN(n) FROM t");
      if (!output.errors.empty())
        return "running: " + std::to_string(output.errors[0].number) + " " + output.errors[0].what();
      if (!writes && output.results != std::vector<Lines>{{"0"}}) return "other rows";
    } catch (const Error& error) {
      return "opening: " + std::to_string(error.number) + " " + error.what();
    }
    return {};
  }

  static void DoWork(const Work& work) {
    std::atomic<int> lost{0};
    std::vector<std::thread> threads;
    std::vector<std::string> reasons(static_cast<size_t>(work.threads));
    threads.reserve(reasons.size());
    for (int thread = 0; thread < work.threads; ++thread)
      threads.emplace_back([&, thread] {
        for (int call = 0; call < work.calls; ++call) {
          const std::string error = Call(work.path, thread < work.writers);
          if (error.empty()) continue;
          ++lost;
          reasons[static_cast<size_t>(thread)] = error;
        }
      });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& reason : reasons)
      if (!reason.empty()) ADD_FAILURE() << reason;
    EXPECT_EQ(lost, 0) << "of " << work.calls * work.threads;
  }

  // Runs the calling test again in these processes; each finds its part in DoWork.
  static void Share(const std::vector<std::string>& roles) {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(test->test_suite_name()) + "." + test->name();
    EXPECT_EQ(RunAgain(name, roles), std::vector<int>(roles.size(), 0));
  }
};

TEST_F(SharedFileTest, ReadersLoseNoCall) {
  if (!GivenRole().empty()) return DoWork(ReadRole());
  for (int round = 0; round < Times(); ++round) Share(std::vector<std::string>(4, Role(2, 150, 0)));
}

TEST_F(SharedFileTest, ThreadsLoseNoCall) {
  for (int round = 0; round < Times(); ++round) DoWork({path_, 8, 100, 0});
}

TEST_F(SharedFileTest, ReadersAndWritersLoseNoCall) {
  if (!GivenRole().empty()) return DoWork(ReadRole());
  for (int round = 0; round < Times(); ++round) Share({Role(3, 60, 1), Role(3, 60, 1), Role(4, 60, 0)});
  const std::string count = std::to_string(120 * Times());
  const auto session = Session::Open(Database::Open(path_, OpenMode::Existing));
  EXPECT_EQ(RunOn(*session, "SELECT n FROM t").results, std::vector<Lines>({{count, count}}));
}

TEST_F(SharedFileTest, ReadersNeverWaitForAWriter) {
  if (!GivenRole().empty()) return DoWork(ReadRole());
  // Whoever waited would wait until the lock time-out, for this one does not end meanwhile.
  const auto writer = Session::Open(Database::Open(path_, OpenMode::Existing));
  writer->Begin();
  ASSERT_TRUE(RunOn(*writer, "UPDATE t SET n = n + a DELETE FROM t WHERE a = 2").errors.empty());
  DoWork({path_, 4, 10, 0});
  Share({Role(2, 10, 0), Role(2, 10, 0)});
  writer->Rollback();
}

} // namespace
} // namespace tsql::test
