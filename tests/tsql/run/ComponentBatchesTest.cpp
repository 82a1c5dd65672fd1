// The longest batches that the component sends, whole: the group tree, the start-up of a change notice, the
// simplified lists over a global temporary table, and the wide joins of the ledgers.
#include "tests/tsql/EngineFixture.h"

namespace tsql::test {
namespace {

class ComponentBatchesTest : public EngineTest {
 protected:
  ComponentBatchesTest() {
    Must("CREATE TABLE ICBOMGroup (FInterID INT NOT NULL PRIMARY KEY, FParentID INT NOT NULL, FName "
         "VARCHAR(250),"
         " FNumber VARCHAR(250), FBootID INT NULL)");
    Must("INSERT INTO ICBOMGroup VALUES (1, 0, 'A', '01', 1), (2, 1, 'B', '01.01', 1), (3, 2, 'C', "
         "'01.01.01', 1),"
         " (4, 0, 'D', '02', 4)");
    Must(
        "CREATE TABLE ICBom (FBrNO VARCHAR(10) NOT NULL DEFAULT '0', FInterID INT NOT NULL PRIMARY KEY,"
        " FBOMNumber VARCHAR(300) NOT NULL DEFAULT '', FStatus INT NULL DEFAULT 0, FUseStatus INT DEFAULT "
        "1072,"
        " FVersion VARCHAR(300) NULL, FParentID INT NULL, FItemID INT NULL, FQty DECIMAL(28,10) DEFAULT 1,"
        " FYield DECIMAL(28,10) DEFAULT 100, FEnterTime DATETIME NULL, FTranType INT DEFAULT 50,"
        " FRoutingID INT DEFAULT 0, FBomType INT DEFAULT 0, FCustID INT DEFAULT 0, FCustItemID INT DEFAULT 0,"
        " FAccessories INT DEFAULT 0, FNote VARCHAR(1000) NULL, FUnitID INT DEFAULT 1,"
        " FAUXQTY DECIMAL(28,10) DEFAULT 1, FCheckID INT NULL, FCheckDate DATETIME NULL, FOperatorID INT "
        "NULL,"
        " FCheckerID INT NULL, FAudDate DATETIME NULL, FEcnInterId INT NULL)");
    Must("INSERT INTO ICBom (FInterID, FBOMNumber, FStatus, FParentID, FItemID) VALUES (10, 'BOM10', 1, 3, "
         "100),"
         " (11, 'BOM11', 1, 4, 100), (12, 'BOM12', 0, 4, 101)");
    const std::string lineColumns =
        "FBrNO VARCHAR(10) NOT NULL DEFAULT '0', FEntryID INT NOT NULL, FInterID INT NOT NULL, FItemID INT "
        "NOT NULL,"
        " FAuxQty DECIMAL(28,10) NOT NULL DEFAULT 0, FQty DECIMAL(28,10) NOT NULL DEFAULT 0,"
        " FScrap DECIMAL(28,10) NOT NULL DEFAULT 0, FOperID INT NOT NULL DEFAULT 0, FMachinePos "
        "VARCHAR(1000) NULL,"
        " FNote VARCHAR(1000) NULL, FMaterielType INT NOT NULL DEFAULT 371, FMarshalType INT NOT NULL "
        "DEFAULT 385,"
        " FPercent DECIMAL(28,10) NOT NULL DEFAULT 100, FOffSetDay DECIMAL(28,10) NOT NULL DEFAULT 0,"
        " FBackFlush INT NOT NULL DEFAULT 1059, FStockID INT NULL DEFAULT 0, FSPID INT NOT NULL DEFAULT 0,"
        " FSupply SMALLINT NOT NULL DEFAULT 0, FUnitID INT NOT NULL DEFAULT 0";
    Must("CREATE TABLE ICBomChild (" + lineColumns +
         ", FBeginDay DATETIME NULL DEFAULT '1900-01-01', FOperSN INT NULL DEFAULT 0, PRIMARY KEY (FInterID, "
         "FEntryID))");
    Must("INSERT INTO ICBomChild (FInterID, FEntryID, FItemID, FAuxQty, FUnitID) VALUES"
         " (10, 1, 201, 1, 1), (10, 2, 202, 2, 1), (10, 3, 203, 3, 1), (11, 1, 204, 1, 1)");
    Must("CREATE TABLE IcEcnEntry (" + lineColumns + ", FChildID INT NOT NULL, FChangeType INT NOT NULL)");
    Must("CREATE TABLE IcEcn (FInterID INT NOT NULL PRIMARY KEY, FStatus INT, FBomInterID INT, FCBomInterID "
         "INT,"
         " FCBomNumber VARCHAR(300), FStarUperID INT, FStarUpDate DATETIME)");
    Must("INSERT INTO IcEcn VALUES (77, 1, 10, 0, 'NEW10', NULL, NULL)");
    Must("INSERT INTO IcEcnEntry (FInterID, FEntryID, FItemID, FAuxQty, FChildID, FChangeType) VALUES"
         " (77, 1, 202, 2, 2, 11023), (77, 2, 303, 33, 3, 11022), (77, 3, 400, 4, 0, 11021)");
    Must("CREATE TABLE ICMaxNum (FTableName VARCHAR(50), FMaxNum INT) INSERT INTO ICMaxNum VALUES ('ICBOM', "
         "41)");
    Must("CREATE TABLE t_ICItem (FItemID INT NOT NULL PRIMARY KEY, FNumber VARCHAR(80), FShortNumber "
         "VARCHAR(80),"
         " FName VARCHAR(255), FModel VARCHAR(255), FErpClsID INT)");
    Must("INSERT INTO t_ICItem VALUES (100, '1.100', '100', 'Chair', 'C', 2), (101, '1.101', '101', 'Table', "
         "NULL, 5)");
    session_->SetNow(DateTime{36524, 100});
  }
};

constexpr const char* kGroupTree =
    "SET NOCOUNT ON \r\n\r\n--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 "
    "\r\n"
    "CREATE TABLE #InitGroup  ( \r\nFInterID       INT         NOT NULL,             -- 组别内码 \r\n"
    "FParentID      INT         NOT NULL,             -- 上级组内码 \r\n"
    "FName          VARCHAR(250)    NULL,             -- 组别名称 \r\n"
    "FNumber        VARCHAR(250)    NULL,             -- 组别编码 \r\n"
    "FBootID        INT             NULL,             -- 组别的根内码 \r\n) \r\n"
    "\r\nINSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) \r\n"
    "SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup \r\n"
    "CREATE TABLE #GroupData \r\n(        FBootID         INT             NULL, \r\n"
    "         FIndex          INT             NOT NULL, \r\n         FInterID        INT             NOT "
    "NULL, \r\n"
    "         FParentID       INT             NOT NULL, \r\n         FName           VARCHAR(200)    NOT "
    "NULL, \r\n"
    "         FNumber         VARCHAR(200)    NOT NULL  \r\n) \r\n\r\n"
    "CREATE TABLE #temp \r\n(        FIndex          INT             NOT NULL, \r\n"
    "         FInterID        INT             NOT NULL, \r\n         FParentID       INT             NOT "
    "NULL, \r\n"
    "         FName           VARCHAR(200)    NOT NULL, \r\n         FNumber         VARCHAR(200)    NOT "
    "NULL  \r\n) \r\n"
    "DECLARE @FInterID INT \r\nDECLARE @FParentID INT \r\nDECLARE @Index INT \r\n\r\n"
    "WHILE EXISTS(SELECT 1 FROM #InitGroup WHERE FParentID > 0) \r\nBEGIN \r\n"
    "         SELECT TOP 1 @FInterID = FInterID, @FParentID = FParentID FROM #InitGroup WHERE FParentID > 0 "
    "\r\n\r\n"
    "         INSERT INTO #temp (FIndex, FInterID, FParentID, FName, FNumber) \r\n"
    "         SELECT 0, FInterID, FParentID, FName, FNumber \r\n         FROM #InitGroup\r\n"
    "         WHERE FInterID = @FInterId AND FParentID = @FParentID AND FParentID > 0 \r\n\r\n"
    "         SET @Index = 0 \r\n"
    "         WHILE EXISTS(SELECT MIN(FParentID) FROM #temp HAVING MIN(FParentID) <> 0) \r\n         BEGIN "
    "\r\n\r\n"
    "                 INSERT INTO #temp(FIndex, FInterID, FParentID, FName, FNumber) \r\n"
    "                 SELECT @Index +1, t2.FInterID, t2.FParentID, t2.FName, t2.FNumber \r\n"
    "                 FROM #temp t1 INNER JOIN IcBomGroup t2 ON t1.FParentID = t2.FInterID \r\n"
    "                 WHERE t1.FIndex = @Index \r\n\r\n                 SET @Index = @Index + 1 \r\n\r\n     "
    "    End \r\n"
    "         INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) \r\n"
    "         SELECT FIndex, FInterID, FParentID, FName, FNumber \r\n         FROM #temp \r\n\r\n"
    "         DELETE FROM #temp \r\n\r\n"
    "         DELETE t1 FROM #InitGroup t1 INNER JOIN #GroupData t2 ON t1.FInterID = t2.FInterID \r\n        "
    " End \r\n\r\n"
    "INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) \r\n"
    "SELECT 0, FInterID, FParentID, FName, FNumber \r\nFROM #InitGroup \r\n\r\n"
    "UPDATE t1 SET t1.FBootID = t2.FBootID \r\n"
    "FROM #GroupData t1 INNER JOIN ICBomGroup t2 ON t1.FInterID = t2.FInterID \r\n\r\n"
    "UPDATE t1 SET t1.FIndex = t2.FMaxIndex \r\nFROM #GroupData t1 \r\n"
    "INNER JOIN (SELECT MAX(FIndex) FMaxIndex, FInterID FROM #GroupData GROUP BY FInterID) t2 "
    "ON t1.FInterID = t2.FInterID \r\n\r\n--返回结果 \r\n"
    "SELECT 1 AS FType, FRelative = CASE WHEN FParentID = 0 THEN 'qa' ELSE 'BOMGROUP ' + CAST(FParentID AS "
    "VARCHAR(10)) END, \r\nFinterID AS FKey, FNumber +'('+ FName+')' AS FText, 1 AS FImgNormal, "
    "2 AS FImgClick,FNumber AS FTag FROM #GroupData ORDER BY FBootId, FIndex DESC \r\n\r\n"
    "DROP TABLE #InitGroup \r\nDROP TABLE #GroupData \r\nDROP TABLE #temp \r\n\r\n";

TEST_F(ComponentBatchesTest, GroupTree) {
  // Group 2 is walked first (2, then its root 1), then 3 (3, 2, 1): 1 and 2 come twice, once a path.
  // The largest index of 1 is 2, of 2 it is 1. Group 4 is a root without a path.
  for (int i = 0; i < 2; ++i) {
    const Output output = Run(kGroupTree);
    ASSERT_TRUE(output.errors.empty()) << output.errors[0].number << " " << output.errors[0].what();
    EXPECT_TRUE(output.counts.empty());
    ASSERT_EQ(output.results.size(), 1U);
    std::vector<std::string> keys;
    for (const std::string& row : output.results[0]) keys.push_back(row.substr(2, row.find('(') - 2));
    EXPECT_EQ(keys, Lines({"qa|1|01", "qa|1|01", "BOMGROUP 1|2|01.01", "BOMGROUP 1|2|01.01",
                           "BOMGROUP 2|3|01.01.01", "qa|4|02"}));
    EXPECT_EQ(output.results[0].back(), "1|qa|4|02(D)|1|2|02");
    EXPECT_EQ(output.columns[0][1].name, "FRelative");
  }
}

std::string TemporaryLines(const char* name, const char* entry) {
  return std::string("CREATE TABLE ") + name + " (\r\n FBrNo VarChar(10) NOT NULL, --组织机构代码\r\n" +
         entry +
         "\r\n FInterID INT DEFAULT 0 NOT NULL,\r\n FItemID INT NOT NULL,\r\n FAuxQty Decimal(28,10) DEFAULT "
         "0 NOT NULL,"
         "\r\n FQty Decimal(28,10) DEFAULT 0 NOT NULL,\r\n FScrap Decimal(28,10) NOT NULL,\r\n FOperID INT "
         "DEFAULT 0 NOT NULL,"
         "\r\n FMachinePos VARCHAR(1000) NULL,\r\n FNote VARCHAR(1000) NULL,\r\n FMaterielType INT DEFAULT "
         "371 NOT NULL,"
         "\r\n FMarshalType INT DEFAULT 385 NOT NULL,\r\n FPercent Decimal(28,10) DEFAULT 100 NOT NULL,"
         "\r\n FOffSetDay Decimal(28,10) DEFAULT 0 NOT NULL,\r\n FBackFlush INT DEFAULT 1059 NOT NULL,"
         "\r\n FStockID INT DEFAULT 0 NULL,\r\n FSPID INT DEFAULT 0 NOT NULL,\r\n FSupply SMALLINT DEFAULT 0 "
         "NOT NULL,"
         "\r\n FUnitID INT DEFAULT 0 NOT NULL)\r\n\r\n";
}

TEST_F(ComponentBatchesTest, ChangeNoticeStartUp) {
  const std::string columns =
      "FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType,"
      " FPercent,\r\n FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID";
  const std::string all = "FBrNO, FEntryId, FInterID, " + columns;
  const std::string batch =
      "Set NoCount On \r\n" + TemporaryLines("#Temp", " FEntryID INT NOT NULL,") +
      TemporaryLines("#ICBomChild", " FEntryID INT NOT NULL IDENTITY(1,1),") + "insert into #Temp (" + all +
      ")\r\nselect " + all +
      " from icbomchild where finterid=10\r\n\r\n"
      "delete from #Temp where FEntryID in (\r\n   select FChildID from IcEcnEntry where FInterId = 77 and  "
      "FChangeType in "
      "(11022,11023))\r\n\r\ninsert into #Temp (" +
      all +
      ")\r\n"
      "select t1.FBrNO, t1.FChildID, t2.FBomInterID, t1.FItemID, t1.FAuxQty, t1.FQty, t1.FScrap, t1.FOperId, "
      "t1.FMachinepos, t1.FNote, t1.FMaterielType, t1.FMarshalType, t1.FPercent,\r\n"
      "   t1.FOffSetDay , t1.FBackFlush, t1.FStockID, t1.FSPID, t1.FSupply, t1.FUnitID \r\n"
      "from IcEcn t2 Left Join IcEcnEntry t1 on t2.FInterID=t1.FInterID where t2.FInterid=77 and "
      "t1.FChangeType <> 11023\r\n"
      "\r\ninsert into #ICBomChild (FBrNO, " +
      columns + ")\r\nselect FBrNO, " + columns +
      " from #Temp order by FEntryId\r\n"
      "drop table #Temp \r\n\r\nDECLARE @InterID INT\r\n"
      "SELECT @InterID = Max(FMaxNum) + 1 FROM IcMaxNum WHERE FTableName = 'ICBOM' \r\n"
      "update #ICBomChild set FInterID = @InterID\r\nUPDATE IcMaxNum Set FMaxNum = @InterId Where FTableName "
      "= 'IcBom' \r\n"
      "\r\nupdate t1 set FUseStatus=1073 from icbom t1 left join icbom t2 on t1.fitemid = t2.fitemid where "
      "t2.finterid=10\r\n"
      "\r\ninsert into IcBom (FBrNO, FInterID, FBOMNumber,FStatus, "
      "FUseStatus,FVersion,FParentID,FItemID,FQty,FYield,"
      "FEnterTime,FTranType,FRoutingID,FBomType,\r\n   "
      "FCustID,FCustItemID,FAccessories,FNote,FUnitID,FAUXQTY)\r\n"
      "select "
      "FBrNO,@InterId,'',1,1072,FVersion,FParentID,FItemID,FQty,FYield,Convert(Varchar(10),Getdate(),120),"
      "FTranType,"
      "FRoutingID,FBomType,\r\n   FCustID , FCustItemID, FAccessories, FNote, FUnitID, FAUXQTY\r\nFrom IcBom "
      "Where FInterID = 10"
      "\r\n\r\nupdate t1 set FStatus = 2, FCBomInterID = @InterId, FStarUperID = 5, FStarUpDate = "
      "Convert(Varchar(10),Getdate(),120) from IcEcn t1 where t1.FInterID=77\r\n"
      "\r\nupdate t1 set t1.FBomNumber=t2.FCBomNumber, t1.FEcnInterId = 77 from ICBom t1, IcEcn t2 where "
      "t1.FInterID = "
      "t2.FCBomInterID and t1.FInterID=@InterID\r\n"
      "\r\nupdate t1 set FCheckID=5, FCheckDate = Convert(Varchar(10),Getdate(),120), "
      "FOperatorID=5,FCheckerID=5, "
      "FAudDate=Convert(Varchar(10),Getdate(),120)\r\nfrom IcBom t1 where FInterId = @InterID\r\n"
      "\r\ninsert into IcBomChild (" +
      all + ")\r\nselect " + all + " from #IcBomChild\r\ndrop table #ICBomChild";
  const Output output = Run(batch);
  for (const Error& error : output.errors)
    ADD_FAILURE() << error.number << " " << error.line << " " << error.what();
  // The added line sorts first, line 2 is gone, line 3 is the notice's.
  EXPECT_EQ(Rows("SELECT FEntryID, FItemID, FAuxQty FROM ICBomChild WHERE FInterID = 42 ORDER BY FEntryID"),
            Lines({"1|400|4.0000000000", "2|201|1.0000000000", "3|303|33.0000000000"}));
  EXPECT_EQ(
      Rows("SELECT FInterID, FBOMNumber, FStatus, FUseStatus, FEcnInterId, FCheckerID, FEnterTime FROM ICBom "
           "ORDER BY FInterID"),
      Lines({"10|BOM10|1|1073|NULL|NULL|NULL", "11|BOM11|1|1073|NULL|NULL|NULL",
             "12|BOM12|0|1072|NULL|NULL|NULL", "42|NEW10|1|1072|77|5|36524:0"}));
  EXPECT_EQ(Rows("SELECT FMaxNum FROM ICMaxNum"), Lines({"42"}));

  Must("delete from IcBom where FInterId in (select FCBomInterId from IcEcn where FInterId = 77)\r\n\r\n"
       "update t1 set FStatus = 1, FCBomInterID = 0, FStarUperID = '', FStarUpDate = NULL from IcEcn t1 "
       "where FInterId = 77");
  EXPECT_EQ(Rows("SELECT FStatus, FCBomInterID, FStarUperID, FStarUpDate FROM IcEcn"), Lines({"1|0|0|NULL"}));
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM ICBom WHERE FInterID = 42"), Lines({"0"}));
}

TEST_F(ComponentBatchesTest, PercentageCheck) {
  const char* batch =
      "SET NOCOUNT ON \r\nIF EXISTS (SELECT 1 FROM ICEcn t1 INNER JOIN IcBom t2 ON t1.FBomInterID = "
      "t2.FInterId WHERE "
      "t1.FInterID = 77 AND t2.FBomType IN (0,4)) \r\nBEGIN \r\n     SELECT FSumFPercent_BOM + "
      "FSumFPercent_ECN FROM \r\n"
      "     (SELECT ISNULL(SUM(ISNULL(b1.FPercent,0)),0) AS FSumFPercent_BOM FROM ICEcn a1 INNER JOIN "
      "ICBomChild b1 ON "
      "a1.FBomInterID = b1.FInterId \r\n     WHERE a1.FInterID = 77 AND FEntryID NOT IN \r\n"
      "     (SELECT t3.FEntryId FROM ICECN t1 \r\n     INNER JOIN ICBom t2 ON t1.FBomInterID = t2.FInterID "
      "\r\n"
      "     INNER JOIN ICBomChild t3 ON t2.FInterId = t3.FInterID \r\n"
      "     INNER JOIN ICEcnEntry t4 ON t3.FEntryID = t4.FChildID AND t1.FInterID = t4.FInterID \r\n"
      "     WHERE t1.FInterID = 77)) v1 \r\n, \r\n"
      "     (SELECT ISNULL(SUM(ISNULL(t2.FPercent,0)),0) AS FSumFPercent_ECN FROM ICEcn t1 INNER JOIN "
      "ICEcnEntry t2 ON "
      "t1.FInterId = t2.FInterID \r\n     WHERE t1.FInterId = 77 AND t2.FChangeType <> 11023 ) v2 \r\nEnd "
      "\r\nELSE \r\n"
      "     SELECT -1 ";
  // Line 1 alone is untouched (100), the added and the altered line bring 200.
  EXPECT_EQ(Rows(batch), Lines({"300.0000000000"}));
}

constexpr const char* kItems =
    "SET NOCOUNT ON\r\nDECLARE @Level INT\r\nSELECT @Level=1\r\nCREATE TABLE ##BomItemID(FInterID INT NOT "
    "NULL,FItemID INT "
    "NOT NULL,FLevel INT NOT NULL,FParentID INT  NULL)\r\nINSERT INTO "
    "##BomItemID(FParentID,FInterID,FItemID,FLevel)\r\n"
    "SELECT t1.FParentID, t1.FInterID, t1.FItemID, @Level FROM ICBOM t1 Left Join t_IcItem t2 On t1.FItemID "
    "= t2.FItemID  "
    "WHERE t1.FInterID < 100\r\n and t2.FErpClsID <> 5 and t1.FParentID is not  null WHILE EXISTS(SELECT * "
    "FROM ICBOMGroup "
    "INNER JOIN ##BomItemID ON ICBOMGroup.FInterID =##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level "
    "AND "
    "##BomItemID.FParentID<>0)\r\nBEGIN\r\nINSERT INTO ##BomItemID(FParentID,FInterID,FItemID,FLevel)\r\n"
    "SELECT ICBOMGroup.FParentID,ICBOMGroup.FInterID,0,@Level+1 FROM ICBOMGroup INNER JOIN ##BomItemID ON "
    "ICBOMGroup.FInterID =##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level AND "
    "##BomItemID.FParentID<>0\r\n"
    "SELECT @Level=@Level+1\r\nEnd \r\nSET NOCOUNT OFF\r\n";

constexpr const char* kSimplifiedList =
    "SELECT 0 AS FType,'' AS FRelative,'ga' AS FKey,'BOM' AS FText,1 AS FImgNormal,2 AS FImgClick,'0' AS "
    "FTag,'' AS "
    "FAdditional,'' AS FNumber,'' AS FName,'' AS FBomNumber,0 AS FBomType,0 AS FItemID,0 AS FInterID,0 AS "
    "FCustID"
    " UNION SELECT t1.* FROM (SELECT * FROM (SELECT 1 AS FType,CASE FParentID WHEN 0 THEN 'ga' ELSE "
    "'gb'+CONVERT(VARCHAR,FParentID) END AS FRelative,'gb'+CONVERT(VARCHAR,FInterID) AS "
    "FKey,FNumber+'('+FName+')' AS FText,"
    "1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,'' AS FAdditional,FNumber,FName,'' AS FBomNumber,0 AS "
    "FBomType,0 AS "
    "FItemID,FInterID,0 AS FCustID FROM ICBomGroup UNION SELECT 1 AS FType,CASE a.FParentID WHEN 0 THEN 'ga' "
    "ELSE (CASE WHEN "
    "a.FBomType<>3 THEN 'gb'+CONVERT(VARCHAR,a.FParentID) ELSE 'gc'+CONVERT(VARCHAR,a.FParentID) END) END AS "
    "FRelative,"
    "'gc'+CONVERT(VARCHAR,a.FInterID) AS FKey,a.FBOMNumber+'('+b.FName+')' AS FText,CASE WHEN a.FBomType=0 "
    "THEN (CASE WHEN "
    "a.FUseStatus=1072 THEN 13 ELSE 3 END) ELSE (CASE WHEN a.FBomType=1 THEN 15 ELSE (CASE WHEN a.FBomType=2 "
    "THEN 18 ELSE 17 "
    "END )END ) END AS FImgNormal,3 AS FImgClick,CONVERT(VARCHAR,a.FItemID) AS FTag,ISNULL(b.FModel,'') AS "
    "FAdditional,"
    "b.FNumber,b.FName,a.FBOMNumber,a.FBomType,a.FItemID,a.FInterID,a.FCustID FROM ICBom a,t_ICItem b  WHERE "
    "a.FItemID=b.FItemID and a.Fstatus=1 )x1)t1,(SELECT DISTINCT * FROM ##BomItemID) t2 WHERE (t1.FItemID<>0 "
    "AND t2.FLevel=1 "
    "AND t1.FInterID=t2.FInterID) OR (t1.FItemID=0 AND t2.FLevel>1 AND t1.FInterID=t2.FInterID) ORDER BY "
    "FKey";

TEST_F(ComponentBatchesTest, SimplifiedList) {
  Must(kItems);
  EXPECT_EQ(ErrorOf(kItems), 2714);
  const std::vector<std::string> rows = Rows(kSimplifiedList);
  std::vector<std::string> keys;
  keys.reserve(rows.size());
  for (const std::string& row : rows) keys.push_back(row.substr(0, row.find('(')));
  EXPECT_EQ(keys, Lines({"0||ga|BOM|1|2|0|||||0|0|0|0", "1|ga|gb1|01", "1|gb1|gb2|01.01",
                         "1|gb2|gb3|01.01.01", "1|ga|gb4|02", "1|gb3|gc10|BOM10", "1|gb4|gc11|BOM11"}));
  Must("DROP TABLE ##BomItemID");
}

TEST_F(ComponentBatchesTest, GroupInsert) {
  const auto insert = [this](int parent, const char* number) {
    return Run(
        " Set NoCount on\n Declare @NewInterId int\n if exists(SELECT FMaxNum FROM ICMaxNum WHERE "
        "FTableName='ICBOMGroup') \n     SELECT @NewInterId= FMaxNum+1 FROM ICMaxNum WHERE "
        "FTableName='ICBOMGroup'\n"
        " else \n     Select @NewInterId=1\n Declare @ParentId int\n Declare @BootId int\n Select "
        "@ParentId=" +
        std::to_string(parent) +
        "\n if @ParentId=0 \n     Select @BootId=@NewInterId\n else\n     SELECT @BootId=FBootID FROM "
        "IcBomGroup WHERE "
        "FInterID = @ParentId\n INSERT INTO ICBomGroup (FInterID,FNumber,FName,FParentID,FBootID) \n VALUES "
        "(@NewInterId,'" +
        number +
        "','n',@ParentId,@BootId)\n UPDATE ICMaxNum SET FMaxNum=@NewInterId WHERE FTableName='ICBOMGroup'\n"
        " Set NoCount Off\n Select @NewInterId as NewInterId \n");
  };
  Must("INSERT INTO ICMaxNum VALUES ('ICBOMGroup', 41)");
  EXPECT_EQ(insert(0, "9").results, std::vector<Lines>({{"42"}}));
  EXPECT_EQ(insert(42, "9.1").results, std::vector<Lines>({{"43"}}));
  EXPECT_EQ(Rows("SELECT FInterID, FParentID, FBootID FROM ICBOMGroup WHERE FInterID > 40 ORDER BY 1"),
            Lines({"42|0|42", "43|42|42"}));
  EXPECT_EQ(insert(0, "it's").errors.at(0).number, 102);
}

TEST_F(ComponentBatchesTest, GuardedDelete) {
  const auto remove = [this](const std::string& filter) {
    return Rows(" if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and " + filter +
                ") \n Begin set nocount on\n DELETE FROM ICBom WHERE " + filter +
                "\n     set nocount off\n     Select 1 as Succ\n End\n Else\n     Select 0 as Succ\n");
  };
  Must("UPDATE ICBom SET FCheckerID = 5 WHERE FInterID = 10");
  EXPECT_EQ(remove("FInterID IN (10,12)"), Lines({"0"}));
  EXPECT_EQ(remove("FInterID = 12"), Lines({"1"}));
  EXPECT_EQ(Rows("SELECT FInterID FROM ICBom ORDER BY 1"), Lines({"10", "11"}));
}

TEST_F(ComponentBatchesTest, LineLedger) {
  Must("CREATE TABLE t_Stock (FItemID INT, FName VARCHAR(80)) INSERT INTO t_Stock VALUES (7, 'Main')");
  Must("UPDATE ICBomChild SET FStockID = 7, FOperSN = 30 WHERE FEntryID = 2 UPDATE ICBomChild SET FStockID = "
       "NULL "
       "WHERE FEntryID = 3 INSERT INTO t_ICItem SELECT FItemID, 'n', 's', 'i', NULL, 1 FROM ICBomChild WHERE "
       "FInterID = 10");
  EXPECT_EQ(
      Rows(
          "SELECT a.FEntryID,b.FShortNumber AS FNumber,(case a.FOperSN when 0 then '' else cast(a.FOperSN as "
          "varchar(255)) end) FOperSN,\r\nCASE a1.FBomType WHEN 0 THEN (CASE WHEN (a.FBeginDay BETWEEN "
          "'1899-01-01' AND  "
          "'2000-01-01') THEN 0  WHEN ('1999-01-01' >= a.FBeginDay AND '2001-01-01' <= a.FBeginDay) THEN 0 "
          "ELSE 1 END) "
          "\r\n ELSE 0 END \r\n AS FAlterBackColor, '253, 223, 223' AS FBackColor, CASE a.FBackFlush WHEN "
          "1059 THEN '否' "
          "ELSE '是' END AS FBackFlush,c.FName AS FStockID\r\n FROM IcBom a1 INNER JOIN ICBOMChild a ON "
          "a1.FinterId = "
          "a.FinterID \r\ninner join t_ICItem b on a.FItemID = b.FItemID\r\nleft join (SELECT FItemID,FName "
          "FROM t_Stock "
          "UNION SELECT 0 AS FItemID,'' AS FName) c on ISNULL(a.FStockID,0) = c.FItemID WHERE a.FInterID = "
          "10 "
          "ORDER BY a.FEntryID"),
      Lines({"1|s||0|253, 223, 223|否|", "2|s|30|0|253, 223, 223|否|Main", "3|s||0|253, 223, 223|否|"}));
}

TEST_F(ComponentBatchesTest, BillNumberRule) {
  Must("CREATE TABLE ICBillNo (FBillID INT, FPreLetter VARCHAR(10), FSufLetter VARCHAR(10), FCurNo INT NULL,"
       " FFormat VARCHAR(20)) INSERT INTO ICBillNo VALUES (53, 'CB', NULL, NULL, '000000')");
  EXPECT_EQ(Rows("select FPreLetter, FSufLetter, FCurNo = isNull(FCurNo, 0) + 1, FFormat\r\n"
                 "from ICBillNo WITH(UPDLOCK) where FBillID = 53"),
            Lines({"CB|NULL|1|000000"}));
}

} // namespace
} // namespace tsql::test
