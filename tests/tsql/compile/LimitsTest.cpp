// What is too deep, too wide or too long is refused, and the session goes on.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class LimitsTest : public EngineTest {
 protected:
  static std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
  }
};

TEST_F(LimitsTest, Nesting) {
  EXPECT_EQ(Scalar(Repeat("(", 100) + "1" + Repeat(")", 100)), "1");
  EXPECT_EQ(Scalar("1" + Repeat(" + 1", 300)), "301");
  EXPECT_EQ(Scalar(Repeat("(SELECT ", 20) + "1" + Repeat(")", 20)), "1");
  constexpr int kDeep = 20000;
  EXPECT_EQ(
      ErrorText("SELECT 1 +\n" + Repeat("(", kDeep) + "1" + Repeat(")", kDeep)),
      "191 2 Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into "
      "smaller queries.");
  EXPECT_EQ(ErrorOf("SELECT 1" + Repeat(" + 1", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1 WHERE 1 = 1" + Repeat(" OR 1 = 2", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1 WHERE " + Repeat("NOT ", kDeep) + "1 = 1"), 191);
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("- ", kDeep) + "1"), 191);
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("(SELECT ", kDeep) + "1" + Repeat(")", kDeep)), 191);
  EXPECT_EQ(ErrorOf(Repeat("IF 1 = 1 ", kDeep) + "PRINT 'x'"), 191);
  EXPECT_EQ(ErrorOf(Repeat("BEGIN ", kDeep) + "PRINT 'x'" + Repeat(" END", kDeep)), 191);
  EXPECT_EQ(ErrorOf("SELECT 1" + Repeat(" UNION ALL SELECT 1", kDeep)), 106);
  EXPECT_EQ(ErrorOf("SELECT * FROM (SELECT 1 AS a) x" + Repeat(", (SELECT 1 AS a) x", kDeep)), 106);
  std::string tables = "SELECT COUNT(*) FROM (SELECT 1 AS a) x";
  for (int i = 0; i < 70; ++i) tables += ", (SELECT 1 AS a) x" + std::to_string(i);
  EXPECT_EQ(ErrorText(tables), "106 1 Too many table names in the query. The maximum allowable is 64.");
  const size_t from = tables.find(" FROM");
  EXPECT_EQ(ErrorText("SELECT COUNT(*) AS n INTO made" + tables.substr(from)),
            "106 1 Too many table names in the query. The maximum allowable is 64.");
  EXPECT_EQ(ErrorOf("SELECT * FROM made"), 208);
  // Depth adds up over subqueries and the chains within them.
  EXPECT_EQ(ErrorOf("SELECT " + Repeat("(SELECT ", 100) + "1" + Repeat(" + 1 + 1 + 1 + 1 + 1)", 100)), 191);
  EXPECT_EQ(Scalar("1"), "1");
}

TEST_F(LimitsTest, Work) {
  Must("CREATE TABLE t (a INT) INSERT INTO t VALUES (0)");
  session_->SetWorkLimit(1000);
  EXPECT_EQ(ErrorText("WHILE 1 = 1 SET NOCOUNT ON"),
            "8649 1 The query has been canceled because it takes more work than the session allows.");
  EXPECT_EQ(
      ErrorOf(
          "BEGIN TRAN WHILE 1 = 1 BEGIN BEGIN TRY UPDATE t SET a = a + 1 END TRY BEGIN CATCH SELECT 1 END "
          "CATCH END"),
      8649);
  EXPECT_EQ(session_->TransactionCount(), 0);
  // One statement that runs long, and one within a procedure with temporary tables of its own.
  const std::string many = "(SELECT 1 AS n" + Repeat(" UNION ALL SELECT 1", 49) + ")";
  const std::string product =
      "SELECT COUNT(*) FROM " + many + " a, " + many + " b, " + many + " c, " + many + " d, t WHERE t.a < 1";
  EXPECT_EQ(ErrorOf(product), 8649);
  Must("CREATE PROCEDURE p AS CREATE TABLE #own (a INT) WHILE 1 = 1 INSERT INTO #own VALUES (1)");
  EXPECT_EQ(ErrorOf("EXEC p"), 8649);
  EXPECT_EQ(ErrorOf("BEGIN TRY EXEC p END TRY BEGIN CATCH PRINT 'caught' END CATCH"), 8649);
  EXPECT_EQ(ErrorOf("SELECT * FROM #own"), 208);
  // Each batch has all of it again.
  for (int i = 0; i < 3; ++i) Must("DECLARE @i INT SET @i = 0 WHILE @i < 200 SET @i = @i + 1");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"0"}));
  session_->SetWorkLimit(std::nullopt);
  Must("DECLARE @i INT SET @i = 0 WHILE @i < 5000 SET @i = @i + 1");
}

} // namespace
} // namespace tsql::test
