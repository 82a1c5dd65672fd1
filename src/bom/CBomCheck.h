// CBomCheck: BOM audit and checks.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"

namespace mbom {

class CBomCheck {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

 private:
  Frame frame_;
};

} // namespace mbom
