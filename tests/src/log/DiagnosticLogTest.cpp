#include "src/log/DiagnosticLog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "com/Text.h"
#include "src/frame/Frame.h"
#include "src/server/Classes.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using nlohmann::json;
using Texts = std::vector<std::wstring>;

// A log of this process, and objects of the classes that are linked into it.
class DiagnosticLogTest : public testing::Test {
 protected:
  DiagnosticLogTest()
      : path_(std::filesystem::temp_directory_path() /
              (L"diagnostic-" + std::to_wstring(GetCurrentProcessId()) + L".log")) {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (1, 'B1', 500)");
  }
  ~DiagnosticLogTest() override {
    StopLog();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  void Start() const { StartLog({path_.wstring(), 1 << 20}, PublicClasses()); }

  static com::Object New(std::wstring_view progId) {
    for (const com::ClassEntry& entry : PublicClasses())
      if (progId == entry.progId) return com::Object(entry.create(entry.classId));
    return {};
  }

  std::vector<json> Lines() const {
    std::ifstream file(path_);
    std::vector<json> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(json::parse(line));
    return lines;
  }

  // The texts of the lines with this event.
  Texts TextsOf(const char* event) const {
    Texts texts;
    for (const json& line : Lines())
      if (line["event"] == event) texts.push_back(com::FromUtf8(line["text"].get<std::string>()));
    return texts;
  }

  const TestDatabase database_;
  const std::filesystem::path path_;
};

TEST_F(DiagnosticLogTest, TellsACallStepByStep) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  const Trace trace;
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B1");
  StopLog();
  std::vector<std::string> events;
  for (const json& line : Lines()) {
    events.push_back(line["event"]);
    EXPECT_EQ(line["class"], "BomUpdate");
    EXPECT_EQ(line["method"], "UpdateIcBomStatus");
    EXPECT_EQ(line["process"], GetCurrentProcessId());
    EXPECT_EQ(line["thread"], GetCurrentThreadId());
    EXPECT_EQ(line["time"].get<std::string>().size(), std::string("2026-11-22T10:15:30.123Z").size());
    EXPECT_FALSE(line.contains("failed")) << line;
    EXPECT_EQ(line.contains("ms"), line["event"] != "begin") << line;
  }
  EXPECT_EQ(events.front(), "begin");
  EXPECT_EQ(events.back(), "end");
  EXPECT_EQ(TextsOf("set-up"), Texts{database_.Dsn()});
  EXPECT_EQ(TextsOf("statement"), trace.Details(L"Execute"));
  Texts votes;
  for (const std::wstring& vote : trace.Votes())
    votes.push_back(vote == L"VoteAbort" ? L"abort" : L"complete");
  EXPECT_EQ(TextsOf("vote"), votes);
  EXPECT_FALSE(votes.empty());
}

TEST_F(DiagnosticLogTest, CountsTheRowsOfAClientSideRecordset) {
  database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (2, 'B2', 500)");
  Frame frame;
  frame.OpenDataContext(database_.Dsn());
  Start();
  frame.GetConnection().ExecuteClientSide(Sql() << L"SELECT FInterID FROM ICBOM");
  StopLog();
  const std::vector<json> lines = Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0]["rows"], 2);
  EXPECT_FALSE(lines[0].contains("class")) << "nobody has called";
}

TEST_F(DiagnosticLogTest, SaysWhyAFailureWasTrapped) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  const Fault fault(L"Open");
  EXPECT_NO_THROW(bom.Call(L"CheckBomUsed", database_.Dsn(), 1, L""));
  StopLog();
  const Texts trapped = TextsOf("trapped");
  ASSERT_EQ(trapped.size(), 1U);
  EXPECT_NE(trapped[0].find(Fault::kText), std::wstring::npos) << com::ToUtf8(trapped[0]);
  for (const json& line : Lines()) EXPECT_EQ(line.contains("failed"), line["event"] == "statement") << line;
}

