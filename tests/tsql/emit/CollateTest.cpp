// COLLATE in expressions.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class CollateTest : public EngineTest {
 protected:
  CollateTest() {
    Must("CREATE TABLE w (id INT NOT NULL PRIMARY KEY, a VARCHAR(10) NULL, n NVARCHAR(10) NULL UNIQUE)");
    Must("INSERT INTO w VALUES (1, 'b', N'b'), (2, 'A', N'A'), (3, 'B', N'c'), (4, 'a', N'é')");
  }
};

TEST_F(CollateTest, TheCollationOfTheDatabaseMayBeNamed) {
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE DATABASE_DEFAULT = 'B' OR n LIKE 'C%' COLLATE "
                 "SQL_Latin1_General_CP1_CI_AS ORDER BY id"),
            Lines({"1", "3"}));
  EXPECT_EQ(Rows("SELECT 'a' + 'b' COLLATE database_default + 'c'"), Lines({"abc"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM w x JOIN w y ON x.a = y.n COLLATE Chinese_PRC_CI_AS"), Lines({"4"}));
}

TEST_F(CollateTest, Comparisons) {
  for (const std::string collation : {"Latin1_General_CS_AS", "Latin1_General_BIN", "Chinese_PRC_BIN2"}) {
    EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE " + collation + " = 'b'"), Lines({"1"}));
    EXPECT_EQ(Rows("SELECT id FROM w WHERE 'A' = a COLLATE " + collation), Lines({"2"}));
    EXPECT_EQ(Rows("SELECT id FROM w WHERE a <> 'a' COLLATE " + collation + " ORDER BY id"),
              Lines({"1", "2", "3"}));
    EXPECT_EQ(Rows("SELECT id FROM w WHERE n = 'B' COLLATE " + collation), Lines());
    EXPECT_EQ(Rows("SELECT id FROM w WHERE a IN ('B', 'a' COLLATE " + collation + ") ORDER BY id"),
              Lines({"3", "4"}));
    EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE " + collation + " IN (SELECT n FROM w) ORDER BY id"),
              Lines({"1", "2"}));
    EXPECT_EQ(
        Rows("SELECT CASE a COLLATE " + collation + " WHEN 'B' THEN 'x' ELSE '-' END FROM w ORDER BY id"),
        Lines({"-", "-", "x", "-"}));
    // Trailing blanks still do not count.
    EXPECT_EQ(Scalar("CASE WHEN 'a ' COLLATE " + collation + " = 'a' THEN 1 ELSE 0 END"), "1");
    EXPECT_EQ(Rows("SELECT COUNT(DISTINCT a COLLATE " + collation + "), COUNT(DISTINCT a) FROM w"),
              Lines({"4|2"}));
    EXPECT_EQ(Rows("SELECT COUNT(*) FROM w GROUP BY a COLLATE " + collation), Lines({"1", "1", "1", "1"}));
    // The collation of an operand is that of what is made of it.
    EXPECT_EQ(Rows("SELECT id FROM w WHERE LEFT(a COLLATE " + collation + ", 1) + 'x' = 'Ax'"), Lines({"2"}));
    EXPECT_EQ(Rows("SELECT id FROM w WHERE ISNULL(n COLLATE " + collation + ", 'x') BETWEEN 'c' AND 'c'"),
              Lines({"3"}));
  }
}

TEST_F(CollateTest, Order) {
  // Small letters come before their capitals, but capitals have the lower code points.
  EXPECT_EQ(Rows("SELECT a FROM w ORDER BY a COLLATE Latin1_General_CS_AS"), Lines({"a", "A", "b", "B"}));
  EXPECT_EQ(Rows("SELECT a FROM w ORDER BY a COLLATE Latin1_General_BIN DESC"), Lines({"b", "a", "B", "A"}));
  EXPECT_EQ(Rows("SELECT MIN(a COLLATE Latin1_General_BIN), MAX(a COLLATE Latin1_General_BIN) FROM w"),
            Lines({"A|b"}));
  EXPECT_EQ(Rows("SELECT a FROM w WHERE a COLLATE Latin1_General_BIN2 < 'a' ORDER BY id"), Lines({"A", "B"}));
  EXPECT_EQ(Rows("SELECT TOP 1 WITH TIES id FROM w ORDER BY a COLLATE Latin1_General_CS_AS"), Lines({"4"}));
  EXPECT_EQ(Rows("SELECT id, RANK() OVER (ORDER BY a COLLATE Latin1_General_BIN) FROM w ORDER BY id"),
            Lines({"1|4", "2|1", "3|2", "4|3"}));
}

TEST_F(CollateTest, Patterns) {
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE Latin1_General_BIN LIKE '[A-Z]%' ORDER BY id"),
            Lines({"2", "3"}));
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a LIKE 'B' COLLATE Latin1_General_CS_AS"), Lines({"3"}));
  // In dictionary order 'b' is between 'A' and 'Z', and 'a' is in front of them.
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE Latin1_General_CS_AS LIKE '[A-Z]' ORDER BY id"),
            Lines({"1", "2", "3"}));
  EXPECT_EQ(Scalar("CASE WHEN 'a%  ' COLLATE Latin1_General_BIN LIKE 'a!%' ESCAPE '!' THEN 1 ELSE 0 END"),
            "1");
  EXPECT_EQ(Scalar("CASE WHEN N'a ' COLLATE Latin1_General_BIN LIKE N'a' THEN 1 ELSE 0 END"), "0");
}

