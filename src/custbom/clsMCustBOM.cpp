#include "src/custbom/clsMCustBOM.h"

#include <limits>
#include <set>

#include "com/ComError.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "src/custbom/Query.h"
#include "src/frame/BomReferences.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/Globals.h"
#include "src/frame/ShortNumber.h"
#include "src/frame/Texts.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kSource[] = L"QorvaneMBomBill.clsMCustBOM";
constexpr int32_t kCustomerBomBill = 53;
constexpr int kOverflow = 6;
constexpr int kInvalidCall = 5;

// The documents that can use a customer BOM: at most one row for each kind, with its translated name in
// FTableName. `condition` is what stands behind the column: " = 12", " IN (12,15)".
Sql UsageQuery(const std::wstring& condition, const Texts& text) {
  return Sql() << L" Select Top 1 '" << text(L"客户BOM批次表")
               << L"' as FTableName, FCustBomId as FBomInterID From IcorderBatchTrace Where FCustBomId"
               << condition << kCrLf << L" union select top 1 '" << text(L"销售订单")
               << L"' as FTableName, FBomInterID From SEOrderEntry Where FBomInterID" << condition << kCrLf
               << L" union select top 1 '" << text(L"生产任务单")
               << L"' as FTableName, FBomInterID From ICMO Where FBomInterID" << condition << kCrLf
               << L" union select top 1 '" << text(L"计划订单")
               << L"' as FTableName, FApplicableBom As FBomInterID From t_SubsItem Where FApplicableBom"
               << condition << kCrLf << L" union select top 1 '" << text(L"产品预测单")
               << L"' as FTableName, FBomInterID As FBomInterID From PPOrderEntry Where FBomInterID"
               << condition;
}

// A column that says no where `column` has the value, and yes where it has any other.
Sql YesNo(const wchar_t* column, const wchar_t* no, const wchar_t* alias, const Texts& text) {
  return Sql() << L"CASE " << column << L" WHEN " << no << L" THEN '" << text(L"否") << L"' ELSE '"
               << text(L"是") << L"' END AS " << alias << L",";
}

const wchar_t* NumberColumn(bool shortNumber) {
  return shortNumber ? L"b.FShortNumber AS FNumber," : L"b.FNumber,";
}

std::wstring HeaderQuery(bool shortNumber, const Texts& text, const std::wstring& interId,
                         const std::wstring& bomType, const std::wstring& filter, const std::wstring& order) {
  Sql query;
  query << L"SELECT * FROM (" << kCrLf << L"SELECT a.FInterID,a.FBOMNumber,a.FVersion,a.FNote,b.FName,"
        << kCrLf << NumberColumn(shortNumber) << kCrLf << L" (case a.FStatus when 0 then '" << text(L"未审核")
        << L"' else '" << text(L"已审核") << L"' end) as FStatus ," << kCrLf << L"a.FStatus as FStatusNum ,"
        << kCrLf << L"CASE FUseStatus WHEN 1072 THEN '" << text(L"使用") << L"' ELSE '" << text(L"未使用")
        << L"' END AS FUseStatus," << kCrLf << L"FUseStatus as FUseStatusNum ," << kCrLf
        << L"a.FYield,a.FQty,a.FAuxQty,a.FParentID,b.FQtyDecimal,a.FBomType,a.FCustID," << kCrLf
        << L"a.FItemID,b.FModel,c.FName AS FUnitID,b.FCUUnitID ,v.FName AS FErpClsName,d.FBillNo as "
           L"FRoutingNo,d.FRoutingName AS FRoutingName "
        << kCrLf << L" FROM ICBOM a " << kCrLf << L" INNER JOIN t_ICItem b ON a.FItemID=b.FItemID " << kCrLf
        << L" LEFT OUTER JOIN t_routing d on a.FRoutingID = d.FInterID" << kCrLf
        << L" left outer join t_SubMessage v on b.FErpClsID=v.FInterID " << kCrLf
        << L" INNER JOIN t_MeasureUnit c ON a.FUnitID=c.FItemID" << kCrLf << L" WHERE  1=1) t1";
  if (!filter.empty()) {
    const bool list = bomType == L"-1" || bomType == L"-99";
    query << L" WHERE " << (list ? L" FInterID IN (" + interId + L")" : L" FInterID =" + interId);
  }
  if (!order.empty()) query << L" ORDER BY " << order;
  return query.text();
}

