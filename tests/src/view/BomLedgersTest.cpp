// The column titles and the ledgers of BomView: their statements, languages, extension columns and rows.
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

class LedgersTest : public testing::Test {
 protected:
  void SetUp() override {
    FillBrowserData(database_);
    database_.Execute(L"INSERT INTO ICTransactionType (FID, FName, FTemplateID) VALUES (50, 'BOM', 'Z01'), "
                      L"(53, 'C', 'Z03')");
  }
  std::wstring Dsn(const wchar_t* language) const {
    return database_.Dsn(std::wstring(L"Language=") + language);
  }
  void AddUserDefinedFields() const {
    database_.Execute(
        L"INSERT INTO ICTemplate (FID, FCtlIndex, FFieldName, FCaption, FCaption_CHT, FCaption_EN, FCtlType, "
        L"FLookUpCls, FDefaultCtl) VALUES ('Z01', 1, 'FItemID', '物料', '物料', 'Item', 1, 4, 1), "
        L"('Z01', 41, 'FDept', '部门', '部門', 'Department', 1, 2, 0), "
        L"('Z01', 40, 'FDrawing', '图号', '圖號', 'Drawing', 0, -1, 0), "
        L"('Z03', 40, 'FOther', 'x', 'x', 'x', 0, -1, 0)");
    database_.Execute(
        L"INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FHeadCaption, FHeadCaption_CHT, "
        L"FHeadCaption_EN, FDefaultCtl) VALUES ('Z01', 1, 'FAuxQty', '用量', '用量', 'Quantity', 1), "
        L"('Z01', 30, 'FPartNo', '料号', '料號', 'Part Number', 0)");
    database_.Execute(
        L"INSERT INTO ICUserDefinedValue (FTranType, FInterID, FEntryID, FFieldName, FID, FName) "
        L"VALUES (50, 11, 0, 'FDrawing', 'D-11', NULL), (50, 11, 0, 'FDept', '3', 'Frames'), "
        L"(50, 11, 2, 'FPartNo', 'P-2', NULL)");
  }
  void AddExtension() const {
    database_.Execute(L"INSERT INTO t_components VALUES ('QorvaneMBomBill.BomView', 'Ext.BomView')");
  }

  const TestDatabase database_;
  const Object view_ = Hosted(L"BomView");
};

// ---- titles

class TitlesTest : public LedgersTest {
 protected:
  void SetUp() override {
    LedgersTest::SetUp();
    AddUserDefinedFields();
    database_.Execute(
        L"INSERT INTO ICTableFieldInfo (FNum, FCtlID, FCtlName, FCtlName_Cht, FCtlName_En, FLdgNum, FOrder, "
        L"FCaption, FCaption_Cht, FCaption_En, FHeadSecond, FName, FAlign, FVisible, FDecCtl, "
        L"FNeedHeadSecond) "
        L"VALUES "
        L"(2, 'BOM', 'n', 'nt', 'ne', 0, 3, 'c2', 'ct2', 'ce2', 'h', 'FVersion', 1, '1', 2, 1), "
        L"(1, 'BOM', 'n', 'nt', 'ne', 0, 1, 'c1', 'ct1', 'ce1', '', 'FBOMNumber', 0, '1', 0, 0), "
        L"(3, 'BOM', 'n', 'nt', 'ne', 0, 2, 'c3', 'ct3', 'ce3', '', 'FFee', 0, '0', 0, 0), "
        L"(1, 'BOM', 'n', 'nt', 'ne', 1, 1, 'l1', 'lt1', 'le1', '', 'FEntryID', 0, '1', 0, 0), "
        L"(2, 'BOM', 'n', 'nt', 'ne', 1, 2, 'l2', 'lt2', 'le2', '', 'FBeginDay', 0, '1', 0, 0), "
        L"(3, 'BOM', 'n', 'nt', 'ne', 1, 3, 'l3', 'lt3', 'le3', '', 'FEndDay', 0, '1', 0, 0), "
        L"(1, 'CustBOM', 'n', 'nt', 'ne', 0, 1, 'k1', 'kt1', 'ke1', '', 'FBOMNumber', 0, '1', 0, 0), "
        L"(1, 'CustBOM', 'n', 'nt', 'ne', 1, 1, 'm1', 'mt1', 'me1', '', 'FEntryID', 0, '1', 0, 0)");
  }

  // A title list's statement: its columns in a language, and the rest.
  static std::wstring Fixed(const wchar_t* language, const std::wstring& rest) {
    const std::wstring of = language;
    const std::wstring name = of == L"cht"  ? L"FCtlName_Cht as FCtlName"
                              : of == L"en" ? L"FCtlName_En as FCtlName"
                                            : L"FCtlName";
    const std::wstring caption = of == L"cht"  ? L"FCaption_Cht as FCaption"
                                 : of == L"en" ? L"FCaption_En as FCaption"
                                               : L"FCaption";
    return L"SELECT FNum,FCtlID," + name + L",FLdgNum,FOrder," + caption +
           L",FHeadSecond,FName,FAlign,FVisible,FDecCtl,FNeedHeadSecond " + rest;
  }
  static std::wstring User(const wchar_t* name, const wchar_t* caption, const std::wstring& filter = {}) {
    return std::wstring(L"SELECT 0 as FNum,'BOM' as FCtlID,'") + name +
           L"' as FCtlName,0 as FLdgNum,FFieldName,FCtlIndex+1000 as FOrder," + caption +
           L" as FCaption,'' as FHeadSecond,FFieldName as FName,0 as FAlign,1 as FVisible,0 as FDecCtl,0 as "
           L"FNeedHeadSecond  FROM ICTemplate WHERE FID='Z01' AND FDefaultCtl=0 " +
           filter + L" ORDER BY FCtlIndex";
  }
  static std::wstring UserEntry(const wchar_t* name, const wchar_t* caption,
                                const std::wstring& filter = {}) {
    return std::wstring(L"SELECT 0 as FNum,'BOM' as FCtlID,'") + name +
           L"' as FCtlName,1 as FLdgNum,FFieldName,FCtlOrder+1000 as FOrder," + caption +
           L" as FCaption,'' as FHeadSecond,FFieldName as FName,0 as FAlign,1 as FVisible,0 as FDecCtl,0 as "
           L"FNeedHeadSecond  FROM ICTemplateEntry WHERE FID='Z01' AND FDefaultCtl=0 " +
           filter + L" ORDER BY FCtlOrder";
  }
  static Texts SetUpOn(const std::wstring& dsn) {
    return {L"GetDataContext", L"BindDsn\t" + dsn, L"GetCallerInfo", L"GetConnectionObject"};
  }
};

