// CBomCheck: the checks in their order, statements as they go over the wire, votes, the data afterwards,
// result codes and messages.
#include <gtest/gtest.h>

#include <map>

#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

constexpr int32_t kMaker = 5;
constexpr int32_t kAuditor = 6;
constexpr int32_t kOther = 7;

// A call's result code and message.
struct Answer {
  int32_t code;
  std::wstring message;
  bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
  *out << answer.code << " \"" << com::ToUtf8(answer.message) << '"';
}

struct DocumentNames {
  const wchar_t* key;
  const wchar_t* costObjects;
  const wchar_t* salesOrders;
  const wchar_t* usedIn;
  const wchar_t* already;
};

constexpr DocumentNames kChs{L"Language=chs", L"成本对象表", L"销售订单", L"该BOM在 ",
                             L" 中已经被引用。\r\n"};
constexpr DocumentNames kCht{L"Language=cht", L"成本對象表", L"銷售訂單", L"該BOM在 ",
                             L" 中已經被引用。\r\n"};
constexpr DocumentNames kEn{L"Language=en", L"Cost Objects", L"Sales Orders", L"This BOM is used in ",
                            L" already.\r\n"};

class CBomCheckTest : public testing::Test {
 protected:
  void SetUp() override {
    // 21 to be audited; 22 audited; 23 audited, in a sales order; 24 audited, in a cost object and a sales
    // order; 25 a configuration BOM, of which the customer BOMs 26 and 27 were made: 26 is in a batch and a
    // sales order, 27 in nothing. A cost object names them all the same.
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FBomType, FParentID, FStatus, FUseStatus, FCheckID, "
        L"FCheckerID, FAudDate, FBeenChecked) VALUES "
        L"(21, 'B21', 0, 1, 0, 1072, 5, NULL, NULL, 0), "
        L"(22, 'B22', 0, 1, 1, 1072, 5, 6, '2026-01-02', 1), "
        L"(23, 'B23', 0, 1, 1, 1072, 5, 6, '2026-01-02', 1), "
        L"(24, 'B24', 0, 1, 1, 1072, 5, 6, '2026-01-02', 1), "
        L"(25, 'B25', 1, 1, 0, 1072, 5, NULL, NULL, 0), "
        L"(26, 'K26', 3, 25, 0, 1072, 5, NULL, NULL, 0), "
        L"(27, 'K27', 3, 25, 0, 1072, 5, NULL, NULL, 0)");
    database_.Execute(L"INSERT INTO cbCostObj (FItemID, FNumber, FName, FBomID) VALUES (1, 'C1', 'x', 24), "
                      L"(2, 'C2', 'y', 26), (3, 'C3', 'z', 27)");
    database_.Execute(L"INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FBomInterID) VALUES "
                      L"(1, 1, 500, 23), (1, 2, 500, 24), (1, 3, 500, 26)");
    database_.Execute(L"INSERT INTO IcorderBatchTrace (FInterID, FEntryID, FCustBomId) VALUES (1, 1, 26), "
                      L"(1, 2, 24)");
    Set(L"General", L"SingleMan", L"0");
    Set(L"IC", L"SameUserApprovalAndUnApproval", L"0");
  }

  void Set(const wchar_t* category, const wchar_t* key, const wchar_t* value) const {
    const std::wstring setting =
        std::wstring(L" WHERE FCategory = '") + category + L"' AND FKey = '" + key + L"'";
    database_.Execute(L"DELETE FROM t_SystemProfile" + setting);
    database_.Execute(std::wstring(L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('") +
                      category + L"', '" + key + L"', " + value + L")");
  }
  void Unset(const wchar_t* key) const {
    database_.Execute(std::wstring(L"DELETE FROM t_SystemProfile WHERE FKey = '") + key + L"'");
  }
  // The columns that an audit writes.
  std::wstring Status(int32_t id) const {
    return database_.Value(L"SELECT FStatus, FUseStatus, FCheckerID, FAudDate, FBeenChecked FROM ICBOM "
                           L"WHERE FInterID = " +
                           std::to_wstring(id));
  }

  // The calls, for the caller's number "N"; the message is there before, as it must not stay.
  Answer Audit(const std::wstring& dsn, int32_t id, int32_t user) const {
    Variant message(L"as it came");
    const int32_t code = check_.Call(L"BomCheck", dsn, id, L"N", user, Variant::Reference(message)).AsLong();
    return {code, message.AsText()};
  }
  Answer Undo(const std::wstring& dsn, int32_t id, int32_t user, int32_t type = 0) const {
    Variant message(L"as it came");
    const int32_t code =
        check_.Call(L"BomUndoCheck", dsn, id, L"N", user, type, Variant::Reference(message)).AsLong();
    return {code, message.AsText()};
  }
  Answer MayDelete(const std::wstring& dsn, int32_t id) const {
    Variant message(L"as it came");
    const int32_t code = check_.Call(L"GetBomDelInfo", dsn, id, L"N", Variant::Reference(message)).AsLong();
    return {code, message.AsText()};
  }
  Answer MayModify(const std::wstring& dsn, int32_t id) const {
    Variant message(L"as it came");
    const int32_t code =
        check_.Call(L"GetBomModifyInfo", dsn, id, L"N", Variant::Reference(message)).AsLong();
    return {code, message.AsText()};
  }

  std::wstring Dsn(const DocumentNames& language) const { return database_.Dsn(language.key); }
  std::wstring Chs() const { return Dsn(kChs); }

  const TestDatabase database_;
  const Object check_ = Hosted(L"CBomCheck");
};

constexpr wchar_t kNotAudited[] = L"0|1072|NULL|NULL|0";
constexpr wchar_t kAudited[] = L"1|1072|6|2026-01-02|1";

std::wstring ProfileRead(const std::wstring& category, const std::wstring& key) {
  return L"Command\tSelect FValue From t_SystemProfile Where FCategory = ? And FKey = ?\t=" + category +
         L"\t=" + key;
}

TEST_F(CBomCheckTest, ReportsItsTransactionMode) {
  EXPECT_EQ(check_.Get(L"TransMode"), Variant(2));
}

// ---- BomCheck

std::wstring AuditQuery(const std::wstring& id) {
  return L"Open\t select FInterID, FBOMNumber FBillNo, FCheckID, FStatus From ICBOM Where FInterID = " + id;
}

TEST_F(CBomCheckTest, AuditsABom) {
  const Trace trace;
  EXPECT_EQ(Audit(Chs(), 21, kOther), (Answer{1, L"BOM[编号：B21]审核成功。"})); // the stored number
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, Chs(),
                        {AuditQuery(L"21"),
                         L"Execute\t Update ICBOM Set FStatus = 1, FCheckerID = 7, FAudDate = "
                         L"Convert(Varchar(10),Getdate(),120), FBeenChecked = 1 \r\n Where FInterID = 21",
                         L"LoadString\tBOM[编号：", L"LoadString\t]审核成功。", L"VoteComplete"}));
  EXPECT_EQ(Status(21), L"1|1072|7|2026-03-05|1");
  EXPECT_EQ(Status(22), kAudited);
}

