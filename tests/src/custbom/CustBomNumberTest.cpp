// clsMCustBOM: numbers of customer BOMs, the copy of one, links between them.
#include "src/frame/Convert.h"
#include "tests/src/custbom/CustBomFixture.h"

namespace mbom::test {
namespace {

constexpr wchar_t kRuleQuery[] = L"select FPreLetter, FSufLetter, FCurNo = isNull(FCurNo, 0) + 1, FFormat\r\n"
                                 L"from ICBillNo WITH(UPDLOCK) where FBillID = 53";
constexpr wchar_t kCounterQuery[] = L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOM'";
constexpr wchar_t kCreateRule[] = L"CreateServerObject\tQorvaneMBillCodeRule.clsBillCodeRule";

class CustBomNumberTest : public CustBomFixture {
 protected:
  void SetUp() override {
    CustBomFixture::SetUp();
    database_.Execute(
        L"INSERT INTO ICBillNo (FBillID, FBillName, FPreLetter, FSufLetter, FFormat, FCurNo) VALUES "
        L"(53, 'Customer BOM', 'KH', '-X', '0000', 8)");
    database_.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 41), ('ICMO', 3)");
  }
  std::wstring Serial() const { return database_.Value(L"SELECT FCurNo FROM ICBillNo"); }
  std::wstring HighestId() const {
    return database_.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICBOM'");
  }
  std::wstring BomCount() const { return database_.Value(L"SELECT COUNT(*) FROM ICBOM"); }

  const Object custBom_ = Hosted(L"clsMCustBOM");
};

// What bGetBillNoInfo gives back, or the error it raises.
struct RuleInfo {
  Variant prefix = L"a";
  Variant suffix = L"b";
  Variant format = L"c";
  Variant serial = 1;
  Variant result;

  void Read(const Object& custBom, const std::wstring& dsn, const wchar_t* language = L"chs") {
    result = custBom.Call(L"bGetBillNoInfo", dsn, Variant::Reference(prefix), Variant::Reference(suffix),
                          Variant::Reference(format), Variant::Reference(serial), language);
  }
};

// ---- bGetBillNoInfo

TEST_F(CustBomNumberTest, ReadsTheRuleAndCountsOn) {
  RuleInfo info;
  const Trace trace;
  info.Read(custBom_, Dsn());
  EXPECT_EQ(trace.Events(),
            Concat({SetUpCalls(),
                    SetUpCalls(),
                    {L"Open\t" + std::wstring(kRuleQuery), L"VoteComplete", L"VoteComplete"}}));
  EXPECT_EQ(info.result, Variant(true));
  EXPECT_EQ(info.prefix, Variant(L"KH"));
  EXPECT_EQ(info.suffix, Variant(L"-X"));
  EXPECT_EQ(info.format, Variant(L"0000"));
  EXPECT_EQ(info.serial, Variant(9));
  EXPECT_EQ(Serial(), L"8");
}

TEST_F(CustBomNumberTest, TakesNullsOfTheRuleForNothing) {
  database_.Execute(
      L"UPDATE ICBillNo SET FPreLetter = NULL, FSufLetter = NULL, FFormat = NULL, FCurNo = NULL");
  RuleInfo info;
  info.Read(custBom_, Dsn());
  EXPECT_EQ(info.prefix, Variant(L""));
  EXPECT_EQ(info.suffix, Variant(L""));
  EXPECT_EQ(info.format, Variant(L""));
  EXPECT_EQ(info.serial, Variant(1));
}

TEST_F(CustBomNumberTest, RaisesWithoutARuleInTheLanguageGiven) {
  database_.Execute(L"DELETE FROM ICBillNo");
  const std::pair<const wchar_t*, const wchar_t*> texts[] = {
      {L"chs", L"ICBillNo中未定义客户BOM"},
      {L"cht", L"ICBillNo中未定義客戶BOM"},
      {L"en", L"The customer BOM is not defined in ICBillNo"}};
  for (const auto& text : texts) {
    RuleInfo info;
    const Raised raised = RaisedBy([&] { info.Read(custBom_, Dsn(), text.first); });
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A0005u);
    EXPECT_EQ(raised.description, text.second);
    EXPECT_EQ(info.prefix, Variant(L"a"));
    EXPECT_EQ(info.serial, Variant(1));
  }
}

