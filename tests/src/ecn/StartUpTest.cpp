// CEcnInfo: start-up and cancellation of a change notice, and the readers for a new one.
#include <gtest/gtest.h>

#include <algorithm>

#include "com/Text.h"
#include "tests/src/ecn/Notices.h"
#include "tests/support/Calls.h"
#include "tests/support/Printing.h"
#include "tests/support/Rows.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

const Texts kFailed{L"VoteAbort", L"VoteAbort"};

// Everything that a start-up may touch.
Texts Everything(const TestDatabase& database) {
  Texts all;
  for (const wchar_t* table : {L"ICBOM", L"ICBOMChild", L"IcEcn", L"IcEcnEntry", L"ICMaxNum"}) {
    Texts rows = database.Rows(std::wstring(L"SELECT * FROM ") + table);
    std::sort(rows.begin(), rows.end());
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

class StartUpTest : public testing::Test, protected Notices {
 protected:
  Variant StartUp(const Object& ecn) const { return ecn.Call(L"StarUpEcn", database.Dsn(), 10, 77, 16395); }
  Texts Lines(int32_t bom) const {
    return database.Rows(
        L"SELECT FBrNo, FEntryID, FItemID, FAuxQty, FQty, FScrap, FOperSN, FOperID, FMachinePos, FNote, "
        L"FMaterielType, FMarshalType, FPercent, FBeginDay, FEndDay, FOffSetDay, FBackFlush, FStockID, "
        L"FSPID, FSupply, FUnitID FROM ICBOMChild WHERE FInterID = " +
        std::to_wstring(bom) + L" ORDER BY FEntryID");
  }
};

// ---- the batch

// A line of the batch is a comment, blank, or a part of a statement.
bool IsComment(const std::wstring& line) {
  return line.starts_with(L"--");
}

Texts LinesOf(const std::wstring& batch) {
  Texts lines;
  for (size_t start = 0;;) {
    const size_t end = batch.find(L"\r\n", start);
    lines.push_back(batch.substr(start, end == std::wstring::npos ? end : end - start));
    if (end == std::wstring::npos) return lines;
    start = end + 2;
  }
}

// The words of the statements without comments: what the server makes of the text, whatever its lines.
std::wstring Words(const std::wstring& batch) {
  std::wstring words;
  for (const std::wstring& line : LinesOf(batch)) {
    for (const wchar_t c : line.substr(0, line.find(L"--")) + L" ")
      if (c != L' ' || (!words.empty() && words.back() != L' ')) words += c;
  }
  while (words.ends_with(L' ')) words.pop_back();
  return words;
}

std::wstring LineTable(const std::wstring& name, const std::wstring& entryId) {
  return L"CREATE TABLE " + name + L" ( FBrNo VarChar(10) NOT NULL, FEntryID " + entryId +
         L", FInterID INT DEFAULT 0 NOT NULL, FItemID INT NOT NULL, FAuxQty Decimal(28,10) DEFAULT 0 NOT "
         L"NULL, "
         L"FQty Decimal(28,10) DEFAULT 0 NOT NULL, FScrap Decimal(28,10) NOT NULL, FOperID INT DEFAULT 0 NOT "
         L"NULL, FMachinePos VARCHAR(1000) NULL, FNote VARCHAR(1000) NULL, FMaterielType INT DEFAULT 371 NOT "
         L"NULL, FMarshalType INT DEFAULT 385 NOT NULL, FPercent Decimal(28,10) DEFAULT 100 NOT NULL, "
         L"FOffSetDay "
         L"Decimal(28,10) DEFAULT 0 NOT NULL, FBackFlush INT DEFAULT 1059 NOT NULL, FStockID INT DEFAULT 0 "
         L"NULL, "
         L"FSPID INT DEFAULT 0 NOT NULL, FSupply SMALLINT DEFAULT 0 NOT NULL, FUnitID INT DEFAULT 0 NOT NULL "
         L") ";
}

constexpr wchar_t kColumns[] =
    L"FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, FMarshalType, FPercent, FOffSetDay, "
    L"FBackFlush, FStockID, FSPID, FSupply, FUnitID";

TEST_F(StartUpTest, TheBatchGoesOverTheWireInOnePiece) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(StartUp(ecn), Variant(true));
  const Texts batches = trace.Details(L"Execute");
  ASSERT_EQ(batches.size(), 1u);
  EXPECT_EQ(trace.Events(),
            AroundSetUp({L"VoteAbort"}, database.Dsn(), {L"Execute\t" + batches[0], L"VoteComplete"}));

  const std::wstring all = std::wstring(L"FBrNO, FEntryId, FInterID, FItemID, ") + kColumns;
  const std::wstring unnumbered = std::wstring(L"FBrNO, FItemID, ") + kColumns;
  EXPECT_EQ(
      Words(batches[0]),
      L"Set NoCount On " + LineTable(L"#Temp", L"INT NOT NULL") +
          LineTable(L"#ICBomChild", L"INT NOT NULL IDENTITY(1,1)") + L"insert into #Temp (" + all +
          L") select " + all +
          L" from icbomchild where finterid=10 "
          L"delete from #Temp where FEntryID in ( select FChildID from IcEcnEntry where FInterId = 77 and "
          L"FChangeType in (11022,11023)) "
          L"insert into #Temp (" +
          all +
          L") select t1.FBrNO, t1.FChildID, t2.FBomInterID, t1.FItemID, t1.FAuxQty, t1.FQty, t1.FScrap, "
          L"t1.FOperId, t1.FMachinepos, t1.FNote, t1.FMaterielType, t1.FMarshalType, t1.FPercent, "
          L"t1.FOffSetDay , t1.FBackFlush, t1.FStockID, t1.FSPID, t1.FSupply, t1.FUnitID "
          L"from IcEcn t2 Left Join IcEcnEntry t1 on t2.FInterID=t1.FInterID where t2.FInterid=77 and "
          L"t1.FChangeType <> 11023 "
          L"insert into #ICBomChild (" +
          unnumbered + L") select " + unnumbered +
          L" from #Temp order by FEntryId drop table #Temp "
          L"DECLARE @InterID INT "
          L"SELECT @InterID = Max(FMaxNum) + 1 FROM IcMaxNum WHERE FTableName = 'ICBOM' "
          L"update #ICBomChild set FInterID = @InterID "
          L"UPDATE IcMaxNum Set FMaxNum = @InterId Where FTableName = 'IcBom' "
          L"update t1 set FUseStatus=1073 from icbom t1 left join icbom t2 on t1.fitemid = t2.fitemid where "
          L"t2.finterid=10 "
          L"insert into IcBom (FBrNO, FInterID, FBOMNumber,FStatus, "
          L"FUseStatus,FVersion,FParentID,FItemID,FQty,FYield,FEnterTime,FTranType,FRoutingID,FBomType, "
          L"FCustID,FCustItemID,FAccessories,FNote,FUnitID,FAUXQTY) "
          L"select FBrNO,@InterId,'',1,1072,FVersion,FParentID,FItemID,FQty,FYield,"
          L"Convert(Varchar(10),Getdate(),120),FTranType,FRoutingID,FBomType, "
          L"FCustID , FCustItemID, FAccessories, FNote, FUnitID, FAUXQTY From IcBom Where FInterID = 10 "
          L"update t1 set FStatus = 2, FCBomInterID = @InterId, FStarUperID = 16395, FStarUpDate = "
          L"Convert(Varchar(10),Getdate(),120) from IcEcn t1 where t1.FInterID=77 "
          L"update t1 set t1.FBomNumber=t2.FCBomNumber, t1.FEcnInterId = 77 from ICBom t1, IcEcn t2 where "
          L"t1.FInterID = t2.FCBomInterID and t1.FInterID=@InterID "
          L"update t1 set FCheckID=16395, FCheckDate = Convert(Varchar(10),Getdate(),120), "
          L"FOperatorID=16395,FCheckerID=16395, FAudDate=Convert(Varchar(10),Getdate(),120) from IcBom t1 "
          L"where FInterId = @InterID "
          L"insert into IcBomChild (" +
          all + L") select " + all + L" from #IcBomChild drop table #ICBomChild");
}

TEST_F(StartUpTest, EveryStepBeginsWithAChineseComment) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  StartUp(ecn);
  size_t steps = 0;
  bool stepBegins = true;
  for (const std::wstring& line : LinesOf(trace.Details(L"Execute")[0])) {
    if (stepBegins && !line.empty()) {
      ++steps;
      EXPECT_TRUE(IsComment(line)) << com::ToUtf8(line);
      EXPECT_TRUE(std::any_of(line.begin(), line.end(), [](wchar_t c) { return c >= 0x4E00 && c <= 0x9FFF; }))
          << com::ToUtf8(line);
    }
    stepBegins = line.empty();
  }
  EXPECT_EQ(steps, 12u);
}

