// The limits of identity columns, and IDENTITY_INSERT.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class IdentityTest : public EngineTest {};

TEST_F(IdentityTest, TheTypeLimitsTheNumbers) {
  Must("CREATE TABLE t (id TINYINT IDENTITY(254,1), a INT)");
  Must("INSERT INTO t VALUES (1)");
  // The statement that runs out of numbers inserts none of its rows.
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2), (3)"),
            "8115 1 Arithmetic overflow error converting IDENTITY to data type tinyint.");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"254|1"}));
  Must("CREATE TABLE s (id SMALLINT IDENTITY(32767,1), a INT) INSERT INTO s VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO s VALUES (2)"), 8115);
  Must("CREATE TABLE i (id INT IDENTITY(2147483647,1), a INT) INSERT INTO i VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO i VALUES (2)"), 8115);
  Must("CREATE TABLE d (id DECIMAL(2,0) IDENTITY(99,1), a INT) INSERT INTO d VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO d SELECT 2"), 8115);
  EXPECT_EQ(Rows("SELECT id FROM s UNION ALL SELECT id FROM i UNION ALL SELECT id FROM d"),
            Lines({"32767", "2147483647", "99"}));
}

TEST_F(IdentityTest, TheLimitHoldsWithinATransactionThatStaysOpen) {
  Must("CREATE TABLE t (id TINYINT IDENTITY(255,1), a INT)");
  const Output output =
      Run("BEGIN TRAN INSERT INTO t VALUES (1) INSERT INTO t VALUES (2) SELECT @@TRANCOUNT COMMIT");
  EXPECT_EQ(output.errors.at(0).number, 8115);
  EXPECT_EQ(output.results, std::vector<Lines>({{"1"}}));
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"255|1"}));
}

TEST_F(IdentityTest, ASeedOutsideTheTypeIsRefused) {
  EXPECT_EQ(ErrorOf("CREATE TABLE t (id TINYINT IDENTITY(256,1))"), 2752);
  EXPECT_EQ(ErrorOf("CREATE TABLE t (id SMALLINT IDENTITY(32768,1))"), 2752);
}

TEST_F(IdentityTest, BehindTheLargestNumberIs8115) {
  Must("CREATE TABLE t (id BIGINT IDENTITY(9223372036854775807,1), a INT) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (2)"),
            "8115 1 Arithmetic overflow error converting IDENTITY to data type bigint.");
  EXPECT_EQ(Rows("SELECT a FROM t"), Lines({"1"}));
}

TEST_F(IdentityTest, WithoutAKeyANumberMayBeThereTwice) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) INSERT INTO t VALUES (1), (2)"
       " SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (1, 3)");
  EXPECT_EQ(Rows("SELECT id, a FROM t ORDER BY a"), Lines({"1|1", "2|2", "1|3"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON INSERT INTO t (id, a) VALUES (1, 4), (7, 5), (6, 6) SELECT @@IDENTITY, SCOPE_IDENTITY()"),
      Lines({"6|6"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON SET IDENTITY_INSERT t OFF INSERT INTO t VALUES (7) SELECT @@IDENTITY, COUNT(*) FROM t"),
      Lines({"8|7"}))
      << "counting goes on from the largest number";
  // A key over the numbers refuses them as before, and finds those that are there.
  EXPECT_EQ(ErrorOf("CREATE UNIQUE INDEX u ON t (id)"), 1505);
  Must("DELETE FROM t WHERE a IN (1, 3) ALTER TABLE t ADD CONSTRAINT pk_t PRIMARY KEY (id)");
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (8, 9)"), 2627);
}

TEST_F(IdentityTest, AKeyRefusesANumberThatIsThere) {
  Must("CREATE TABLE k (id INT IDENTITY(1,1) CONSTRAINT pk_k PRIMARY KEY, a INT) INSERT INTO k VALUES (1)");
  EXPECT_EQ(
      ErrorText("SET IDENTITY_INSERT k ON INSERT INTO k (id, a) VALUES (1, 2)"),
      "2627 1 Violation of PRIMARY KEY constraint 'pk_k'. Cannot insert duplicate key in object 'dbo.k'.");
}

TEST_F(IdentityTest, NumbersRepeatHoweverTheyAreGiven) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) CREATE TABLE log (id INT IDENTITY(1,1), a INT)"
       " CREATE TABLE #x (id INT IDENTITY(1,1), a INT) CREATE TABLE o (id INT)");
  Must("CREATE TRIGGER tr ON t FOR INSERT AS INSERT INTO log SELECT a FROM inserted");
  Must("CREATE PROCEDURE p AS SELECT 1, 5 UNION ALL SELECT 1, 6");
  Must(
      "SET IDENTITY_INSERT t ON INSERT INTO t (id, a) EXEC p INSERT INTO t (id, a) OUTPUT inserted.id INTO o VALUES (1, 7)");
  EXPECT_EQ(Rows("SELECT id, a FROM t ORDER BY a"), Lines({"1|5", "1|6", "1|7"}));
  EXPECT_EQ(Rows("SELECT id, a FROM log ORDER BY a"), Lines({"1|5", "2|6", "3|7"}));
  EXPECT_EQ(Rows("SELECT id FROM o"), Lines({"1"}));
  Must(
      "SET IDENTITY_INSERT t OFF SET IDENTITY_INSERT #x ON INSERT INTO #x (id, a) VALUES (3, 1) INSERT INTO #x (id, a) SELECT 3, 2");
  EXPECT_EQ(Rows("SELECT id, a FROM #x ORDER BY a"), Lines({"3|1", "3|2"}));
}

