// What the lines of two BOMs differ in.
#pragma once

#include <string>
#include <vector>

#include "cli/bom/Graph.h"

namespace bomcall::bom {

struct Difference {
  const Line* before = nullptr; // null for a line that was added
  const Line* after = nullptr;  // null for one that was removed
  std::wstring what;            // of a changed line: "quantity 2 -> 3; scrap 0 -> 5"
};

// The lines are matched by item and auxiliary property, those of the same operation first, and in their order
// where several are alike. First those of the first BOM, in its order, then what was added.
std::vector<Difference> DifferencesOf(const Graph& graph, const Bom& before, const Bom& after);

} // namespace bomcall::bom