// The lines of the batch behind the temporary tables, without its comments. A list of columns that is broken
// behind FPercent is put together: where it is broken is free.
Texts StatementLines(const std::wstring& batch) {
  Texts lines;
  bool tables = true;
  for (const std::wstring& line : LinesOf(batch)) {
    if (IsComment(line)) continue;
    if (tables) {
      tables = !line.empty(); // the tables end with the first empty line
      continue;
    }
    if (!lines.empty() && lines.back().ends_with(L"FMarshalType, FPercent,") && line.starts_with(L"   FOff"))
      lines.back() += line.substr(2);
    else
      lines.push_back(line);
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

TEST_F(StartUpTest, EveryStatementIsExactToTheBlank) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  StartUp(ecn);
  const std::wstring batch = trace.Details(L"Execute").at(0);
  EXPECT_NE(batch.find(L"\r\nSet NoCount On \r\n"), std::wstring::npos);

  const std::wstring tail = L"FItemID, FAuxQty, FQty, FScrap, FOperId, FMachinepos, FNote, FMaterielType, "
                            L"FMarshalType, FPercent, FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, "
                            L"FUnitID";
  const std::wstring all = L"FBrNO, FEntryId, FInterID, " + tail;
  const std::wstring unnumbered = L"FBrNO, " + tail;
  const Texts expected{
      L"insert into #Temp (" + all + L")",
      L"select " + all,
      L"from icbomchild where finterid=10",
      L"",
      L"delete from #Temp where FEntryID in (",
      L"   select FChildID from IcEcnEntry where FInterId = 77 and  FChangeType in (11022,11023))",
      L"",
      L"insert into #Temp (" + all + L")",
      L"select t1.FBrNO, t1.FChildID, t2.FBomInterID, t1.FItemID, t1.FAuxQty, t1.FQty, t1.FScrap, "
      L"t1.FOperId, t1.FMachinepos, t1.FNote, t1.FMaterielType, t1.FMarshalType, t1.FPercent,",
      L"   t1.FOffSetDay , t1.FBackFlush, t1.FStockID, t1.FSPID, t1.FSupply, t1.FUnitID ",
      L"from IcEcn t2 Left Join IcEcnEntry t1 on t2.FInterID=t1.FInterID where t2.FInterid=77 and "
      L"t1.FChangeType <> 11023",
      L"",
      L"insert into #ICBomChild (" + unnumbered + L")",
      L"select " + unnumbered,
      L"from #Temp order by FEntryId",
      L"drop table #Temp ",
      L"",
      L"DECLARE @InterID INT",
      L"SELECT @InterID = Max(FMaxNum) + 1 FROM IcMaxNum WHERE FTableName = 'ICBOM' ",
      L"update #ICBomChild set FInterID = @InterID",
      L"UPDATE IcMaxNum Set FMaxNum = @InterId Where FTableName = 'IcBom' ",
      L"",
      L"update t1 set FUseStatus=1073 from icbom t1 left join icbom t2 on t1.fitemid = t2.fitemid where "
      L"t2.finterid=10",
      L"",
      L"insert into IcBom (FBrNO, FInterID, FBOMNumber,FStatus, "
      L"FUseStatus,FVersion,FParentID,FItemID,FQty,FYield,FEnterTime,FTranType,FRoutingID,FBomType,",
      L"   FCustID,FCustItemID,FAccessories,FNote,FUnitID,FAUXQTY)",
      L"select FBrNO,@InterId,'',1,1072,FVersion,FParentID,FItemID,FQty,FYield,"
      L"Convert(Varchar(10),Getdate(),120),FTranType,FRoutingID,FBomType,",
      L"   FCustID , FCustItemID, FAccessories, FNote, FUnitID, FAUXQTY",
      L"From IcBom Where FInterID = 10",
      L"",
      L"update t1 set FStatus = 2, FCBomInterID = @InterId, FStarUperID = 16395, FStarUpDate = "
      L"Convert(Varchar(10),Getdate(),120) from IcEcn t1 where t1.FInterID=77",
      L"",
      L"update t1 set t1.FBomNumber=t2.FCBomNumber, t1.FEcnInterId = 77 from ICBom t1, IcEcn t2 where "
      L"t1.FInterID = t2.FCBomInterID and t1.FInterID=@InterID",
      L"",
      L"update t1 set FCheckID=16395, FCheckDate = Convert(Varchar(10),Getdate(),120), "
      L"FOperatorID=16395,FCheckerID=16395, FAudDate=Convert(Varchar(10),Getdate(),120)",
      L"from IcBom t1 where FInterId = @InterID",
      L"",
      L"insert into IcBomChild (" + all + L")",
      L"select " + all,
      L"from #IcBomChild",
      L"drop table #ICBomChild",
  };
  EXPECT_EQ(StatementLines(batch), expected);
}

// ---- what it does

TEST_F(StartUpTest, TheNewVersionHasTheChangedLinesNumberedFromOne) {
  EXPECT_EQ(StartUp(Hosted(L"CEcnInfo")), Variant(true));
  // The added line sorts first (0), line 1 stays, line 2 is deleted, line 3 is the notice's. Operation
  // numbers and validity are the table's defaults.
  EXPECT_EQ(Lines(42),
            (Texts{L"E|1|400|4|4|0|0|40|P9|新增|371|385|100|1900-01-01|2100-01-01|0|1059|0|0|0|103",
                   L"B|2|201|1.5|18|2|0|40|P1|第一行|371|385|100|1900-01-01|2100-01-01|3|1059|51|61|1|101",
                   L"E|3|303|33|33|0|0|40|P9|修改|371|385|100|1900-01-01|2100-01-01|0|1059|0|0|0|103"}));
  // The old version stays as it was, but for its use.
  EXPECT_EQ(Lines(10).size(), 3u);
  EXPECT_EQ(database.Rows(L"SELECT FBrNo, FInterID, FBOMNumber, FStatus, FUseStatus, FVersion, FParentID, "
                          L"FItemID, FQty, FYield, FEnterTime, FTranType, FRoutingID, FBomType, FCustID, "
                          L"FCustItemID, FAccessories, FNote, FUnitID, FAuxQty, FEcnInterID FROM ICBOM ORDER "
                          L"BY FInterID"),
            (Texts{L"B|10|B10|1|1073|V1|3|500|2|98|2020-01-01|50|7|0|8|9|1|原版|101|4|NULL",
                   L"B|11|B11|0|1073|V0|3|500|1|100|2020-01-01|50|0|0|0|0|0||101|1|NULL",
                   L"B|12|B12|0|1072|V0|3|600|1|100|2020-01-01|50|0|0|0|0|0||101|1|NULL",
                   L"B|42|NEW10|1|1072|V1|3|500|2|98|2026-03-05|50|7|0|8|9|1|原版|101|4|77"}));
  EXPECT_EQ(database.Rows(L"SELECT FCheckID, FCheckDate, FOperatorID, FCheckerID, FAudDate FROM ICBOM WHERE "
                          L"FInterID = 42"),
            Texts{L"16395|2026-03-05|16395|16395|2026-03-05"});
  EXPECT_EQ(database.Rows(L"SELECT FStatus, FCBomInterID, FStarUperID, FStarUpDate FROM IcEcn"),
            Texts{L"2|42|16395|2026-03-05"});
  EXPECT_EQ(database.Rows(L"SELECT FTableName, FMaxNum FROM ICMaxNum ORDER BY 1"),
            (Texts{L"ICBOM|42", L"IcEcn|77"}));
}

TEST_F(StartUpTest, LinesAreNumberedByTheLineTheyReplaceAndNotByTheNotice) {
  database.Execute(L"DELETE FROM IcEcnEntry");
  database.Execute(L"INSERT INTO IcEcnEntry (FInterID, FEntryID, FChildID, FChangeType, FItemID) VALUES "
                   L"(77, 1, 3, 11022, 303), (77, 2, 1, 11022, 301), (77, 3, 9, 11021, 900)");
  StartUp(Hosted(L"CEcnInfo"));
  EXPECT_EQ(database.Rows(L"SELECT FEntryID, FItemID FROM ICBOMChild WHERE FInterID = 42 ORDER BY 1"),
            (Texts{L"1|301", L"2|202", L"3|303", L"4|900"}));
}

TEST_F(StartUpTest, ANoticeWithoutLinesCopiesTheBom) {
  database.Execute(L"DELETE FROM IcEcnEntry");
  StartUp(Hosted(L"CEcnInfo"));
  EXPECT_EQ(database.Rows(L"SELECT FEntryID, FItemID FROM ICBOMChild WHERE FInterID = 42 ORDER BY 1"),
            (Texts{L"1|201", L"2|202", L"3|203"}));
}

TEST_F(StartUpTest, NothingIsChecked) {
  // Started twice: a second version with the same number.
  const Object ecn = Hosted(L"CEcnInfo");
  StartUp(ecn);
  EXPECT_EQ(StartUp(ecn), Variant(true));
  EXPECT_EQ(database.Rows(L"SELECT FInterID, FUseStatus FROM ICBOM WHERE FBOMNumber = 'NEW10' ORDER BY 1"),
            (Texts{L"42|1073", L"43|1072"}));
  EXPECT_EQ(database.Value(L"SELECT FCBomInterID FROM IcEcn"), L"43");
}

TEST_F(StartUpTest, AnUnknownBomOrNoticeStartsNothingButTakesAnId) {
  const Object ecn = Hosted(L"CEcnInfo");
  EXPECT_EQ(ecn.Call(L"StarUpEcn", database.Dsn(), 4711, 4712, 16395), Variant(true));
  EXPECT_EQ(database.Value(L"SELECT COUNT(*) FROM ICBOM"), L"3");
  EXPECT_EQ(database.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICBOM'"), L"42");
}

// ---- failures

TEST_F(StartUpTest, WithoutACounterItFails) {
  database.Execute(L"DELETE FROM ICMaxNum WHERE FTableName = 'ICBOM'");
  const Texts before = Everything(database);
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(StartUp(ecn), Variant(false)); // no id: Null in a column that may not be
  EXPECT_EQ(trace.Votes(), kFailed);
  EXPECT_EQ(Everything(database), before);
}

// What makes one statement of the batch fail.
class StartUpStatementFailure : public StartUpTest, public testing::WithParamInterface<const wchar_t*> {};

TEST_P(StartUpStatementFailure, LeavesNothingBehindUnderTheHost) {
  database.Execute(GetParam());
  const auto boms = [this] {
    return database.Rows(L"SELECT FInterID, FBOMNumber, FUseStatus, FCheckerID FROM ICBOM ORDER BY 1");
  };
  const Texts before = boms();
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(StartUp(ecn), Variant(false));
  EXPECT_EQ(trace.Votes(), kFailed);
  EXPECT_EQ(boms(), before);
}

INSTANTIATE_TEST_SUITE_P(
    EveryTable, StartUpStatementFailure,
    testing::Values(
        L"DROP TABLE ICBOMChild", L"DROP TABLE IcEcnEntry", L"DROP TABLE IcEcn", L"DROP TABLE ICMaxNum",
        L"UPDATE ICMaxNum SET FMaxNum = 2147483647",
        // The counter cannot be written.
        L"DROP TABLE ICMaxNum CREATE TABLE ICMaxNum (FTableName varchar(80), FMaxNum int CHECK (FMaxNum < "
        L"42)) "
        L"INSERT INTO ICMaxNum VALUES ('ICBOM', 41)",
        // Two BOMs of the item may not be out of use.
        L"UPDATE ICBOM SET FUseStatus = 1070 WHERE FInterID = 11 "
        L"CREATE UNIQUE INDEX u ON ICBOM (FItemID, FUseStatus)",
        // No second header like the old one.
        L"CREATE UNIQUE INDEX u ON ICBOM (FItemID, FVersion)",
        // No second notice that is started.
        L"INSERT INTO IcEcn (FInterID, FStatus) VALUES (78, 2) CREATE UNIQUE INDEX u ON IcEcn (FStatus)",
        // The number is taken.
        L"UPDATE ICBOM SET FBOMNumber = 'NEW10' WHERE FInterID = 12 "
        L"CREATE UNIQUE INDEX u ON ICBOM (FBOMNumber)",
        // The user may audit one BOM only.
        L"UPDATE ICBOM SET FCheckerID = FInterID UPDATE ICBOM SET FCheckerID = 16395 WHERE FInterID = 12 "
        L"CREATE UNIQUE INDEX u ON ICBOM (FCheckerID)",
        // No second line like an old one.
        L"UPDATE ICBOMChild SET FMachinePos = FItemID CREATE UNIQUE INDEX u ON ICBOMChild (FMachinePos)"));

TEST_F(StartUpTest, AFailureBehindAnyStatementLeavesNothingBehindUnderTheHost) {
  std::wstring batch;
  {
    const Trace trace;
    StartUp(Unhosted(L"CEcnInfo"));
    batch = trace.Details(L"Execute")[0];
  }
  const Notices fresh;
  const Texts before = Everything(fresh.database);
  constexpr const wchar_t* kBeginnings[] = {L"CREATE TABLE", L"insert into", L"delete from", L"drop table",
                                            L"DECLARE",      L"SELECT @",    L"update ",     L"UPDATE "};
  int statements = 0;
  std::wstring ran;
  const auto failBehind = [&] {
    const Object ecn = Hosted(L"CEcnInfo");
    const Raised raised = RaisedBy(
        [&] { ecn.Call(L"AnalyseBomNumber", fresh.database.Dsn(), ran + L"select * from NoTable"); });
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E37u) << com::ToUtf8(ran);
    EXPECT_EQ(Everything(fresh.database), before) << com::ToUtf8(ran);
    ++statements;
  };
  for (const std::wstring& line : LinesOf(batch)) {
    if (std::any_of(std::begin(kBeginnings), std::end(kBeginnings),
                    [&line](const wchar_t* beginning) { return line.starts_with(beginning); }))
      failBehind();
    ran += line + L"\r\n";
  }
  failBehind();
  // Behind the setting and each of the 18 statements.
  EXPECT_EQ(statements, 19);
  // The same text does its work where nothing fails.
  Hosted(L"CEcnInfo").Call(L"AnalyseBomNumber", fresh.database.Dsn(), ran);
  EXPECT_EQ(fresh.database.Value(L"SELECT COUNT(*) FROM ICBOMChild WHERE FInterID = 42"), L"3");
}

class StartUpFailure : public StartUpTest,
                       public testing::WithParamInterface<std::tuple<const wchar_t*, OutsideCall>> {};

TEST_P(StartUpFailure, LeavesNothingBehindUnderTheHost) {
  const auto& [method, call] = GetParam();
  const bool start = std::wstring(method) == L"StarUpEcn";
  const Object ecn = Hosted(L"CEcnInfo");
  if (!start) StartUp(ecn);
  const Texts before = Everything(database);
  const Trace trace;
  const Fault fault(call.kind, call.nth);
  EXPECT_EQ(start ? StartUp(ecn) : ecn.Call(L"UnStarUpEcn", database.Dsn(), 77), Variant(false));
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(Everything(database), before);
}

INSTANTIATE_TEST_SUITE_P(
    EveryOutsideCall, StartUpFailure,
    testing::Combine(testing::Values(L"StarUpEcn", L"UnStarUpEcn"),
                     testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                     OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetCallerInfo", 1},
                                     OutsideCall{L"GetConnection", 1}, OutsideCall{L"Execute", 1},
                                     OutsideCall{L"VoteComplete", 1})));

