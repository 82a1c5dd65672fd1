#include "src/bom/BomUpdate.h"

#include "com/ValueText.h"
#include "src/domain/BomReferences.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/CurrentUser.h"
#include "src/frame/globals/Texts.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr int16_t kNotInUse = 1073;
constexpr int32_t kCustomerBomBill = 53;
constexpr int16_t kSaveRefused = 99;

void SetUseStatusByItem(const Connection& conn, int32_t itemId, int16_t status) {
  conn.Run(Sql() << L"UPDATE ICBom SET FUseStatus=" << status << L" WHERE FItemID=" << itemId);
}

// A clause of a caller's own, or none.
std::wstring Where(const std::wstring& sFilter) {
  return sFilter.empty() ? std::wstring() : L" WHERE " + sFilter;
}

} // namespace

bool BomUpdate::BeginSave(const std::wstring& sDsn, Object& SaveVect, std::wstring& /*ReturnMsg*/) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Vector save(SaveVect);
    if (save.UBound() >= 2) {
      const Dictionary change = save.DictionaryAt(2);
      if (IsTrue(change[L"UseStatusChange"]))
        SetUseStatusByItem(conn, change[L"FItemID"].AsLong(), kNotInUse);
    }
    return true;
  });
}

bool BomUpdate::EndSave(const std::wstring& sDsn, Object& SaveVect, std::wstring& ReturnMsg) {
  return frame_.TrapFailures(false, [&] {
    const Texts text(sDsn);
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();

    const Dictionary bom = Vector(SaveVect).DictionaryAt(1);
    { // The recordset is let go before the next statement.
      const Recordset header =
          conn.Execute(Sql() << L"select FEcnInterId from IcBom where FInterId = " << bom[L"FInterID"]);
      if (!header) return frame_.Refuse(false);
      if (IsGreater(header[L"FEcnInterID"], 0)) {
        ReturnMsg = text(L"该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!");
        bom.Put(L"SaveRetCode", kSaveRefused);
        return frame_.Refuse(false);
      }
    }

    StampSavedBom(conn, bom);
    return true;
  });
}

void BomUpdate::StampSavedBom(const Connection& conn, const Dictionary& bom) const {
  const bool customerBom = Equals(bom[L"FTransType"], kCustomerBomBill);
  Sql stamp;
  stamp << L"UPDATE ICBom SET FOperatorID=" << GetCurrentUserId(frame_) << L","
        << L"FEnterTime=Convert(Varchar(10),Getdate(),120)";
  if (customerBom) {
    stamp << L",FCheckID=" << GetCurrentUserId(frame_) << L","
          << L"FCheckDate=Convert(Varchar(10),Getdate(),120)" << L"," << L"FUseStatus=1073 ,FParentID="
          << Dictionary(bom[L"StateParm"].AsObject())[L"FParentID"];
  }
  stamp << L" WHERE FInterID=" << bom[L"FInterID"];
  conn.Run(stamp);

  const wchar_t* lines = customerBom ? L"ICCustBOMChild" : L"ICBOMChild";
  conn.Run(Sql() << L" Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,"
                    L"1) as float) + cast(isnull(t3.FScale,0) as float))\r\n"
                    L" from "
                 << lines
                 << L"  t1,t_MeasureUnit t3\r\n"
                    L" Where t3.FItemID = t1.FUnitID and t1.FInterID="
                 << bom[L"FInterID"]);

  // The lines of a customer BOM stand in another table, but it is the ordinary lines that are opened here.
  conn.Run(Sql() << L"IF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = " << bom[L"FInterID"]
                 << L" AND FBomtype <> 0) \r\n"
                    L"    UPDATE ICBomChild SET FBeginDay = '1900-01-01', FEndDay = '2100-01-01' "
                    L"WHERE FInterID = "
                 << bom[L"FInterID"]);
}

bool BomUpdate::UpdateIcBomStatus(const std::wstring& sDsn, const std::wstring& lBomNumber) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection().Run(Sql() << L"UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='"
                                     << lBomNumber << L"' ");
    return false;
  });
}

