// The save hooks and the checks of CEcnInfo: statements as they go over the wire, votes in their order, the
// data afterwards, results, in/out arguments and messages.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/src/ecn/Notices.h"
#include "tests/support/Calls.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

const Texts kRefused{L"VoteAbort", L"VoteAbort"};

constexpr wchar_t kDuplicates[] =
    L"--set nocount on\r\n"
    L"select Top 1 t2.FEntryId as FChildID, t3.FEntryID as FEntryID, \r\n"
    L"t2.FBeginDay as FEcnBeginDay, t2.FEndDay as FEcnEndDay, t3.FBeginDay as FBomBeginDay, t3.FEndDay as "
    L"FBomEndDay \r\n"
    L"from IcEcn t1 \r\n"
    L"left join IcEcnEntry t2 on t1.FInterID = t2.FInterID \r\n"
    L"left join ICBomChild t3 on t1.FBomInterID = t3.FInterID \r\n"
    L"where t1.FInterId = 77 and t2.FChangeType = 11021 and t2.Fitemid=t3.Fitemid and t2.FOperID = "
    L"t3.FOperID and t2.FMachinePos = t3.FMachinePos \r\n"
    L" and t2.FMaterielType = t3.FMaterielType and t2.FMarshalType = t3.FMarshalType and t2.FOffSetDay = "
    L"t3.FOffSetDay ";

constexpr wchar_t kLinesLeft[] =
    L"--检查变更后ECN表体是否物料全部被删除，物料全部被删除的操作不能被容许 \r\n"
    L" select (select count(*) as FECNCount  from icecnentry t1 join icecn t2 on t2.FInterID = "
    L"t1.FInterID\r\n"
    L" Where  t1.fchangetype=11023 and ( select count(*) from icecnentry where FInterID = t2.FInterID and "
    L"FChangeType=11021)=0 \r\n"
    L" and t2.finterid=77)-(select count(*) as fbomcount  from icbomchild t1  join icecn t2 on "
    L"t1.finterid=t2.fbominterid   where t2.finterid=77)";

constexpr wchar_t kPercentSum[] =
    L"SET NOCOUNT ON \r\n"
    L"IF EXISTS (SELECT 1 FROM ICEcn t1 INNER JOIN IcBom t2 ON t1.FBomInterID = t2.FInterId WHERE "
    L"t1.FInterID = 77 AND t2.FBomType IN (2,4)) \r\n"
    L"BEGIN \r\n"
    L"     SELECT FSumFPercent_BOM + FSumFPercent_ECN FROM \r\n"
    L"     (SELECT ISNULL(SUM(ISNULL(b1.FPercent,0)),0) AS FSumFPercent_BOM FROM ICEcn a1 INNER JOIN "
    L"ICBomChild b1 ON a1.FBomInterID = b1.FInterId \r\n"
    L"     WHERE a1.FInterID = 77 AND FEntryID NOT IN \r\n"
    L"     (SELECT t3.FEntryId FROM ICECN t1 \r\n"
    L"     INNER JOIN ICBom t2 ON t1.FBomInterID = t2.FInterID \r\n"
    L"     INNER JOIN ICBomChild t3 ON t2.FInterId = t3.FInterID \r\n"
    L"     INNER JOIN ICEcnEntry t4 ON t3.FEntryID = t4.FChildID AND t1.FInterID = t4.FInterID \r\n"
    L"     WHERE t1.FInterID = 77)) v1 \r\n"
    L", \r\n"
    L"     (SELECT ISNULL(SUM(ISNULL(t2.FPercent,0)),0) AS FSumFPercent_ECN FROM ICEcn t1 INNER JOIN "
    L"ICEcnEntry t2 ON t1.FInterId = t2.FInterID \r\n"
    L"     WHERE t1.FInterId = 77 AND t2.FChangeType <> 11023 ) v2 \r\n"
    L"End \r\n"
    L"ELSE \r\n"
    L"     SELECT -1 ";

constexpr wchar_t kSnapshot[] =
    L"UPDATE t2 \r\n"
    L"     SET FOldItemID = t3.FItemID, FOldQty = t3.FQty, FOldAuxQty = t3.FAuxQty, FOldUnitID = t3.FUnitID, "
    L"FOldScrap = t3.FScrap, \r\n"
    L"     FOldOperSN = t3.FOperSN, FOldOperID = t3.FOperID, FOldMachinePos = t3.FMachinePos, "
    L"FOldMaterielType = t3.FMaterielType, \r\n"
    L"     FOldMarshalType = t3.FMarshalType, FOldBeginDay = t3.FBeginday, FOldEndDay = t3.FEndDay, "
    L"FOldPercent = t3.FPercent, \r\n"
    L"     FOldOffSetDay = t3.FOffSetDay, FOldBackFlush = t3.FBackFlush, FOldStockID = t3.FStockID, FOLdSPID "
    L"= t3.FSPID, \r\n"
    L"     FOldSupply = t3.FSupply, FOldNote = t3.FNote \r\n"
    L"FROM ICEcn t1 \r\n"
    L"INNER JOIN ICEcnEntry t2 ON t1.FInterID = t2.FInterID \r\n"
    L"INNER JOIN ICBomChild t3 ON t1.FBomInterID = t3.FInterID AND t2.FChildID = t3.FEntryID \r\n"
    L"WHERE t1.FInterID = 77";

constexpr wchar_t kAllDeleted[] = L"不能删除BOM表体的所有物料!";

