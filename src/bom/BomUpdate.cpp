#include "src/bom/BomUpdate.h"

#include <exception>

#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/Globals.h"

namespace mbom {
namespace {

using com::Object;

constexpr int16_t kNotInUse = 1073;
constexpr int32_t kCustomerBomBill = 53;
constexpr int16_t kRefused = 99;

void SetUseStatusByItem(const Connection& conn, int32_t itemId, int16_t status) {
  conn.Execute(Sql() << L"UPDATE ICBom SET FUseStatus=" << status << L" WHERE FItemID=" << itemId);
}

} // namespace

bool BomUpdate::BeginSave(const std::wstring& sDsn, Object& SaveVect, std::wstring& /*ReturnMsg*/) {
  frame_.VoteAbort();
  frame_.OpenDataContext(sDsn);
  {
    const Connection conn = frame_.GetConnection();
    const Vector save(SaveVect);
    if (save.UBound() >= 2) {
      const Dictionary change = save.DictionaryAt(2);
      if (IsTrue(change[L"UseStatusChange"]))
        SetUseStatusByItem(conn, change[L"FItemID"].AsLong(), kNotInUse);
    }
  }
  frame_.VoteComplete();
  return true;
}

bool BomUpdate::EndSave(const std::wstring& sDsn, Object& SaveVect, std::wstring& ReturnMsg) {
  try {
    if (StampSavedBom(sDsn, SaveVect, ReturnMsg)) {
      frame_.VoteComplete();
      return true;
    }
  } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the vote below is the whole answer
  }
  frame_.VoteAbort();
  return false;
}

bool BomUpdate::StampSavedBom(const std::wstring& sDsn, const Object& SaveVect, std::wstring& ReturnMsg) {
  const std::wstring language = GetDsnValue(sDsn, L"Language");
  frame_.VoteAbort();
  frame_.OpenDataContext(sDsn);
  const Connection conn = frame_.GetConnection();

  const Dictionary bom = Vector(SaveVect).DictionaryAt(1);
  const Recordset header =
      conn.Execute(Sql() << L"select FEcnInterId from IcBom where FInterId = " << bom[L"FInterID"]);
  if (!header) return false;
  if (IsGreater(header[L"FEcnInterID"], 0)) {
    ReturnMsg = LoadResText(L"该BOM单为工程变更生成或已通过工程变更，不能审核和反审核!", language);
    bom.Put(L"SaveRetCode", kRefused);
    return false;
  }

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
  conn.Execute(stamp);

  const wchar_t* lines = customerBom ? L"ICCustBOMChild" : L"ICBOMChild";
  conn.Execute(
      Sql() << L" Update t1 set t1.FQty=cast(t1.FAuxQty as float) * (cast(isnull(t3.FCoefficient,1) as"
               L" float) + cast(isnull(t3.FScale,0) as float))"
            << kCrLf << L" from " << lines << L"  t1,t_MeasureUnit t3" << kCrLf
            << L" Where t3.FItemID = t1.FUnitID and t1.FInterID=" << bom[L"FInterID"]);

  // The lines of a customer BOM stand in another table, but it is the ordinary lines that are opened here.
  conn.Execute(Sql() << L"IF EXISTS (SELECT 1 FROM ICBOM WHERE FInterId = " << bom[L"FInterID"]
                     << L" AND FBomtype <> 0) " << kCrLf
                     << L"    UPDATE ICBomChild SET FBeginDay = '1900-01-01', FEndDay = '2100-01-01'"
                        L" WHERE FInterID = "
                     << bom[L"FInterID"]);
  return true;
}

bool BomUpdate::UpdateIcBomStatus(const std::wstring& sDsn, const std::wstring& lBomNumber) {
  frame_.VoteAbort();
  frame_.OpenDataContext(sDsn);
  frame_.GetConnection().Execute(Sql() << L"UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='"
                                       << lBomNumber << L"' ");
  frame_.VoteComplete();
  return false;
}

} // namespace mbom
