// The maintenance methods of BomUpdate: statements as they go over the wire, votes in their order, the data
// afterwards, results, in/out arguments and messages.
#include <gtest/gtest.h>

#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// The server's error for a statement that is none.
void ExpectServerError(const Raised& raised) {
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E14u);
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
}

class BomMaintenanceTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOMGroup', 41), ('ICBOM', 9)");
    database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                      L"(1, 'G1', 'Bikes', 0, 1), (2, 'G2', 'City', 1, 1), (3, 'G3', 'Road', 1, 1)");
    // 11 audited; 12 not; 13 audited without an auditor's name; 14 not.
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FStatus, FCheckerID, FNote) VALUES "
                      L"(11, 'B11', 500, 1, 7, ''), (12, 'B12', 500, 0, NULL, ''), "
                      L"(13, 'B13', 600, 1, NULL, ''), (14, 'B14', 600, 0, 0, '')");
  }

  Texts Groups() const {
    return database_.Rows(
        L"SELECT FInterID, FNumber, FName, FParentID, FBootID FROM ICBOMGroup ORDER BY FInterID, FNumber");
  }
  std::wstring LastGroupId() const {
    return database_.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICBOMGroup'");
  }
  Texts Boms() const { return database_.Rows(L"SELECT FInterID FROM ICBOM ORDER BY FInterID"); }

  const TestDatabase database_;
};

const Texts kGroups{L"1|G1|Bikes|0|1", L"2|G2|City|1|1", L"3|G3|Road|1|1"};
const Texts kBoms{L"11", L"12", L"13", L"14"};

// ---- AddBomGroup

Object NewGroup(const Variant& parentId, const wchar_t* number, const wchar_t* name) {
  return MakeDictionary({{L"FParentID", parentId}, {L"FNumber", number}, {L"FName", name}});
}

TEST_F(BomMaintenanceTest, AddBomGroupMakesATopGroupThatIsItsOwnBoot) {
  const Object bom = Hosted(L"BomUpdate");
  Variant id(7);
  const Trace trace;
  EXPECT_EQ(bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(0, L"G9", L"Trikes"), Variant::Reference(id)),
            Variant(true));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(),
                       {
                           L"Execute\t Set NoCount on\n"
                           L" Declare @NewInterId int\n"
                           L" if exists(SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOMGroup') \n"
                           L"     SELECT @NewInterId= FMaxNum+1 FROM ICMaxNum WHERE FTableName='ICBOMGroup'\n"
                           L" else \n"
                           L"     Select @NewInterId=1\n"
                           L" Declare @ParentId int\n"
                           L" Declare @BootId int\n"
                           L" Select @ParentId=0\n"
                           L" if @ParentId=0 \n"
                           L"     Select @BootId=@NewInterId\n"
                           L" else\n"
                           L"     SELECT @BootId=FBootID FROM IcBomGroup WHERE FInterID = @ParentId\n"
                           L" INSERT INTO ICBomGroup (FInterID,FNumber,FName,FParentID,FBootID) \n"
                           L" VALUES (@NewInterId,'G9','Trikes',@ParentId,@BootId)\n"
                           L" UPDATE ICMaxNum SET FMaxNum=@NewInterId WHERE FTableName='ICBOMGroup'\n"
                           L" Set NoCount Off\n"
                           L" Select @NewInterId as NewInterId \n",
                           L"VoteComplete",
                       }));
  EXPECT_EQ(id, Variant(42));
  EXPECT_EQ(Groups().back(), L"42|G9|Trikes|0|42");
  EXPECT_EQ(LastGroupId(), L"42");
  EXPECT_EQ(database_.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICBOM'"), L"9");
}

TEST_F(BomMaintenanceTest, AddBomGroupGivesAChildItsParentsBoot) {
  const Object bom = Hosted(L"BomUpdate");
  Variant id(0);
  EXPECT_TRUE(bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(0, L"G9", L"Trikes"), Variant::Reference(id))
                  .AsBool());
  EXPECT_TRUE(
      bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(42, L"G9.1", L"Small"), Variant::Reference(id))
          .AsBool());
  EXPECT_EQ(id, Variant(43));
  EXPECT_TRUE(
      bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(L"43", L"G9.2", L"Tiny"), Variant::Reference(id))
          .AsBool());
  EXPECT_EQ(id, Variant(44));
  const Texts groups = Groups();
  EXPECT_EQ(Texts(groups.end() - 3, groups.end()),
            (Texts{L"42|G9|Trikes|0|42", L"43|G9.1|Small|42|42", L"44|G9.2|Tiny|43|42"}));
  EXPECT_EQ(LastGroupId(), L"44");
}