const std::vector<const wchar_t*> kTitleColumns{L"FNum",   L"FCtlID",   L"FCtlName",    L"FLdgNum",
                                                L"FOrder", L"FCaption", L"FHeadSecond", L"FName",
                                                L"FAlign", L"FVisible", L"FDecCtl",     L"FNeedHeadSecond"};
constexpr wchar_t kBomTitles[] = L" FROM ICTableFieldInfo WHERE FCtlID='BOM' AND FLdgNum=0 AND Fvisible = 1";
constexpr wchar_t kBomEntryTitles[] =
    L" FROM ICTableFieldInfo WHERE FCtlID='BOM' AND FLdgNum=1 AND Fvisible = 1  And FName not "
    L"in('FBeginDay','FEndDay') ";

TEST_F(TitlesTest, AppendsTheUserDefinedOnesToTheFixedOnes) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  const Variant titles = view_.Call(L"GetBomTitle", dsn);
  Texts events = SetUpOn(dsn);
  events.push_back(L"Open\t" + Fixed(L"en", kBomTitles) + L" ORDER BY FOrder");
  for (const std::wstring& event : SetUpOn(dsn)) events.push_back(event);
  events.push_back(L"Open\t" + User(L"BOM Query", L"FCaption_EN"));
  events.insert(events.end(), {L"VoteComplete", L"VoteComplete"});
  EXPECT_EQ(trace.Events(), events);
  EXPECT_EQ(RowTexts(titles, kTitleColumns),
            (Texts{L"1|BOM|ne|0|1|ce1||FBOMNumber|0|1|0|0", L"2|BOM|ne|0|3|ce2|h|FVersion|1|1|2|1",
                   L"0|BOM|BOM Query|0|1040|Drawing||FDrawing|0|1|0|0",
                   L"0|BOM|BOM Query|0|1041|Department||FDept|0|1|0|0"}));
  EXPECT_EQ(RowTexts(titles, {L"FFieldName"}), (Texts{L"", L"", L"FDrawing", L"FDept"}));
  Texts names;
  for (const wchar_t* name : kTitleColumns) names.emplace_back(name);
  EXPECT_EQ(KeysOf(titles.AsObject().Get(L"Item", 1).AsObject()), names);
}

TEST_F(TitlesTest, TakesTheColumnsOfTheLanguage) {
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(L"cHt")), {L"FCtlName", L"FCaption"}),
            (Texts{L"nt|ct1", L"nt|ct2", L"BOM查詢|圖號", L"BOM查詢|部門"}));
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(L"En")), {L"FCaption"}).front(), L"ce1");
  for (const wchar_t* plain : {L"chs", L"de", L"en "})
    EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(plain)), {L"FCtlName", L"FCaption"}),
              (Texts{L"n|c1", L"n|c2", L"BOM查询|图号", L"BOM查询|部门"}));
  // Without a language it is traditional Chinese.
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", database_.Dsn()), {L"FCaption"}).front(), L"ct1");
  const Texts statements = trace.Details(L"Open");
  EXPECT_EQ(statements[0], Fixed(L"cht", kBomTitles) + L" ORDER BY FOrder");
  EXPECT_EQ(statements[1], User(L"BOM查詢", L"FCaption_CHT"));
  EXPECT_EQ(statements[4], Fixed(L"chs", kBomTitles) + L" ORDER BY FOrder");
  EXPECT_EQ(statements[5], User(L"BOM查询", L"FCaption"));
}

TEST_F(TitlesTest, LeavesTheUserDefinedOnesOutForCustomerBoms) {
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(L"en"), L"", true), {L"FNum"}), (Texts{L"1", L"2"}));
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomEntryTitle", Dsn(L"en"), L"", true), {L"FNum"}), Texts{L"1"});
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteComplete"}));
}