TEST_F(IdentityTest, AnIncrementMayBeAnyOtherNumber) {
  Must(
      "CREATE TABLE t (id INT IDENTITY(10,5) PRIMARY KEY, a INT NULL) INSERT INTO t VALUES (1), (2)"
      " INSERT INTO t DEFAULT VALUES INSERT INTO t SELECT a + 10 FROM t WHERE a IS NOT NULL ORDER BY a DESC");
  EXPECT_EQ(Rows("SELECT id, a FROM t ORDER BY id"), Lines({"10|1", "15|2", "20|NULL", "25|12", "30|11"}));
  EXPECT_EQ(Rows("SELECT @@IDENTITY"), Lines({"30"}));
  EXPECT_EQ(Rows("INSERT INTO t OUTPUT inserted.id, inserted.a VALUES (7), (8)"), Lines({"35|7", "40|8"}));
  Must("CREATE TABLE down (id SMALLINT IDENTITY(-1,-3), a INT) INSERT INTO down VALUES (1), (2), (3)");
  EXPECT_EQ(Rows("SELECT id FROM down ORDER BY a"), Lines({"-1", "-4", "-7"}));
  Must(
      "SET IDENTITY_INSERT down ON INSERT INTO down (id, a) VALUES (-5, 4), (-20, 5) SET IDENTITY_INSERT down OFF"
      " INSERT INTO down VALUES (6)");
  EXPECT_EQ(Rows("SELECT id FROM down WHERE a > 3 ORDER BY a"), Lines({"-5", "-20", "-23"}));
  Must("TRUNCATE TABLE down INSERT INTO down VALUES (1)");
  EXPECT_EQ(Rows("SELECT id FROM down"), Lines({"-1"}));
  EXPECT_EQ(ErrorOf("CREATE TABLE z (id INT IDENTITY(1,0))"), 2753);
  EXPECT_EQ(ErrorOf("CREATE TABLE z (id SMALLINT IDENTITY(1,40000))"), 2753);
  EXPECT_EQ(ErrorOf("CREATE TABLE z (id INT IDENTITY(99999999999999999999,1))"), 2752);
}

TEST_F(IdentityTest, TheTypeLimitsOtherIncrementsToo) {
  Must("CREATE TABLE t (id TINYINT IDENTITY(253,2), a INT) INSERT INTO t VALUES (1), (2)");
  EXPECT_EQ(ErrorText("INSERT INTO t VALUES (3)"),
            "8115 1 Arithmetic overflow error converting IDENTITY to data type tinyint.");
  Must("CREATE TABLE d (id TINYINT IDENTITY(1,-1), a INT) INSERT INTO d VALUES (1), (2)");
  EXPECT_EQ(ErrorOf("INSERT INTO d VALUES (3)"), 8115);
  Must("CREATE TABLE b (id BIGINT IDENTITY(9223372036854775806,3), a INT) INSERT INTO b VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO b VALUES (2)"), 8115);
  EXPECT_EQ(Rows("SELECT (SELECT COUNT(*) FROM t), (SELECT COUNT(*) FROM d), (SELECT COUNT(*) FROM b)"),
            Lines({"2|2|1"}));
}