std::wstring LineQuery(bool shortNumber, const Texts& text, const std::wstring& bomType,
                       const std::wstring& filter, const std::wstring& order) {
  const bool customer = bomType == L"3";
  Sql query;
  query << L"SELECT * FROM (" << kCrLf << L"SELECT a.FEntryID,a.FInterID,b.FItemID," << kCrLf
        << NumberColumn(shortNumber) << kCrLf
        << (customer ? L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.Fname as FunitID, "
                     : L"b.FName AS FItemName,b.FModel,d.FName AS FBaseUnitID,w.FName as FUnitID,")
        << kCrLf << L"e.FName AS FMaterielType,f.FName AS FMarshalType,a.FAuxQty,a.FQty,a.FScrap," << kCrLf
        << L"a.FBeginDay,a.FEndDay," << kCrLf
        << L"a.FPercent,(case a.FOperSN when 0 then '' else cast(a.FOperSN as varchar(255)) end) "
           L"FOperSN,j.FName AS "
           L"FOperID,a.FMachinePos,a.FOffSetDay,"
        << kCrLf << YesNo(L"a.FBackFlush", L"1059", L"FBackFlush", text) << kCrLf
        << YesNo(L"b.FIsKeyItem", L"0", L"FIsKeyItem", text) << kCrLf
        << YesNo(L"h.FDeleted", L"0", L"FForbitUse", text) << kCrLf
        << (customer ? L"g.FName AS FUseState,i.FName AS FSPID,"
                     : L"g.FName AS FUseState,case i.FSPID when 0 then '' else i.FName end AS FSPID,")
        << kCrLf
        << (customer ? L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName, u.FBomNumber "
                     : L"c.FName AS FStockID,a.FNote,b.FQtyDecimal ,v.FName AS FErpClsName")
        << kCrLf << (customer ? L" FROM ICCustBOMChild a" : L" FROM ICBOMChild a") << kCrLf
        << L"inner join t_ICItem b on a.FItemID = b.FItemID" << kCrLf
        << L"left join (SELECT FItemID,FName FROM t_Stock UNION SELECT 0 AS FItemID,'' AS FName) c on "
           L"ISNULL(a.FStockID,0) = c.FItemID"
        << kCrLf << L"left join t_MeasureUnit d on b.FUnitID = d.FItemID" << kCrLf
        << L"left join t_SubMessage e on a.FMaterielType = e.FInterID" << kCrLf
        << L"left join t_SubMessage f on a.FMarshalType= f.FInterID " << kCrLf
        << L"left join t_SubMessage g on b.FUseState = g.FInterID" << kCrLf
        << L"left join t_Item h on b.FItemID = h.FItemID" << kCrLf
        << L"left join t_StockPlace i on a.FSPID = i.FSPID" << kCrLf
        << L"left join t_SubMessage j on a.FOperID = j.FInterID and j.FTypeID = 61" << kCrLf
        << L"left join t_MeasureUnit w on a.FunitID=w.FitemID" << kCrLf
        << L"left outer join t_SubMessage v on b.FErpClsID=v.FInterID";
  if (customer) query << L" " << kCrLf << L"left outer join ICBOM u on u.FInterID=a.FCustBomCode";
  query << L") t1";
  if (!filter.empty()) query << L" WHERE " << filter;
  if (!order.empty()) query << L" ORDER BY " << order;
  return query.text();
}

// The two conditions joined by AND; an empty one is left out.
std::wstring SearchTerm(const std::wstring& filter, const std::wstring& filter1) {
  const std::wstring_view kAnd = L" AND ";
  std::wstring term = Trim(filter) + std::wstring(kAnd) + Trim(filter1);
  if (term.starts_with(kAnd)) term.erase(0, kAnd.size());
  if (term.ends_with(kAnd)) term.resize(term.size() - kAnd.size());
  return term;
}