TEST_F(TitlesTest, PassesItsFilterToBoth) {
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(L"en"), L"FCaption<>'图号'"), {L"FCaption"}),
            (Texts{L"ce1", L"ce2", L"Department"}));
  EXPECT_EQ(trace.Details(L"Open"),
            (Texts{Fixed(L"en", kBomTitles) + L" AND FCaption<>'图号' ORDER BY FOrder",
                   User(L"BOM Query", L"FCaption_EN", L" AND FCaption<>'图号'")}));
  // One that the templates do not know fails there, after the first half.
  trace.Clear();
  EXPECT_EQ(RaisedBy([&] { view_.Call(L"GetBomTitle", Dsn(L"en"), L"FAlign=0"); }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
}

TEST_F(TitlesTest, NeverListsTheValidityOfLines) {
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomEntryTitle", Dsn(L"cht")), kTitleColumns),
            (Texts{L"1|BOM|nt|1|1|lt1||FEntryID|0|1|0|0", L"0|BOM|BOM查詢|1|1030|料號||FPartNo|0|1|0|0"}));
  view_.Call(L"GetBomEntryTitle", Dsn(L"en"), L"1=1");
  view_.Call(L"GetBomEntryTitle", Dsn(L"chs"));
  EXPECT_EQ(
      trace.Details(L"Open"),
      (Texts{Fixed(L"cht", kBomEntryTitles) + L" ORDER BY FOrder", UserEntry(L"BOM查詢", L"FHeadCaption_CHT"),
             Fixed(L"en", kBomEntryTitles) + L" AND 1=1 ORDER BY FOrder",
             UserEntry(L"BOM Query", L"FHeadCaption_EN", L" AND 1=1"),
             Fixed(L"chs", kBomEntryTitles) + L" ORDER BY FOrder", UserEntry(L"BOM查询", L"FHeadCaption")}));
}

TEST_F(TitlesTest, ListsTheUserDefinedOnesAlone) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomUserDefinedTitle", dsn), {L"FOrder", L"FFieldName", L"FName"}),
            (Texts{L"1040|FDrawing|FDrawing", L"1041|FDept|FDept"}));
  Texts events = SetUpOn(dsn);
  events.insert(events.end(), {L"Open\t" + User(L"BOM Query", L"FCaption_EN"), L"VoteComplete"});
  EXPECT_EQ(trace.Events(), events);
  trace.Clear();
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomEntryUserDefinedTitle", dsn, L"FCtlOrder>1"), {L"FOrder", L"FName"}),
            Texts{L"1030|FPartNo"});
  EXPECT_EQ(trace.Details(L"Open"), Texts{UserEntry(L"BOM Query", L"FHeadCaption_EN", L" AND FCtlOrder>1")});
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
}

TEST_F(TitlesTest, ListsTheCustomersHeaders) {
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetCustBomTitle", Dsn(L"en"), L"FNum=1"), {L"FCtlID", L"FCaption"}),
            Texts{L"CustBOM|ke1"});
  EXPECT_EQ(
      trace.Details(L"Open"),
      Texts{Fixed(L"en", L" FROM ICTableFieldInfo WHERE FCtlID='CustBOM' AND FLdgNum=0 AND Fvisible = 1 AND "
                         L"FNum=1 ORDER BY FOrder")});
}

