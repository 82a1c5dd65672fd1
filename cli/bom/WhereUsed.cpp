#include "cli/bom/WhereUsed.h"

#include <algorithm>
#include <unordered_set>

namespace bomcall::bom {

std::vector<Use> UsesOf(const Graph& graph, Id item) {
  std::vector<Use> uses;
  std::unordered_set<Id> met{item};
  std::vector<Id> level{item};
  for (int number = 1; !level.empty(); ++number) {
    std::vector<Id> above;
    for (const Id used : level) {
      for (const Line* line : graph.LinesWith(used)) {
        const Bom* bom = graph.BomOf(line->bom);
        uses.push_back({number, line, bom});
        if (bom && bom->inUse && met.insert(bom->item).second) above.push_back(bom->item);
      }
    }
    level = std::move(above);
  }
  return uses;
}

std::vector<Use> TopsOf(const Graph& graph, const std::vector<Use>& uses) {
  const auto isUsed = [&](Id item) {
    return std::ranges::any_of(graph.LinesWith(item), [&](const Line* line) {
      const Bom* bom = graph.BomOf(line->bom);
      return bom && bom->inUse;
    });
  };
  std::vector<Use> tops;
  std::unordered_set<Id> met;
  for (const Use& use : uses)
    if (use.bom && use.bom->inUse && met.insert(use.bom->item).second && !isUsed(use.bom->item))
      tops.push_back(use);
  return tops;
}

} // namespace bomcall::bom