// ---- GetBillNoNew

TEST_F(CustBomNumberTest, TakesTheNextNumber) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53), Variant(L"KH0009-X"));
  EXPECT_EQ(trace.Events(), Concat({SetUpCalls(), {kCreateRule, L"VoteComplete"}}));
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53, false, 1, false), Variant(L"KH0010-X"));
  EXPECT_EQ(Serial(), L"9");
}

TEST_F(CustBomNumberTest, TakesSeveralNumbersWithATabBehindEach) {
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53, true, 3), Variant(L"KH0009-X\tKH0010-X\tKH0011-X\t"));
  EXPECT_EQ(Serial(), L"11");
}

TEST_F(CustBomNumberTest, FillsTheCallersRequest) {
  const Object request = MakeDictionary({{L"Mine", 5}, {L"FBillType", 99}});
  const Variant today = Today();
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53, true, 2, false, request),
            Variant(L"KH0009-X\tKH0010-X\t"));
  EXPECT_EQ(request.Get(L"Value", L"Mine"), Variant(5));
  EXPECT_EQ(request.Get(L"Value", L"FDate"), today);
  EXPECT_EQ(request.Get(L"Value", L"FBillType"), Variant(53));
  EXPECT_EQ(request.Get(L"Value", L"BillNumber"), Variant(2));
  EXPECT_EQ(request.Get(L"Value", L"AutoUpdateCurNo"), Variant(false));
  EXPECT_EQ(request.Get(L"Value", L"MoreBillID"), Variant(true));
  EXPECT_EQ(Serial(), L"8");
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53, false, 1, true, Object()), Variant(L"KH0009-X"));
}

TEST_F(CustBomNumberTest, ANumberLosesTheBlanksAroundIt) {
  database_.Execute(L"UPDATE ICBillNo SET FPreLetter = ' K', FSufLetter = ' '");
  EXPECT_EQ(custBom_.Call(L"GetBillNoNew", Dsn(), 53), Variant(L"K0009"));
}