TEST_F(TitlesTest, SendsTheBrokenConditionOfTheCustomersLines) {
  const Trace trace;
  const Raised raised = RaisedBy([&] { view_.Call(L"GetCustBomEntryTitle", Dsn(L"en"), L"1=1"); });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(raised.description, L"Incorrect syntax near 'Fvisible'.");
  EXPECT_EQ(
      trace.Details(L"Open"),
      Texts{Fixed(L"en", L" FROM ICTableFieldInfo WHERE FCtlID='CustBOM' AND FLdgNum=1 Fvisible = 1 AND 1=1 "
                         L"ORDER BY FOrder")});
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

TEST_F(TitlesTest, TakesAnEmptyLanguageForTraditionalChinese) {
  for (const wchar_t* empty : {L"", L"  ", L" ;x=y"})
    EXPECT_EQ(RowTexts(view_.Call(L"GetBomTitle", Dsn(empty)), {L"FCtlName", L"FCaption"}),
              (Texts{L"nt|ct1", L"nt|ct2", L"BOM查詢|圖號", L"BOM查詢|部門"}));
}

// ---- ledgers

constexpr wchar_t kExtensionQuery[] =
    L"select FComponentExt from t_components where FComponent = 'QorvaneMBomBill.BomView'";
constexpr wchar_t kHeadFieldsQuery[] =
    L"SELECT t1.FFieldName FROM ICTemplate t1 INNER JOIN ICTransactionType t2 ON "
    L"\r\nt1.FID=t2.FTemplateID WHERE t2.FID=50 AND t1.FDefaultCtl=0 ";
constexpr wchar_t kEntryFieldsQuery[] =
    L"SELECT t1.FFieldName FROM ICTemplateEntry t1 INNER JOIN ICTransactionType t2 ON "
    L"\r\nt1.FID=t2.FTemplateID WHERE t2.FID=50 AND t1.FDefaultCtl=0 ";

// The texts of a ledger in one language.
struct Words {
  const wchar_t* language;
  std::wstring notAudited;
  std::wstring audited;
  std::wstring inUse;
  std::wstring notInUse;
  std::wstring yes;
  std::wstring no;
};
const Words kSimplified{L"chs", L"未审核", L"已审核", L"使用", L"未使用", L"是", L"否"};
const Words kTraditional{L"cht", L"未審核", L"已審核", L"使用", L"未使用", L"是", L"否"};
const Words kEnglish{L"en", L"Not audited", L"Audited", L"In use", L"Not in use", L"Yes", L"No"};

std::wstring BomLedgerStatement(const Words& words, const std::wstring& number,
                                const std::wstring& extension) {
  return L"SELECT * FROM ( SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,b.FErpClsID," + number +
         L" (case a.FStatus when 0 then '" + words.notAudited + L"' else '" + words.audited +
         L"' end) as FStatus , d.FBillNO AS FRoutingNo, d.FRoutingName as FRoutingName, a.FStatus as "
         L"FStatusNum "
         L",CASE FUseStatus WHEN 1072 THEN '" +
         words.inUse + L"' ELSE '" + words.notInUse +
         L"' END AS FUseStatus,FUseStatus as FUseStatusNum ,a.FYield,a.FQty,a.FAuxQty,a.FFee,a.FParentID,"
         L"b.FQtyDecimal,a.FBomType,a.FCustID, a.FItemID,b.FModel,e.FName AS FErpClsName,c.FName AS "
         L"FUnitID,b.FCUUnitID, t1.FInterID AS FGroupID, t1.FNumber AS FGroupNumber, t1.FName AS "
         L"FGroupName " +
         extension +
         L"FROM ICBOM a INNER JOIN t_ICItem b ON a.FItemID = b.FItemID INNER JOIN t_MeasureUnit c ON "
         L"a.FUnitID=c.FItemID LEFT JOIN t_Routing d ON a.FRoutingID = d.FInterID INNER JOIN t_submessage e "
         L"ON  "
         L"b.FErpClsID = e.FInterID LEFT JOIN ICBomGroup t1 ON a.FParentID = t1.FInterID ) t1 ";
}

std::wstring FlagColumns(const Words& words) {
  const std::wstring then = L" THEN '" + words.no + L"' ELSE '" + words.yes + L"' END AS ";
  return L"CASE a.FBackFlush WHEN 1059" + then + L"FBackFlush,CASE b.FIsKeyItem WHEN 0" + then +
         L"FIsKeyItem,CASE h.FDeleted WHEN 0" + then + L"FForbitUse,";
}

constexpr wchar_t kLineJoins[] =
    L"\ninner join t_ICItem b on a.FItemID = b.FItemID\n"
    L"left join (SELECT FItemID,FName FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c on "
    L"ISNULL(a.FStockID,0) = c.FItemID\n"
    L"left join t_MeasureUnit d on b.FUnitID = d.FItemID\n"
    L"left join t_SubMessage e on a.FMaterielType = e.FInterID\n"
    L"left join t_SubMessage f on a.FMarshalType= f.FInterID \n"
    L"left join t_SubMessage g on b.FUseState = g.FInterID\n"
    L"left join t_Item h on b.FItemID = h.FItemID\n"
    L"left join t_StockPlace i on a.FSPID = i.FSPID\n"
    L"left join t_SubMessage j on a.FOperID = j.FInterID and j.FTypeID = 61\n"
    L"left join t_MeasureUnit w on a.FunitID=w.FitemID ";

std::wstring EntryLedgerStatement(const Words& words, const std::wstring& number, const std::wstring& colours,
                                  bool extension) {
  return WithCrLf(L"SELECT a.FEntryID,a.FInterID,b.FItemID," + number +
                  L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID,e.FName AS "
                  L"FMaterielType,f.FName "
                  L"AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap,a.FBeginDay,a.FEndDay,a.FPercent,(case "
                  L"a.FOperSN when 0 then '' "
                  L"else cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS "
                  L"FOperID,a.FMachinePos,a.FOffSetDay,a.FBeginDay, a.FEndday, " +
                  colours + FlagColumns(words) +
                  L"g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,c.FName AS "
                  L"FStockID,a.FNote,b.FQtyDecimal, v.FName AS FErpClsName " +
                  (extension ? L",w1.FName as FGMPUnitID,a.FGMPAuxQty " : L"") +
                  L"\n FROM IcBom a1 INNER JOIN ICBOMChild a ON a1.FinterId = a.FinterID " + kLineJoins +
                  (extension ? L"\nleft join t_MeasureUnit w1 on a.FGMPUnitID=w1.FitemID " : L"") +
                  L"\nleft join t_SubMessage v on b.FErpClsID=v.FInterID ");
}

constexpr wchar_t kNoColours[] = L"0 AS FAlterBackColor, '255,255,255' AS FBackColor, ";

TEST_F(LedgersTest, ListsHeaders) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  const Variant rows = view_.Call(L"GetBomLdgInfo", dsn, L"FInterID IN (11,16)", L"FInterID");
  const std::wstring statement =
      BomLedgerStatement(kEnglish, L"b.FNumber,", L"") + L" WHERE FInterID IN (11,16) ORDER BY FInterID";
  const Texts words{L"LoadString\t未审核", L"LoadString\t已审核", L"LoadString\t使用", L"LoadString\t未使用"};
  Texts events{L"GetDataContext",
               L"BindDsn\t" + dsn,
               L"GetCallerInfo",
               L"GetConnectionObject",
               std::wstring(L"Open\t") + kSettingQuery,
               std::wstring(L"Execute\t") + kExtensionQuery};
  events.insert(events.end(), words.begin(), words.end());
  events.push_back(L"Open\t" + statement);
  // The reader of the user-defined values: a new object, and a call of its own.
  events.insert(events.end(), {L"GetDataContext", L"GetCallerInfo"});
  for (const std::wstring& event :
       AroundSetUp({}, dsn, {std::wstring(L"Open\t") + kHeadFieldsQuery, L"VoteComplete", L"VoteComplete"}))
    events.push_back(event);
  EXPECT_EQ(trace.Events(), events);
  EXPECT_EQ(
      RowTexts(rows, {L"FInterID", L"FBOMNumber", L"FVersion", L"FNote", L"FName", L"FErpClsID", L"FNumber",
                      L"FStatus", L"FRoutingNo", L"FRoutingName", L"FStatusNum", L"FUseStatus",
                      L"FUseStatusNum", L"FYield", L"FQty", L"FAuxQty", L"FFee", L"FParentID"}),
      (Texts{L"11|B11|v1|first|Bike|2|I.501|Audited|R7|Line 7|1|In use|1072|98|2|1|3.5|2",
             L"16|B16|||Hub|1|I.504|Audited|NULL|NULL|1|In use|1072|100|1|1|0|0"}));
  EXPECT_EQ(
      RowTexts(rows, {L"FQtyDecimal", L"FBomType", L"FCustID", L"FItemID", L"FModel", L"FErpClsName",
                      L"FUnitID", L"FCUUnitID", L"FGroupID", L"FGroupNumber", L"FGroupName"}),
      (Texts{L"0|0|0|501|M1|Made|piece|2|2|G1.1|City", L"0|4|0|504|NULL|Bought|pair|2|NULL|NULL|NULL"}));
  EXPECT_FALSE(rows.AsObject().Get(L"Item", 1).AsObject().Call(L"Exists", L"FGMPExpectQty").AsBool());
}

