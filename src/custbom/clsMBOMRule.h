// clsMBOMRule: customer BOM rules.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"

namespace mbom {

class clsMBOMRule {
 public:
  // The transaction mode that the host reads: 3.
  int32_t TransMode() const { return 3; }

 private:
  Frame frame_;
};

} // namespace mbom
