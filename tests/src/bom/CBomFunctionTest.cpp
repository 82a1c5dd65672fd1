// CBomFunction: statements as they go over the wire, votes, the data afterwards, results and messages.
#include <gtest/gtest.h>

#include <algorithm>

#include "com/ValueText.h"
#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kBindsNothing[] = L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db";

class CBomFunctionTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 60)");
    database_.Execute(
        L"INSERT INTO ICBillNo (FBillID, FBillName, FCurNo) VALUES (50, 'BOM', 5), (53, 'x', 1)");
    // 51 follows the routing 1, 52 a routing that does not exist, 53 none, but its line has an operation.
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FUseStatus, FStatus, FParentID, FRoutingID, "
        L"FVersion, "
        L"FCheckID, FCheckDate, FOperatorID, FEnterTime, FCheckerID, FAudDate, FFee, FBeenChecked) VALUES "
        L"(51, 'P5', 501, 1072, 1, 3, 1, 'v1', 5, '2026-01-01', 5, '2026-01-01', 6, '2026-01-02', 4.5, 1), "
        L"(52, 'P6', 502, 1072, 0, 3, 9, '', 5, '2026-01-01', 5, '2026-01-01', NULL, NULL, 0, 0), "
        L"(53, 'P9', 503, 1072, 0, 3, 0, '', 5, '2026-01-01', 5, '2026-01-01', NULL, NULL, 0, 0)");
    // Operations 71 (of the routing) and 72 (not), or none.
    database_.Execute(L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FAuxQty, FQty, FOperID, "
                      L"FBeginDay, FUnitID) VALUES "
                      L"(51, 1, 502, 2, 2, 71, '2026-02-01', 8), (51, 3, 503, 1, 1, 72, '1900-01-01', 8), "
                      L"(51, 4, 504, 1, 1, 0, '1900-01-01', 8), (52, 1, 503, 1, 1, 72, '1900-01-01', 8), "
                      L"(53, 1, 504, 1, 1, 71, '1900-01-01', 8), (53, 2, 502, 1, 1, 0, '1900-01-01', 8)");
    database_.Execute(L"INSERT INTO t_ICItem (FItemID, FNumber, FName) VALUES (501, 'I1', 'Bike'), "
                      L"(502, 'I2', 'Wheel'), (503, 'I3', 'Hub'), (504, 'I4', 'Axle')");
    database_.Execute(
        L"INSERT INTO T_routing (FInterID, FBillNo, FRoutingName) VALUES (1, 'R1', 'Assembly')");
    database_.Execute(
        L"INSERT INTO T_Routingoper (FInterID, FEntryID, FOperSN, FOperID) VALUES (1, 1, 10, 71)");
    database_.Execute(
        L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FBootID) VALUES (3, 'G3', 'Bikes', 3)");
  }

  std::wstring CurrentSerial() const {
    return database_.Value(L"SELECT FCurNo FROM ICBillNo WHERE FBillID = 50");
  }
  Texts Numbers() const {
    return database_.Rows(L"SELECT FInterID, FBOMNumber, FEnterTime FROM ICBOM ORDER BY FInterID");
  }
  Texts Operations() const {
    return database_.Rows(L"SELECT FInterID, FEntryID, FOperID FROM ICBOMChild ORDER BY FInterID, FEntryID");
  }

  const TestDatabase database_;
  const Object function_ = Hosted(L"CBomFunction");
};

const Texts kNumbers{L"51|P5|2026-01-01", L"52|P6|2026-01-01", L"53|P9|2026-01-01"};

TEST_F(CBomFunctionTest, ReportsItsTransactionMode) {
  EXPECT_EQ(function_.Get(L"TransMode"), Variant(2));
}

// ---- GetMaxNum

TEST_F(CBomFunctionTest, GetMaxNumAsksTheProcedureOnTheConnectionBoundLast) {
  function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"GetMaxNum", L"ICBOM"), Variant(61));
  EXPECT_EQ(function_.Call(L"GetMaxNum", L"ICBOM"), Variant(62));
  EXPECT_EQ(trace.Events(), Texts(2, L"Command\tGetICMaxNum\t@TableName=ICBOM"));
  EXPECT_EQ(database_.Value(L"SELECT FMaxNum FROM ICMaxNum"), L"62");
}

