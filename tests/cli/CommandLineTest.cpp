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
  EXPECT_EQ(line.format, Format::Json);
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
  EXPECT_EQ(ParseCommandLine({L"--check"}).action, Action::Check);
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
  EXPECT_NE(Complaint({L"--nosuch"}).find("--nosuch"), std::string::npos);
  EXPECT_EQ(Complaint({L"BomUpdate"}), "\"BomUpdate\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L"BomUpdate."}), "\"BomUpdate.\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L".EndSave"}), "\".EndSave\" is not CLASS.METHOD");
  EXPECT_EQ(Complaint({L"A.B", L"value"}), "\"value\" is not NAME=VALUE");
  EXPECT_EQ(Complaint({L"A.B", L"=value"}), "\"=value\" is not NAME=VALUE");
  EXPECT_NE(Complaint({L"A.B", L"--dsn"}).find("--dsn"), std::string::npos);
  EXPECT_NE(Complaint({L"A.B", L"--lang", L"fr"}).find("--lang: fr"), std::string::npos);
  EXPECT_NE(Complaint({L"A.B", L"--csv", L"--json"}).find("--json"), std::string::npos);
  EXPECT_NE(Complaint({L"A.B", L"--dsn", L"x", L"-c", L"y"}).find("--dsn"), std::string::npos);
  EXPECT_NE(Complaint({L"A.B", L"--keep-going"}).find("--batch"), std::string::npos);
  EXPECT_EQ(Complaint({L"bom"}), "bom is followed by tree, where-used, diff, check or cost-lines");
  EXPECT_EQ(Complaint({L"bom", L"diff", L"A"}), "bom diff takes the numbers of two BOMs");
  EXPECT_EQ(Complaint({L"bom", L"check", L"A"}), "bom check takes no further names");
}

TEST(CommandLine, ReadsWhatToShow) {
  const CommandLine line =
      ParseCommandLine({L"A.B", L"--csv", L"--columns", L"FQty,名称", L"x=1", L"--fail-if", L"Result=False",
                        L"y=/2", L"-c", L"test", L"--encoding", L"GBK"});
  EXPECT_EQ(line.format, Format::Csv);
  EXPECT_EQ(line.columns, (std::vector<std::wstring>{L"FQty", L"名称"}));
  ASSERT_EQ(line.failIf.size(), 1u);
  EXPECT_EQ(line.failIf[0].value, L"False");
  ASSERT_EQ(line.values.size(), 2u);
  EXPECT_EQ(line.values[1].value, L"/2");
  EXPECT_EQ(line.connection, L"test");
  EXPECT_EQ(line.encoding, Encoding::Gbk);
}

TEST(CommandLine, ReadsHelpOfATopic) {
  EXPECT_EQ(ParseCommandLine({L"-h"}).helpTopic, L"");
  EXPECT_EQ(ParseCommandLine({L"--help", L"BomView.GetBomList"}).helpTopic, L"BomView.GetBomList");
  for (const std::vector<std::wstring>& line :
       {std::vector<std::wstring>{L"bom", L"--help"}, {L"bom", L"tree", L"-h"}, {L"--help", L"bom"}}) {
    EXPECT_EQ(ParseCommandLine(line).action, Action::Help);
    EXPECT_EQ(ParseCommandLine(line).helpTopic, L"bom");
  }
}

TEST(CommandLine, ReadsReports) {
  const CommandLine tree = ParseCommandLine(
      {L"bom", L"tree", L"BOM000002", L"--depth", L"3", L"--qty", L"2.5", L"--html", L"-c", L"x"});
  EXPECT_EQ(tree.action, Action::Bom);
  EXPECT_EQ(tree.bom.report, BomRequest::Report::Tree);
  EXPECT_EQ(tree.bom.names, std::vector<std::wstring>{L"BOM000002"});
  EXPECT_EQ(tree.bom.depth, 3);
  EXPECT_EQ(tree.bom.quantity, L"2.5");
  EXPECT_EQ(tree.bom.picture, BomRequest::Picture::Html);
  EXPECT_EQ(tree.connection, L"x");
  EXPECT_EQ(ParseCommandLine({L"--csv", L"bom", L"cost-lines"}).bom.report, BomRequest::Report::CostLines);
  EXPECT_TRUE(ParseCommandLine({L"bom", L"where-used", L"03.004", L"--top"}).bom.top);
  EXPECT_EQ(ParseCommandLine({L"bom", L"diff", L"A", L"B"}).bom.names.size(), 2u);
}

TEST(CommandLine, PutsTheLanguageWhereItIsFoundFirst) {
  EXPECT_EQ(WithLanguage(L"DSN=x;Language=chs", L"en"), L"Language=en;DSN=x;Language=chs");
  EXPECT_EQ(WithLanguage(L"DSN=x", L""), L"DSN=x");
}

} // namespace
} // namespace bomcall
