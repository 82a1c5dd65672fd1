#include "cli/bom/Check.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_set>

#include "cli/bom/Cycles.h"

namespace bomcall::bom {
namespace {

std::wstring ItemName(const Graph& graph, Id item) {
  const Item* known = graph.ItemOf(item);
  return known ? known->number : L"item " + std::to_wstring(item);
}

class Checker {
 public:
  explicit Checker(const Graph& graph) : graph_(graph) {}

  std::vector<Finding> Run() {
    Cycles();
    std::unordered_set<Id> knownBoms;
    std::map<Id, std::vector<const Bom*>> inUse;
    for (const Bom& bom : graph_.boms()) {
      knownBoms.insert(bom.id);
      if (bom.cancelled) continue;
      Head(bom);
      Lines(bom);
      if (bom.inUse && bom.type != kCustomerBom) inUse[bom.item].push_back(&bom);
    }
    for (const auto& [item, boms] : inUse)
      if (boms.size() > 1) SeveralInUse(item, boms);
    for (const Line* line : graph_.lines())
      if (!knownBoms.contains(line->bom))
        Add(L"missing parent", std::to_wstring(line->bom), line->entry,
            L"there is no BOM " + std::to_wstring(line->bom) + L" that the line belongs to");
    return std::move(findings_);
  }

 private:
  void Add(std::wstring kind, std::wstring bom, int32_t entry, std::wstring what) {
    findings_.push_back({std::move(kind), std::move(bom), entry, std::move(what)});
  }

  void Cycles() {
    for (const std::vector<const Bom*>& cycle : CyclesOf(graph_)) {
      std::wstring way;
      for (const Bom* bom : cycle) way.append(way.empty() ? L"" : L" > ").append(bom->number);
      Add(L"cycle", cycle.front()->number, 0, way);
    }
  }

  void Head(const Bom& bom) {
    if (!graph_.ItemOf(bom.item))
      Add(L"missing parent", bom.number, 0,
          L"there is no item " + std::to_wstring(bom.item) + L" that it makes");
    Unit(bom, 0, bom.unit);
  }

  void Unit(const Bom& bom, int32_t entry, Id unit) {
    if (!graph_.UnitOf(unit))
      Add(L"missing unit", bom.number, entry, L"there is no unit " + std::to_wstring(unit));
  }

  void Lines(const Bom& bom) {
    std::map<std::tuple<Id, int32_t, Id>, std::vector<const Line*>> alike;
    for (const Line* line : graph_.LinesOf(bom)) {
      if (!graph_.ItemOf(line->item))
        Add(L"missing item", bom.number, line->entry, L"there is no item " + std::to_wstring(line->item));
      // Its own item, where another BOM than this one is in use: that is no cycle yet.
      const Bom* below = graph_.BomBelow(*line);
      if (line->item == bom.item && below != &bom)
        Add(L"cycle", bom.number, line->entry,
            L"the line is the BOM's own item, " + ItemName(graph_, line->item));
      Unit(bom, line->entry, line->unit);
      alike[{line->item, line->operation, line->property}].push_back(line);
    }
    for (auto& [key, lines] : alike) Overlaps(bom, lines);
  }

  // In the order of their first days, the line that is valid longest so far is the one to compare with.
  void Overlaps(const Bom& bom, std::vector<const Line*>& lines) {
    std::ranges::stable_sort(lines, {}, &Line::beginDay);
    const Line* longest = nullptr;
    for (const Line* line : lines) {
      if (line->endDay < line->beginDay) continue; // never valid
      if (longest && line->beginDay <= longest->endDay)
        Add(L"overlap", bom.number, line->entry,
            ItemName(graph_, line->item) + L" from " + DayText(line->beginDay) + L" to " +
                DayText(line->endDay) + L" is valid with line " + std::to_wstring(longest->entry) +
                L", from " + DayText(longest->beginDay) + L" to " + DayText(longest->endDay));
      if (!longest || longest->endDay < line->endDay) longest = line;
    }
  }

  void SeveralInUse(Id item, const std::vector<const Bom*>& boms) {
    std::wstring numbers;
    for (const Bom* bom : boms) numbers.append(numbers.empty() ? L"" : L", ").append(bom->number);
    Add(L"several in use", graph_.BomThatMakes(item)->number, 0,
        ItemName(graph_, item) + L" is made by " + numbers);
  }

  const Graph& graph_;
  std::vector<Finding> findings_;
};

} // namespace

std::vector<Finding> Check(const Graph& graph) {
  return Checker(graph).Run();
}

} // namespace bomcall::bom