// What EndSave did to its in/out arguments.
struct Saved {
  bool result = false;
  Variant retCode; // Empty where there is none
  std::wstring message;
};

class CEcnInfoTest : public testing::Test, protected Notices {
 protected:
  static Object Save(int32_t id) { return MakeVector({MakeDictionary({{L"FInterID", id}})}); }

  Saved EndSave(const std::wstring& language = L"Language=chs", int32_t id = 77) const {
    Variant save(Save(id));
    Variant message(L"as it came");
    Saved saved;
    saved.result =
        Hosted(L"CEcnInfo")
            .Call(L"EndSave", database.Dsn(language), Variant::Reference(save), Variant::Reference(message))
            .AsBool();
    saved.message = message.AsText();
    saved.retCode = save.AsObject().Get(L"Item", 1).AsObject().Get(L"Value", L"SaveRetCode");
    return saved;
  }
  void ExpectAccepted() const {
    const Saved saved = EndSave();
    EXPECT_TRUE(saved.result);
    EXPECT_TRUE(saved.retCode.IsEmpty());
    EXPECT_EQ(saved.message, L"as it came");
  }
  void ExpectRefused(const std::wstring& message, const std::wstring& language = L"Language=chs") const {
    const Saved saved = EndSave(language);
    EXPECT_FALSE(saved.result);
    EXPECT_EQ(saved.retCode, Variant(static_cast<int16_t>(99)));
    EXPECT_EQ(saved.message, message);
    EXPECT_EQ(Snapshots(), (Texts{L"1|NULL", L"2|NULL", L"3|NULL"}));
  }
  // A failure has no message and no code.
  void ExpectFailed(const Variant& save) const {
    const Object ecn = Hosted(L"CEcnInfo");
    Variant message(L"as it came");
    const Trace trace;
    EXPECT_EQ(ecn.Call(L"EndSave", database.Dsn(), save, Variant::Reference(message)), Variant(false));
    EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
    EXPECT_EQ(message, Variant(L"as it came"));
    EXPECT_EQ(Snapshots(), (Texts{L"1|NULL", L"2|NULL", L"3|NULL"}));
  }
  Texts Snapshots() const {
    return database.Rows(L"SELECT FEntryID, FOldItemID FROM IcEcnEntry WHERE FInterID = 77 ORDER BY 1");
  }
  // The added line becomes like line 1 of the BOM.
  void MakeDuplicate() const {
    database.Execute(L"UPDATE IcEcnEntry SET FItemID = 201, FOperID = 40, FMachinePos = 'P1', FOffSetDay = 3 "
                     L"WHERE FInterID = 77 AND FEntryID = 1");
  }
  void SetEcnRight(const wchar_t* value) const {
    database.Execute(L"DELETE FROM t_SystemProfile WHERE FKey = 'EnableEcnRight'");
    database.Execute(L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('IC', "
                     L"'EnableEcnRight', " +
                     std::wstring(value) + L")");
  }
  void SetValidity(const std::wstring& begin, const std::wstring& end) const {
    database.Execute(L"UPDATE IcEcnEntry SET FBeginDay = '" + begin + L"', FEndDay = '" + end +
                     L"' WHERE FInterID = 77 AND FEntryID = 1");
  }
};

Texts AfterReading(const std::wstring& dsn, const Texts& events) {
  return AroundSetUp({}, dsn, events);
}

TEST_F(CEcnInfoTest, ReportsItsTransactionMode) {
  EXPECT_EQ(Hosted(L"CEcnInfo").Get(L"TransMode"), Variant(2));
}

// ---- BeginSave

TEST_F(CEcnInfoTest, BeginSaveOnlyVotes) {
  for (const std::wstring& dsn : {database.Dsn(), std::wstring(L"no descriptor")}) {
    const Object ecn = Hosted(L"CEcnInfo");
    Variant save{Object()};
    Variant message(L"as it came");
    const Trace trace;
    EXPECT_EQ(ecn.Call(L"BeginSave", dsn, Variant::Reference(save), Variant::Reference(message)),
              Variant(true));
    EXPECT_EQ(trace.Events(), Texts{L"VoteComplete"});
    EXPECT_EQ(save, Variant(Object()));
    EXPECT_EQ(message, Variant(L"as it came"));
  }
}

// ---- EndSave

TEST_F(CEcnInfoTest, EndSaveChecksTheNoticeAndKeepsTheOldValues) {
  const Object ecn = Hosted(L"CEcnInfo");
  Variant save(Save(77));
  Variant message(L"as it came");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"EndSave", database.Dsn(), Variant::Reference(save), Variant::Reference(message)),
            Variant(true));
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database.Dsn(),
                       {std::wstring(L"Execute\t") + kDuplicates, std::wstring(L"Execute\t") + kLinesLeft,
                        std::wstring(L"Execute\t") + kPercentSum, std::wstring(L"Execute\t") + kSnapshot,
                        L"VoteComplete"}));
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_FALSE(save.AsObject().Get(L"Item", 1).AsObject().Call(L"Exists", L"SaveRetCode").AsBool());
  // The added line refers to no line; what the notice itself says of the lines does not matter.
  EXPECT_EQ(
      database.Rows(
          L"SELECT FEntryID, FOldItemID, FOldQty, FOldAuxQty, FOldUnitID, FOldScrap, FOldOperSN, FOldOperID, "
          L"FOldMachinePos, FOldMaterielType, FOldMarshalType, FOldBeginDay, FOldEndDay, FOldPercent, "
          L"FOldOffSetDay, FOldBackFlush, FOldStockID, FOLdSPID, FOldSupply, FOldNote FROM IcEcnEntry ORDER "
          L"BY FEntryID"),
      (Texts{L"1|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|"
             L"NULL",
             L"2|203|3|3|102|0|30|40|P1|371|385|2026-03-01|2026-12-31|100|0|1058|52|62|0|第三行",
             L"3|202|2|2|101|0|20|40|P1|371|385|2026-03-01|2026-12-31|100|0|1059|51|61|0|第二行"}));
}