TEST_F(LedgersTest, SpeakTheLanguages) {
  for (const Words& words : {kSimplified, kTraditional, kEnglish}) {
    const Trace trace;
    EXPECT_EQ(RowTexts(view_.Call(L"GetBomLdgInfo", Dsn(words.language), L"", L"FInterID"),
                       {L"FStatus", L"FUseStatus"}),
              (Texts{words.audited + L"|" + words.inUse, words.notAudited + L"|" + words.notInUse,
                     words.audited + L"|" + words.inUse, words.audited + L"|" + words.notInUse,
                     words.audited + L"|" + words.inUse, words.audited + L"|" + words.inUse}));
    // 11's line 1 is not back-flushed, no key item and deleted; its line 2 is back-flushed.
    EXPECT_EQ(
        RowTexts(view_.Call(L"GetBomEntryLdgInfo", Dsn(words.language), 0, L"a.FInterID=11", L"a.FEntryID"),
                 {L"FBackFlush", L"FIsKeyItem", L"FForbitUse"}),
        (Texts{words.no + L"|" + words.no + L"|" + words.yes,
               words.yes + L"|" + words.no + L"|" + words.no}));
    EXPECT_EQ(
        RowTexts(view_.Call(L"GetCustBomLdgInfo", Dsn(words.language), L"FInterID=12"), {L"FUseStatus"}),
        Texts{words.notInUse});
    const Texts statements = trace.Details(L"Open");
    EXPECT_EQ(statements[1], BomLedgerStatement(words, L"b.FNumber,", L"") + L" ORDER BY FInterID");
    EXPECT_EQ(statements[4], EntryLedgerStatement(words, L"b.FNumber,", kNoColours, false) +
                                 L" WHERE a.FInterID=11 ORDER BY a.FEntryID");
  }
}

TEST_F(LedgersTest, AddTheColumnsOfAnExtension) {
  AddExtension();
  const Trace trace;
  const Variant heads = view_.Call(L"GetBomLdgInfo", Dsn(L"en"), L"FInterID=11");
  EXPECT_EQ(RowTexts(heads, {L"FGMPExpectQty"}), Texts{L"40"});
  const Variant lines = view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"a.FInterID=11", L"a.FEntryID");
  EXPECT_EQ(RowTexts(lines, {L"FGMPUnitID", L"FGMPAuxQty"}), (Texts{L"pair|6", L"NULL|0"}));
  EXPECT_EQ(trace.Details(L"Execute"), (Texts{kExtensionQuery, kExtensionQuery}));
  const Texts statements = trace.Details(L"Open");
  EXPECT_EQ(statements[1],
            BomLedgerStatement(kEnglish, L"b.FNumber,", L",FGMPExpectQty ") + L" WHERE FInterID=11");
  EXPECT_EQ(statements[4], EntryLedgerStatement(kEnglish, L"b.FNumber,", kNoColours, true) +
                               L" WHERE a.FInterID=11 ORDER BY a.FEntryID");
}

TEST_F(LedgersTest, DoWithoutAnExtensionThatCannotBeRead) {
  AddExtension();
  const Trace trace;
  const Fault fault(L"Execute");
  const Variant heads = view_.Call(L"GetBomLdgInfo", Dsn(L"en"), L"FInterID=11");
  EXPECT_FALSE(heads.AsObject().Get(L"Item", 1).AsObject().Call(L"Exists", L"FGMPExpectQty").AsBool());
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteComplete"}));
  // Nor one of another component.
  database_.Execute(L"UPDATE t_components SET FComponent = 'QorvaneMBomBill.BomInfo'");
  const Variant others = view_.Call(L"GetBomLdgInfo", Dsn(L"en"), L"FInterID=11");
  EXPECT_FALSE(others.AsObject().Get(L"Item", 1).AsObject().Call(L"Exists", L"FGMPExpectQty").AsBool());
}

