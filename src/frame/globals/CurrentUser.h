// The user on whose behalf a call runs.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"

namespace mbom {

// The id of the user who called (QorvaneWoskBase.SecurityInfo, asked afresh each time). Failures throw.
int32_t GetCurrentUserId(const Frame& frame);

} // namespace mbom