TEST_F(StartUpTest, ADescriptorThatBindsNothingIsAFailure) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const std::wstring dsn = L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db";
  EXPECT_EQ(ecn.Call(L"StarUpEcn", dsn, 10, 77, 1), Variant(false));
  EXPECT_EQ(trace.Votes(), kFailed);
  trace.Clear();
  EXPECT_EQ(ecn.Call(L"UnStarUpEcn", dsn, 77), Variant(false));
  EXPECT_EQ(trace.Votes(), kFailed);
}

// ---- cancellation

TEST_F(StartUpTest, CancellationDeletesTheHeaderAlone) {
  const Object ecn = Hosted(L"CEcnInfo");
  StartUp(ecn);
  const Texts lines = Lines(42);
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"UnStarUpEcn", database.Dsn(), 77), Variant(true));
  EXPECT_EQ(trace.Events(),
            AroundSetUp({L"VoteAbort"}, database.Dsn(),
                        {L"Execute\tdelete from IcBom where FInterId in (select FCBomInterId from IcEcn "
                         L"where FInterId = 77)\r\n"
                         L"\r\n"
                         L"update t1 set FStatus = 1, FCBomInterID = 0, FStarUperID = '', FStarUpDate = NULL "
                         L"from IcEcn t1 where FInterId = 77",
                         L"VoteComplete"}));
  EXPECT_EQ(database.Rows(L"SELECT FInterID, FUseStatus FROM ICBOM ORDER BY 1"),
            (Texts{L"10|1073", L"11|1073", L"12|1072"}));
  EXPECT_EQ(Lines(42), lines);
  // The empty text becomes 0 in a column of numbers.
  EXPECT_EQ(database.Rows(L"SELECT FStatus, FCBomInterID, FStarUperID, FStarUpDate FROM IcEcn"),
            Texts{L"1|0|0|NULL"});
  EXPECT_EQ(database.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICBOM'"), L"42");
}

