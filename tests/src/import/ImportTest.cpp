// BOMImport and PPorderImort: the statements of an import in their order, what they leave in the database,
// and what an import that fails leaves with and without the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "com/ValueText.h"
#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

constexpr wchar_t kBindsNothing[] = L"Language=chs";

// The outside calls of an import on the descriptor: a vote around the set-up, `work`, and the last vote.
Texts Import(const std::wstring& dsn, const Texts& work) {
  Texts all{L"VoteAbort",     L"GetDataContext", L"BindDsn\t" + dsn,
            L"GetCallerInfo", L"VoteComplete",   L"GetConnection"};
  all.insert(all.end(), work.begin(), work.end());
  all.emplace_back(L"VoteComplete");
  return all;
}

Object Group(const Variant& number, const Variant& name, const Variant& parent) {
  return MakeDictionary({{L"Number", number}, {L"Name", name}, {L"Parent", parent}});
}

Object BomLine(int32_t item, const Variant& quantity) {
  return MakeDictionary({{L"EntryItem", item},
                         {L"Qty", quantity},
                         {L"Scrap", 2.5},
                         {L"Oper", 71},
                         {L"MachinePos", L"M1"},
                         {L"Note", L"line"},
                         {L"MaterielType", 371},
                         {L"MarshalType", 385},
                         {L"Percent", 100},
                         {L"OffSetDay", 0},
                         {L"BackFlush", 1059},
                         {L"Stock", 802},
                         {L"SP", 11}});
}

Object Bom(const wchar_t* number, const Variant& entry) {
  return MakeDictionary({{L"BOMNumber", number},
                         {L"UseStatus", 1072},
                         {L"Version", L"v2"},
                         {L"Parent", 3},
                         {L"Item", 501},
                         {L"Qty", 1},
                         {L"Yield", 98.5},
                         {L"Routing", 0},
                         {L"BOMType", 0},
                         {L"Note", L"n"},
                         {L"Entry", entry}});
}

Object OrderLine(int32_t item) {
  return MakeDictionary({{L"EntryItem", item},
                         {L"Unit", 8},
                         {L"Qty", 12},
                         {L"NeedDate", L"2026-06-30"},
                         {L"Note", L"soon"},
                         {L"AuxQty", 1},
                         {L"CommitQty", 6.5},
                         {L"AuxCommitQty", 0.5}});
}

Object Order(const wchar_t* number, const Variant& entry) {
  return MakeDictionary({{L"BillNo", number},
                         {L"Date", L"2026-05-04"},
                         {L"Biller", 16403},
                         {L"CheckDate", L"2026-05-05"},
                         {L"Checker", 46147},
                         {L"Entry", entry}});
}

std::wstring HeaderInsert(int32_t id, const std::wstring& number) {
  return L"INSERT INTO "
         L"ICBOM(FBrNo,FInterID,FBomNumber,FUseStatus,FVersion,FParentID,FItemID,FQty,FYield,FStatus,"
         L"FRoutingID,FBomType,FCustItemID,FNote) VALUES(''," +
         std::to_wstring(id) + L",'" + number + L"',1072,'v2',3,501,1,98.5,0,0,0,0,'n')";
}

std::wstring LineInsert(int32_t id, int32_t entry, int32_t item) {
  return L"INSERT INTO ICBOMChild(FBrNo,FInterID,FEntryID,FItemID,FAuxQty,FScrap,FOperID,FMachinePos,FNote,"
         L"FMaterielType,FMarshalType,FPercent,FOffSetDay,FBackFlush,FStockID,FSPID) VALUES(''," +
         std::to_wstring(id) + L"," + std::to_wstring(entry) + L"," + std::to_wstring(item) +
         L",3,2.5,71,'M1','line',371,385,100,0,1059,802,11)\r\n";
}

constexpr wchar_t kOrderInsert[] = L"INSERT INTO PPOrder(FBrNo,FInterID,FTranType,FDate,FBillerID,FCheckerID,"
                                   L"FCheckDate) VALUES('',8,87,'2026-05-04',16403,'2026-05-05',46147)";

class ImportTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOMGroup', 41), ('ICBOM', 60), "
                      L"('PPOrder', 7)");
    database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                      L"(1, 'G1', 'Bikes', 0, 1), (2, 'G2', 'Parts', 1, 1), (3, 'G2', 'Again', 1, 1)");
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (51, 'B51', 501), (52, 'B52', 501), "
        L"(53, 'B51', 502)");
    database_.Execute(
        L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID) VALUES (51, 1, 502), (51, 2, 503), "
        L"(52, 1, 503), (53, 1, 504)");
    database_.Execute(L"INSERT INTO PPOrder (FInterID, FBillNo) VALUES (1, 'P1'), (2, 'P2')");
    database_.Execute(
        L"INSERT INTO PPOrderEntry (FInterID, FEntryID, FItemID) VALUES (1, 1, 501), (2, 1, 502)");
  }

  Texts Groups() const {
    return database_.Rows(L"SELECT FInterID, FNumber, FName, FParentID FROM ICBOMGroup ORDER BY FInterID");
  }
  Texts Boms() const { return database_.Rows(L"SELECT FInterID, FBOMNumber FROM ICBOM ORDER BY FInterID"); }
  Texts Lines() const {
    return database_.Rows(L"SELECT FInterID, FEntryID, FItemID FROM ICBOMChild ORDER BY FInterID, FEntryID");
  }
  Texts Orders() const { return database_.Rows(L"SELECT FInterID, FBillNo FROM PPOrder ORDER BY FInterID"); }
  Texts OrderLines() const {
    return database_.Rows(L"SELECT FInterID, FEntryID FROM PPOrderEntry ORDER BY FInterID, FEntryID");
  }
  std::wstring Highest(const wchar_t* table) const {
    return database_.Value(std::wstring(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = '") + table + L"'");
  }
  // Everything that imports write.
  std::vector<Texts> Everything() const {
    return {Groups(),     Boms(),
            Lines(),      Orders(),
            OrderLines(), database_.Rows(L"SELECT FTableName, FMaxNum FROM ICMaxNum ORDER BY FTableName")};
  }

  const TestDatabase database_;
  const Object bomImport_ = Hosted(L"BOMImport");
  const Object orderImport_ = Hosted(L"PPorderImort");
};

TEST_F(ImportTest, ReportsItsTransactionModes) {
  EXPECT_EQ(bomImport_.Get(L"TransMode"), Variant(2));
  EXPECT_EQ(orderImport_.Get(L"TransMode"), Variant(2));
}

// ---- groups

TEST_F(ImportTest, AGroupReplacesTheOnesWithItsNumber) {
  Variant group(Group(L"G2", L"Wheels", 1));
  const Trace trace;
  EXPECT_EQ(bomImport_.Call(L"UpdateBomGroup", database_.Dsn(), Variant::Reference(group)), Variant(false));
  EXPECT_EQ(
      trace.Events(),
      Import(database_.Dsn(),
             {L"Execute\tDELETE FROM ICBomGroup WHERE FNumber='G2'",
              L"Open\tSELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBomGroup'",
              L"Execute\tINSERT INTO ICBomGroup(FInterID,FNumber,FName,FParentID) VALUES(42,'G2','Wheels',1)",
              L"Execute\tUPDATE ICMaxNum SET FMaxNum=42 WHERE FTableName='ICBomGroup'"}));
  EXPECT_EQ(Groups(), (Texts{L"1|G1|Bikes|0", L"42|G2|Wheels|1"}));
  EXPECT_EQ(Highest(L"ICBOMGroup"), L"42");
}

TEST_F(ImportTest, WithoutACounterEveryGroupIsTheFirst) {
  database_.Execute(L"DELETE FROM ICMaxNum WHERE FTableName = 'ICBOMGroup'");
  for (const wchar_t* number : {L"G8", L"G9"})
    EXPECT_EQ(bomImport_.Call(L"UpdateBomGroup", database_.Dsn(), Group(number, L"x", L"0")), Variant(false));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICBOMGroup WHERE FNumber IN ('G8', 'G9')"),
            (Texts{L"1", L"1"}));
  EXPECT_EQ(database_.Rows(L"SELECT FTableName FROM ICMaxNum ORDER BY FTableName"),
            (Texts{L"ICBOM", L"PPOrder"}));
}

TEST_F(ImportTest, TheHighestIdentifierOverflows) {
  database_.Execute(L"UPDATE ICMaxNum SET FMaxNum = 2147483647");
  const std::vector<Texts> before = Everything();
  EXPECT_EQ(
      static_cast<unsigned>(
          RaisedBy([&] { bomImport_.Call(L"UpdateBomGroup", database_.Dsn(), Group(L"G2", L"x", 0)); }).code),
      0x800A0006u);
  EXPECT_EQ(Everything(), before);
}

