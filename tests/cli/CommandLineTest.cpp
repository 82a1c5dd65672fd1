#include "cli/CommandLine.h"

#include <gtest/gtest.h>

namespace bomcall {
namespace {

TEST(CommandLine, ReadsACall) {
  const CommandLine line =
      ParseCommandLine({L"--dsn", L"DSN=x;A=b", L"BomUpdate.EndSave", L"--lang", L"en", L"--json",
                        L"SaveVect=[{\"a\":1}]", L"--trace", L"ReturnMsg=a=b", L"--no-host"});
  EXPECT_EQ(line.action, Action::Call);
  EXPECT_EQ(line.className, L"BomUpdate");
  EXPECT_EQ(line.methodName, L"EndSave");
  EXPECT_EQ(line.descriptor, L"DSN=x;A=b");
  EXPECT_EQ(line.language, L"en");
  EXPECT_TRUE(line.json);
  EXPECT_TRUE(line.trace);
  EXPECT_FALSE(line.host);
  ASSERT_EQ(line.values.size(), 2u);
  EXPECT_EQ(line.values[0].name, L"SaveVect");
  EXPECT_EQ(line.values[0].value, L"[{\"a\":1}]");
  EXPECT_EQ(line.values[1].value, L"a=b");
}

TEST(CommandLine, ReadsTheOtherActions) {
  EXPECT_EQ(ParseCommandLine({L"--list"}).action, Action::List);
  EXPECT_EQ(ParseCommandLine({L"--list", L"BomView"}).className, L"BomView");
  EXPECT_EQ(ParseCommandLine({L"--help"}).action, Action::Help);
  EXPECT_EQ(ParseCommandLine({L"--version"}).action, Action::Version);
}

std::string Complaint(const std::vector<std::wstring>& arguments) {
  try {
    ParseCommandLine(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "(none)";
}

TEST(CommandLine, SaysWhatIsWrong) {
  EXPECT_EQ(Complaint({}), "there is nothing to call");
  EXPECT_EQ(Complaint({L"--nosuch"}), "there is no option --nosuch");
  EXPECT_EQ(Complaint({L"BomUpdate"}), "\"BomUpdate\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L"BomUpdate."}), "\"BomUpdate.\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L".EndSave"}), "\".EndSave\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L"A.B", L"value"}), "\"value\" is not NAME=VALUE");
  EXPECT_EQ(Complaint({L"A.B", L"=value"}), "\"=value\" is not NAME=VALUE");
  EXPECT_EQ(Complaint({L"A.B", L"--dsn"}), "--dsn needs a value");
  EXPECT_EQ(Complaint({L"A.B", L"--lang", L"fr"}), "--lang is chs, cht or en, not fr");
}

TEST(CommandLine, PutsTheLanguageWhereItIsFoundFirst) {
  EXPECT_EQ(WithLanguage(L"DSN=x;Language=chs", L"en"), L"Language=en;DSN=x;Language=chs");
  EXPECT_EQ(WithLanguage(L"DSN=x", L""), L"DSN=x");
}

} // namespace
} // namespace bomcall