TEST_F(BomMaintenanceTest, AddBomGroupStartsAtOneAgainAndAgainWithoutACounter) {
  database_.Execute(L"DELETE FROM ICMaxNum WHERE FTableName = 'ICBOMGroup'");
  database_.Execute(L"DELETE FROM ICBOMGroup");
  const Object bom = Hosted(L"BomUpdate");
  for (const wchar_t* number : {L"A", L"B"}) {
    Variant id(7);
    EXPECT_TRUE(bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(0, number, L"x"), Variant::Reference(id))
                    .AsBool());
    EXPECT_EQ(id, Variant(1));
  }
  EXPECT_EQ(Groups(), (Texts{L"1|A|x|0|1", L"1|B|x|0|1"}));
  EXPECT_EQ(database_.Rows(L"SELECT FTableName FROM ICMaxNum"), Texts{L"ICBOM"});
}

TEST_F(BomMaintenanceTest, AddBomGroupNeedsNoPlaceForTheId) {
  EXPECT_TRUE(
      Hosted(L"BomUpdate").Call(L"AddBomGroup", database_.Dsn(), NewGroup(1, L"G9", L"Trikes")).AsBool());
  EXPECT_EQ(Groups().back(), L"42|G9|Trikes|1|1");
}

TEST_F(BomMaintenanceTest, AddBomGroupFailsOnWhatMakesNoStatement) {
  const Variant groups[] = {NewGroup(0, L"G9", L"Child's"), // the quote ends the text
                            NewGroup(L"none", L"G9", L"x"), // no such column
                            MakeDictionary({{L"FNumber", L"G9"}, {L"FName", L"x"}}), Object(),
                            MakeVector({NewGroup(0, L"G9", L"x")})};
  for (const Variant& group : groups) {
    const Object bom = Hosted(L"BomUpdate");
    Variant id(7);
    const Trace trace;
    EXPECT_FALSE(bom.Call(L"AddBomGroup", database_.Dsn(), group, Variant::Reference(id)).AsBool());
    EXPECT_EQ(trace.Votes(), kAbortedTwice);
    EXPECT_EQ(id, Variant(7));
  }
  EXPECT_EQ(Groups(), kGroups);
  EXPECT_EQ(LastGroupId(), L"41");
}

// ---- UpdateBomGroup

TEST_F(BomMaintenanceTest, UpdateBomGroupChangesWhatTheDictionaryHolds) {
  struct Case {
    Object group;
    const wchar_t* filter;
    std::wstring statement;
    Texts groups;
  };
  const Case cases[] = {
      {MakeDictionary({{L"FParentID", 3}, {L"FName", L"Town"}, {L"FNumber", L"T"}}),
       L"FInterID = 2",
       L"UPDATE ICBomGroup SET FNumber='T',FName='Town',FParentID='3' WHERE FInterID = 2",
       {L"1|G1|Bikes|0|1", L"2|T|Town|3|1", L"3|G3|Road|1|1"}},
      {MakeDictionary({{L"FParentID", 2}}),
       L"FInterID=3",
       L"UPDATE ICBomGroup SET FParentID='2' WHERE FInterID=3",
       {L"1|G1|Bikes|0|1", L"2|T|Town|3|1", L"3|G3|Road|2|1"}},
      {MakeDictionary({{L"FNumber", L""}, {L"FParentID", 0}, {L"FOther", 1}}),
       L"FInterID=3",
       L"UPDATE ICBomGroup SET FNumber='',FParentID='0' WHERE FInterID=3",
       {L"1|G1|Bikes|0|1", L"2|T|Town|3|1", L"3||Road|0|1"}},
      {MakeDictionary({{L"FName", L"all"}}),
       L"",
       L"UPDATE ICBomGroup SET FName='all'",
       {L"1|G1|all|0|1", L"2|T|all|3|1", L"3||all|0|1"}},
  };
  const Object bom = Hosted(L"BomUpdate");
  for (const Case& one : cases) {
    const Trace trace;
    EXPECT_EQ(bom.Call(L"UpdateBomGroup", database_.Dsn(), one.group, one.filter), Variant(false));
    EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(), {L"Execute\t" + one.statement, L"VoteComplete"}));
    EXPECT_EQ(Groups(), one.groups);
  }
}

