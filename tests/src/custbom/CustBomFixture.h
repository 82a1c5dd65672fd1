// Customer BOMs three levels deep, with what uses them, for the tests of both customer-BOM classes.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/Calls.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"
#include "tests/support/Rows.h"

namespace mbom::test {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// Binds nothing: it names neither a provider nor a data source.
inline constexpr wchar_t kBindsNothing[] = L"Language=chs";

// Configuration BOM 1 of item 501 (class 5) and BOM 2 of item 502 (class 2); made from 1 the customer BOMs:
//   5 (audited) <- line of 9 (audited) <- line of 12 (not audited) <- line of 15 (audited)
//   7 (not audited), used twice by 12; 20 used by nothing
// The maker and checker are 16394's.
class CustBomFixture : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO t_ICItem (FItemID, FNumber, FShortNumber, FName, FModel, FParentID, "
                      L"FErpClsID, FUnitID, "
                      L"FCUUnitID, FQtyDecimal, FUseState, FIsKeyItem) VALUES "
                      L"(501, '05.001', '001', 'Made to order', 'M1', 11, 5, 8, 8, 2, 341, 1), "
                      L"(502, '05.002', '002', 'Frame', 'M2', 12, 2, 8, 9, 0, 341, 0)");
    database_.Execute(
        L"INSERT INTO ICBOM (FInterID, FBOMNumber, FBomType, FParentID, FItemID, FUnitID, FVersion, FStatus, "
        L"FUseStatus, FCustID, FNote, FRoutingID) VALUES "
        L"(1, 'CFG1', 1, 3, 501, 8, '1.0', 1, 1072, 0, '', 4), (2, 'B2', 0, 3, 502, 8, '2.0', 0, 1073, 0, "
        L"'n2', 0), "
        L"(5, 'KH5', 3, 1, 502, 8, '1.0', 1, 1072, 7, '', 0), (9, ' KH9 ', 3, 1, 501, 8, '1.0', 1, 1072, 7, "
        L"'', 0), "
        L"(12, 'KH12', 3, 1, 501, 8, '1.0', 0, 1073, 7, '', 0), (15, 'KH15', 3, 1, 501, 8, '1.0', 1, 1072, "
        L"7, '', 0), "
        L"(7, 'KH7', 3, 1, 502, 8, '1.0', 0, 1073, 7, '', 0), (20, 'KH20', 3, 1, 501, 8, '1.0', 0, 1073, 7, "
        L"'', 0)");
    database_.Execute(L"INSERT INTO ICCustBOMChild (FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, "
                      L"FCustBOMCode) VALUES (9, 1, 502, 8, 1, 1, 5), (12, 1, 501, 8, 1, 1, 9), "
                      L"(12, 2, 502, 8, 2, 2, 7), (12, 3, 502, 8, 3, 3, 7), (15, 1, 501, 8, 1, 1, 12), "
                      L"(20, 1, 502, 8, 4, 4, NULL)");
  }

  // FInterID, FUseStatus, FStatus, FForbid, FCheckerID of the BOMs of the list.
  Texts States(const std::wstring& ids) const {
    return database_.Rows(
        L"SELECT FInterID, FUseStatus, FStatus, FForbid, FCheckerID, FAudDate FROM ICBOM WHERE "
        L"FInterID IN (" +
        ids + L") ORDER BY FInterID");
  }

  // The outside calls of a set-up on the database's descriptor.
  Texts SetUpCalls() const { return AroundSetUp({}, Dsn(), {}); }
  std::wstring Dsn() const { return database_.Dsn(L"Language=chs"); }

  const TestDatabase database_;
};

// The texts one behind the other.
inline Texts Concat(std::initializer_list<Texts> parts) {
  Texts all;
  for (const Texts& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

} // namespace mbom::test
