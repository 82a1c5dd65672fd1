#include "src/custbom/clsMCustBOM.h"

#include <limits>
#include <set>

#include "com/ComError.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "src/custbom/CustBomCopy.h"
#include "src/custbom/CustBomPanels.h"
#include "src/custbom/CustBomRules.h"
#include "src/custbom/CustBomStatus.h"
#include "src/custbom/Query.h"
#include "src/domain/BomReferences.h"
#include "src/domain/ShortNumber.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/ado/StoredProcedure.h"
#include "src/frame/globals/CurrentUser.h"
#include "src/frame/globals/Descriptor.h"
#include "src/frame/globals/ServerObject.h"
#include "src/frame/globals/Texts.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kSource[] = L"QorvaneMBomBill.clsMCustBOM";
constexpr int32_t kCustomerBomBill = 53;

} // namespace

Connection clsMCustBOM::ConnectionThatVotes() const {
  return frame_.GetConnection();
}

// ---- status

std::wstring clsMCustBOM::NumbersBuiltFrom(const std::wstring& sDsn, const std::wstring& ids) {
  return frame_.LetFailuresRise([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    if (ids.empty()) return std::wstring();
    return CommaList(conn.Execute(UpperNumbersQuery(ids)), L"FBomNumber");
  });
}

std::wstring clsMCustBOM::GetUsedCustBomNumber(const std::wstring& sDsn,
                                               const std::wstring& strCustBomInterID) {
  return frame_.TrapFailures(std::wstring(), [&] {
    // The inner call has voted.
    return frame_.WithoutVote(NumbersBuiltFrom(sDsn, strCustBomInterID));
  });
}

bool clsMCustBOM::IsUsedByDocuments(const std::wstring& sDsn, const std::wstring& ids,
                                    const std::wstring& currentId, std::wstring& usage) {
  const Texts text(sDsn);
  return frame_.LetFailuresRise([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    std::wstring lines;
    if (!currentId.empty())
      AppendReferences(RunQuery(frame_, sDsn, UsageQuery(L" = " + currentId, text)), text, lines);
    if (lines.empty() && !ids.empty())
      AppendReferences(RunQuery(frame_, sDsn, UsageQuery(L" IN (" + ids + L")", text)), text, lines,
                       L"上层BOM在 ");
    if (lines.empty()) return false;
    usage = lines;
    return true;
  });
}

bool clsMCustBOM::CheckCustBOMIsAssisted(const std::wstring& sDsn, const std::wstring& s_CustBOMNo,
                                         const std::wstring& s_CurCustBOMNo, std::wstring& strMsg) {
  return frame_.TrapFailures(true, [&] {
    // The inner call has voted.
    return frame_.WithoutVote(IsUsedByDocuments(sDsn, s_CustBOMNo, s_CurCustBOMNo, strMsg));
  });
}

// Walks up from the customer BOMs of the list, a level a query, through those that are not audited or are in
// the list themselves. An id counts as in the list when the text "id," occurs in it, so 2 is in "12,".
bool clsMCustBOM::IsBlockedFromAbove(const std::wstring& sDsn, const std::wstring& ids,
                                     std::wstring& message) {
  const std::wstring list = ids + L",";
  std::wstring level = ids;
  // Customer BOMs that are built from each other in a circle come back to a level that was there before.
  std::set<std::wstring> walked;
  while (!level.empty() && walked.insert(level).second) {
    const Recordset upper = RunQuery(frame_, sDsn, UpperLevelQuery(level));
    level.clear();
    for (; !upper.Eof(); upper.MoveNext()) {
      const std::wstring id = com::ToText(upper[L"FInterID"]) + L",";
      if (!Equals(upper[L"FStatus"], 1)) {
        level += id;
      } else if (list.find(id) == std::wstring::npos) {
        message = LoadResTextFormat(L"该客户BOM已被客户BOM[%1]引用且其上层已审核，不可反审核!",
                                    GetDsnValue(sDsn, L"Language"), {upper[L"FBomNumber"]});
        return true;
      }
    }
    if (!level.empty()) level.pop_back();
  }
  return false;
}

bool clsMCustBOM::UpdateAuditFlag(const std::wstring& sDsn, const std::wstring& strCustBomInterID,
                                  bool b_AuditFlag, const std::wstring& strCurCustBomNo,
                                  std::wstring& strMsg) {
  return frame_.TrapFailures(false, [&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    Connection conn = frame_.GetConnection();
    if (!b_AuditFlag && IsUsedByDocuments(sDsn, strCustBomInterID, strCurCustBomNo, strMsg))
      return frame_.Refuse(false);
    const bool blocked = IsBlockedFromAbove(sDsn, strCustBomInterID, strMsg);
    const int32_t user = GetCurrentUserId(frame_);
    const std::wstring now = TimeStamp(RunQuery(frame_, sDsn, Sql() << L"SELECT GETDATE()")[0]);
    if (strCustBomInterID.empty() || blocked) return frame_.Refuse(false);
    conn = ConnectionThatVotes();
    conn.Run(b_AuditFlag ? AuditUpdate(strCustBomInterID, user, now) : UndoAuditUpdate(strCustBomInterID));
    return true;
  });
}