TEST_F(DiagnosticLogTest, SaysWhatIsRaised) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  const Fault fault(L"BindDsn");
  EXPECT_EQ(RaisedBy([&] { bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B1"); }).code, Fault::kCode);
  StopLog();
  const json last = Lines().back();
  EXPECT_EQ(last["event"], "end");
  EXPECT_EQ(last["code"], "0x80004005");
  EXPECT_EQ(last["text"], com::ToUtf8(Fault::kText));
}

TEST_F(DiagnosticLogTest, SaysTheCodeOfACallThatCouldNotBegin) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  EXPECT_EQ(RaisedBy([&] { bom.Call(L"UpdateIcBomStatus"); }).code, DISP_E_BADPARAMCOUNT);
  StopLog();
  const json last = Lines().back();
  EXPECT_EQ(last["event"], "end");
  EXPECT_EQ(last["code"], "0x8002000E");
  EXPECT_FALSE(last.contains("text")) << last;
}

TEST_F(DiagnosticLogTest, AClassThatItDoesNotKnowHasNoName) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  StartLog({path_.wstring(), 1 << 20}, {});
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B1");
  StopLog();
  EXPECT_EQ(Lines().back()["class"], "");
  EXPECT_EQ(Lines().back()["method"], "UpdateIcBomStatus");
}

TEST_F(DiagnosticLogTest, MasksPasswords) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(L"Password=secret"), L"B1");
  StopLog();
  EXPECT_EQ(TextsOf("set-up"), Texts{database_.Dsn(L"Password=***")});
  for (const json& line : Lines()) EXPECT_EQ(line.dump().find("secret"), std::string::npos);
}

TEST_F(DiagnosticLogTest, TextsThatAreNoUnicodeDisturbNoLine) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  Start();
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(), std::wstring(L"\xD800\0\"\n", 4));
  StopLog();
  EXPECT_EQ(Lines().back()["event"], "end");
}

TEST_F(DiagnosticLogTest, ABadPathAndAFullDiskDisturbNoCall) {
  const com::Object bom = New(L"QorvaneMBomBill.BomUpdate");
  for (const wchar_t* path : {L"Z:\\no\\such\\folder\\a.log", L"Z:\\dev\\full"}) {
    database_.Execute(L"UPDATE ICBOM SET FStatus = 0, FUseStatus = 0");
    StartLog({path, 1 << 20}, PublicClasses());
    EXPECT_NO_THROW(bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B1"));
    EXPECT_EQ(database_.Rows(L"SELECT FStatus, FUseStatus FROM ICBOM"), Texts{L"1|1072"});
  }
}

TEST_F(DiagnosticLogTest, IsOffWithoutAPath) {
  StartLog({}, PublicClasses());
  EXPECT_FALSE(LogIsOn());
}

// Sets a variable of the process while it lives.
class Environment {
 public:
  Environment(const wchar_t* name, const std::wstring& value) : name_(name) {
    SetEnvironmentVariableW(name, value.c_str());
  }
  ~Environment() { SetEnvironmentVariableW(name_, nullptr); }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  const wchar_t* name_;
};

TEST(LogSettings, ComeFromTheEnvironment) {
  const Environment path(L"QORVANEMBOMBILL_LOG", L"C:\\日志\\a.log");
  EXPECT_EQ(LogSettingsOfProcess().path, L"C:\\日志\\a.log");
  EXPECT_EQ(LogSettingsOfProcess().mostBytes, 10240U * 1024);
  const Environment size(L"QORVANEMBOMBILL_LOG_KB", L"5");
  EXPECT_EQ(LogSettingsOfProcess().mostBytes, 5U * 1024);
}

TEST(LogSettings, ComeFromTheRegistryOtherwise) {
  constexpr wchar_t kKey[] = L"SOFTWARE\\QorvaneMBomBill";
  EXPECT_EQ(LogSettingsOfProcess().path, L"");
  const std::wstring path = L"%windir%\\a.log";
  const DWORD size = 7;
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Log", REG_EXPAND_SZ, path.c_str(),
                  static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"LogKB", REG_DWORD, &size, sizeof size);
  const LogSettings settings = LogSettingsOfProcess();
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
  EXPECT_TRUE(com::EqualsNoCase(settings.path, L"C:\\windows\\a.log")) << com::ToUtf8(settings.path);
  EXPECT_EQ(settings.mostBytes, 7U * 1024);
}

} // namespace
} // namespace mbom::test