StoredProcedure TreeCommand(const std::wstring& sDsn, const std::wstring& filter, const std::wstring& filter1,
                            const std::wstring& lookType) {
  constexpr int32_t kTextSize = 1000;
  constexpr int32_t kAll = -1;
  constexpr int32_t kConfiguredItems = 5;
  const bool forChangeNotice = com::EqualsNoCase(lookType, L"ECNLOOKUP");
  StoredProcedure tree(L"sp_GetCustBOMTree");
  tree.AppendReturnValue(L"RETURN_VALUE");
  tree.AppendInput(L"@p_FItemIDFrom", kAll);
  tree.AppendInput(L"@p_FItemIDTo", kAll);
  tree.AppendInput(L"@p_FErpClsID", forChangeNotice ? kAll : kConfiguredItems);
  tree.AppendInput(L"@p_Term", SearchTerm(filter, filter1), kTextSize);
  tree.AppendInput(L"@p_BomBill", Texts(sDsn)(L"BOM单"), kTextSize);
  return tree;
}

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
    return CommaList(conn.Execute(Sql() << L"SELECT ICBOM.FBomNumber FROM ICBOM INNER JOIN ICCustBomChild ON "
                                           L"ICBOM.FInterID=ICCustBomChild.FInterID WHERE "
                                           L"ICCustBomChild.FCustBomCode IN ("
                                        << ids << L")"),
                     L"FBomNumber");
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
    const Recordset upper =
        RunQuery(frame_, sDsn,
                 Sql() << L"SELECT ICBOM.FInterID,ICBOM.FBomNumber,ISNULL(ICBOM.FStatus,0) FStatus FROM "
                          L"ICBOM,ICCUSTBOMCHILD WHERE ICBOM.FInterID=ICCUSTBOMCHILD.FInterID AND "
                          L"ICCUSTBOMCHILD.FCustBomCode IN ("
                       << level << L") ");
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
    Sql update;
    if (b_AuditFlag)
      update << L"UPDATE ICBOM SET FUseStatus=" << 1072 << L",FStatus=" << 1 << L",FCheckerID='" << user
             << L"',FAudDate='" << now << L"' WHERE FInterID IN (" << strCustBomInterID << L")";
    else
      update << L"UPDATE ICBOM SET FUseStatus=" << 1073 << L",FStatus=" << 0
             << L",FCheckerID=0,FAudDate=NULL WHERE FInterID IN (" << strCustBomInterID << L")";
    conn = ConnectionThatVotes();
    conn.Run(update);
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
    const int32_t forbid = b_Status ? VARIANT_TRUE : VARIANT_FALSE;
    conn.Run(Sql() << L"UPDATE ICBOM SET FForbid=" << forbid << L" WHERE FInterID IN (" << strCustBomInterID
                   << L")");
    return std::wstring(L"SUCCESS");
  });
}

// ---- tree and panels

