// The batch that finds the BOM groups of the browser's tree: the starting groups and all groups above them.
#pragma once

#include "src/frame/Collections.h"
#include "src/frame/Sql.h"

namespace mbom {

// Starting groups: every group when `groups` (values under "Key") is empty; otherwise these, `filter` and
// bLongNumber looking for the BOMs in them. The last select gives tree rows when bBomView, else the groups
// with their root and their largest distance from a starting group, each once.
Sql GroupTreeBatch(const Vector& groups, const Dictionary& filter, bool bLongNumber, bool bBomView);

} // namespace mbom