// ---- BOMs

TEST_F(ImportTest, ABomReplacesTheOnesWithItsNumberAndOnlyItsLastLineIsWritten) {
  const Object bom = Bom(L"B51", MakeVector({BomLine(502, 1), BomLine(503, 2), BomLine(504, 3)}));
  const Trace trace;
  EXPECT_EQ(bomImport_.Call(L"UpdateBOM", database_.Dsn(), bom), Variant(false));
  EXPECT_EQ(trace.Events(),
            Import(database_.Dsn(),
                   {L"Execute\tDELETE t1 FROM ICBOMChild t1,ICBOM t2 WHERE t2.FBOMNumber='B51' AND "
                    L"t1.FInterID=t2.FInterID",
                    L"Execute\tDELETE FROM ICBOM WHERE FBOMNumber='B51'",
                    L"Open\tSELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOM'",
                    L"Execute\t" + HeaderInsert(61, L"B51"), L"Execute\t" + LineInsert(61, 3, 504),
                    L"Execute\tUPDATE ICMaxNum SET FMaxNum=61 WHERE FTableName='ICBOM'"}));
  EXPECT_EQ(Boms(), (Texts{L"52|B52", L"61|B51"}));
  EXPECT_EQ(Lines(), (Texts{L"52|1|503", L"61|3|504"}));
  EXPECT_EQ(database_.Value(
                L"SELECT FBrNo, FUseStatus, FVersion, FParentID, FItemID, FQty, FYield, FStatus, FRoutingID, "
                L"FBomType, FCustItemID, FNote, FCheckID, FEnterTime FROM ICBOM WHERE FInterID = 61"),
            L"|1072|v2|3|501|1|98.5|0|0|0|0|n|NULL|NULL");
  EXPECT_EQ(
      database_.Value(L"SELECT FBrNo, FAuxQty, FQty, FScrap, FOperID, FMachinePos, FNote, FMaterielType, "
                      L"FMarshalType, FPercent, FOffSetDay, FBackFlush, FStockID, FSPID FROM ICBOMChild "
                      L"WHERE FInterID = 61"),
      L"|3|0|2.5|71|M1|line|371|385|100|0|1059|802|11");
  EXPECT_EQ(Highest(L"ICBOM"), L"61");
}

TEST_F(ImportTest, ABomWithoutLinesIsWrittenTwice) {
  const Trace trace;
  EXPECT_EQ(bomImport_.Call(L"UpdateBOM", database_.Dsn(), Bom(L"B9", MakeVector({}))), Variant(false));
  const Texts executed = trace.Details(L"Execute");
  ASSERT_EQ(executed.size(), 5u);
  EXPECT_EQ(executed[2], HeaderInsert(61, L"B9"));
  EXPECT_EQ(executed[3], HeaderInsert(61, L"B9"));
  EXPECT_EQ(Boms(), (Texts{L"51|B51", L"52|B52", L"53|B51", L"61|B9", L"61|B9"}));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteComplete", L"VoteComplete"}));
}

TEST_F(ImportTest, NumbersMayBeTexts) {
  const Object line = BomLine(504, L"3");
  line.Put(L"Value", L"EntryItem", L"504");
  const Object bom = Bom(L"B9", MakeVector({line}));
  bom.Put(L"Value", L"Yield", L"98.50");
  bom.Put(L"Value", L"BOMNumber", 9);
  bomImport_.Call(L"UpdateBOM", database_.Dsn(), bom);
  EXPECT_EQ(database_.Value(L"SELECT FYield, FItemID FROM ICBOM WHERE FBOMNumber = '9'"), L"98.5|501");
  EXPECT_EQ(database_.Value(L"SELECT FAuxQty FROM ICBOMChild WHERE FInterID = 61"), L"3");
}

// ---- production orders

