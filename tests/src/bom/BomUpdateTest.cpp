// The save hooks of BomUpdate: statements as they go over the wire, votes in their order, the data
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

constexpr wchar_t kRefusal[] = L"该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!";

const Texts kRefused{L"VoteAbort", L"VoteAbort"};

class BomUpdateTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FBomType, FStatus, FUseStatus, "
                      L"FEcnInterID, FParentID) VALUES "
                      L"(11, 'B11', 500, 0, 0, 1072, NULL, 1), (12, 'B12', 500, 1, 0, 1072, 0, 1), "
                      L"(13, 'B13', 600, 0, 0, 1072, 5, 1), (14, 'B14', 600, 3, 0, 1072, 0, 1)");
    database_.Execute(L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName, "
                      L"FCoefficient, FScale) VALUES (1, 1, 1, 'DOZ', 'dozen', 12, NULL), "
                      L"(2, 2, 1, 'SET', 'set', NULL, NULL), (3, 3, 1, 'ROLL', 'roll', 50, 0.5)");
    for (const wchar_t* lines : {L"ICBOMChild", L"ICCustBOMChild"})
      for (const wchar_t* bom : {L"11", L"12", L"13", L"14"})
        database_.Execute(
            std::wstring(L"INSERT INTO ") + lines +
            L" (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FBeginDay, FEndDay) VALUES (" + bom +
            L", 1, 901, 1, 2, 7, '2020-01-01', '2020-12-31'), (" + bom +
            L", 2, 902, 2, 2, 7, '2020-01-01', '2020-12-31'), (" + bom +
            L", 3, 903, 3, 2, 7, '2020-01-01', '2020-12-31'), (" + bom +
            L", 4, 904, 99, 2, 7, '2020-01-01', '2020-12-31')");
  }

  static Object Header(int32_t id, int32_t transType) {
    return MakeDictionary({{L"FInterID", id},
                           {L"FTransType", transType},
                           {L"StateParm", MakeDictionary({{L"FParentID", 77}})}});
  }
  Texts Headers() const {
    return database_.Rows(
        L"SELECT FInterID, FStatus, FUseStatus, FOperatorID, FEnterTime, FCheckID, FCheckDate, "
        L"FParentID FROM ICBOM ORDER BY FInterID");
  }
  Texts Lines(const wchar_t* table, int32_t id) const {
    return database_.Rows(std::wstring(L"SELECT FEntryID, CAST(FQty AS float), FBeginDay, FEndDay FROM ") +
                          table + L" WHERE FInterID = " + std::to_wstring(id) + L" ORDER BY FEntryID");
  }

  const TestDatabase database_;
};

const Texts kUntouched{L"11|0|1072|NULL|NULL|NULL|NULL|1", L"12|0|1072|NULL|NULL|NULL|NULL|1",
                       L"13|0|1072|NULL|NULL|NULL|NULL|1", L"14|0|1072|NULL|NULL|NULL|NULL|1"};

TEST_F(BomUpdateTest, ReportsItsTransactionMode) {
  EXPECT_EQ(Hosted(L"BomUpdate").Get(L"TransMode"), Variant(2));
}

// ---- BeginSave

TEST_F(BomUpdateTest, BeginSaveTakesEveryBomOfTheItemOutOfUse) {
  const Object bom = Hosted(L"BomUpdate");
  Variant save(MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", true}, {L"FItemID", 500}})}));
  Variant message(L"as it came");
  const Trace trace;
  EXPECT_TRUE(bom.Call(L"BeginSave", database_.Dsn(), Variant::Reference(save), Variant::Reference(message))
                  .AsBool());
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(), {
                                            L"Execute\tUPDATE ICBom SET FUseStatus=1073 WHERE FItemID=500",
                                            L"VoteComplete",
                                        }));
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FUseStatus FROM ICBOM ORDER BY FInterID"),
            (Texts{L"11|1073", L"12|1073", L"13|1072", L"14|1072"}));
}