TEST_F(StartUpTest, CancellationOfANoticeThatIsNotStartedDeletesNothing) {
  EXPECT_EQ(Hosted(L"CEcnInfo").Call(L"UnStarUpEcn", database.Dsn(), 77), Variant(true));
  EXPECT_EQ(Hosted(L"CEcnInfo").Call(L"UnStarUpEcn", database.Dsn(), 4711), Variant(true));
  EXPECT_EQ(database.Value(L"SELECT COUNT(*) FROM ICBOM"), L"3");
}

// The batch deletes the header and then resets the notice: each of the two is made to fail by the data that
// is there.
TEST_F(StartUpTest, ACancellationFailsWhenEitherOfItsStatementsFails) {
  const Object ecn = Hosted(L"CEcnInfo");
  StartUp(ecn);
  const Texts boms = database.Rows(L"SELECT FInterID FROM ICBOM ORDER BY 1");
  const Texts notices = database.Rows(L"SELECT FInterID, FStatus, FCBomInterID FROM IcEcn ORDER BY 1");
  const auto fails = [&] {
    const Trace trace;
    EXPECT_EQ(ecn.Call(L"UnStarUpEcn", database.Dsn(), 77), Variant(false));
    EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
    EXPECT_EQ(database.Rows(L"SELECT FInterID FROM ICBOM ORDER BY 1"), boms);
    EXPECT_EQ(database.Rows(L"SELECT FInterID, FStatus, FCBomInterID FROM IcEcn WHERE FInterID = 77"),
              notices);
  };
  // Another notice without a BOM of its own has the 0 already.
  database.Execute(L"INSERT INTO IcEcn (FInterID, FBillNo, FCBomInterID) VALUES (78, 'E78', 0)");
  database.Execute(L"CREATE UNIQUE INDEX OneBom ON IcEcn (FCBomInterID)");
  fails();
  database.Execute(L"DROP INDEX OneBom ON IcEcn");

  // Something refers to the header.
  database.Execute(L"CREATE UNIQUE INDEX OneId ON ICBOM (FInterID)");
  database.Execute(L"CREATE TABLE Referrer (FInterID int NOT NULL REFERENCES ICBOM (FInterID))");
  database.Execute(L"INSERT INTO Referrer (FInterID) VALUES (42)");
  fails();
}