TEST_F(IdentityTest, AFailedInsertLeavesTheCountAndTheRowsAlone) {
  Must("CREATE TABLE t (id INT IDENTITY(1,2), a INT CHECK (a < 10)) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (2), (20)"), 547);
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1"}));
  Must("INSERT INTO t VALUES (3)");
  EXPECT_EQ(Rows("SELECT COUNT(DISTINCT id), COUNT(*) FROM t"), Lines({"2|2"}));
}

TEST_F(IdentityTest, OtherIncrementsInTableVariablesAndTemporaryTables) {
  EXPECT_EQ(
      Rows("SET NOCOUNT ON DECLARE @t TABLE (id INT IDENTITY(5,5), a INT) INSERT @t VALUES (1), (2)"
           " BEGIN TRAN INSERT @t VALUES (3) ROLLBACK INSERT @t VALUES (4) SELECT id, a FROM @t ORDER BY a"),
      Lines({"5|1", "10|2", "15|3", "20|4"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON CREATE TABLE #t (id INT IDENTITY(5,5), a INT) INSERT #t VALUES (1), (2) DROP TABLE #t"
          " CREATE TABLE #t (id INT IDENTITY(5,5), a INT) INSERT #t VALUES (3) SELECT id, a FROM #t"),
      Lines({"5|3"}));
  Must("CREATE FUNCTION f (@n INT) RETURNS @t TABLE (id INT IDENTITY(1,10), a INT) AS BEGIN"
       " INSERT @t VALUES (@n), (@n + 1) RETURN END");
  EXPECT_EQ(Rows("SELECT x.id, x.a FROM f(7) x JOIN f(8) y ON x.a = y.a"), Lines({"11|8"}));
}

TEST_F(IdentityTest, TablesKeepTheirCountWhenTheyAreChanged) {
  Must("CREATE TABLE t (id INT IDENTITY(1,10), a INT) INSERT INTO t VALUES (1), (2)"
       " ALTER TABLE t ADD b INT NULL ALTER TABLE t ALTER COLUMN a BIGINT CREATE INDEX ix ON t (a)"
       " INSERT INTO t (a) VALUES (3) EXEC sp_rename 't', 'u' INSERT INTO u (a) VALUES (4)");
  EXPECT_EQ(Rows("SELECT id FROM u ORDER BY a"), Lines({"1", "11", "21", "31"}));
  Must("DROP TABLE u CREATE TABLE u (id INT IDENTITY(1,10), a INT) INSERT INTO u VALUES (1)");
  EXPECT_EQ(Rows("SELECT id FROM u"), Lines({"1"}));
  Must(
      "CREATE TABLE n (a INT) INSERT INTO n VALUES (30), (10), (20) ALTER TABLE n ADD id INT IDENTITY(100,-10)"
      " INSERT INTO n VALUES (40)");
  EXPECT_EQ(Rows("SELECT a, id FROM n ORDER BY id"), Lines({"40|70", "20|80", "10|90", "30|100"}));
}

TEST_F(IdentityTest, SystemViewsKnowBothKinds) {
  Must("CREATE TABLE t (id INT IDENTITY(1,2), a INT, c AS a + 1) CREATE TABLE u (id INT IDENTITY(1,1))");
  EXPECT_EQ(
      Rows(
          "SELECT OBJECT_NAME(object_id), name, is_identity, is_computed FROM sys.columns ORDER BY 1, column_id"),
      Lines({"t|id|1|0", "t|a|0|0", "t|c|0|1", "u|id|1|0"}));
  EXPECT_EQ(
      Rows(
          "SELECT COLUMNPROPERTY(OBJECT_ID('t'), 'id', 'IsIdentity'), OBJECTPROPERTY(OBJECT_ID('t'), 'TableHasIdentity')"),
      Lines({"1|1"}));
}

TEST_F(IdentityTest, SeedIncrementAndCurrentNumberOfATable) {
  Must(
      "CREATE TABLE t (id INT IDENTITY(10,5), a INT) CREATE TABLE u (id INT IDENTITY(7,1), a INT) CREATE TABLE n (a INT)");
  const std::string numbers =
      "SELECT IDENT_SEED('t'), IDENT_INCR('dbo.t'), IDENT_CURRENT('t'), IDENT_SEED('u'), IDENT_INCR('u'),"
      " IDENT_CURRENT('u')";
  EXPECT_EQ(Rows(numbers), Lines({"10|5|10|7|1|7"}));
  Must("INSERT INTO t VALUES (1), (2) INSERT INTO u VALUES (1), (2), (3)");
  EXPECT_EQ(Rows(numbers), Lines({"10|5|15|7|1|9"}));
  Must("DELETE FROM t DELETE FROM u");
  EXPECT_EQ(Rows(numbers), Lines({"10|5|15|7|1|9"})) << "rows that go take no number with them";
  Must("TRUNCATE TABLE t TRUNCATE TABLE u");
  EXPECT_EQ(Rows(numbers), Lines({"10|5|10|7|1|7"}));
  EXPECT_EQ(Rows("SELECT IDENT_SEED('n'), IDENT_INCR('missing'), IDENT_CURRENT(NULL)"),
            Lines({"NULL|NULL|NULL"}));
}

TEST_F(IdentityTest, SelectIntoNumbersItsRows) {
  Must("CREATE TABLE s (a INT, b VARCHAR(5)) INSERT INTO s VALUES (3, 'x'), (1, 'y'), (2, 'z')"
       " SELECT IDENTITY(INT, 1, 1) AS id, a, b INTO t FROM s ORDER BY a");
  EXPECT_EQ(Rows("SELECT id, a, b FROM t ORDER BY id"), Lines({"1|1|y", "2|2|z", "3|3|x"}));
  EXPECT_EQ(Rows("SET NOCOUNT ON INSERT INTO t (a, b) VALUES (9, 'n') SELECT SCOPE_IDENTITY()"),
            Lines({"4"}));
  EXPECT_EQ(
      Rows(
          "SET NOCOUNT ON SELECT a, n = IDENTITY(BIGINT, 100, -10), b INTO #u FROM s WHERE a > 1 ORDER BY a DESC"
          " SELECT @@IDENTITY INSERT INTO #u VALUES (7, 'm')"),
      Lines({"90"}));
  EXPECT_EQ(Rows("SELECT * FROM #u ORDER BY n"), Lines({"7|80|m", "2|90|z", "3|100|x"}));
  EXPECT_EQ(ErrorOf("SELECT IDENTITY(INT, 1, 1) AS id FROM s"), 177);
  EXPECT_EQ(ErrorOf("SELECT IDENTITY(INT, 1, 1), a INTO v FROM s"), 1038);
  EXPECT_EQ(ErrorOf("SELECT IDENTITY(INT) AS i, IDENTITY(INT) AS j INTO v FROM s"), 2744);
  EXPECT_EQ(ErrorOf("SELECT IDENTITY(VARCHAR(5), 1, 1) AS i INTO v FROM s"), 2749);
  EXPECT_EQ(ErrorOf("SELECT IDENTITY(TINYINT, 254, 1) AS i, a INTO v FROM s"), 8115);
  EXPECT_EQ(
      ErrorText("SELECT IDENTITY(INT, 1, 1) AS i, id INTO v FROM t"),
      "8108 1 Cannot add identity column, using the SELECT INTO statement, to table 'v', which already has column "
      "'id' that inherits the identity property.");
}

TEST_F(IdentityTest, SelectIntoKeepsTheIdentityOfItsOnlyTable) {
  Must(
      "CREATE TABLE t (id INT IDENTITY(10,5), a INT) INSERT INTO t VALUES (1), (2) SELECT id AS n, a INTO u FROM t"
      " INSERT INTO u VALUES (3)");
  EXPECT_EQ(Rows("SELECT n, a FROM u ORDER BY n"), Lines({"10|1", "15|2", "20|3"}));
  EXPECT_EQ(ErrorOf("INSERT INTO u (n, a) VALUES (1, 1)"), 544);
  Must("CREATE TABLE k (id INT IDENTITY(5,1) PRIMARY KEY, a INT) INSERT INTO k VALUES (1), (2)"
       " SELECT * INTO #c FROM k WHERE a = 2 INSERT INTO #c VALUES (3)");
  EXPECT_EQ(Rows("SELECT id, a FROM #c ORDER BY id"), Lines({"6|2", "7|3"}));
  // In a join, an expression, an aggregate or twice, it is an ordinary column.
  Must("SELECT k.id INTO j FROM k JOIN t ON k.a = t.a INSERT INTO j VALUES (1)"
       " SELECT id + 0 AS id INTO e FROM k INSERT INTO e VALUES (1)"
       " SELECT id, id AS again INTO w FROM k INSERT INTO w VALUES (1, 1)"
       " SELECT id, COUNT(*) AS n INTO g FROM k GROUP BY id INSERT INTO g VALUES (1, 1)");
}

constexpr char kCompleted[] =
    "DBCC execution completed. If DBCC printed error messages, contact your system administrator.";

std::string Checked(const std::string& current, const std::string& column) {
  return "Checking identity information: current identity value '" + current + "', current column value '" +
         column + "'.";
}

TEST_F(IdentityTest, CheckIdentTellsAndMends) {
  Must("CREATE TABLE t (id INT IDENTITY(10,5) PRIMARY KEY, a INT) CREATE TABLE n (a INT)");
  EXPECT_EQ(Run("DBCC CHECKIDENT ('t', NORESEED)").messages, Lines({Checked("NULL", "NULL"), kCompleted}));
  Must("INSERT INTO t VALUES (1), (2)");
  EXPECT_EQ(Run("DBCC CHECKIDENT (t) DBCC CHECKIDENT ([dbo].[t], RESEED) WITH NO_INFOMSGS").messages,
            Lines({Checked("15", "15"), kCompleted}));
  Must("DELETE FROM t WHERE a = 2");
  EXPECT_EQ(Run("DECLARE @t VARCHAR(9), @n INT SELECT @t = 'dbo.t', @n = 40 DBCC CHECKIDENT (@t, RESEED, @n)")
                .messages,
            Lines({"Checking identity information: current identity value '15'.", kCompleted}));
  EXPECT_EQ(Rows("INSERT INTO t OUTPUT inserted.id VALUES (3)"), Lines({"45"}));
  EXPECT_EQ(ErrorText("DBCC CHECKIDENT (missing)"),
            "2501 1 Cannot find a table or object with the name \"missing\". Check the system catalog.");
  EXPECT_EQ(ErrorText("DBCC CHECKIDENT ('n')"), "7997 1 'n' does not contain an identity column.");
  EXPECT_EQ(ErrorOf("DBCC CHECKIDENT ('t', RESEED, 3000000000)"), 2560);
  EXPECT_EQ(ErrorOf("CREATE FUNCTION f () RETURNS INT AS BEGIN DBCC CHECKIDENT (t) RETURN 1 END"), 443);
  EXPECT_EQ(ErrorOf("DBCC CHECKDB"), 40510);
}

TEST_F(IdentityTest, ReseedingBackGivesNumbersAgain) {
  for (const char* increment : {"1", "10"}) {
    Must(std::string("CREATE TABLE k (id INT IDENTITY(1,") + increment +
         ") CONSTRAINT pk PRIMARY KEY, a INT)"
         " INSERT INTO k VALUES (1), (2), (3) DBCC CHECKIDENT ('k', RESEED, 1)");
    EXPECT_EQ(ErrorText("INSERT INTO k VALUES (4)").substr(0, 4), "2627") << "the key refuses what is there";
    Must("DELETE FROM k DBCC CHECKIDENT ('k', RESEED, 0)");
    EXPECT_EQ(Rows("INSERT INTO k OUTPUT inserted.id VALUES (5)"), Lines({increment}));
    Must("TRUNCATE TABLE k DBCC CHECKIDENT ('k', RESEED, 7)");
    EXPECT_EQ(Rows("INSERT INTO k OUTPUT inserted.id VALUES (6)"), Lines({"7"}))
        << "the first row of an empty table has the number itself";
    Must("DROP TABLE k");
  }
  Must(
      "CREATE TABLE #h (id INT IDENTITY, a INT) INSERT INTO #h VALUES (1), (2) DBCC CHECKIDENT ('#h', RESEED, 0)"
      " INSERT INTO #h VALUES (3)");
  EXPECT_EQ(Rows("SELECT id, a FROM #h ORDER BY a"), Lines({"1|1", "2|2", "1|3"}));
  // Numbers that were given are counted again.
  Must("SET IDENTITY_INSERT #h ON INSERT INTO #h (id, a) VALUES (50, 4) SET IDENTITY_INSERT #h OFF"
       " DBCC CHECKIDENT ('#h', RESEED, 3) DBCC CHECKIDENT ('#h', RESEED) INSERT INTO #h VALUES (5)");
  EXPECT_EQ(Rows("SELECT id FROM #h WHERE a = 5"), Lines({"51"}));
}

// A number is given once, whatever comes of its row.
TEST_F(IdentityTest, ARolledBackNumberIsNotGivenAgain) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) CREATE TABLE s (id INT IDENTITY(10,-5), a INT)");
  Must("INSERT INTO t VALUES (1) INSERT INTO s VALUES (1)");
  Must("BEGIN TRAN INSERT INTO t VALUES (2), (3) INSERT INTO s VALUES (2) ROLLBACK");
  EXPECT_EQ(Rows("SELECT IDENT_CURRENT('t'), IDENT_CURRENT('s')"), Lines({"3|5"}));
  Must("INSERT INTO t VALUES (4) INSERT INTO s VALUES (3)");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1", "4|4"}));
  EXPECT_EQ(Rows("SELECT id, a FROM s ORDER BY a"), Lines({"10|1", "0|3"}));
  // What is undone twice is counted twice.
  Must("BEGIN TRAN INSERT INTO t VALUES (5) ROLLBACK BEGIN TRAN INSERT INTO t VALUES (6) ROLLBACK");
  Must("BEGIN TRAN INSERT INTO t VALUES (7) COMMIT");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1", "4|4", "7|7"}));
}

