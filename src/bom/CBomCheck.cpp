#include "src/bom/CBomCheck.h"

#include <exception>

#include "com/ComError.h"
#include "com/ValueText.h"
#include "src/domain/BomReferences.h"
#include "src/frame/Convert.h"
#include "src/frame/Join.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/globals/SystemProfile.h"
#include "src/frame/globals/Texts.h"

namespace mbom {
namespace {

// Result codes. The checks before deletion and modification call the first two "may" and "may not".
constexpr int32_t kDone = 1;
constexpr int32_t kRefused = 2;
constexpr int32_t kInUse = -1;
constexpr int32_t kFailed = 0;

constexpr wchar_t kNoBomData[] = L"读取BOM数据出现错误，请检查参数是否正确。";
constexpr wchar_t kNoSuchBom[] = L"查询不到指定的BOM，请检查单数是否正确。";
constexpr wchar_t kNoReferences[] = L"检查BOM是否被引用时出现错误，请检查参数是否正确。";

// The recordset of a check: static, and closed where the check is left.
ClientRecordset NewRecordset(const Connection& conn) {
  return ClientRecordset(conn, ClientRecordset::Cursor::Static, ClientRecordset::Lock::Unspecified,
                         OnLeave::CloseAndRelease);
}

// Whether the user who has made a document may audit it. The audit takes the setting as a text that begins
// with a number.
bool OneUserMayAudit(const Frame& frame) {
  return LeadingNumber(com::ToText(ReadSystemProfile(frame, L"SingleMan", L"General"))) == 1;
}

// Whether the same user may take the audit back, who needs the setting to be a number.
bool OneUserMayUndo(const Frame& frame) {
  return ReadSystemProfile(frame, L"SingleMan", L"General").AsLong() == 1;
}

bool OnlyTheCheckerMayUndo(const Frame& frame) {
  return ReadSystemProfile(frame, L"SameUserApprovalAndUnApproval", L"IC").AsLong() == 1;
}

// The first reason against the audit, as a source text; null when there is none.
const wchar_t* ReasonAgainstAudit(const Frame& frame, const ClientRecordset& bom, int32_t lEmpID) {
  if (!bom.IsOpen()) return kNoBomData;
  if (bom.Eof()) return kNoSuchBom;
  if (IsGreater(bom[L"FStatus"], 0)) return L"该BOM已经被审核过了。";
  if (Equals(bom[L"FCheckID"], lEmpID) && !OneUserMayAudit(frame))
    return L"你不能审核该单据,因为你与制单人是同一个人。如果要获得本项操作的权限,请修改相应的系统参数。";
  return nullptr;
}

// The first reason against taking the audit back, but for documents that use the BOM; null when there is
// none.
const wchar_t* ReasonAgainstUndo(const Frame& frame, const ClientRecordset& bom, int32_t lEmpID) {
  if (!bom.IsOpen()) return kNoBomData;
  if (bom.Eof()) return kNoSuchBom;
  if (Equals(bom[L"FStatus"], 0)) return L"该BOM还没有审核过，不能执行反审核操作。";
  if (OnlyTheCheckerMayUndo(frame) && !Equals(bom[L"FCheckerID"], lEmpID))
    return L"你不能反审核该单据,因为你与审核人不是同一个人。";
  if (Equals(bom[L"FCheckID"], lEmpID) && !OneUserMayUndo(frame))
    return L"你不能反审核该单据,因为你与制单人是同一个人。如果要获得本项操作的权限,请修改相应的系统参数。";
  return nullptr;
}

// The list of the documents that use the BOM; `customerBoms` is open on the BOM where it is a customer BOM.
std::wstring ReferencesTo(int32_t interId, const ClientRecordset& customerBoms, const Texts& text) {
  const bool customerBom = customerBoms.RecordCount() != 0;
  const ClientRecordset& references = customerBoms;
  references.Open(BomUsedSql(interId, customerBom, text));
  std::wstring list;
  if (references.RecordCount() > 0) AppendReferences(references, text, list);
  return list;
}

std::wstring UnexpectedError(const std::exception& error, const Texts& text) {
  const auto* comError = dynamic_cast<const com::ComError*>(&error);
  return Join({text(L"出现意外错误。"), comError ? text(comError->description()) : std::wstring()});
}

} // namespace

int32_t CBomCheck::BomCheck(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                            int32_t lEmpID, std::wstring& strMsg) {
  const Texts text(sDsn);
  const auto notAudited = [&](const std::wstring& reason, int32_t result) {
    strMsg = Join({text(L"BOM[编号："), sBillNo, text(L"]审核没有成功。原因为："), reason});
    return result;
  };
  const auto failed = [&](const std::exception& failure) {
    return notAudited(UnexpectedError(failure, text), kFailed);
  };
  return frame_.TrapFailures(failed, [&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const ClientRecordset bom = NewRecordset(conn);
    bom.Open(Sql() << L" select FInterID, FBOMNumber FBillNo, FCheckID, FStatus From ICBOM Where FInterID = "
                   << lInterID);
    if (const wchar_t* against = ReasonAgainstAudit(frame_, bom, lEmpID))
      return frame_.Refuse(notAudited(text(against), kRefused));

    conn.Run(Sql() << L" Update ICBOM Set FStatus = 1, FCheckerID = " << lEmpID
                   << L", FAudDate = Convert(Varchar(10),Getdate(),120), FBeenChecked = 1 \r\n"
                      L" Where FInterID = "
                   << lInterID);
    strMsg = Join({text(L"BOM[编号："), com::ToText(bom[L"FBillNo"]), text(L"]审核成功。")});
    return frame_.Complete(kDone);
  });
}

int32_t CBomCheck::BomUndoCheck(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                                int32_t lEmpID, int32_t lType, std::wstring& strMsg) {
  const Texts text(sDsn);
  const auto notUndone = [&](const std::wstring& reason, int32_t result) {
    strMsg = Join({text(L"BOM[编号："), sBillNo, text(L"]反审核没有成功。原因为："), reason});
    return result;
  };
  const auto failed = [&](const std::exception& failure) {
    return notUndone(UnexpectedError(failure, text), kFailed);
  };
  return frame_.TrapFailures(failed, [&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const ClientRecordset rows = NewRecordset(conn);
    rows.Open(Sql() << L" select FInterID,fbomnumber FBillNo, FCheckID, FStatus, FCheckerID From ICBOM "
                       L"Where FInterID = "
                    << lInterID);
    if (const wchar_t* against = ReasonAgainstUndo(frame_, rows, lEmpID))
      return frame_.Refuse(notUndone(text(against), kRefused));

    std::wstring references;
    if (lType == 0) {
      rows.Open(BomUsedSql(lInterID, false, text));
      if (!rows.IsOpen()) return frame_.Refuse(notUndone(text(kNoReferences), kRefused));
      if (rows.RecordCount() > 0) AppendReferences(rows, text, references);
    }
    if (!references.empty()) {
      strMsg = Join({text(L"BOM[编号："), sBillNo, text(L"]反审核被拒绝。"), L"\r\n", text(L"原因："),
                     references, text(L"如果反审核，会影响这些单据的正确执行。")});
      return frame_.Complete(kInUse);
    }
    conn.Run(
        Sql() << L" Update ICBOM Set FUseStatus = 1073, FStatus = 0, FCheckerID = null, FAudDate = null, "
                 L"FBeenChecked=0\r\n"
                 L" Where FInterID = "
              << lInterID);
    strMsg = Join({text(L"BOM[编号："), sBillNo, text(L"]反审核成功。")});
    return frame_.Complete(kDone);
  });
}

template <class Check>
int32_t CBomCheck::CheckUse(const std::wstring& sDsn, const Sql& customerBomQuery,
                            const std::wstring& sBillNo, const wchar_t* failure, std::wstring& strMsg,
                            const Check& check) {
  const Texts text(sDsn);
  const auto notChecked = [&](const std::wstring& reason) {
    strMsg = Join({text(L"BOM[编号："), sBillNo, text(failure), reason});
    return kFailed;
  };
  const auto failed = [&](const std::exception& error) { return notChecked(UnexpectedError(error, text)); };
  return frame_.TrapFailures(failed, [&] {
    frame_.OpenDataContext(sDsn);
    const ClientRecordset customerBoms = NewRecordset(frame_.GetConnection());
    customerBoms.Open(customerBomQuery);
    if (!customerBoms.IsOpen()) return frame_.Refuse(notChecked(text(kNoReferences)));
    return frame_.Complete(check(customerBoms, text));
  });
}

int32_t CBomCheck::GetBomDelInfo(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                                 std::wstring& strMsg) {
  return CheckUse(
      sDsn, Sql() << L"select * from icbom where fbomtype=3 and FInterId=" << lInterID, sBillNo,
      L"]删除没有成功。原因为：", strMsg, [&](const ClientRecordset& customerBoms, const Texts& text) {
        const std::wstring references = ReferencesTo(lInterID, customerBoms, text);
        if (!references.empty()) {
          strMsg = Join({references, text(L"如果删除，将会影响这些业务单据的正常处理。"), L"\r\n", L"\r\n",
                         text(L"不能删除此BOM单！")});
          return kRefused;
        }
        customerBoms.Open(Sql() << L"select * from icbom where fbomtype=3 and fparentid=" << lInterID);
        if (customerBoms.RecordCount() >= 1) {
          strMsg = text(L"此配置类BOM已有对应的客户BOM存在，不能删除！");
          return kRefused;
        }
        strMsg = text(L"确定要删除该BOM单吗？");
        return kDone;
      });
}

int32_t CBomCheck::GetBomModifyInfo(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                                    std::wstring& strMsg) {
  return CheckUse(sDsn, Sql() << L"select FInterID from icbom where fbomtype=3 and FInterId=" << lInterID,
                  sBillNo, L"]修改没有成功。原因为：", strMsg,
                  [&](const ClientRecordset& customerBoms, const Texts& text) {
                    const std::wstring references = ReferencesTo(lInterID, customerBoms, text);
                    if (references.empty()) return kDone;
                    strMsg = Join({references, text(L"如果修改，将会影响这些业务单据的正常处理。"), L"\r\n",
                                   L"\r\n", text(L"不能修改此BOM单！")});
                    return kRefused;
                  });
}

} // namespace mbom
