#include "src/view/GroupTree.h"

#include <array>
#include <span>

#include "src/view/BomFilter.h"

namespace mbom {
namespace {

void Append(Sql& batch, std::span<const wchar_t* const> lines) {
  for (const wchar_t* line : lines) batch << line << L"\r\n";
}

// clang-format off

constexpr std::array kStartingGroups = {
    L"SET NOCOUNT ON ",
    L"",
    L"--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 ",
    L"CREATE TABLE #InitGroup  ( ",
    L"FInterID       INT         NOT NULL,             -- 组别内码 ",
    L"FParentID      INT         NOT NULL,             -- 上级组内码 ",
    L"FName          VARCHAR(250)    NULL,             -- 组别名称 ",
    L"FNumber        VARCHAR(250)    NULL,             -- 组别编码 ",
    L"FBootID        INT             NULL,             -- 组别的根内码 ",
    L") ",
};

constexpr std::array kEveryGroup = {
    L"",
    L"INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) ",
    L"SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup ",
};

constexpr std::array kGroupsOfMatchingBoms = {
    L"",
    L"INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) ",
    L"SELECT DISTINCT t3.FInterID, t3.FParentID, t3.FName, t3.FNumber, t3.FBootID ",
    L"FROM IcBom t1 ",
    L"INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID ",
    L"INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID ",
    L"INNER JOIN t_IcItem t4 ON t1.FItemID = t4.FItemID ",
    L"INNER JOIN t_IcItem t7 ON t2.FItemID = t7.FItemID ",
    L"LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID ",
    L"LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID ",
};

constexpr std::array kSelectedGroups = {
    L"--如果过滤界面存在组信息,那么该组不考虑过滤界面下面的信息，将被自动选出 ",
    L"INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) ",
    L"SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup ",
};

constexpr std::array kWalkToTheRoots = {
    L"--#GroupData表将保存最后的结果 ",
    L"CREATE TABLE #GroupData ",
    L"(        FBootID         INT             NULL, ",
    L"         FIndex          INT             NOT NULL, ",
    L"         FInterID        INT             NOT NULL, ",
    L"         FParentID       INT             NOT NULL, ",
    L"         FName           VARCHAR(200)    NOT NULL, ",
    L"         FNumber         VARCHAR(200)    NOT NULL  ",
    L") ",
    L"",
    L"--#temp表保存某个组向上回溯根结点的轨迹，回溯过程中的所有组都将在该表中出现，每次回溯完成，该表被清空 ",
    L"CREATE TABLE #temp ",
    L"(        FIndex          INT             NOT NULL, ",
    L"         FInterID        INT             NOT NULL, ",
    L"         FParentID       INT             NOT NULL, ",
    L"         FName           VARCHAR(200)    NOT NULL, ",
    L"         FNumber         VARCHAR(200)    NOT NULL  ",
    L") ",
    L"",
    L"DECLARE @FInterID INT ",
    L"DECLARE @FParentID INT ",
    L"DECLARE @Index INT ",
    L"",
    L"--循环开始，只选择初始条件中有上级的BOM数据进行筛选，同时排除它已经进入#GroupData的条件 ",
    L"WHILE EXISTS(SELECT 1 FROM #InitGroup WHERE FParentID > 0) ",
    L"BEGIN ",
    L"         SELECT TOP 1 @FInterID = FInterID, @FParentID = FParentID FROM #InitGroup WHERE FParentID > 0 ",
    L"",
    L"         --选择一个需要滚动查询的组进行向上查找 ",
    L"         INSERT INTO #temp (FIndex, FInterID, FParentID, FName, FNumber) ",
    L"         SELECT 0, FInterID, FParentID, FName, FNumber ",
    L"         FROM #InitGroup",
    L"         WHERE FInterID = @FInterId AND FParentID = @FParentID AND FParentID > 0 ",
    L"",
    L"         SET @Index = 0 ",
    L"         --回溯开始，结束条件是回溯到根结点 ",
    // The second condition ends the walk of a group that has no root, its parent missing or its parents going
    // in a circle: the last pass has found no group that was not on the path before.
    L"         WHILE EXISTS(SELECT MIN(FParentID) FROM #temp HAVING MIN(FParentID) <> 0) "
    L"AND EXISTS(SELECT 1 FROM #temp WHERE FIndex = @Index "
    L"AND FInterID NOT IN (SELECT FInterID FROM #temp WHERE FIndex < @Index)) ",
    L"         BEGIN ",
    L"",
    L"                 --把当前#temp表中组的上级组插入结果表中 ",
    L"                 INSERT INTO #temp(FIndex, FInterID, FParentID, FName, FNumber) ",
    L"                 SELECT @Index +1, t2.FInterID, t2.FParentID, t2.FName, t2.FNumber ",
    L"                 FROM #temp t1 INNER JOIN IcBomGroup t2 ON t1.FParentID = t2.FInterID ",
    L"                 WHERE t1.FIndex = @Index ",
    L"",
    L"                 SET @Index = @Index + 1 ",
    L"",
    L"         End ",
    L"",
    L"         --将刚才#temp的数据，也就是刚才得到的组轨迹插入结果表中 ",
    L"         INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) ",
    L"         SELECT FIndex, FInterID, FParentID, FName, FNumber ",
    L"         FROM #temp ",
    L"",
    L"         --清空临时表，为下一个组的轨迹做准备 ",
    L"         DELETE FROM #temp ",
    L"",
    L"         --将初始化表中的组进行筛选，凡是已经加入结果表的组将不再被遍历，应该删除 ",
    L"         DELETE t1 FROM #InitGroup t1 INNER JOIN #GroupData t2 ON t1.FInterID = t2.FInterID ",
    L"         End ",
    L"",
};

constexpr std::array kRootsAndFixUps = {
    L"--将所属根结点加入 ",
    L"INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) ",
    L"SELECT 0, FInterID, FParentID, FName, FNumber ",
    L"FROM #InitGroup ",
    L"",
    L"--更新FBOOTID ",
    L"UPDATE t1 SET t1.FBootID = t2.FBootID ",
    L"FROM #GroupData t1 INNER JOIN ICBomGroup t2 ON t1.FInterID = t2.FInterID ",
    L"",
    L"--更正结点在结果中的最大顺序码，因为同一结点(比如根结点)，可能查询到的顺序号不同，最大的顺序号是正确的 ",
    L"UPDATE t1 SET t1.FIndex = t2.FMaxIndex ",
    L"FROM #GroupData t1 ",
    L"INNER JOIN (SELECT MAX(FIndex) FMaxIndex, FInterID FROM #GroupData GROUP BY FInterID) t2 "
    L"ON t1.FInterID = t2.FInterID ",
    L"",
    L"--返回结果 ",
};

constexpr std::array kTreeRows = {
    L"SELECT 1 AS FType, FRelative = CASE WHEN FParentID = 0 THEN 'qa' "
    L"ELSE 'BOMGROUP ' + CAST(FParentID AS VARCHAR(10)) END, ",
    L"FinterID AS FKey, FNumber +'('+ FName+')' AS FText, 1 AS FImgNormal, "
    L"2 AS FImgClick,FNumber AS FTag FROM #GroupData ORDER BY FBootId, FIndex DESC ",
    L"",
};

constexpr std::array kGroupRows = {
    L"SELECT DISTINCT * FROM #GroupData ORDER BY FBootId, FIndex DESC ",
    L"",
};

constexpr std::array kCleanUp = {
    L"DROP TABLE #InitGroup ",
    L"DROP TABLE #GroupData ",
    L"DROP TABLE #temp ",
    L"",
};

// clang-format on

} // namespace

Sql GroupTreeBatch(const Vector& groups, const Dictionary& filter, bool bLongNumber, bool bBomView) {
  Sql batch;
  Append(batch, kStartingGroups);
  const std::wstring inList = BuildGroupInList(groups, false);
  if (inList.empty()) {
    Append(batch, kEveryGroup);
  } else {
    Append(batch, kGroupsOfMatchingBoms);
    batch << BuildBomFilterWhere(filter, bLongNumber) << L"\r\n" << inList << L"\r\n\r\n";
    Append(batch, kSelectedGroups);
    batch << L" WHERE FInterID IN (" << GroupIds(groups, false) << L")\r\n\r\n\r\n";
  }
  Append(batch, kWalkToTheRoots);
  Append(batch, kRootsAndFixUps);
  if (bBomView)
    Append(batch, kTreeRows);
  else
    Append(batch, kGroupRows);
  Append(batch, kCleanUp);
  return batch;
}

} // namespace mbom