TEST_F(CBomFunctionTest, GetMaxNumRaisesWithoutAConnectionOrANumber) {
  const Trace trace;
  EXPECT_EQ(static_cast<unsigned>(RaisedBy([&] { function_.Call(L"GetMaxNum", L"ICBOM"); }).code),
            0x800A0E7Du);
  function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  database_.Execute(L"DROP PROCEDURE GetICMaxNum");
  EXPECT_TRUE(FAILED(RaisedBy([&] { function_.Call(L"GetMaxNum", L"ICBOM"); }).code));
  database_.Execute(L"CREATE PROCEDURE GetICMaxNum @TableName varchar(50), @FInterID int OUTPUT AS RETURN");
  EXPECT_EQ(RaisedBy([&] { function_.Call(L"GetMaxNum", L"ICBOM"); }).code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteComplete"})); // of the renaming
}

TEST_F(CBomFunctionTest, GetMaxNumHasNoConnectionAfterASetUpThatFailed) {
  function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function_.Call(L"UpdateBomGroupName", kBindsNothing, 3, L"Bikes"), Variant(false));
  EXPECT_EQ(static_cast<unsigned>(RaisedBy([&] { function_.Call(L"GetMaxNum", L"ICBOM"); }).code),
            0x800A0E7Du);
  EXPECT_EQ(database_.Value(L"SELECT FMaxNum FROM ICMaxNum"), L"60");
  function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function_.Call(L"GetMaxNum", L"ICBOM"), Variant(61));
}

TEST_F(CBomFunctionTest, GetMaxNumBeginsTheCounterOfATableThatHasNone) {
  function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function_.Call(L"GetMaxNum", L"PPOrder"), Variant(1));
  EXPECT_EQ(function_.Call(L"GetMaxNum", L"PPOrder"), Variant(2));
  EXPECT_EQ(database_.Rows(L"SELECT FTableName, FMaxNum FROM ICMaxNum ORDER BY FTableName"),
            (Texts{L"ICBOM|60", L"PPOrder|2"}));
}

TEST_F(CBomFunctionTest, GetMaxNumFollowsTheDescriptorOfTheCallBefore) {
  const TestDatabase other;
  other.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 900)");
  const Object function = Unhosted(L"CBomFunction");
  function.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function.Call(L"GetMaxNum", L"ICBOM"), Variant(61));
  function.Call(L"UpdateBomGroupName", other.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function.Call(L"GetMaxNum", L"ICBOM"), Variant(901));
  function.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Bikes");
  EXPECT_EQ(function.Call(L"GetMaxNum", L"ICBOM"), Variant(62));
}

// ---- GetBomCodeNum

TEST_F(CBomFunctionTest, GetBomCodeNumPassesOverUsedNumbersAndCountsByOne) {
  Variant prefix(L"P");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", database_.Dsn(), Variant::Reference(prefix)), Variant(7));
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(database_.Dsn(),
                 {L"Execute\tselect FPreLetter,FSufLetter,FCurNo,FFormat from icbillno where fbillid=50",
                  L"Execute\tselect * from icbom where fbomnumber='P5'",
                  L"Execute\tselect * from icbom where fbomnumber='P6'",
                  L"Execute\tselect * from icbom where fbomnumber='P7'",
                  L"Execute\tupdate icbillno set fcurno=fcurno+1 where fbillid=50", L"VoteComplete"}));
  EXPECT_EQ(prefix, Variant(L"P"));
  EXPECT_EQ(CurrentSerial(), L"6");
  Variant none(L"");
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", database_.Dsn(), Variant::Reference(none)), Variant(6));
}

TEST_F(CBomFunctionTest, GetBomCodeNumFailsWithoutARuleOrAConnection) {
  Variant prefix(L"P");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", kBindsNothing, Variant::Reference(prefix)), Variant(-1));
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
  EXPECT_EQ(trace.Details(L"Execute"), Texts{});
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", database_.Dsn(), L"quote's"), Variant(-1));
  database_.Execute(L"DELETE FROM ICBillNo WHERE FBillID = 50");
  trace.Clear();
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", database_.Dsn(), Variant::Reference(prefix)), Variant(-1));
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
  EXPECT_EQ(trace.Details(L"Execute").size(), 1u);
  EXPECT_EQ(prefix, Variant(L"P"));
}

TEST_F(CBomFunctionTest, GetBomCodeNumFailsWhenTheSerialsAreUsedUp) {
  database_.Execute(L"UPDATE ICBillNo SET FCurNo = 2147483647 WHERE FBillID = 50");
  database_.Execute(L"UPDATE ICBOM SET FBOMNumber = '2147483647' WHERE FInterID = 51");
  EXPECT_EQ(function_.Call(L"GetBomCodeNum", database_.Dsn(), L""), Variant(-1));
  EXPECT_EQ(CurrentSerial(), L"2147483647");
}

// ---- GetBomCodeNumEx

TEST_F(CBomFunctionTest, GetBomCodeNumExTakesTheNextNumberOfTheRule) {
  database_.Execute(L"UPDATE ICBillNo SET FPreLetter = 'BOM', FFormat = '000000', FSufLetter = '/A' "
                    L"WHERE FBillID = 50");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"GetBomCodeNumEx", database_.Dsn(), 501), Variant(L"BOM000006/A"));
  EXPECT_EQ(function_.Call(L"GetBomCodeNumEx", database_.Dsn()), Variant(L"BOM000007/A"));
  EXPECT_EQ(trace.Events(),
            (Texts{L"CreateServerObject\tQorvaneMBillCodeRule.clsBillCodeRule", L"VoteComplete",
                   L"CreateServerObject\tQorvaneMBillCodeRule.clsBillCodeRule", L"VoteComplete"}));
  EXPECT_EQ(CurrentSerial(), L"7");
}