TEST_F(LedgersTest, ShowShortNumbers) {
  database_.Execute(
      L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', 'UseShortNumber', '2')");
  database_.Execute(
      L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FUnitID) VALUES (15, 1, 502, 1)");
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  const auto number = [](const Variant& rows) { return RowTexts(rows, {L"FNumber"}); };
  EXPECT_EQ(number(view_.Call(L"GetBomLdgInfo", dsn, L"FInterID=11")), Texts{L"501"});
  EXPECT_EQ(number(view_.Call(L"GetBomEntryLdgInfo", dsn, 0, L"a.FInterID=12")), Texts{L"504"});
  EXPECT_EQ(number(view_.Call(L"GetCustBomLdgInfo", dsn, L"FInterID=12")), Texts{L"502"});
  EXPECT_EQ(number(view_.Call(L"GetCustBomEntryLdgInfo", dsn)), Texts{L"502"});
  const Texts statements = trace.Details(L"Open");
  EXPECT_EQ(statements[1],
            BomLedgerStatement(kEnglish, L"b.FShortNumber AS FNumber,", L"") + L" WHERE FInterID=11");
  EXPECT_EQ(statements[4], EntryLedgerStatement(kEnglish, L"b.FShortNumber AS FNumber,", kNoColours, false) +
                               L" WHERE a.FInterID=12");
}

TEST_F(LedgersTest, ListLines) {
  const std::wstring dsn = Dsn(L"en");
  const Variant rows = view_.Call(L"GetBomEntryLdgInfo", dsn, 7, L"a1.FBOMNumber='B11'", L"a.FEntryID");
  EXPECT_EQ(RowTexts(rows, {L"FEntryID", L"FInterID", L"FItemID", L"FNumber", L"FItemName", L"FModel",
                            L"FBaseUnitID", L"FUnitID", L"FMaterielType", L"FMarshalType", L"FAuxQty",
                            L"FQty", L"FScrap", L"FBeginDay", L"FEndDay", L"FPercent"}),
            (Texts{L"1|11|502|I.502|Wheel|M2|piece|pair|Ordinary|General|1|2|5|2020-01-01|2020-12-31|100",
                   L"2|11|504|I.504|Hub|NULL|pair|piece|Ordinary|General|3|3|0|1900-01-01|2100-01-01|100"}));
  // An operation is one of type 61; a serial, a place and a store of 0 show as nothing.
  EXPECT_EQ(RowTexts(rows, {L"FOperSN", L"FOperID", L"FMachinePos", L"FOffSetDay", L"FAlterBackColor",
                            L"FBackColor", L"FUseState", L"FSPID", L"FStockID", L"FNote", L"FQtyDecimal",
                            L"FErpClsName"}),
            (Texts{L"10|Assembly|P1|1|0|255,255,255|Current|Rack|Store|a|3|Phantom",
                   L"|NULL||0|0|255,255,255|Current||||0|Bought"}));
  // The validity comes twice, under one name each.
  const Texts keys = KeysOf(rows.AsObject().Get(L"Item", 1).AsObject());
  EXPECT_EQ(std::count(keys.begin(), keys.end(), L"FEndDay"), 1);
  EXPECT_EQ(std::count(keys.begin(), keys.end(), L"FEndday"), 0);
  EXPECT_EQ(keys.size(), 31U);
}

TEST_F(LedgersTest, ColourLinesThatAreNotValidInThePeriod) {
  const auto colours = [this](const wchar_t* begin, const wchar_t* end) {
    return RowTexts(view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"a.FInterID IN (11,13)",
                               L"a.FInterID,a.FEntryID",
                               MakeDictionary({{L"BItemTime", begin}, {L"EItemTime", end}})),
                    {L"FInterID", L"FEntryID", L"FAlterBackColor", L"FBackColor"});
  };
  const Trace trace;
  // 11|1 is valid in 2020 only; so is the line of 13, but that BOM is of another type.
  EXPECT_EQ(colours(L"2021-01-01", L"2021-06-30"),
            (Texts{L"11|1|1|253, 223, 223", L"11|2|0|253, 223, 223", L"13|1|0|253, 223, 223"}));
  EXPECT_EQ(
      trace.Details(L"Open")[1],
      EntryLedgerStatement(
          kEnglish, L"b.FNumber,",
          L"\n CASE a1.FBomType WHEN 0 THEN (CASE WHEN (a.FBeginDay BETWEEN '2021-01-01' AND  '2021-06-30') "
          L"THEN 0  WHEN (a.FEndDay BETWEEN '2021-01-01' AND  '2021-06-30' ) THEN 0  WHEN ('2021-01-01' >= "
          L"a.FBeginDay AND '2021-06-30' <= a.FEndDay) THEN 0 ELSE 1 END) \n ELSE 0 END \n AS "
          L"FAlterBackColor, '253, 223, 223' AS FBackColor, ",
          false) +
          L" WHERE a.FInterID IN (11,13) ORDER BY a.FInterID,a.FEntryID");
  // Overlaps at its begin, at its end, within, and around.
  for (const auto& [begin, end] :
       {std::pair{L"2019-06-01", L"2020-01-01"}, std::pair{L"2020-12-31", L"2021-06-30"},
        std::pair{L"2020-02-01", L"2020-03-01"}, std::pair{L"2019-01-01", L"2021-12-31"}})
    EXPECT_EQ(colours(begin, end)[0], L"11|1|0|253, 223, 223") << com::ToUtf8(begin);
  EXPECT_EQ(colours(L"2019-01-01", L"2019-12-31")[0], L"11|1|1|253, 223, 223");
  EXPECT_EQ(RaisedBy([&] { colours(L"it's", L""); }).code, static_cast<HRESULT>(0x80040E14));
}

// The outside calls of a ledger without the query for an extension, whose place among the texts is free: it
// comes behind the setting and before the ledger's own query.
Texts WithoutExtension(const Texts& events, const std::wstring& ledger) {
  const std::wstring extension = std::wstring(L"Execute\t") + kExtensionQuery;
  const auto at = std::find(events.begin(), events.end(), extension);
  EXPECT_LT(std::find(events.begin(), events.end(), std::wstring(L"Open\t") + kSettingQuery), at);
  EXPECT_LT(at, std::find(events.begin(), events.end(), L"Open\t" + ledger));
  Texts others;
  for (const std::wstring& event : events)
    if (event != extension) others.push_back(event);
  EXPECT_EQ(others.size() + 1, events.size());
  return others;
}

