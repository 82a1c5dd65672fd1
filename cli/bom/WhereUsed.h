// In which BOMs an item is used, directly and through others.
#pragma once

#include <vector>

#include "cli/bom/Graph.h"

namespace bomcall::bom {

struct Use {
  int level = 0; // 1 for a BOM that has the item in its own lines
  const Line* line = nullptr;
  const Bom* bom = nullptr; // null where the line's BOM does not exist
};

// Every line that uses the item, or a product that does, each once and the nearest first. It goes on above a
// BOM that is in use.
std::vector<Use> UsesOf(const Graph& graph, Id item);

// The products at the top: made by BOMs among the uses that are in use, and used in none themselves. Each
// once, with its lowest level.
std::vector<Use> TopsOf(const Graph& graph, const std::vector<Use>& uses);

} // namespace bomcall::bom