TEST_F(CBomFunctionTest, GetBomCodeNumExGivesNoNumberWithoutARule) {
  database_.Execute(L"DELETE FROM ICBillNo WHERE FBillID = 50");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"GetBomCodeNumEx", database_.Dsn(), 501), Variant(L""));
  EXPECT_EQ(function_.Call(L"GetBomCodeNumEx", L"no descriptor", 501), Variant(L""));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
}

// ---- UpdateBomNumber

TEST_F(CBomFunctionTest, UpdateBomNumberTrimsAndWrites) {
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomNumber", database_.Dsn(), 52, L"  P7 ", Variant::Reference(info)),
            Variant(1));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(),
                       {L"Execute\tselect * from icbom where  FBOMNumber='P7'",
                        L"Execute\tupdate icbom set FEnterTime=Convert(Varchar(10),Getdate(),120), "
                        L"FBOMNumber='P7' where FInterID=52",
                        L"VoteComplete"}));
  EXPECT_EQ(info, Variant(L"as it came"));
  EXPECT_EQ(Numbers()[1], L"52|P7|2026-03-05");
}

TEST_F(CBomFunctionTest, UpdateBomNumberWarnsOfADuplicateButWritesIt) {
  const std::pair<const wchar_t*, const wchar_t*> languages[] = {
      {L"Language=chs", L"已经有此BOM编码，请重新输入"},
      {L"Language=cht", L"已經有此BOM編碼，請重新輸入"},
      {L"Language=en", L"This BOM number exists already. Please enter another one"},
  };
  for (const auto& [language, text] : languages) {
    Variant info(L"");
    EXPECT_EQ(
        function_.Call(L"UpdateBomNumber", database_.Dsn(language), 52, L" P5", Variant::Reference(info)),
        Variant(1));
    EXPECT_EQ(info, Variant(text));
  }
  EXPECT_EQ(Numbers()[1], L"52|P5|2026-03-05");
}

TEST_F(CBomFunctionTest, UpdateBomNumberKeepsTheTextOfItsFailureToItself) {
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomNumber", kBindsNothing, 52, L"P7", Variant::Reference(info)),
            Variant(-1));
  EXPECT_EQ(trace.Details(L"LoadString"), Texts{L"更新失败，请重新输入"});
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
  EXPECT_EQ(function_.Call(L"UpdateBomNumber", database_.Dsn(), 52, L"P'7", Variant::Reference(info)),
            Variant(0));
  EXPECT_EQ(info, Variant(L"as it came"));
  EXPECT_EQ(Numbers(), kNumbers);
}

TEST_F(CBomFunctionTest, UpdateBomNumberTakesBlanksForNoNumber) {
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomNumber", database_.Dsn(), 52, L"   ", Variant::Reference(info)),
            Variant(1));
  EXPECT_EQ(trace.Details(L"Execute"),
            (Texts{L"select * from icbom where  FBOMNumber=''",
                   L"update icbom set FEnterTime=Convert(Varchar(10),Getdate(),120), FBOMNumber='' where "
                   L"FInterID=52"}));
  EXPECT_EQ(info, Variant(L"as it came"));
  EXPECT_EQ(Numbers()[1], L"52||2026-03-05");
}

TEST_F(CBomFunctionTest, UpdateBomNumberWarnsOfTheBomsOwnNumberToo) {
  Variant info(L"as it came");
  EXPECT_EQ(
      function_.Call(L"UpdateBomNumber", database_.Dsn(L"Language=chs"), 52, L"P6", Variant::Reference(info)),
      Variant(1));
  EXPECT_EQ(info, Variant(L"已经有此BOM编码，请重新输入"));
  EXPECT_EQ(Numbers()[1], L"52|P6|2026-03-05"); // written all the same
}

TEST_F(CBomFunctionTest, UpdateBomNumberKeepsItsWarningWhenTheUpdateFails) {
  Variant info(L"as it came");
  const Trace trace;
  const Fault fault(L"Execute", 2);
  const Variant result =
      function_.Call(L"UpdateBomNumber", database_.Dsn(L"Language=chs"), 52, L"P5", Variant::Reference(info));
  // Neither done nor, as the connection was bound, -1.
  EXPECT_NE(result, Variant(1));
  EXPECT_NE(result, Variant(-1));
  EXPECT_EQ(info, Variant(L"已经有此BOM编码，请重新输入"));
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(Numbers(), kNumbers);
}

// ---- CopyBom