const Texts kFlagTexts{L"LoadString\t否", L"LoadString\t是", L"LoadString\t否",
                       L"LoadString\t是", L"LoadString\t否", L"LoadString\t是"};

// A set-up through the generic connection object, and the setting of the numbers.
Texts LedgerBegins(const std::wstring& dsn) {
  return {L"GetDataContext", L"BindDsn\t" + dsn, L"GetCallerInfo", L"GetConnectionObject",
          std::wstring(L"Open\t") + kSettingQuery};
}

TEST_F(LedgersTest, TheLinesComeByOneQueryBehindTheSettingAndBeforeTheirValues) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  view_.Call(L"GetBomEntryLdgInfo", dsn, 0, L"a.FInterID=11", L"a.FEntryID");
  const std::wstring ledger = EntryLedgerStatement(kEnglish, L"b.FNumber,", kNoColours, false) +
                              L" WHERE a.FInterID=11 ORDER BY a.FEntryID";
  Texts expected = LedgerBegins(dsn);
  expected.insert(expected.end(), kFlagTexts.begin(), kFlagTexts.end());
  expected.push_back(L"Open\t" + ledger);
  // The reader of the user-defined values: a new object, and a call of its own on the lines' template.
  for (const std::wstring& event :
       AroundSetUp({L"GetDataContext", L"GetCallerInfo"}, dsn,
                   {std::wstring(L"Open\t") + kEntryFieldsQuery, L"VoteComplete", L"VoteComplete"}))
    expected.push_back(event);
  EXPECT_EQ(WithoutExtension(trace.Events(), ledger), expected);
}

TEST_F(LedgersTest, TheCustomersLinesComeByOneQueryBehindTheSetting) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  view_.Call(L"GetCustBomEntryLdgInfo", dsn, 0, L"FInterID=15", L"FEntryID");
  // Neither an extension nor user-defined values.
  const Texts opened = trace.Details(L"Open");
  ASSERT_EQ(opened.size(), 2U);
  EXPECT_TRUE(opened[1].ends_with(L") t1 WHERE FInterID=15 ORDER BY FEntryID"));
  Texts expected = LedgerBegins(dsn);
  expected.insert(expected.end(), kFlagTexts.begin(), kFlagTexts.end());
  expected.insert(expected.end(), {L"Open\t" + opened[1], L"VoteComplete"});
  EXPECT_EQ(trace.Events(), expected);
}

TEST_F(LedgersTest, SpeakTraditionalChineseWithoutALanguage) {
  for (const wchar_t* empty : {L"", L"  "}) {
    const Trace trace;
    view_.Call(L"GetBomLdgInfo", Dsn(empty));
    EXPECT_EQ(trace.Details(L"Open")[1], BomLedgerStatement(kTraditional, L"b.FNumber,", L""));
    trace.Clear();
    view_.Call(L"GetBomEntryLdgInfo", Dsn(empty));
    EXPECT_EQ(trace.Details(L"Open")[1],
              EntryLedgerStatement(kTraditional, L"b.FNumber,", kNoColours, false));
  }
}

TEST_F(LedgersTest, TakeAPeriodWithoutItsKeysForEmptyTexts) {
  const Trace trace;
  const Variant rows = view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"a.FInterID IN (11,13)",
                                  L"a.FInterID,a.FEntryID", MakeDictionary({}));
  EXPECT_EQ(
      trace.Details(L"Open")[1],
      EntryLedgerStatement(
          kEnglish, L"b.FNumber,",
          L"\n CASE a1.FBomType WHEN 0 THEN (CASE WHEN (a.FBeginDay BETWEEN '' AND  '') THEN 0  WHEN "
          L"(a.FEndDay BETWEEN '' AND  '' ) THEN 0  WHEN ('' >= a.FBeginDay AND '' <= a.FEndDay) THEN 0 "
          L"ELSE 1 END) \n ELSE 0 END \n AS FAlterBackColor, '253, 223, 223' AS FBackColor, ",
          false) +
          L" WHERE a.FInterID IN (11,13) ORDER BY a.FInterID,a.FEntryID");
  // To the server an empty text is the day 1900-01-01, from which on 11's second line is valid.
  EXPECT_EQ(RowTexts(rows, {L"FInterID", L"FEntryID", L"FAlterBackColor", L"FBackColor"}),
            (Texts{L"11|1|1|253, 223, 223", L"11|2|0|253, 223, 223", L"13|1|0|253, 223, 223"}));
}

TEST_F(LedgersTest, TakeDatesAsThePeriod) {
  constexpr double k20210101 = 44197;
  const Trace trace;
  view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"", L"",
             MakeDictionary(
                 {{L"BItemTime", Variant::Date(k20210101)}, {L"EItemTime", Variant::Date(k20210101 + 1)}}));
  EXPECT_NE(trace.Details(L"Open")[1].find(L"BETWEEN '2021-01-01' AND  '2021-01-02'"), std::wstring::npos);
}

TEST_F(LedgersTest, AddUserDefinedValues) {
  AddUserDefinedFields();
  const Variant heads = view_.Call(L"GetBomLdgInfo", Dsn(L"en"), L"FInterID<13", L"FInterID");
  EXPECT_EQ(RowTexts(heads, {L"FBOMNumber", L"FDrawing", L"FDept"}), (Texts{L"B11|D-11|Frames", L"B12||"}));
  const Variant lines =
      view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"a.FInterID<13", L"a.FInterID,a.FEntryID");
  EXPECT_EQ(RowTexts(lines, {L"FInterID", L"FEntryID", L"FPartNo"}),
            (Texts{L"11|1|", L"11|2|P-2", L"12|1|"}));
}