TEST_F(IdentityTest, ASavepointGivesNoNumberBack) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT)"
       " BEGIN TRAN INSERT INTO t VALUES (1) SAVE TRAN x INSERT INTO t VALUES (2) ROLLBACK TRAN x"
       " INSERT INTO t VALUES (3) COMMIT");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1", "3|3"}));
  Must("BEGIN TRAN SAVE TRAN x INSERT INTO t VALUES (4) ROLLBACK TRAN x ROLLBACK INSERT INTO t VALUES (5)");
  EXPECT_EQ(Rows("SELECT MAX(id) FROM t"), Lines({"5"}));
}

TEST_F(IdentityTest, AFailedRowHasHadItsNumber) {
  Must(
      "CREATE TABLE t (id INT IDENTITY(1,1), a INT NOT NULL CONSTRAINT u UNIQUE CONSTRAINT c CHECK (a > 0))");
  Must("CREATE TABLE s (id INT IDENTITY(0,10), a INT UNIQUE)");
  Must("INSERT INTO t VALUES (1) INSERT INTO s VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (1)"), 2627);     // 2
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (0)"), 547);      // 3
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) SELECT NULL"), 515); // 4
  EXPECT_EQ(ErrorOf("INSERT INTO s VALUES (1)"), 2627);
  EXPECT_EQ(Rows("SELECT IDENT_CURRENT('t')"), Lines({"4"}));
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (5), (6), (1), (7)"), 2627); // 5, 6 and 7
  Must("INSERT INTO t VALUES (8) INSERT INTO s VALUES (2)");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1", "8|8"}));
  EXPECT_EQ(Rows("SELECT id, a FROM s"), Lines({"0|1", "20|2"}));
  // Within a transaction too, and @@IDENTITY is the last one that stayed.
  Must("CREATE TABLE p (k INT PRIMARY KEY) ALTER TABLE t ADD f INT NULL REFERENCES p");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a, f) VALUES (9, 77)"), 547); // 9
  EXPECT_EQ(Rows("SET NOCOUNT ON BEGIN TRAN INSERT INTO t (a) VALUES (10) COMMIT SELECT @@IDENTITY"),
            Lines({"10"}));
}