TEST_F(BomUpdateTest, BeginSaveChangesNothingWithoutAUseStatusChange) {
  const Object saves[] = {
      MakeVector({}),
      MakeVector({Header(11, 0)}),
      MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", false}, {L"FItemID", 500}})}),
      MakeVector({Header(11, 0), MakeDictionary({{L"FItemID", 500}})}),
      MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", Variant::Null()}, {L"FItemID", 500}})}),
      MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", 0}, {L"FItemID", 500}})}),
  };
  for (const Object& save : saves) {
    const Object bom = Hosted(L"BomUpdate");
    const Trace trace;
    EXPECT_TRUE(bom.Call(L"BeginSave", database_.Dsn(), save, L"").AsBool());
    EXPECT_EQ(trace.Events(), AfterSetUp(database_.Dsn(), {L"VoteComplete"}));
  }
  EXPECT_EQ(Headers(), kUntouched);
}

TEST_F(BomUpdateTest, BeginSaveReadsTheItemIdAsANumber) {
  const Object bom = Hosted(L"BomUpdate");
  const Object save =
      MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", L"True"}, {L"FItemID", L" 500 "}})});
  const Trace trace;
  EXPECT_TRUE(bom.Call(L"BeginSave", database_.Dsn(), save, L"").AsBool());
  EXPECT_EQ(trace.Details(L"Execute"), Texts{L"UPDATE ICBom SET FUseStatus=1073 WHERE FItemID=500"});
}

TEST_F(BomUpdateTest, BeginSaveRaisesWhatIsWrongWithItsArguments) {
  const auto codeOf = [this](const Variant& save) {
    const Object bom = Hosted(L"BomUpdate");
    const Trace trace;
    const Raised raised = RaisedBy([&] { bom.Call(L"BeginSave", database_.Dsn(), save, L""); });
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
    return static_cast<unsigned>(raised.code);
  };
  EXPECT_EQ(codeOf(Object()), 0x800A005Bu); // no Vector at all
  EXPECT_EQ(codeOf(MakeVector({Header(11, 0), 5})), static_cast<unsigned>(DISP_E_TYPEMISMATCH));
  EXPECT_EQ(codeOf(MakeVector(
                {Header(11, 0), MakeDictionary({{L"UseStatusChange", true}, {L"FItemID", L"no number"}})})),
            static_cast<unsigned>(DISP_E_TYPEMISMATCH));
  EXPECT_EQ(codeOf(MakeDictionary({})),
            static_cast<unsigned>(DISP_E_UNKNOWNNAME)); // a Dictionary has no UBound
  EXPECT_EQ(Headers(), kUntouched);
}

// ---- EndSave

TEST_F(BomUpdateTest, EndSaveStampsAnOrdinaryBomAndComputesItsLines) {
  const Object bom = Hosted(L"BomUpdate");
  Variant save(MakeVector({Header(11, 0)}));
  Variant message(L"as it came");
  const Trace trace;
  EXPECT_TRUE(
      bom.Call(L"EndSave", database_.Dsn(), Variant::Reference(save), Variant::Reference(message)).AsBool());
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(
          database_.Dsn(),
          {
              L"Execute\tselect FEcnInterId from IcBom where FInterId = 11",
              L"CreateServerObject\tQorvaneWoskBase.SecurityInfo",
              L"GetCallerInfo",
              L"Execute\tUPDATE ICBom SET FOperatorID=16394,FEnterTime=Convert(Varchar(10),Getdate(),120) "
              L"WHERE FInterID=11",
              L"Execute\t Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,1)"
              L" as float) + cast(isnull(t3.FScale,0) as float))\r\n from ICBOMChild  t1,t_MeasureUnit "
              L"t3\r\n Where t3.FItemID = t1.FUnitID and t1.FInterID=11",
              L"Execute\tIF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = 11 AND FBomtype <> 0) \r\n    "
              L"UPDATE ICBomChild SET FBeginDay = '1900-01-01', FEndDay = '2100-01-01' WHERE FInterID = 11",
              L"VoteComplete",
          }));
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_FALSE(save.AsObject().Get(L"Item", 1).AsObject().Call(L"Exists", L"SaveRetCode").AsBool());

  EXPECT_EQ(Headers()[0], L"11|0|1072|16394|2026-03-05|NULL|NULL|1");
  // 2 x 12, 2 x (nothing counts as 1), 2 x (50 + 0.5); the unit of line 4 is not known.
  EXPECT_EQ(Lines(L"ICBOMChild", 11), (Texts{L"1|24|2020-01-01|2020-12-31", L"2|2|2020-01-01|2020-12-31",
                                             L"3|101|2020-01-01|2020-12-31", L"4|7|2020-01-01|2020-12-31"}));
  EXPECT_EQ(Lines(L"ICCustBOMChild", 11)[0], L"1|7|2020-01-01|2020-12-31");
}