Object Copy(int32_t id, const wchar_t* number) {
  return MakeDictionary({{L"FInterID", id},
                         {L"FBOMNumber", number},
                         {L"FParentID", 4},
                         {L"FCheckID", 16},
                         {L"FOperatorID", 17}});
}

TEST_F(CBomFunctionTest, CopyBomCopiesEveryColumnOfHeaderAndLines) {
  database_.Execute(L"ALTER TABLE ICBOM ADD FFactory varchar(20) NULL");
  database_.Execute(L"ALTER TABLE ICBOMChild ADD FFactoryNote varchar(20) NULL");
  database_.Execute(L"UPDATE ICBOM SET FFactory = 'north'");
  database_.Execute(L"UPDATE ICBOMChild SET FFactoryNote = 'n'");
  const Trace trace;
  EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), Copy(51, L"C51")), Variant(61));
  const std::wstring header =
      L"FBrNo,FInterID,FBOMNumber ,FUseStatus ,FVersion,FParentID,FItemID,FQty,FYield,FCheckID,FCheckDate,"
      L"FOperatorID,FEnterTime,FStatus,FCancellation, FTranType,FRoutingID,FBomType,FCustID,FCustItemID,"
      L"FAccessories,FNote,FCheckerID,FAudDate";
  const std::wstring headerExtra =
      L",FUnitID,FAuxQty,FEcnInterID,FBeenChecked,FAuxPropID,FForbid,FFee,FGMPExpectQty,FFactory";
  const std::wstring lines =
      L"FBrNo,FEntryID,FInterID,FItemID,FAuxQty,FQty,FScrap,FOperID,FMachinePos,FNote,"
      L"FMaterielType, FMarshalType,FPercent,FOffSetDay,FBackFlush,FStockID,FSPID,FSupply";
  const std::wstring linesExtra =
      L",FOperSN,FBeginDay,FEndDay,FUnitID,FAuxPropID,FGMPUnitID,FGMPAuxQty,FFactoryNote";
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(
          database_.Dsn(),
          {L"Command\tGetICMaxNum\t@TableName=ICBOM",
           L"Execute\tselect " + header + L" from icbom where finterid=51",
           L"Execute\tselect * from icbom where finterid=51",
           L"Execute\tselect top 1 " + lines + L" from icbomchild where finterid=51",
           L"Execute\tselect * from icbomchild where finterid=51",
           L"Execute\tinsert into icbom(" + header + headerExtra +
               L")\r\n select FBrNo,61,'C51' ,1073 ,FVersion,4,FItemID,FQty,FYield,16,"
               L"Convert(Varchar(10),Getdate(),120) AS FCheckDate,17,Convert(Varchar(10),Getdate(),120) "
               L"FEnterTime,0,FCancellation,  FTranType,FRoutingID,FBomType,FCustID,FCustItemID,FAccessories,"
               L"FNote,0 ,null" +
               headerExtra + L" from icbom where finterid=51\r\ninsert into icbomchild (" + lines +
               linesExtra +
               L")\r\n select FBrNo,FEntryID,61,FItemID,FAuxQty,FQty,FScrap,FOperID,FMachinePos,FNote,"
               L"FMaterielType, FMarshalType,FPercent,FOffSetDay,FBackFlush,FStockID,FSPID,FSupply " +
               linesExtra + L" from icbomchild where finterid=51",
           L"VoteComplete"}));
  EXPECT_EQ(
      database_.Value(L"SELECT FBOMNumber, FItemID, FUseStatus, FStatus, FParentID, FRoutingID, FVersion, "
                      L"FCheckID, FCheckDate, FOperatorID, FEnterTime, FCheckerID, FAudDate, FFee, "
                      L"FBeenChecked, FFactory FROM ICBOM WHERE FInterID = 61"),
      L"C51|501|1073|0|4|1|v1|16|2026-03-05|17|2026-03-05|0|NULL|4.5|1|north");
  EXPECT_EQ(database_.Rows(L"SELECT FEntryID, FItemID, FQty, FOperID, FBeginDay, FUnitID, FFactoryNote FROM "
                           L"ICBOMChild WHERE FInterID = 61 ORDER BY FEntryID"),
            (Texts{L"1|502|2|71|2026-02-01|8|n", L"3|503|1|72|1900-01-01|8|n", L"4|504|1|0|1900-01-01|8|n"}));
}

TEST_F(CBomFunctionTest, CopyBomOfABomWithoutLinesOrOfNoneIsAValidStatement) {
  database_.Execute(L"DELETE FROM ICBOMChild WHERE FInterID = 52");
  EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), Copy(52, L"C52")), Variant(61));
  EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), Copy(4711, L"C0")), Variant(62));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FBOMNumber FROM ICBOM WHERE FInterID > 53"), Texts{L"61|C52"});
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICBOMChild WHERE FInterID > 53"), Texts{});
}

