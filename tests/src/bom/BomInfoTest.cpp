// BomInfo: statements as they go over the wire, votes, the rows that come back and how they are attached.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"
#include "tests/support/Rows.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

class BomInfoTest : public testing::Test {
 protected:
  void SetUp() override {
    // 31 in use and 32 not, both of the bike 501 in group 3; 33 of the wheel 502, cancelled; 34 of the hub
    // 503, without lines.
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FUseStatus, FParentID, FItemID, FUnitID, FQty, FAuxQty, "
        L"FFee, "
        L"FAuxPropID, FCancellation, FNote) VALUES "
        L"(31, 'B31', 1072, 3, 501, 1, 1, 2, 4.5, 8, 0, 'n31'), (32, 'B32', 1073, 3, 501, 1, 1, 1, 0, 0, 0, "
        L"''), "
        L"(33, 'B33', 1072, 4, 502, 1, 1, 1, 0, 0, 1, ''), (34, 'B34', 1072, 4, 503, 1, 1, 1, 0, 0, 0, '')");
    database_.Execute(
        L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FScrap, FAuxPropID, FNote) "
        L"VALUES "
        L"(31, 2, 503, 1, 3, 0, 0, ''), (31, 1, 502, 2, 2, 5, 8, 'line'), (33, 1, 503, 1, 1, 0, 0, '')");
    database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                      L"(3, 'G3', 'Bikes', 0, 3), (4, 'G4', 'Parts', 3, 3)");
    // The numbers of t_Item and t_ICItem agree; 504 may have no BOM (its class), 505 is deleted, 506 is a
    // group.
    database_.Execute(
        L"INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FName, FDetail, FDeleted) VALUES "
        L"(501, 4, 'I1', 'Bike', 1, 0), (502, 4, 'I2', 'Wheel', 1, 0), (503, 4, 'I3', 'Hub', 1, 0), "
        L"(504, 4, 'I4', 'Bought', 1, 0), (505, 4, 'I5', 'Old bike', 1, 1), (506, 4, 'I', 'Bikes', 0, 0), "
        L"(507, 1, 'I7', 'Bike shop', 1, 0)");
    database_.Execute(
        L"INSERT INTO t_ICItem (FItemID, FNumber, FName, FModel, FHelpCode, FErpClsID, FUnitID, FDeleted) "
        L"VALUES "
        L"(501, 'I1', 'Bike', 'M1', 'BK', 2, 1, 0), (502, 'I2', 'Wheel', 'M2', 'WH', 6, 1, 0), "
        L"(503, 'I3', 'Hub', 'M3', 'HB', 9, 1, 0), (504, 'I4', 'Bought', 'M4', 'BO', 1, 1, 0), "
        L"(505, 'I5', 'Old bike', 'M5', 'OB', 2, 1, 0), (506, 'I', 'Bikes', '', 'GB', 2, 1, 0)");
    database_.Execute(L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName, "
                      L"FCoefficient) VALUES (1, 1, 10, 'PC', 'piece', 1), (2, 2, 10, 'PR', 'pair', 2)");
    database_.Execute(L"INSERT INTO t_AuxItem (FItemID, FNumber, FName) VALUES (8, 'R', 'red')");
  }

  Object Read(const wchar_t* method, const std::wstring& value) const {
    std::array<Variant, 2> arguments{database_.Dsn(), value};
    return info_.CallWith(method, arguments).AsObject();
  }

  const TestDatabase database_;
  const Object info_ = Hosted(L"BomInfo");
};

TEST_F(BomInfoTest, ReportsItsTransactionMode) {
  EXPECT_EQ(info_.Get(L"TransMode"), Variant(3));
}

// ---- detached recordsets

TEST_F(BomInfoTest, GetBomInfoReadsEveryBomWithoutArguments) {
  const Trace trace;
  const Object boms = info_.Call(L"GetBomInfo", database_.Dsn()).AsObject();
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, database_.Dsn(), {L"Open\tSELECT * FROM ICBOM", L"VoteComplete"}));
  EXPECT_EQ(boms.Get(L"ActiveConnection"), Variant(Object()));
  EXPECT_EQ(boms.Get(L"CursorLocation"), Variant(3));
  EXPECT_EQ(boms.Get(L"RecordCount"), Variant(4));
}

