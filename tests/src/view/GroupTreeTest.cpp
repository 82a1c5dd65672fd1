// The batch of the group tree: its text to the character, and what it finds.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/src/view/BrowserData.h"
#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// clang-format off
constexpr wchar_t kHead[] = LR"sql(SET NOCOUNT ON 

--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 
CREATE TABLE #InitGroup  ( 
FInterID       INT         NOT NULL,             -- 组别内码 
FParentID      INT         NOT NULL,             -- 上级组内码 
FName          VARCHAR(250)    NULL,             -- 组别名称 
FNumber        VARCHAR(250)    NULL,             -- 组别编码 
FBootID        INT             NULL,             -- 组别的根内码 
) 
)sql";

constexpr wchar_t kEveryGroup[] = LR"sql(
INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) 
SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup 
)sql";

constexpr wchar_t kMatching[] = LR"sql(
INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) 
SELECT DISTINCT t3.FInterID, t3.FParentID, t3.FName, t3.FNumber, t3.FBootID 
FROM IcBom t1 
INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID 
INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID 
INNER JOIN t_IcItem t4 ON t1.FItemID = t4.FItemID 
INNER JOIN t_IcItem t7 ON t2.FItemID = t7.FItemID 
LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID 
LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID 
)sql";

constexpr wchar_t kSelected[] = LR"sql(
--如果过滤界面存在组信息,那么该组不考虑过滤界面下面的信息，将被自动选出 
INSERT INTO #InitGroup (FInterID, FParentID, FName, FNumber, FBootID) 
SELECT FInterID, FParentID, FName, FNumber, FBootID FROM IcBomGroup 
)sql";

constexpr wchar_t kWalk[] = LR"sql(--#GroupData表将保存最后的结果 
CREATE TABLE #GroupData 
(        FBootID         INT             NULL, 
         FIndex          INT             NOT NULL, 
         FInterID        INT             NOT NULL, 
         FParentID       INT             NOT NULL, 
         FName           VARCHAR(200)    NOT NULL, 
         FNumber         VARCHAR(200)    NOT NULL  
) 

--#temp表保存某个组向上回溯根结点的轨迹，回溯过程中的所有组都将在该表中出现，每次回溯完成，该表被清空 
CREATE TABLE #temp 
(        FIndex          INT             NOT NULL, 
         FInterID        INT             NOT NULL, 
         FParentID       INT             NOT NULL, 
         FName           VARCHAR(200)    NOT NULL, 
         FNumber         VARCHAR(200)    NOT NULL  
) 

DECLARE @FInterID INT 
DECLARE @FParentID INT 
DECLARE @Index INT 

--循环开始，只选择初始条件中有上级的BOM数据进行筛选，同时排除它已经进入#GroupData的条件 
WHILE EXISTS(SELECT 1 FROM #InitGroup WHERE FParentID > 0) 
BEGIN 
         SELECT TOP 1 @FInterID = FInterID, @FParentID = FParentID FROM #InitGroup WHERE FParentID > 0 

         --选择一个需要滚动查询的组进行向上查找 
         INSERT INTO #temp (FIndex, FInterID, FParentID, FName, FNumber) 
         SELECT 0, FInterID, FParentID, FName, FNumber 
         FROM #InitGroup
         WHERE FInterID = @FInterId AND FParentID = @FParentID AND FParentID > 0 

         SET @Index = 0 
         --回溯开始，结束条件是回溯到根结点 
)sql";

// The walk of a group without a root ends where it finds nothing new.
constexpr wchar_t kWhile[] =
    L"         WHILE EXISTS(SELECT MIN(FParentID) FROM #temp HAVING MIN(FParentID) <> 0) "
    L"AND EXISTS(SELECT 1 FROM #temp WHERE FIndex = @Index "
    L"AND FInterID NOT IN (SELECT FInterID FROM #temp WHERE FIndex < @Index)) \n";