bool BomUpdate::AddBomGroup(const std::wstring& sDsn, const Object& tDict, int32_t& NewGroupInterId) {
  int32_t newId = 0;
  const bool added = frame_.TrapFailures(false, [&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Dictionary group(tDict);
    const Recordset answer = conn.Execute(
        Sql() << L" Set NoCount on\n"
              << L" Declare @NewInterId int\n"
              << L" if exists(SELECT FMaxNum FROM ICMaxNum WHERE FTableName='ICBOMGroup') \n"
              << L"     SELECT @NewInterId= FMaxNum+1 FROM ICMaxNum WHERE FTableName='ICBOMGroup'\n"
              << L" else \n"
              << L"     Select @NewInterId=1\n"
              << L" Declare @ParentId int\n"
              << L" Declare @BootId int\n"
              << L" Select @ParentId=" << group[L"FParentID"] << L"\n"
              << L" if @ParentId=0 \n"
              << L"     Select @BootId=@NewInterId\n"
              << L" else\n"
              << L"     SELECT @BootId=FBootID FROM IcBomGroup WHERE FInterID = @ParentId\n"
              << L" INSERT INTO ICBomGroup (FInterID,FNumber,FName,FParentID,FBootID) \n"
              << L" VALUES (@NewInterId,'" << group[L"FNumber"] << L"','" << group[L"FName"]
              << L"',@ParentId,@BootId)\n"
              << L" UPDATE ICMaxNum SET FMaxNum=@NewInterId WHERE FTableName='ICBOMGroup'\n"
              << L" Set NoCount Off\n"
              << L" Select @NewInterId as NewInterId \n");
    if (answer.Eof()) {
      NewGroupInterId = 0;
      return frame_.Refuse(false);
    }
    newId = Variant(LeadingNumber(com::ToText(answer[L"NewInterId"]))).AsLong();
    return true;
  });
  // The caller's value stays when the vote has failed.
  if (added) NewGroupInterId = newId;
  return added;
}

bool BomUpdate::UpdateBomGroup(const std::wstring& sDsn, const Object& tDict, const std::wstring& sFilter) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Dictionary group(tDict);
    Sql update;
    update << L"UPDATE ICBomGroup SET ";
    const wchar_t* separator = L"";
    for (const wchar_t* field : {L"FNumber", L"FName", L"FParentID"}) {
      if (!group.Holds(field)) continue;
      update << separator << field << L"='" << group[field] << L"'";
      separator = L",";
    }
    conn.Run(update << Where(sFilter));
    return false;
  });
}

bool BomUpdate::DeleteBom(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Recordset answer =
        conn.Execute(Sql() << L" if not exists(select * from ICBOM Where FStatus = 1 and FCheckerID>0 and "
                           << sFilter << L") \n"
                           << L" Begin set nocount on\n"
                           << L" DELETE FROM ICBom" << Where(sFilter) << L"\n"
                           << L"     set nocount off\n"
                           << L"     Select 1 as Succ\n"
                           << L" End\n"
                           << L" Else\n"
                           << L"     Select 0 as Succ\n");
    return !answer.Eof() && LeadingNumber(com::ToText(answer[L"Succ"])) == 1;
  });
}

bool BomUpdate::DeleteBomGroup(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection().Run(Sql() << L"DELETE FROM ICBomGroup" << Where(sFilter));
    return false;
  });
}

bool BomUpdate::UpdateBOM(const std::wstring& sDsn, const Object& tVect, const std::wstring& sFilter) {
  return frame_.LetFailuresRise([&] {
    frame_.VoteAbort();
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const Vector fields(tVect);
    const int32_t last = fields.UBound();
    Sql update;
    update << L"UPDATE ICBom SET ";
    for (int32_t i = 1; i <= last; ++i) {
      const Dictionary field = fields.DictionaryAt(i);
      update << field[L"FFieldID"] << L"=" << field[L"FValue"] << (i < last ? L"," : L"");
    }
    conn.Run(update << Where(sFilter));
    return false;
  });
}

int32_t BomUpdate::CheckBomUsed(const std::wstring& sDsn, int32_t FInterID, std::wstring& strInfo) {
  constexpr int32_t kUsed = 1;
  constexpr int32_t kNotUsed = 0;
  constexpr int32_t kFailedCode = -1;
  return frame_.TrapFailures(kFailedCode, [&] {
    const Texts text(sDsn);
    frame_.OpenDataContext(sDsn);
    const ClientRecordset references(frame_.GetConnection());
    references.Open(BomUsedSql(FInterID, false, text) << L"\r\n");
    if (!references.IsOpen()) {
      strInfo = text(L"检查BOM是否被引用时出现错误，请检查参数是否正确。");
      return frame_.Refuse(kFailedCode);
    }
    strInfo.clear();
    if (references.RecordCount() < 1) return kNotUsed;
    AppendReferences(references, text, strInfo);
    return kUsed;
  });
}

bool BomUpdate::SetVisibelBySysProfile(const std::wstring& sDsn, const std::wstring& sVal) {
  return frame_.TrapFailures(false, [&] {
    frame_.VoteComplete();
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection().Run(
        Sql() << L"UPDATE IcTableFieldInfo SET FVisible = '" << sVal
              << L"' \r\n"
                 L"WHERE FCtlID IN ('BOM', 'OneGradeBOMQuery', 'MutiGradeBOMQuery', 'OneGradeBOMQueryRev', "
                 L"'MutiGradeBOMQueryRev', 'BomTreeQuery') \r\n"
                 L"AND FLdgNum = 1 AND FName IN ('FBeginDay', 'FEndDay') ");
    // Complete was voted before the set-up; there is no other vote.
    return frame_.WithoutVote(true);
  });
}

} // namespace mbom
