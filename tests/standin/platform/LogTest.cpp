#include <fstream>
#include <regex>

#include "com/Text.h"
#include "tests/standin/Support.h"
#include "tests/support/LogFile.h"

namespace standin::test {
namespace {

class LogTest : public testing::Test {
 protected:
  std::vector<std::string> Lines() const {
    std::ifstream stream(com::ToUtf8(log_.path()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  const mbom::test::LogFile log_;
};

TEST_F(LogTest, IsEnabledByTheEnvironment) {
  const Object log = New(L"VexoLogMsg.Log");
  EXPECT_EQ(log.Get(L"IsEnabled"), Variant(true));
  mbom::test::LogFile::Disable();
  EXPECT_EQ(log.Get(L"IsEnabled"), Variant(false));
}

TEST_F(LogTest, WritesALineForTheStartAndTheEnd) {
  const Object log = New(L"VexoLogMsg.Log");
  Variant procedure(L"QorvaneMBomBill.clsReadUserDefined.MergeVect");
  Variant handle = log.Call(L"LogStart", Variant::Reference(procedure));
  ASSERT_EQ(handle.type(), VT_I4);
  Variant value(0);
  log.Call(L"LogEnd", Variant::Reference(handle), Variant::Reference(value));
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 2U);
  const std::string prefix =
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[)" + std::to_string(GetCurrentThreadId()) + R"(\] )";
  const std::string name =
      R"(QorvaneMBomBill\.clsReadUserDefined\.MergeVect #)" + std::to_string(handle.AsLong());
  EXPECT_TRUE(std::regex_match(lines[0], std::regex(prefix + "start " + name + "\r?"))) << lines[0];
  EXPECT_TRUE(
      std::regex_match(lines[1], std::regex(prefix + "end   " + name + R"( value 0, \d+ ms)" + "\r?")))
      << lines[1];
}

TEST_F(LogTest, TellsCallsApartAndTakesAnUnknownHandle) {
  const Object log = New(L"VexoLogMsg.Log");
  const int32_t first = log.Call(L"LogStart", L"a.b.c").AsLong();
  const int32_t second = log.Call(L"LogStart", L"a.b.c").AsLong();
  EXPECT_NE(first, second);
  EXPECT_NE(first, 0);
  log.Call(L"LogEnd", -5, 3);
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NE(lines[2].find("end   #-5 value 3"), std::string::npos) << lines[2];
}

TEST_F(LogTest, IsTraced) {
  const Object log = New(L"VexoLogMsg.Log");
  const Trace trace;
  const int32_t handle = log.Call(L"LogStart", L"a.b.c").AsLong();
  log.Call(L"LogEnd", handle, 0);
  EXPECT_EQ(trace.Events(), (Texts{L"LogStart\ta.b.c", L"LogEnd\t" + std::to_wstring(handle)}));
}

TEST_F(LogTest, FailsWhereTheFileCannotBeWritten) {
  SetEnvironmentVariableW(L"ERP_STANDIN_LOG", L"C:\\no such folder\\log.txt");
  EXPECT_TRUE(FAILED(RaisedBy([] { New(L"VexoLogMsg.Log").Call(L"LogStart", L"a.b.c"); }).code));
}

} // namespace
} // namespace standin::test