TEST_F(BomUpdateTest, EndSaveOpensTheValidityOfBomsThatAreNotOrdinary) {
  EXPECT_TRUE(
      Hosted(L"BomUpdate").Call(L"EndSave", database_.Dsn(), MakeVector({Header(12, 0)}), L"").AsBool());
  EXPECT_EQ(Lines(L"ICBOMChild", 12), (Texts{L"1|24|1900-01-01|2100-01-01", L"2|2|1900-01-01|2100-01-01",
                                             L"3|101|1900-01-01|2100-01-01", L"4|7|1900-01-01|2100-01-01"}));
}

TEST_F(BomUpdateTest, EndSaveStampsACustomerBomsMakerAndParent) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_TRUE(bom.Call(L"EndSave", database_.Dsn(), MakeVector({Header(14, 53)}), L"").AsBool());
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(
          database_.Dsn(),
          {
              L"Execute\tselect FEcnInterId from IcBom where FInterId = 14",
              L"CreateServerObject\tQorvaneWoskBase.SecurityInfo",
              L"GetCallerInfo",
              L"CreateServerObject\tQorvaneWoskBase.SecurityInfo",
              L"GetCallerInfo",
              L"Execute\tUPDATE ICBom SET FOperatorID=16394,FEnterTime=Convert(Varchar(10),Getdate(),120)"
              L",FCheckID=16394,FCheckDate=Convert(Varchar(10),Getdate(),120),FUseStatus=1073 ,FParentID=77"
              L" WHERE FInterID=14",
              L"Execute\t Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,1)"
              L" as float) + cast(isnull(t3.FScale,0) as float))\r\n from ICCustBOMChild  t1,t_MeasureUnit "
              L"t3\r\n Where t3.FItemID = t1.FUnitID and t1.FInterID=14",
              L"Execute\tIF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = 14 AND FBomtype <> 0) \r\n    "
              L"UPDATE ICBomChild SET FBeginDay = '1900-01-01', FEndDay = '2100-01-01' WHERE FInterID = 14",
              L"VoteComplete",
          }));
  EXPECT_EQ(Headers()[3], L"14|0|1073|16394|2026-03-05|16394|2026-03-05|77");
  // The base quantities of the customer lines, but the validity of the ordinary ones.
  EXPECT_EQ(Lines(L"ICCustBOMChild", 14)[0], L"1|24|2020-01-01|2020-12-31");
  EXPECT_EQ(Lines(L"ICBOMChild", 14)[0], L"1|7|1900-01-01|2100-01-01");
}

