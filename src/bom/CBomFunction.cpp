#include "src/bom/CBomFunction.h"

#include <chrono>
#include <limits>

#include "com/ComError.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/ado/StoredProcedure.h"
#include "src/frame/globals/RowConversion.h"
#include "src/frame/globals/ServerObject.h"
#include "src/frame/globals/Texts.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr int32_t kBomBill = 50;
constexpr int32_t kCallFailed = -1;

constexpr wchar_t kHeaderColumns[] =
    L"FBrNo,FInterID,FBOMNumber ,FUseStatus ,FVersion,FParentID,FItemID,FQty,FYield,FCheckID,"
    L"FCheckDate,FOperatorID,FEnterTime,FStatus,FCancellation, FTranType,FRoutingID,FBomType,"
    L"FCustID,FCustItemID,FAccessories,FNote,FCheckerID,FAudDate";
constexpr wchar_t kLineColumns[] =
    L"FBrNo,FEntryID,FInterID,FItemID,FAuxQty,FQty,FScrap,FOperID,FMachinePos,FNote,"
    L"FMaterielType, FMarshalType,FPercent,FOffSetDay,FBackFlush,FStockID,FSPID,FSupply";

// The columns that the second query finds beside those of the first, each behind a comma.
std::wstring FurtherColumns(const Connection& conn, const Sql& fixedColumns, const Sql& allColumns) {
  const Dictionary fixed(RowToDictionary(conn.Execute(fixedColumns)));
  std::wstring extra;
  for (const std::wstring& name : conn.Execute(allColumns).FieldNames())
    if (!fixed.Holds(name.c_str())) extra += L"," + name;
  return extra;
}

// A search of many commands may take as long as one of them: a prefix whose text comments the serial out
// would make it try every serial there is.
class SearchTime {
 public:
  explicit SearchTime(const Connection& conn) : conn_(conn) {}

  bool IsOver() {
    const auto taken = std::chrono::steady_clock::now() - start_;
    if (taken < std::chrono::seconds(1)) return false;
    if (limit_ == kNotRead) limit_ = conn_.CommandTimeout();
    return limit_.count() > 0 && taken >= limit_;
  }

 private:
  static constexpr std::chrono::seconds kNotRead{-1}; // most searches end before the limit matters

  const Connection& conn_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::chrono::seconds limit_ = kNotRead;
};

bool NumberIsUsed(const Connection& conn, const std::wstring& prefix, int32_t serial) {
  return !conn.Execute(Sql() << L"select * from icbom where fbomnumber='" << prefix << serial << L"'").Eof();
}

} // namespace

bool CBomFunction::Bind(const std::wstring& sToParse) {
  connection_ = Connection(Object());
  return Frame::Succeeds([&] {
    frame_.OpenDataContext(sToParse);
    const Connection connection = frame_.GetConnection();
    if (!connection.object()) return false;
    connection_ = connection;
    return true;
  });
}

int32_t CBomFunction::GetMaxNum(const std::wstring& strName) {
  constexpr int32_t kNameSize = 50;
  const StoredProcedure procedure(connection_, L"GetICMaxNum");
  procedure.AppendInput(L"@TableName", strName, kNameSize);
  procedure.AppendOutput(L"@FInterID");
  procedure.Execute();
  return Variant(LeadingNumber(procedure.Value(1).AsText())).AsLong();
}

int32_t CBomFunction::GetBomCodeNum(const std::wstring& sToParse, std::wstring& ErrInfo) {
  return frame_.TrapFailures(kCallFailed, [&] {
    frame_.VoteAbort();
    if (!Bind(sToParse)) return frame_.Refuse(kCallFailed);
    int32_t serial = 0;
    { // The recordset is let go before the next statement.
      const Recordset rule = connection_.Execute(
          Sql() << L"select FPreLetter,FSufLetter,FCurNo,FFormat from icbillno where fbillid=50");
      if (rule.Eof()) return frame_.Refuse(kCallFailed);
      serial = rule[L"fcurno"].AsLong();
    }
    SearchTime time(connection_);
    while (NumberIsUsed(connection_, ErrInfo, serial)) {
      if (serial == std::numeric_limits<int32_t>::max() || time.IsOver())
        com::Raise(com::RuntimeError::Overflow, L"QorvaneMBomBill.CBomFunction");
      ++serial;
    }
    connection_.Run(Sql() << L"update icbillno set fcurno=fcurno+1 where fbillid=50");
    return serial;
  });
}