TEST_F(StartUpTest, ANoticeStartsAgainUnderANewId) {
  const Object ecn = Hosted(L"CEcnInfo");
  StartUp(ecn);
  ecn.Call(L"UnStarUpEcn", database.Dsn(), 77);
  StartUp(ecn);
  EXPECT_EQ(database.Rows(L"SELECT FInterID, FBOMNumber, FUseStatus FROM ICBOM ORDER BY 1"),
            (Texts{L"10|B10|1073", L"11|B11|1073", L"12|B12|1072", L"43|NEW10|1072"}));
  EXPECT_EQ(Lines(43).size(), 3u);
}

// ---- readers

class EcnReaderTest : public StartUpTest {
 protected:
  void SetUp() override {
    database.Execute(
        L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FModel, FErpClsID, FUnitGroupID, "
        L"FQtyDecimal, FPriceDecimal, FUseState, FIsKeyItem, FTrack, FFixLeadTime, FDeleted) VALUES "
        L"(500, '1.500', 'S500', N'自行车', 'M5', 2, 1, 0, 2, 341, 0, 76, 7, 0), "
        L"(201, '2.201', 'S201', N'车架', 'M1', 1, 1, 2, 3, 341, 1, 76, 0, 0), "
        L"(202, '2.202', 'S202', N'前轮', '', 1, 1, 0, 2, 341, 0, 76, 0, 1), "
        L"(203, '2.203', 'S203', N'后轮', '', 1, 1, 0, 2, 999, 0, 76, 0, 0)");
    database.Execute(
        L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName) VALUES "
        L"(101, 101, 1, 'PC', N'件'), (102, 102, 1, 'BX', N'箱')");
    database.Execute(
        L"INSERT INTO t_SubMessage (FInterID, FTypeID, FID, FName) VALUES (2, 210, 'Z', N'自制'), "
        L"(341, 120, 'USE', N'使用'), (371, 150, 'PT', N'普通件'), (385, 160, 'TY', N'通用'), "
        L"(40, 61, 'OP1', N'装配'), (1059, 170, 'N', N'否')");
    database.Execute(L"INSERT INTO t_Stock (FItemID, FNumber, FName) VALUES (51, 'W1', N'原料仓')");
    database.Execute(L"INSERT INTO t_StockPlace (FSPID, FNumber, FName) VALUES (61, 'A1', N'甲架')");
  }
};