TEST_F(CustBomNumberTest, ANumberWithoutARuleRises) {
  const Raised raised = RaisedBy([&] { custBom_.Call(L"GetBillNoNew", Dsn(), 54); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A0005u);
  EXPECT_EQ(raised.description, L"ICBillNo has no rule for the bill type 54.");
}

// ---- CopyPasteCustBom

const Texts kCopyUsers{L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo",
                       L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"};

TEST_F(CustBomNumberTest, CopiesHeaderAndLinesUnderTheNextIdAndNumber) {
  database_.Execute(
      L"UPDATE ICBOM SET FCheckerID = 6, FAudDate = '2026-01-02', FForbid = -1, FBeenChecked = 1, "
      L"FEcnInterID = 3, FAuxQty = 2, FStatus = 1, FNote = 'n' WHERE FInterID = 12");
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12", L"chs"), Variant(L"KH0009-X"));
  EXPECT_EQ(
      trace.Events(),
      Concat(
          {{L"VoteAbort"},
           SetUpCalls(),
           SetUpCalls(),
           {kCreateRule, L"VoteComplete"},
           SetUpCalls(),
           {L"Open\t" + std::wstring(kCounterQuery), L"VoteComplete"},
           kCopyUsers,
           {L"GetConnection",
            L"Execute\tINSERT INTO [ICBOM]([FBrNo], [FInterID], [FBOMNumber], [FUseStatus], [FVersion], "
            L"[FParentID], "
            L"[FItemID], [FQty], [FYield], [FCheckID], [FCheckDate], [FOperatorID], [FEnterTime], [FStatus], "
            L"[FCancellation], [FTranType], [FRoutingID], [FBomType], [FCustID], [FCustItemID], "
            L"[FAccessories], "
            L"[FNote], [FUnitID], [FAUXQTY], [FCheckerID], [FAudDate], [FEcnInterID], [FBeenChecked], "
            L"[FAuxPropID], "
            L"[FForbid])  SELECT [FBrNo], 42, 'KH0009-X', 1073, [FVersion], [FParentID], [FItemID], [FQty], "
            L"[FYield], 16394, Convert(Varchar(10),Getdate(),120), 16394, "
            L"Convert(Varchar(10),Getdate(),120), 0, "
            L"[FCancellation], [FTranType], [FRoutingID], [FBomType], [FCustID], [FCustItemID], "
            L"[FAccessories], "
            L"[FNote], [FUnitID], [FAUXQTY], 0, NULL, [FEcnInterID], [FBeenChecked], [FAuxPropID], 0 FROM "
            L"[ICBOM] "
            L"WHERE FInterID=12;  INSERT INTO [ICCustBOMChild]([FBrNo], [FInterID], [FEntryID], [FItemID], "
            L"[FQty], "
            L"[FAuxQty], [FMaterielType], [FMarshalType], [FOffSetDay], [FBackFlush], [FScrap], [FOperID], "
            L"[FMachinePos], [FStockID], [FSPID], [FPercent], [FNote], [FUnitID], [FOrgMarshalType], "
            L"[FCharacterItemId], [FBeginDay], [FEndDay], [FOperSN], [FCustBOMCode])  SELECT [FBrNo], 42, "
            L"[FEntryID], [FItemID], [FQty], [FAuxQty], [FMaterielType], [FMarshalType], [FOffSetDay], "
            L"[FBackFlush], [FScrap], [FOperID], [FMachinePos], [FStockID], [FSPID], [FPercent], [FNote], "
            L"[FUnitID], [FOrgMarshalType], [FCharacterItemId], [FBeginDay], [FEndDay], [FOperSN], "
            L"[FCustBOMCode] "
            L"FROM [ICCustBOMChild]  WHERE FInterID=12;UPDATE ICMaxNum SET FMaxNum=42 WHERE "
            L"FTableName='ICBOM';",
            L"VoteComplete"}}));
  EXPECT_EQ(
      database_.Value(L"SELECT FBOMNumber, FUseStatus, FStatus, FVersion, FParentID, FItemID, FBomType, "
                      L"FCustID, FAuxQty, "
                      L"FCheckID, FCheckDate, FOperatorID, FEnterTime, FCheckerID, FAudDate, FEcnInterID, "
                      L"FBeenChecked, FForbid, FNote FROM ICBOM WHERE FInterID = 42"),
      L"KH0009-X|1073|0|1.0|1|501|3|7|2|16394|2026-03-05|16394|2026-03-05|0|NULL|3|1|0|n");
  EXPECT_EQ(
      database_.Rows(L"SELECT FEntryID, FItemID, FQty, FCustBOMCode FROM ICCustBOMChild WHERE FInterID = 42 "
                     L"ORDER BY FEntryID"),
      (Texts{L"1|501|1|9", L"2|502|2|7", L"3|502|3|7"}));
  EXPECT_EQ(HighestId(), L"42");
  EXPECT_EQ(Serial(), L"9");
  EXPECT_EQ(database_.Value(L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName = 'ICMO'"), L"3");
}

TEST_F(CustBomNumberTest, WithoutAnIdTheNumberIsUsedUpAndNothingIsCopied) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"CopyPasteCustBom", Dsn(), L"", L"chs"), Variant(L"KH0009-X"));
  EXPECT_EQ(trace.Votes().back(), L"VoteComplete");
  EXPECT_EQ(trace.Details(L"Execute"), Texts{});
  EXPECT_EQ(Serial(), L"9");
  EXPECT_EQ(HighestId(), L"41");
  EXPECT_EQ(BomCount(), L"8");
}

TEST_F(CustBomNumberTest, WithoutACounterNothingIsCopied) {
  for (const wchar_t* change :
       {L"UPDATE ICMaxNum SET FMaxNum = 0", L"DELETE FROM ICMaxNum WHERE FTableName = 'ICBOM'"}) {
    database_.Execute(change);
    custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12", L"chs");
    EXPECT_EQ(BomCount(), L"8");
  }
  EXPECT_EQ(Serial(), L"10");
}

TEST_F(CustBomNumberTest, ACopyThatFailsRisesAndGivesTheNumberBack) {
  const Trace trace;
  const Raised raised = RaisedBy([&] { custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12 OR x", L"chs"); });
  EXPECT_TRUE(FAILED(raised.code));
  database_.Execute(L"UPDATE ICMaxNum SET FMaxNum = 2147483647");
  EXPECT_EQ(
      static_cast<unsigned>(RaisedBy([&] { custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12", L"chs"); }).code),
      0x800A0006u);
  EXPECT_EQ(BomCount(), L"8");
}

// The batch inserts header and lines and raises the counter: each of the three is made to fail by the data
// that is there.
TEST_F(CustBomNumberTest, ACopyRisesWhenAnyOfItsStatementsFails) {
  const wchar_t* const obstacles[][2] = {
      {L"CREATE UNIQUE INDEX OneItem ON ICBOM (FItemID, FStatus, FVersion, FCustID, FUseStatus)",
       L"DROP INDEX OneItem ON ICBOM"},
      {L"CREATE UNIQUE INDEX OneLine ON ICCustBOMChild (FItemID, FEntryID, FCustBOMCode)",
       L"DROP INDEX OneLine ON ICCustBOMChild"},
      {L"CREATE UNIQUE INDEX OneId ON ICMaxNum (FMaxNum)", L"DROP INDEX OneId ON ICMaxNum"}};
  database_.Execute(L"UPDATE ICMaxNum SET FMaxNum = 42 WHERE FTableName = 'ICMO'");
  // Only a copy of 12 would be alike.
  database_.Execute(L"UPDATE ICBOM SET FVersion = CONVERT(varchar, FInterID)");
  database_.Execute(L"UPDATE ICBOM SET FStatus = 0, FUseStatus = 1073 WHERE FInterID = 12");
  for (const auto& [create, drop] : obstacles) {
    SCOPED_TRACE(com::ToUtf8(create));
    database_.Execute(create);
    const Trace trace;
    const Raised raised = RaisedBy([&] { custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12", L"chs"); });
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E2Fu); // a constraint
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
    EXPECT_EQ(BomCount(), L"8");
    EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICCustBOMChild WHERE FInterID = 42"), Texts{});
    EXPECT_EQ(HighestId(), L"41");
    EXPECT_EQ(Serial(), L"8");
    database_.Execute(drop);
  }
}

// ---- SetCustBOM, GetItemFNumber, GetBOMItems

TEST_F(CustBomNumberTest, LinksAllLinesWithTheItem) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"SetCustBOM", Dsn(), L"20", L"12", L"502"), Variant(true));
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({L"VoteAbort"}, Dsn(),
                  {L"Execute\tUPDATE ICCUSTBOMCHILD SET FCustBomCode='20' WHERE FInterID=12 AND FItemID=502",
                   L"VoteComplete"}));
  EXPECT_EQ(database_.Rows(
                L"SELECT FInterID, FEntryID FROM ICCustBOMChild WHERE FCustBOMCode = 20 ORDER BY FEntryID"),
            (Texts{L"12|2", L"12|3"}));
}

TEST_F(CustBomNumberTest, LinksNothingWhenAnythingIsMissing) {
  const wchar_t* const arguments[][3] = {{L"", L"12", L"502"}, {L"20", L"", L"502"}, {L"20", L"12", L""}};
  for (const auto& [code, parent, item] : arguments) {
    const Trace trace;
    EXPECT_EQ(custBom_.Call(L"SetCustBOM", Dsn(), code, parent, item), Variant(false));
    EXPECT_EQ(trace.Events(), Texts{L"VoteAbort"});
  }
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICCustBOMChild WHERE FCustBOMCode = 20"), Texts{});
}

TEST_F(CustBomNumberTest, ReadsTheNumberOfAnItem) {
  const Trace trace;
  EXPECT_EQ(custBom_.Call(L"GetItemFNumber", Dsn(), L"502"), Variant(L"05.002"));
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, Dsn(), {L"Execute\tSELECT FNumber FROM t_ICItem WHERE FItemID=502", L"VoteComplete"}));
  EXPECT_EQ(custBom_.Call(L"GetItemFNumber", Dsn(), L"999"), Variant(L""));
}

TEST_F(CustBomNumberTest, GetBomItemsDoesNothing) {
  const Trace trace;
  EXPECT_TRUE(custBom_.Call(L"GetBOMItems").IsEmpty());
  EXPECT_EQ(trace.Events(), Texts{});
}

// ---- failure paths: what fails rises, and nothing of the call stays

struct NumberCall {
  const wchar_t* method;
  OutsideCall call;
};

class CustBomNumberFailure : public CustBomNumberTest, public testing::WithParamInterface<NumberCall> {};

TEST_P(CustBomNumberFailure, RisesUnchangedAndLeavesNothingBehind) {
  const std::wstring method = GetParam().method;
  const Fault fault(GetParam().call.kind, GetParam().call.nth);
  const Raised raised = RaisedBy([&] {
    RuleInfo info;
    if (method == L"CopyPasteCustBom")
      custBom_.Call(L"CopyPasteCustBom", Dsn(), L"12", L"chs");
    else if (method == L"SetCustBOM")
      custBom_.Call(L"SetCustBOM", Dsn(), L"20", L"12", L"502");
    else if (method == L"bGetBillNoInfo")
      info.Read(custBom_, Dsn());
    else if (method == L"GetBillNoNew")
      custBom_.Call(L"GetBillNoNew", Dsn(), 53);
    else
      custBom_.Call(L"GetItemFNumber", Dsn(), L"502");
  });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.source, L"ErpStandIn");
  EXPECT_EQ(raised.description, Fault::kText);
  EXPECT_EQ(BomCount(), L"8");
  EXPECT_EQ(HighestId(), L"41");
  EXPECT_EQ(database_.Rows(L"SELECT FInterID FROM ICCustBOMChild WHERE FCustBOMCode = 20"), Texts{});
}