// Messages have names in the server's spelling.
TEST_F(CollateTest, Names) {
  EXPECT_EQ(
      ErrorText("SELECT id FROM w WHERE a COLLATE latin1_general_cs_as = n COLLATE greek_ci_as"),
      "468 1 Cannot resolve the collation conflict between \"Greek_CI_AS\" and \"Latin1_General_CS_AS\" in the "
      "equal to operation.");
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE sql_latin1_general_cp1_CS_as = 'A'"), Lines({"2"}));
  EXPECT_EQ(Rows("SELECT id FROM w WHERE a COLLATE Chinese_PRC_Stroke_90_CS_AS_KS_WS = 'A'"), Lines({"2"}));
  for (const std::string name :
       {"Latin_General_CS_AS", "Latin1_General_CS", "Latin1_General_BIN3", "x_BIN", "Chinese_PRC_CI_AS_XS",
        "Chinese_PRC_80_CI_AS", "SQL_Latin1_General_CI_AS", "Greek_AS", "Greek", "_BIN"})
    EXPECT_EQ(ErrorText("SELECT 'a' COLLATE " + name), "448 1 Invalid collation '" + name + "'.");
}

TEST_F(CollateTest, Errors) {
  EXPECT_EQ(ErrorText("SELECT id COLLATE DATABASE_DEFAULT FROM w"),
            "447 1 Expression type int is invalid for COLLATE clause.");
  EXPECT_EQ(ErrorText("SELECT 'a' COLLATE nothing"), "448 1 Invalid collation 'nothing'.");
  EXPECT_EQ(
      ErrorText("SELECT id FROM w WHERE a COLLATE Latin1_General_BIN = n COLLATE Latin1_General_CS_AS"),
      "468 1 Cannot resolve the collation conflict between \"Latin1_General_CS_AS\" and \"Latin1_General_BIN\" in "
      "the equal to operation.");
  EXPECT_EQ(ErrorOf("SELECT a COLLATE Latin1_General_BIN + n COLLATE Latin1_General_CI_AS FROM w"), 468);
  EXPECT_EQ(ErrorOf("SELECT a FROM w GROUP BY a COLLATE Latin1_General_BIN"), 8120);
  EXPECT_EQ(ErrorOf("SELECT DISTINCT a FROM w ORDER BY a COLLATE Latin1_General_BIN"), 145);
}

} // namespace
} // namespace tsql::test
