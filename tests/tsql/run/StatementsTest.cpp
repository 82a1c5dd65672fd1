// The statements that the BOM save hooks, the profile read, the schema and demo-data scripts send.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class StatementsTest : public EngineTest {
 protected:
  StatementsTest() {
    Must(
        "CREATE TABLE ICBom (\r\n"
        "  FBrNo VARCHAR(10) NOT NULL DEFAULT '0',\r\n"
        "  FInterID INT NOT NULL CONSTRAINT pk_ICBom PRIMARY KEY CLUSTERED,\r\n"
        "  FBomNumber VARCHAR(300) NOT NULL DEFAULT '',\r\n"
        "  FBomType INT NOT NULL DEFAULT (0),\r\n"
        "  FItemID INT NOT NULL DEFAULT 0, FParentID INT NULL,\r\n"
        "  FOperatorID INT NULL, FEnterTime DATETIME NULL, FCheckID INT NULL, FCheckDate DATETIME NULL,\r\n"
        "  FUseStatus INT NOT NULL DEFAULT 1072, FStatus SMALLINT NOT NULL DEFAULT 0, FEcnInterId INT NULL)");
    Must("CREATE TABLE ICBOMChild (FInterID INT NOT NULL, FEntryID INT NOT NULL, FItemID INT NOT NULL,"
         " FUnitID INT NOT NULL, FAuxQty DECIMAL(28,10) NOT NULL DEFAULT 0,"
         " FQty DECIMAL(28,10) NOT NULL DEFAULT 0, FBeginDay DATETIME NULL, FEndDay DATETIME NULL,"
         " CONSTRAINT pk_ICBOMChild PRIMARY KEY (FInterID, FEntryID))");
    Must("CREATE TABLE t_MeasureUnit (FItemID INT NOT NULL PRIMARY KEY, FCoefficient DECIMAL(28,10) NULL,"
         " FScale DECIMAL(28,10) NULL)");
    Must("CREATE TABLE t_SystemProfile (FCategory VARCHAR(30) NOT NULL, FKey VARCHAR(50) NOT NULL,"
         " FValue VARCHAR(255) NULL, PRIMARY KEY (FCategory, FKey))");
    Must("INSERT INTO ICBom (FInterID, FBomNumber, FBomType, FItemID) VALUES\r\n"
         " (1001, 'BOM001', 1, 5001), (1002, 'BOM002', 0, 5001)");
    Must("INSERT INTO t_MeasureUnit VALUES (1, 12, 0.5), (2, NULL, NULL)");
    Must(
        "INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty) VALUES (1001, 1, 7, 1, 2.5)");
    Must("INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty) VALUES (1001, 2, 8, 2, 3)");
    Must("INSERT INTO t_SystemProfile VALUES ('IC', 'UseShortNumber', '1')");
    session_->SetNow(DateTime{36524, 10}); // 2000-01-01
  }
};

TEST_F(StatementsTest, PointSelect) {
  const Output output = Run("select FEcnInterId from IcBom where FInterId = 1001");
  ASSERT_EQ(output.results.size(), 1U);
  EXPECT_EQ(output.results[0], Lines({"NULL"}));
  EXPECT_EQ(output.columns[0][0].name, "FEcnInterId");
  EXPECT_EQ(output.columns[0][0].type.id, TypeId::Int);
  EXPECT_TRUE(output.columns[0][0].nullable);
}

TEST_F(StatementsTest, StampsTheHeader) {
  const Output output =
      Run("UPDATE ICBom SET FOperatorID=16394,FEnterTime=Convert(Varchar(10),Getdate(),120),FCheckID=16394,"
          "FCheckDate=Convert(Varchar(10),Getdate(),120),FUseStatus=1073 ,FParentID=7 WHERE FInterID=1001");
  EXPECT_EQ(output.counts, std::vector<int64_t>({1}));
  EXPECT_EQ(Rows("SELECT FOperatorID, FEnterTime, FCheckID, FCheckDate, FUseStatus, FParentID FROM icbom "
                 "WHERE FInterID = 1001"),
            Lines({"16394|36524:0|16394|36524:0|1073|7"}));
}

TEST_F(StatementsTest, RecalculatesQuantities) {
  const Output output =
      Run(" Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,1) as float) + "
          "cast(isnull(t3.FScale,0) as float))\r\n from ICBOMChild  t1,t_MeasureUnit t3\r\n"
          " Where t3.FItemID = t1.FUnitID and t1.FInterID=1001");
  EXPECT_TRUE(output.errors.empty());
  EXPECT_EQ(output.counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SELECT FEntryID, FQty FROM ICBOMChild ORDER BY FEntryID"),
            Lines({"1|31.2500000000", "2|3.0000000000"}));
}