std::vector<NumberCall> NumberCalls() {
  std::vector<NumberCall> calls;
  for (const wchar_t* method :
       {L"bGetBillNoInfo", L"GetBillNoNew", L"CopyPasteCustBom", L"SetCustBOM", L"GetItemFNumber"})
    for (const wchar_t* kind : {L"GetDataContext", L"BindDsn", L"GetCallerInfo", L"GetConnection"})
      calls.push_back({method, {kind, 1}});
  for (const wchar_t* method : {L"CopyPasteCustBom", L"SetCustBOM"}) {
    calls.push_back({method, {L"VoteAbort", 1}});
    calls.push_back({method, {L"Execute", 1}});
  }
  calls.push_back({L"GetItemFNumber", {L"Execute", 1}});
  calls.push_back({L"bGetBillNoInfo", {L"Open", 1}});
  calls.push_back({L"CopyPasteCustBom", {L"Open", 1}});
  calls.push_back({L"GetBillNoNew", {L"CreateServerObject", 1}});
  for (int32_t nth = 1; nth <= 3; ++nth) calls.push_back({L"CopyPasteCustBom", {L"CreateServerObject", nth}});
  return calls;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CustBomNumberFailure, testing::ValuesIn(NumberCalls()));

} // namespace
} // namespace mbom::test