constexpr wchar_t kWalkBody[] = LR"sql(         BEGIN 

                 --把当前#temp表中组的上级组插入结果表中 
                 INSERT INTO #temp(FIndex, FInterID, FParentID, FName, FNumber) 
                 SELECT @Index +1, t2.FInterID, t2.FParentID, t2.FName, t2.FNumber 
                 FROM #temp t1 INNER JOIN IcBomGroup t2 ON t1.FParentID = t2.FInterID 
                 WHERE t1.FIndex = @Index 

                 SET @Index = @Index + 1 

         End 

         --将刚才#temp的数据，也就是刚才得到的组轨迹插入结果表中 
         INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) 
         SELECT FIndex, FInterID, FParentID, FName, FNumber 
         FROM #temp 

         --清空临时表，为下一个组的轨迹做准备 
         DELETE FROM #temp 

         --将初始化表中的组进行筛选，凡是已经加入结果表的组将不再被遍历，应该删除 
         DELETE t1 FROM #InitGroup t1 INNER JOIN #GroupData t2 ON t1.FInterID = t2.FInterID 
         End 

)sql";

constexpr wchar_t kFixUps[] = LR"sql(--将所属根结点加入 
INSERT INTO #GroupData(FIndex, FInterID, FParentID, FName, FNumber) 
SELECT 0, FInterID, FParentID, FName, FNumber 
FROM #InitGroup 

--更新FBOOTID 
UPDATE t1 SET t1.FBootID = t2.FBootID 
FROM #GroupData t1 INNER JOIN ICBomGroup t2 ON t1.FInterID = t2.FInterID 

--更正结点在结果中的最大顺序码，因为同一结点(比如根结点)，可能查询到的顺序号不同，最大的顺序号是正确的 
UPDATE t1 SET t1.FIndex = t2.FMaxIndex 
FROM #GroupData t1 
INNER JOIN (SELECT MAX(FIndex) FMaxIndex, FInterID FROM #GroupData GROUP BY FInterID) t2 ON t1.FInterID = t2.FInterID 

--返回结果 
)sql";

constexpr wchar_t kTreeRows[] = LR"sql(SELECT 1 AS FType, FRelative = CASE WHEN FParentID = 0 THEN 'qa' ELSE 'BOMGROUP ' + CAST(FParentID AS VARCHAR(10)) END, 
FinterID AS FKey, FNumber +'('+ FName+')' AS FText, 1 AS FImgNormal, 2 AS FImgClick,FNumber AS FTag FROM #GroupData ORDER BY FBootId, FIndex DESC 

)sql";

constexpr wchar_t kGroupRows[] = LR"sql(SELECT DISTINCT * FROM #GroupData ORDER BY FBootId, FIndex DESC 

)sql";

constexpr wchar_t kDrops[] = LR"sql(DROP TABLE #InitGroup 
DROP TABLE #GroupData 
DROP TABLE #temp 

)sql";

// clang-format on

std::wstring Batch(const std::wstring& start, const wchar_t* rows) {
  return WithCrLf(kHead + start + kWalk + kWhile + kWalkBody + kFixUps + rows + kDrops);
}

Object Groups(std::initializer_list<int32_t> ids) {
  Object groups = MakeVector({});
  for (const int32_t id : ids) groups.Call(L"Add", MakeDictionary({{L"Key", id}}));
  return groups;
}

const std::vector<const wchar_t*> kTreeColumns{L"FType",      L"FRelative", L"FKey", L"FText",
                                               L"FImgNormal", L"FImgClick", L"FTag"};
const std::vector<const wchar_t*> kGroupColumns{L"FBootID",   L"FIndex", L"FInterID",
                                                L"FParentID", L"FName",  L"FNumber"};

class GroupTreeTest : public testing::Test {
 protected:
  void SetUp() override { FillBrowserData(database_); }

  Variant Get(const Object& groups, const Object& filter, bool longNumber, bool bomView) const {
    return view_.Call(L"GetBomGroupList", database_.Dsn(), groups, filter, longNumber, bomView);
  }
  Texts GroupRows(const Object& groups) const {
    return RowTexts(Get(groups, MakeDictionary({}), true, false), kGroupColumns);
  }
  Texts Sorted(const Object& groups, bool bomView) const {
    Texts rows =
        RowTexts(Get(groups, MakeDictionary({}), true, bomView), bomView ? kTreeColumns : kGroupColumns);
    std::sort(rows.begin(), rows.end());
    return rows;
  }

