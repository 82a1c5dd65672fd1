// The lists of BomView: their statements, what they find, and lookup lists that run at the same time or fail
// half-way.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

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

constexpr wchar_t kIconOfA[] =
    L"CASE WHEN a.FBomType=0 THEN (CASE WHEN a.FUseStatus=1072 THEN 13 ELSE 3 END) ELSE (CASE WHEN "
    L"a.FBomType=1 THEN 15 ELSE (CASE WHEN a.FBomType=2 THEN 18 ELSE 17 END )END ) END";

// The table of a lookup list has a name of its own in every call.
std::wstring Named(const std::wstring& statement) {
  return std::regex_replace(statement, std::wregex(L"##BomItemID_[0-9A-F]{32}"), L"##BomItemID");
}
Texts Named(Texts statements) {
  for (std::wstring& statement : statements) statement = Named(statement);
  return statements;
}

class BomListsTest : public testing::Test {
 protected:
  void SetUp() override { FillBrowserData(database_); }
  void UseShortNumbers(const wchar_t* value) const {
    database_.Execute(std::wstring(L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', "
                                   L"'UseShortNumber', '") +
                      value + L"')");
  }

  const TestDatabase database_;
  const Object view_ = Hosted(L"BomView");
};

// ---- GetBomLstInfo

class BomLstInfoTest : public BomListsTest {
 protected:
  Texts Numbers(const Object& groups, const Object& filter, const Object& find = Object(),
                bool isFind = false, const wchar_t* subsystem = L"SC") const {
    return RowTexts(view_.Call(L"GetBomLstInfo", Dsn(subsystem), groups, filter, true, find, isFind),
                    {L"FBomNumber"});
  }
  std::wstring Dsn(const wchar_t* subsystem) const {
    return database_.Dsn(std::wstring(L"SubID=") + subsystem);
  }
  static std::wstring Statement(const std::wstring& classes, const std::wstring& number,
                                const std::wstring& conditions) {
    return WithCrLf(
        L"SET NOCOUNT ON \n\n--SQL开始构建，包括临时表#IntiGroup的建立，该表保存符合过滤界面条件的BOM组信息 "
        L"\n"
        L"SELECT DISTINCT t1.FInterID, t1.FBomNumber, t1.FBomType, t1.FTranType, \n"
        L"--按照BOM的类型决定BOM前面的图标 \n"
        L"CASE WHEN t1.FBomType=0 THEN (CASE WHEN t1.FUseStatus=1072 THEN 13 ELSE 3 END) ELSE (CASE WHEN "
        L"t1.FBomType=1 THEN 15 ELSE (CASE WHEN t1.FBomType=2 THEN 18 ELSE 17 END )END ) END AS FImgNormal, "
        L"\nt4.FItemID, " +
        number +
        L", t4.FName, t4.FModel \n"
        L"FROM IcBom t1 \n"
        L"INNER JOIN ICBomChild t2 ON t1.FInterID = t2.FInterID \n"
        L"INNER JOIN IcBomGroup t3 ON t1.FParentID = t3.FinterID \n"
        L"INNER JOIN t_ICItem t4 ON t1.FItemID = t4.FItemID " +
        classes +
        L"\nINNER JOIN t_ICItem t7 ON t2.FItemID = t7.FItemID \n"
        L"LEFT JOIN t_User t5 ON t1.FCheckerID = t5.FUserID \n"
        L"LEFT JOIN t_User t6 ON t1.FCheckID = t6.FUserID \n"
        L"WHERE 1 = 1 " +
        conditions + L"\n ORDER BY FBomNumber");
  }

  const Object none_ = MakeDictionary({});
};

TEST_F(BomLstInfoTest, ListsTheBomsOfGroupsByNumber) {
  const Trace trace;
  const Variant rows = view_.Call(L"GetBomLstInfo", Dsn(L"SC"), Object(), none_, true);
  EXPECT_EQ(trace.Events(), AroundSetUp({}, Dsn(L"SC"),
                                        {L"Execute\t" + Statement(L" AND T4.FERPClsID IN (2,6,9)",
                                                                  L"t4.FNumber AS FNumber", L""),
                                         L"VoteComplete"}));
  // 13 is of class 5; 15 and 16 are in no group.
  EXPECT_EQ(RowTexts(rows, {L"FInterID", L"FBomNumber", L"FBomType", L"FTranType", L"FImgNormal", L"FItemID",
                            L"FNumber", L"FName", L"FModel"}),
            (Texts{L"11|B11|0|50|13|501|I.501|Bike|M1", L"12|B12|0|50|3|502|I.502|Wheel|M2",
                   L"14|B14|2|50|18|501|I.501|Bike|M1"}));
  EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", 1).AsObject()),
            (Texts{L"FInterID", L"FBomNumber", L"FBomType", L"FTranType", L"FImgNormal", L"FItemID",
                   L"FNumber", L"FName", L"FModel"}));
}

