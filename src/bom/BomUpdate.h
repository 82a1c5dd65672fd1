// BomUpdate: the hooks around the saving of a BOM, and the maintenance of BOMs.
//
// The header status in ICBOM: FStatus 0 not audited, 1 audited; FUseStatus 1072 in use, 1073 not in use;
// FEcnInterID greater than 0: under engineering-change control. Dates are the database server's.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class BomUpdate {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Before a BOM is saved: when its use status changes, every BOM of its item goes out of use.
  // SaveVect is a Vector of Dictionary; read are item 2's UseStatusChange (Boolean) and FItemID. ReturnMsg is
  // not touched. Returns True. Failures rise, the unit of work voted aborted.
  bool BeginSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // After a BOM was saved: stamps operator and date, for bills of transaction type 53 also the maker, the use
  // status and the parent, recomputes the lines' base quantities from their units, and opens the validity of
  // the lines of BOMs that are not ordinary. SaveVect: item 1 holds FInterID, FTransType and, for type 53,
  // StateParm (a Dictionary with FParentID). A BOM under engineering-change control is refused: False, item
  // 1's SaveRetCode becomes 99, ReturnMsg the reason in the descriptor's language. Every failure gives False,
  // the unit of work voted aborted, and leaves both as they were.
  bool EndSave(const std::wstring& sDsn, com::Object& SaveVect, std::wstring& ReturnMsg);

  // Sets the BOMs with the number `lBomNumber` audited and in use. The result means nothing: it is False
  // always. Failures rise, the unit of work voted aborted.
  bool UpdateIcBomStatus(const std::wstring& sDsn, const std::wstring& lBomNumber);

 private:
  // False when the BOM is refused; what refused it stands in SaveVect and ReturnMsg.
  bool StampSavedBom(const std::wstring& sDsn, const com::Object& SaveVect, std::wstring& ReturnMsg);

  Frame frame_;
};

} // namespace mbom