TEST_F(LedgersTest, ListNothing) {
  AddUserDefinedFields();
  EXPECT_EQ(view_.Call(L"GetBomLdgInfo", Dsn(L"en"), L"1=0").AsObject().Get(L"Count"), Variant(0));
  EXPECT_EQ(view_.Call(L"GetBomEntryLdgInfo", Dsn(L"en"), 0, L"1=0").AsObject().Get(L"Count"), Variant(0));
}

TEST_F(LedgersTest, ListCustomerBoms) {
  const std::wstring dsn = Dsn(L"en");
  const Trace trace;
  EXPECT_EQ(RowTexts(view_.Call(L"GetCustBomLdgInfo", dsn, L"FBomType=3", L"FInterID"),
                     {L"FInterID", L"FBOMNumber", L"FItemID", L"FName", L"FNumber", L"FUseStatus", L"FYield",
                      L"FQty", L"FParentID", L"FQtyDecimal", L"FBomType", L"FCustID", L"FModel", L"FUnitID"}),
            Texts{L"15|B15|501|Bike|I.501|In use|100|1|13|0|3|9|M1|piece"});
  EXPECT_EQ(
      trace.Events(),
      (Texts{L"GetDataContext", L"BindDsn\t" + dsn, L"GetCallerInfo", L"GetConnectionObject",
             std::wstring(L"Open\t") + kSettingQuery, L"LoadString\t使用", L"LoadString\t未使用",
             L"Open\tSELECT * FROM (SELECT a.FInterID,a.FBOMNumber,b.FItemID,b.FName,b.FNumber,CASE "
             L"FUseStatus WHEN 1072 THEN 'In use' ELSE 'Not in use' END AS "
             L"FUseStatus,a.FYield,a.FQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID,b.FModel,c.FName AS "
             L"FUnitID FROM ICBOM a,t_ICItem b,t_MeasureUnit c WHERE a.FItemID=b.FItemID AND "
             L"b.FUnitID=c.FItemID) t1 WHERE FBomType=3 ORDER BY FInterID",
             L"VoteComplete"}));
}

TEST_F(LedgersTest, ListTheLinesOfCustomerBoms) {
  database_.Execute(
      L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FScrap, FPercent, "
      L"FOperSN, FOperID, FMachinePos, FOffSetDay, FBackFlush, FStockID, FSPID, FNote) VALUES "
      L"(15, 1, 502, 2, 1, 2, 5, 100, 10, 61001, 'P1', 1, 1058, 81, 91, 'a')");
  const Trace trace;
  const Variant rows = view_.Call(L"GetCustBomEntryLdgInfo", Dsn(L"cht"), 3, L"FInterID=15", L"FEntryID");
  EXPECT_EQ(RowTexts(rows, {L"FEntryID",    L"FInterID",    L"FItemID",    L"FNumber",       L"FItemName",
                            L"FModel",      L"FBaseUnitID", L"FunitID",    L"FMaterielType", L"FMarshalType",
                            L"FAuxQty",     L"FQty",        L"FScrap",     L"FPercent",      L"FOperSN",
                            L"FOperID",     L"FMachinePos", L"FOffSetDay", L"FBackFlush",    L"FIsKeyItem",
                            L"FForbitUse",  L"FUseState",   L"FSPID",      L"FStockID",      L"FNote",
                            L"FQtyDecimal", L"FErpClsName"}),
            Texts{L"1|15|502|I.502|Wheel|M2|piece|pair|Ordinary|General|1|2|5|100|10|Assembly|P1|1|是|否|是|"
                  L"Current|Rack|Store|a|3|Phantom"});
  EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", 1).AsObject()).size(), 27U);
  EXPECT_EQ(
      trace.Details(L"Open")[1],
      WithCrLf(
          L"SELECT * FROM (SELECT a.FEntryID,a.FInterID,b.FItemID,b.FNumber,b.FName AS "
          L"FItemName,b.FModel,d.FName AS FBaseUnitID,w.Fname as FunitID, e.FName AS FMaterielType,f.FName "
          L"AS "
          L"FMarshalType,a.FAuxQty,a.FQty,a.FScrap,a.FPercent,(case a.FOperSN when 0 then '' else "
          L"cast(a.FOperSN as varchar(255)) end) FOperSN,j.FName AS FOperID,a.FMachinePos,a.FOffSetDay," +
          FlagColumns(kTraditional) +
          L"g.FName AS FUseState,i.FName AS FSPID,c.FName AS FStockID,a.FNote,b.FQtyDecimal,v.FName AS "
          L"FErpClsName  FROM ICCustBOMChild a" +
          kLineJoins +
          L"\nleft join t_SubMessage v on b.FErpClsID=v.FInterID) t1 WHERE FInterID=15 ORDER BY FEntryID"));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
}

TEST_F(LedgersTest, RaiseForAQuote) {
  for (const wchar_t* method :
       {L"GetBomLdgInfo", L"GetCustBomLdgInfo", L"GetBomTitle", L"GetBomEntryTitle", L"GetCustBomTitle",
        L"GetBomUserDefinedTitle", L"GetBomEntryUserDefinedTitle"}) {
    const Trace trace;
    EXPECT_EQ(RaisedBy([&] { view_.Call(method, Dsn(L"en"), L"FName='"); }).code,
              static_cast<HRESULT>(0x80040E14))
        << com::ToUtf8(method);
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
}

} // namespace
} // namespace mbom::test