TEST_F(BomUpdateTest, EndSaveRefusesABomUnderEngineeringChange) {
  const std::pair<const wchar_t*, const wchar_t*> languages[] = {
      {L"Language=chs", kRefusal},
      {L"Language=cht", L"該BOM單為工程變更生成或已通過工程變更，不能審核和反審核!"},
      {L"", L"該BOM單為工程變更生成或已通過工程變更，不能審核和反審核!"},
      {L"Language=en", L"This BOM was created by an engineering change or has passed one; it can be neither "
                       L"audited nor un-audited!"},
  };
  for (const auto& [language, text] : languages) {
    const std::wstring dsn = database_.Dsn(language);
    const Object bom = Hosted(L"BomUpdate");
    Variant save(MakeVector({Header(13, 0)}));
    Variant message(L"");
    const Trace trace;
    EXPECT_FALSE(bom.Call(L"EndSave", dsn, Variant::Reference(save), Variant::Reference(message)).AsBool());
    EXPECT_EQ(trace.Events(),
              AfterSetUp(dsn, {
                                  L"Execute\tselect FEcnInterId from IcBom where FInterId = 13",
                                  L"LoadString\t" + std::wstring(kRefusal),
                                  L"VoteAbort",
                              }));
    EXPECT_EQ(message, Variant(text));
    const Object header = save.AsObject().Get(L"Item", 1).AsObject();
    EXPECT_EQ(header.Get(L"Value", L"SaveRetCode").AsLong(), 99);
  }
  EXPECT_EQ(Headers(), kUntouched);
}

TEST_F(BomUpdateTest, EndSaveWritesItsMessageThroughATypedReference) {
  BSTR message = SysAllocString(L"");
  VARIANT reference{};
  reference.vt = VT_BYREF | VT_BSTR;
  reference.pbstrVal = &message;
  IDispatch* save = com::Ptr<IDispatch>(MakeVector({Header(13, 0)}).pointer()).Detach();
  VARIANT saveReference{};
  saveReference.vt = VT_BYREF | VT_DISPATCH;
  saveReference.ppdispVal = &save;
  EXPECT_FALSE(Hosted(L"BomUpdate")
                   .Call(L"EndSave", database_.Dsn(L"Language=chs"), Variant::Attach(saveReference),
                         Variant::Attach(reference))
                   .AsBool());
  EXPECT_STREQ(message, kRefusal);
  SysFreeString(message);
  save->Release();
}

TEST_F(BomUpdateTest, EndSaveOfAMissingBomFailsWithoutAMessage) {
  const Object bom = Hosted(L"BomUpdate");
  Variant message(L"as it came");
  const Object save = MakeVector({Header(4711, 0)});
  const Trace trace;
  EXPECT_FALSE(bom.Call(L"EndSave", database_.Dsn(), save, Variant::Reference(message)).AsBool());
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(), {
                                            L"Execute\tselect FEcnInterId from IcBom where FInterId = 4711",
                                            L"VoteAbort",
                                        }));
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_FALSE(save.Get(L"Item", 1).AsObject().Call(L"Exists", L"SaveRetCode").AsBool());
}

TEST_F(BomUpdateTest, EndSaveFailsOnArgumentsThatAreNone) {
  const Variant saves[] = {Object(), MakeVector({}), MakeVector({L"no dictionary"}),
                           MakeVector({MakeDictionary({})}),
                           MakeVector({MakeDictionary({{L"FInterID", L"no number"}})}),
                           MakeVector({MakeDictionary({{L"FInterID", 11}, {L"FTransType", L"none"}})}),
                           // Type 53 needs the state.
                           MakeVector({MakeDictionary({{L"FInterID", 11}, {L"FTransType", 53}})})};
  for (const Variant& save : saves) {
    const Object bom = Hosted(L"BomUpdate");
    const Trace trace;
    EXPECT_FALSE(bom.Call(L"EndSave", database_.Dsn(), save, L"").AsBool());
    EXPECT_EQ(trace.Votes(), kRefused);
  }
  EXPECT_EQ(Headers(), kUntouched);
}

TEST_F(BomUpdateTest, EndSaveFailsOnADescriptorThatBindsNothing) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  EXPECT_FALSE(bom.Call(L"EndSave", L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db",
                        MakeVector({Header(11, 0)}), L"")
                   .AsBool());
  EXPECT_EQ(trace.Votes(), kRefused);
}

// ---- failure paths

