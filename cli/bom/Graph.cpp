#include "cli/bom/Graph.h"

#include <algorithm>
#include <utility>

#include "com/Text.h"

namespace bomcall::bom {
namespace {

constexpr size_t kLinesInBlock = 256;

template <class Map>
auto* FindIn(Map& map, Id id) {
  const auto found = map.find(id);
  return found == map.end() ? nullptr : &found->second;
}

template <class Map>
const Bom* BomIn(const Map& map, Id id) {
  const auto* found = FindIn(map, id);
  return found ? *found : nullptr;
}

} // namespace

void Graph::Add(Item item) {
  const Id id = item.id;
  items_.insert_or_assign(id, std::move(item));
}

void Graph::Add(Unit unit) {
  const Id id = unit.id;
  units_.insert_or_assign(id, std::move(unit));
}

void Graph::Add(Bom bom) {
  if (bomsById_.contains(bom.id)) return;
  const Bom& added = boms_.emplace_back(std::move(bom));
  bomsById_[added.id] = &added;
  if (!added.inUse || added.type == kCustomerBom) return;
  const Bom*& made = bomsByItem_[added.item];
  if (!made || made->id < added.id) made = &added;
}

void Graph::Add(Line line) {
  if (lineBlocks_.empty() || lineBlocks_.back().size() == kLinesInBlock)
    lineBlocks_.emplace_back().reserve(kLinesInBlock);
  lines_.push_back(&lineBlocks_.back().emplace_back(std::move(line)));
}

void Graph::Finish() {
  const auto placeOf = [](const Line* line) { return std::pair(line->bom, line->entry); };
  // Queries mostly bring them in this order already.
  if (!std::ranges::is_sorted(lines_, {}, placeOf)) std::ranges::stable_sort(lines_, {}, placeOf);
  linesWithItems_.clear();
  for (const Line* line : lines_) linesWithItems_[line->item].push_back(line);
}

const Item* Graph::ItemOf(Id item) const {
  return FindIn(items_, item);
}

const Item* Graph::ItemNumbered(const std::wstring& number) const {
  const auto found = std::ranges::find_if(
      items_, [&](const auto& entry) { return com::EqualsNoCase(entry.second.number, number); });
  return found == items_.end() ? nullptr : &found->second;
}

const Unit* Graph::UnitOf(Id unit) const {
  return FindIn(units_, unit);
}

const Bom* Graph::BomOf(Id bom) const {
  return BomIn(bomsById_, bom);
}

const Bom* Graph::BomNumbered(const std::wstring& number) const {
  const Bom* newest = nullptr;
  for (const Bom& bom : boms_)
    if (com::EqualsNoCase(bom.number, number) && (!newest || newest->id < bom.id)) newest = &bom;
  return newest;
}

const Bom* Graph::BomThatMakes(Id item) const {
  return BomIn(bomsByItem_, item);
}

const Bom* Graph::BomBelow(const Line& line) const {
  if (const Bom* custom = line.customBom != 0 ? BomOf(line.customBom) : nullptr) return custom;
  return BomThatMakes(line.item);
}

std::span<const Line* const> Graph::LinesOf(const Bom& bom) const {
  const auto first = std::ranges::lower_bound(lines_, bom.id, {}, &Line::bom);
  return {first, std::ranges::upper_bound(first, lines_.end(), bom.id, {}, &Line::bom)};
}

const std::vector<const Line*>& Graph::LinesWith(Id item) const {
  static const std::vector<const Line*> none;
  const auto* found = FindIn(linesWithItems_, item);
  return found ? *found : none;
}

} // namespace bomcall::bom
