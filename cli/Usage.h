// What bomcall --help and bomcall bom --help say.
#pragma once

namespace bomcall {

extern const char kUsage[];
extern const char kBomUsage[];

} // namespace bomcall