TEST_F(CBomFunctionTest, CopyBomFailsOnWhatMakesNoStatement) {
  const Variant boms[] = {Copy(51, L"it's"), MakeDictionary({{L"FInterID", 51}}), MakeDictionary({}),
                          Object()};
  for (const Variant& bom : boms) {
    const Trace trace;
    EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), bom), Variant(-1));
    EXPECT_EQ(trace.Votes(), kAbortedTwice);
  }
  const Trace trace;
  EXPECT_EQ(function_.Call(L"CopyBom", kBindsNothing, Copy(51, L"C51")), Variant(-1));
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
  EXPECT_EQ(Numbers(), kNumbers);
}

TEST_F(CBomFunctionTest, CopyBomWantsEachOfItsFiveValues) {
  for (const wchar_t* missing : {L"FInterID", L"FBOMNumber", L"FParentID", L"FCheckID", L"FOperatorID"}) {
    SCOPED_TRACE(com::ToUtf8(missing));
    const Object bom = Copy(51, L"C51");
    bom.Call(L"Remove", missing);
    const Trace trace;
    EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), bom), Variant(-1));
    EXPECT_EQ(trace.Votes(), kAbortedTwice);
    EXPECT_EQ(Numbers(), kNumbers);
  }
}

TEST_F(CBomFunctionTest, CopyBomTakesAnEmptyNumber) {
  EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), Copy(51, L"")), Variant(61));
  EXPECT_EQ(database_.Value(L"SELECT FBOMNumber FROM ICBOM WHERE FInterID = 61"), L"");
}

// The batch inserts the header and then the lines: each of the two is made to fail by the data that is there.
TEST_F(CBomFunctionTest, CopyBomFailsWhenEitherOfItsStatementsFails) {
  for (const wchar_t* obstacle :
       {L"CREATE UNIQUE INDEX OneNumber ON ICBOM (FBOMNumber)",
        L"CREATE UNIQUE INDEX OneItem ON ICBOMChild (FItemID, FEntryID, FOperID)"}) {
    SCOPED_TRACE(com::ToUtf8(obstacle));
    const bool header = std::wstring(obstacle).find(L"OneNumber") != std::wstring::npos;
    database_.Execute(obstacle);
    const Trace trace;
    // The number of BOM 52 is taken; the lines of BOM 51 are there already.
    EXPECT_EQ(function_.Call(L"CopyBom", database_.Dsn(), Copy(51, header ? L"P6" : L"C51")), Variant(-1));
    EXPECT_EQ(trace.Votes(), kAbortedTwice);
    EXPECT_EQ(Numbers(), kNumbers);
    EXPECT_EQ(database_.Value(L"SELECT COUNT(*) FROM ICBOMChild"), L"6");
    database_.Execute(header ? L"DROP INDEX OneNumber ON ICBOM" : L"DROP INDEX OneItem ON ICBOMChild");
  }
}

// ---- GetRoutingData

Texts RowsOf(const Object& recordset) {
  const Object fields = recordset.Get(L"Fields").AsObject();
  const int32_t count = fields.Get(L"Count").AsLong();
  Texts rows;
  for (; !recordset.Get(L"EOF").AsBool(); recordset.Call(L"MoveNext")) {
    std::wstring row;
    for (int32_t i = 0; i < count; ++i)
      row += (i > 0 ? L"|" : L"") + com::ToText(fields.Get(L"Item", i).AsObject().Get(L"Value"));
    rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::wstring RoutingQuery(const wchar_t* noRouting, const wchar_t* noOperation, const wchar_t* noLink,
                          const std::wstring& filter) {
  return L"Execute\tselect t1.finterid ,t1.FBomNumber,b.FItemID,b.FName,'' FRoutingID,0 FBomType , '" +
         std::wstring(noRouting) +
         L"' FErrInfo from icbom t1,t_icitem b  where t1.fitemid=b.fitemid and  t1.FRoutingID<>0  and "
         L"t1.FRoutingID not in (select FinterID from T_routing) " +
         filter +
         L"\r\n union  all \r\nselect t1.finterid,t1.FBomNumber,e.FItemID,e.FName,isnull(a1.FRoutingName,'') "
         L"FRoutingID ,1 FBomType  , '" +
         noOperation +
         L"' FErrInfo from icbom t1,icbomchild t2,T_routing a1,t_icitem b ,t_icitem e Where t1.FRoutingID = "
         L"a1.FInterID And t1.FInterID = t2.FInterID And t1.FItemID = b.FItemID and (t2.FOperID not in "
         L"(select "
         L"distinct FOperID from T_Routingoper where finterid=a1.finterid) )  and t2.fitemid=e.fitemid and "
         L"t2.FOperID<>0 " +
         filter +
         L"\r\n union  all \r\nselect t1.finterid,t1.FBomNumber,e.FItemID,e.FName,'' FRoutingID ,1 FBomType  "
         L", '" +
         noLink +
         L"' FErrInfo from icbom t1,icbomchild t2,t_icitem b ,t_icitem e Where t1.FRoutingID =0 And "
         L"t1.FInterID = "
         L"t2.FInterID And t1.FItemID = b.FItemID and  t2.fitemid=e.fitemid and t2.FOperID<>0  " +
         filter;
}

TEST_F(CBomFunctionTest, GetRoutingDataFindsBrokenLinksOfAllBoms) {
  const std::wstring dsn = database_.Dsn(L"Language=chs");
  Variant info(L"as it came");
  const Trace trace;
  const Object findings =
      function_.Call(L"GetRoutingData", dsn, false, -1, Variant::Reference(info)).AsObject();
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, dsn,
                        {L"LoadString\t工艺路线不存在", L"LoadString\t子项物料工序在指定工艺路线中不存在",
                         L"LoadString\t子项物料工序在父项无对应的工艺路线",
                         RoutingQuery(L"工艺路线不存在", L"子项物料工序在指定工艺路线中不存在",
                                      L"子项物料工序在父项无对应的工艺路线", L""),
                         L"VoteComplete"}));
  EXPECT_EQ(info, Variant(L""));
  EXPECT_EQ(RowsOf(findings), (Texts{L"51|P5|503|Hub|Assembly|1|子项物料工序在指定工艺路线中不存在",
                                     L"52|P6|502|Wheel||0|工艺路线不存在",
                                     L"53|P9|504|Axle||1|子项物料工序在父项无对应的工艺路线"}));
}

