// What is wrong with BOMs, as far as their data tell.
#pragma once

#include <string>
#include <vector>

#include "cli/bom/Graph.h"

namespace bomcall::bom {

struct Finding {
  std::wstring kind; // "cycle", "missing parent", "missing item", "missing unit", "overlap", "several in use"
  std::wstring bom;  // its number, or the identifier of one that is not there
  int32_t entry = 0; // of the line; 0 for what is about the BOM
  std::wstring what;
};

// Of BOMs that are not cancelled: cycles, by way of the BOMs in use; BOMs whose item, and lines whose BOM or
// item, does not exist; units that do not; lines of one item, operation and property that are valid on the
// same day; items with several BOMs in use. In the order of the BOMs.
std::vector<Finding> Check(const Graph& graph);

} // namespace bomcall::bom
