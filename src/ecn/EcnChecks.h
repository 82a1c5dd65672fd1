// The statements of the save of an engineering change notice: what its checks ask, and the snapshot of the
// old values.
#pragma once

#include <cstdint>

#include "src/frame/Sql.h"

namespace mbom {

// The first pair of an added line and a line of the BOM that are alike.
Sql DuplicateLineSql(int32_t id);

// The number of deleted lines (0 where the notice adds one) less the number of the BOM's lines.
Sql RemainingLinesSql(int32_t id);

// The planned percentages of the lines after the change, or -1 where they do not matter.
Sql PercentSumSql(int32_t id);

// Keeps the values of the BOM's lines in the lines of the notice that refer to them.
Sql SnapshotSql(int32_t id);

} // namespace mbom