TEST_F(ImportTest, AnOrderIsWrittenWithCheckerAndCheckDateSwapped) {
  const Object order = Order(L"P1", MakeVector({OrderLine(501), OrderLine(502)}));
  const Trace trace;
  EXPECT_EQ(orderImport_.Call(L"UpdatePPOrder", database_.Dsn(), order), Variant(false));
  EXPECT_EQ(
      trace.Events(),
      Import(
          database_.Dsn(),
          {L"Execute\tDELETE t1 FROM PPOrderEntry t1,PPOrder t2 WHERE t2.FBillNo='P1' AND "
           L"t1.FInterID=t2.FInterID",
           L"Execute\tDELETE FROM PPOrder WHERE FBillNo='P1'",
           L"Open\tSELECT FMaxNum FROM ICMaxNum WHERE FTableName='PPOrder'",
           L"Execute\t" + std::wstring(kOrderInsert),
           L"Execute\tINSERT INTO PPOrderEntry(FBrNo,FInterID,FEntryID,FItemID,FUnitID,FQty,FNeedDate,FNote,"
           L"FAuxQty,FCommitQty,FAuxCommitQty) VALUES('',8,2,502,8,12,'2026-06-30','soon',1,6.5,0.5)\r\n",
           L"Execute\tUPDATE ICMaxNum SET FMaxNum=8 WHERE FTableName='PPOrder'"}));
  EXPECT_EQ(Orders(), (Texts{L"2|P2", L"8|"}));
  EXPECT_EQ(OrderLines(), (Texts{L"2|1", L"8|2"}));
  // Day 46147 after 1900-01-01.
  EXPECT_EQ(
      database_.Value(L"SELECT FBrNo, FTranType, FDate, FBillerID, FCheckerID, FCheckDate FROM PPOrder WHERE "
                      L"FInterID = 8"),
      L"|87|2026-05-04|16403|2026-05-05|2026-05-07");
  EXPECT_EQ(
      database_.Value(L"SELECT FItemID, FUnitID, FQty, FNeedDate, FNote, FAuxQty, FCommitQty, FAuxCommitQty "
                      L"FROM PPOrderEntry WHERE FInterID = 8"),
      L"502|8|12|2026-06-30|soon|1|6.5|0.5");
  EXPECT_EQ(Highest(L"PPOrder"), L"8");
}

TEST_F(ImportTest, ASecondImportOfAnOrderLeavesTheFirst) {
  for (int i = 0; i < 2; ++i)
    orderImport_.Call(L"UpdatePPOrder", database_.Dsn(), Order(L"P7", MakeVector({OrderLine(501)})));
  EXPECT_EQ(Orders(), (Texts{L"1|P1", L"2|P2", L"8|", L"9|"}));
}

TEST_F(ImportTest, AnOrderWithoutLinesIsWrittenTwice) {
  const Trace trace;
  orderImport_.Call(L"UpdatePPOrder", database_.Dsn(), Order(L"P7", MakeVector({})));
  const Texts executed = trace.Details(L"Execute");
  ASSERT_EQ(executed.size(), 5u);
  EXPECT_EQ(executed[2], kOrderInsert);
  EXPECT_EQ(executed[3], kOrderInsert);
  EXPECT_EQ(Orders(), (Texts{L"1|P1", L"2|P2", L"8|", L"8|"}));
}

// ---- the counter, and what an import leaves alone

TEST_F(ImportTest, WithoutACounterEveryBomAndEveryOrderIsTheFirst) {
  database_.Execute(L"DELETE FROM ICMaxNum WHERE FTableName IN ('ICBOM', 'PPOrder')");
  database_.Execute(L"DELETE FROM PPOrder");
  for (const wchar_t* number : {L"N1", L"N2"}) {
    bomImport_.Call(L"UpdateBOM", database_.Dsn(), Bom(number, MakeVector({BomLine(502, 1)})));
    orderImport_.Call(L"UpdatePPOrder", database_.Dsn(), Order(number, MakeVector({OrderLine(501)})));
  }
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICBOM WHERE FBOMNumber IN ('N1', 'N2')"),
            (Texts{L"1", L"1"}));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM PPOrder"), (Texts{L"1", L"1"}));
  // No counter was made.
  EXPECT_EQ(database_.Rows(L"SELECT FTableName FROM ICMaxNum"), Texts{L"ICBOMGroup"});
}