std::wstring clsMCustBOM::UpdateDisableStatus(const std::wstring& sDsn, const std::wstring& strCustBomInterID,
                                              bool& b_Status) {
  const std::wstring fail = L"FAIL";
  return frame_.TrapFailures(fail, [&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    Connection conn = frame_.GetConnection();
    if (b_Status) {
      const std::wstring users = NumbersBuiltFrom(sDsn, strCustBomInterID);
      if (!users.empty()) return frame_.Refuse(users);
      std::wstring usage;
      if (IsUsedByDocuments(sDsn, {}, strCustBomInterID, usage))
        return frame_.Refuse(L"[Associated:]" + usage);
      conn = ConnectionThatVotes();
    }
    if (strCustBomInterID.empty()) return frame_.Refuse(fail);
    conn.Run(DisableUpdate(strCustBomInterID, b_Status));
    return std::wstring(L"SUCCESS");
  });
}

// ---- tree and panels

Object clsMCustBOM::GenBomTreeDataSQL(const std::wstring& sDsn, std::wstring& sFilter, std::wstring& sFilter1,
                                      std::wstring& /*sOrder*/, std::wstring& sLookType) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return TreeCommand(sFilter, sFilter1, sLookType, Texts(sDsn)).object();
  });
}

Object clsMCustBOM::GetTreeViewDataM(const std::wstring& sDsn, const std::wstring& sFilter,
                                     const std::wstring& sFilter1, const std::wstring& /*sOrder*/,
                                     const std::wstring& sLookType) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    // The switch is read for every panel, but the tree shows numbers as its procedure has them.
    static_cast<void>(IsUseShortNumber(conn));
    return TreeCommand(sFilter, sFilter1, sLookType, Texts(sDsn)).OpenDetached(conn).object();
  });
}

std::wstring clsMCustBOM::GenRightTopDataSQL(const std::wstring& sDsn, const std::wstring& sInterID,
                                             const std::wstring& sBomType, const std::wstring& sFilter,
                                             const std::wstring& /*sFilter1*/, const std::wstring& sOrder) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const bool shortNumber = IsUseShortNumber(frame_.GetConnection());
    return HeaderQuery(shortNumber, Texts(sDsn), sInterID, sBomType, sFilter, sOrder);
  });
}

Object clsMCustBOM::GetRightTopDataM(const std::wstring& sDsn, const std::wstring& sInterID,
                                     const std::wstring& sBomType, const std::wstring& sFilter,
                                     const std::wstring& sFilter1, const std::wstring& sOrder) {
  const std::wstring query = GenRightTopDataSQL(sDsn, sInterID, sBomType, sFilter, sFilter1, sOrder);
  return RunQuery(frame_, sDsn, Sql() << query).object();
}

std::wstring clsMCustBOM::GenRightBottomSQL(const std::wstring& sDsn, const std::wstring& sBomType,
                                            int32_t /*aType*/, const std::wstring& sFilter,
                                            const std::wstring& sOrder) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const bool shortNumber = IsUseShortNumber(frame_.GetConnection());
    return LineQuery(shortNumber, Texts(sDsn), sBomType, sFilter, sOrder);
  });
}

Object clsMCustBOM::GetRightBottomDataM(const std::wstring& sDsn, const std::wstring& sBomType, int32_t aType,
                                        const std::wstring& sFilter, const std::wstring& sOrder) {
  const std::wstring query = GenRightBottomSQL(sDsn, sBomType, aType, sFilter, sOrder);
  return RunQuery(frame_, sDsn, Sql() << query).object();
}

// ---- numbers, creation, copy

bool clsMCustBOM::bGetBillNoInfo(const std::wstring& sDsn, std::wstring& sPrefixion, std::wstring& sSuffix,
                                 std::wstring& sFormat, int32_t& lCurNo, const std::wstring& strLanguage) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    const Recordset rule =
        RunQuery(frame_, sDsn,
                 Sql() << L"select FPreLetter, FSufLetter, FCurNo = isNull(FCurNo, 0) + 1, FFormat\r\n"
                          L"from ICBillNo WITH(UPDLOCK) where FBillID = 53");
    if (rule.Eof())
      com::Raise(com::RuntimeError::InvalidCall, kSource,
                 LoadResText(L"ICBillNo中未定义客户BOM", strLanguage));
    sPrefixion = com::ToText(rule[L"FPreLetter"]);
    sSuffix = com::ToText(rule[L"FSufLetter"]);
    sFormat = com::ToText(rule[L"FFormat"]);
    lCurNo = rule[L"FCurNo"].AsLong();
    return true;
  });
}