TEST_F(EcnReaderTest, GetEcnBomHeadReadsTheHeaderWithItsItem) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Object head = ecn.Call(L"GetEcnBomHead", database.Dsn(), L"10").AsObject();
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, database.Dsn(),
                  {L"Execute\tSELECT FValue FROM t_SystemProfile WHERE FCategory='IC' AND "
                   L"FKey='UseShortNumber'",
                   L"Open\tSELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, "
                   L"v1.FBomNumber FBomNumber, v1.FItemID FMItemID,  v1.FRoutingID,  v2.FNumber FMNumber , "
                   L"v2.FName FMName,v2.FModel FMModel, v2.FFixLeadTime ,v2.FErpClsID FMErpClsID , v3.FName "
                   L"FMErpClsName  FROM ICBom v1 inner join t_IcItem v2 on v1.FItemid=v2.FItemId left join "
                   L"t_SubMessage v3 on v2.FErpClsID=v3.FInterID   WHERE  v1.FInterID= 10",
                   L"VoteComplete"}));
  EXPECT_EQ(ColumnsOf(head),
            (Texts{L"FInterID", L"FBomType", L"FBomInterID", L"FBomNumber", L"FMItemID", L"FRoutingID",
                   L"FMNumber", L"FMName", L"FMModel", L"FFixLeadTime", L"FMErpClsID", L"FMErpClsName"}));
  EXPECT_EQ(RowsOf(head), Texts{L"10|0|10|B10|500|7|1.500|自行车|M5|7|2|自制"});
}