TEST_F(CEcnInfoTest, EndSaveReadsTheIdAsANumber) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Object save = MakeVector({MakeDictionary({{L"FInterID", L" 77 "}})});
  EXPECT_TRUE(ecn.Call(L"EndSave", database.Dsn(), save, L"").AsBool());
  EXPECT_EQ(trace.Details(L"Execute")[0], kDuplicates);
}

TEST_F(CEcnInfoTest, ADuplicateLineIsRefusedWhileTheSwitchIsOff) {
  MakeDuplicate();
  const std::wstring english = L"Line [ 1 ] of the bill has the same item as line [ 1 ] of the original BOM, "
                               L"with the same operation, work position, component type, lead-time offset "
                               L"and configuration attribute. It cannot be saved!";
  const std::wstring simplified = L"单据体第[ 1 ] 行与原BOM中第[ 1 ] "
                                  L"物料相同，且工序,工位,子项类型,提前期偏置，配置属性相同,不能保存!";
  const std::wstring traditional = L"單據體第[ 1 ] 行與原BOM中第[ 1 ] "
                                   L"物料相同，且工序,工位,子項類型,提前期偏置，配置屬性相同,不能保存!";
  // The setting is missing.
  ExpectRefused(simplified);
  ExpectRefused(traditional, L"Language=cht");
  ExpectRefused(traditional, L"");
  ExpectRefused(english, L"Language=en");
  for (const wchar_t* off : {L"NULL", L"'0'", L"'False'"}) {
    SetEcnRight(off);
    ExpectRefused(simplified);
  }
}

TEST_F(CEcnInfoTest, ADuplicateLineEndsTheChecks) {
  MakeDuplicate();
  const std::wstring dsn = database.Dsn(L"Language=chs");
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_FALSE(ecn.Call(L"EndSave", dsn, Save(77), L"").AsBool());
  EXPECT_EQ(
      trace.Events(),
      AfterSetUp(dsn, {std::wstring(L"Execute\t") + kDuplicates,
                       L"CreateServerObject\tQorvaneWoskBase.SystemProfile", L"LoadString\t单据体第[",
                       L"LoadString\t] 行与原BOM中第[",
                       L"LoadString\t] 物料相同，且工序,工位,子项类型,提前期偏置，配置属性相同,不能保存!",
                       L"VoteAbort"}));
}

TEST_F(CEcnInfoTest, ALineIsADuplicateOnlyInEveryRespect) {
  for (const wchar_t* difference : {L"FItemID = 400", L"FOperID = 41", L"FMachinePos = 'P2'",
                                    L"FMaterielType = 372", L"FMarshalType = 386", L"FOffSetDay = 3.5"}) {
    MakeDuplicate();
    database.Execute(L"UPDATE IcEcnEntry SET " + std::wstring(difference) +
                     L" WHERE FInterID = 77 AND FEntryID = 1");
    ExpectAccepted();
    database.Execute(L"UPDATE IcEcnEntry SET FMaterielType = 371, FMarshalType = 385 WHERE FInterID = 77");
  }
  // Neither an altered line nor a line of another BOM counts.
  MakeDuplicate();
  database.Execute(L"UPDATE IcEcnEntry SET FChangeType = 11022, FChildID = 1 WHERE FEntryID = 1");
  ExpectAccepted();
  database.Execute(L"UPDATE IcEcnEntry SET FChangeType = 11021, FChildID = 0 WHERE FEntryID = 1");
  database.Execute(L"UPDATE IcEcn SET FBomInterID = 11");
  database.Execute(L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID) VALUES (11, 1, 999)");
  ExpectAccepted();
}

TEST_F(CEcnInfoTest, WithTheSwitchOnOnlyCommonDaysAreRefused) {
  MakeDuplicate(); // line 1 of the BOM is valid from 2026-03-01 to 2026-12-31
  for (const wchar_t* on : {L"'1'", L"'True'", L"'-1'"}) {
    SetEcnRight(on);
    SetValidity(L"2026-01-01", L"2026-02-28");
    ExpectAccepted();
    SetValidity(L"2027-01-01", L"2100-01-01");
    ExpectAccepted();
  }
  database.Execute(L"UPDATE IcEcnEntry SET FOldItemID = NULL");
  // One day in common is enough, at either end.
  SetValidity(L"2026-01-01", L"2026-03-01");
  ExpectRefused(L"单据体第[1]行与原BOM中第[1]行物料的代码,工序,工位,子项类型,提前期偏置，配置属性相同时，"
                L"有效期不能重叠，请检查。\r\n"
                L"单据体第[1]行物料有效期为 [2026-01-01] 至 [2026-03-01]\r\n"
                L"原BOM第[1]行物料有效期为 [2026-03-01] 至 [2026-12-31]");
  ExpectRefused(L"單據體第[1]行與原BOM中第[1]行物料的代碼,工序,工位,子項類型,提前期偏置，配置屬性相同時，"
                L"有效期不能重疊，請檢查。\r\n"
                L"單據體第[1]行物料有效期為 [2026-01-01] 至 [2026-03-01]\r\n"
                L"原BOM第[1]行物料有效期為 [2026-03-01] 至 [2026-12-31]",
                L"Language=cht");
  ExpectRefused(L"Line [1] of the bill and line [1] of the original BOM have the same item, operation, work "
                L"position, component type, lead-time offset and configuration attribute: their validity "
                L"periods must not overlap. Please check.\r\n"
                L"The item in line [1] of the bill is valid from [2026-01-01] to [2026-03-01]\r\n"
                L"The item in line [1] of the original BOM is valid from [2026-03-01] to [2026-12-31]",
                L"Language=en");
  SetValidity(L"2026-12-31", L"2026-12-31");
  EXPECT_FALSE(EndSave().result);
  SetValidity(L"2026-05-01", L"2026-05-02");
  EXPECT_FALSE(EndSave().result);
  SetValidity(L"1900-01-01", L"2100-01-01");
  EXPECT_FALSE(EndSave().result);
}