TEST_F(StatementsTest, ConditionGuardsTheUpdate) {
  EXPECT_EQ(
      Run("IF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = 1001 AND FBomtype <> 0) \r\n"
          "    UPDATE ICBomChild SET FBeginDay = '1900-01-01', FEndDay = '2100-01-01' WHERE FInterID = 1001")
          .counts,
      std::vector<int64_t>({2}));
  // 2100-01-01 is 73,049 days after 1900-01-01: 200 years of 365 days and 49 leap days (1904 ... 2096).
  EXPECT_EQ(Rows("SELECT FBeginDay, FEndDay FROM ICBomChild WHERE FEntryID = 1"), Lines({"0:0|73049:0"}));
  EXPECT_TRUE(Run("IF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = 1002 AND FBomtype <> 0) \r\n"
                  "    UPDATE ICBomChild SET FBeginDay = NULL WHERE FInterID = 1001")
                  .counts.empty());
}

TEST_F(StatementsTest, StatusUpdates) {
  EXPECT_EQ(Run("UPDATE ICBom SET FUseStatus=1073 WHERE FItemID=5001").counts, std::vector<int64_t>({2}));
  EXPECT_EQ(Run("UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='bom001' ").counts,
            std::vector<int64_t>({1}));
  EXPECT_EQ(Rows("SELECT FInterID, FStatus, FUseStatus FROM ICBom ORDER BY FInterID DESC"),
            Lines({"1002|0|1073", "1001|1|1072"}));
}

TEST_F(StatementsTest, ProfileReadWithMarkers) {
  Parameter category;
  category.type = Type{TypeId::VarChar, 30, 0, 0};
  category.value.kind = Value::Kind::Text;
  category.value.text = "ic";
  Parameter key = category;
  key.value.text = "UseShortNumber";
  std::vector<Parameter> parameters = {category, key};
  const Output output =
      RunOn(*session_, "Select FValue From t_SystemProfile Where FCategory = ? And FKey = ?", parameters);
  ASSERT_EQ(output.results.size(), 1U);
  EXPECT_EQ(output.results[0], Lines({"1"}));
  EXPECT_EQ(output.columns[0][0].type, (Type{TypeId::VarChar, 255, 0, 0}));
}

TEST_F(StatementsTest, DefaultsFillWhatAnInsertLeavesOut) {
  EXPECT_EQ(Rows("SELECT FBrNo, FBomType, FParentID, FUseStatus FROM ICBom WHERE FInterID = 1002"),
            Lines({"0|0|NULL|1072"}));
}

TEST_F(StatementsTest, GroupsAndJoins) {
  EXPECT_EQ(Rows("SELECT a.FInterID, COUNT(*) n, SUM(b.FAuxQty) FROM ICBom a LEFT JOIN ICBOMChild b "
                 "ON a.FInterID = b.FInterID GROUP BY a.FInterID ORDER BY a.FInterID"),
            Lines({"1001|2|5.5000000000", "1002|1|NULL"}));
  EXPECT_EQ(Rows("SELECT DISTINCT FItemID FROM ICBom"), Lines({"5001"}));
  EXPECT_EQ(Rows("SELECT TOP 1 FInterID FROM ICBom ORDER BY FBomNumber DESC"), Lines({"1002"}));
}

TEST_F(StatementsTest, InsertFromSelectAndDelete) {
  EXPECT_EQ(Run("INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID) "
                "SELECT 1002, FEntryID, FItemID, FUnitID FROM ICBOMChild WHERE FInterID = 1001")
                .counts,
            std::vector<int64_t>({2}));
  EXPECT_EQ(Run("DELETE FROM ICBOMChild WHERE FInterID = 1002 AND FEntryID = 1").counts,
            std::vector<int64_t>({1}));
  EXPECT_EQ(Run("DELETE ICBOMChild").counts, std::vector<int64_t>({3}));
}

