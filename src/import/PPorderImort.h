// PPorderImort: writes production orders that an import client hands over as Dictionaries.
//
// It works as BOMImport does, with the same failures: nothing is trapped, values stand in the statements as
// they are, and the result is False on every path.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class PPorderImort {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Writes the order of tDict: BillNo, Date, Biller, CheckDate, Checker, and the lines in Entry, a Vector of
  // Dictionaries: EntryItem, Unit, Qty, NeedDate, Note, AuxQty, CommitQty, AuxCommitQty. Dates are texts.
  // BillNo only deletes orders that have the number: it is not written. The check date goes to FCheckerID and
  // the checker to FCheckDate. Only the last line is written; without lines the header is written twice.
  bool UpdatePPOrder(const std::wstring& sDsn, com::Object& tDict);

 private:
  Frame frame_;
};

} // namespace mbom
