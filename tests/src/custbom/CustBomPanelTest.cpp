// clsMCustBOM: the tree and the two panels: the statements, and the rows that come back.
#include "tests/src/custbom/CustBomFixture.h"

namespace mbom::test {
namespace {

constexpr wchar_t kSwitch[] =
    L"Execute\tSELECT FValue FROM t_SystemProfile WHERE FCategory='IC' AND FKey='UseShortNumber'";

std::wstring HeaderQuery(const std::wstring& number = L"b.FNumber,") {
  return L"SELECT * FROM (\r\n"
         L"SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,\r\n" +
         number +
         L"\r\n"
         L" (case a.FStatus when 0 then '未审核' else '已审核' end) as FStatus ,\r\n"
         L"a.FStatus as FStatusNum ,\r\n"
         L"CASE FUseStatus WHEN 1072 THEN '使用' ELSE '未使用' END AS FUseStatus,\r\n"
         L"FUseStatus as FUseStatusNum ,\r\n"
         L"a.FYield,a.FQty,a.FAuxQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID,\r\n"
         L"a.FItemID,b.FModel,c.FName AS FUnitID,b.FCUUnitID ,v.FName AS FErpClsName,d.FBillNo as FRoutingNo,"
         L"d.FRoutingName AS FRoutingName \r\n"
         L" FROM ICBOM a \r\n"
         L" INNER JOIN t_ICItem b ON a.FItemID=b.FItemID \r\n"
         L" LEFT OUTER JOIN t_routing d on a.FRoutingID = d.FInterID\r\n"
         L" left outer join t_SubMessage v on b.FErpClsID=v.FInterID \r\n"
         L" INNER JOIN t_MeasureUnit c ON a.FUnitID=c.FItemID\r\n"
         L" WHERE  1=1) t1";
}

const std::wstring kLinesBegin = L"SELECT * FROM (\r\n"
                                 L"SELECT a.FEntryID,a.FInterID,b.FItemID,\r\n";
const std::wstring kLinesMiddle =
    L"\r\n"
    L"e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,\r\n"
    L"a.FBeginDay,a.FEndDay,\r\n"
    L"a.FPercent,(case a.FOperSN when 0 then '' else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS "
    L"FOperID,"
    L"a.FMachinePos,a.FOffSetDay,\r\n"
    L"CASE a.FBackFlush WHEN 1059 THEN '否' ELSE '是' END AS FBackFlush,\r\n"
    L"CASE b.FIsKeyItem WHEN 0 THEN '否' ELSE '是' END AS FIsKeyItem,\r\n"
    L"CASE h.FDeleted WHEN 0 THEN '否' ELSE '是' END AS FForbitUse,\r\n";
const std::wstring kLinesJoins =
    L"\r\n"
    L"inner join t_ICItem b on a.FItemID = b.FItemID\r\n"
    L"left join (SELECT FItemID,FName FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c on "
    L"ISNULL(a.FStockID,0) = c.FItemID\r\n"
    L"left join t_MeasureUnit d on b.FUnitID = d.FItemID\r\n"
    L"left join t_SubMessage e on a.FMaterielType = e.FInterID\r\n"
    L"left join t_SubMessage f on a.FMarshalType= f.FInterID \r\n"
    L"left join t_SubMessage g on b.FUseState = g.FInterID\r\n"
    L"left join t_Item h on b.FItemID = h.FItemID\r\n"
    L"left join t_StockPlace i on a.FSPID = i.FSPID\r\n"
    L"left join t_SubMessage j on a.FOperID = j.FInterID and j.FTypeID = 61\r\n"
    L"left join t_MeasureUnit w on a.FunitID=w.FitemID\r\n";

std::wstring OrdinaryLines(const std::wstring& number = L"b.FNumber,") {
  return kLinesBegin + number +
         L"\r\nb.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID," + kLinesMiddle +
         L"g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,\r\n"
         L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName\r\n"
         L" FROM ICBOMChild a" +
         kLinesJoins + L"left outer join t_SubMessage v on b.FErpClsID=v.FInterID) t1";
}

std::wstring CustomerLines(const std::wstring& number = L"b.FNumber,") {
  return kLinesBegin + number +
         L"\r\nb.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.Fname as FunitID, " + kLinesMiddle +
         L"g.FName AS FUseState,i.FName AS FSPID,\r\n"
         L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName, u.FBomNumber \r\n"
         L" FROM ICCustBOMChild a" +
         kLinesJoins +
         L"left outer join t_SubMessage v on b.FErpClsID=v.FInterID \r\n"
         L"left outer join ICBOM u on u.FInterID=a.FCustBomCode) t1";
}

class CustBomPanelTest : public CustBomFixture {
 protected:
  void SetUp() override {
    CustBomFixture::SetUp();
    database_.Execute(
        L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName, FCoefficient) "
        L"VALUES (8, 8, 1, 'PCS', 'piece', 1), (9, 9, 1, 'DOZ', 'dozen', 12)");
    database_.Execute(
        L"INSERT INTO t_SubMessage (FInterID, FTypeID, FID, FName) VALUES (5, 210, 'PZ', 'Configured'), "
        L"(2, 210, 'ZZ', 'Made'), (371, 40, 'PT', 'Ordinary'), (385, 42, 'TY', 'General'), "
        L"(341, 36, 'SY', 'In use'), (71, 61, 'CUT', 'Cutting')");
    database_.Execute(
        L"INSERT INTO T_routing (FInterID, FBillNo, FRoutingName) VALUES (4, 'RT4', 'Assembly')");
    database_.Execute(L"INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FName, FDetail, FDeleted) VALUES "
                      L"(501, 4, '05.001', 'Made to order', 1, 0), (502, 4, '05.002', 'Frame', 1, 1)");
    database_.Execute(L"INSERT INTO t_Stock (FItemID, FNumber, FName) VALUES (802, '02', 'Parts')");
    database_.Execute(
        L"INSERT INTO t_StockPlace (FSPID, FNumber, FName) VALUES (0, '*', '*'), (11, 'A', 'Rack A')");
    database_.Execute(L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, "
                      L"FOperSN, FOperID, FStockID, "
                      L"FSPID, FBackFlush, FNote) VALUES (1, 1, 502, 9, 1, 12, 0, 0, NULL, 0, 1059, ''), "
                      L"(1, 2, 501, 8, 2.5, 2.5, 20, 71, 802, 11, 1058, 'x')");
  }
  void UseShortNumbers() const {
    database_.Execute(
        L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', 'UseShortNumber', '1')");
  }

  std::wstring Headers(const wchar_t* bomType, const wchar_t* filter, const wchar_t* order = L"") const {
    return custBom_.Call(L"GenRightTopDataSQL", Dsn(), L"3,4", bomType, filter, L"unused", order).AsText();
  }
  std::wstring Lines(const wchar_t* bomType, const wchar_t* filter = L"", const wchar_t* order = L"") const {
    return custBom_.Call(L"GenRightBottomSQL", Dsn(), bomType, 7, filter, order).AsText();
  }

  const Object custBom_ = Hosted(L"clsMCustBOM");
};

// ---- tree

struct TreeCase {
  const wchar_t* filter;
  const wchar_t* filter1;
  const wchar_t* term;
};

TEST_F(CustBomPanelTest, TheTreeCommandHasSixParameters) {
  Variant filter(L"FItemID>0");
  Variant filter1(L"");
  Variant order(L"unused");
  Variant lookType(L"");
  const Trace trace;
  const Object command =
      custBom_
          .Call(L"GenBomTreeDataSQL", Dsn(), Variant::Reference(filter), Variant::Reference(filter1),
                Variant::Reference(order), Variant::Reference(lookType))
          .AsObject();
  EXPECT_EQ(trace.Events(), Concat({SetUpCalls(), {L"LoadString\tBOM单", L"VoteComplete"}}));
  constexpr int32_t kStoredProcedure = 4;
  EXPECT_EQ(command.Get(L"CommandText"), Variant(L"sp_GetCustBOMTree"));
  EXPECT_EQ(command.Get(L"CommandType"), Variant(kStoredProcedure));
  const Object parameters = command.Get(L"Parameters").AsObject();
  Texts shapes;
  for (int32_t i = 0; i < parameters.Get(L"Count").AsLong(); ++i) {
    const Object parameter = parameters.Get(L"Item", i).AsObject();
    const Variant value = parameter.Get(L"Value");
    std::wstring shape = parameter.Get(L"Name").AsText();
    for (const wchar_t* property : {L"Type", L"Direction", L"Size"})
      shape += L"|" + parameter.Get(property).As(VT_BSTR).AsText();
    shapes.push_back(shape + L"|" + (value.IsEmpty() ? L"(none)" : value.AsText()));
  }
  // Type 3 int, 200 varchar; direction 1 input, 4 return value.
  EXPECT_EQ(shapes, (Texts{L"RETURN_VALUE|3|4|4|(none)", L"@p_FItemIDFrom|3|1|0|-1", L"@p_FItemIDTo|3|1|0|-1",
                           L"@p_FErpClsID|3|1|0|5", L"@p_Term|200|1|1000|FItemID>0",
                           L"@p_BomBill|200|1|1000|BOM单"}));
}

TEST_F(CustBomPanelTest, TheTreesTermJoinsTheConditionsThatThereAre) {
  const TreeCase cases[] = {{L"", L"", L""},
                            {L"FItemID>0", L"", L"FItemID>0"},
                            {L"", L" FStatus=1 ", L"FStatus=1"},
                            {L" FItemID>0 ", L"FStatus=1", L"FItemID>0 AND FStatus=1"},
                            {L"  ", L"  ", L""}};
  for (const TreeCase& tree : cases) {
    const Trace trace;
    custBom_.Call(L"GetTreeViewDataM", Dsn(), tree.filter, tree.filter1);
    EXPECT_EQ(trace.Details(L"Command"),
              Texts{L"sp_GetCustBOMTree\t@p_FItemIDFrom=-1\t@p_FItemIDTo=-1\t@p_FErpClsID=5\t@p_Term=" +
                    std::wstring(tree.term) + L"\t@p_BomBill=BOM单"});
  }
}

TEST_F(CustBomPanelTest, TheTreeForAChangeNoticeHasItemsOfAllClasses) {
  const Trace trace;
  custBom_.Call(L"GetTreeViewDataM", database_.Dsn(L"Language=en"), L"", L"", L"", L"EcnLookUp");
  EXPECT_EQ(trace.Details(L"Command"), Texts{L"sp_GetCustBOMTree\t@p_FItemIDFrom=-1\t@p_FItemIDTo=-1\t@p_"
                                             L"FErpClsID=-1\t@p_Term=\t@p_BomBill=BOM"});
}

TEST_F(CustBomPanelTest, TheTreesRowsComeOffTheirConnection) {
  const Trace trace;
  const Object rows = custBom_.Call(L"GetTreeViewDataM", Dsn()).AsObject();
  EXPECT_EQ(
      trace.Events(),
      Concat({SetUpCalls(),
              {kSwitch, L"LoadString\tBOM单",
               L"Command\tsp_GetCustBOMTree\t@p_FItemIDFrom=-1\t@p_FItemIDTo=-1\t@p_FErpClsID=5\t@p_Term=\t"
               L"@p_BomBill=BOM单",
               L"VoteComplete"}}));
  EXPECT_FALSE(rows.Get(L"ActiveConnection").AsObject());
  EXPECT_EQ(rows.Get(L"RecordCount"), Variant(9));
  EXPECT_EQ(ColumnsOf(rows),
            (Texts{L"FType", L"FRelative", L"FKey", L"FText", L"FImgNormal", L"FImgClick", L"FTag"}));
  // The customer BOMs hang under the configuration BOM they were made from, whatever the class of their own
  // item.
  EXPECT_EQ(RowsOf(rows), (Texts{L"0||qa|BOM单|1|2|", L"1|qa|ITEM 501|05.001(Made to order)|1|2|05.001",
                                 L"2|ITEM 501|BOM 1|CFG1(1.0)|15|15|1", L"3|BOM 1|BOM 9| KH9 (1.0)|17|17|9",
                                 L"3|BOM 1|BOM 12|KH12(1.0)|17|17|12", L"3|BOM 1|BOM 15|KH15(1.0)|17|17|15",
                                 L"3|BOM 1|BOM 20|KH20(1.0)|17|17|20", L"3|BOM 1|BOM 5|KH5(1.0)|17|17|5",
                                 L"3|BOM 1|BOM 7|KH7(1.0)|17|17|7"}));
}

TEST_F(CustBomPanelTest, TheTreesConditionSelectsBomsAndKeepsTheWayToThem) {
  const Object rows =
      custBom_.Call(L"GetTreeViewDataM", Dsn(), L"FBOMNumber LIKE 'KH1%'", L"FStatus = 1").AsObject();
  EXPECT_EQ(RowsOf(rows),
            (Texts{L"0||qa|BOM单|1|2|", L"1|qa|ITEM 501|05.001(Made to order)|1|2|05.001",
                   L"2|ITEM 501|BOM 1|CFG1(1.0)|15|15|1", L"3|BOM 1|BOM 15|KH15(1.0)|17|17|15"}));
  const Object all =
      custBom_.Call(L"GetTreeViewDataM", Dsn(), L"FItemID = 502", L"FBomType <> 3", L"", L"ECNLOOKUP")
          .AsObject();
  EXPECT_EQ(RowsOf(all), (Texts{L"0||qa|BOM单|1|2|", L"1|qa|ITEM 502|05.002(Frame)|1|2|05.002",
                                L"2|ITEM 502|BOM 2|B2(2.0)|3|3|2"}));
}

TEST_F(CustBomPanelTest, TheTreeCommandRunsInItsCallersHands) {
  Variant empty(L"");
  const Object command =
      custBom_
          .Call(L"GenBomTreeDataSQL", Dsn(), Variant::Reference(empty), Variant::Reference(empty),
                Variant::Reference(empty), Variant::Reference(empty))
          .AsObject();
  const Object connection = Object::Create(L"ADODB.Connection");
  connection.Call(L"Open", database_.Dsn());
  command.Put(L"ActiveConnection", connection);
  EXPECT_EQ(RowsOf(command.Call(L"Execute").AsObject()).size(), 9u);
  EXPECT_EQ(command.Get(L"Parameters").AsObject().Get(L"Item", L"RETURN_VALUE").AsObject().Get(L"Value"),
            Variant(0));
}

TEST_F(CustBomPanelTest, TheTreesRowsOutliveEverything) {
  Object rows;
  {
    const Object another = Hosted(L"clsMCustBOM");
    rows = another.Call(L"GetTreeViewDataM", Dsn()).AsObject();
  }
  database_.Execute(L"DELETE FROM ICBOM");
  EXPECT_EQ(RowsOf(rows).size(), 9u);
}

// ---- headers

TEST_F(CustBomPanelTest, TheHeaderStatementTakesTheIdOnlyWithAFilter) {
  const Trace trace;
  EXPECT_EQ(Headers(L"-1", L""), HeaderQuery());
  EXPECT_EQ(trace.Events(), Concat({SetUpCalls(),
                                    {kSwitch, L"LoadString\t未审核", L"LoadString\t已审核",
                                     L"LoadString\t使用", L"LoadString\t未使用", L"VoteComplete"}}));
  EXPECT_EQ(Headers(L"-1", L"anything"), HeaderQuery() + L" WHERE  FInterID IN (3,4)");
  EXPECT_EQ(Headers(L"-99", L"x", L"FBOMNumber DESC"),
            HeaderQuery() + L" WHERE  FInterID IN (3,4) ORDER BY FBOMNumber DESC");
  for (const wchar_t* one : {L"1", L"3", L"", L" -1", L"0"})
    EXPECT_EQ(Headers(one, L"x"), HeaderQuery() + L" WHERE  FInterID =3,4");
  EXPECT_EQ(Headers(L"3", L"", L"FInterID"), HeaderQuery() + L" ORDER BY FInterID");
}

TEST_F(CustBomPanelTest, TheStatementsFollowTheShortNumberSwitch) {
  UseShortNumbers();
  EXPECT_EQ(Headers(L"3", L""), HeaderQuery(L"b.FShortNumber AS FNumber,"));
  EXPECT_EQ(Lines(L"3"), CustomerLines(L"b.FShortNumber AS FNumber,"));
  EXPECT_EQ(Lines(L"1"), OrdinaryLines(L"b.FShortNumber AS FNumber,"));
  for (const wchar_t* off : {L"'0'", L"NULL"}) {
    database_.Execute(std::wstring(L"UPDATE t_SystemProfile SET FValue = ") + off);
    EXPECT_EQ(Lines(L"3"), CustomerLines());
  }
  database_.Execute(L"UPDATE t_SystemProfile SET FValue = 'yes'");
  EXPECT_EQ(RaisedBy([&] { Lines(L"3"); }).code, DISP_E_TYPEMISMATCH);
}

TEST_F(CustBomPanelTest, TheHeadersComeInTheCallersLanguage) {
  const Trace trace;
  const Object rows =
      custBom_.Call(L"GetRightTopDataM", database_.Dsn(L"Language=en"), L"1,5", L"-1", L"x", L"", L"FInterID")
          .AsObject();
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteComplete"}));
  EXPECT_EQ(trace.Details(L"Execute").size(), 1u);
  EXPECT_EQ(trace.Details(L"Open").size(), 1u);
  EXPECT_EQ(
      RowsOf(rows),
      (Texts{
          L"1|CFG1|1.0||Made to order|05.001|Audited|1|In "
          L"use|1072|100|1|1|3|2|1|0|501|M1|piece|8|Configured|RT4|"
          L"Assembly",
          L"5|KH5|1.0||Frame|05.002|Audited|1|In use|1072|100|1|1|1|0|3|7|502|M2|piece|9|Made|NULL|NULL"}));
  const Object cht = custBom_.Call(L"GetRightTopDataM", database_.Dsn(), L"2", L"1", L"x").AsObject();
  EXPECT_EQ(
      RowsOf(cht),
      Texts{L"2|B2|2.0|n2|Frame|05.002|未審核|0|未使用|1073|100|1|1|3|0|0|0|502|M2|piece|9|Made|NULL|NULL"});
}

TEST_F(CustBomPanelTest, AnEmptyFilterListsAll) {
  // All eight BOMs, whichever is selected.
  for (const wchar_t* bomType : {L"-1", L"1", L"3"})
    EXPECT_EQ(RowsOf(custBom_.Call(L"GetRightTopDataM", Dsn(), L"5", bomType, L"", L"FInterID=5").AsObject())
                  .size(),
              8U);
  EXPECT_EQ(RowsOf(custBom_.Call(L"GetRightTopDataM", Dsn(), L"5", L"3", L"x").AsObject()).size(), 1U);
  // All lines of ordinary BOMs, or of customer BOMs.
  EXPECT_EQ(RowsOf(custBom_.Call(L"GetRightBottomDataM", Dsn(), L"1").AsObject()).size(), 2U);
  EXPECT_EQ(RowsOf(custBom_.Call(L"GetRightBottomDataM", Dsn(), L"3").AsObject()).size(), 6U);
}

// ---- lines

TEST_F(CustBomPanelTest, TheLinesAreOfCustomerBomsForTheTypeThree) {
  const Trace trace;
  EXPECT_EQ(Lines(L"3"), CustomerLines());
  const Texts yesNo{L"LoadString\t否", L"LoadString\t是"};
  EXPECT_EQ(trace.Events(), Concat({SetUpCalls(), {kSwitch}, yesNo, yesNo, yesNo, {L"VoteComplete"}}));
  for (const wchar_t* other : {L"03", L"", L"1", L" 3"}) EXPECT_EQ(Lines(other), OrdinaryLines());
  EXPECT_EQ(custBom_.Call(L"GenRightBottomSQL", Dsn()), Variant(OrdinaryLines()));
  EXPECT_EQ(Lines(L"3", L"FInterID = 12", L"FEntryID"),
            CustomerLines() + L" WHERE FInterID = 12 ORDER BY FEntryID");
}

TEST_F(CustBomPanelTest, TheLinesOfAnOrdinaryBom) {
  const Trace trace;
  const Object rows =
      custBom_.Call(L"GetRightBottomDataM", Dsn(), L"1", 0, L"FInterID = 1", L"FEntryID").AsObject();
  EXPECT_EQ(trace.Details(L"Open"), Texts{OrdinaryLines() + L" WHERE FInterID = 1 ORDER BY FEntryID"});
  EXPECT_EQ(rows.Get(L"RecordCount"), Variant(2));
  EXPECT_EQ(RowsOf(rows),
            (Texts{L"1|1|502|05.002|Frame|M2|piece|dozen|Ordinary|General|1|12|0|1900-01-01|2100-01-01|100||"
                   L"NULL||0|否|否|"
                   L"是|In use||||0|Made",
                   L"2|1|501|05.001|Made to "
                   L"order|M1|piece|piece|Ordinary|General|2.5|2.5|0|1900-01-01|2100-01-01|100|20|"
                   L"Cutting||0|是|是|否|In use|Rack A|Parts|x|2|Configured"}));
}

TEST_F(CustBomPanelTest, TheLinesOfACustomerBomNameTheBomTheyAreBuiltFrom) {
  const Object rows =
      custBom_.Call(L"GetRightBottomDataM", Dsn(), L"3", 0, L"FInterID IN (9, 20)", L"FInterID").AsObject();
  EXPECT_EQ(RowsOf(rows), (Texts{L"1|9|502|05.002|Frame|M2|piece|piece|Ordinary|General|1|1|0|1900-01-01|"
                                 L"2100-01-01|100||NULL||0|否|否|是|"
                                 L"In use|*|||0|Made|KH5",
                                 L"1|20|502|05.002|Frame|M2|piece|piece|Ordinary|General|4|4|0|1900-01-01|"
                                 L"2100-01-01|100||NULL||0|否|否|是|"
                                 L"In use|*|||0|Made|NULL"}));
}

// ---- failure paths: these methods let every failure rise

struct PanelCall {
  const wchar_t* method;
  OutsideCall call;
};

class CustBomPanelFailure : public CustBomPanelTest, public testing::WithParamInterface<PanelCall> {};

TEST_P(CustBomPanelFailure, RisesUnchanged) {
  const Fault fault(GetParam().call.kind, GetParam().call.nth);
  const std::wstring method = GetParam().method;
  const Raised raised = RaisedBy([&] {
    if (method == L"GenBomTreeDataSQL") {
      Variant empty(L"");
      custBom_.Call(L"GenBomTreeDataSQL", Dsn(), Variant::Reference(empty), Variant::Reference(empty),
                    Variant::Reference(empty), Variant::Reference(empty));
    } else if (method == L"GetRightTopDataM") {
      custBom_.Call(L"GetRightTopDataM", Dsn(), L"1", L"1");
    } else {
      custBom_.Call(method.c_str(), Dsn());
    }
  });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.source, L"ErpStandIn");
  EXPECT_EQ(raised.description, Fault::kText);
}

std::vector<PanelCall> PanelCalls() {
  std::vector<PanelCall> calls;
  for (const wchar_t* method :
       {L"GenBomTreeDataSQL", L"GetTreeViewDataM", L"GetRightTopDataM", L"GetRightBottomDataM"})
    for (const wchar_t* kind :
         {L"GetDataContext", L"BindDsn", L"GetCallerInfo", L"GetConnection", L"VoteComplete"})
      calls.push_back({method, {kind, 1}});
  for (const wchar_t* method : {L"GetTreeViewDataM", L"GetRightTopDataM", L"GetRightBottomDataM"})
    calls.push_back({method, {L"Execute", 1}});
  calls.push_back({L"GetTreeViewDataM", {L"Command", 1}});
  for (const wchar_t* method : {L"GetRightTopDataM", L"GetRightBottomDataM"}) {
    calls.push_back({method, {L"Open", 1}});
    calls.push_back({method, {L"VoteComplete", 2}});
  }
  return calls;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CustBomPanelFailure, testing::ValuesIn(PanelCalls()));

TEST_F(CustBomPanelTest, AWrongConditionRisesInTheProvidersWords) {
  const Raised lines =
      RaisedBy([&] { custBom_.Call(L"GetRightBottomDataM", Dsn(), L"3", 0, L"NoColumn = 1"); });
  EXPECT_EQ(static_cast<unsigned>(lines.code), 0x80040E14u);
  EXPECT_EQ(lines.description, L"Invalid column name 'NoColumn'.");
  const Raised tree = RaisedBy([&] { custBom_.Call(L"GetTreeViewDataM", Dsn(), L"NoColumn = 1"); });
  EXPECT_EQ(tree.description, L"Invalid column name 'NoColumn'.");
  EXPECT_TRUE(FAILED(RaisedBy([&] { custBom_.Call(L"GetTreeViewDataM", kBindsNothing); }).code));
}

} // namespace
} // namespace mbom::test