  const TestDatabase database_;
  const Object view_ = Hosted(L"BomView");
};

// ---- the text

TEST_F(GroupTreeTest, RunsOneBatchOverEveryGroup) {
  const Trace trace;
  // Without a group neither the filter nor the kind of number matters.
  Get(Groups({}), MakeDictionary({{L"BomNumber", L"x'"}}), false, true);
  EXPECT_EQ(trace.Events(),
            (Texts{L"GetDataContext", L"BindDsn\t" + database_.Dsn(), L"GetCallerInfo",
                   L"GetConnectionObject", L"Open\t" + Batch(kEveryGroup, kTreeRows), L"VoteComplete"}));
  trace.Clear();
  view_.Call(L"GetBomGroupList", database_.Dsn(), Groups({}), MakeDictionary({}), false);
  EXPECT_EQ(trace.Details(L"Open"), Texts{Batch(kEveryGroup, kGroupRows)});
}

TEST_F(GroupTreeTest, LooksForMatchingBomsInTheSelectedGroups) {
  const Trace trace;
  Get(Groups({2, 4}), MakeDictionary({}), true, false);
  EXPECT_EQ(trace.Details(L"Open"),
            Texts{Batch(std::wstring(kMatching) + L"WHERE 1 = 1 \n AND t3.FInterID IN (2,4)\n" + kSelected +
                            L" WHERE FInterID IN (2,4)\n\n\n",
                        kGroupRows)});
}

TEST_F(GroupTreeTest, AddsTheFiltersInTheirOrder) {
  const Object filter = MakeDictionary({
      {L"CheckState", 1},
      {L"UseStatus", L"1072"},
      {L"Note", L"fir"},
      {L"ChildNumber", L"I.50"},
      {L"ItemNumber", L"501"},
      {L"BomNumber", L"B1"},
      {L"Creator", L"Ben"},
      {L"Checker", L"Anna"},
      {L"EBomBound", L"B19"},
      {L"BBomBound", L"B10"},
      {L"EItemNumber", L"599"},
      {L"BItemNumber", 500},
      {L"Other", L"left out"},
  });
  const auto where = [](const std::wstring& number) {
    return L"WHERE 1 = 1  AND " + number + L" >= '500'\n AND " + number +
           L" <= '599'\n AND t1.FBomNumber >= 'B10'\n AND t1.FBomNumber <= 'B19'\n AND t5.FName = 'Anna'\n"
           L" AND t6.FName = 'Ben'\n AND t1.FBomNumber LIKE '%B1%'\n AND " +
           number + L" LIKE '%501%'\n AND t7.FNumber LIKE '%I.50%'\n AND t1.FNote LIKE '%fir%'\n" +
           L" AND t1.FUseStatus = 1072 AND t1.FStatus = 1\n AND t3.FInterID IN (2)\n";
  };
  const Trace trace;
  Get(Groups({2}), filter, false, false);
  Get(Groups({2}), filter, true, false);
  const auto batch = [&](const wchar_t* number) {
    return Batch(kMatching + where(number) + kSelected + L" WHERE FInterID IN (2)\n\n\n", kGroupRows);
  };
  EXPECT_EQ(trace.Details(L"Open"), (Texts{batch(L"t4.FShortNumber"), batch(L"t4.FNumber")}));
}

TEST_F(GroupTreeTest, LeavesOutEmptyFilters) {
  const Object filter = MakeDictionary(
      {{L"BomNumber", L""}, {L"Checker", Variant()}, {L"Note", Variant::Null()}, {L"Creator", L" "}});
  const Trace trace;
  Get(Groups({2}), filter, true, false);
  EXPECT_EQ(trace.Details(L"Open"),
            Texts{Batch(std::wstring(kMatching) + L"WHERE 1 = 1  AND t6.FName = ' '\n\n" +
                            L" AND t3.FInterID IN (2)\n" + kSelected + L" WHERE FInterID IN (2)\n\n\n",
                        kGroupRows)});
}