TEST_F(StatementsTest, ConstraintErrorsEndTheStatementAlone) {
  const Output output = Run("INSERT INTO ICBom (FInterID) VALUES (1003), (1001)\r\n"
                            "INSERT INTO ICBom (FInterID) VALUES (1004)");
  ASSERT_EQ(output.errors.size(), 1U);
  EXPECT_EQ(output.errors[0].number, 2627);
  EXPECT_STREQ(
      output.errors[0].what(),
      "Violation of PRIMARY KEY constraint 'pk_ICBom'. Cannot insert duplicate key in object 'dbo.ICBom'.");
  EXPECT_EQ(output.errors[0].severity, 14);
  EXPECT_EQ(output.errors[0].line, 1);
  EXPECT_EQ(Rows("SELECT FInterID FROM ICBom ORDER BY 1"), Lines({"1001", "1002", "1004"}));
  EXPECT_EQ(ErrorOf("INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID) VALUES (1001, 2, 1, 1)"),
            2627);
}

TEST_F(StatementsTest, NullsAndLengthsAreRefused) {
  const std::string text = ErrorText("\r\nUPDATE ICBom SET FBomNumber = NULL");
  EXPECT_TRUE(text.starts_with("515 2 Cannot insert the value NULL into column 'FBomNumber', table '"))
      << text;
  EXPECT_TRUE(text.ends_with(".dbo.ICBom'; column does not allow nulls. UPDATE fails.")) << text;
  EXPECT_EQ(ErrorOf("INSERT INTO ICBom (FInterID) VALUES (NULL)"), 515);
  EXPECT_EQ(ErrorOf("INSERT INTO ICBom (FBomNumber) VALUES ('x')"), 515);
  EXPECT_EQ(ErrorText("UPDATE ICBom SET FBrNo = '12345678901'"),
            "8152 1 String or binary data would be truncated.");
}

// Keys are unique when the statement has ended, not after each row.
TEST_F(StatementsTest, UpdatesThatShiftKeys) {
  Must("CREATE TABLE k (id INT NOT NULL PRIMARY KEY, r VARCHAR(5) NULL UNIQUE, n DECIMAL(28,10) NULL)"
       " INSERT INTO k VALUES (1, 'a', 1.5), (2, 'b', NULL), (3, 'c', 3)");
  EXPECT_EQ(Run("UPDATE k SET id = id + 1").counts, std::vector<int64_t>({3}));
  EXPECT_EQ(Run("UPDATE k SET r = CASE r WHEN 'a' THEN 'b' ELSE 'a' END WHERE r IN ('a', 'b')").counts,
            std::vector<int64_t>({2}));
  EXPECT_EQ(Rows("SELECT id, r, n FROM k ORDER BY id"),
            Lines({"2|b|1.5000000000", "3|a|NULL", "4|c|3.0000000000"}));
  EXPECT_EQ(ErrorOf("UPDATE k SET id = 7"), 2627);
  EXPECT_EQ(ErrorOf("UPDATE k SET r = 'c' WHERE id = 2"), 2627);
  EXPECT_EQ(ErrorOf("UPDATE k SET id = id + 1, n = 1 / (id - 4)"), 8134);
  EXPECT_EQ(ErrorOf("UPDATE k SET id = CASE id WHEN 2 THEN 3 WHEN 3 THEN NULL ELSE id END"), 515);
  EXPECT_EQ(Rows("SELECT SUM(id), COUNT(DISTINCT r) FROM k"), Lines({"9|3"}));
  // With a variable, a join that finds rows twice, and an identity that stays.
  Must("DECLARE @by INT SET @by = 1 UPDATE a SET id = a.id - @by FROM k a JOIN (SELECT 1 AS x UNION ALL "
       "SELECT 1) b ON "
       "b.x = @by");
  EXPECT_EQ(Rows("SELECT id, r FROM k ORDER BY id"), Lines({"1|b", "2|a", "3|c"}));
  Must("CREATE TABLE #o (i INT IDENTITY(5,1), pos INT NOT NULL) CREATE UNIQUE INDEX u ON #o (pos)"
       " INSERT INTO #o (pos) VALUES (1), (2), (3) UPDATE #o SET pos = 4 - pos");
  EXPECT_EQ(Rows("SELECT i, pos FROM #o ORDER BY i"), Lines({"5|3", "6|2", "7|1"}));
  // A child follows its parent's shifted key only if it is still right in the end.
  Must("CREATE TABLE c (k INT NOT NULL REFERENCES k) INSERT INTO c VALUES (2), (3) UPDATE k SET id = id + 1 "
       "WHERE id > 3");
  EXPECT_EQ(ErrorOf("UPDATE k SET id = id + 2"), 547);
  Must("UPDATE k SET id = 5 - id WHERE id IN (2, 3)");
  EXPECT_EQ(Rows("SELECT id, r FROM k ORDER BY id"), Lines({"1|b", "2|c", "3|a"}));
}

} // namespace
} // namespace tsql::test
