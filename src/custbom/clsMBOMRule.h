// clsMBOMRule: what the screens of the customer BOM's rules read: the group of an item, and any query.
//
// Both methods only read. A failure rises as the COM error it is, the unit of work voted aborted.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class clsMBOMRule {
 public:
  // The transaction mode that the host reads: 3.
  int32_t TransMode() const { return 3; }

  // The group of the item `s_ItemID`, a recordset of at most one row: fitemid, groupid and groupname from
  // t_icitem and t_item; both Null when the item's parent is no group node of the materials. Quotes in the id
  // do no harm.
  com::Object GetICItemParent(const std::wstring& sDsn, const std::wstring& s_ItemID);

  // The rows of the statement `s_SQL`, client-side. The arguments come back as they were.
  com::Object GetRecordSet(std::wstring& sDsn, std::wstring& s_SQL);

 private:
  Frame frame_;
};

} // namespace mbom