std::wstring clsMCustBOM::GetBillNoNew(const std::wstring& sDsn, int32_t lBillTransType, bool bMoreBill,
                                       int32_t lBillNumber, bool bUpdate, const Object& vDict) {
  return frame_.AbortOnFailure([&] {
    namespace names = outside::codeRule;
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    const Dictionary request = vDict ? Dictionary(vDict) : Dictionary::Make();
    request.Put(L"FDate", Today());
    request.Put(L"FBillType", lBillTransType);
    request.Put(L"BillNumber", lBillNumber);
    request.Put(L"AutoUpdateCurNo", bUpdate);
    request.Put(L"MoreBillID", bMoreBill);

    Variant descriptor(sDsn);
    Variant requestArgument(request.object());
    Variant severalArgument(Dictionary::Make().object());
    Variant flag(true);
    std::wstring numbers = CreateServerObject(names::kProgId)
                               .Call(names::kGetNewBillID, Variant::TypedReference(descriptor),
                                     Variant::TypedReference(requestArgument),
                                     Variant::TypedReference(severalArgument), Variant::TypedReference(flag))
                               .AsText();
    if (bMoreBill) {
      // The rules may have put a collection of their own into the variable.
      const Dictionary several(severalArgument.AsObject());
      numbers.clear();
      const int32_t count = several.Count();
      for (int32_t i = 1; i <= count; ++i)
        numbers += com::ToText(several[std::to_wstring(i).c_str()]) + L"\t";
    }
    return Trim(numbers);
  });
}

std::wstring clsMCustBOM::CopyPasteCustBom(const std::wstring& sDsn, const std::wstring& strCustBOMID,
                                           const std::wstring& /*strLanguage*/) {
  return frame_.AbortOnFailure([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    Connection conn = frame_.GetConnection();
    std::wstring number = GetBillNoNew(sDsn, kCustomerBomBill, false, 1, true, Object());
    const Recordset counter =
        RunQuery(frame_, sDsn, Sql() << L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOM'");
    const int32_t highest = counter.Eof() ? 0 : counter[L"FMaxNum"].AsLong();
    if (!strCustBOMID.empty() && !number.empty() && highest >= 1) {
      if (highest == std::numeric_limits<int32_t>::max()) com::Raise(com::RuntimeError::Overflow, kSource);
      const int32_t newId = highest + 1;
      const int32_t checker = GetCurrentUserId(frame_);
      const int32_t operatorId = GetCurrentUserId(frame_);
      conn = ConnectionThatVotes();
      conn.Run(CopyBatch({.source = strCustBOMID,
                          .newId = newId,
                          .number = number,
                          .checker = checker,
                          .operatorId = operatorId}));
    }
    return number;
  });
}

bool clsMCustBOM::SetCustBOM(const std::wstring& sDsn, const std::wstring& strCustBomCode,
                             const std::wstring& strParentCustBomInterID, const std::wstring& strItemID) {
  return frame_.AbortOnFailure([&] {
    frame_.VoteAbort();
    if (strCustBomCode.empty() || strParentCustBomInterID.empty() || strItemID.empty())
      return frame_.WithoutVote(false);
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection().Run(Sql() << L"UPDATE ICCUSTBOMCHILD SET FCustBomCode='" << strCustBomCode
                                     << L"' WHERE FInterID=" << strParentCustBomInterID << L" AND FItemID="
                                     << strItemID);
    return true;
  });
}

std::wstring clsMCustBOM::GetItemFNumber(const std::wstring& sDsn, const std::wstring& strItemID) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Recordset item =
        frame_.GetConnection().Execute(Sql() << L"SELECT FNumber FROM t_ICItem WHERE FItemID=" << strItemID);
    std::wstring number = item.Eof() ? std::wstring() : com::ToText(item[L"FNumber"]);
    return number;
  });
}

// ---- rules and feature items

Object clsMCustBOM::GetRecordSet(std::wstring& sDsn, std::wstring& s_SQL) {
  return RunQuery(frame_, sDsn, Sql() << s_SQL).object();
}

Object clsMCustBOM::GetRuleByItem(const std::wstring& sDsn, const std::wstring& strFItemID,
                                  const std::wstring& strFItemGroupID, const std::wstring& strRel) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return RunQuery(frame_, sDsn, RuleQuery(strFItemID, strFItemGroupID, strRel)).object();
  });
}

std::wstring clsMCustBOM::GetTeZhenSubItems(const std::wstring& sDsn, const std::wstring& strTeZhenItemID) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    const Recordset options = RunQuery(frame_, sDsn, FeatureOptionsQuery(strTeZhenItemID));
    std::wstring items = CommaList(options, L"FItemID");
    return items;
  });
}

} // namespace mbom
