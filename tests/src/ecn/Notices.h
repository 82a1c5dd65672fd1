// The BOMs and the change notice that the tests of CEcnInfo work on.
#pragma once

#include <string>

#include "tests/support/Client.h"

namespace mbom::test {

// BOM 10 makes item 500 of the lines 1, 2 and 3; BOM 11 is another one of the same item, BOM 12 of another
// item. Notice 77 changes BOM 10: it adds item 400, alters line 3 and deletes line 2. ICMaxNum has issued 41
// BOMs.
class Notices {
 public:
  Notices() {
    database.Execute(
        L"INSERT INTO ICBOM (FBrNo, FInterID, FBOMNumber, FItemID, FBomType, FStatus, FUseStatus, FVersion, "
        L"FParentID, FQty, FYield, FEnterTime, FRoutingID, FCustID, FCustItemID, FAccessories, FNote, "
        L"FUnitID, FAuxQty) VALUES "
        L"('B', 10, 'B10', 500, 0, 1, 1072, 'V1', 3, 2, 98, '2020-01-01', 7, 8, 9, 1, N'原版', 101, 4), "
        L"('B', 11, 'B11', 500, 0, 0, 1072, 'V0', 3, 1, 100, '2020-01-01', 0, 0, 0, 0, '', 101, 1), "
        L"('B', 12, 'B12', 600, 0, 0, 1072, 'V0', 3, 1, 100, '2020-01-01', 0, 0, 0, 0, '', 101, 1)");
    database.Execute(
        L"INSERT INTO ICBOMChild (FBrNo, FInterID, FEntryID, FItemID, FAuxQty, FQty, FScrap, FOperSN, "
        L"FOperID, FMachinePos, FNote, FMaterielType, FMarshalType, FPercent, FBeginDay, FEndDay, "
        L"FOffSetDay, FBackFlush, FStockID, FSPID, FSupply, FUnitID) VALUES "
        L"('B', 10, 1, 201, 1.5, 18, 2, 10, 40, 'P1', N'第一行', 371, 385, 100, '2026-03-01', '2026-12-31', "
        L"3, 1059, 51, 61, 1, 101), "
        L"('B', 10, 2, 202, 2, 2, 0, 20, 40, 'P1', N'第二行', 371, 385, 100, '2026-03-01', '2026-12-31', "
        L"0, 1059, 51, 61, 0, 101), "
        L"('B', 10, 3, 203, 3, 3, 0, 30, 40, 'P1', N'第三行', 371, 385, 100, '2026-03-01', '2026-12-31', "
        L"0, 1058, 52, 62, 0, 102)");
    database.Execute(L"INSERT INTO IcEcn (FInterID, FBillNo, FStatus, FBomInterID, FCBomNumber) VALUES "
                     L"(77, 'ECN77', 1, 10, 'NEW10')");
    database.Execute(
        L"INSERT INTO IcEcnEntry (FBrNo, FInterID, FEntryID, FChildID, FChangeType, FItemID, FAuxQty, FQty, "
        L"FOperSN, FOperID, FMachinePos, FNote, FUnitID) VALUES "
        L"('E', 77, 1, 0, 11021, 400, 4, 4, 10, 40, 'P9', N'新增', 103), "
        L"('E', 77, 2, 3, 11022, 303, 33, 33, 30, 40, 'P9', N'修改', 103), "
        L"('E', 77, 3, 2, 11023, 202, 2, 2, 20, 40, 'P1', N'删除', 101)");
    database.Execute(L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 41), ('IcEcn', 77)");
  }

  const TestDatabase database;
};

} // namespace mbom::test