std::wstring CBomFunction::GetBomCodeNumEx(const std::wstring& sDsn, int32_t lItemId) {
  namespace names = outside::codeRule;
  return frame_.TrapFailures(std::wstring(), [&] {
    const Object rule = CreateServerObject(names::kProgId);
    const Variant items = rule.Call(names::kGetItemByBillType, sDsn, kBomBill);
    const Dictionary request = Dictionary::Make();
    bool hasItems = false;
    for (const std::wstring& item : TextsIn(items)) {
      const std::wstring name = Trim(item);
      if (name.empty() || name == L"-1") continue;
      request.Put(name.c_str(), 0);
      hasItems = true;
    }
    if (hasItems) request.Put(L"FItemID", lItemId);
    const Dictionary options = Dictionary::Make();
    options.Put(L"FDate", Today());
    options.Put(L"FBillType", kBomBill);
    options.Put(L"BillNumber", 1);
    options.Put(L"AutoUpdateCurNo", true);
    options.Put(L"MoreBillID", false);
    request.Put(L"Options", options.object());

    Variant requestArgument(request.object());
    Variant holder(Dictionary::Make().object());
    return rule
        .Call(names::kGetNewBillID, sDsn, Variant::TypedReference(requestArgument), true,
              Variant::TypedReference(holder))
        .AsText();
  });
}

int32_t CBomFunction::UpdateBomNumber(const std::wstring& sToParse, int32_t FInterID,
                                      const std::wstring& BomNumber, std::wstring& EffInfo) {
  constexpr int32_t kUpdated = 1;
  constexpr int32_t kError = 0;
  const Texts text(sToParse);
  return frame_.TrapFailures(kError, [&] {
    frame_.VoteAbort();
    if (!Bind(sToParse)) {
      // The text is asked for, but the caller does not get it: EffInfo stays as it came.
      static_cast<void>(text(L"更新失败，请重新输入"));
      return frame_.Refuse(kCallFailed);
    }
    const std::wstring number = Trim(BomNumber);
    { // The recordset is let go before the next statement.
      const Recordset sameNumber =
          connection_.Execute(Sql() << L"select * from icbom where  FBOMNumber='" << number << L"'");
      if (!sameNumber.Eof()) EffInfo = text(L"已经有此BOM编码，请重新输入");
    }
    connection_.Run(Sql() << L"update icbom set FEnterTime=Convert(Varchar(10),Getdate(),120), FBOMNumber='"
                          << number << L"' where FInterID=" << FInterID);
    return kUpdated;
  });
}

int32_t CBomFunction::CopyBom(const std::wstring& sToParse, const Object& Bom) {
  return frame_.TrapFailures(kCallFailed, [&] {
    frame_.VoteAbort();
    if (!Bind(sToParse)) return frame_.Refuse(kCallFailed);
    const int32_t newId = GetMaxNum(L"ICBOM");
    const Dictionary bom(Bom);
    const Variant source = bom.Require(L"FInterID");

    const std::wstring headerExtra = FurtherColumns(
        connection_, Sql() << L"select " << kHeaderColumns << L" from icbom where finterid=" << source,
        Sql() << L"select * from icbom where finterid=" << source);
    Sql copy;
    copy << L"insert into icbom(" << kHeaderColumns << headerExtra
         << L")\r\n"
            L" select FBrNo,"
         << newId << L",'" << bom.Require(L"FBOMNumber") << L"' ,1073 ,FVersion," << bom.Require(L"FParentID")
         << L",FItemID,FQty,FYield," << bom.Require(L"FCheckID")
         << L",Convert(Varchar(10),Getdate(),120) AS FCheckDate," << bom.Require(L"FOperatorID")
         << L",Convert(Varchar(10),Getdate(),120) FEnterTime,0,FCancellation, "
         << L" FTranType,FRoutingID,FBomType,FCustID,FCustItemID,FAccessories,FNote,0 ,null" << headerExtra
         << L" from icbom where finterid=" << source;

    const std::wstring lineExtra = FurtherColumns(
        connection_,
        Sql() << L"select top 1 " << kLineColumns << L" from icbomchild where finterid=" << source,
        Sql() << L"select * from icbomchild where finterid=" << source);
    copy << L"\r\n"
            L"insert into icbomchild ("
         << kLineColumns << lineExtra
         << L")\r\n"
            L" select FBrNo,FEntryID,"
         << newId << L",FItemID,FAuxQty,FQty,FScrap,FOperID,FMachinePos,FNote,FMaterielType,"
         << L" FMarshalType,FPercent,FOffSetDay,FBackFlush,FStockID,FSPID,FSupply " << lineExtra
         << L" from icbomchild where finterid=" << source;
    connection_.Run(copy);
    return newId;
  });
}