TEST_F(CEcnInfoTest, ADuplicateThatDoesNotOverlapMayStillBeRefusedByALaterCheck) {
  MakeDuplicate(); // line 1 of the BOM is valid from 2026-03-01 to 2026-12-31
  SetEcnRight(L"'1'");
  SetValidity(L"2027-01-01", L"2100-01-01");
  // A feature BOM whose line 1, the only untouched one, has 60; the added and the altered line have 20
  // and 10.
  database.Execute(L"UPDATE ICBOM SET FBomType = 2 WHERE FInterID = 10");
  database.Execute(L"UPDATE ICBOMChild SET FPercent = 60 WHERE FInterID = 10 AND FEntryID = 1");
  database.Execute(L"UPDATE IcEcnEntry SET FPercent = 20 WHERE FEntryID = 1");
  database.Execute(L"UPDATE IcEcnEntry SET FPercent = 10 WHERE FEntryID = 2");
  const Saved saved = EndSave();
  EXPECT_FALSE(saved.result);
  EXPECT_EQ(saved.retCode, Variant(static_cast<int16_t>(99)));
  EXPECT_EQ(saved.message, L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%, 当前值为:90");
  database.Execute(L"UPDATE IcEcnEntry SET FPercent = 30 WHERE FEntryID = 1");
  ExpectAccepted();
}

TEST_F(CEcnInfoTest, ASwitchThatIsNoBooleanIsAFailure) {
  MakeDuplicate();
  SetEcnRight(L"'maybe'");
  ExpectFailed(Save(77));
}

TEST_F(CEcnInfoTest, ANoticeThatDeletesEveryLineIsRefused) {
  database.Execute(L"UPDATE IcEcnEntry SET FChangeType = 11023, FChildID = FEntryID");
  ExpectRefused(kAllDeleted);
  ExpectRefused(L"不能刪除BOM表體的所有物料!", L"Language=cht");
  ExpectRefused(L"Not all lines of the BOM may be deleted!", L"Language=en");
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_FALSE(ecn.Call(L"EndSave", database.Dsn(L"Language=chs"), Save(77), L"").AsBool());
  EXPECT_EQ(trace.Events(),
            AfterSetUp(database.Dsn(L"Language=chs"),
                       {std::wstring(L"Execute\t") + kDuplicates, std::wstring(L"Execute\t") + kLinesLeft,
                        std::wstring(L"LoadString\t") + kAllDeleted, L"VoteAbort"}));
}

TEST_F(CEcnInfoTest, ANoticeThatDeletesEveryLineButAddsOneIsAccepted) {
  database.Execute(L"UPDATE IcEcnEntry SET FChangeType = 11023, FChildID = FEntryID");
  database.Execute(L"INSERT INTO IcEcnEntry (FInterID, FEntryID, FChildID, FChangeType, FItemID) VALUES "
                   L"(77, 4, 0, 11021, 400)");
  ExpectAccepted();
}

TEST_F(CEcnInfoTest, ABomWithoutLinesHasNoneLeft) {
  database.Execute(L"UPDATE IcEcn SET FBomInterID = 11");
  database.Execute(L"DELETE FROM IcEcnEntry WHERE FChangeType <> 11022");
  EXPECT_EQ(EndSave().message, kAllDeleted);
  EXPECT_EQ(EndSave(L"Language=chs", 4711).message, kAllDeleted); // nor has a notice that does not exist
}

TEST_F(CEcnInfoTest, ThePercentagesOfPlanningAndFeatureBomsMustAddUp) {
  // 60 in the untouched line 1; the altered and the added line bring 30, and the deleted line does not count.
  database.Execute(L"UPDATE ICBOMChild SET FPercent = CASE FEntryID WHEN 1 THEN 60 ELSE 20 END");
  database.Execute(L"UPDATE IcEcnEntry SET FPercent = CASE FEntryID WHEN 1 THEN 10 WHEN 2 THEN 20 ELSE 77 "
                   L"END");
  for (const wchar_t* type : {L"2", L"4"}) {
    database.Execute(L"UPDATE ICBOM SET FBomType = " + std::wstring(type) + L" WHERE FInterID = 10");
    ExpectRefused(L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%, 当前值为:90");
    ExpectRefused(L"規劃類、特徵類物料的BOM子項計劃百分比之和必須等於100%, 當前值為:90", L"Language=cht");
    ExpectRefused(L"The planned percentages in the BOM of a planning or feature item must add up to 100%, "
                  L"but the current value is: 90",
                  L"Language=en");
  }
  for (const wchar_t* type : {L"0", L"1", L"3"}) {
    database.Execute(L"UPDATE ICBOM SET FBomType = " + std::wstring(type) + L" WHERE FInterID = 10");
    ExpectAccepted();
  }
}

TEST_F(CEcnInfoTest, ThePercentagesAreAddedExactly) {
  const auto set = [this](const wchar_t* untouched, const wchar_t* added, const wchar_t* altered) {
    database.Execute(L"UPDATE ICBOM SET FBomType = 2 WHERE FInterID = 10");
    database.Execute(L"UPDATE ICBOMChild SET FPercent = " + std::wstring(untouched));
    database.Execute(L"UPDATE IcEcnEntry SET FOldItemID = NULL, FPercent = CASE FEntryID WHEN 1 THEN " +
                     std::wstring(added) + L" ELSE " + altered + L" END");
  };
  set(L"33.3333333333", L"33.3333333333", L"33.3333333334");
  ExpectAccepted();
  set(L"33.3333333333", L"33.3333333333", L"33.3333333333");
  ExpectRefused(L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%, 当前值为:99.9999999999");
  set(L"33.3333333333", L"33.3333333334", L"33.3333333334");
  ExpectRefused(L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%, 当前值为:100.0000000001");
  // Three times 21.4 and 35.8: 99.99999999999999 as doubles.
  database.Execute(L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID) VALUES (10, 4, 204), (10, 5, 205)");
  set(L"21.4", L"0", L"35.8");
  ExpectAccepted();
  database.Execute(L"DELETE FROM ICBOMChild WHERE FEntryID > 3");
  set(L"100.5", L"0", L"0");
  ExpectRefused(L"规划类、特征类物料的BOM子项计划百分比之和必须等于100%, 当前值为:100.5");
}

TEST_F(CEcnInfoTest, EndSaveFailsOnArgumentsThatAreNone) {
  const Variant saves[] = {Object(),
                           MakeVector({}),
                           MakeVector({5}),
                           MakeVector({MakeDictionary({{L"FInterID", L"no number"}})}),
                           MakeVector({MakeDictionary({{L"FInterID", Variant::Null()}})}),
                           MakeDictionary({{L"FInterID", 77}})};
  for (const Variant& save : saves) ExpectFailed(save);
}

TEST_F(CEcnInfoTest, AMissingIdIsThatOfNoNotice) {
  const Object save = MakeVector({MakeDictionary({})});
  Variant message(L"");
  EXPECT_EQ(
      Hosted(L"CEcnInfo").Call(L"EndSave", database.Dsn(L"Language=chs"), save, Variant::Reference(message)),
      Variant(false));
  EXPECT_EQ(message, Variant(kAllDeleted));
}

TEST_F(CEcnInfoTest, EndSaveFailsOnADescriptorThatBindsNothing) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const std::wstring dsn = L"Provider=Embedded;Data Source=Z:\\no\\such\\file.db";
  EXPECT_EQ(ecn.Call(L"EndSave", dsn, Save(77), L""), Variant(false));
  EXPECT_EQ(trace.Votes(), kRefused);
}

class EcnEndSaveFailure : public CEcnInfoTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(EcnEndSaveFailure, LeavesNothingBehindUnderTheHost) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Object save = Save(77);
  Variant message(L"as it came");
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_EQ(ecn.Call(L"EndSave", database.Dsn(), save, Variant::Reference(message)), Variant(false));
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(message, Variant(L"as it came"));
  EXPECT_FALSE(save.Get(L"Item", 1).AsObject().Call(L"Exists", L"SaveRetCode").AsBool());
  EXPECT_EQ(Snapshots(), (Texts{L"1|NULL", L"2|NULL", L"3|NULL"}));
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, EcnEndSaveFailure,
                         testing::Values(OutsideCall{L"VoteAbort", 1}, OutsideCall{L"GetDataContext", 1},
                                         OutsideCall{L"BindDsn", 1}, OutsideCall{L"GetCallerInfo", 1},
                                         OutsideCall{L"GetConnection", 1}, OutsideCall{L"Execute", 1},
                                         OutsideCall{L"Execute", 2}, OutsideCall{L"Execute", 3},
                                         OutsideCall{L"Execute", 4}, OutsideCall{L"VoteComplete", 1}));

TEST_F(CEcnInfoTest, EndSaveFailsWhenTheSwitchCannotBeRead) {
  MakeDuplicate();
  const Fault fault(L"CreateServerObject");
  ExpectFailed(Save(77));
}

TEST_F(CEcnInfoTest, EndSaveRefusesEvenWhenTheTextCannotBeLoaded) {
  database.Execute(L"DELETE FROM IcEcnEntry WHERE FInterID = 77");
  database.Execute(L"DELETE FROM ICBOMChild");
  const Fault fault(L"LoadString");
  const Saved saved = EndSave();
  EXPECT_FALSE(saved.result);
  EXPECT_EQ(saved.retCode, Variant(static_cast<int16_t>(99)));
  EXPECT_EQ(saved.message, L"");
}

// ---- the small checks

TEST_F(CEcnInfoTest, CheckECNHasNoObjection) {
  const Object ecn = Hosted(L"CEcnInfo");
  for (const int32_t id : {77, 4711}) {
    const Trace trace;
    EXPECT_EQ(ecn.Call(L"CheckECN", database.Dsn(), id), Variant(0));
    EXPECT_EQ(trace.Events(), AfterReading(database.Dsn(), {L"VoteComplete"}));
  }
}

TEST_F(CEcnInfoTest, GetThenCheckCBomNumberFindsANumberThatIsTaken) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"GetThenCheckCBomNumber", database.Dsn(), L"B11"), Variant(true));
  EXPECT_EQ(trace.Events(),
            AfterReading(database.Dsn(),
                         {L"Execute\tselect FInterId from IcBom where FBomNumber = 'B11'", L"VoteComplete"}));
  EXPECT_EQ(ecn.Call(L"GetThenCheckCBomNumber", database.Dsn(), L"NEW10"), Variant(false));
  EXPECT_EQ(ecn.Call(L"GetThenCheckCBomNumber", database.Dsn(), L""), Variant(false));
}