TEST_F(BomMaintenanceTest, UpdateBomGroupRaisesTheServersErrorForNoFieldAtAll) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  ExpectServerError(RaisedBy([&] {
    bom.Call(L"UpdateBomGroup", database_.Dsn(), MakeDictionary({{L"FOther", 1}}), L"FInterID=1");
  }));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(), {L"Execute\tUPDATE ICBomGroup SET  WHERE FInterID=1"}));
  EXPECT_EQ(Groups(), kGroups);
}

TEST_F(BomMaintenanceTest, UpdateBomGroupRaisesRunTimeError91WithoutADictionary) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Raised raised = RaisedBy([&] { bom.Call(L"UpdateBomGroup", database_.Dsn(), Object(), L""); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A005Bu);
  EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(), {}));
}

// ---- DeleteBom

std::wstring DeleteBatch(const std::wstring& filter, const std::wstring& where) {
  return L"Execute\t if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and " + filter +
         L") \n"
         L" Begin set nocount on\n"
         L" DELETE FROM ICBom" +
         where +
         L"\n"
         L"     set nocount off\n"
         L"     Select 1 as Succ\n"
         L" End\n"
         L" Else\n"
         L"     Select 0 as Succ\n";
}

TEST_F(BomMaintenanceTest, DeleteBomDeletesBomsThatAreNotAudited) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"DeleteBom", database_.Dsn(), L"FInterID in (12,14)"), Variant(true));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(), {DeleteBatch(L"FInterID in (12,14)", L" WHERE FInterID in (12,14)"),
                                         L"VoteComplete"}));
  EXPECT_EQ(Boms(), (Texts{L"11", L"13"}));
}

TEST_F(BomMaintenanceTest, DeleteBomDeletesNoneWhenOneIsAudited) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"DeleteBom", database_.Dsn(), L"FItemID=500"), Variant(false));
  EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(), {DeleteBatch(L"FItemID=500", L" WHERE FItemID=500"),
                                                         L"VoteComplete"}));
  EXPECT_EQ(Boms(), kBoms);
}

TEST_F(BomMaintenanceTest, DeleteBomAsksForTheAuditorToo) {
  EXPECT_TRUE(Hosted(L"BomUpdate").Call(L"DeleteBom", database_.Dsn(), L"FItemID=600").AsBool());
  EXPECT_EQ(Boms(), (Texts{L"11", L"12"}));
}

TEST_F(BomMaintenanceTest, DeleteBomOfNothingSucceeds) {
  EXPECT_TRUE(Hosted(L"BomUpdate").Call(L"DeleteBom", database_.Dsn(), L"FInterID=4711").AsBool());
  EXPECT_EQ(Boms(), kBoms);
}

TEST_F(BomMaintenanceTest, DeleteBomWithoutAFilterRaisesTheServersError) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  ExpectServerError(RaisedBy([&] { bom.Call(L"DeleteBom", database_.Dsn(), L""); }));
  EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(), {DeleteBatch(L"", L"")}));
  EXPECT_EQ(Boms(), kBoms);
}

// ---- DeleteBomGroup

TEST_F(BomMaintenanceTest, DeleteBomGroupDeletesWhatTheFilterMatches) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  // Its groups stay without a parent.
  EXPECT_EQ(bom.Call(L"DeleteBomGroup", database_.Dsn(), L"FInterID = 1"), Variant(false));
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(database_.Dsn(), {L"Execute\tDELETE FROM ICBomGroup WHERE FInterID = 1", L"VoteComplete"}));
  EXPECT_EQ(Groups(), (Texts{L"2|G2|City|1|1", L"3|G3|Road|1|1"}));
}

TEST_F(BomMaintenanceTest, DeleteBomGroupWithoutAFilterDeletesAll) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"DeleteBomGroup", database_.Dsn(), L""), Variant(false));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(), {L"Execute\tDELETE FROM ICBomGroup", L"VoteComplete"}));
  EXPECT_EQ(Groups(), Texts{});
}

// ---- UpdateBOM

Object Field(const wchar_t* id, const Variant& value) {
  return MakeDictionary({{L"FFieldID", id}, {L"FValue", value}});
}