TEST_F(IdentityTest, ATableThatBeginsAnewForgetsLostNumbers) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT)"
       " BEGIN TRAN INSERT INTO t VALUES (1) ROLLBACK TRUNCATE TABLE t INSERT INTO t VALUES (2)");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|2"}));
  Must(
      "BEGIN TRAN INSERT INTO t VALUES (3), (4) ROLLBACK DBCC CHECKIDENT (t, RESEED, 1) INSERT INTO t VALUES (5)");
  EXPECT_EQ(Rows("SELECT MAX(id) FROM t"), Lines({"2"}));
  Must("BEGIN TRAN INSERT INTO t VALUES (6) ROLLBACK DROP TABLE t"
       " CREATE TABLE t (id INT IDENTITY(1,1), a INT) INSERT INTO t VALUES (7)");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|7"}));
  Must("BEGIN TRAN CREATE TABLE n (id INT IDENTITY(1,1), a INT) INSERT INTO n VALUES (1) ROLLBACK");
  Must("CREATE TABLE n (id INT IDENTITY(1,1), a INT) INSERT INTO n VALUES (1)");
  EXPECT_EQ(Rows("SELECT id FROM n"), Lines({"1"}));
}

TEST_F(IdentityTest, NumbersThatAreGivenByTheStatementAreNotLost) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1) PRIMARY KEY, a INT UNIQUE) INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT t ON INSERT INTO t (id, a) VALUES (50, 1)"), 2627);
  Must("SET IDENTITY_INSERT t OFF INSERT INTO t VALUES (2)");
  EXPECT_EQ(Rows("SELECT MAX(id) FROM t"), Lines({"2"}));
}