TEST_F(CEcnInfoTest, AQuoteInANumberBreaksTheStatement) {
  const Object ecn = Hosted(L"CEcnInfo");
  for (const wchar_t* method : {L"GetThenCheckCBomNumber", L"ReturnEcnStatusByNumber"}) {
    const Trace trace;
    const Raised raised = RaisedBy([&] { ecn.Call(method, database.Dsn(), L"O'Neil"); });
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x80040E14u);
    EXPECT_EQ(raised.source, L"Microsoft OLE DB Provider for SQL Server");
    EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  }
}

TEST_F(CEcnInfoTest, GetCheckCBomNoCheckedFindsABomThatIsNotAudited) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"GetCheckCBomNoChecked", database.Dsn(), 11), Variant(true));
  EXPECT_EQ(trace.Events(),
            AfterReading(database.Dsn(), {L"Execute\tselect FInterId from IcBom where FStatus=0 AND FInterId "
                                          L"= 11",
                                          L"VoteComplete"}));
  EXPECT_EQ(ecn.Call(L"GetCheckCBomNoChecked", database.Dsn(), 10), Variant(false));   // audited
  EXPECT_EQ(ecn.Call(L"GetCheckCBomNoChecked", database.Dsn(), 4711), Variant(false)); // none
}

TEST_F(CEcnInfoTest, ReturnEcnStatusAnswersByIdAndByNumber) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"ReturnEcnStatus", database.Dsn(), 77), Variant(1));
  EXPECT_EQ(trace.Events(),
            AfterReading(database.Dsn(),
                         {L"Execute\tselect FStatus from IcEcn where FInterId = 77", L"VoteComplete"}));
  database.Execute(L"UPDATE IcEcn SET FStatus = 2");
  trace.Clear();
  EXPECT_EQ(ecn.Call(L"ReturnEcnStatusByNumber", database.Dsn(), L"ECN77"), Variant(2));
  EXPECT_EQ(trace.Details(L"Execute"), Texts{L"select FStatus from IcEcn where FBillNo = 'ECN77'"});

  database.Execute(L"UPDATE IcEcn SET FStatus = NULL");
  EXPECT_EQ(ecn.Call(L"ReturnEcnStatus", database.Dsn(), 77), Variant(-1));
  EXPECT_EQ(ecn.Call(L"ReturnEcnStatusByNumber", database.Dsn(), L"ECN77"), Variant(-1));
  EXPECT_EQ(trace.Votes(), Texts(3, L"VoteComplete"));
}

