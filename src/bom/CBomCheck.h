// CBomCheck: audits and un-audits a BOM, and says whether a BOM may be deleted or modified.
//
// Every method takes the BOM's id and its number, which is for the message alone, and gives a result code and
// a message in the descriptor's language. No method votes at entry; each votes once, at its end, and closes
// its recordset after that. A failure of whatever kind gives 0 and a message with the failure's own
// description, the unit of work voted aborted.
//
// BOMs are rows of ICBOM: FStatus greater than 0 audited, FCheckID the maker, FCheckerID the auditor,
// FBomType 3 a customer BOM, whose FParentID is then the configuration BOM that it was made from.
#pragma once

#include <cstdint>
#include <string>

#include "src/frame/Frame.h"

namespace mbom {

class CBomCheck {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Audits the BOM `lInterID` in the name of the user `lEmpID`: 1 audited; 2 refused, the unit of work voted
  // aborted, because the BOM is missing or audited, or the user is its maker and the setting
  // General/SingleMan is not 1. The message of a success quotes the stored number, that of a refusal
  // `sBillNo`.
  int32_t BomCheck(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo, int32_t lEmpID,
                   std::wstring& strMsg);

  // Takes the audit back and the BOM out of use: 1 un-audited; 2 refused, the unit of work voted aborted,
  // because the BOM is missing or not audited, or the user is not its auditor and the setting
  // IC/SameUserApprovalAndUnApproval is 1, or the user is its maker and General/SingleMan is not 1; -1
  // refused because cost objects or sales orders use it, the unit of work voted complete. Any `lType` but 0
  // un-audits without asking what uses the BOM. The settings must be numbers: anything else is a failure.
  // A BOM that was audited without an auditor's id (FCheckerID Null, as UpdateIcBomStatus leaves it) cannot
  // be un-audited while only the auditor may do it: no user is equal to Null.
  int32_t BomUndoCheck(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                       int32_t lEmpID, int32_t lType, std::wstring& strMsg);

  // 1 the BOM may be deleted, the message asks for confirmation; 2 it may not, because sales orders, cost
  // objects or, for a customer BOM, batches use it, or customer BOMs were made from it. Nothing is written.
  int32_t GetBomDelInfo(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                        std::wstring& strMsg);

  // 1 the BOM may be modified, strMsg stays as it came; 2 it may not, because sales orders, cost objects or,
  // for a customer BOM, batches use it. Nothing is written.
  int32_t GetBomModifyInfo(const std::wstring& sDsn, int32_t lInterID, const std::wstring& sBillNo,
                           std::wstring& strMsg);

 private:
  // The frame of the checks before deletion and modification: opens the query that finds the BOM if it is a
  // customer BOM; `check` reads on, composes the message and gives the result. `failure` is the message's
  // middle when the check itself fails.
  template <class Check>
  int32_t CheckUse(const std::wstring& sDsn, const Sql& customerBomQuery, const std::wstring& sBillNo,
                   const wchar_t* failure, std::wstring& strMsg, const Check& check);

  Frame frame_;
};

} // namespace mbom