TEST_F(CBomCheckTest, SaysInTheCallersLanguageThatItAudited) {
  EXPECT_EQ(Audit(Dsn(kCht), 21, kOther), (Answer{1, L"BOM[編號：B21]審核成功。"}));
  EXPECT_EQ(Audit(Dsn(kEn), 25, kOther), (Answer{1, L"BOM [No. B25] has been audited."}));
}

TEST_F(CBomCheckTest, RefusesToAuditAMissingBom) {
  const Trace trace;
  EXPECT_EQ(Audit(Chs(), 4711, kOther),
            (Answer{2, L"BOM[编号：N]审核没有成功。原因为：查询不到指定的BOM，请检查单数是否正确。"}));
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, Chs(),
                        {AuditQuery(L"4711"), L"LoadString\t查询不到指定的BOM，请检查单数是否正确。",
                         L"LoadString\tBOM[编号：", L"LoadString\t]审核没有成功。原因为：", L"VoteAbort"}));
}

TEST_F(CBomCheckTest, RefusesToAuditAnAuditedBom) {
  EXPECT_EQ(Audit(Chs(), 22, kMaker),
            (Answer{2, L"BOM[编号：N]审核没有成功。原因为：该BOM已经被审核过了。"}));
  EXPECT_EQ(Audit(Dsn(kCht), 22, kOther),
            (Answer{2, L"BOM[編號：N]審核沒有成功。原因為：該BOM已經被審核過了。"}));
  const Trace trace;
  EXPECT_EQ(Audit(Dsn(kEn), 22, kOther),
            (Answer{2, L"BOM [No. N] was not audited. Reason: This BOM has already been audited."}));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  EXPECT_EQ(Status(22), kAudited);
}

