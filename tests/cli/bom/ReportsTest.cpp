#include "cli/bom/Reports.h"

#include <gtest/gtest.h>

#include "com/Text.h"
#include "tests/support/Client.h"

namespace bomcall::bom {
namespace {

// The factory's BOMs, read through ADO.
class ReportsTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    database_ = new mbom::test::TestDatabase;
    database_->RunScript("standin/database/factory.sql");
  }
  static void TearDownTestSuite() {
    delete database_;
    database_ = nullptr;
  }
  static ReportResult Report(std::vector<std::wstring> arguments) {
    arguments.insert(arguments.begin(), {L"--csv", L"bom"});
    return MakeReport(ParseCommandLine(arguments), database_->Dsn(), 0, false);
  }
  static std::string Shown(const std::vector<std::wstring>& arguments) {
    return com::ToUtf8(Report(arguments).text);
  }

  static mbom::test::TestDatabase* database_;
};
mbom::test::TestDatabase* ReportsTest::database_ = nullptr;

// The front wheel's base quantities are still to be computed: three dozen spokes are 36, two rolls of
// 50 + 0.5 metres are 101; the bell's unit is unknown, and its base quantity stands as it was saved.
TEST_F(ReportsTest, Tree) {
  EXPECT_EQ(
      Shown({L"tree", L"BOM000005", L"--qty", L"2", L"--columns", L"level,item,quantity,bom"}),
      "level,item,quantity,bom\r\n0,02.002,2,BOM000005\r\n1,03.005,2,\r\n1,03.004,72,\r\n1,03.006,2,\r\n"
      "1,03.008,202,\r\n1,03.009,14,\r\n");
}

TEST_F(ReportsTest, TreeOfSeveralLevels) {
  const std::string whole = Shown({L"tree", L"BOM000002", L"--columns", L"level,item,quantity,bom"});
  EXPECT_NE(whole.find("1,02.001,1,BOM000004\r\n2,04.001,3.2,\r\n2,04.002,0.15,\r\n1,02.002,1,BOM000005\r\n"),
            std::string::npos)
      << whole;
  EXPECT_EQ(Shown({L"tree", L"BOM000002", L"--depth", L"1"}).find("\r\n2,"), std::string::npos);
}

TEST_F(ReportsTest, TreeOfACustomersBomGoesOnInTheOneThatItsLineNames) {
  const std::string tree = Shown({L"tree", L"KH0001", L"--columns", L"level,item,bom"});
  EXPECT_EQ(tree.find("level,item,bom\r\n0,01.003,KH0001\r\n1,02.001,KH0002\r\n2,04.001,\r\n2,05.002,\r\n"),
            0u)
      << tree;
}

TEST_F(ReportsTest, WhereUsed) {
  EXPECT_EQ(Shown({L"where-used", L"03.001", L"--columns", L"level,bom,state"}),
            "level,bom,state\r\n1,BOM000002,in use\r\n2,PLN000001,in use\r\n");
  EXPECT_EQ(Shown({L"where-used", L"03.001", L"--top", L"--columns", L"level,bom"}),
            "level,bom\r\n2,PLN000001\r\n");
}

TEST_F(ReportsTest, Differences) {
  EXPECT_EQ(
      Shown({L"diff", L"BOM000006", L"BOM000008", L"--columns", L"change,item,what"}),
      "change,item,what\r\nchanged,03.005,operation 10 -> 0\r\n"
      "changed,03.004,\"quantity 3 -> 32; unit 打 -> 件; base quantity 36 -> 32; operation 10 -> 0; note \"\"\"\" -> "
      "\"\"三十二根 Thirty-two spokes\"\"\"\r\nchanged,03.006,operation 10 -> 0\r\n");
}

TEST_F(ReportsTest, CheckSaysWhatTheFactoryHasWrong) {
  const ReportResult check = Report({L"check"});
  EXPECT_EQ(com::ToUtf8(check.text),
            "finding,bom,line,what\r\nmissing unit,BOM000005,5,there is no unit 999\r\n");
  EXPECT_FALSE(check.clean);
}

// Of the bike: 36 spokes in front and 32 behind; paint for the bike and its frame.
TEST_F(ReportsTest, CostLines) {
  const std::string bought = Shown({L"cost-lines", L"BOM000002", L"--columns", L"item,quantity"});
  EXPECT_NE(bought.find("\r\n03.004,68\r\n"), std::string::npos) << bought;
  EXPECT_NE(bought.find("\r\n04.002,0.33\r\n"), std::string::npos) << bought;
  EXPECT_EQ(bought.find("02.001"), std::string::npos) << bought;
  const std::string lines = Shown({L"cost-lines", L"--columns", L"bom,line,quantity,made"});
  EXPECT_NE(lines.find("\r\nBOM000002,1,1,True\r\n"), std::string::npos) << lines;
  EXPECT_EQ(lines.find("BOM000006"), std::string::npos) << "it is not in use";
}

TEST_F(ReportsTest, SaysWhichNumberThereIsNot) {
  for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"tree", L"it's none"},
                                                     {L"where-used", L"none"},
                                                     {L"diff", L"BOM000006", L"x"}})
    EXPECT_THROW(Report(arguments), UsageError);
  EXPECT_THROW(Report({L"tree", L"BOM000002", L"--qty", L"many"}), UsageError);
}

} // namespace
} // namespace bomcall::bom
