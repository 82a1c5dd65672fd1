#include "cli/bom/Cycles.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>

namespace bomcall::bom {
namespace {

// Tarjan's algorithm for strongly connected components, with a stack of its own.
class Components {
 public:
  explicit Components(const Graph& graph) : graph_(graph) {
    for (const Bom& bom : graph.boms())
      if (!bom.cancelled && !marks_.contains(bom.id)) WalkFrom(bom);
  }
  const std::vector<std::vector<const Bom*>>& found() const { return found_; }

 private:
  struct Mark {
    size_t index;
    size_t lowest;
    bool isOpen;
  };
  struct Walk {
    const Bom* bom;
    std::span<const Line* const> left;
  };

  void Enter(const Bom& bom) {
    const size_t index = marks_.size();
    marks_[bom.id] = {index, index, true};
    open_.push_back(&bom);
    walks_.push_back({&bom, graph_.LinesOf(bom)});
  }

  void WalkFrom(const Bom& first) {
    Enter(first);
    while (!walks_.empty()) {
      Walk& walk = walks_.back();
      if (walk.left.empty()) {
        Leave(*walk.bom);
        continue;
      }
      const Bom* below = graph_.BomBelow(*walk.left.front());
      walk.left = walk.left.subspan(1);
      if (!below || below->cancelled) continue;
      const auto known = marks_.find(below->id);
      if (known == marks_.end())
        Enter(*below);
      else if (known->second.isOpen)
        Lower(*walk.bom, known->second.index);
    }
  }

  void Lower(const Bom& bom, size_t index) {
    Mark& mark = marks_[bom.id];
    mark.lowest = std::min(mark.lowest, index);
  }

  void Leave(const Bom& bom) {
    const Mark mark = marks_[bom.id];
    walks_.pop_back();
    if (!walks_.empty()) Lower(*walks_.back().bom, mark.lowest);
    if (mark.lowest != mark.index) return;
    std::vector<const Bom*> component;
    do {
      component.push_back(open_.back());
      marks_[open_.back()->id].isOpen = false;
      open_.pop_back();
    } while (component.back() != &bom);
    found_.push_back(std::move(component));
  }

  const Graph& graph_;
  std::unordered_map<Id, Mark> marks_;
  std::vector<const Bom*> open_;
  std::vector<Walk> walks_;
  std::vector<std::vector<const Bom*>> found_;
};

// The shortest way round within the component; empty where there is none.
std::vector<const Bom*> WayRound(const Graph& graph, const std::vector<const Bom*>& component) {
  const Bom* start = component.back();
  const std::unordered_set<const Bom*> inside(component.begin(), component.end());
  std::unordered_map<const Bom*, const Bom*> from;
  std::deque<const Bom*> ahead{start};
  while (!ahead.empty()) {
    const Bom* bom = ahead.front();
    ahead.pop_front();
    for (const Line* line : graph.LinesOf(*bom)) {
      const Bom* below = graph.BomBelow(*line);
      if (!below || !inside.contains(below)) continue;
      if (below == start) {
        std::vector<const Bom*> way{start};
        for (const Bom* back = bom; back != start; back = from[back]) way.push_back(back);
        way.push_back(start);
        std::ranges::reverse(way);
        return way;
      }
      if (from.try_emplace(below, bom).second) ahead.push_back(below);
    }
  }
  return {};
}

} // namespace

std::vector<std::vector<const Bom*>> CyclesOf(const Graph& graph) {
  std::vector<std::vector<const Bom*>> cycles;
  const Components components(graph);
  for (const std::vector<const Bom*>& component : components.found()) {
    std::vector<const Bom*> way = WayRound(graph, component);
    if (!way.empty()) cycles.push_back(std::move(way));
  }
  return cycles;
}

} // namespace bomcall::bom