TEST_F(BomLstInfoTest, ListsOtherItemClassesForTheSubsystemJH) {
  const Trace trace;
  for (const wchar_t* subsystem : {L"JH", L"jh", L"{jH}"})
    EXPECT_EQ(Numbers(Object(), none_, Object(), false, subsystem), (Texts{L"B11", L"B13", L"B14"}));
  EXPECT_EQ(trace.Details(L"Execute").front(),
            Statement(L" AND T4.FERPClsID NOT IN (9)", L"t4.FNumber AS FNumber", L""));
  EXPECT_EQ(Numbers(Object(), none_, Object(), false, L"JHX"), (Texts{L"B11", L"B12", L"B14"}));
}

TEST_F(BomLstInfoTest, NeedsTheSubsystem) {
  const Trace trace;
  const Raised raised =
      RaisedBy([&] { view_.Call(L"GetBomLstInfo", database_.Dsn(), Object(), none_, true); });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x800A0005));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

TEST_F(BomLstInfoTest, RestrictsToGroupsUnderTheKeyThatIsAskedFor) {
  const Object groups = MakeVector(
      {MakeDictionary({{L"Key", 2}, {L"FInterID", 3}}), MakeDictionary({{L"Key", 5}, {L"FInterID", L"99"}})});
  const Trace trace;
  EXPECT_EQ(Numbers(groups, none_), (Texts{L"B11", L"B14"}));
  EXPECT_EQ(Numbers(groups, none_, Object(), true), Texts{L"B12"});
  EXPECT_EQ(Numbers(MakeVector({}), none_).size(), 3U);
  const Texts statements = trace.Details(L"Execute");
  const std::wstring classes = L" AND T4.FERPClsID IN (2,6,9)";
  EXPECT_EQ(statements[0], Statement(classes, L"t4.FNumber AS FNumber", L" AND t3.FInterID IN (2,5)"));
  EXPECT_EQ(statements[1], Statement(classes, L"t4.FNumber AS FNumber", L" AND t3.FInterID IN (3,99)"));
  EXPECT_EQ(statements[2], Statement(classes, L"t4.FNumber AS FNumber", L""));
}

TEST_F(BomLstInfoTest, AddsFilterGroupsAndQuickFind) {
  const Object filter = MakeDictionary({{L"Checker", L"Anna"}, {L"CheckState", 1}});
  const Object groups = MakeVector({MakeDictionary({{L"Key", 2}})});
  const Object find = MakeDictionary(
      {{L"ItemName", L"Bi"}, {L"ItemNumber", L"50"}, {L"BomNumber", L"1"}, {L"Other", L"left out"}});
  const Trace trace;
  EXPECT_EQ(Numbers(groups, filter, find), Texts{L"B11"});
  view_.Call(L"GetBomLstInfo", Dsn(L"SC"), groups, filter, false, find);
  const auto conditions = [](const std::wstring& number) {
    return L" AND t5.FName = 'Anna'\n AND t1.FStatus = 1 AND t3.FInterID IN (2) AND t1.FBomNumber LIKE "
           L"'%1%'\n "
           L"AND " +
           number + L" LIKE '%50%'\n AND t4.FName LIKE '%Bi%'\n";
  };
  const std::wstring classes = L" AND T4.FERPClsID IN (2,6,9)";
  EXPECT_EQ(trace.Details(L"Execute"),
            (Texts{Statement(classes, L"t4.FNumber AS FNumber", conditions(L"t4.FNumber ")),
                   Statement(classes, L"t4.FShortNumber AS FNumber", conditions(L"t4.FShortNumber"))}));
}

TEST_F(BomLstInfoTest, FindsByEachFilter) {
  const auto by = [&](const wchar_t* key, const Variant& value) {
    return Numbers(Object(), MakeDictionary({{key, value}}));
  };
  EXPECT_EQ(by(L"BItemNumber", L"I.502"), Texts{L"B12"});
  EXPECT_EQ(by(L"EItemNumber", L"I.501"), (Texts{L"B11", L"B14"}));
  EXPECT_EQ(by(L"BBomBound", L"B12"), (Texts{L"B12", L"B14"}));
  EXPECT_EQ(by(L"EBomBound", L"B12"), (Texts{L"B11", L"B12"}));
  EXPECT_EQ(by(L"Checker", L"Anna"), Texts{L"B11"});
  EXPECT_EQ(by(L"Creator", L"Anna"), (Texts{L"B12", L"B14"}));
  EXPECT_EQ(by(L"BomNumber", L"4"), Texts{L"B14"});
  EXPECT_EQ(by(L"ItemNumber", L"502"), Texts{L"B12"});
  EXPECT_EQ(by(L"ChildNumber", L"504"), (Texts{L"B11", L"B12"}));
  EXPECT_EQ(by(L"Note", L"irs"), Texts{L"B11"});
  EXPECT_EQ(by(L"UseStatus", 1073), (Texts{L"B12", L"B14"}));
  EXPECT_EQ(by(L"CheckState", L"0"), Texts{L"B12"});
}

