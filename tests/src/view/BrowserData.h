// A small factory for the tests of the BOM browser.
//
// Groups  1 Bikes > 2 City, 3 Hill > 4 Proto; 5 Parts (no children)
// Items   501 Bike (class 2), 502 Wheel (phantom, 9), 503 Configured bike (5), 504 Hub (1)
// BOMs    11 Bike in use, group 2, audited by Anna, made by Ben     12 Wheel not in use, group 3
//         13 Configured bike, type 1, group 4, audited              14 Bike, type 2, group 5, audited
//         15 customer BOM of 13 for customer 9, audited             16 Hub, type 4, in no group, audited
#pragma once

#include "tests/support/Client.h"

namespace mbom::test {

// The query for the setting that says whether items are shown by their short numbers.
inline constexpr wchar_t kSettingQuery[] =
    L"SELECT FValue FROM t_SystemProfile WHERE FCategory='IC' AND FKey='UseShortNumber'";

inline void FillBrowserData(const TestDatabase& database) {
  database.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                   L"(1, 'G1', 'Bikes', 0, 1), (2, 'G1.1', 'City', 1, 1), (3, 'G1.2', 'Hill', 1, 1), "
                   L"(4, 'G1.2.1', 'Proto', 3, 1), (5, 'G2', 'Parts', 0, 5)");
  database.Execute(
      L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FModel, FErpClsID, FUnitID, FCUUnitID, "
      L"FQtyDecimal, FIsKeyItem) VALUES (501, 'I.501', '501', 'Bike', 'M1', 2, 1, 2, 0, 1), "
      L"(502, 'I.502', '502', 'Wheel', 'M2', 9, 1, 2, 3, 0), (503, 'I.503', '503', 'Configured', 'M3', 5, 1, "
      L"1, 0, 0), (504, 'I.504', '504', 'Hub', NULL, 1, 2, 2, 0, 0)");
  database.Execute(L"INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FName, FDeleted) VALUES "
                   L"(501, 4, 'I.501', 'Bike', 0), (502, 4, 'I.502', 'Wheel', 1), (503, 4, 'I.503', 'Conf', "
                   L"0), (504, 4, 'I.504', 'Hub', 0)");
  database.Execute(
      L"INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName) VALUES "
      L"(1, 1, 10, 'PC', 'piece'), (2, 2, 10, 'PR', 'pair')");
  database.Execute(
      L"INSERT INTO t_SubMessage (FInterID, FTypeID, FID, FName) VALUES (1, 210, 'W', 'Bought'), "
      L"(2, 210, 'Z', 'Made'), (5, 210, 'P', 'Configured'), (9, 210, 'X', 'Phantom'), "
      L"(341, 36, 'S', 'Current'), (371, 40, 'P', 'Ordinary'), (385, 42, 'T', 'General'), "
      L"(61001, 61, 'A', 'Assembly'), (61002, 62, 'B', 'Not an operation')");
  database.Execute(L"INSERT INTO t_User (FUserID, FName) VALUES (71, 'Anna'), (72, 'Ben')");
  database.Execute(L"INSERT INTO t_Routing (FInterID, FBillNo, FRoutingName) VALUES (7, 'R7', 'Line 7')");
  database.Execute(
      L"INSERT INTO ICBOM (FInterID, FBOMNumber, FUseStatus, FParentID, FItemID, FUnitID, FStatus, FBomType, "
      L"FCustID, FCheckerID, FCheckID, FNote, FVersion, FRoutingID, FQty, FAuxQty, FFee, FYield, "
      L"FGMPExpectQty) VALUES "
      L"(11, 'B11', 1072, 2, 501, 1, 1, 0, 0, 71, 72, 'first', 'v1', 7, 2, 1, 3.5, 98, 40), "
      L"(12, 'B12', 1073, 3, 502, 1, 0, 0, 0, NULL, 71, '', '', 0, 1, 1, 0, 100, 0), "
      L"(13, 'B13', 1072, 4, 503, 1, 1, 1, 0, 71, 72, '', '', 0, 1, 1, 0, 100, 0), "
      L"(14, 'B14', 1073, 5, 501, 1, 1, 2, 0, NULL, 71, '', '', 0, 1, 1, 0, 100, 0), "
      L"(15, 'B15', 1072, 13, 501, 1, 1, 3, 9, 71, 72, '', '', 0, 1, 1, 0, 100, 0), "
      L"(16, 'B16', 1072, 0, 504, 2, 1, 4, 0, 71, 72, '', '', 0, 1, 1, 0, 100, 0)");
  database.Execute(
      L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FScrap, FBeginDay, "
      L"FEndDay, FPercent, FOperSN, FOperID, FMachinePos, FOffSetDay, FBackFlush, FStockID, FSPID, FNote, "
      L"FGMPUnitID, FGMPAuxQty) VALUES "
      L"(11, 1, 502, 2, 1, 2, 5, '2020-01-01', '2020-12-31', 100, 10, 61001, 'P1', 1, 1059, 81, 91, 'a', 2, "
      L"6), "
      L"(11, 2, 504, 1, 3, 3, 0, '1900-01-01', '2100-01-01', 100, 0, 61002, '', 0, 1058, 0, 0, '', 0, 0), "
      L"(12, 1, 504, 1, 36, 36, 0, '1900-01-01', '2100-01-01', 100, 0, 0, '', 0, 1059, NULL, 0, '', 0, 0), "
      L"(13, 1, 501, 1, 1, 1, 0, '2020-01-01', '2020-12-31', 100, 0, 0, '', 0, 1059, 0, 0, '', 0, 0), "
      L"(14, 1, 502, 1, 1, 1, 0, '1900-01-01', '2100-01-01', 60, 0, 0, '', 0, 1059, 0, 0, '', 0, 0), "
      L"(15, 1, 502, 1, 1, 1, 0, '1900-01-01', '2100-01-01', 100, 0, 0, '', 0, 1059, 0, 0, '', 0, 0), "
      L"(16, 1, 502, 1, 1, 1, 0, '1900-01-01', '2100-01-01', 100, 0, 0, '', 0, 1059, 0, 0, '', 0, 0)");
  database.Execute(L"INSERT INTO t_Stock (FItemID, FNumber, FName) VALUES (81, 'S', 'Store')");
  database.Execute(
      L"INSERT INTO t_StockPlace (FSPID, FNumber, FName) VALUES (0, '*', '*'), (91, 'R', 'Rack')");
}

} // namespace mbom::test
