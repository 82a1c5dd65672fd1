// Which types convert to which, as the server's table of conversions has it.
#pragma once

#include "tsql/values/Types.h"

namespace tsql {

enum class Conversion : uint8_t { Implicit, ExplicitOnly, Impossible };
Conversion FindConversion(TypeId from, TypeId to);

} // namespace tsql