class EndSaveFailure : public BomUpdateTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(EndSaveFailure, LeavesNothingBehindUnderTheHost) {
  const Object bom = Hosted(L"BomUpdate");
  Variant save(MakeVector({Header(14, 53)}));
  Variant message(L"as it came");
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_FALSE(
      bom.Call(L"EndSave", database_.Dsn(), Variant::Reference(save), Variant::Reference(message)).AsBool());
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_EQ(Headers(), kUntouched);
  EXPECT_EQ(Lines(L"ICBOMChild", 14)[0], L"1|7|2020-01-01|2020-12-31");
  EXPECT_EQ(Lines(L"ICCustBOMChild", 14)[0], L"1|7|2020-01-01|2020-12-31");
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, EndSaveFailure,
                         testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                         OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetCallerInfo", 1},
                                         OutsideCall{L"GetConnection", 1}, OutsideCall{L"Execute", 1},
                                         OutsideCall{L"CreateServerObject", 1},
                                         OutsideCall{L"GetCallerInfo", 2},
                                         OutsideCall{L"CreateServerObject", 2},
                                         OutsideCall{L"GetCallerInfo", 3}, OutsideCall{L"Execute", 2},
                                         OutsideCall{L"Execute", 3}, OutsideCall{L"Execute", 4},
                                         OutsideCall{L"VoteComplete", 1}));

TEST_F(BomUpdateTest, EndSaveWithoutAHostKeepsWhatRanBeforeTheFailure) {
  const Object bom = Unhosted(L"BomUpdate");
  const Fault fault(L"Execute", 4);
  EXPECT_FALSE(bom.Call(L"EndSave", database_.Dsn(), MakeVector({Header(12, 0)}), L"").AsBool());
  EXPECT_EQ(Headers()[1], L"12|0|1072|16394|2026-03-05|NULL|NULL|1");
  EXPECT_EQ(Lines(L"ICBOMChild", 12)[0], L"1|24|2020-01-01|2020-12-31");
}

TEST_F(BomUpdateTest, EndSaveRefusesEvenWhenTheTextCannotBeLoaded) {
  Variant save(MakeVector({Header(13, 0)}));
  Variant message(L"as it came");
  const Object bom = Hosted(L"BomUpdate");
  const Fault fault(L"LoadString");
  EXPECT_FALSE(
      bom.Call(L"EndSave", database_.Dsn(), Variant::Reference(save), Variant::Reference(message)).AsBool());
  EXPECT_EQ(message, Variant(L""));
  EXPECT_EQ(save.AsObject().Get(L"Item", 1).AsObject().Get(L"Value", L"SaveRetCode").AsLong(), 99);
}

TEST_F(BomUpdateTest, ARefusalWhoseVoteFailsVotesAgain) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Fault fault(L"VoteAbort", 2);
  EXPECT_EQ(bom.Call(L"EndSave", database_.Dsn(), MakeVector({Header(13, 0)}), L""), Variant(false));
  EXPECT_EQ(trace.Votes(), (Texts(3, L"VoteAbort")));
}

TEST_F(BomUpdateTest, ARefusalIsNoErrorWhenItsVotesFail) {
  Variant save(MakeVector({Header(13, 0)}));
  Variant message(L"");
  const Object bom = Hosted(L"BomUpdate");
  const Fault fault(L"VoteAbort", 2);
  const Fault again(L"VoteAbort", 3);
  EXPECT_EQ(bom.Call(L"EndSave", database_.Dsn(L"Language=chs"), Variant::Reference(save),
                     Variant::Reference(message)),
            Variant(false));
  EXPECT_EQ(message, Variant(kRefusal));
  EXPECT_EQ(save.AsObject().Get(L"Item", 1).AsObject().Get(L"Value", L"SaveRetCode").AsLong(), 99);
}

TEST_F(BomUpdateTest, AFailingVoteAfterAFailureRises) {
  const Object bom = Hosted(L"BomUpdate");
  const Fault statement(L"Execute", 2);
  const Fault vote(L"VoteAbort", 2);
  const Raised raised =
      RaisedBy([&] { bom.Call(L"EndSave", database_.Dsn(), MakeVector({Header(11, 0)}), L""); });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.description, Fault::kText);
}