// ---- what it finds

TEST_F(GroupTreeTest, GivesEveryGroupOncePerPath) {
  // Three paths lead to the root 1: from 2, from 3 and from 4; two to 3. The root 5 has none.
  EXPECT_EQ(Sorted(Groups({}), true),
            (Texts{L"1|BOMGROUP 1|2|G1.1(City)|1|2|G1.1", L"1|BOMGROUP 1|3|G1.2(Hill)|1|2|G1.2",
                   L"1|BOMGROUP 1|3|G1.2(Hill)|1|2|G1.2", L"1|BOMGROUP 3|4|G1.2.1(Proto)|1|2|G1.2.1",
                   L"1|qa|1|G1(Bikes)|1|2|G1", L"1|qa|1|G1(Bikes)|1|2|G1", L"1|qa|1|G1(Bikes)|1|2|G1",
                   L"1|qa|5|G2(Parts)|1|2|G2"}));
  // Each once with its largest distance, by root, a parent before its children.
  const Texts rows = GroupRows(Groups({}));
  ASSERT_EQ(rows.size(), 5U);
  EXPECT_EQ(rows[0], L"1|2|1|0|Bikes|G1");
  EXPECT_EQ(rows[1], L"1|1|3|1|Hill|G1.2");
  EXPECT_EQ(Sorted(Groups({}), false),
            (Texts{L"1|0|2|1|City|G1.1", L"1|0|4|3|Proto|G1.2.1", L"1|1|3|1|Hill|G1.2", L"1|2|1|0|Bikes|G1",
                   L"5|0|5|0|Parts|G2"}));
  EXPECT_EQ(rows[4], L"5|0|5|0|Parts|G2");
}

TEST_F(GroupTreeTest, TakesNoGroupsForEmptyOnes) {
  EXPECT_EQ(GroupRows(Object()).size(), 5U);
  EXPECT_EQ(RowTexts(Get(Groups({}), Object(), true, false), kGroupColumns).size(), 5U);
}

TEST_F(GroupTreeTest, ReturnsASelectedGroupWithoutAMatch) {
  const Variant rows = Get(Groups({4}), MakeDictionary({{L"BomNumber", L"nowhere"}}), true, false);
  EXPECT_EQ(RowTexts(rows, kGroupColumns),
            (Texts{L"1|2|1|0|Bikes|G1", L"1|1|3|1|Hill|G1.2", L"1|0|4|3|Proto|G1.2.1"}));
  EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", 1).AsObject()),
            (Texts{L"FBootID", L"FIndex", L"FInterID", L"FParentID", L"FName", L"FNumber"}));
}

TEST_F(GroupTreeTest, WalksAnAncestorThatIsSelectedOnce) {
  EXPECT_EQ(GroupRows(Groups({4, 3, 1})),
            (Texts{L"1|2|1|0|Bikes|G1", L"1|1|3|1|Hill|G1.2", L"1|0|4|3|Proto|G1.2.1"}));
}

TEST_F(GroupTreeTest, GivesACommonParentOncePerPathInTheTreeOnly) {
  // Neither holds a matching BOM twice over: the filter takes none, so that each starts once.
  const Object nothing = MakeDictionary({{L"BomNumber", L"nowhere"}});
  const Texts tree = RowTexts(Get(Groups({2, 3}), nothing, true, true), {L"FKey", L"FRelative"});
  EXPECT_EQ(std::count(tree.begin(), tree.end(), L"1|qa"), 2);
  EXPECT_EQ(tree.size(), 4U);
  const Texts rows = RowTexts(Get(Groups({2, 3}), nothing, true, false), {L"FInterID", L"FIndex"});
  EXPECT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0], L"1|1");
}

TEST_F(GroupTreeTest, StartsTwiceWhereAMatchingBomIs) {
  // BOM 11 in group 2 matches: the group is a start by the match and by the selection.
  const Texts tree =
      RowTexts(Get(Groups({2}), MakeDictionary({{L"BomNumber", L"B11"}}), true, true), {L"FKey"});
  EXPECT_EQ(std::count(tree.begin(), tree.end(), L"2"), 2);
  EXPECT_EQ(RowTexts(Get(Groups({2}), MakeDictionary({{L"BomNumber", L"B11"}}), true, false), kGroupColumns),
            (Texts{L"1|1|1|0|Bikes|G1", L"1|0|2|1|City|G1.1"}));
}