TEST_F(ImportTest, ACounterThatIsNullRises) {
  database_.Execute(L"DROP TABLE ICMaxNum");
  database_.Execute(L"CREATE TABLE ICMaxNum (FTableName varchar(50) NOT NULL, FMaxNum int NULL)");
  database_.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOMGroup', NULL), "
                    L"('ICBOM', NULL), ('PPOrder', NULL)");
  const std::vector<Texts> before = Everything();
  const auto rises = [this](const Object& import, const wchar_t* method, const Object& record) {
    const Trace trace;
    const Raised raised = RaisedBy([&] { import.Call(method, database_.Dsn(), record); });
    EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteComplete"})); // the last vote is missing
    return FAILED(raised.code);
  };
  EXPECT_TRUE(rises(bomImport_, L"UpdateBomGroup", Group(L"G2", L"x", 0)));
  EXPECT_TRUE(rises(bomImport_, L"UpdateBOM", Bom(L"B51", MakeVector({BomLine(502, 1)}))));
  EXPECT_TRUE(rises(orderImport_, L"UpdatePPOrder", Order(L"P1", MakeVector({OrderLine(501)}))));
  EXPECT_EQ(Everything(), before);
}

TEST_F(ImportTest, WhatStoodUnderAReplacedGroupKeepsPointingAtItsOldIdentifier) {
  database_.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                    L"(4, 'G4', 'Child', 2, 1)");
  database_.Execute(L"UPDATE ICBOM SET FParentID = 2 WHERE FInterID = 51");
  bomImport_.Call(L"UpdateBomGroup", database_.Dsn(), Group(L"G2", L"Wheels", 1));
  EXPECT_EQ(Groups(), (Texts{L"1|G1|Bikes|0", L"4|G4|Child|2", L"42|G2|Wheels|1"}));
  EXPECT_EQ(database_.Value(L"SELECT FParentID FROM ICBOM WHERE FInterID = 51"), L"2");
}

TEST_F(ImportTest, TheRecordThatCameByReferenceIsLeftAsItCame) {
  // The keys with their values as texts, an object's as nothing.
  const auto contents = [](const Object& dictionary) {
    Texts all;
    for (const std::wstring& key : KeysOf(dictionary)) {
      const Variant value = dictionary.Get(L"Value", key);
      all.push_back(key + L"=" + (value.IsObject() ? std::wstring() : com::ToText(value)));
    }
    return all;
  };
  const Object bomLine = BomLine(502, 1);
  const Object orderLine = OrderLine(501);
  const std::tuple<const Object&, const wchar_t*, Object> imports[] = {
      {bomImport_, L"UpdateBomGroup", Group(L"G2", L"x", 0)},
      {bomImport_, L"UpdateBOM", Bom(L"B51", MakeVector({bomLine}))},
      {orderImport_, L"UpdatePPOrder", Order(L"P1", MakeVector({orderLine}))},
  };
  const Texts before[] = {contents(bomLine), contents(orderLine)};
  for (const auto& [import, method, record] : imports) {
    const Texts asItCame = contents(record);
    Variant argument(record);
    EXPECT_EQ(import.Call(method, database_.Dsn(), Variant::Reference(argument)), Variant(false));
    EXPECT_EQ(argument, Variant(record)) << com::ToUtf8(method); // the same object
    EXPECT_EQ(contents(record), asItCame) << com::ToUtf8(method);
  }
  EXPECT_EQ(contents(bomLine), before[0]);
  EXPECT_EQ(contents(orderLine), before[1]);
}

// ---- records that make no statement: the error rises, and under the host nothing of the call stays

struct BadImport {
  const wchar_t* method;
  Object (*record)();
  unsigned code;
};

Object Without(const Object& record, const wchar_t* key) {
  record.Call(L"Remove", key);
  return record;
}

Object With(const Object& record, const wchar_t* key, const Variant& value) {
  record.Put(L"Value", key, value);
  return record;
}

constexpr unsigned kSyntax = 0x80040E14;
constexpr unsigned kTypeMismatch = 0x80020005;