TEST_F(CBomFunctionTest, GetRoutingDataFindsBrokenLinksOfOneBom) {
  const Trace trace;
  Variant info(L"");
  const Object findings =
      function_.Call(L"GetRoutingData", database_.Dsn(L"Language=en"), true, 53, Variant::Reference(info))
          .AsObject();
  EXPECT_EQ(RowsOf(findings),
            Texts{L"53|P9|504|Axle||1|The component has an operation, but its parent has no routing"});
  EXPECT_EQ(
      L"Execute\t" + trace.Details(L"Execute")[0],
      RoutingQuery(L"The routing does not exist", L"The routing does not have the operation of the component",
                   L"The component has an operation, but its parent has no routing", L" and t1.finterid=53"));
}

TEST_F(CBomFunctionTest, GetRoutingDataSaysThatNothingIsBound) {
  const std::pair<const wchar_t*, const wchar_t*> languages[] = {
      {L";Language=chs", L"检查工艺路线过程中计算出错"},
      {L";Language=cht", L"檢查工藝路線過程中計算出錯"},
      {L";Language=en", L"An error occurred while checking the routings"},
  };
  for (const auto& [language, text] : languages) {
    Variant info(L"");
    const Trace trace;
    EXPECT_EQ(function_.Call(L"GetRoutingData", std::wstring(kBindsNothing) + language, false, -1,
                             Variant::Reference(info)),
              Variant(Object()));
    EXPECT_EQ(info, Variant(text));
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
}

// ---- UpdateBomRouting

Object Finding(int32_t type, int32_t bom, int32_t item) {
  return MakeDictionary({{L"FBomType", type}, {L"FInterID", bom}, {L"FItemID", item}, {L"GetUserID", 17}});
}

TEST_F(CBomFunctionTest, UpdateBomRoutingRepairsLines) {
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(),
                           MakeVector({Finding(1, 51, 503), Finding(1, 53, 504)})),
            Variant(true));
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, database_.Dsn(),
                  {L"Execute\tupdate icbom set FOperatorID=17, FEnterTime=Convert(Varchar(10),Getdate(),120) "
                   L"where finterid=51\r\nupdate icbomchild set FOperID=0 where finterid=51 And FItemID =503",
                   L"Execute\tupdate icbom set FOperatorID=17, FEnterTime=Convert(Varchar(10),Getdate(),120) "
                   L"where finterid=53\r\nupdate icbomchild set FOperID=0 where finterid=53 And FItemID =504",
                   L"VoteComplete"}));
  EXPECT_EQ(Operations(), (Texts{L"51|1|71", L"51|3|0", L"51|4|0", L"52|1|72", L"53|1|0", L"53|2|0"}));
  EXPECT_EQ(
      database_.Rows(L"SELECT FInterID, FRoutingID, FOperatorID, FEnterTime FROM ICBOM ORDER BY FInterID"),
      (Texts{L"51|1|17|2026-03-05", L"52|9|5|2026-01-01", L"53|0|17|2026-03-05"}));
}

