// Processes that are killed in the middle of imports, numbering, copies, audits and start-ups of engineering
// changes, all through the host on one file: only whole units of work are there, what was answered is there,
// and the next process starts at once. KILLS in the environment says how many, KILL_SEED when: a process dies
// at a random time after its first answer.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "com/Text.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/DatabaseFolder.h"
#include "tests/support/ImportedBom.h"
#include "tests/support/StartedProcess.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Clock = std::chrono::steady_clock;

constexpr wchar_t kRole[] = L"KILLED_PROCESS"; // "file|answers|round" in the environment of such a process
constexpr char kTest[] = "KilledProcesses.LeaveWholeUnitsOfWork";
constexpr int32_t kNotice = 6;

int Setting(const char* name, int usual) {
  const char* const value = std::getenv(name);
  return value ? std::atoi(value) : usual;
}

std::wstring Role() {
  std::wstring role(GetEnvironmentVariableW(kRole, nullptr, 0), L'\0');
  role.resize(GetEnvironmentVariableW(kRole, role.data(), static_cast<DWORD>(role.size())));
  return role;
}

// ---- the process that is killed

// Works until it is killed, and writes down each answer before it goes on.
class Worker {
 public:
  Worker(const std::wstring& file, const std::wstring& answers, std::wstring round)
      : dsn_(L"Provider=Embedded;Data Source=" + file + L";User ID=16402;Language=chs"),
        answers_(
            CreateFileW(answers.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr)),
        round_(std::move(round)) {}

  [[noreturn]] void Run() const {
    for (int i = 1;; ++i) {
      const std::wstring number = round_ + L"_" + std::to_wstring(i);
      import_.Call(L"UpdateBOM", dsn_, ImportedBom(L"IMP" + number, 5, 203, {306, 1, 802}));
      Answer("import", L"IMP" + number);
      const int32_t copy = functions_.Call(L"CopyBom", dsn_, CopyOrder(L"CPY" + number)).AsLong();
      if (copy < 0) Fail("copy");
      Answer("copy", L"CPY" + number);
      Variant message(L"");
      if (checks_.Call(L"BomCheck", dsn_, copy, L"CPY" + number, 16402, Variant::Reference(message))
              .AsLong() != 1)
        Fail("audit");
      Answer("audit", L"CPY" + number);
      if (functions_.Call(L"GetBomCodeNum", dsn_, L"NUM").AsLong() < 0) Fail("number");
      Answer("number", number);
      const bool started = changes_.Call(L"ReturnEcnStatus", dsn_, kNotice).AsLong() == 2;
      const bool done = started ? changes_.Call(L"UnStarUpEcn", dsn_, kNotice).AsBool()
                                : changes_.Call(L"StarUpEcn", dsn_, 1002, kNotice, 16402).AsBool();
      if (!done) Fail("change");
      Answer("change", number);
    }
  }

 private:
  static Object CopyOrder(const std::wstring& number) {
    return MakeDictionary({{L"FInterID", 1002},
                           {L"FBOMNumber", number},
                           {L"FParentID", 3},
                           {L"FCheckID", 16403},
                           {L"FOperatorID", 16403}});
  }
  void Answer(const std::string& kind, const std::wstring& number) const {
    const std::string line = kind + " " + com::ToUtf8(number) + "\n";
    DWORD written = 0;
    WriteFile(answers_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  }
  [[noreturn]] static void Fail(const char* what) {
    std::printf("%s failed\n", what);
    std::exit(1);
  }

  std::wstring dsn_;
  HANDLE answers_;
  std::wstring round_;
  Object import_ = Hosted(L"BOMImport");
  Object functions_ = Hosted(L"CBomFunction");
  Object checks_ = Hosted(L"CBomCheck");
  Object changes_ = Hosted(L"CEcnInfo");
};

// ---- the test that kills

// A folder with the database and the answers of the process.
struct Folder : com::test::DatabaseFolder {
  std::wstring answers() const { return path() + L"\\answers"; }
};

std::vector<std::string> LinesOf(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line) && !file.eof();) lines.push_back(line);
  return lines;
}

// Starts a process, lets it answer, and kills it so many milliseconds later.
void StartAndKill(const Folder& folder, int round, int milliseconds) {
  DeleteFileW(folder.answers().c_str());
  std::wstring program(MAX_PATH, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), MAX_PATH));
  std::wstring command = L"\"" + program + L"\" --gtest_brief=1 --gtest_filter=" + com::FromUtf8(kTest);
  SetEnvironmentVariableW(kRole,
                          (folder.file() + L"|" + folder.answers() + L"|" + std::to_wstring(round)).c_str());
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const bool started = com::test::HasStarted([&] {
    return CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &process);
  });
  SetEnvironmentVariableW(kRole, nullptr);
  ASSERT_TRUE(started) << "error " << GetLastError();
  const Clock::time_point limit = Clock::now() + std::chrono::minutes(1);
  while (LinesOf(folder.answers()).empty() && Clock::now() < limit) Sleep(5);
  EXPECT_EQ(WaitForSingleObject(process.hProcess, static_cast<DWORD>(milliseconds)),
            static_cast<DWORD>(WAIT_TIMEOUT))
      << "it ended by itself";
  TerminateProcess(process.hProcess, 99);
  WaitForSingleObject(process.hProcess, INFINITE);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