TEST_F(BomInfoTest, TheGenericQueriesTakeFilterAndOrderAsTheyStand) {
  const std::wstring dsn = database_.Dsn();
  const Trace trace;
  const Object lines = info_.Call(L"GetBomEntryInfo", dsn, L"FInterID=31", L"FEntryID desc").AsObject();
  EXPECT_EQ(lines.Get(L"RecordCount"), Variant(2));
  EXPECT_EQ(lines.Get(L"Fields").AsObject().Get(L"Item", L"FEntryID").AsObject().Get(L"Value"), Variant(2));
  const Object groups = info_.Call(L"GetBomGroupInfo", dsn, Variant::Missing(), L"FInterID").AsObject();
  EXPECT_EQ(groups.Get(L"RecordCount"), Variant(2));
  const Object units = info_.Call(L"GetBomInfo", dsn, L"FNumber='PR'", L"", L"t_MeasureUnit").AsObject();
  EXPECT_EQ(units.Get(L"RecordCount"), Variant(1));
  Variant statement(L"select FName from t_AuxItem");
  const Object names = info_.Call(L"GetInfo", dsn, Variant::Reference(statement)).AsObject();
  EXPECT_EQ(RowsOf(names), Texts{L"red"});
  EXPECT_EQ(statement, Variant(L"select FName from t_AuxItem"));
  EXPECT_EQ(trace.Details(L"Open"),
            (Texts{L"SELECT * FROM ICBomChild WHERE FInterID=31 ORDER BY FEntryID desc",
                   L"SELECT * FROM ICBomGroup ORDER BY FInterID",
                   L"SELECT * FROM t_MeasureUnit WHERE FNumber='PR'", L"select FName from t_AuxItem"}));
  EXPECT_EQ(trace.Votes(), Texts(4, L"VoteComplete"));
  for (const Object& recordset : {lines, groups, units, names})
    EXPECT_EQ(recordset.Get(L"ActiveConnection"), Variant(Object()));
}

TEST_F(BomInfoTest, ABadFragmentRaisesTheServersErrorWithoutAVote) {
  const Trace trace;
  const Raised raised = RaisedBy([&] { info_.Call(L"GetBomInfo", database_.Dsn(), L"no condition at all"); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E14u);
  EXPECT_EQ(trace.Votes(), Texts{});
}

// ---- GetItemForbitNumber

TEST_F(BomInfoTest, GetItemForbitNumberCountsDeletedItems) {
  const Trace trace;
  EXPECT_EQ(info_.Call(L"GetItemForbitNumber", database_.Dsn(), 31), Variant(0));
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, database_.Dsn(),
                  {L"Execute\tselect t2.FInterId, isnull(sum(t3.FDeleted),0) as HSum, "
                   L"isnull(sum(t4.Fdeleted) ,0) as ESum from IcBom t1 left join IcBomChild t2 on "
                   L"t1.FInterId = t2.FInterId left join t_IcItem t3 on t1.FItemId=t3.FItemID left join "
                   L"t_IcItem t4 on t2.FItemId=t4.FItemId where t1.FInterID = 31group by t2.FinterId",
                   L"VoteComplete"}));
  database_.Execute(L"UPDATE t_ICItem SET FDeleted = 1 WHERE FItemID = 503");
  EXPECT_EQ(info_.Call(L"GetItemForbitNumber", database_.Dsn(), 31), Variant(1));
  // The BOM's own item once for each of its two lines, or once where there is no line.
  database_.Execute(L"UPDATE t_ICItem SET FDeleted = 1 WHERE FItemID = 501");
  EXPECT_EQ(info_.Call(L"GetItemForbitNumber", database_.Dsn(), 31), Variant(3));
  EXPECT_EQ(info_.Call(L"GetItemForbitNumber", database_.Dsn(), 34), Variant(1));
}

