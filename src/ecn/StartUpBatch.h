// The batch that starts an engineering change notice.
#pragma once

#include <cstdint>

#include "src/frame/Sql.h"

namespace mbom {

// The temporary tables of the start-up: #Temp collects the lines of the new BOM, #ICBomChild numbers them
// from 1.
Sql BuildEcnTempTablesSql();

// The steps of the start-up, on these tables: the notice `ecn`, started by `user`, makes a new version of the
// BOM `bom`.
Sql BuildStartUpSql(int32_t bom, int32_t ecn, int32_t user);

} // namespace mbom
