#include "cli/bom/Explosion.h"

#include <unordered_set>

namespace bomcall::bom {
namespace {

constexpr size_t kMostNodes = 2000000;

Quantity Needed(const Quantity& parents, const Bom& bom, const Line& line) {
  return parents * line.quantity / bom.quantity;
}

// A BOM whose lines are being gone through.
struct Open {
  const Bom* bom;
  Quantity quantity;
  std::span<const Line* const> left;
};

const Line& TakeFirst(std::span<const Line* const>& lines) {
  const Line& first = *lines.front();
  lines = lines.subspan(1);
  return first;
}

// The BOMs below, each behind all of those that it is below. Sets `cycle` where there is no such order.
std::vector<const Bom*> FromTheTop(const Graph& graph, const Bom& top, bool& cycle) {
  struct Walk {
    const Bom* bom;
    std::span<const Line* const> left;
  };
  std::vector<const Bom*> finished;
  std::unordered_map<Id, bool> isFinished{{top.id, false}};
  std::vector<Walk> open{{&top, graph.LinesOf(top)}};
  while (!open.empty()) {
    Walk& walk = open.back();
    if (walk.left.empty()) {
      isFinished[walk.bom->id] = true;
      finished.push_back(walk.bom);
      open.pop_back();
      continue;
    }
    const Bom* below = graph.BomBelow(TakeFirst(walk.left));
    if (!below) continue;
    const auto [known, isNew] = isFinished.try_emplace(below->id, false);
    if (isNew)
      open.push_back({below, graph.LinesOf(*below)});
    else if (!known->second)
      cycle = true;
  }
  return {finished.rbegin(), finished.rend()};
}

} // namespace

TooManyNodes::TooManyNodes()
    : std::runtime_error("the tree has more than " + std::to_string(kMostNodes) +
                         " nodes: give --depth, or take cost-lines for the sums") {}

void Explode(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth,
             const std::function<void(const Node&)>& visit) {
  visit({0, nullptr, bom.item, &bom, quantity, false});
  std::vector<Open> open{{&bom, quantity, graph.LinesOf(bom)}};
  std::unordered_set<Id> above{bom.id};
  size_t nodes = 1;
  while (!open.empty()) {
    Open& top = open.back();
    const auto level = static_cast<int>(open.size());
    if (top.left.empty() || (depth > 0 && level > depth)) {
      above.erase(top.bom->id);
      open.pop_back();
      continue;
    }
    const Line& line = TakeFirst(top.left);
    const Bom* below = graph.BomBelow(line);
    const bool cycle = below && above.contains(below->id);
    if (++nodes > kMostNodes) throw TooManyNodes();
    const Quantity needed = Needed(top.quantity, *top.bom, line);
    visit({level, &line, line.item, below, needed, cycle});
    if (!below || cycle) continue;
    above.insert(below->id);
    open.push_back({below, needed, graph.LinesOf(*below)});
  }
}

Totals TotalsOf(const Graph& graph, const Bom& bom, const Quantity& quantity) {
  Totals totals;
  std::unordered_map<Id, Quantity> ofBoms{{bom.id, quantity}};
  std::unordered_map<Id, size_t> places;
  std::unordered_set<Id> done;
  for (const Bom* made : FromTheTop(graph, bom, totals.cycle)) {
    done.insert(made->id);
    const Quantity count = ofBoms[made->id];
    for (const Line* line : graph.LinesOf(*made)) {
      const Quantity needed = Needed(count, *made, *line);
      if (const Bom* below = graph.BomBelow(*line)) {
        if (!done.contains(below->id)) ofBoms[below->id] += needed;
        continue;
      }
      const auto [known, isNew] = places.try_emplace(line->item, totals.bought.size());
      if (isNew) totals.bought.push_back({line->item, {}});
      totals.bought[known->second].quantity += needed;
    }
  }
  return totals;
}

} // namespace bomcall::bom