const BadImport kBadImports[] = {
    {L"UpdateBomGroup",
     [] {
       return MakeDictionary({{L"Number", L"G2"}});
     },
     kSyntax},
    {L"UpdateBomGroup", [] { return Group(L"G2", L"it's", 0); }, kSyntax},
    {L"UpdateBomGroup", [] { return Group(L"G'2", L"x", 0); }, kSyntax},
    {L"UpdateBomGroup", [] { return Group(L"G2", L"x", Variant::Null()); }, kSyntax},
    {L"UpdateBomGroup", [] { return Group(L"G2", L"x", MakeVector({})); }, kTypeMismatch},
    {L"UpdateBOM", [] { return Without(Bom(L"B51", MakeVector({BomLine(502, 1)})), L"Item"); }, kSyntax},
    {L"UpdateBOM", [] { return With(Bom(L"B51", MakeVector({BomLine(502, 1)})), L"Note", L"a 5' ladder"); },
     kSyntax},
    {L"UpdateBOM", [] { return Bom(L"B51", MakeVector({Without(BomLine(502, 1), L"Qty")})); }, kSyntax},
    {L"UpdateBOM", [] { return With(Bom(L"B51", MakeVector({})), L"Qty", L"one"); }, kSyntax},
    {L"UpdateBOM", [] { return Bom(L"B51", L"no vector"); }, kTypeMismatch},
    {L"UpdateBOM", [] { return Without(Bom(L"B51", MakeVector({})), L"Entry"); }, kTypeMismatch},
    {L"UpdateBOM", [] { return Bom(L"B51", MakeVector({1})); }, kTypeMismatch},
    {L"UpdatePPOrder", [] { return Without(Order(L"P1", MakeVector({OrderLine(501)})), L"Biller"); },
     kSyntax},
    {L"UpdatePPOrder", [] { return With(Order(L"P1", MakeVector({})), L"Checker", L"x"); }, kSyntax},
    {L"UpdatePPOrder", [] { return Order(L"P1", Variant::Null()); }, kTypeMismatch},
};

class BadImportTest : public ImportTest, public testing::WithParamInterface<BadImport> {
 protected:
  const Object& Importer() const {
    return std::wstring(GetParam().method) == L"UpdatePPOrder" ? orderImport_ : bomImport_;
  }
};

TEST_P(BadImportTest, RisesAndLeavesNothingUnderTheHost) {
  const std::vector<Texts> before = Everything();
  const Object record = GetParam().record();
  const Trace trace;
  const Raised raised = RaisedBy([&] { Importer().Call(GetParam().method, database_.Dsn(), record); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), GetParam().code);
  if (GetParam().code == kSyntax) {
    EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  }
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteComplete"}));
  EXPECT_EQ(Everything(), before);
}

INSTANTIATE_TEST_SUITE_P(Records, BadImportTest, testing::ValuesIn(kBadImports));

TEST_F(ImportTest, WithoutTheHostTheDeletesOfAFailedImportStay) {
  const Object free = Unhosted(L"BOMImport");
  EXPECT_TRUE(FAILED(RaisedBy([&] {
                       free.Call(L"UpdateBOM", database_.Dsn(),
                                 With(Bom(L"B51", MakeVector({})), L"Qty", L"one"));
                     }).code));
  EXPECT_EQ(Boms(), Texts{L"52|B52"});
  EXPECT_EQ(Lines(), Texts{L"52|1|503"});
  EXPECT_EQ(Highest(L"ICBOM"), L"60");
}

TEST_F(ImportTest, NoRecordAndNoConnectionRise) {
  const std::vector<Texts> before = Everything();
  for (const wchar_t* method : {L"UpdateBomGroup", L"UpdateBOM"}) {
    EXPECT_TRUE(FAILED(RaisedBy([&] { bomImport_.Call(method, database_.Dsn(), Object()); }).code));
    EXPECT_TRUE(
        FAILED(RaisedBy([&] { bomImport_.Call(method, kBindsNothing, Group(L"G2", L"x", 0)); }).code));
    EXPECT_EQ(RaisedBy([&] { bomImport_.Call(method, database_.Dsn(), 5); }).code, DISP_E_TYPEMISMATCH);
  }
  EXPECT_TRUE(FAILED(RaisedBy([&] { orderImport_.Call(L"UpdatePPOrder", database_.Dsn(), Object()); }).code));
  EXPECT_TRUE(FAILED(RaisedBy([&] { orderImport_.Call(L"UpdatePPOrder", kBindsNothing, Object()); }).code));
  EXPECT_EQ(Everything(), before);
}

// ---- failure paths

