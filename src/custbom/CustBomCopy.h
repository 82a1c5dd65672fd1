// The batch that copies a customer BOM with its lines.
#pragma once

#include <cstdint>
#include <string>

#include "src/frame/Sql.h"

namespace mbom {

struct CustBomCopy {
  std::wstring source; // the id of the customer BOM to copy, as text
  int32_t newId;       // the copy's, which becomes the highest one of ICMaxNum
  std::wstring number; // the copy's
  int32_t checker;     // the user who goes into FCheckID
  int32_t operatorId;
};

// The copy is not in use, not audited, not disabled and dated today; its lines keep their numbers.
Sql CopyBatch(const CustBomCopy& copy);

} // namespace mbom