TEST_F(BomInfoTest, GetItemForbitNumberOfAMissingBomRaises) {
  const Trace trace;
  const Raised raised = RaisedBy([&] { info_.Call(L"GetItemForbitNumber", database_.Dsn(), 4711); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A0BCDu); // no current record
  EXPECT_EQ(trace.Votes(), Texts{});
}

// ---- lookups

TEST_F(BomInfoTest, FindsBomsByItemNumberNameOrHelpCode) {
  const Trace trace;
  for (const wchar_t* value : {L"I1", L"Bike", L"BK"}) {
    const Object boms = Read(L"GetBomInfoByItemNumber", value);
    EXPECT_EQ(ColumnsOf(boms), (Texts{L"FUseStatus", L"FItemNumber", L"FUnitID", L"FBomNumber", L"FInterID",
                                      L"FAuxQty", L"FFee", L"FAuxPropID", L"FItemID", L"FName", L"FNumber",
                                      L"FModel", L"FUnitName", L"AuxName", L"FNote"}));
    Texts rows = RowsOf(boms);
    std::sort(rows.begin(), rows.end());
    EXPECT_EQ(rows, (Texts{L"使用|I1|1|B31|31|2|4.5|8|501|Bike|I1|M1|piece|red|n31",
                           L"未使用|I1|1|B32|32|1|0|0|501|Bike|I1|M1|piece|NULL|"}));
  }
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoByItemNumber", L"Bik")), Texts{});
  EXPECT_TRUE(trace.Details(L"Execute")[0].ends_with(
      L" from icBom a inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4   inner join "
      L"t_ICItem c "
      L"on b.FItemID = c.FItemID and (b.FNumber = 'I1' or b.FName = 'I1' or c.FHelpCode = 'I1' ) left join "
      L"t_MeasureUnit d on a.FUnitID = d.FMeasureUnitID  left join t_AuxItem e on a.FAuxPropID = e.FItemID "))
      << com::ToUtf8(trace.Details(L"Execute")[0]);
  EXPECT_EQ(trace.Votes(), Texts(4, L"VoteComplete"));
}

TEST_F(BomInfoTest, FindsABomByItsNumber) {
  const Trace trace;
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoByBomNumber", L"B32")),
            Texts{L"未使用|I1|1|B32|32|1|0|0|501|Bike|I1|M1|piece|NULL|"});
  EXPECT_TRUE(trace.Details(L"Execute")[0].ends_with(
      L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4   inner join t_ICItem c on "
      L"b.FItemID "
      L"= c.FItemID  left join t_MeasureUnit d on a.FUnitID = d.FMeasureUnitID  left join t_AuxItem e on "
      L"a.FAuxPropID = e.FItemID  Where a.FBomNumber =  'B32'"));
}

TEST_F(BomInfoTest, FindsAnItemThatMayHaveABom) {
  const Trace trace;
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoByItemNumber1", L"HB")), Texts{L"Hub|M3|piece"});
  for (const wchar_t* none : {L"I4", L"Old bike", L"I", L"I7", L"Hu"})
    EXPECT_EQ(RowsOf(Read(L"GetBomInfoByItemNumber1", none)), Texts{});
  EXPECT_TRUE(trace.Details(L"Execute")[0].ends_with(
      L" from t_Item t1 left join t_ICItem x2 ON t1.FItemID = x2.FItemID  left join t_MeasureUnit d on "
      L"x2.FUnitID = "
      L"d.FMeasureUnitID  Where t1.FItemClassID = 4  AND t1.FDetail=1  AND (x2.FErpClsID IN (2,6,9))  AND "
      L"(t1.FNumber = 'HB' or t1.FName = 'HB' or x2.FHelpCode = 'HB' )  AND t1.FDeleteD=0  ORDER BY "
      L"t1.FNumber "));
}

TEST_F(BomInfoTest, FindsItemsThatContainAText) {
  const Trace trace;
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoLikeInfo", L"H")), (Texts{L"Wheel|I2|WH", L"Hub|I3|HB"}));
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoLikeInfo", L"ik")), Texts{L"Bike|I1|BK"});
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoLikeInfo", L"I")).size(), 3u);
  EXPECT_TRUE(trace.Details(L"Execute")[0].ends_with(L" from t_Item t1 LEFT JOIN t_ICItem x2 ON t1.FItemID = "
                                                     L"x2.FItemID  Where FItemClassID = 4  AND t1.FDetail=1 "
                                                     L" AND (x2.FErpClsID IN (2,6,9))  AND (t1.FNumber like "
                                                     L"'%H%' or t1.FName like '%H%' or x2.FHelpCode like "
                                                     L"'%H%' )  AND t1.FDeleteD=0  ORDER BY t1.FNumber "));
}

TEST_F(BomInfoTest, FindsTheBomInUseOfAnItem) {
  const Trace trace;
  EXPECT_EQ(RowsOf(Read(L"SelectBomInfoByItemNumber", L"501")),
            Texts{L"1|10|1|1|31|2|4.5|501|Bike|I1|M1|piece|red|n31"});
  EXPECT_EQ(RowsOf(Read(L"GetBomInfoByItemID", L"501")), Texts{L"1|31|1|4.5|501|Bike|I1|M1|piece"});
  const Texts statements = trace.Details(L"Execute");
  EXPECT_TRUE(statements[0].ends_with(
      L" inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4   inner join t_ICItem c on "
      L"b.FItemID "
      L"= c.FItemID and b.FItemID = 501 left join t_MeasureUnit d on a.FUnitID = d.FMeasureUnitID  left join "
      L"t_AuxItem e on a.FAuxPropID = e.FItemID  Where a.FUseStatus = 1072 "));
  EXPECT_TRUE(statements[1].ends_with(L" from icBom a inner join t_Item b on a.FItemID = b.FItemID and "
                                      L"b.FItemClassID = 4 and b.FItemID = 501 inner "
                                      L"join t_ICItem c on b.FItemID = c.FItemID  left join t_MeasureUnit d "
                                      L"on a.FUnitID = d.FMeasureUnitID  Where "
                                      L"a.FUseStatus = 1072 "));
}