TEST_F(CBomCheckTest, LetsTheMakerAuditOnlyWhenTheSettingIsOne) {
  const Answer refused{2, L"BOM[编号：N]审核没有成功。原因为：你不能审核该单据,因为你与制单人是同一个人。"
                          L"如果要获得本项操作的权限,请修改相应的系统参数。"};
  for (const wchar_t* value : {L"'0'", L"'2'", L"''", L"'abc'", L"NULL", L"'10'", L"'-1'"}) {
    Set(L"General", L"SingleMan", value);
    EXPECT_EQ(Audit(Chs(), 21, kMaker), refused) << com::ToUtf8(value);
  }
  Unset(L"SingleMan");
  const Trace trace;
  EXPECT_EQ(Audit(Chs(), 21, kMaker), refused);
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, Chs(),
                        {AuditQuery(L"21"), L"GetConnection", ProfileRead(L"General", L"SingleMan"),
                         L"LoadString\t你不能审核该单据,因为你与制单人是同一个人。如果要获得本项操作的权限,"
                         L"请修改相应的系统参数。",
                         L"LoadString\tBOM[编号：", L"LoadString\t]审核没有成功。原因为：", L"VoteAbort"}));
  EXPECT_EQ(Status(21), kNotAudited);
  for (const wchar_t* value : {L"'1'", L"' 1 yes'", L"'1.0'"}) {
    database_.Execute(L"UPDATE ICBOM SET FStatus = 0 WHERE FInterID = 21");
    Set(L"General", L"SingleMan", value);
    EXPECT_EQ(Audit(Chs(), 21, kMaker), (Answer{1, L"BOM[编号：B21]审核成功。"})) << com::ToUtf8(value);
  }
  EXPECT_EQ(Status(21), L"1|1072|5|2026-03-05|1");
}

TEST_F(CBomCheckTest, AuditsABomUnderEngineeringChangeToo) {
  database_.Execute(L"UPDATE ICBOM SET FEcnInterID = 5, FCheckID = NULL WHERE FInterID = 21");
  EXPECT_EQ(Audit(Chs(), 21, kOther).code, 1);
}

// ---- BomUndoCheck

std::wstring UndoQuery(const std::wstring& id) {
  return L"Open\t select FInterID,fbomnumber FBillNo, FCheckID, FStatus, FCheckerID From ICBOM "
         L"Where FInterID = " +
         id;
}
std::wstring UsedInQuery(const DocumentNames& language, const std::wstring& id) {
  return L"Open\t select top 1 '" + std::wstring(language.costObjects) +
         L"' as FTableName, FBomID as FBomInterID From cbCostObj Where FBomID = " + id +
         L"\r\n union select top 1 '" + language.salesOrders +
         L"' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID = " + id;
}
std::wstring CustomerUsedQuery(const std::wstring& id) {
  return L"Open\t Select Top 1 '客户BOM批次表' as FTableName, FCustBomId as FBomInterID From "
         L"IcorderBatchTrace "
         L"Where FCustBomId = " +
         id +
         L"\r\n union select top 1 '销售订单' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID "
         L"= " +
         id;
}
constexpr wchar_t kUndone[] = L"0|1073|NULL|NULL|0";

TEST_F(CBomCheckTest, TakesAnAuditBack) {
  const Trace trace;
  EXPECT_EQ(Undo(Chs(), 22, kOther), (Answer{1, L"BOM[编号：N]反审核成功。"})); // the caller's number
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, Chs(),
                  {UndoQuery(L"22"), L"GetConnection", ProfileRead(L"IC", L"SameUserApprovalAndUnApproval"),
                   L"LoadString\t成本对象表", L"LoadString\t销售订单", UsedInQuery(kChs, L"22"),
                   L"Execute\t Update ICBOM Set FUseStatus = 1073, FStatus = 0, FCheckerID = null, "
                   L"FAudDate = null, FBeenChecked=0\r\n Where FInterID = 22",
                   L"LoadString\tBOM[编号：", L"LoadString\t]反审核成功。", L"VoteComplete"}));
  EXPECT_EQ(Status(22), kUndone);
  EXPECT_EQ(Status(23), kAudited);
  EXPECT_EQ(Undo(Dsn(kCht), 23, kOther, 1), (Answer{1, L"BOM[編號：N]反審核成功。"}));
  EXPECT_EQ(Undo(Dsn(kEn), 24, kOther, 1), (Answer{1, L"BOM [No. N] has been un-audited."}));
}