class RisingFailure : public BomUpdateTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(RisingFailure, ReachesTheCallerUnchangedWithTheUnitAborted) {
  const std::wstring method = GetParam().method;
  const OutsideCall& call = GetParam().call;
  const Object bom = Hosted(L"BomUpdate");
  const Object save =
      MakeVector({Header(11, 0), MakeDictionary({{L"UseStatusChange", true}, {L"FItemID", 500}})});
  const Trace trace;
  const Fault fault(call.kind, call.nth);
  const Raised raised = RaisedBy([&] {
    if (method == L"BeginSave")
      bom.Call(L"BeginSave", database_.Dsn(), save, L"");
    else
      bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B11");
  });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.source, L"ErpStandIn");
  EXPECT_EQ(raised.description, Fault::kText);
  EXPECT_EQ(trace.Votes().front(), L"VoteAbort");
  // A vote that failed was not cast: only then may the work before it stay.
  if (std::wstring(call.kind) != L"VoteComplete") {
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
  EXPECT_EQ(Headers(), kUntouched);
}

constexpr OutsideCall kSetUpCalls[] = {
    {L"VoteAbort", 1},     {L"GetDataContext", 1}, {L"BindDsn", 1},      {L"GetCallerInfo", 1},
    {L"GetConnection", 1}, {L"Execute", 1},        {L"VoteComplete", 1},
};

std::vector<FailingCall> RisingUpdates() {
  std::vector<FailingCall> methods;
  for (const wchar_t* name : {L"BeginSave", L"UpdateIcBomStatus"})
    for (const OutsideCall& call : kSetUpCalls) methods.push_back({name, call});
  return methods;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, RisingFailure, testing::ValuesIn(RisingUpdates()));

// ---- UpdateIcBomStatus

TEST_F(BomUpdateTest, UpdateIcBomStatusAuditsByNumberAndReturnsFalse) {
  database_.Execute(L"UPDATE ICBOM SET FUseStatus = 1073");
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Variant result = bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"B12");
  EXPECT_EQ(result, Variant(false));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database_.Dsn(),
                       {
                           L"Execute\tUPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='B12' ",
                           L"VoteComplete",
                       }));
  EXPECT_EQ(database_.Rows(L"SELECT FInterID, FStatus, FUseStatus FROM ICBOM ORDER BY FInterID"),
            (Texts{L"11|0|1073", L"12|1|1072", L"13|0|1073", L"14|0|1073"}));
}

TEST_F(BomUpdateTest, UpdateIcBomStatusOfAnUnknownNumberReturnsFalseToo) {
  EXPECT_EQ(Hosted(L"BomUpdate").Call(L"UpdateIcBomStatus", database_.Dsn(), L"none"), Variant(false));
  EXPECT_EQ(Headers(), kUntouched);
}

TEST_F(BomUpdateTest, UpdateIcBomStatusRaisesTheServersErrorForAQuote) {
  const Object bom = Hosted(L"BomUpdate");
  const Trace trace;
  const Raised raised = RaisedBy([&] { bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"O'Neil"); });
  EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E14u);
  EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
  EXPECT_FALSE(raised.description.empty());
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  EXPECT_EQ(Headers(), kUntouched);
}

TEST_F(BomUpdateTest, AbortIsVotedOnTheContextOfTheCallBefore) {
  // The first vote goes to the context that the object holds from its making; the set-up replaces that
  // context.
  const Trace trace;
  const Object bom = Unhosted(L"BomUpdate");
  EXPECT_EQ(trace.Events(), (Texts{L"GetDataContext", L"GetCallerInfo"}));
  trace.Clear();
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"none");
  bom.Call(L"UpdateIcBomStatus", database_.Dsn(), L"none");
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteComplete", L"VoteAbort", L"VoteComplete"}));
}

} // namespace
} // namespace mbom::test