// The rows that a unit of work would have left half there, or that an answer has promised; each query counts
// what is wrong.
void ExpectWholeUnits(const TestDatabase& database, const std::vector<std::string>& answers) {
  for (const wchar_t* query : {
           L"SELECT COUNT(*) FROM ICBOM a WHERE a.FBOMNumber LIKE 'IMP%' AND"
           L" (SELECT COUNT(*) FROM ICBOMChild b WHERE b.FInterID = a.FInterID) <> 1",
           L"SELECT COUNT(*) FROM ICBOMChild b WHERE b.FNote = 'imported' AND"
           L" NOT EXISTS (SELECT 1 FROM ICBOM a WHERE a.FInterID = b.FInterID)",
           L"SELECT COUNT(*) FROM ICBOM a WHERE a.FBOMNumber LIKE 'CPY%' AND"
           L" (SELECT COUNT(*) FROM ICBOMChild b WHERE b.FInterID = a.FInterID) <>"
           L" (SELECT COUNT(*) FROM ICBOMChild c WHERE c.FInterID = 1002)",
           L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber LIKE 'CPY%' AND FStatus = 1 AND"
           L" (FCheckerID <> 16402 OR FBeenChecked <> 1 OR FAudDate IS NULL)",
           L"SELECT COUNT(*) - COUNT(DISTINCT FInterID) FROM ICBOM",
           L"SELECT CASE WHEN (SELECT MAX(FInterID) FROM ICBOM) <= FMaxNum THEN 0 ELSE 1 END FROM ICMaxNum"
           L" WHERE FTableName = 'ICBOM'",
           // A change is started with its new BOM, or it is not.
           L"SELECT COUNT(*) FROM IcEcn a WHERE a.FInterID = 6 AND NOT"
           L" (a.FStatus = 1 AND a.FCBomInterID = 0 OR a.FStatus = 2 AND"
           L" EXISTS (SELECT 1 FROM ICBOM b WHERE b.FInterID = a.FCBomInterID) AND"
           L" EXISTS (SELECT 1 FROM ICBOMChild c WHERE c.FInterID = a.FCBomInterID))",
       })
    EXPECT_EQ(database.Value(query), L"0") << com::ToUtf8(query);
  for (const std::string& answer : answers) {
    const size_t blank = answer.find(' ');
    const std::string kind = answer.substr(0, blank);
    if (kind == "number" || kind == "change") continue;
    EXPECT_EQ(database.Value(L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber = '" +
                             com::FromUtf8(answer.substr(blank + 1)) +
                             (kind == "audit" ? L"' AND FStatus = 1" : L"'")),
              L"1")
        << answer;
  }
}

TEST(KilledProcesses, LeaveWholeUnitsOfWork) {
  if (const std::wstring role = Role(); !role.empty()) {
    const size_t first = role.find(L'|');
    const size_t last = role.rfind(L'|');
    Worker(role.substr(0, first), role.substr(first + 1, last - first - 1), role.substr(last + 1)).Run();
  }
  if (GetEnvironmentVariableW(L"TEST_SERVER", nullptr, 0) > 0) GTEST_SKIP() << "a server has no file";
  const int kills = Setting("KILLS", 10);
  const auto seed = static_cast<unsigned>(Setting("KILL_SEED", 1));
  std::mt19937 random(seed);
  const Folder folder;
  size_t answered = 0;
  int numbers = 0;
  std::chrono::milliseconds longest{0};
  InApartment([&] {
    const TestDatabase database(folder.Dsn());
    for (const char* script : {"factory", "ecn"})
      database.RunScript("standin/database/" + std::string(script) + ".sql");
  });
  const auto inNewApartment = [&](const auto& look) {
    // Its sessions go with it, so that a killed process is alone with its file.
    InApartment([&] {
      const TestDatabase database(folder.Dsn());
      look(database);
    });
  };
  int first = 0;
  inNewApartment([&](const TestDatabase& database) {
    first = std::stoi(database.Value(L"SELECT FCurNo FROM ICBillNo WHERE FBillID = 50"));
  });
  for (int round = 1; round <= kills && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE("kill " + std::to_string(round) + " of seed " + std::to_string(seed));
    StartAndKill(folder, round, static_cast<int>(random() % 120));
    const std::vector<std::string> answers = LinesOf(folder.answers());
    EXPECT_FALSE(answers.empty());
    answered += answers.size();
    numbers += static_cast<int>(std::ranges::count_if(
        answers, [](const std::string& answer) { return answer.starts_with("number "); }));
    const Clock::time_point start = Clock::now();
    inNewApartment([&](const TestDatabase& database) {
      Hosted(L"CBomFunction").Call(L"UpdateBomGroupName", database.Dsn(), 7, L"x");
      const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
      longest = std::max(longest, took);
      EXPECT_LT(took, std::chrono::seconds(10));
      ExpectWholeUnits(database, answers);
      // A killed process may have taken one number that it has not answered.
      const int taken = std::stoi(database.Value(L"SELECT FCurNo FROM ICBillNo WHERE FBillID = 50")) - first;
      EXPECT_GE(taken, numbers);
      EXPECT_LE(taken, numbers + round);
    });
  }
  std::printf("seed %u: %d kills, %zu answers, the longest start took %lld ms\n", seed, kills, answered,
              static_cast<long long>(longest.count()));
}

} // namespace
} // namespace mbom::test