TEST_F(CEcnInfoTest, ANoticeThatDoesNotExistHasNoCurrentRecord) {
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  const Raised byId = RaisedBy([&] { ecn.Call(L"ReturnEcnStatus", database.Dsn(), 4711); });
  const Raised byNumber = RaisedBy([&] { ecn.Call(L"ReturnEcnStatusByNumber", database.Dsn(), L"none"); });
  for (const Raised& raised : {byId, byNumber}) {
    EXPECT_EQ(static_cast<unsigned>(raised.code), 0x800A0BCDu); // 3021
    EXPECT_EQ(raised.source, L"ADODB.Field");
  }
  EXPECT_EQ(trace.Votes(), kRefused);
}

TEST_F(CEcnInfoTest, CheckEcnBomCountsTheNoticesOfABom) {
  database.Execute(L"INSERT INTO IcEcn (FInterID, FBillNo, FBomInterID, FCBomInterID) VALUES "
                   L"(78, 'ECN78', 12, 10), (79, 'ECN79', 10, 0), (80, 'ECN80', 12, 11)");
  const Object ecn = Hosted(L"CEcnInfo");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"CheckEcnBom", database.Dsn(), 10), Variant(3));
  EXPECT_EQ(trace.Events(),
            AfterReading(database.Dsn(), {L"Execute\tselect count(*) as FRelateCount from icecn where "
                                          L"FBomInterId = 10 or FCbomInterId = 10",
                                          L"VoteComplete"}));
  EXPECT_EQ(ecn.Call(L"CheckEcnBom", database.Dsn(), 11), Variant(1));
  EXPECT_EQ(ecn.Call(L"CheckEcnBom", database.Dsn(), 4711), Variant(0));
}

using FailingCall = std::tuple<const wchar_t*, OutsideCall>;

