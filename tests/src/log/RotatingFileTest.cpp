#include "src/log/RotatingFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace mbom::test {
namespace {

namespace fs = std::filesystem;
using FileLines = std::vector<std::string>;

class RotatingFileTest : public testing::Test {
 protected:
  RotatingFileTest()
      : folder_(fs::temp_directory_path() / (L"rotating-" + std::to_wstring(GetCurrentProcessId()))) {
    fs::create_directories(folder_);
  }
  ~RotatingFileTest() override {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  fs::path Path() const { return folder_ / L"a.log"; }
  fs::path Older() const { return folder_ / L"a.log.1"; }

  static FileLines Lines(const fs::path& path) {
    std::ifstream file(path);
    FileLines lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

 private:
  fs::path folder_;
};

TEST_F(RotatingFileTest, KeepsWhatWasThere) {
  RotatingFile(Path(), 100).Append("one\n");
  RotatingFile(Path(), 100).Append("two\n");
  EXPECT_EQ(Lines(Path()), (FileLines{"one", "two"}));
  EXPECT_FALSE(fs::exists(Older()));
}

TEST_F(RotatingFileTest, AFullFileMakesRoomForANewOne) {
  RotatingFile file(Path(), 10);
  for (const char* line : {"11111\n", "22222\n", "33333\n", "44444\n", "55555\n"}) file.Append(line);
  EXPECT_EQ(Lines(Older()), (FileLines{"33333", "44444"}));
  EXPECT_EQ(Lines(Path()), FileLines{"55555"});
}

TEST_F(RotatingFileTest, WritersOfOneFileLoseNoLine) {
  constexpr int kThreads = 4;
  constexpr int kLines = 500;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  // Each has the file open for itself, as processes have. All lines fit into the two files.
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([this, thread] {
      RotatingFile file(Path(), 15'000);
      for (int i = 0; i < kLines; ++i)
        file.Append(std::to_string(thread) + " " + std::to_string(1000 + i) + "......\n");
    });
  for (std::thread& thread : threads) thread.join();
  std::multiset<std::string> found;
  for (const fs::path& path : {Path(), Older()})
    for (const std::string& line : Lines(path)) found.insert(line);
  EXPECT_TRUE(fs::exists(Older()));
  EXPECT_EQ(found.size(), static_cast<size_t>(kThreads * kLines));
  EXPECT_EQ(found.count("3 1499......"), 1U);
}

TEST_F(RotatingFileTest, ABadPathIsTriedAgain) {
  const fs::path folder = Path().parent_path() / L"later";
  RotatingFile file(folder / L"a.log", 100);
  file.Append("lost\n");
  fs::create_directory(folder);
  Sleep(1100);
  file.Append("kept\n");
  EXPECT_EQ(Lines(folder / L"a.log"), FileLines{"kept"});
}

TEST_F(RotatingFileTest, EachFileHasItsOwnMutex) {
  EXPECT_EQ(RotatingFile::MutexName(L"C:\\Logs\\A.log"), L"QorvaneMBomBill.log.c:/logs/a.log");
  const std::wstring longest = L"C:\\" + std::wstring(5, L'x') + std::wstring(196, L'y') + L".log";
  EXPECT_EQ(RotatingFile::MutexName(longest), L"QorvaneMBomBill.log." + std::wstring(196, L'y') + L".log");
  EXPECT_EQ(RotatingFile::MutexName(L""), L"QorvaneMBomBill.log.");
}

// The mutex by which the processes that write to `path` take turns, held by a thread that runs `work`
// meanwhile.
template <class Work>
void WhileAnotherHoldsTheMutex(const std::wstring& path, const Work& work) {
  auto* const mutex = CreateMutexW(nullptr, FALSE, RotatingFile::MutexName(path).c_str());
  ASSERT_NE(mutex, nullptr);
  std::promise<void> held;
  std::promise<void> over;
  std::thread other([&] {
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    held.set_value();
    over.get_future().wait();
    ReleaseMutex(mutex);
  });
  held.get_future().wait();
  work();
  over.set_value();
  other.join();
  CloseHandle(mutex);
}

TEST_F(RotatingFileTest, AProcessThatKeepsItsTurnStopsNobody) {
  RotatingFile file(Path(), 100);
  WhileAnotherHoldsTheMutex(Path(), [&] { file.Append("meanwhile\n"); });
  file.Append("later\n");
  EXPECT_EQ(Lines(Path()), (FileLines{"meanwhile", "later"}));
}

TEST_F(RotatingFileTest, AThreadThatEndsInItsTurnStopsNobody) {
  RotatingFile file(Path(), 100);
  auto* const mutex = CreateMutexW(nullptr, FALSE, RotatingFile::MutexName(Path()).c_str());
  ASSERT_NE(mutex, nullptr);
  std::thread([&] { EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0); }).join();
  file.Append("one\n");
  // The turn was given back: another thread has it at once.
  std::thread([&] {
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    ReleaseMutex(mutex);
  }).join();
  CloseHandle(mutex);
  EXPECT_EQ(Lines(Path()), FileLines{"one"});
}

TEST_F(RotatingFileTest, WritesWithoutTheMutexToo) {
  // The name stands for something else, so no mutex can have it.
  auto* const event = CreateEventW(nullptr, FALSE, FALSE, RotatingFile::MutexName(Path()).c_str());
  ASSERT_NE(event, nullptr);
  ASSERT_NE(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  RotatingFile(Path(), 100).Append("one\n");
  CloseHandle(event);
  EXPECT_EQ(Lines(Path()), FileLines{"one"});
}

} // namespace
} // namespace mbom::test
