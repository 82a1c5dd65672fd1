// clsMCustBOM: audit, un-audit, disabling and enabling of customer BOMs, and what prevents them.
#include <algorithm>

#include "tests/src/custbom/CustBomFixture.h"

namespace mbom::test {
namespace {

constexpr wchar_t kNow[] = L"2026/03/05 14:30:00"; // the server's time in the tests' descriptors

std::wstring UsageQuery(const std::wstring& condition) {
  return L" Select Top 1 '客户BOM批次表' as FTableName, FCustBomId as FBomInterID From IcorderBatchTrace "
         L"Where "
         L"FCustBomId" +
         condition +
         L"\r\n union select top 1 '销售订单' as FTableName, FBomInterID From SEOrderEntry Where "
         L"FBomInterID" +
         condition +
         L"\r\n union select top 1 '生产任务单' as FTableName, FBomInterID From ICMO Where FBomInterID" +
         condition +
         L"\r\n union select top 1 '计划订单' as FTableName, FApplicableBom As FBomInterID From t_SubsItem "
         L"Where "
         L"FApplicableBom" +
         condition +
         L"\r\n union select top 1 '产品预测单' as FTableName, FBomInterID As FBomInterID From PPOrderEntry "
         L"Where "
         L"FBomInterID" +
         condition;
}

Texts UsageNames() {
  return {L"LoadString\t客户BOM批次表", L"LoadString\t销售订单", L"LoadString\t生产任务单",
          L"LoadString\t计划订单", L"LoadString\t产品预测单"};
}

std::wstring UpperQuery(const std::wstring& ids) {
  return L"SELECT ICBOM.FInterID,ICBOM.FBomNumber,ISNULL(ICBOM.FStatus,0) FStatus FROM ICBOM,ICCUSTBOMCHILD "
         L"WHERE "
         L"ICBOM.FInterID=ICCUSTBOMCHILD.FInterID AND ICCUSTBOMCHILD.FCustBomCode IN (" +
         ids + L") ";
}

std::wstring UsersQuery(const std::wstring& ids) {
  return L"SELECT ICBOM.FBomNumber FROM ICBOM INNER JOIN ICCustBomChild ON "
         L"ICBOM.FInterID=ICCustBomChild.FInterID "
         L"WHERE ICCustBomChild.FCustBomCode IN (" +
         ids + L")";
}

std::wstring AuditStatement(const std::wstring& ids) {
  return L"UPDATE ICBOM SET FUseStatus=1072,FStatus=1,FCheckerID='16394',FAudDate='" + std::wstring(kNow) +
         L"' WHERE FInterID IN (" + ids + L")";
}

std::wstring UndoStatement(const std::wstring& ids) {
  return L"UPDATE ICBOM SET FUseStatus=1073,FStatus=0,FCheckerID=0,FAudDate=NULL WHERE FInterID IN (" + ids +
         L")";
}

class CustBomStatusTest : public CustBomFixture {
 protected:
  void UseEverywhere(int32_t id) const {
    const std::wstring bom = std::to_wstring(id);
    database_.Execute(L"INSERT INTO IcorderBatchTrace (FInterID, FEntryID, FCustBomId) VALUES (1, 1, " + bom +
                      L")");
    database_.Execute(
        L"INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES (1, 1, 501, " + bom +
        L")");
    database_.Execute(L"INSERT INTO ICMO (FInterID, FItemID, FBomInterID) VALUES (1, 501, " + bom + L")");
    database_.Execute(L"INSERT INTO t_SubsItem (FInterID, FItemID, FApplicableBom) VALUES (1, 501, " + bom +
                      L")");
    database_.Execute(
        L"INSERT INTO PPOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES (1, 1, 501, " + bom +
        L")");
  }
  void Order(int32_t id) const {
    database_.Execute(
        L"INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES (1, 1, 501, " +
        std::to_wstring(id) + L")");
  }

  struct Answer {
    Variant result;
    std::wstring message;
    Texts events;
    Texts votes;
  };