Object CBomFunction::GetRoutingData(const std::wstring& sToParse, bool /*LongNumber*/, int32_t FInterID,
                                    std::wstring& ErrInfo) {
  const Texts text(sToParse);
  return frame_.TrapFailures(Object(), [&] {
    if (!Bind(sToParse)) {
      ErrInfo = text(L"检查工艺路线过程中计算出错");
      return frame_.Refuse(Object());
    }
    Sql filter;
    if (FInterID != -1) filter << L" and t1.finterid=" << FInterID;
    const Recordset findings = connection_.Execute(
        Sql()
        << L"select t1.finterid ,t1.FBomNumber,b.FItemID,b.FName,'' FRoutingID,0 FBomType ," << L" '"
        << text(L"工艺路线不存在") << L"' FErrInfo" << L" from icbom t1,t_icitem b "
        << L" where t1.fitemid=b.fitemid and  t1.FRoutingID<>0  "
           L"and t1.FRoutingID not in (select FinterID from T_routing)"
        << L" " << filter.text()
        << L"\r\n"
           L" union  all \r\n"
           L"select t1.finterid,t1.FBomNumber,e.FItemID,e.FName,isnull(a1.FRoutingName,"
           L"'') FRoutingID ,1 FBomType  ,"
        << L" '" << text(L"子项物料工序在指定工艺路线中不存在") << L"' FErrInfo"
        << L" from icbom t1,icbomchild t2,T_routing a1,t_icitem b ,t_icitem e"
        << L" Where t1.FRoutingID = a1.FInterID And t1.FInterID = t2.FInterID And t1.FItemID = b.FItemID"
        << L" and (t2.FOperID not in (select distinct FOperID from T_Routingoper "
           L"where finterid=a1.finterid) )"
        << L"  and t2.fitemid=e.fitemid and t2.FOperID<>0 " << filter.text()
        << L"\r\n"
           L" union  all \r\n"
           L"select t1.finterid,t1.FBomNumber,e.FItemID,e.FName,'' FRoutingID ,1 FBomType  , '"
        << text(L"子项物料工序在父项无对应的工艺路线") << L"' FErrInfo"
        << L" from icbom t1,icbomchild t2,t_icitem b ,t_icitem e"
        << L" Where t1.FRoutingID =0 And t1.FInterID = t2.FInterID And t1.FItemID = b.FItemID and "
        << L" t2.fitemid=e.fitemid and t2.FOperID<>0  " << filter.text());
    ErrInfo.clear();
    return findings.object();
  });
}

bool CBomFunction::UpdateBomRouting(const std::wstring& sToParse, const Object& VectInfo) {
  const Texts text(sToParse);
  return frame_.TrapFailures(false, [&] {
    if (!Bind(sToParse) || !VectInfo) {
      // The text is asked for, but there is no place to return it in.
      static_cast<void>(text(L"更新工艺路线过程中计算出错"));
      return frame_.Refuse(false);
    }
    const Vector findings(VectInfo);
    const int32_t last = findings.UBound();
    for (int32_t i = 1; i <= last; ++i) {
      const Dictionary finding = findings.DictionaryAt(i);
      if (Equals(finding[L"FBomType"], 0)) {
        connection_.Run(Sql() << L"update icbom set froutingid=0 ,FOperatorID=" << finding[L"GetUserID"]
                              << L" ,FEnterTime=Convert(Varchar(10),Getdate(),120) where finterid="
                              << finding[L"FInterID"]
                              << L"\r\n"
                                 L"update icbomchild set FOperID=0 where finterid="
                              << finding[L"FInterID"]);
        // The header's repair ends the call: what follows in the Vector is not looked at, and no vote is
        // cast.
        return frame_.WithoutVote(true);
      }
      connection_.Run(Sql() << L"update icbom set FOperatorID=" << finding[L"GetUserID"]
                            << L", FEnterTime=Convert(Varchar(10),Getdate(),120) where finterid="
                            << finding[L"FInterID"]
                            << L"\r\n"
                               L"update icbomchild set FOperID=0 where finterid="
                            << finding[L"FInterID"] << L" And FItemID =" << finding[L"FItemID"]);
    }
    return true;
  });
}

bool CBomFunction::UpdateBomGroup(const std::wstring& sToParse, int32_t BomInterId, int32_t BomGroupID,
                                  int32_t FOperatorID) {
  return RunUpdate(sToParse, Sql() << L"update icbom set FParentID=" << BomGroupID
                                   << L",FEnterTime=Convert(Varchar(10),Getdate(),120),FOperatorID=  "
                                   << FOperatorID << L" where Finterid=" << BomInterId);
}

bool CBomFunction::UpdateBomGroupName(const std::wstring& sToParse, int32_t FInterID,
                                      const std::wstring& BomGroupName) {
  return RunUpdate(sToParse, Sql() << L"update icbomgroup set FName='" << Trim(BomGroupName)
                                   << L"' where FInterID=" << FInterID);
}

bool CBomFunction::RunUpdate(const std::wstring& sToParse, const Sql& update) {
  return frame_.TrapFailures(false, [&] {
    frame_.VoteAbort();
    if (!Bind(sToParse)) return frame_.Refuse(false);
    connection_.Run(update);
    return true;
  });
}

} // namespace mbom
