// Pictures of a BOM.
#pragma once

#include <string>

#include "cli/bom/Graph.h"
#include "cli/bom/Quantity.h"

namespace bomcall::bom {

// For Graphviz: a node an item, an edge a line with its quantity for one of the item above; however often
// an item is used, its node stands there once. `depth` levels at most (0: all).
std::wstring DotOf(const Graph& graph, const Bom& bom, int depth);

// A page that needs nothing else: the tree, whose branches open and close.
std::wstring HtmlOf(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth);

} // namespace bomcall::bom