  Answer Audit(const std::wstring& ids, bool audit, const std::wstring& current = {},
               const std::wstring& language = L"chs") const {
    Variant message(L"before");
    const Trace trace;
    Answer answer;
    answer.result = custBom_.Call(L"UpdateAuditFlag", database_.Dsn(L"Language=" + language), ids, audit,
                                  current, Variant::Reference(message));
    answer.message = message.AsText();
    answer.events = trace.Events();
    answer.votes = trace.Votes();
    return answer;
  }

  Answer Disable(const std::wstring& ids, bool disable = true) const {
    Variant status(disable);
    const Trace trace;
    Answer answer;
    answer.result = custBom_.Call(L"UpdateDisableStatus", Dsn(), ids, Variant::Reference(status));
    EXPECT_EQ(status, Variant(disable));
    answer.events = trace.Events();
    answer.votes = trace.Votes();
    return answer;
  }

  Answer Assisted(const std::wstring& ids, const std::wstring& current) const {
    Variant message(L"before");
    const Trace trace;
    Answer answer;
    answer.result =
        custBom_.Call(L"CheckCustBOMIsAssisted", Dsn(), ids, current, Variant::Reference(message));
    answer.message = message.AsText();
    answer.events = trace.Events();
    answer.votes = trace.Votes();
    return answer;
  }

  // A query through the class's own recordset routine: a call of its own.
  Texts Query(const std::wstring& text) const {
    return Concat({SetUpCalls(), {L"Open\t" + text, L"VoteComplete"}});
  }

