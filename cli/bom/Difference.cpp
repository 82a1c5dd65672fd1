#include "cli/bom/Difference.h"

#include <deque>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace bomcall::bom {
namespace {

std::wstring UnitName(const Graph& graph, Id unit) {
  const Unit* known = graph.UnitOf(unit);
  return known ? known->name : std::to_wstring(unit);
}

std::wstring ChangesIn(const Graph& graph, const Line& before, const Line& after) {
  std::wstring changes;
  const auto compare = [&](const wchar_t* what, const std::wstring& a, const std::wstring& b) {
    if (a == b) return;
    if (!changes.empty()) changes += L"; ";
    changes += what + std::wstring(L" ") + a + L" -> " + b;
  };
  compare(L"quantity", before.quantityInUnit.Text(), after.quantityInUnit.Text());
  compare(L"unit", UnitName(graph, before.unit), UnitName(graph, after.unit));
  compare(L"base quantity", before.quantity.Text(), after.quantity.Text());
  compare(L"operation", std::to_wstring(before.operation), std::to_wstring(after.operation));
  compare(L"scrap", before.scrap, after.scrap);
  compare(L"from", DayText(before.beginDay), DayText(after.beginDay));
  compare(L"to", DayText(before.endDay), DayText(after.endDay));
  compare(L"built from BOM", std::to_wstring(before.customBom), std::to_wstring(after.customBom));
  compare(L"note", L"\"" + before.note + L"\"", L"\"" + after.note + L"\"");
  return changes;
}

// Matches each line of the one BOM that has no match yet with the first one of the other that has none either
// and the same key.
template <class Key>
void Match(std::span<const Line* const> before, std::span<const Line* const> after, const Key& keyOf,
           std::unordered_map<const Line*, const Line*>& matches, std::unordered_set<const Line*>& matched) {
  std::map<decltype(keyOf(*before[0])), std::deque<const Line*>> left;
  for (const Line* line : after)
    if (!matched.contains(line)) left[keyOf(*line)].push_back(line);
  for (const Line* line : before) {
    if (matches.contains(line)) continue;
    const auto same = left.find(keyOf(*line));
    if (same == left.end() || same->second.empty()) continue;
    matches[line] = same->second.front();
    matched.insert(same->second.front());
    same->second.pop_front();
  }
}

} // namespace

std::vector<Difference> DifferencesOf(const Graph& graph, const Bom& before, const Bom& after) {
  const std::span<const Line* const> olds = graph.LinesOf(before);
  const std::span<const Line* const> news = graph.LinesOf(after);
  std::unordered_map<const Line*, const Line*> matches;
  std::unordered_set<const Line*> matched;
  Match(
      olds, news, [](const Line& line) { return std::tuple(line.item, line.property, line.operation); },
      matches, matched);
  Match(
      olds, news, [](const Line& line) { return std::tuple(line.item, line.property); }, matches, matched);

  std::vector<Difference> differences;
  for (const Line* line : olds) {
    const auto match = matches.find(line);
    if (match == matches.end()) {
      differences.push_back({line, nullptr, {}});
      continue;
    }
    const std::wstring changes = ChangesIn(graph, *line, *match->second);
    if (!changes.empty()) differences.push_back({line, match->second, changes});
  }
  for (const Line* line : news)
    if (!matched.contains(line)) differences.push_back({nullptr, line, {}});
  return differences;
}

} // namespace bomcall::bom
