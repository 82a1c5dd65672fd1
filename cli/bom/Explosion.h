// What a BOM is made of, level by level, and what has to be bought for it.
#pragma once

#include <functional>
#include <stdexcept>
#include <vector>

#include "cli/bom/Graph.h"

namespace bomcall::bom {

// A tree of more than two million nodes, which nobody reads: lines that share what is below them make many
// ways of few.
struct TooManyNodes : std::runtime_error {
  TooManyNodes();
};

struct Node {
  int level = 0;              // 0 for the BOM itself
  const Line* line = nullptr; // null for the BOM itself
  Id item = 0;
  const Bom* bom = nullptr; // that the item is made by here; null for what is bought
  Quantity quantity;        // in the item's base unit
  bool cycle = false;       // its BOM is one above it already, so it is not gone into again
};

// Calls `visit` for the BOM and everything below it, each line behind what it belongs to, `depth` levels at
// most (0: all). The quantities are those for `quantity` of the BOM's item; scrap, yield and percentages do
// not count in them. Throws TooManyNodes. Uses no stack of the machine: a BOM may be as deep as it likes.
void Explode(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth,
             const std::function<void(const Node&)>& visit);

struct Total {
  Id item = 0;
  Quantity quantity;
};

struct Totals {
  std::vector<Total> bought; // each item once, in the order in which they are met
  bool cycle = false;        // a BOM is below itself; what it would add again and again is not counted
};

// What `quantity` of the BOM's item takes of each item that no BOM makes. Every line is looked at once,
// however often its BOM is used.
Totals TotalsOf(const Graph& graph, const Bom& bom, const Quantity& quantity);

} // namespace bomcall::bom