class EcnCheckFailure : public CEcnInfoTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(EcnCheckFailure, RisesWithTheUnitAborted) {
  const wchar_t* const method = std::get<0>(GetParam());
  const OutsideCall& call = std::get<1>(GetParam());
  const std::wstring name = method;
  const Object ecn = Hosted(L"CEcnInfo");
  const bool byNumber = name == L"GetThenCheckCBomNumber" || name == L"ReturnEcnStatusByNumber";
  const Variant argument = byNumber ? Variant(L"ECN77") : Variant(77);
  const Trace trace;
  const Fault fault(call.kind, call.nth);
  const Raised raised = RaisedBy([&] { ecn.Call(method, database.Dsn(), argument); });
  EXPECT_EQ(raised.code, Fault::kCode);
  EXPECT_EQ(raised.description, Fault::kText);
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
}

INSTANTIATE_TEST_SUITE_P(
    EveryOutsideCall, EcnCheckFailure,
    testing::Combine(testing::Values(L"GetThenCheckCBomNumber", L"GetCheckCBomNoChecked", L"ReturnEcnStatus",
                                     L"ReturnEcnStatusByNumber", L"CheckEcnBom"),
                     testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                     OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                     OutsideCall{L"Execute", 1}, OutsideCall{L"VoteComplete", 1})));

class CheckEcnFailure : public CEcnInfoTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(CheckEcnFailure, RisesWithTheUnitAborted) {
  const Object ecn = Hosted(L"CEcnInfo");
  {
    const Trace trace;
    const Fault fault(GetParam().kind, GetParam().nth);
    const Raised raised = RaisedBy([&] { ecn.Call(L"CheckECN", database.Dsn(), 77); });
    EXPECT_EQ(raised.code, Fault::kCode);
    EXPECT_EQ(raised.description, Fault::kText);
    EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
    EXPECT_EQ(trace.Details(L"Execute"), Texts{}); // it asks the database nothing
  }
  EXPECT_EQ(ecn.Call(L"CheckECN", database.Dsn(), 77), Variant(0));
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CheckEcnFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"VoteComplete", 1}));

// ---- CheckBomUsed

class EcnBomUsedTest : public CEcnInfoTest {
 protected:
  // Notice 77 is started and has created BOM 42.
  void SetUp() override {
    database.Execute(L"UPDATE IcEcn SET FStatus = 2, FCBomInterID = 42");
    database.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID) VALUES (42, 'NEW10', 500)");
  }
  std::pair<int32_t, std::wstring> Check(const std::wstring& language,
                                         const wchar_t* number = L"NEW10") const {
    Variant info(L"as it came");
    const Object ecn = Hosted(L"CEcnInfo");
    const Variant result =
        ecn.Call(L"CheckBomUsed", database.Dsn(language), 77, number, Variant::Reference(info));
    return {result.AsLong(), info.AsText()};
  }
  using Answer = std::pair<int32_t, std::wstring>;
};

constexpr wchar_t kLaterNotices[] =
    L"SELECT t2.FBillNO FROM IcEcn t1 INNER JOIN IcEcn t2 ON t1.FCBomInterID = t2.FBomInterID WHERE "
    L"t1.FInterID = 77";

TEST_F(EcnBomUsedTest, NothingSpeaksAgainstAnUnusedBom) {
  const std::wstring dsn = database.Dsn(L"Language=chs");
  const Object ecn = Hosted(L"CEcnInfo");
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"CheckBomUsed", dsn, 77, L"NEW10", Variant::Reference(info)), Variant(0));
  EXPECT_EQ(info, Variant(L""));
  EXPECT_EQ(
      trace.Events(),
      AfterReading(
          dsn,
          {std::wstring(L"Execute\t") + kLaterNotices, L"LoadString\t计划订单", L"LoadString\t生产任务单",
           L"LoadString\t重复生产任务单", L"LoadString\t委外加工任务单",
           L"Open\tDeclare @InterId Int\r\n"
           L" select @InterId = FInterId from IcBom where FBomNumber = 'NEW10'\r\n"
           L"\r\n"
           L" select top 1 '计划订单' as FTableName, FBom as FBomInterID From IcMrpResult Where FBom = "
           L"@InterID \r\n"
           L" union select top 1 '生产任务单' as FTableName, FBomInterID From ICMO Where FType in "
           L"(1054,1055) "
           L"and FBomInterID = @InterID \r\n"
           L" union select top 1 '重复生产任务单' as FTableName, FBomInterID From ICMO Where FType = 1067 "
           L"and "
           L"FBomInterID = @InterId \r\n"
           L" union select top 1 '委外加工任务单' as FTableName, FBomInterID From ICMO Where FType = 11060 "
           L"and FBomInterID = @InterId \r\n",
           L"VoteComplete"}));
}

TEST_F(EcnBomUsedTest, EveryKindOfDocumentIsNamedOnce) {
  const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> kinds[] = {
      {L"1054", L"该BOM在 生产任务单 中已经被引用。\r\n",
       L"This BOM is used in Production Orders already.\r\n"},
      {L"1055", L"该BOM在 生产任务单 中已经被引用。\r\n",
       L"This BOM is used in Production Orders already.\r\n"},
      {L"1067", L"该BOM在 重复生产任务单 中已经被引用。\r\n",
       L"This BOM is used in Repetitive Production Orders already.\r\n"},
      {L"11060", L"该BOM在 委外加工任务单 中已经被引用。\r\n",
       L"This BOM is used in Subcontract Orders already.\r\n"},
  };
  for (const auto& [type, chinese, english] : kinds) {
    database.Execute(L"DELETE FROM ICMO");
    database.Execute(L"INSERT INTO ICMO (FInterID, FType, FItemID, FBomInterID) VALUES (1, " +
                     std::wstring(type) + L", 500, 42), (2, " + type + L", 500, 42), (3, " + type +
                     L", 500, 10)");
    EXPECT_EQ(Check(L"Language=chs"), Answer(1, chinese));
    EXPECT_EQ(Check(L"Language=en"), Answer(1, english));
  }
  database.Execute(L"UPDATE ICMO SET FType = 1056");
  EXPECT_EQ(Check(L"Language=chs"), Answer(0, L""));
  database.Execute(L"INSERT INTO IcMrpResult (FInterID, FItemID, FBom) VALUES (1, 500, 42)");
  EXPECT_EQ(Check(L"Language=cht"), Answer(1, L"該BOM在 計劃訂單 中已經被引用。\r\n"));
  EXPECT_EQ(Check(L"Language=cht", L"B10"), Answer(0, L""));
  EXPECT_EQ(Check(L"Language=cht", L"no such BOM"), Answer(0, L""));
}

