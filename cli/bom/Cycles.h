// BOMs that are below themselves.
#pragma once

#include <vector>

#include "cli/bom/Graph.h"

namespace bomcall::bom {

// Of each group of BOMs that are all below one another, one way round: from a BOM by the BOMs of its lines
// back to it, which stands at the end again. Takes time in proportion to the lines.
std::vector<std::vector<const Bom*>> CyclesOf(const Graph& graph);

} // namespace bomcall::bom