TEST_F(CBomCheckTest, RefusesToUndoWhatIsMissingOrNotAudited) {
  const Trace trace;
  EXPECT_EQ(Undo(Chs(), 4711, kOther),
            (Answer{2, L"BOM[编号：N]反审核没有成功。原因为：查询不到指定的BOM，请检查单数是否正确。"}));
  EXPECT_EQ(Undo(Chs(), 21, kOther),
            (Answer{2, L"BOM[编号：N]反审核没有成功。原因为：该BOM还没有审核过，不能执行反审核操作。"}));
  EXPECT_EQ(
      Undo(Dsn(kEn), 21, kOther, 1),
      (Answer{2, L"BOM [No. N] was not un-audited. Reason: This BOM has not been audited yet and cannot "
                 L"be un-audited."}));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort", L"VoteAbort"}));
  EXPECT_EQ(trace.Details(L"Command"), Texts{});
}

TEST_F(CBomCheckTest, LetsOnlyTheAuditorUndoWhenTheSettingIsOne) {
  Set(L"IC", L"SameUserApprovalAndUnApproval", L"'1'");
  const Trace trace;
  EXPECT_EQ(
      Undo(Chs(), 22, kOther),
      (Answer{2, L"BOM[编号：N]反审核没有成功。原因为：你不能反审核该单据,因为你与审核人不是同一个人。"}));
  EXPECT_EQ(
      Undo(Dsn(kEn), 22, kOther, 1),
      (Answer{2, L"BOM [No. N] was not un-audited. Reason: You cannot un-audit this bill because you are "
                 L"not its auditor."}));
  EXPECT_EQ(trace.Votes(), (Texts{L"VoteAbort", L"VoteAbort"}));
  EXPECT_EQ(Status(22), kAudited);
  EXPECT_EQ(Undo(Chs(), 22, kAuditor).code, 1);
  // A BOM that was audited in nobody's name has no auditor.
  database_.Execute(L"UPDATE ICBOM SET FCheckerID = NULL WHERE FInterID = 23");
  EXPECT_EQ(Undo(Chs(), 23, kOther, 1).code, 2);
}

TEST_F(CBomCheckTest, LetsTheMakerUndoOnlyWhenTheSettingIsOne) {
  const Trace trace;
  EXPECT_EQ(Undo(Chs(), 22, kMaker),
            (Answer{2, L"BOM[编号：N]反审核没有成功。原因为：你不能反审核该单据,因为你与制单人是同一个人。"
                       L"如果要获得本项操作的权限,请修改相应的系统参数。"}));
  EXPECT_EQ(trace.Details(L"Command").size(), 2u);
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  Set(L"General", L"SingleMan", L"'1'");
  EXPECT_EQ(Undo(Chs(), 22, kMaker).code, 1);
}

TEST_F(CBomCheckTest, UndoFailsOnASettingThatIsNoNumber) {
  const Answer failed{0, L"BOM[编号：N]反审核没有成功。原因为：出现意外错误。" +
                             com::ComError::FromSystem(DISP_E_TYPEMISMATCH).description()};
  const Trace trace;
  for (const wchar_t* value : {L"'yes'", L"''", L"NULL"}) {
    Set(L"IC", L"SameUserApprovalAndUnApproval", value);
    EXPECT_EQ(Undo(Chs(), 22, kOther), failed) << com::ToUtf8(value);
  }
  Unset(L"SameUserApprovalAndUnApproval");
  EXPECT_EQ(Undo(Chs(), 22, kOther), failed);
  Set(L"IC", L"SameUserApprovalAndUnApproval", L"'0'");
  Set(L"General", L"SingleMan", L"'yes'");
  EXPECT_EQ(Undo(Chs(), 22, kMaker), failed);
  EXPECT_EQ(trace.Votes(), Texts(5, L"VoteAbort"));
  EXPECT_EQ(Status(22), kAudited);
}

