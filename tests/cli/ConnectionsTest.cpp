#include "cli/Connections.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace bomcall {
namespace {

TEST(Connections, AreLinesOfAProfile) {
  const auto connections =
      ParseProfile("# ours\r\n\r\ntest = Provider=Embedded;Data Source=a b.db \r\n测试=x\n", L"p");
  ASSERT_EQ(connections.size(), 2u);
  EXPECT_EQ(connections[0].name, L"test");
  EXPECT_EQ(connections[0].value, L"Provider=Embedded;Data Source=a b.db");
  EXPECT_EQ(connections[1].name, L"测试");
}

TEST(Connections, NameTheLineThatIsNone) {
  for (const char* text : {"a=1\nnonsense\n", "\n = x"}) {
    try {
      ParseProfile(text, L"p.txt");
      FAIL();
    } catch (const UsageError& error) {
      EXPECT_STREQ(error.what(), "p.txt, line 2, is not \"name = descriptor\"");
    }
  }
}

class ConnectionChoice : public testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(file_) << "default = D\nother = O\n";
    _wputenv_s(L"BOMCALL_PROFILE", file_.c_str());
    _wputenv_s(L"BOMCALL_DSN", L"");
  }
  void TearDown() override {
    _wputenv_s(L"BOMCALL_PROFILE", L"");
    _wputenv_s(L"BOMCALL_DSN", L"");
    std::filesystem::remove(file_);
  }
  static std::wstring Chosen(std::vector<std::wstring> options) {
    options.emplace_back(L"A.B");
    return DescriptorOf(ParseCommandLine(options));
  }

  const std::filesystem::path file_ =
      std::filesystem::temp_directory_path() / (L"bomcall-profile-" + std::to_wstring(GetCurrentProcessId()));
};

TEST_F(ConnectionChoice, IsTheMostExplicitOne) {
  EXPECT_EQ(Chosen({}), L"D");
  _wputenv_s(L"BOMCALL_DSN", L"E");
  EXPECT_EQ(Chosen({}), L"E");
  EXPECT_EQ(Chosen({L"-c", L"Other"}), L"O");
  EXPECT_EQ(Chosen({L"--dsn", L"X", L"--lang", L"en"}), L"Language=en;X");
  EXPECT_THROW(Chosen({L"-c", L"none"}), UsageError);
}

TEST_F(ConnectionChoice, IsAnErrorWithoutAny) {
  std::ofstream(file_) << "other = O\n";
  EXPECT_THROW(Chosen({}), UsageError);
  std::filesystem::remove(file_);
  EXPECT_THROW(Chosen({}), UsageError);
}

} // namespace
} // namespace bomcall
