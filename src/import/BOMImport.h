// BOMImport: writes BOM groups and BOMs that an import client hands over as Dictionaries.
//
// Whatever carries the incoming number is deleted, and the record is written under a new identifier of
// ICMaxNum: what pointed at the old one is not updated. Values stand in the statements as their text, quotes
// are not doubled; a missing key is an empty value. Both methods return False on every path: success is that
// no error rises. What fails rises as the COM error it is, with the earlier statements left in effect, unless
// the host's transaction takes them back.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class BOMImport {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

  // Writes the BOM group of tDict: Number, Name, Parent (the parent group's id, 0 for a top group).
  bool UpdateBomGroup(const std::wstring& sDsn, com::Object& tDict);

  // Writes the BOM of tDict: BOMNumber, UseStatus (1072 in use, 1073 not), Version, Parent (the group), Item,
  // Qty, Yield, Routing, BOMType, Note, and the lines in Entry, a Vector of Dictionaries: EntryItem, Qty
  // (goes to FAuxQty; FQty is not computed), Scrap, Oper, MachinePos, Note, MaterielType, MarshalType,
  // Percent, OffSetDay, BackFlush, Stock, SP. Only the last line is written; without lines the header is
  // written twice.
  bool UpdateBOM(const std::wstring& sDsn, com::Object& tDict);

 private:
  Frame frame_;
};

} // namespace mbom