TEST_F(BomInfoTest, ListsBomsThatAreNotCancelled) {
  const Trace trace;
  Texts rows = RowsOf(Read(L"GetBomList", L"3"));
  std::sort(rows.begin(), rows.end());
  EXPECT_EQ(rows, (Texts{L"使用|31|B31|I1", L"未使用|32|B32|I1"}));
  EXPECT_EQ(RowsOf(Read(L"GetBomList", L"4")), Texts{L"使用|34|B34|I3"});
  rows = RowsOf(Read(L"GetAllBomList", L""));
  std::sort(rows.begin(), rows.end());
  // Two blanks inside: this list writes it its own way.
  EXPECT_EQ(rows, (Texts{L"使  用|31|B31|I1|Bike", L"使  用|34|B34|I3|Hub", L"未使用|32|B32|I1|Bike"}));
  EXPECT_EQ(RowsOf(Read(L"GetAllBomList", L"I3")), Texts{L"使  用|34|B34|I3|Hub"});
  const Texts statements = trace.Details(L"Execute");
  EXPECT_TRUE(statements[0].ends_with(L" from IcBom a inner join t_ICItem b on a.FItemID = b.FItemID  where "
                                      L"a.FCancellation = 0 and a.FParentID = 3"));
  EXPECT_TRUE(statements[2].ends_with(L" from IcBom a inner join t_ICItem b on a.FItemID = b.FItemID  where "
                                      L"a.FCancellation = 0  "));
  EXPECT_EQ(statements[3], statements[2] + L" and FNumber = 'I3' ");
}

TEST_F(BomInfoTest, ListsTheLinesOfABom) {
  const Trace trace;
  const Object byNumber = Read(L"GetChildBomInfoByBomNo", L"B31");
  EXPECT_EQ(ColumnsOf(byNumber),
            (Texts{L"FUnitID", L"FAuxPropID", L"FinterID", L"FUnitGroupID", L"FMeasureUnitID",
                   L"FCoefficient", L"FAuxQty", L"FScrap", L"FItemID", L"FNumber", L"FName", L"FModel",
                   L"FUnitName", L"AuxName", L"FNote"}));
  const Texts lines{L"2|8|31|10|2|2|2|5|502|I2|Wheel|M2|pair|red|line",
                    L"1|0|31|10|1|1|3|0|503|I3|Hub|M3|piece|NULL|"};
  Texts rows = RowsOf(byNumber);
  std::sort(rows.rbegin(), rows.rend());
  EXPECT_EQ(rows, lines);
  EXPECT_EQ(RowsOf(Read(L"GetChildBomInfoByItemID", L"501")), lines); // in the order of the lines
  const std::wstring joins =
      L" inner join t_ICItem c on b.FItemID = c.FItemID  left join t_MeasureUnit d on a.FUnitID = "
      L"d.FMeasureUnitID  "
      L"inner join icBomChild e on a.FInterID = e.FInterID  inner join t_Item f on e.FItemID = f.FItemID and "
      L"f.FItemClassID = 4  inner join t_ICItem g on f.FItemID = g.FItemID  left join t_MeasureUnit h on "
      L"e.FUnitID = "
      L"h.FMeasureUnitID  left join t_AuxItem j on e.FAuxPropID = j.FItemID ";
  const Texts statements = trace.Details(L"Execute");
  EXPECT_TRUE(statements[0].ends_with(
      L" from icBom a inner join t_Item b on a.FItemID = b.FItemID and b.FItemClassID = 4 " + joins +
      L" Where a.FBomNumber = 'B31'"));
  EXPECT_TRUE(statements[1].ends_with(L" from icBom a inner join t_Item b on a.FItemID = b.FItemID and "
                                      L"b.FItemClassID = 4 and b.FItemID = 501" +
                                      joins + L" Where a.FUseStatus = 1072 order by e.finterid,e.fentryid"));
}

// ---- failure paths