TEST_F(BomMaintenanceTest, UpdateBomAssignsTheValuesAsTheyStand) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"UpdateBOM", database_.Dsn(), MakeVector({Field(L"FNote", L"'one'")}), L"FInterID=12"),
            Variant(false));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(),
                       {L"Execute\tUPDATE ICBom SET FNote='one' WHERE FInterID=12", L"VoteComplete"}));
  trace.Clear();
  EXPECT_EQ(bom.Call(L"UpdateBOM", database_.Dsn(),
                     MakeVector({Field(L"FNote", L"'two'"), Field(L"FVersion", L"FBOMNumber"),
                                 Field(L"FUseStatus", 1072)}),
                     L""),
            Variant(false));
  EXPECT_EQ(trace.Details(L"Execute"),
            Texts{L"UPDATE ICBom SET FNote='two',FVersion=FBOMNumber,FUseStatus=1072"});
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FNote, FVersion, FUseStatus FROM ICBOM ORDER BY FInterID"),
            (Texts{L"11|two|B11|1072", L"12|two|B12|1072", L"13|two|B13|1072", L"14|two|B14|1072"}));
}

TEST_F(BomMaintenanceTest, UpdateBomRaisesWhatIsWrongWithItsArguments) {
  const auto codeOf = [this](const Variant& fields) {
    const Object bom = Hosted(L"BomUpdate");
    const Trace trace;
    const Raised raised = RaisedBy([&] { bom.Call(L"UpdateBOM", database_.Dsn(), fields, L"FInterID=12"); });
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
    return static_cast<unsigned>(raised.code);
  };
  EXPECT_EQ(codeOf(MakeVector({})), 0x80040E14u);
  EXPECT_EQ(codeOf(MakeVector({Field(L"FNote", L"bare text")})), 0x80040E14u);
  EXPECT_EQ(codeOf(MakeVector({5})), static_cast<unsigned>(DISP_E_TYPEMISMATCH));
  EXPECT_EQ(codeOf(Object()), 0x800A005Bu);
}

// ---- CheckBomUsed

struct Language {
  const wchar_t* key;
  const wchar_t* costObjects;
  const wchar_t* salesOrders;
  const wchar_t* before;
  const wchar_t* after;
};

constexpr Language kLanguages[] = {
    {L"Language=chs", L"成本对象表", L"销售订单", L"该BOM在 ", L" 中已经被引用。\r\n"},
    {L"Language=cht", L"成本對象表", L"銷售訂單", L"該BOM在 ", L" 中已經被引用。\r\n"},
    {L"", L"成本對象表", L"銷售訂單", L"該BOM在 ", L" 中已經被引用。\r\n"},
    {L"Language=en", L"Cost Objects", L"Sales Orders", L"This BOM is used in ", L" already.\r\n"},
};

std::wstring UsedQuery(const Language& language, const std::wstring& id) {
  return L"Open\t select top 1 '" + std::wstring(language.costObjects) +
         L"' as FTableName, FBomID as FBomInterID From cbCostObj Where FBomID = " + id +
         L"\r\n union select top 1 '" + language.salesOrders +
         L"' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID = " + id + L"\r\n";
}

class CheckBomUsedTest : public BomMaintenanceTest {
 protected:
  void SetUp() override {
    BomMaintenanceTest::SetUp();
    database_.Execute(L"INSERT INTO cbCostObj (FItemID, FNumber, FName, FBomID) VALUES (1, 'C1', 'x', 11), "
                      L"(2, 'C2', 'y', 11), (3, 'C3', 'z', 12)");
    database_.Execute(L"INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES "
                      L"(1, 1, 500, 11), (1, 2, 500, 13)");
  }
};

TEST_F(CheckBomUsedTest, ListsCostObjectsBeforeSalesOrders) {
  for (const Language& language : kLanguages) {
    const std::wstring dsn = database_.Dsn(language.key);
    const Object bom = Hosted(L"BomUpdate");
    Variant info(L"as it came");
    const Trace trace;
    EXPECT_EQ(bom.Call(L"CheckBomUsed", dsn, 11, Variant::Reference(info)), Variant(1));
    EXPECT_EQ(trace.Events(),
              AroundSetUp({}, dsn,
                          {L"LoadString\t成本对象表", L"LoadString\t销售订单", UsedQuery(language, L"11"),
                           L"LoadString\t该BOM在", L"LoadString\t中已经被引用。", L"LoadString\t该BOM在",
                           L"LoadString\t中已经被引用。", L"VoteComplete"}));
    EXPECT_EQ(info, Variant(std::wstring(language.before) + language.costObjects + language.after +
                            language.before + language.salesOrders + language.after));
  }
}

