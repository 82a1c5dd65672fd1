#include "src/custbom/CustBomCopy.h"

namespace mbom {
namespace {

constexpr wchar_t kLineColumns[] =
    L"[FEntryID], [FItemID], [FQty], [FAuxQty], [FMaterielType], [FMarshalType], "
    L"[FOffSetDay], [FBackFlush], [FScrap], [FOperID], [FMachinePos], [FStockID], [FSPID], "
    L"[FPercent], [FNote], [FUnitID], [FOrgMarshalType], [FCharacterItemId], [FBeginDay], "
    L"[FEndDay], [FOperSN], [FCustBOMCode]";

} // namespace

Sql CopyBatch(const CustBomCopy& copy) {
  return Sql() << L"INSERT INTO [ICBOM]([FBrNo], [FInterID], [FBOMNumber], [FUseStatus], [FVersion], "
                  L"[FParentID], [FItemID], [FQty], [FYield], [FCheckID], [FCheckDate], [FOperatorID], "
                  L"[FEnterTime], [FStatus], [FCancellation], [FTranType], [FRoutingID], [FBomType], "
                  L"[FCustID], [FCustItemID], [FAccessories], [FNote], [FUnitID], [FAUXQTY], [FCheckerID], "
                  L"[FAudDate], [FEcnInterID], [FBeenChecked], [FAuxPropID], [FForbid])  SELECT [FBrNo], "
               << copy.newId << L", '" << copy.number
               << L"', 1073, [FVersion], [FParentID], [FItemID], [FQty], [FYield], " << copy.checker
               << L", Convert(Varchar(10),Getdate(),120), " << copy.operatorId
               << L", Convert(Varchar(10),Getdate(),120), 0, [FCancellation], [FTranType], [FRoutingID], "
                  L"[FBomType], [FCustID], [FCustItemID], [FAccessories], [FNote], [FUnitID], [FAUXQTY], 0, "
                  L"NULL, [FEcnInterID], [FBeenChecked], [FAuxPropID], 0 FROM [ICBOM] WHERE FInterID="
               << copy.source << L";" << L"  INSERT INTO [ICCustBOMChild]([FBrNo], [FInterID], "
               << kLineColumns << L")  SELECT [FBrNo], " << copy.newId << L", " << kLineColumns
               << L" FROM [ICCustBOMChild]  WHERE FInterID=" << copy.source << L";"
               << L"UPDATE ICMaxNum SET FMaxNum=" << copy.newId << L" WHERE FTableName='ICBOM';";
}

} // namespace mbom
