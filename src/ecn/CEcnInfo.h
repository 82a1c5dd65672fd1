// CEcnInfo: engineering change notices.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"

namespace mbom {

class CEcnInfo {
 public:
  // The transaction mode that the host reads: 2.
  int32_t TransMode() const { return 2; }

 private:
  Frame frame_;
};

} // namespace mbom
