// CBomFunction: BOM functions: numbering, copy, routing, groups.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"

namespace mbom {

class CBomFunction {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

 private:
  Frame frame_;
};

} // namespace mbom