class ImportFailure : public ImportTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(ImportFailure, RisesUnchangedAndLeavesNothingUnderTheHost) {
  const std::vector<Texts> before = Everything();
  {
    const Fault fault(GetParam().kind, GetParam().nth);
    const Raised bom = RaisedBy(
        [&] { bomImport_.Call(L"UpdateBOM", database_.Dsn(), Bom(L"B51", MakeVector({BomLine(502, 1)}))); });
    EXPECT_EQ(bom.code, Fault::kCode);
    EXPECT_EQ(bom.source, L"ErpStandIn");
    EXPECT_EQ(bom.description, Fault::kText);
  }
  {
    const Fault fault(GetParam().kind, GetParam().nth);
    EXPECT_EQ(RaisedBy([&] {
                orderImport_.Call(L"UpdatePPOrder", database_.Dsn(),
                                  Order(L"P1", MakeVector({OrderLine(502)})));
              }).code,
              Fault::kCode);
  }
  // A group's import has three statements to execute.
  if (GetParam().nth <= 3) {
    const Fault fault(GetParam().kind, GetParam().nth);
    EXPECT_EQ(
        RaisedBy([&] { bomImport_.Call(L"UpdateBomGroup", database_.Dsn(), Group(L"G2", L"x", 0)); }).code,
        Fault::kCode);
  }
  EXPECT_EQ(Everything(), before);
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, ImportFailure,
                         testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                         OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetCallerInfo", 1},
                                         OutsideCall{L"VoteComplete", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"Execute", 2},
                                         OutsideCall{L"Open", 1}, OutsideCall{L"Execute", 3},
                                         OutsideCall{L"Execute", 4}, OutsideCall{L"Execute", 5},
                                         OutsideCall{L"VoteComplete", 2}));

// ---- two at once

// Two apartments import `each` BOMs each, of numbers of their own.
void ImportFromTwoApartments(const std::wstring& dsn, bool hosted, int each) {
  const auto import = [&dsn, hosted, each](const wchar_t* prefix) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
      const Object importer = hosted ? Hosted(L"BOMImport") : Unhosted(L"BOMImport");
      for (int i = 0; i < each; ++i) {
        const std::wstring number = prefix + std::to_wstring(i);
        EXPECT_EQ(RaisedBy([&] {
                    importer.Call(L"UpdateBOM", dsn, Bom(number.c_str(), MakeVector({BomLine(504, 3)})));
                  }).code,
                  S_OK);
      }
    }
    CoUninitialize();
  };
  std::thread one(import, L"one");
  std::thread two(import, L"two");
  one.join();
  two.join();
}

TEST_F(ImportTest, TheHostsTransactionKeepsTwoApartmentsApart) {
  constexpr int kEach = 15;
  ImportFromTwoApartments(database_.Dsn(), true, kEach);
  EXPECT_EQ(database_.Value(
                L"SELECT COUNT(*), COUNT(DISTINCT FInterID), MIN(FInterID), MAX(FInterID) FROM ICBOM WHERE "
                L"FInterID > 60"),
            L"30|30|61|90");
  EXPECT_EQ(database_.Value(L"SELECT COUNT(*), COUNT(DISTINCT FInterID) FROM ICBOMChild WHERE FInterID > 60"),
            L"30|30");
  EXPECT_EQ(Highest(L"ICBOM"), L"90");
}

TEST_F(ImportTest, WithoutTheHostTwoApartmentsMayShareAnIdentifierButLoseNothing) {
  constexpr int kEach = 15;
  ImportFromTwoApartments(database_.Dsn(), false, kEach);
  // Every BOM is there with its line; how many identifiers they share is chance.
  EXPECT_EQ(database_.Value(L"SELECT COUNT(*), COUNT(DISTINCT FBOMNumber) FROM ICBOM WHERE FInterID > 60"),
            L"30|30");
  EXPECT_EQ(database_.Value(L"SELECT COUNT(*) FROM ICBOMChild WHERE FInterID > 60"), L"30");
  EXPECT_EQ(
      database_.Value(L"SELECT COUNT(*) FROM ICBOM t1 WHERE FInterID > 60 AND NOT EXISTS (SELECT 1 FROM "
                      L"ICBOMChild t2 WHERE t2.FInterID = t1.FInterID)"),
      L"0");
}

TEST_F(ImportTest, AnIdentifierIsTakenTwiceWhenTheCounterIsReadBeforeItIsWritten) {
  const Object free = Unhosted(L"BOMImport");
  {
    // The first import stands just before it writes the counter back; the second one runs meanwhile.
    const Fault fault(L"Execute", 5);
    RaisedBy([&] { free.Call(L"UpdateBOM", database_.Dsn(), Bom(L"first", MakeVector({BomLine(504, 3)}))); });
  }
  free.Call(L"UpdateBOM", database_.Dsn(), Bom(L"second", MakeVector({BomLine(504, 3)})));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FBOMNumber FROM ICBOM WHERE FInterID > 60 ORDER BY FBOMNumber"),
            (Texts{L"61|first", L"61|second"}));
}

} // namespace
} // namespace mbom::test