TEST_F(CheckBomUsedTest, ListsTheOneThatUsesIt) {
  const Object bom = Hosted(L"BomUpdate");
  Variant info(L"");
  EXPECT_EQ(bom.Call(L"CheckBomUsed", database_.Dsn(L"Language=en"), 12, Variant::Reference(info)),
            Variant(1));
  EXPECT_EQ(info, Variant(L"This BOM is used in Cost Objects already.\r\n"));
  EXPECT_EQ(bom.Call(L"CheckBomUsed", database_.Dsn(L"Language=en"), 13, Variant::Reference(info)),
            Variant(1));
  EXPECT_EQ(info, Variant(L"This BOM is used in Sales Orders already.\r\n"));
}

TEST_F(CheckBomUsedTest, AnswersThatNothingUsesIt) {
  const Object bom = Hosted(L"BomUpdate");
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"CheckBomUsed", database_.Dsn(), 14, Variant::Reference(info)), Variant(0));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
  EXPECT_EQ(info, Variant(L""));
}

class CheckBomUsedFailure : public CheckBomUsedTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(CheckBomUsedFailure, GivesMinusOneAndLeavesTheInfo) {
  const Object bom = Hosted(L"BomUpdate");
  Variant info(L"as it came");
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_EQ(bom.Call(L"CheckBomUsed", database_.Dsn(), 11, Variant::Reference(info)), Variant(-1));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  EXPECT_EQ(info, Variant(L"as it came"));
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CheckBomUsedFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Open", 1}));

TEST_F(CheckBomUsedTest, AFailureAfterTheListKeepsTheList) {
  const Object bom = Hosted(L"BomUpdate");
  Variant info(L"as it came");
  const Trace trace;
  const Fault fault(L"VoteComplete");
  EXPECT_EQ(bom.Call(L"CheckBomUsed", database_.Dsn(L"Language=en"), 12, Variant::Reference(info)),
            Variant(-1));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteAbort"}));
  EXPECT_EQ(info, Variant(L"This BOM is used in Cost Objects already.\r\n"));
}

// ---- SetVisibelBySysProfile

constexpr wchar_t kSetVisible[] =
    L"Execute\tUPDATE IcTableFieldInfo SET FVisible = '0' \r\n"
    L"WHERE FCtlID IN ('BOM', 'OneGradeBOMQuery', 'MutiGradeBOMQuery', 'OneGradeBOMQueryRev', "
    L"'MutiGradeBOMQueryRev', 'BomTreeQuery') \r\n"
    L"AND FLdgNum = 1 AND FName IN ('FBeginDay', 'FEndDay') ";

class SetVisibleTest : public BomMaintenanceTest {
 protected:
  void SetUp() override {
    BomMaintenanceTest::SetUp();
    for (const wchar_t* layout : {L"BOM", L"OneGradeBOMQuery", L"MutiGradeBOMQuery", L"OneGradeBOMQueryRev",
                                  L"MutiGradeBOMQueryRev", L"BomTreeQuery", L"CustBOM"})
      database_.Execute(std::wstring(L"INSERT INTO ICTableFieldInfo (FNum, FCtlID, FLdgNum, FName) VALUES "
                                     L"(1, '") +
                        layout + L"', 0, 'FBeginDay'), (1, '" + layout + L"', 1, 'FBeginDay'), (2, '" +
                        layout + L"', 1, 'FEndDay'), (3, '" + layout + L"', 1, 'FAuxQty')");
  }
  Texts Invisible() const {
    return database_.Rows(L"SELECT FCtlID, FLdgNum, FName FROM ICTableFieldInfo WHERE FVisible = '0' "
                          L"ORDER BY FCtlID, FNum");
  }
};

TEST_F(SetVisibleTest, SwitchesTheValidityColumnsOfSixLayouts) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"SetVisibelBySysProfile", database_.Dsn(), L"0"), Variant(true));
  EXPECT_EQ(trace.Events(), AroundSetUp({L"VoteComplete"}, database_.Dsn(), {kSetVisible}));
  EXPECT_EQ(Invisible(), (Texts{L"BOM|1|FBeginDay", L"BOM|1|FEndDay", L"BomTreeQuery|1|FBeginDay",
                                L"BomTreeQuery|1|FEndDay", L"MutiGradeBOMQuery|1|FBeginDay",
                                L"MutiGradeBOMQuery|1|FEndDay", L"MutiGradeBOMQueryRev|1|FBeginDay",
                                L"MutiGradeBOMQueryRev|1|FEndDay", L"OneGradeBOMQuery|1|FBeginDay",
                                L"OneGradeBOMQuery|1|FEndDay", L"OneGradeBOMQueryRev|1|FBeginDay",
                                L"OneGradeBOMQueryRev|1|FEndDay"}));
}

