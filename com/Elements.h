// Elements: what an Automation array holds.
#pragma once

#include <optional>
#include <vector>

#include "com/Variant.h"

namespace com {

// The elements of a one-dimensional array of any type and lower bound, in their order. Nothing when the value
// is no such array.
std::optional<std::vector<Variant>> ElementsOf(const Variant& array);

} // namespace com