TEST_F(CBomCheckTest, RefusesToUndoABomInUseButVotesComplete) {
  const Trace trace;
  EXPECT_EQ(Undo(Chs(), 23, kOther),
            (Answer{-1, L"BOM[编号：N]反审核被拒绝。\r\n原因：该BOM在 销售订单 中已经被引用。\r\n"
                        L"如果反审核，会影响这些单据的正确执行。"}));
  EXPECT_EQ(
      trace.Events(),
      AroundSetUp({}, Chs(),
                  {UndoQuery(L"23"), L"GetConnection", ProfileRead(L"IC", L"SameUserApprovalAndUnApproval"),
                   L"LoadString\t成本对象表", L"LoadString\t销售订单", UsedInQuery(kChs, L"23"),
                   L"LoadString\t该BOM在", L"LoadString\t中已经被引用。", L"LoadString\tBOM[编号：",
                   L"LoadString\t]反审核被拒绝。", L"LoadString\t原因：",
                   L"LoadString\t如果反审核，会影响这些单据的正确执行。", L"VoteComplete"}));
  EXPECT_EQ(Undo(Dsn(kCht), 24, kOther),
            (Answer{-1, L"BOM[編號：N]反審核被拒絕。\r\n原因：該BOM在 成本對象表 中已經被引用。\r\n"
                        L"該BOM在 銷售訂單 中已經被引用。\r\n如果反審核，會影響這些單據的正確執行。"}));
  EXPECT_EQ(
      Undo(Dsn(kEn), 24, kOther),
      (Answer{-1, L"BOM [No. N] may not be un-audited.\r\nReason: This BOM is used in Cost Objects "
                  L"already.\r\nThis BOM is used in Sales Orders already.\r\nUn-auditing it would disturb "
                  L"the correct execution of these documents."}));
  EXPECT_EQ(Status(23), kAudited);
  EXPECT_EQ(Status(24), kAudited);
}

TEST_F(CBomCheckTest, UndoesABomInUseWhenForced) {
  for (const int32_t type : {1, -1, 2}) {
    database_.Execute(L"UPDATE ICBOM SET FStatus = 1 WHERE FInterID = 24");
    const Trace trace;
    EXPECT_EQ(Undo(Chs(), 24, kOther, type), (Answer{1, L"BOM[编号：N]反审核成功。"}));
    EXPECT_EQ(trace.Details(L"Open").size(), 1u);
    EXPECT_EQ(Status(24), kUndone);
  }
}

TEST_F(CBomCheckTest, UndoAsksWhatUsesTheBomUnlessToldOtherwise) {
  EXPECT_EQ(check_.Call(L"BomUndoCheck", Chs(), 23, L"N", kOther), Variant(-1));
  EXPECT_EQ(check_.Call(L"BomUndoCheck", Chs(), 22, L"N", kOther), Variant(1));
}

// ---- GetBomDelInfo

TEST_F(CBomCheckTest, AsksForConfirmationBeforeADeletion) {
  const Trace trace;
  EXPECT_EQ(MayDelete(Chs(), 22), (Answer{1, L"确定要删除该BOM单吗？"}));
  EXPECT_EQ(trace.Events(),
            AroundSetUp({}, Chs(),
                        {L"Open\tselect * from icbom where fbomtype=3 and FInterId=22",
                         L"LoadString\t成本对象表", L"LoadString\t销售订单", UsedInQuery(kChs, L"22"),
                         L"Open\tselect * from icbom where fbomtype=3 and fparentid=22",
                         L"LoadString\t确定要删除该BOM单吗？", L"VoteComplete"}));
  EXPECT_EQ(MayDelete(Dsn(kCht), 22), (Answer{1, L"確定要刪除該BOM單嗎？"}));
  EXPECT_EQ(MayDelete(Dsn(kEn), 22), (Answer{1, L"Are you sure you want to delete this BOM?"}));
  EXPECT_EQ(MayDelete(Chs(), 4711).code, 1); // a missing one is used by nothing
}

TEST_F(CBomCheckTest, ForbidsToDeleteABomInUse) {
  const Trace trace;
  EXPECT_EQ(MayDelete(Chs(), 24),
            (Answer{2, L"该BOM在 成本对象表 中已经被引用。\r\n该BOM在 销售订单 中已经被引用。\r\n"
                       L"如果删除，将会影响这些业务单据的正常处理。\r\n\r\n不能删除此BOM单！"}));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
  EXPECT_EQ(
      MayDelete(Dsn(kCht), 23),
      (Answer{2, L"該BOM在 銷售訂單 中已經被引用。\r\n如果刪除，將會影響這些業務單據的正常處理。\r\n\r\n"
                 L"不能刪除此BOM單！"}));
  EXPECT_EQ(MayDelete(Dsn(kEn), 23),
            (Answer{2, L"This BOM is used in Sales Orders already.\r\nDeleting it would disturb the normal "
                       L"processing of these documents.\r\n\r\nThis BOM cannot be deleted!"}));
}