TEST_F(IdentityTest, ATriggersRollbackGivesNoNumberBack) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT)");
  Must("CREATE TRIGGER tr ON t FOR INSERT AS IF EXISTS (SELECT * FROM inserted WHERE a < 0) ROLLBACK");
  Must("INSERT INTO t VALUES (1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t VALUES (-1)"), 3609);
  Must("INSERT INTO t VALUES (2)");
  EXPECT_EQ(Rows("SELECT id, a FROM t"), Lines({"1|1", "3|2"}));
}

TEST_F(IdentityTest, ATableVariableCountsItsFailedRowsToo) {
  EXPECT_EQ(Rows("SET NOCOUNT ON DECLARE @t TABLE (id INT IDENTITY(1,1), a INT UNIQUE) INSERT @t VALUES (1)"
                 " BEGIN TRY INSERT @t VALUES (1) END TRY BEGIN CATCH END CATCH"
                 " BEGIN TRAN INSERT @t VALUES (2) ROLLBACK INSERT @t VALUES (3) SELECT id, a FROM @t"),
            Lines({"1|1", "3|2", "4|3"}));
}

TEST_F(IdentityTest, ARollbackOfATemporaryTableGivesNoNumberBack) {
  Must("CREATE TABLE #t (id INT IDENTITY(1,1), a INT) BEGIN TRAN INSERT INTO #t VALUES (1) ROLLBACK"
       " INSERT INTO #t VALUES (2)");
  EXPECT_EQ(Rows("SELECT id, a FROM #t"), Lines({"2|2"}));
}

TEST_F(IdentityTest, IdentityInsertIsOnForOneTable) {
  Must("CREATE TABLE t (id INT IDENTITY(1,1), a INT) CREATE TABLE u (id INT IDENTITY(1,1), a INT) "
       "CREATE TABLE w (a INT)");
  Must("SET IDENTITY_INSERT t ON");
  EXPECT_EQ(
      ErrorText("SET IDENTITY_INSERT u ON"),
      "8107 1 IDENTITY_INSERT is already ON for table 't'. Cannot perform SET operation for table 'u'.");
  Must("SET IDENTITY_INSERT u OFF INSERT INTO t (id, a) VALUES (5, 1)");
  EXPECT_EQ(ErrorOf("INSERT INTO t (a) VALUES (1)"), 545);
  Must("SET IDENTITY_INSERT t OFF SET IDENTITY_INSERT u ON SET IDENTITY_INSERT u OFF");
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT w ON"), 8106);
  EXPECT_EQ(ErrorOf("SET IDENTITY_INSERT missing ON"), 1088);
  EXPECT_EQ(Rows("SELECT id FROM t"), Lines({"5"}));
}

} // namespace
} // namespace tsql::test