  const Object custBom_ = Hosted(L"clsMCustBOM");
};

TEST_F(CustBomStatusTest, ReportsItsTransactionMode) {
  EXPECT_EQ(custBom_.Get(L"TransMode"), Variant(3));
}

// ---- GetUsedCustBomNumber

TEST_F(CustBomStatusTest, NamesWhatIsBuiltFromTheListOnceALine) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetUsedCustBomNumber", Dsn(), L"5,7"), Variant(L"KH9,KH12,KH12"));
  EXPECT_EQ(trace.Events(), AroundSetUp({}, Dsn(), {L"Execute\t" + UsersQuery(L"5,7"), L"VoteComplete"}));
}

TEST_F(CustBomStatusTest, NamesNothingForWhatNothingIsBuiltFrom) {
  EXPECT_EQ(custBom_.Call(L"GetUsedCustBomNumber", Dsn(), L"15,20"), Variant(L""));
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetUsedCustBomNumber", Dsn(), L""), Variant(L""));
  EXPECT_EQ(trace.Events(), AroundSetUp({}, Dsn(), {L"VoteComplete"}));
}

TEST_F(CustBomStatusTest, NamesNothingWhenItFails) {
  for (const wchar_t* ids : {L"5,", L"x'y", L"(5"}) {
    const Trace trace;
    EXPECT_EQ(custBom_.Call(L"GetUsedCustBomNumber", Dsn(), ids), Variant(L""));
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetUsedCustBomNumber", kBindsNothing, L"5"), Variant(L""));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
}

// ---- CheckCustBOMIsAssisted

TEST_F(CustBomStatusTest, FindsTheFiveKindsOfDocuments) {
  UseEverywhere(20);
  const Answer answer = Assisted(L"5,9", L"20");
  EXPECT_EQ(answer.result, Variant(true));
  // The rows of a UNION come sorted; the names decide.
  Texts lines;
  for (size_t start = 0, end = 0; (end = answer.message.find(L"\r\n", start)) != std::wstring::npos;
       start = end + 2)
    lines.push_back(answer.message.substr(start, end - start));
  std::sort(lines.begin(), lines.end());
  Texts expected{L"该BOM在 客户BOM批次表 中已经被引用。", L"该BOM在 销售订单 中已经被引用。",
                 L"该BOM在 生产任务单 中已经被引用。", L"该BOM在 计划订单 中已经被引用。",
                 L"该BOM在 产品预测单 中已经被引用。"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(answer.votes, (Texts{L"VoteComplete", L"VoteComplete"}));
}

TEST_F(CustBomStatusTest, AsksForTheListWhenTheCurrentOneIsFree) {
  Order(9);
  const Answer answer = Assisted(L"5,9", L"20");
  EXPECT_EQ(answer.result, Variant(true));
  EXPECT_EQ(answer.message, L"上层BOM在 销售订单 中已经被引用。\r\n");
  EXPECT_EQ(answer.events, Concat({SetUpCalls(),
                                   UsageNames(),
                                   Query(UsageQuery(L" = 20")),
                                   UsageNames(),
                                   Query(UsageQuery(L" IN (5,9)")),
                                   {L"LoadString\t上层BOM在", L"LoadString\t中已经被引用。"},
                                   {L"VoteComplete"}}));
}

TEST_F(CustBomStatusTest, AsksForTheCurrentOneAlone) {
  Order(5);
  const Answer used = Assisted(L"9", L"5");
  EXPECT_EQ(used.result, Variant(true));
  EXPECT_EQ(used.message, L"该BOM在 销售订单 中已经被引用。\r\n");
  EXPECT_EQ(used.events, Concat({SetUpCalls(),
                                 UsageNames(),
                                 Query(UsageQuery(L" = 5")),
                                 {L"LoadString\t该BOM在", L"LoadString\t中已经被引用。"},
                                 {L"VoteComplete"}}));
}

TEST_F(CustBomStatusTest, LeavesTheMessageWhenNothingUsesThem) {
  const Answer free = Assisted(L"5,9", L"20");
  EXPECT_EQ(free.result, Variant(false));
  EXPECT_EQ(free.message, L"before");
  const Answer nothing = Assisted(L"", L"");
  EXPECT_EQ(nothing.result, Variant(false));
  EXPECT_EQ(nothing.message, L"before");
  EXPECT_EQ(nothing.events, Concat({SetUpCalls(), {L"VoteComplete"}}));
}

TEST_F(CustBomStatusTest, CountsAsUsedWhatCannotBeChecked) {
  for (const wchar_t* current : {L"5,9", L"x'y"}) {
    const Answer answer = Assisted(L"", current);
    EXPECT_EQ(answer.result, Variant(true));
    EXPECT_EQ(answer.message, L"before");
    EXPECT_EQ(answer.votes, (Texts{L"VoteAbort", L"VoteAbort"})); // of the query, and of the check
  }
}

// ---- UpdateAuditFlag

TEST_F(CustBomStatusTest, AuditsTheList) {
  const Answer answer = Audit(L"20", true);
  EXPECT_EQ(answer.result, Variant(true));
  EXPECT_EQ(answer.message, L"before");
  EXPECT_EQ(answer.events,
            Concat({{L"VoteAbort"},
                    SetUpCalls(),
                    Query(UpperQuery(L"20")),
                    {L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"},
                    Query(L"SELECT GETDATE()"),
                    {L"GetConnection", L"Execute\t" + AuditStatement(L"20"), L"VoteComplete"}}));
  EXPECT_EQ(States(L"20"), Texts{L"20|1072|1|0|16394|2026-03-05 14:30:00"});
}

TEST_F(CustBomStatusTest, AnAuditedUpperLevelOutsideTheListBlocks) {
  const Texts before = States(L"5,7,9,12,15,20");
  const Answer answer = Audit(L"5", true);
  EXPECT_EQ(answer.result, Variant(false));
  EXPECT_EQ(answer.message, L"该客户BOM已被客户BOM[ KH9 ]引用且其上层已审核，不可反审核!");
  EXPECT_EQ(answer.events, Concat({{L"VoteAbort"},
                                   SetUpCalls(),
                                   Query(UpperQuery(L"5")),
                                   {L"LoadString\t该客户BOM已被客户BOM[%1]引用且其上层已审核，不可反审核!"},
                                   {L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"},
                                   Query(L"SELECT GETDATE()"),
                                   {L"VoteAbort"}}));
  EXPECT_EQ(States(L"5,7,9,12,15,20"), before);
}

TEST_F(CustBomStatusTest, TheWalkGoesOnAboveLevelsThatAreNotAudited) {
  const Answer answer = Audit(L"7", true);
  EXPECT_EQ(answer.result, Variant(false));
  EXPECT_EQ(answer.message, L"该客户BOM已被客户BOM[KH15]引用且其上层已审核，不可反审核!");
  Texts levels;
  for (const std::wstring& event : answer.events)
    if (event.starts_with(L"Open\tSELECT ICBOM.FInterID")) levels.push_back(event.substr(5));
  // 12 has two lines with 7.
  EXPECT_EQ(levels, (Texts{UpperQuery(L"7"), UpperQuery(L"12,12")}));
}

TEST_F(CustBomStatusTest, AnAuditedUpperLevelInTheListIsPassedOver) {
  const Answer answer = Audit(L"5,9", false);
  // Above 9 stands 12, not audited, and above that 15, audited and not in the list.
  EXPECT_EQ(answer.result, Variant(false));
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID = 15");
  const Answer free = Audit(L"5,9", false);
  EXPECT_EQ(free.result, Variant(true));
  EXPECT_EQ(free.message, L"before");
  EXPECT_EQ(States(L"5,9"), (Texts{L"5|1073|0|0|0|NULL", L"9|1073|0|0|0|NULL"}));
}

// Two customer BOMs that are built from each other, neither of them audited.
TEST_F(CustBomStatusTest, AWalkThatGoesInACircleEnds) {
  database_.Execute(
      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FBomType, FParentID, FItemID, FUnitID, FStatus, "
      L"FUseStatus) VALUES (30, 'KH30', 3, 1, 501, 8, 0, 1073), (31, 'KH31', 3, 1, 501, 8, 0, 1073)");
  database_.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, "
                    L"FCustBOMCode) VALUES (30, 1, 502, 8, 1, 1, 31), (31, 1, 502, 8, 1, 1, 30)");
  const Object custBom = Hosted(L"clsMCustBOM");
  const Trace trace;
  EXPECT_EQ(custBom.Call(L"UpdateAuditFlag", Dsn(), L"30", true), Variant(true));
  // One query a level: of 30, of 31, and none for 30 again.
  EXPECT_EQ(trace.Details(L"Open").size(), 3U); // the third reads the time
  EXPECT_EQ(trace.Votes().back(), L"VoteComplete");
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FStatus FROM ICBOM WHERE FInterID IN (30, 31) ORDER BY 1"),
            (Texts{L"30|1", L"31|0"}));
}

TEST_F(CustBomStatusTest, UndoAsksForDocumentsFirst) {
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID IN (12, 15)");
  const Answer answer = Audit(L"9", false, L"20");
  EXPECT_EQ(answer.result, Variant(true));
  EXPECT_EQ(answer.events, Concat({{L"VoteAbort"},
                                   SetUpCalls(),
                                   SetUpCalls(),
                                   UsageNames(),
                                   Query(UsageQuery(L" = 20")),
                                   UsageNames(),
                                   Query(UsageQuery(L" IN (9)")),
                                   {L"VoteComplete"},
                                   Query(UpperQuery(L"9")),
                                   {L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"},
                                   Query(L"SELECT GETDATE()"),
                                   {L"GetConnection", L"Execute\t" + UndoStatement(L"9"), L"VoteComplete"}}));
}

TEST_F(CustBomStatusTest, TheWalkTakesEveryRowOfALevel) {
  // 20 is used by 7 and 12, which are not audited. 7 is used by 12, 12 by 15, which is audited.
  database_.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES "
                    L"(7, 1, 501, 20), (12, 9, 501, 20)");
  const auto levelsOf = [](const Answer& answer) {
    Texts levels;
    for (const std::wstring& event : answer.events)
      if (event.starts_with(L"Open\tSELECT ICBOM.FInterID")) levels.push_back(event.substr(5));
    return levels;
  };
  const Answer blocked = Audit(L"20", true);
  EXPECT_EQ(blocked.result, Variant(false));
  EXPECT_EQ(blocked.message, L"该客户BOM已被客户BOM[KH15]引用且其上层已审核，不可反审核!");
  const Texts levels = levelsOf(blocked);
  ASSERT_EQ(levels.size(), 2U);
  EXPECT_EQ(levels[0], UpperQuery(L"20"));
  EXPECT_TRUE(levels[1] == UpperQuery(L"7,12") || levels[1] == UpperQuery(L"12,7")) << com::ToUtf8(levels[1]);

  // 9 is audited, but in the list: it is passed over, and the other rows of its level are not.
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID IN (12, 15)");
  database_.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES "
                    L"(9, 2, 501, 20)");
  const Answer free = Audit(L"20,9", true);
  EXPECT_EQ(free.result, Variant(true));
  EXPECT_EQ(levelsOf(free), (Texts{UpperQuery(L"20,9"), UpperQuery(L"7")}));

  // One that blocks is enough, whatever stands beside it.
  database_.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES "
                    L"(15, 1, 501, 20)");
  const Answer beside = Audit(L"20,9", true);
  EXPECT_EQ(beside.result, Variant(false));
  EXPECT_EQ(beside.message, L"该客户BOM已被客户BOM[KH15]引用且其上层已审核，不可反审核!");
  EXPECT_EQ(levelsOf(beside).size(), 1U);
}

TEST_F(CustBomStatusTest, UndoIsRefusedWhenItCannotBeCheckedWhatUsesThem) {
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID IN (12, 15)");
  const Texts before = States(L"9");
  for (const OutsideCall& call : {OutsideCall{L"Open", 1}, OutsideCall{L"Open", 2},
                                  OutsideCall{L"BindDsn", 2}, OutsideCall{L"GetConnection", 3}}) {
    const Fault fault(call.kind, call.nth);
    const Answer answer = Audit(L"9", false, L"20");
    EXPECT_EQ(answer.result, Variant(false));
    EXPECT_EQ(answer.message, L"before");
    EXPECT_EQ(answer.votes.back(), L"VoteAbort");
    // Neither walked nor written.
    for (const std::wstring& event : answer.events) {
      EXPECT_FALSE(event.starts_with(L"Open\tSELECT ICBOM")) << com::ToUtf8(event);
      EXPECT_FALSE(event.starts_with(L"Execute\tUPDATE")) << com::ToUtf8(event);
    }
  }
  EXPECT_EQ(States(L"9"), before);
}

TEST_F(CustBomStatusTest, UndoIsRefusedWhenAnOrderUsesIt) {
  Order(9);
  const Texts before = States(L"9");
  const Answer current = Audit(L"9", false, L"9");
  EXPECT_EQ(current.result, Variant(false));
  EXPECT_EQ(current.message, L"该BOM在 销售订单 中已经被引用。\r\n");
  EXPECT_EQ(current.votes.back(), L"VoteAbort");
  const Answer list = Audit(L"9", false, L"", L"en");
  EXPECT_EQ(list.message, L"The upper-level BOM is used in Sales Orders already.\r\n");
  EXPECT_EQ(Audit(L"9", false, L"", L"cht").message, L"上層BOM在 銷售訂單 中已經被引用。\r\n");
  EXPECT_EQ(States(L"9"), before);
}

TEST_F(CustBomStatusTest, TheBlockSpeaksThreeLanguages) {
  EXPECT_EQ(Audit(L"5", false, L"", L"cht").message,
            L"該客戶BOM已被客戶BOM[ KH9 ]引用且其上層已審核，不可反審核!");
  EXPECT_EQ(
      Audit(L"5", false, L"", L"en").message,
      L"Customer BOM [ KH9 ] uses this customer BOM and has been audited; un-auditing is not possible!");
}

TEST_F(CustBomStatusTest, AnIdCountsAsInTheListWhenItsTextOccursInIt) {
  // 2 is built from 20 and audited; "2," occurs in "12,".
  database_.Execute(L"UPDATE ICBOM SET FBomType = 3, FStatus = 1 WHERE FInterID = 2");
  database_.Execute(
      L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES (2, 1, 501, 20)");
  EXPECT_EQ(Audit(L"20", true).result, Variant(false));
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID = 15");
  EXPECT_EQ(Audit(L"20,12", true).result, Variant(true));
  EXPECT_EQ(States(L"12,20"),
            (Texts{L"12|1072|1|0|16394|2026-03-05 14:30:00", L"20|1072|1|0|16394|2026-03-05 14:30:00"}));
}

TEST_F(CustBomStatusTest, BomsBuiltFromEachOtherDoNotHangTheWalk) {
  database_.Execute(L"UPDATE ICBOM SET FStatus = 0 WHERE FInterID IN (5, 9)");
  database_.Execute(L"DELETE FROM ICCustBOMChild WHERE FInterID IN (12, 15)");
  database_.Execute(
      L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FCustBOMCode) VALUES (5, 1, 501, 9)");
  const Answer answer = Audit(L"5", true);
  EXPECT_EQ(answer.result, Variant(true));
  EXPECT_EQ(States(L"5,9"), (Texts{L"5|1072|1|0|16394|2026-03-05 14:30:00", L"9|1072|0|0|NULL|NULL"}));
}

TEST_F(CustBomStatusTest, AnEmptyListChangesNothing) {
  const Answer answer = Audit(L"", true);
  EXPECT_EQ(answer.result, Variant(false));
  EXPECT_EQ(answer.events, Concat({{L"VoteAbort"},
                                   SetUpCalls(),
                                   {L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"},
                                   Query(L"SELECT GETDATE()"),
                                   {L"VoteAbort"}}));
}

TEST_F(CustBomStatusTest, TheOptionalArgumentsOfTheAuditMayBeLeftOut) {
  EXPECT_EQ(custBom_.Call(L"UpdateAuditFlag", Dsn(), L"20", true), Variant(true));
}

TEST_F(CustBomStatusTest, AListThatIsNoneFailsTheAudit) {
  for (const wchar_t* ids : {L"20,", L"x'y"}) {
    const Answer answer = Audit(ids, true);
    EXPECT_EQ(answer.result, Variant(false));
    EXPECT_EQ(answer.message, L"before");
    EXPECT_EQ(answer.votes, (Texts{L"VoteAbort", L"VoteAbort", L"VoteAbort"}));
  }
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"UpdateAuditFlag", kBindsNothing, L"20", true), Variant(false));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
}

// ---- UpdateDisableStatus

TEST_F(CustBomStatusTest, DisablesWhatNothingUses) {
  const Answer answer = Disable(L"20");
  EXPECT_EQ(answer.result, Variant(L"SUCCESS"));
  EXPECT_EQ(answer.events,
            Concat({{L"VoteAbort"},
                    SetUpCalls(),
                    SetUpCalls(),
                    {L"Execute\t" + UsersQuery(L"20"), L"VoteComplete"},
                    SetUpCalls(),
                    UsageNames(),
                    Query(UsageQuery(L" = 20")),
                    {L"VoteComplete"},
                    {L"GetConnection", L"Execute\tUPDATE ICBOM SET FForbid=-1 WHERE FInterID IN (20)",
                     L"VoteComplete"}}));
  EXPECT_EQ(States(L"20"), Texts{L"20|1073|0|-1|NULL|NULL"});
}

TEST_F(CustBomStatusTest, EnablesWithoutAsking) {
  database_.Execute(L"UPDATE ICBOM SET FForbid = -1 WHERE FInterID IN (5, 20)");
  const Answer answer = Disable(L"5,20", false);
  EXPECT_EQ(answer.result, Variant(L"SUCCESS"));
  EXPECT_EQ(answer.events,
            Concat({{L"VoteAbort"},
                    SetUpCalls(),
                    {L"Execute\tUPDATE ICBOM SET FForbid=0 WHERE FInterID IN (5,20)", L"VoteComplete"}}));
  EXPECT_EQ(States(L"5,20"), (Texts{L"5|1072|1|0|NULL|NULL", L"20|1073|0|0|NULL|NULL"}));
}

TEST_F(CustBomStatusTest, DoesNotDisableWhatAnotherIsBuiltFrom) {
  const Answer answer = Disable(L"7");
  EXPECT_EQ(answer.result, Variant(L"KH12,KH12"));
  EXPECT_EQ(answer.votes, (Texts{L"VoteAbort", L"VoteComplete", L"VoteAbort"}));
  EXPECT_EQ(States(L"7"), Texts{L"7|1073|0|0|NULL|NULL"});
}

TEST_F(CustBomStatusTest, DoesNotDisableWhatADocumentUses) {
  Order(20);
  const Answer answer = Disable(L"20");
  EXPECT_EQ(answer.result, Variant(L"[Associated:]该BOM在 销售订单 中已经被引用。\r\n"));
  EXPECT_EQ(answer.votes.back(), L"VoteAbort");
  EXPECT_EQ(States(L"20"), Texts{L"20|1073|0|0|NULL|NULL"});
}

TEST_F(CustBomStatusTest, DisablingSeveralFailsInTheCheckOfTheDocuments) {
  const Answer answer = Disable(L"15,20");
  EXPECT_EQ(answer.result, Variant(L"FAIL"));
  EXPECT_EQ(answer.votes, (Texts{L"VoteAbort", L"VoteComplete", L"VoteAbort", L"VoteAbort"}));
  EXPECT_EQ(States(L"15,20"), (Texts{L"15|1072|1|0|NULL|NULL", L"20|1073|0|0|NULL|NULL"}));
}

TEST_F(CustBomStatusTest, AnEmptyListCannotBeDisabled) {
  EXPECT_EQ(Disable(L"").result, Variant(L"FAIL"));
  const Answer enable = Disable(L"", false);
  EXPECT_EQ(enable.result, Variant(L"FAIL"));
  EXPECT_EQ(enable.events, Concat({{L"VoteAbort"}, SetUpCalls(), {L"VoteAbort"}}));
}

// ---- failure paths

class CustBomAuditFailure : public CustBomStatusTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(CustBomAuditFailure, LeavesNothingBehindUnderTheHost) {
  const Texts before = States(L"20");
  const Fault fault(GetParam().kind, GetParam().nth);
  const Answer answer = Audit(L"20", true);
  EXPECT_EQ(answer.result, Variant(false));
  EXPECT_EQ(answer.message, L"before");
  EXPECT_EQ(answer.votes.back(), L"VoteAbort");
  EXPECT_EQ(States(L"20"), before);
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CustBomAuditFailure,
                         testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                         OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetCallerInfo", 1},
                                         OutsideCall{L"GetConnection", 1}, OutsideCall{L"GetDataContext", 2},
                                         OutsideCall{L"Open", 1}, OutsideCall{L"VoteComplete", 1},
                                         OutsideCall{L"CreateServerObject", 1},
                                         OutsideCall{L"GetCallerInfo", 3}, OutsideCall{L"Open", 2},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"VoteComplete", 3}));

class CustBomDisableFailure : public CustBomStatusTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(CustBomDisableFailure, LeavesNothingBehindUnderTheHost) {
  const Texts before = States(L"20");
  const Fault fault(GetParam().kind, GetParam().nth);
  const Answer answer = Disable(L"20");
  EXPECT_EQ(answer.result, Variant(L"FAIL"));
  EXPECT_EQ(answer.votes.back(), L"VoteAbort");
  EXPECT_EQ(States(L"20"), before);
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CustBomDisableFailure,
                         testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                         OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"GetConnection", 2},
                                         OutsideCall{L"VoteComplete", 1}, OutsideCall{L"Open", 1},
                                         OutsideCall{L"VoteComplete", 3}, OutsideCall{L"Execute", 2},
                                         OutsideCall{L"VoteComplete", 4}));

} // namespace
} // namespace mbom::test