TEST_F(EcnReaderTest, GetEcnBomHeadShowsShortNumbersWhereTheSettingSaysSo) {
  const Object ecn = Hosted(L"CEcnInfo");
  const auto number = [&] {
    const Object head = ecn.Call(L"GetEcnBomHead", database.Dsn(), L"10").AsObject();
    return head.Get(L"Fields").AsObject().Get(L"Item", L"FMNumber").AsObject().Get(L"Value");
  };
  EXPECT_EQ(number(), Variant(L"1.500"));
  database.Execute(
      L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', 'UseShortNumber', '0')");
  EXPECT_EQ(number(), Variant(L"1.500"));
  database.Execute(L"UPDATE t_SystemProfile SET FValue = '1'");
  const Trace trace;
  EXPECT_EQ(number(), Variant(L"S500"));
  EXPECT_NE(trace.Details(L"Open").at(0).find(L" v1.FRoutingID,  v2.FShortNumber FMNumber , v2.FName"),
            std::wstring::npos);
}

constexpr wchar_t kEntries[] =
    L"SELECT  v1.FInterID FInterID, v1.FBomType, v1.FInterId FBomInterID, v1.FBomNumber FBomNumber, "
    L"v1.FItemID FMItemID, v1.FRoutingID, v2.FNumber FMNumber, v2.FName FMName,v2.FModel FMModel,\r\n"
    L" ICBomChild.FEntryID FChildId, ICBomChild.FItemID FItemID, t2.FNumber, t2.FName, t2.FModel, 11022 as "
    L"FChangeType, '修改' as FChangeTypeName, 'ALT' as FChangeTypeNumber,  \r\n"
    L" ICBomChild.FBeginDay, ICBomChild.FEndDay, t2.FQtyDecimal, t2.FPriceDecimal, t2.FUnitGroupID, "
    L"ICBomChild.FQty, ICBomChild.FUnitID, t2.FTrack,\r\n"
    L" t7.FNumber as FUnitNumber, t7.FName as FUnitName, ICBomChild.FAuxQty, ICBomChild.FMaterielType, "
    L"t9.FID as FMaterielTypeNumber, \r\n"
    L" t9.FName as FMaterielTypeName, ICBomChild.FMarshalType, t10.FID as FMarshalTypeNumber, t10.FName as "
    L"FMarshalTypeName, \r\n"
    L" ICBomChild.FPercent, ICBomChild.FScrap, ICBomChild.FOperSN,ICBomChild.FOperSN as "
    L"FOperSNNumber,ICBomChild.FOperSN as FOperSNName, ICBomChild.FOperID, t13.FID as FOperIDNumber, "
    L"t13.FName as FOperIDName, \r\n"
    L" ICBomChild.FMachinePos, ICBomChild.FOffSetDay, ICBomChild.FBackFlush, t16.FID as FBackFlushNumber, "
    L"t16.FName as FBackFlushName, \r\n"
    L" t2.FIsKeyItem as FISKeyItem, t17.FName as FUseState, \r\n"
    L" t2.FDeleted as FForbitUse, ICBomChild.FStockID, t20.FNumber as FStockIDNumber, t20.FName as "
    L"FStockIDName, \r\n"
    L" ICBomChild.FSPID, t21.FNumber as FSPIDNumber, t21.FName as FSPIDName, ICBomChild.FNote, t2.FErpClsID "
    L"as FErpClsID \r\n"
    L"FROM ICBom v1 INNER JOIN ICBomChild ON v1.FInterID = ICBomChild.FInterID AND ICBomChild.FInterID= "
    L"10\r\n"
    L" INNER JOIN t_ICItem t2 ON ICBomChild.FItemID = t2.FItemID \r\n"
    L" INNER JOIN t_IcItem v2 ON v1.FItemid = v2.FItemId \r\n"
    L" INNER JOIN t_MeasureUnit t7 ON ICBomChild.FUnitID = t7.FItemID \r\n"
    L" LEFT JOIN t_SubMessage t9 ON ICBomChild.FMaterielType = t9.FInterID \r\n"
    L" LEFT JOIN t_SubMessage t10 ON ICBomChild.FMarshalType = t10.FInterID \r\n"
    L" LEFT JOIN t_SubMessage t13 ON ICBomChild.FOperID = t13.FInterID \r\n"
    L" LEFT JOIN t_SubMessage t16 ON ICBomChild.FBackFlush = t16.FInterID \r\n"
    L" INNER JOIN t_SubMessage t17 ON t2.Fusestate = t17.FInterId \r\n"
    L" LEFT JOIN t_Stock t20 ON ICBomChild.FStockID = t20.FItemID \r\n"
    L" LEFT JOIN t_StockPlace t21 ON ICBomChild.FSPID = t21.FSPID \r\n";

TEST_F(EcnReaderTest, GetEcnBomEntryReadsTheLinesAsAlterations) {
  const std::wstring dsn = database.Dsn(L"Language=chs");
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Object lines = ecn.Call(L"GetEcnBomEntry", dsn, L"10").AsObject();
  EXPECT_EQ(
      trace.Events(),
      (Texts{L"GetDataContext", L"BindDsn\t" + dsn, L"GetCallerInfo", L"GetConnection", L"LoadString\t修改",
             L"Open\t" + std::wstring(kEntries) + L" ORDER BY ICBomChild.FEntryID ", L"VoteComplete"}));
  EXPECT_EQ(ColumnsOf(lines), (Texts{L"FInterID",
                                     L"FBomType",
                                     L"FBomInterID",
                                     L"FBomNumber",
                                     L"FMItemID",
                                     L"FRoutingID",
                                     L"FMNumber",
                                     L"FMName",
                                     L"FMModel",
                                     L"FChildId",
                                     L"FItemID",
                                     L"FNumber",
                                     L"FName",
                                     L"FModel",
                                     L"FChangeType",
                                     L"FChangeTypeName",
                                     L"FChangeTypeNumber",
                                     L"FBeginDay",
                                     L"FEndDay",
                                     L"FQtyDecimal",
                                     L"FPriceDecimal",
                                     L"FUnitGroupID",
                                     L"FQty",
                                     L"FUnitID",
                                     L"FTrack",
                                     L"FUnitNumber",
                                     L"FUnitName",
                                     L"FAuxQty",
                                     L"FMaterielType",
                                     L"FMaterielTypeNumber",
                                     L"FMaterielTypeName",
                                     L"FMarshalType",
                                     L"FMarshalTypeNumber",
                                     L"FMarshalTypeName",
                                     L"FPercent",
                                     L"FScrap",
                                     L"FOperSN",
                                     L"FOperSNNumber",
                                     L"FOperSNName",
                                     L"FOperID",
                                     L"FOperIDNumber",
                                     L"FOperIDName",
                                     L"FMachinePos",
                                     L"FOffSetDay",
                                     L"FBackFlush",
                                     L"FBackFlushNumber",
                                     L"FBackFlushName",
                                     L"FISKeyItem",
                                     L"FUseState",
                                     L"FForbitUse",
                                     L"FStockID",
                                     L"FStockIDNumber",
                                     L"FStockIDName",
                                     L"FSPID",
                                     L"FSPIDNumber",
                                     L"FSPIDName",
                                     L"FNote",
                                     L"FErpClsID"}));
  // The item of line 3 has no use state.
  EXPECT_EQ(RowsOf(lines),
            (Texts{L"10|0|10|B10|500|7|1.500|自行车|M5|1|201|2.201|车架|M1|11022|修改|ALT|2026-03-01|"
                   L"2026-12-31|2|3|1|18|101|76|PC|件|1.5|371|PT|普通件|385|TY|通用|100|2|10|10|10|40|OP1|"
                   L"装配|P1|3|1059|N|否|1|使用|0|51|W1|原料仓|61|A1|甲架|第一行|1",
                   L"10|0|10|B10|500|7|1.500|自行车|M5|2|202|2.202|前轮||11022|修改|ALT|2026-03-01|"
                   L"2026-12-31|0|2|1|2|101|76|PC|件|2|371|PT|普通件|385|TY|通用|100|0|20|20|20|40|OP1|"
                   L"装配|P1|0|1059|N|否|0|使用|1|51|W1|原料仓|61|A1|甲架|第二行|1"}));
}

TEST_F(EcnReaderTest, GetEcnBomEntryFiltersAndTranslates) {
  database.Execute(L"UPDATE t_ICItem SET FUseState = 341");
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Object lines =
      ecn.Call(L"GetEcnBomEntry", database.Dsn(L"Language=en"), L"10", L" WHERE ICBomChild.FEntryID > 1")
          .AsObject();
  EXPECT_TRUE(trace.Details(L"Open").at(0).ends_with(
      L" LEFT JOIN t_StockPlace t21 ON ICBomChild.FSPID = t21.FSPID \r\n WHERE ICBomChild.FEntryID > 1\r\n "
      L"ORDER BY ICBomChild.FEntryID "));
  Texts found;
  for (; !lines.Get(L"EOF").AsBool(); lines.Call(L"MoveNext")) {
    const Object fields = lines.Get(L"Fields").AsObject();
    found.push_back(fields.Get(L"Item", L"FChildId").AsObject().Get(L"Value").AsText() + L" " +
                    fields.Get(L"Item", L"FChangeTypeName").AsObject().Get(L"Value").AsText());
  }
  EXPECT_EQ(found, (Texts{L"2 Altered", L"3 Altered"}));
  // A line with an unknown unit is missing.
  database.Execute(L"UPDATE ICBOMChild SET FUnitID = 999 WHERE FEntryID = 2");
  const Object known =
      ecn.Call(L"GetEcnBomEntry", database.Dsn(), L"10", L" WHERE ICBomChild.FEntryID > 1").AsObject();
  EXPECT_EQ(RowsOf(known).size(), 1u);
}

TEST_F(EcnReaderTest, AnUnknownBomHasNoRows) {
  const Object ecn = Hosted(L"CEcnInfo");
  EXPECT_TRUE(RowsOf(ecn.Call(L"GetEcnBomHead", database.Dsn(), L"4711").AsObject()).empty());
  EXPECT_TRUE(RowsOf(ecn.Call(L"GetEcnBomEntry", database.Dsn(), L"4711").AsObject()).empty());
}

TEST_F(EcnReaderTest, AnalyseBomNumberRunsTheCallersStatement) {
  const Object ecn = Hosted(L"CEcnInfo");
  const std::wstring statement = L" select FInterID, FBOMNumber\r\nfrom ICBOM where FBOMNumber like 'B1[01]' "
                                 L"order by 1 ";
  const Trace trace;
  const Object boms = ecn.Call(L"AnalyseBomNumber", database.Dsn(), statement).AsObject();
  EXPECT_EQ(trace.Events(), AroundSetUp({}, database.Dsn(), {L"Open\t" + statement, L"VoteComplete"}));
  EXPECT_EQ(RowsOf(boms), (Texts{L"10|B10", L"11|B11"}));
}

TEST_F(EcnReaderTest, TheCallerGetsCountedRowsOffTheirConnection) {
  constexpr int32_t kClientSide = 3;
  const Object ecn = Hosted(L"CEcnInfo");
  database.Execute(L"UPDATE t_ICItem SET FUseState = 341");
  const std::pair<Variant, int32_t> results[] = {
      {ecn.Call(L"GetEcnBomHead", database.Dsn(), L"10"), 1},
      {ecn.Call(L"GetEcnBomEntry", database.Dsn(), L"10"), 3},
      {ecn.Call(L"AnalyseBomNumber", database.Dsn(), L"select 1 union all select 2"), 2}};
  for (const auto& [result, rows] : results) {
    const Object recordset = result.AsObject();
    EXPECT_EQ(recordset.Get(L"CursorLocation"), Variant(kClientSide));
    EXPECT_EQ(recordset.Get(L"RecordCount"), Variant(rows));
    EXPECT_FALSE(recordset.Get(L"ActiveConnection").AsObject());
    // The rows stay, and can be read more than once.
    EXPECT_EQ(RowsOf(recordset).size(), static_cast<size_t>(rows));
    recordset.Call(L"MoveFirst");
    EXPECT_EQ(RowsOf(recordset).size(), static_cast<size_t>(rows));
  }
}

TEST_F(EcnReaderTest, AStatementWithoutRowsGivesAClosedRecordset) {
  const Object result =
      Hosted(L"CEcnInfo")
          .Call(L"AnalyseBomNumber", database.Dsn(), L"update ICBOM set FNote = 'x' where FInterID = 10")
          .AsObject();
  EXPECT_EQ(result.Get(L"State"), Variant(0));
  EXPECT_EQ(database.Value(L"SELECT FNote FROM ICBOM WHERE FInterID = 10"), L"x");
}

TEST_F(EcnReaderTest, ReadersRaiseTheServersErrors) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  for (const wchar_t* method : {L"GetEcnBomHead", L"GetEcnBomEntry", L"AnalyseBomNumber"}) {
    const Raised raised = RaisedBy([&] { ecn.Call(method, database.Dsn(), L"it's"); });
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E14u);
    EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  }
  EXPECT_EQ(trace.Votes(), Texts(3, L"VoteAbort"));
}

class EcnReaderFailure : public EcnReaderTest,
                         public testing::WithParamInterface<std::tuple<const wchar_t*, OutsideCall>> {};

TEST_P(EcnReaderFailure, RisesWithTheUnitAborted) {
  const wchar_t* const method = std::get<0>(GetParam());
  const OutsideCall& call = std::get<1>(GetParam());
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Fault fault(call.kind, call.nth);
  const Variant argument(std::wstring(method) == L"AnalyseBomNumber" ? L"select 1" : L"10");
  const Raised raised = RaisedBy([&] { ecn.Call(method, database.Dsn(), argument); });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.description, Fault::kText);
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
}

INSTANTIATE_TEST_SUITE_P(
    EveryOutsideCall, EcnReaderFailure,
    testing::Combine(testing::Values(L"GetEcnBomHead", L"GetEcnBomEntry", L"AnalyseBomNumber"),
                     testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                     OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                     OutsideCall{L"Open", 1}, OutsideCall{L"VoteComplete", 1})));

} // namespace
} // namespace mbom::test