Object clsMCustBOM::GenBomTreeDataSQL(const std::wstring& sDsn, std::wstring& sFilter, std::wstring& sFilter1,
                                      std::wstring& /*sOrder*/, std::wstring& sLookType) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return TreeCommand(sDsn, sFilter, sFilter1, sLookType).object();
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
    return TreeCommand(sDsn, sFilter, sFilter1, sLookType).OpenDetached(conn).object();
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
                 Sql() << L"select FPreLetter, FSufLetter, FCurNo = isNull(FCurNo, 0) + 1, FFormat" << kCrLf
                       << L"from ICBillNo WITH(UPDLOCK) where FBillID = 53");
    if (rule.Eof())
      com::RaiseRuntimeError(kInvalidCall, kSource,
                             LoadResText(L"ICBillNo中未定义客户BOM", strLanguage).c_str());
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
      if (highest == std::numeric_limits<int32_t>::max())
        com::RaiseRuntimeError(kOverflow, kSource, L"Overflow");
      const int32_t newId = highest + 1;
      const int32_t checker = GetCurrentUserId(frame_);
      const int32_t operatorId = GetCurrentUserId(frame_);
      const wchar_t lineColumns[] =
          L"[FEntryID], [FItemID], [FQty], [FAuxQty], [FMaterielType], [FMarshalType], [FOffSetDay], "
          L"[FBackFlush], "
          L"[FScrap], [FOperID], [FMachinePos], [FStockID], [FSPID], [FPercent], [FNote], [FUnitID], "
          L"[FOrgMarshalType], [FCharacterItemId], [FBeginDay], [FEndDay], [FOperSN], [FCustBOMCode]";
      conn = ConnectionThatVotes();
      conn.Run(
          Sql()
          << L"INSERT INTO [ICBOM]([FBrNo], [FInterID], [FBOMNumber], [FUseStatus], [FVersion], [FParentID], "
             L"[FItemID], [FQty], [FYield], [FCheckID], [FCheckDate], [FOperatorID], [FEnterTime], "
             L"[FStatus], "
             L"[FCancellation], [FTranType], [FRoutingID], [FBomType], [FCustID], [FCustItemID], "
             L"[FAccessories], [FNote], [FUnitID], [FAUXQTY], [FCheckerID], [FAudDate], [FEcnInterID], "
             L"[FBeenChecked], [FAuxPropID], [FForbid])  SELECT [FBrNo], "
          << newId << L", '" << number << L"', 1073, [FVersion], [FParentID], [FItemID], [FQty], [FYield], "
          << checker << L", Convert(Varchar(10),Getdate(),120), " << operatorId
          << L", Convert(Varchar(10),Getdate(),120), 0, [FCancellation], [FTranType], [FRoutingID], "
             L"[FBomType], [FCustID], [FCustItemID], [FAccessories], [FNote], [FUnitID], [FAUXQTY], 0, NULL, "
             L"[FEcnInterID], [FBeenChecked], [FAuxPropID], 0 FROM [ICBOM] WHERE FInterID="
          << strCustBOMID << L";" << L"  INSERT INTO [ICCustBOMChild]([FBrNo], [FInterID], " << lineColumns
          << L")  SELECT [FBrNo], " << newId << L", " << lineColumns
          << L" FROM [ICCustBOMChild]  WHERE FInterID=" << strCustBOMID << L";"
          << L"UPDATE ICMaxNum SET FMaxNum=" << newId << L" WHERE FTableName='ICBOM';");
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
  const bool relations = com::EqualsNoCase(strRel, L"REL");
  Sql query;
  query << L"SELECT t_ICItem_1.FNumber AS FEntryFNumber, dbo.t_BOMRuleEntry.FEntryItemID, "
        << L" t_ICItem_1.FName AS FEntryFName, dbo.t_ICItem.FNumber, dbo.t_BOMRule.FItemID, "
        << L" dbo.t_ICItem.FName , dbo.t_BOMRuleEntry.FRuleID " << L" FROM dbo.t_BOMRule INNER JOIN "
        << L" dbo.t_BOMRuleEntry ON " << L" dbo.t_BOMRule.FInterID = dbo.t_BOMRuleEntry.FInterID INNER JOIN "
        << L" dbo.t_ICItem ON dbo.t_BOMRule.FItemID = dbo.t_ICItem.FItemID INNER JOIN "
        << L" dbo.t_ICItem t_ICItem_1 ON dbo.t_BOMRuleEntry.FEntryItemID = t_ICItem_1.FItemID ";
  if (!strFItemID.empty()) {
    query << L" WHERE ((t_BOMRule.FItemID IN (" << strFItemID << L")";
    if (relations)
      query << L") AND dbo.t_BOMRuleEntry.FEntryItemID " << L" NOT IN (" << strFItemID << L") ";
    else
      query << L") ";
    if (!strFItemGroupID.empty())
      query << L" AND (t_BOMRuleEntry.FGroupItemID=0 OR t_BOMRuleEntry.FGroupItemID=" << strFItemGroupID
            << L"))";
    else
      query << L")";
  }
  if (relations)
    query << L" AND t_BomRuleEntry.FRuleID='Rel'";
  else if (com::EqualsNoCase(strRel, L"MUT"))
    query << L" AND t_BomRuleEntry.FRuleID='Mut'";

  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return RunQuery(frame_, sDsn, query).object();
  });
}

std::wstring clsMCustBOM::GetTeZhenSubItems(const std::wstring& sDsn, const std::wstring& strTeZhenItemID) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    const Recordset options =
        RunQuery(frame_, sDsn,
                 Sql() << L"SELECT a.FItemID FROM ICBOMChild a,ICBOM b WHERE "
                       << L"a.FInterID=b.FInterID AND b.FUseStatus=1072" << L" AND b.FItemID="
                       << Variant(LeadingNumber(strTeZhenItemID)));
    std::wstring items = CommaList(options, L"FItemID");
    return items;
  });
}

} // namespace mbom