// The batch updates the header and then the lines: each of the two is made to fail by the data that is there.
TEST_F(CBomFunctionTest, UpdateBomRoutingFailsWhenEitherOfItsStatementsFails) {
  const Texts operations = Operations();
  for (const int32_t bomType : {0, 1}) {
    for (const bool header : {true, false}) {
      SCOPED_TRACE(testing::Message() << "type " << bomType << (header ? " header" : " lines"));
      // A second header with the user 7, or a second line of the BOM without an operation.
      database_.Execute(header ? L"CREATE UNIQUE INDEX Taken ON ICBOM (FOperatorID, FItemID)"
                               : L"CREATE UNIQUE INDEX Taken ON ICBOMChild (FInterID, FOperID)");
      database_.Execute(L"UPDATE ICBOM SET FOperatorID = 7, FItemID = 501 WHERE FInterID = 53");
      const Object finding =
          MakeDictionary({{L"FBomType", bomType}, {L"FInterID", 51}, {L"FItemID", 503}, {L"GetUserID", 7}});
      const Trace trace;
      EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(), MakeVector({finding})), Variant(false));
      EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
      EXPECT_EQ(Operations(), operations);
      EXPECT_EQ(database_.Value(L"SELECT FOperatorID FROM ICBOM WHERE FInterID = 51"), L"5");
      database_.Execute(header ? L"DROP INDEX Taken ON ICBOM" : L"DROP INDEX Taken ON ICBOMChild");
    }
  }
}

TEST_F(CBomFunctionTest, UpdateBomRoutingEndsWithTheFirstHeader) {
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(),
                           MakeVector({Finding(1, 51, 503), Finding(0, 52, 502), Finding(1, 53, 504)})),
            Variant(true));
  EXPECT_EQ(
      trace.Details(L"Execute")[1],
      L"update icbom set froutingid=0 ,FOperatorID=17 ,FEnterTime=Convert(Varchar(10),Getdate(),120) where "
      L"finterid=52\r\nupdate icbomchild set FOperID=0 where finterid=52");
  EXPECT_EQ(trace.Votes(), Texts{});
  EXPECT_EQ(Operations(), (Texts{L"51|1|71", L"51|3|0", L"51|4|0", L"52|1|0", L"53|1|71", L"53|2|0"}));
  EXPECT_EQ(database_.Value(L"SELECT FRoutingID, FOperatorID FROM ICBOM WHERE FInterID = 52"), L"0|17");
}

TEST_F(CBomFunctionTest, UpdateBomRoutingOfNothingSucceedsAndOfNoVectorFails) {
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(), MakeVector({})), Variant(true));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
  trace.Clear();
  EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(), Object()), Variant(false));
  EXPECT_EQ(function_.Call(L"UpdateBomRouting", kBindsNothing, MakeVector({})), Variant(false));
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
  EXPECT_EQ(trace.Details(L"LoadString"), Texts(2, L"更新工艺路线过程中计算出错"));
  EXPECT_EQ(trace.Details(L"Execute"), Texts{});
}

TEST_F(CBomFunctionTest, UpdateBomRoutingKeepsEarlierItemsWithoutAHostWhenALaterOneFails) {
  const Object items = MakeVector({Finding(1, 51, 503), Finding(1, 53, 504), Finding(1, 52, 503)});
  {
    const Trace trace;
    const Fault fault(L"Execute", 2);
    EXPECT_EQ(Unhosted(L"CBomFunction").Call(L"UpdateBomRouting", database_.Dsn(), items), Variant(false));
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  }
  // The first was repaired, the second failed, the third was not begun.
  EXPECT_EQ(Operations(), (Texts{L"51|1|71", L"51|3|0", L"51|4|0", L"52|1|72", L"53|1|71", L"53|2|0"}));
}

TEST_F(CBomFunctionTest, UpdateBomRoutingTakesForAHeaderWhatEqualsZero) {
  const auto isHeader = [this](const Variant& type) {
    database_.Execute(L"UPDATE ICBOM SET FRoutingID = 9 WHERE FInterID = 52");
    const Object item = Finding(0, 52, 503);
    if (type.IsMissing())
      item.Call(L"Remove", L"FBomType");
    else
      item.Put(L"Value", L"FBomType", type);
    EXPECT_EQ(function_.Call(L"UpdateBomRouting", database_.Dsn(), MakeVector({item})), Variant(true));
    return database_.Value(L"SELECT FRoutingID FROM ICBOM WHERE FInterID = 52") == L"0";
  };
  EXPECT_TRUE(isHeader(Variant(0)));
  EXPECT_TRUE(isHeader(Variant(L"0")));
  EXPECT_TRUE(isHeader(Variant(L" 0.0 ")));
  EXPECT_TRUE(isHeader(Variant::Missing())); // there is no such key: Empty equals 0
  EXPECT_FALSE(isHeader(Variant(L"1")));
  EXPECT_FALSE(isHeader(Variant::Null())); // Null equals nothing
}

// ---- UpdateBomGroup, UpdateBomGroupName

