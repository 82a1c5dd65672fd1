#include "cli/bom/Pictures.h"

#include <deque>
#include <unordered_set>

#include "cli/bom/Explosion.h"

namespace bomcall::bom {
namespace {

std::wstring Label(const Graph& graph, Id item, const wchar_t* between) {
  const Item* known = graph.ItemOf(item);
  return known ? known->number + between + known->name
               : L"item " + std::to_wstring(item) + between + L"unknown";
}

std::wstring UnitText(const Graph& graph, Id item) {
  const Item* known = graph.ItemOf(item);
  const Unit* unit = known ? graph.UnitOf(known->unit) : nullptr;
  return unit ? unit->name : std::wstring();
}

std::wstring DotText(const std::wstring& text) {
  std::wstring quoted = L"\"";
  for (const wchar_t c : text) {
    if (c == L'"' || c == L'\\') quoted += L'\\';
    if (c == L'\n')
      quoted += L"\\n";
    else
      quoted += c;
  }
  return quoted + L"\"";
}

std::wstring HtmlText(const std::wstring& text) {
  std::wstring escaped;
  for (const wchar_t c : text) {
    switch (c) {
    case L'<': escaped += L"&lt;"; break;
    case L'>': escaped += L"&gt;"; break;
    case L'&': escaped += L"&amp;"; break;
    default: escaped += c;
    }
  }
  return escaped;
}

constexpr wchar_t kPageBegin[] = LR"(<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
body { font: 15px/1.5 system-ui, sans-serif; margin: 1em; color: #222; background: #fff; overflow-wrap: anywhere; }
ul { list-style: none; padding-left: 1.2em; border-left: 1px solid #ccc; margin: 0; }
body > ul { border: 0; padding: 0; }
summary { cursor: pointer; }
li > span { padding-left: 1em; }
b { font-weight: 600; }
i { color: #b00020; }
</style>
)";

std::wstring NodeHtml(const Graph& graph, const Node& node) {
  std::wstring text = L"<b>" + HtmlText(node.quantity.Text()) + L"</b> " +
                      HtmlText(UnitText(graph, node.item)) + L" " + HtmlText(Label(graph, node.item, L" "));
  if (node.bom) text += L" (" + HtmlText(node.bom->number) + L")";
  if (node.cycle) text += L" <i>cycle</i>";
  return text;
}

} // namespace

std::wstring DotOf(const Graph& graph, const Bom& bom, int depth) {
  std::wstring out = L"digraph bom {\n  rankdir=LR;\n  node [shape=box];\n";
  std::unordered_set<Id> items;
  const auto node = [&](Id item) {
    if (items.insert(item).second)
      out += L"  i" + std::to_wstring(item) + L" [label=" + DotText(Label(graph, item, L"\n")) + L"];\n";
  };
  struct Step {
    const Bom* bom;
    int level;
  };
  node(bom.item);
  std::unordered_set<Id> met{bom.id};
  std::deque<Step> ahead{{&bom, 1}};
  while (!ahead.empty()) {
    const Step step = ahead.front();
    ahead.pop_front();
    if (depth > 0 && step.level > depth) continue;
    for (const Line* line : graph.LinesOf(*step.bom)) {
      node(line->item);
      out += L"  i" + std::to_wstring(step.bom->item) + L" -> i" + std::to_wstring(line->item) + L" [label=" +
             DotText((line->quantity / step.bom->quantity).Text() + L" " + UnitText(graph, line->item)) +
             L"];\n";
      const Bom* below = graph.BomBelow(*line);
      if (below && met.insert(below->id).second) ahead.push_back({below, step.level + 1});
    }
  }
  return out + L"}\n";
}

std::wstring HtmlOf(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth) {
  std::wstring out = L"<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" +
                     HtmlText(bom.number) + L"</title>\n" + kPageBegin + L"</head>\n<body>\n<ul>\n";
  int opened = 0; // branches that are open
  Explode(graph, bom, quantity, depth, [&](const Node& node) {
    for (; opened > node.level; --opened) out += L"</ul></details></li>\n";
    const bool isBranch =
        node.bom && !node.cycle && !graph.LinesOf(*node.bom).empty() && (depth == 0 || node.level < depth);
    if (isBranch) {
      out += L"<li><details open><summary>" + NodeHtml(graph, node) + L"</summary><ul>\n";
      opened = node.level + 1;
    } else {
      out += L"<li><span>" + NodeHtml(graph, node) + L"</span></li>\n";
    }
  });
  for (; opened > 0; --opened) out += L"</ul></details></li>\n";
  return out + L"</ul>\n</body>\n</html>\n";
}

} // namespace bomcall::bom