TEST_F(BomLstInfoTest, LeavesTheInOutArgumentsAlone) {
  const Object find = MakeDictionary({{L"BomNumber", L"B11"}});
  Variant findArgument(find);
  Variant isFind(L"0"); // a text that converts stays one
  const Variant rows = view_.Call(L"GetBomLstInfo", Dsn(L"SC"), Object(), none_, true,
                                  Variant::Reference(findArgument), Variant::Reference(isFind));
  EXPECT_EQ(RowTexts(rows, {L"FBomNumber"}), Texts{L"B11"});
  EXPECT_EQ(findArgument.AsObject(), find);
  EXPECT_EQ(isFind, Variant(L"0"));
}

TEST_F(BomLstInfoTest, RaisesForBadInput) {
  const Trace trace;
  EXPECT_EQ(RaisedBy([&] {
              Numbers(Object(), MakeDictionary({{L"Note", L"it's"}}));
            }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(RaisedBy([&] {
              Numbers(Object(), none_, MakeDictionary({{L"ItemName", L"'"}}));
            }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(RaisedBy([&] { Numbers(Object(), Object()); }).code, static_cast<HRESULT>(0x800A005B));
  EXPECT_EQ(RaisedBy([&] { Numbers(MakeVector({5}), none_); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(trace.Votes(), Texts(4, L"VoteAbort"));
}

// ---- the tree lists

std::wstring Root(const std::wstring& caption, const std::wstring& extra = {}) {
  return L"SELECT 0 AS FType,'' AS FRelative,'ga' AS FKey,'" + caption +
         L"' AS FText,1 AS FImgNormal,2 AS FImgClick,'0' AS FTag,'' AS FAdditional,'' AS FNumber,'' AS "
         L"FName,'' "
         L"AS FBomNumber,0 AS FBomType,0 AS FItemID,0 AS FInterID,0 AS FCustID" +
         extra;
}

std::wstring GroupsFrom(const std::wstring& columns) {
  return L"SELECT 1 AS FType,CASE FParentID WHEN 0 THEN 'ga' ELSE 'gb'+CONVERT(VARCHAR,FParentID) END AS "
         L"FRelative,'gb'+CONVERT(VARCHAR,FInterID) AS FKey,FNumber+'('+FName+')' AS FText," +
         columns + L" FROM ICBomGroup";
}

std::wstring BomsFrom(const std::wstring& relative, const std::wstring& number, const std::wstring& tail) {
  return L"SELECT 1 AS FType," + relative +
         L" AS FRelative,'gc'+CONVERT(VARCHAR,a.FInterID) AS FKey,a.FBOMNumber+'('+b.FName+')' AS FText," +
         kIconOfA + L" AS FImgNormal," + kIconOfA +
         L" AS FImgClick,CONVERT(VARCHAR,a.FItemID) AS FTag,ISNULL(b.FModel,'') AS FAdditional," + number +
         L"b.FName,a.FBOMNumber,a.FBomType,a.FItemID,a.FInterID,a.FCustID" + tail;
}

constexpr wchar_t kUnderGroup[] =
    L"CASE a.FParentID WHEN 0 THEN 'ga' ELSE 'gb'+CONVERT(VARCHAR,a.FParentID) END";
constexpr wchar_t kUnderGroupOrBom[] = L"CASE a.FParentID WHEN 0 THEN 'ga' ELSE (CASE WHEN a.FBomType<>3 "
                                       L"THEN 'gb'+CONVERT(VARCHAR,a.FParentID) ELSE "
                                       L"'gc'+CONVERT(VARCHAR,a.FParentID) END) END";

std::wstring BomListStatement(const std::wstring& caption, const std::wstring& number) {
  return L"SELECT * FROM (" + Root(caption) + L" UNION " +
         GroupsFrom(L"1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,'' AS FAdditional,FName,'' AS "
                    L"FBomNumber,FNumber,0 AS FBomType,0 AS FItemID,0 AS FInterID,0 AS FCustID") +
         L" UNION " + BomsFrom(kUnderGroup, number, L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID") +
         L")t1";
}

const std::vector<const wchar_t*> kListColumns{L"FType",      L"FRelative", L"FKey",       L"FText",
                                               L"FImgNormal", L"FImgClick", L"FTag",       L"FAdditional",
                                               L"FNumber",    L"FName",     L"FBomNumber", L"FBomType",
                                               L"FItemID",    L"FInterID",  L"FCustID"};

TEST_F(BomListsTest, ListsRootGroupsAndBoms) {
  const Trace trace;
  const Variant rows = view_.Call(L"GetBomList", database_.Dsn(L"Language=en"), L"", L"FKey");
  EXPECT_EQ(
      trace.Events(),
      (Texts{L"GetDataContext", L"BindDsn\t" + database_.Dsn(L"Language=en"), L"GetCallerInfo",
             L"GetConnectionObject", std::wstring(L"Open\t") + kSettingQuery, L"LoadString\tBOM单",
             L"Open\t" + BomListStatement(L"BOM", L"b.FNumber,") + L" ORDER BY FKey", L"VoteComplete"}));
  // A group shows its name as the number and its number as the BOM's.
  EXPECT_EQ(RowTexts(rows, kListColumns),
            (Texts{L"0||ga|BOM|1|2|0|||||0|0|0|0", L"1|ga|gb1|G1(Bikes)|1|2|G1||Bikes||G1|0|0|0|0",
                   L"1|gb1|gb2|G1.1(City)|1|2|G1.1||City||G1.1|0|0|0|0",
                   L"1|gb1|gb3|G1.2(Hill)|1|2|G1.2||Hill||G1.2|0|0|0|0",
                   L"1|gb3|gb4|G1.2.1(Proto)|1|2|G1.2.1||Proto||G1.2.1|0|0|0|0",
                   L"1|ga|gb5|G2(Parts)|1|2|G2||Parts||G2|0|0|0|0",
                   L"1|gb2|gc11|B11(Bike)|13|13|501|M1|I.501|Bike|B11|0|501|11|0",
                   L"1|gb3|gc12|B12(Wheel)|3|3|502|M2|I.502|Wheel|B12|0|502|12|0",
                   L"1|gb4|gc13|B13(Configured)|15|15|503|M3|I.503|Configured|B13|1|503|13|0",
                   L"1|gb5|gc14|B14(Bike)|18|18|501|M1|I.501|Bike|B14|2|501|14|0",
                   L"1|gb13|gc15|B15(Bike)|17|17|501|M1|I.501|Bike|B15|3|501|15|9",
                   L"1|ga|gc16|B16(Hub)|17|17|504||I.504|Hub|B16|4|504|16|0"}));
}

TEST_F(BomListsTest, SpeaksTheCallersLanguage) {
  const Trace trace;
  for (const wchar_t* language : {L"Language=chs", L"Language=cht", L"Language=en", L""})
    view_.Call(L"GetBomList", database_.Dsn(language));
  const Texts statements = trace.Details(L"Open");
  EXPECT_EQ(statements[1], BomListStatement(L"BOM单", L"b.FNumber,"));
  EXPECT_EQ(statements[3], BomListStatement(L"BOM單", L"b.FNumber,"));
  EXPECT_EQ(statements[5], BomListStatement(L"BOM", L"b.FNumber,"));
  EXPECT_EQ(statements[7], BomListStatement(L"BOM單", L"b.FNumber,"));
}

TEST_F(BomListsTest, AddsFilterAndOrder) {
  const Trace trace;
  EXPECT_EQ(
      RowTexts(view_.Call(L"GetBomList", database_.Dsn(L"Language=en"), L"FImgNormal=17 ", L"FKey DESC"),
               {L"FKey"}),
      (Texts{L"gc16", L"gc15"}));
  EXPECT_EQ(trace.Details(L"Open")[1],
            BomListStatement(L"BOM", L"b.FNumber,") + L" WHERE FImgNormal=17  ORDER BY FKey DESC");
  EXPECT_EQ(RaisedBy([&] { view_.Call(L"GetBomList", database_.Dsn(), L"FNumber='"); }).code,
            static_cast<HRESULT>(0x80040E14));
}

TEST_F(BomListsTest, ShowsShortNumbersWhereTheSettingSaysSo) {
  const std::wstring dsn = database_.Dsn(L"Language=en");
  const auto number = [&] {
    return RowTexts(view_.Call(L"GetBomList", dsn, L"FKey='gc11'"), {L"FNumber"}).front();
  };
  EXPECT_EQ(number(), L"I.501"); // no setting
  UseShortNumbers(L"1");
  const Trace trace;
  EXPECT_EQ(number(), L"501");
  EXPECT_EQ(trace.Details(L"Open")[1],
            BomListStatement(L"BOM", L"b.FShortNumber AS FNumber,") + L" WHERE FKey='gc11'");
  for (const auto& [value, shown] :
       {std::pair{L"'0'", L"I.501"}, std::pair{L"'-1'", L"501"}, std::pair{L"NULL", L"I.501"}}) {
    database_.Execute(std::wstring(L"UPDATE t_SystemProfile SET FValue = ") + value);
    EXPECT_EQ(number(), shown);
  }
  database_.Execute(L"UPDATE t_SystemProfile SET FValue = 'yes'");
  EXPECT_EQ(RaisedBy([&] { number(); }).code, DISP_E_TYPEMISMATCH);
}

TEST_F(BomListsTest, SendsTheUnequalUnionOfTheCustomerList) {
  const Trace trace;
  const Raised raised =
      RaisedBy([&] { view_.Call(L"GetCustBomList", database_.Dsn(L"Language=en"), L"FType=1", L"FKey"); });
  EXPECT_EQ(raised.code, static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(raised.description,
            L"All queries combined using a UNION, INTERSECT or EXCEPT operator must have an "
            L"equal number of expressions in their target lists.");
  EXPECT_EQ(trace.Details(L"Open")[1],
            L"SELECT * FROM (" + Root(L"BOM") + L" UNION " +
                GroupsFrom(L"1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,FNumber AS FTag,'' AS "
                           L"FAdditional,FNumber,FName,'' AS FBomNumber,0 AS FBomType,0 AS FItemID,0 AS "
                           L"FInterID,0 AS FCustID") +
                L" UNION " +
                BomsFrom(kUnderGroup, L"b.FNumber,",
                         L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID AND a.FBomType IN (1,3)") +
                L")t1 WHERE FType=1 ORDER BY FKey");
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

// ---- the lookup lists

std::wstring ItemIdBatch(const std::wstring& where, const std::wstring& items) {
  return WithCrLf(
      L"SET NOCOUNT ON\nDECLARE @Level INT\nSELECT @Level=1\n"
      L"CREATE TABLE ##BomItemID(FInterID INT NOT NULL,FItemID INT NOT NULL,FLevel INT NOT "
      L"NULL,FParentID INT  NULL)\n"
      L"INSERT INTO ##BomItemID(FParentID,FInterID,FItemID,FLevel)\n"
      L"SELECT t1.FParentID, t1.FInterID, t1.FItemID, @Level FROM ICBOM t1 Left Join t_IcItem t2 On "
      L"t1.FItemID = t2.FItemID " +
      where + items +
      L" WHILE EXISTS(SELECT * FROM ICBOMGroup INNER JOIN ##BomItemID ON ICBOMGroup.FInterID "
      L"=##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level AND ##BomItemID.FParentID<>0)\n"
      L"BEGIN\n"
      L"INSERT INTO ##BomItemID(FParentID,FInterID,FItemID,FLevel)\n"
      L"SELECT ICBOMGroup.FParentID,ICBOMGroup.FInterID,0,@Level+1 FROM ICBOMGroup INNER JOIN "
      L"##BomItemID ON ICBOMGroup.FInterID =##BomItemID.FParentID WHERE ##BomItemID.FLevel=@Level "
      L"AND ##BomItemID.FParentID<>0\n"
      L"SELECT @Level=@Level+1\n"
      L"End \n"
      L"SET NOCOUNT OFF");
}

constexpr wchar_t kNotConfigured[] = L" and t2.FErpClsID <> 5 and t1.FParentID is not  null";
constexpr wchar_t kAllItems[] = L" and t1.FParentID is not  null";
constexpr wchar_t kGroupSelection[] =
    L"1 AS FImgNormal,2 AS FImgClick,FNumber AS FTag,'' AS FAdditional,FNumber,FName,'' AS FBomNumber,0 AS "
    L"FBomType,0 AS FItemID,FInterID,0 AS FCustID";

std::wstring SimplifyStatement(const std::wstring& root, const std::wstring& groups, const std::wstring& boms,
                               const std::wstring& where = {}) {
  return root + L" UNION SELECT t1.* FROM (SELECT * FROM (" + groups + L" UNION " + boms + L")x1" + where +
         L")t1,(SELECT DISTINCT * FROM ##BomItemID) t2 WHERE (t1.FItemID<>0 AND t2.FLevel=1 AND "
         L"t1.FInterID=t2.FInterID) OR (t1.FItemID=0 AND t2.FLevel>1 AND t1.FInterID=t2.FInterID)";
}

std::wstring SimplifyListStatement(const std::wstring& where = {}) {
  return SimplifyStatement(Root(L"BOM"), GroupsFrom(kGroupSelection),
                           BomsFrom(kUnderGroupOrBom, L"b.FNumber,",
                                    L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID and a.Fstatus=1 "),
                           where);
}

class SimplifyListTest : public BomListsTest {
 protected:
  template <class... Args>
  Texts Keys(const wchar_t* method, Args... args) const {
    return RowTexts(view_.Call(method, dsn_, args...), {L"FKey", L"FRelative"});
  }
  // The tables of lookup lists that are left in the server.
  bool IsThere(const std::wstring& table) const {
    return RaisedBy([&] { database_.Rows(L"SELECT * FROM " + table); }).code == 0;
  }
  static std::wstring TableOf(const std::wstring& batch) {
    std::wsmatch found;
    return std::regex_search(batch, found, std::wregex(L"##BomItemID_[0-9A-F]{32}")) ? found.str()
                                                                                     : std::wstring();
  }

  const std::wstring dsn_ = database_.Dsn(L"Language=en");
};

TEST_F(SimplifyListTest, ListsMatchingBomsUnderTheirGroups) {
  const Trace trace;
  const Variant rows = view_.Call(L"GetBomSimplifyList", dsn_, L"t1.FInterID IN (11,12,15)", L"", L"FKey");
  EXPECT_EQ(Named(trace.Events()),
            AroundSetUp({}, dsn_,
                        {std::wstring(L"Open\t") + kSettingQuery,
                         L"Execute\t" + ItemIdBatch(L" WHERE t1.FInterID IN (11,12,15)\n", kNotConfigured),
                         L"LoadString\tBOM单", L"Open\t" + SimplifyListStatement() + L" ORDER BY FKey",
                         L"Execute\tDROP TABLE ##BomItemID", L"VoteComplete"}));
  // 12 is not audited, but its groups are there. A customer BOM hangs under its configuration BOM.
  EXPECT_EQ(RowTexts(rows, kListColumns),
            (Texts{L"0||ga|BOM|1|2|0|||||0|0|0|0", L"1|ga|gb1|G1(Bikes)|1|2|G1||G1|Bikes||0|0|1|0",
                   L"1|gb1|gb2|G1.1(City)|1|2|G1.1||G1.1|City||0|0|2|0",
                   L"1|gb1|gb3|G1.2(Hill)|1|2|G1.2||G1.2|Hill||0|0|3|0",
                   L"1|gb2|gc11|B11(Bike)|13|13|501|M1|I.501|Bike|B11|0|501|11|0",
                   L"1|gc13|gc15|B15(Bike)|17|17|501|M1|I.501|Bike|B15|3|501|15|9"}));
}

TEST_F(SimplifyListTest, GivesEachCallATableOfItsOwn) {
  const Trace trace;
  Keys(L"GetBomSimplifyList");
  Keys(L"GetBomSimplifyList");
  const Texts statements = trace.Details(L"Execute");
  ASSERT_EQ(statements.size(), 4U);
  const std::wstring first = TableOf(statements[0]);
  ASSERT_FALSE(first.empty());
  EXPECT_EQ(statements[1], L"DROP TABLE " + first);
  EXPECT_NE(TableOf(statements[2]), first);
  EXPECT_FALSE(IsThere(first));
}

TEST_F(SimplifyListTest, KeepsAllBomsWithoutAFilter) {
  const Trace trace;
  // The items of class 5 and others stand in the join's condition: they restrict nothing.
  EXPECT_EQ(Keys(L"GetBomSimplifyList", L"", L"", L"FKey"),
            (Texts{L"ga|", L"gb1|ga", L"gb2|gb1", L"gb3|gb1", L"gb4|gb3", L"gb5|ga", L"gc11|gb2", L"gc13|gb4",
                   L"gc14|gb5", L"gc15|gc13", L"gc16|ga"}));
  EXPECT_EQ(Named(trace.Details(L"Execute"))[0], ItemIdBatch(L"", kNotConfigured));
  // With one they do.
  EXPECT_EQ(Keys(L"GetBomSimplifyList", L"1=1", L"", L"FKey"),
            (Texts{L"ga|", L"gb1|ga", L"gb2|gb1", L"gb3|gb1", L"gb5|ga", L"gc11|gb2", L"gc14|gb5",
                   L"gc15|gc13", L"gc16|ga"}));
}

TEST_F(SimplifyListTest, RestrictsTheRowsToo) {
  const Trace trace;
  EXPECT_EQ(Keys(L"GetBomSimplifyList", L"", L"FBomType=2", L""), (Texts{L"ga|", L"gc14|gb5"}));
  EXPECT_EQ(Named(trace.Details(L"Open"))[1], SimplifyListStatement(L" WHERE FBomType=2"));
}

TEST_F(SimplifyListTest, OfCustomersTakesTheSecondFilterOnlyWithTheFirst) {
  const auto statement = [](const std::wstring& where) {
    return SimplifyStatement(
        Root(L"BOM"), GroupsFrom(kGroupSelection),
        BomsFrom(kUnderGroup, L"b.FNumber,",
                 L" FROM ICBom a,t_ICItem b  WHERE a.FItemID=b.FItemID AND a.FBomType IN (1,3)"),
        where);
  };
  const Trace trace;
  EXPECT_EQ(
      Keys(L"GetCustBomSimplifyList", L"", L"FBomType=9", L"FKey"),
      (Texts{L"ga|", L"gb1|ga", L"gb2|gb1", L"gb3|gb1", L"gb4|gb3", L"gb5|ga", L"gc13|gb4", L"gc15|gb13"}));
  EXPECT_EQ(Keys(L"GetCustBomSimplifyList", L"t1.FInterID=15", L"FBomType=3", L"FKey"),
            (Texts{L"ga|", L"gc15|gb13"}));
  EXPECT_EQ(RaisedBy([&] { Keys(L"GetCustBomSimplifyList", L"t1.FInterID=15"); }).code,
            static_cast<HRESULT>(0x80040E14));
  const Texts opened = Named(trace.Details(L"Open"));
  EXPECT_EQ(opened[1], statement(L"") + L" ORDER BY FKey");
  EXPECT_EQ(opened[3], statement(L" WHERE FBomType=3") + L" ORDER BY FKey");
  EXPECT_EQ(opened[5], statement(L" WHERE "));
  EXPECT_EQ(Named(trace.Details(L"Execute"))[2], ItemIdBatch(L" WHERE t1.FInterID=15\n", kNotConfigured));
}

TEST_F(SimplifyListTest, ExKeepsConfiguredItemsForTheEcnLookup) {
  const auto statement = [](const std::wstring& items) {
    return SimplifyStatement(
        Root(L"BOM", L", '' AS FModel, '' AS FErpClsName"),
        GroupsFrom(std::wstring(kGroupSelection) + L",  '' AS FModel, '' AS FErpClsName "),
        BomsFrom(
            kUnderGroupOrBom, L"b.FNumber,",
            L", b.FModel, c.FName as FErpClsName  FROM ICBom a,t_ICItem b, t_SubMessage c  WHERE A.FSTATUS=1 "
            L"AND a.FItemID=b.FItemID AND b.FErpClsID = c.FInterID " +
                items));
  };
  const auto boms = [&](const wchar_t* filter, const wchar_t* lookType) {
    return RowTexts(view_.Call(L"GetBomSimplifyListEx", dsn_, filter, L"FItemID<>0", L"FKey", lookType),
                    {L"FKey", L"FModel", L"FErpClsName"});
  };
  const Trace trace;
  EXPECT_EQ(boms(L"1=1", L"ecnLookup"), (Texts{L"ga||", L"gc11|M1|Made", L"gc13|M3|Configured",
                                               L"gc14|M1|Made", L"gc15|M1|Made", L"gc16|NULL|Bought"}));
  EXPECT_EQ(boms(L"", L"other"),
            (Texts{L"ga||", L"gc11|M1|Made", L"gc14|M1|Made", L"gc15|M1|Made", L"gc16|NULL|Bought"}));
  const Texts executed = Named(trace.Details(L"Execute"));
  EXPECT_EQ(executed[0], ItemIdBatch(L" WHERE 1=1\n", kAllItems));
  EXPECT_EQ(executed[2], ItemIdBatch(L"", kNotConfigured));
  trace.Clear();
  view_.Call(L"GetBomSimplifyListEx", dsn_, L"", L"", L"", L"ECNLOOKUP");
  view_.Call(L"GetBomSimplifyListEx", dsn_);
  const Texts opened = Named(trace.Details(L"Open"));
  EXPECT_EQ(opened[1], statement(L""));
  EXPECT_EQ(opened[3], statement(L"AND b.FErpClsId <> 5 "));
}

TEST_F(SimplifyListTest, ExListsGroupsAndCustomerBomsInTheShapeOfTheOthers) {
  std::vector<const wchar_t*> columns = kListColumns;
  columns.insert(columns.end(), {L"FModel", L"FErpClsName"});
  const Variant rows =
      view_.Call(L"GetBomSimplifyListEx", dsn_, L"t1.FInterID IN (11,12,15)", L"", L"FKey", L"ECNLOOKUP");
  // A customer BOM (type 3) hangs under its configuration BOM; 12 is not audited, but its groups are there,
  // with the number and the name in their places and the group's id.
  EXPECT_EQ(RowTexts(rows, columns),
            (Texts{L"0||ga|BOM|1|2|0|||||0|0|0|0||", L"1|ga|gb1|G1(Bikes)|1|2|G1||G1|Bikes||0|0|1|0||",
                   L"1|gb1|gb2|G1.1(City)|1|2|G1.1||G1.1|City||0|0|2|0||",
                   L"1|gb1|gb3|G1.2(Hill)|1|2|G1.2||G1.2|Hill||0|0|3|0||",
                   L"1|gb2|gc11|B11(Bike)|13|13|501|M1|I.501|Bike|B11|0|501|11|0|M1|Made",
                   L"1|gc13|gc15|B15(Bike)|17|17|501|M1|I.501|Bike|B15|3|501|15|9|M1|Made"}));
  const Texts names(columns.begin(), columns.end());
  for (int32_t row = 1; row <= 6; ++row)
    EXPECT_EQ(KeysOf(rows.AsObject().Get(L"Item", row).AsObject()), names);
}

TEST_F(SimplifyListTest, ShowsShortNumbers) {
  UseShortNumbers(L"1");
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomSimplifyList", dsn_, L"t1.FInterID=16"), {L"FNumber"}),
            (Texts{L"", L"504"}));
  EXPECT_EQ(RowTexts(view_.Call(L"GetBomSimplifyListEx", dsn_, L"t1.FInterID=16"), {L"FNumber"}),
            (Texts{L"", L"504"}));
  EXPECT_EQ(
      RowTexts(view_.Call(L"GetCustBomSimplifyList", dsn_, L"t1.FInterID=15", L"FCustID=9"), {L"FNumber"}),
      (Texts{L"", L"501"}));
}

TEST_F(SimplifyListTest, RunsInTwoApartmentsAtOnce) {
  const auto work = [this](const wchar_t* method, Texts& result) {
    return StartApartment([this, method, &result] {
      const Object view = Hosted(L"BomView");
      for (int i = 0; i < 10; ++i)
        result.push_back(std::to_wstring(view.Call(method, dsn_).AsObject().Get(L"Count").AsLong()));
    });
  };
  Texts first;
  Texts second;
  std::thread one = work(L"GetBomSimplifyList", first);
  std::thread two = work(L"GetBomSimplifyListEx", second);
  one.join();
  two.join();
  EXPECT_EQ(first, Texts(10, L"11"));
  EXPECT_EQ(second, Texts(10, L"10"));
}

TEST_F(SimplifyListTest, BlocksNobodyAfterAFailureHalfWay) {
  for (const auto& create : {&Hosted, &Unhosted}) {
    const Object view = create(L"BomView");
    const Trace trace;
    // The list itself fails, after the batch and before the drop.
    const Fault fault(L"Open", 2);
    EXPECT_EQ(RaisedBy([&] { view.Call(L"GetBomSimplifyList", dsn_); }).code, Fault::kCode);
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
    EXPECT_EQ(trace.Details(L"Execute").size(), 1U);
    EXPECT_EQ(RowTexts(view.Call(L"GetBomSimplifyList", dsn_), {L"FKey"}).size(), 11U);
  }
}

TEST_F(SimplifyListTest, BlocksNobodyWhenTheDropFails) {
  const Trace trace;
  {
    const Fault fault(L"Execute", 2);
    EXPECT_EQ(RaisedBy([&] { Keys(L"GetBomSimplifyList"); }).code, Fault::kCode);
  }
  EXPECT_EQ(Keys(L"GetBomSimplifyList").size(), 11U);
  // The unit of work is over, and with its connection the table that was left.
  EXPECT_FALSE(IsThere(TableOf(trace.Details(L"Execute")[0])));
}

TEST_F(SimplifyListTest, BlocksNobodyWhenAConnectionIsLost) {
  // Another client's connection, left with a table of an earlier call on it.
  Object lost = Object::Create(L"ADODB.Connection");
  lost.Call(L"Open", database_.Dsn());
  lost.Call(L"Execute", L"CREATE TABLE ##BomItemID(FInterID INT NOT NULL)");
  EXPECT_EQ(Keys(L"GetBomSimplifyList").size(), 11U);
  lost = Object();
  EXPECT_EQ(Keys(L"GetBomSimplifyList").size(), 11U);
  EXPECT_FALSE(IsThere(L"##BomItemID"));
}

TEST_F(SimplifyListTest, RaisesForABadFilter) {
  const Trace trace;
  EXPECT_EQ(RaisedBy([&] { Keys(L"GetBomSimplifyList", L"t1.FNoSuch=1"); }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(RaisedBy([&] { Keys(L"GetBomSimplifyListEx", L"", L"'"); }).code,
            static_cast<HRESULT>(0x80040E14));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
}

// ---- ExistsEcnBill

TEST_F(BomListsTest, TellsWhetherThereIsAnyChange) {
  const Trace trace;
  EXPECT_EQ(view_.Call(L"ExistsEcnBill", database_.Dsn()), Variant(false));
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, database_.Dsn(),
                        {L"Execute\tSELECT ISNULL(COUNT(*),0) AS FEcnCount FROM ICECN ", L"VoteComplete"}));
  database_.Execute(L"INSERT INTO IcEcn (FInterID) VALUES (1), (2)");
  EXPECT_EQ(view_.Call(L"ExistsEcnBill", database_.Dsn()), Variant(true));
}

} // namespace
} // namespace mbom::test