TEST_F(CBomCheckTest, AsksBatchesInsteadOfCostObjectsAboutACustomerBom) {
  const Trace trace;
  EXPECT_EQ(MayDelete(Chs(), 26),
            (Answer{2, L"该BOM在 客户BOM批次表 中已经被引用。\r\n该BOM在 销售订单 中已经被引用。\r\n"
                       L"如果删除，将会影响这些业务单据的正常处理。\r\n\r\n不能删除此BOM单！"}));
  EXPECT_EQ(trace.Details(L"Open"), (Texts{L"select * from icbom where fbomtype=3 and FInterId=26",
                                           CustomerUsedQuery(L"26").substr(5)}));
  EXPECT_EQ(MayDelete(Chs(), 27).code, 1);
  EXPECT_EQ(MayModify(Chs(), 27).code, 1);
}

TEST_F(CBomCheckTest, ForbidsToDeleteAConfigurationBomWithCustomerBoms) {
  const Trace trace;
  EXPECT_EQ(MayDelete(Chs(), 25), (Answer{2, L"此配置类BOM已有对应的客户BOM存在，不能删除！"}));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
  EXPECT_EQ(MayDelete(Dsn(kCht), 25), (Answer{2, L"此配置類BOM已有對應的客戶BOM存在，不能刪除！"}));
  EXPECT_EQ(MayDelete(Dsn(kEn), 25),
            (Answer{2, L"Customer BOMs have been made from this configuration BOM; it cannot be deleted!"}));
}

// ---- GetBomModifyInfo

TEST_F(CBomCheckTest, AllowsToModifyWhatNothingUses) {
  const Trace trace;
  EXPECT_EQ(MayModify(Chs(), 22), (Answer{1, L"as it came"}));
  EXPECT_EQ(trace.Events(), AroundSetUp({}, Chs(),
                                        {L"Open\tselect FInterID from icbom where fbomtype=3 and FInterId=22",
                                         L"LoadString\t成本对象表", L"LoadString\t销售订单",
                                         UsedInQuery(kChs, L"22"), L"VoteComplete"}));
  EXPECT_EQ(MayModify(Chs(), 25), (Answer{1, L"as it came"})); // its customer BOMs do not matter here
}

TEST_F(CBomCheckTest, ForbidsToModifyABomInUse) {
  const Trace trace;
  EXPECT_EQ(MayModify(Chs(), 26),
            (Answer{2, L"该BOM在 客户BOM批次表 中已经被引用。\r\n该BOM在 销售订单 中已经被引用。\r\n"
                       L"如果修改，将会影响这些业务单据的正常处理。\r\n\r\n不能修改此BOM单！"}));
  EXPECT_EQ(trace.Details(L"Open"), (Texts{L"select FInterID from icbom where fbomtype=3 and FInterId=26",
                                           CustomerUsedQuery(L"26").substr(5)}));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteComplete"});
  EXPECT_EQ(
      MayModify(Dsn(kCht), 23),
      (Answer{2, L"該BOM在 銷售訂單 中已經被引用。\r\n如果修改，將會影響這些業務單據的正常處理。\r\n\r\n"
                 L"不能修改此BOM單！"}));
  EXPECT_EQ(MayModify(Dsn(kEn), 24),
            (Answer{2, L"This BOM is used in Cost Objects already.\r\nThis BOM is used in Sales Orders "
                       L"already.\r\nModifying it would disturb the normal processing of these "
                       L"documents.\r\n\r\nThis BOM cannot be modified!"}));
}

// ---- failure paths

class CBomCheckFailure : public CBomCheckTest, public testing::WithParamInterface<FailingCall> {
 protected:
  Answer Call(const std::wstring& method) const {
    if (method == L"BomCheck") return Audit(Chs(), 21, kMaker);
    if (method == L"BomUndoCheck") return Undo(Chs(), 22, kMaker);
    return method == L"GetBomDelInfo" ? MayDelete(Chs(), 22) : MayModify(Chs(), 22);
  }
};