TEST_F(CBomFunctionTest, UpdateBomGroupMovesABom) {
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomGroup", database_.Dsn(), 52, 99, 17), Variant(true));
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(database_.Dsn(),
                 {L"Execute\tupdate icbom set FParentID=99,FEnterTime=Convert(Varchar(10),Getdate(),120),"
                  L"FOperatorID=  17 where Finterid=52",
                  L"VoteComplete"}));
  EXPECT_EQ(database_.Value(L"SELECT FParentID, FEnterTime, FOperatorID FROM ICBOM WHERE FInterID = 52"),
            L"99|2026-03-05|17");
}

TEST_F(CBomFunctionTest, UpdateBomGroupNameTrims) {
  const Trace trace;
  EXPECT_EQ(function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"  City bikes "), Variant(true));
  EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(),
                                       {L"Execute\tupdate icbomgroup set FName='City bikes' where FInterID=3",
                                        L"VoteComplete"}));
  EXPECT_EQ(database_.Value(L"SELECT FName FROM ICBOMGroup"), L"City bikes");
  trace.Clear();
  EXPECT_EQ(function_.Call(L"UpdateBomGroupName", database_.Dsn(), 3, L"Child's"), Variant(false));
  EXPECT_EQ(trace.Votes(), kAbortedTwice);
}

// ---- failure paths

class CBomFunctionFailure : public CBomFunctionTest, public testing::WithParamInterface<FailingCall> {
 protected:
  // The result of a call that would succeed.
  Variant Call(const std::wstring& method) const {
    const std::wstring dsn = database_.Dsn();
    if (method == L"GetBomCodeNum") return function_.Call(L"GetBomCodeNum", dsn, L"N");
    if (method == L"UpdateBomNumber") return function_.Call(L"UpdateBomNumber", dsn, 52, L"P7", L"");
    if (method == L"CopyBom") return function_.Call(L"CopyBom", dsn, Copy(51, L"C51"));
    if (method == L"GetRoutingData") return function_.Call(L"GetRoutingData", dsn, false, -1, L"");
    if (method == L"UpdateBomRouting")
      return function_.Call(L"UpdateBomRouting", dsn, MakeVector({Finding(1, 51, 503), Finding(1, 53, 504)}));
    if (method == L"UpdateBomGroup") return function_.Call(L"UpdateBomGroup", dsn, 52, 4, 17);
    return function_.Call(L"UpdateBomGroupName", dsn, 3, L"new");
  }
};

TEST_P(CBomFunctionFailure, GivesTheFailureValueAndLeavesNothingBehindUnderTheHost) {
  const std::wstring method = GetParam().method;
  const std::wstring kind = GetParam().call.kind;
  Variant expected(false);
  if (method == L"GetBomCodeNum" || method == L"CopyBom") expected = -1;
  // Its -1 is for a connection that cannot be bound, and for that alone.
  if (method == L"UpdateBomNumber")
    expected = kind == L"Execute" || kind.starts_with(L"Vote") ? Variant(0) : Variant(-1);
  if (method == L"GetRoutingData") expected = Object();
  const Texts operations = Operations();
  const Trace trace;
  {
    const Fault fault(kind, GetParam().call.nth);
    EXPECT_EQ(Call(method), expected);
  }
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(Numbers(), kNumbers);
  EXPECT_EQ(Operations(), operations);
  EXPECT_EQ(CurrentSerial(), L"5");
  EXPECT_EQ(database_.Value(L"SELECT FName FROM ICBOMGroup"), L"Bikes");
  EXPECT_EQ(database_.Value(L"SELECT FParentID FROM ICBOM WHERE FInterID = 52"), L"3");
}

std::vector<FailingCall> EveryFailureOfCBomFunction() {
  struct Method {
    const wchar_t* name;
    int32_t statements;
    bool abortsFirst;
  };
  std::vector<FailingCall> failures;
  for (const Method& method :
       {Method{L"GetBomCodeNum", 3, true}, Method{L"UpdateBomNumber", 2, true}, Method{L"CopyBom", 5, true},
        Method{L"GetRoutingData", 1, false}, Method{L"UpdateBomRouting", 2, false},
        Method{L"UpdateBomGroup", 1, true}, Method{L"UpdateBomGroupName", 1, true}}) {
    for (const wchar_t* kind :
         {L"GetDataContext", L"BindDsn", L"GetCallerInfo", L"GetConnection", L"VoteComplete"})
      failures.push_back({method.name, {kind, 1}});
    for (int32_t nth = 1; nth <= method.statements; ++nth)
      failures.push_back({method.name, {L"Execute", nth}});
    if (method.abortsFirst) failures.push_back({method.name, {L"VoteAbort", 1}});
  }
  failures.push_back({L"CopyBom", {L"Command", 1}});
  return failures;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CBomFunctionFailure,
                         testing::ValuesIn(EveryFailureOfCBomFunction()));

} // namespace
} // namespace mbom::test