TEST_F(GroupTreeTest, ClimbsTwelveLevels) {
  for (int32_t level = 1; level <= 12; ++level)
    database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES (" +
                      std::to_wstring(100 + level) + L", 'D', 'Deep', " +
                      std::to_wstring(level == 1 ? 0 : 99 + level) + L", 101)");
  const Texts rows = RowTexts(Get(Groups({112}), MakeDictionary({}), true, false), {L"FInterID", L"FIndex"});
  ASSERT_EQ(rows.size(), 12U);
  EXPECT_EQ(rows.front(), L"101|11");
  EXPECT_EQ(rows[1], L"102|10");
  EXPECT_EQ(rows.back(), L"112|0");
}

TEST_F(GroupTreeTest, TakesTwoThousandGroups) {
  // 1,995 more, all children of the roots 1 and 5; one INSERT takes 1,000 rows.
  for (int32_t first = 1001; first <= 2995; first += 1000) {
    std::wstring insert = L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES ";
    for (int32_t id = first; id < first + 1000 && id <= 2995; ++id)
      insert += (id > first ? L"," : L"") + (L"(" + std::to_wstring(id)) + L", 'W', 'Wide', " +
                (id % 2 == 0 ? L"1, 1)" : L"5, 5)");
    database_.Execute(insert);
  }
  const Texts rows = RowTexts(Get(Groups({}), MakeDictionary({}), true, false), {L"FInterID", L"FIndex"});
  EXPECT_EQ(rows.size(), 2000U);
  EXPECT_EQ(rows.front(), L"1|2");
}

TEST_F(GroupTreeTest, EndsWhereTheParentsGoInACircle) {
  database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                    L"(21, 'C1', 'Ring', 23, 21), (22, 'C2', 'Ring', 21, 21), (23, 'C3', 'Ring', 22, 21), "
                    L"(24, 'C4', 'Self', 24, 24), (25, 'C5', 'Below', 22, 21)");
  // Each once; every one of the ring is met again after the other two.
  EXPECT_EQ(Sorted(Groups({22}), false),
            (Texts{L"21|1|21|23|Ring|C1", L"21|2|23|22|Ring|C3", L"21|3|22|21|Ring|C2"}));
  EXPECT_EQ(Sorted(Groups({24}), false), Texts{L"24|1|24|24|Self|C4"});
  EXPECT_EQ(Sorted(Groups({25}), false), (Texts{L"21|0|25|22|Below|C5", L"21|2|21|23|Ring|C1",
                                                L"21|3|23|22|Ring|C3", L"21|4|22|21|Ring|C2"}));
  EXPECT_EQ(GroupRows(Groups({})).size(), 10U);
}

TEST_F(GroupTreeTest, EndsAtAMissingParent) {
  database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                    L"(31, 'M1', 'Orphan', 999, 31), (32, 'M2', 'Child', 31, 31)");
  EXPECT_EQ(Sorted(Groups({32}), false), (Texts{L"31|0|32|31|Child|M2", L"31|1|31|999|Orphan|M1"}));
  EXPECT_EQ(Sorted(Groups({31}), true), Texts{L"1|BOMGROUP 999|31|M1(Orphan)|1|2|M1"});
}

// ---- bad input

TEST_F(GroupTreeTest, RaisesTheServersErrorForAQuote) {
  const Trace trace;
  const Raised raised = RaisedBy([&] {
    Get(Groups({2}), MakeDictionary({{L"BomNumber", L"x'y"}}), true, true);
  });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

TEST_F(GroupTreeTest, RaisesForAMissingFilter) {
  const Trace trace;
  EXPECT_EQ(RaisedBy([&] { Get(Groups({2}), Object(), true, true); }).code, static_cast<HRESULT>(0x800A005B));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

} // namespace
} // namespace mbom::test