TEST_F(SetVisibleTest, FailsOnAValueWithAQuote) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_EQ(bom.Call(L"SetVisibelBySysProfile", database_.Dsn(), L"0'"), Variant(false));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteAbort"}));
  EXPECT_EQ(Invisible(), Texts{});
}

// ---- failure paths

class AddBomGroupFailure : public BomMaintenanceTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(AddBomGroupFailure, LeavesNothingBehindUnderTheHost) {
  const Object bom = Hosted(L"BomUpdate");
  Variant id(7);
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_FALSE(
      bom.Call(L"AddBomGroup", database_.Dsn(), NewGroup(0, L"G9", L"Trikes"), Variant::Reference(id))
          .AsBool());
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(id, Variant(7));
  EXPECT_EQ(Groups(), kGroups);
  EXPECT_EQ(LastGroupId(), L"41");
}

constexpr OutsideCall kCalls[] = {
    {L"VoteAbort", 1},     {L"GetDataContext", 1}, {L"BindDsn", 1},      {L"GetCallerInfo", 1},
    {L"GetConnection", 1}, {L"Execute", 1},        {L"VoteComplete", 1},
};

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, AddBomGroupFailure, testing::ValuesIn(kCalls));

class SetVisibleFailure : public SetVisibleTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(SetVisibleFailure, LeavesNothingBehindUnderTheHost) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_EQ(bom.Call(L"SetVisibelBySysProfile", database_.Dsn(), L"0"), Variant(false));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteComplete", L"VoteAbort"}));
  EXPECT_EQ(Invisible(), Texts{});
}

// All but the vote to abort, which is cast when something else has failed.
INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, SetVisibleFailure,
                         testing::ValuesIn(std::begin(kCalls) + 1, std::end(kCalls)));

class RisingMaintenanceFailure : public BomMaintenanceTest,
                                 public testing::WithParamInterface<FailingCall> {};

TEST_P(RisingMaintenanceFailure, ReachesTheCallerUnchangedWithTheUnitAborted) {
  const std::wstring method = GetParam().method;
  const OutsideCall& call = GetParam().call;
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Fault fault(call.kind, call.nth);
  const Raised raised = RaisedBy([&] {
    if (method == L"UpdateBomGroup")
      bom.Call(L"UpdateBomGroup", database_.Dsn(), MakeDictionary({{L"FName", L"x"}}), L"FInterID=1");
    else if (method == L"UpdateBOM")
      bom.Call(L"UpdateBOM", database_.Dsn(), MakeVector({Field(L"FInterID", 99)}), L"FInterID=12");
    else if (method == L"DeleteBom")
      bom.Call(L"DeleteBom", database_.Dsn(), L"FInterID=12");
    else
      bom.Call(L"DeleteBomGroup", database_.Dsn(), L"FInterID=1");
  });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.source, L"ErpStandIn");
  EXPECT_EQ(raised.description, Fault::kText);
  EXPECT_EQ(trace.Votes().front(), L"VoteAbort");
  // A vote that failed is in the trace, but was not cast.
  EXPECT_EQ(trace.Votes().size(), std::wstring(call.kind) == L"VoteComplete" ? 2u : 1u);
  EXPECT_EQ(Groups(), kGroups);
  EXPECT_EQ(Boms(), kBoms);
}

std::vector<FailingCall> RisingMaintenance() {
  std::vector<FailingCall> methods;
  for (const wchar_t* name : {L"UpdateBomGroup", L"DeleteBom", L"DeleteBomGroup", L"UpdateBOM"})
    for (const OutsideCall& call : kCalls) methods.push_back({name, call});
  return methods;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, RisingMaintenanceFailure, testing::ValuesIn(RisingMaintenance()));

} // namespace
} // namespace mbom::test