constexpr const wchar_t* kLookups[] = {L"GetBomInfoByItemNumber",
                                       L"GetBomInfoByBomNumber",
                                       L"GetBomInfoByItemNumber1",
                                       L"SelectBomInfoByItemNumber",
                                       L"GetBomInfoLikeInfo",
                                       L"GetBomInfoByItemID",
                                       L"GetBomList",
                                       L"GetAllBomList",
                                       L"GetChildBomInfoByBomNo",
                                       L"GetChildBomInfoByItemID"};

TEST_F(BomInfoTest, EveryLookupHasItsOwnColumns) {
  const Texts bom{L"FUseStatus", L"FItemNumber", L"FUnitID",    L"FBomNumber", L"FInterID",
                  L"FAuxQty",    L"FFee",        L"FAuxPropID", L"FItemID",    L"FName",
                  L"FNumber",    L"FModel",      L"FUnitName",  L"AuxName",    L"FNote"};
  const Texts lines{L"FUnitID",      L"FAuxPropID", L"FinterID",  L"FUnitGroupID", L"FMeasureUnitID",
                    L"FCoefficient", L"FAuxQty",    L"FScrap",    L"FItemID",      L"FNumber",
                    L"FName",        L"FModel",     L"FUnitName", L"AuxName",      L"FNote"};
  const std::pair<const wchar_t*, Texts> lookups[] = {
      {L"GetBomInfoByItemNumber", bom},
      {L"GetBomInfoByBomNumber", bom},
      {L"GetBomInfoByItemNumber1", {L"FName", L"FModel", L"FUnitName"}},
      {L"SelectBomInfoByItemNumber",
       {L"FUnitID", L"FUnitGroupID", L"FMeasureUnitID", L"FCoefficient", L"FInterID", L"FAuxQty", L"FFee",
        L"FItemID", L"FName", L"FNumber", L"FModel", L"FUnitName", L"AuxName", L"FNote"}},
      {L"GetBomInfoLikeInfo", {L"FName", L"FNumber", L"FHelpCode"}},
      {L"GetBomInfoByItemID",
       {L"FUnitID", L"FInterID", L"FQty", L"FFee", L"FItemID", L"FName", L"FNumber", L"FModel",
        L"FUnitName"}},
      {L"GetBomList", {L"FUseStatus", L"FInterID", L"FBOMNumber", L"FNumber"}},
      {L"GetAllBomList", {L"FUseStatus", L"FInterID", L"FBOMNumber", L"FNumber", L"FName"}},
      {L"GetChildBomInfoByBomNo", lines},
      {L"GetChildBomInfoByItemID", lines},
  };
  ASSERT_EQ(std::size(lookups), std::size(kLookups));
  for (const auto& [lookup, columns] : lookups) {
    const Object rows = Read(lookup, L"501");
    ASSERT_TRUE(rows) << com::ToUtf8(lookup);
    EXPECT_EQ(ColumnsOf(rows), columns) << com::ToUtf8(lookup);
  }
}

TEST_F(BomInfoTest, ALookupThatFailsGivesNoObject) {
  for (const wchar_t* lookup : kLookups) {
    const Trace trace;
    EXPECT_FALSE(Read(lookup, L"'")) << com::ToUtf8(lookup); // the quote breaks every statement
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
}

class LookupFailure : public BomInfoTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(LookupFailure, GivesNoObject) {
  for (const wchar_t* lookup : kLookups) {
    const Trace trace;
    const Fault fault(GetParam().kind, GetParam().nth);
    EXPECT_FALSE(Read(lookup, L"501")) << com::ToUtf8(lookup);
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  }
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, LookupFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"VoteComplete", 1}));

class DetachedFailure : public BomInfoTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(DetachedFailure, Rises) {
  for (const wchar_t* method : {L"GetBomInfo", L"GetBomEntryInfo", L"GetBomGroupInfo", L"GetInfo"}) {
    const Trace trace;
    const Fault fault(GetParam().kind, GetParam().nth);
    const Raised raised = RaisedBy([&] { Read(method, L"1=1"); });
    EXPECT_EQ(raised.code, Fault::kCode) << com::ToUtf8(method);
    EXPECT_EQ(raised.description, Fault::kText);
    EXPECT_EQ(trace.Votes(), Texts{});
  }
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, DetachedFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Open", 1}));

class ForbitFailure : public BomInfoTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(ForbitFailure, Rises) {
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  const Raised raised = RaisedBy([&] { info_.Call(L"GetItemForbitNumber", database_.Dsn(), 31); });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.description, Fault::kText);
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, ForbitFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"VoteComplete", 1}));

} // namespace
} // namespace mbom::test