TEST_F(EcnBomUsedTest, AllKindsOfDocumentsAreListed) {
  database.Execute(L"INSERT INTO IcMrpResult (FInterID, FItemID, FBom) VALUES (1, 500, 42), (2, 500, 42)");
  database.Execute(L"INSERT INTO ICMO (FInterID, FType, FItemID, FBomInterID) VALUES (1, 1054, 500, 42), "
                   L"(2, 1067, 500, 42), (3, 11060, 500, 42)");
  const Object ecn = Hosted(L"CEcnInfo");
  Variant info(L"");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"CheckBomUsed", database.Dsn(L"Language=en"), 77, L"NEW10", Variant::Reference(info)),
            Variant(1));
  // The server sorts the union by the names.
  EXPECT_EQ(info, Variant(L"This BOM is used in Planned Orders already.\r\n"
                          L"This BOM is used in Production Orders already.\r\n"
                          L"This BOM is used in Repetitive Production Orders already.\r\n"
                          L"This BOM is used in Subcontract Orders already.\r\n"));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
}

TEST_F(EcnBomUsedTest, LaterNoticesBlockTheCancellation) {
  database.Execute(L"INSERT INTO IcEcn (FInterID, FBillNo, FBomInterID) VALUES (78, 'ECN78', 42), "
                   L"(79, 'ECN79', 42), (80, 'ECN80', 10)");
  const Object ecn = Hosted(L"CEcnInfo");
  Variant info(L"as it came");
  const Trace trace;
  EXPECT_EQ(ecn.Call(L"CheckBomUsed", database.Dsn(L"Language=chs"), 77, L"NEW10", Variant::Reference(info)),
            Variant(-1));
  EXPECT_EQ(info, Variant(L"该张工程变更单生成的BOM已经被变更单:\r\n[ ECN78 ]\r\n[ ECN79 ]\r\n"
                          L"引用，不能反启用。"));
  EXPECT_EQ(trace.Events(),
            AfterReading(database.Dsn(L"Language=chs"), {std::wstring(L"Execute\t") + kLaterNotices,
                                                         L"LoadString\t该张工程变更单生成的BOM已经被变更单:",
                                                         L"LoadString\t引用，不能反启用。", L"VoteAbort"}));
  EXPECT_EQ(Check(L""), Answer(-1, L"該張工程變更單生成的BOM已經被變更單:\r\n[ ECN78 ]\r\n[ ECN79 ]\r\n"
                                   L"引用，不能反啟用。"));
  EXPECT_EQ(Check(L"Language=en"),
            Answer(-1, L"The BOM created by this engineering change is already the base of the changes:\r\n"
                       L"[ ECN78 ]\r\n[ ECN79 ]\r\nThe change can no longer be cancelled."));
}

TEST_F(EcnBomUsedTest, AQuoteInTheNumberIsAFailure) {
  const auto [result, info] = Check(L"Language=en", L"O'Neil");
  EXPECT_EQ(result, -1);
  EXPECT_NE(info.find(L"'Neil'"), std::wstring::npos); // the server's own words
}

class EcnBomUsedFailure : public EcnBomUsedTest, public testing::WithParamInterface<OutsideCall> {};

TEST_P(EcnBomUsedFailure, IsReportedBehindWhatWasWritten) {
  database.Execute(L"INSERT INTO ICMO (FInterID, FType, FItemID, FBomInterID) VALUES (1, 1054, 500, 42)");
  const Object ecn = Hosted(L"CEcnInfo");
  Variant info(L"as it came, ");
  const Trace trace;
  const Fault fault(GetParam().kind, GetParam().nth);
  EXPECT_EQ(ecn.Call(L"CheckBomUsed", database.Dsn(L"Language=en"), 77, L"NEW10", Variant::Reference(info)),
            Variant(-1));
  const std::wstring kind = GetParam().kind;
  const std::wstring written = kind == L"Open" ? L""
                               : kind == L"VoteComplete"
                                   ? L"This BOM is used in Production Orders already.\r\n"
                                   : L"as it came, ";
  EXPECT_EQ(info, Variant(written + Fault::kText));
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, EcnBomUsedFailure,
                         testing::Values(OutsideCall{L"GetDataContext", 1}, OutsideCall{L"BindDsn", 1},
                                         OutsideCall{L"GetCallerInfo", 1}, OutsideCall{L"GetConnection", 1},
                                         OutsideCall{L"Execute", 1}, OutsideCall{L"Open", 1},
                                         OutsideCall{L"VoteComplete", 1}));

} // namespace
} // namespace mbom::test