TEST_P(CBomCheckFailure, GivesZeroAndSaysWhy) {
  const std::map<std::wstring, std::wstring> begins{
      {L"BomCheck", L"]审核没有成功。原因为："},
      {L"BomUndoCheck", L"]反审核没有成功。原因为："},
      {L"GetBomDelInfo", L"]删除没有成功。原因为："},
      {L"GetBomModifyInfo", L"]修改没有成功。原因为："},
  };
  const std::wstring method = GetParam().method;
  Set(L"General", L"SingleMan", L"'1'");
  const Trace trace;
  const Fault fault(GetParam().call.kind, GetParam().call.nth);
  EXPECT_EQ(Call(method), (Answer{0, L"BOM[编号：N" + begins.at(method) + L"出现意外错误。" + Fault::kText}));
  EXPECT_EQ(trace.Votes().back(), L"VoteAbort");
  EXPECT_EQ(Status(21), kNotAudited);
  EXPECT_EQ(Status(22), kAudited);
}

// What each method calls: its set-up, so many queries and settings (each on a connection of its own), and
// maybe an update.
std::vector<FailingCall> EveryFailureOfCBomCheck() {
  struct Method {
    const wchar_t* name;
    int32_t queries;
    int32_t settings;
    bool writes;
  };
  std::vector<FailingCall> failures;
  for (const Method& method :
       {Method{L"BomCheck", 1, 1, true}, Method{L"BomUndoCheck", 2, 2, true},
        Method{L"GetBomDelInfo", 3, 0, false}, Method{L"GetBomModifyInfo", 2, 0, false}}) {
    const auto add = [&](const wchar_t* kind, int32_t count) {
      for (int32_t nth = 1; nth <= count; ++nth) failures.push_back({method.name, {kind, nth}});
    };
    add(L"GetDataContext", 1);
    add(L"BindDsn", 1);
    add(L"GetCallerInfo", 1);
    add(L"GetConnection", 1 + method.settings);
    add(L"Open", method.queries);
    add(L"Command", method.settings);
    add(L"Execute", method.writes ? 1 : 0);
    add(L"VoteComplete", 1);
  }
  return failures;
}

INSTANTIATE_TEST_SUITE_P(EveryOutsideCall, CBomCheckFailure, testing::ValuesIn(EveryFailureOfCBomCheck()));

TEST_F(CBomCheckTest, SaysInTheCallersLanguageThatItFailed) {
  const std::pair<const DocumentNames&, const wchar_t*> failures[] = {
      {kCht, L"BOM[編號：N]審核沒有成功。原因為：出現意外錯誤。armed fault"},
      {kEn, L"BOM [No. N] was not audited. Reason: An unexpected error occurred. armed fault"},
  };
  for (const auto& [language, message] : failures) {
    const Fault fault(L"Open");
    EXPECT_EQ(Audit(Dsn(language), 21, kOther), (Answer{0, message}));
  }
}

TEST_F(CBomCheckTest, RefusesEvenWhenNoTextCanBeLoaded) {
  const Trace trace;
  const Fault fault(L"LoadString");
  EXPECT_EQ(Audit(Chs(), 22, kOther), (Answer{2, L"BOM[编号：N]审核没有成功。原因为："}));
  EXPECT_EQ(trace.Votes(), Texts{L"VoteAbort"});
  EXPECT_EQ(Status(22), kAudited);
}

TEST_F(CBomCheckTest, ARefusalWhoseVoteFailsIsAFailure) {
  const Fault fault(L"VoteAbort");
  EXPECT_EQ(Audit(Chs(), 22, kOther),
            (Answer{0, L"BOM[编号：N]审核没有成功。原因为：出现意外错误。armed fault"}));
}

TEST_F(CBomCheckTest, ARefusalIsNoErrorWhenItsVotesFail) {
  const Fault fault(L"VoteAbort");
  const Fault again(L"VoteAbort", 2);
  EXPECT_EQ(Audit(Chs(), 22, kOther).code, 0);
}

TEST_F(CBomCheckTest, AFailingVoteAfterAFailureRises) {
  const Fault statement(L"Execute");
  const Fault vote(L"VoteAbort");
  EXPECT_EQ(RaisedBy([&] { Audit(Chs(), 21, kOther); }).code, Fault::kCode);
}

} // namespace
} // namespace mbom::test
