#include "cli/bom/Reports.h"

#include <algorithm>

#include "cli/Show.h"
#include "cli/bom/Check.h"
#include "cli/bom/Difference.h"
#include "cli/bom/Explosion.h"
#include "cli/bom/Pictures.h"
#include "cli/bom/Reader.h"
#include "cli/bom/WhereUsed.h"

namespace bomcall::bom {
namespace {

// The level itself has a column: deeper ones only would make the table wide.
constexpr int kDeepestIndent = 40;

// An item as it is shown, also one that the database has not.
class ShownItem {
 public:
  ShownItem(const Graph& graph, Id id) : graph_(graph), id_(id), item_(graph.ItemOf(id)) {}

  std::wstring Number() const { return item_ ? item_->number : L"item " + std::to_wstring(id_); }
  std::wstring Name() const { return item_ ? item_->name : std::wstring(); }
  // The unit in which it is counted.
  std::wstring BaseUnit() const {
    const Unit* unit = item_ ? graph_.UnitOf(item_->unit) : nullptr;
    return unit ? unit->name : std::wstring();
  }

 private:
  const Graph& graph_;
  Id id_;
  const Item* item_;
};

std::wstring UnitOf(const Graph& graph, Id unit) {
  const Unit* known = graph.UnitOf(unit);
  return known ? known->name : std::to_wstring(unit);
}

Cell Count(int64_t number) {
  // std::to_wstring would read a format each time.
  const std::string digits = std::to_string(number);
  return Cell::Number({digits.begin(), digits.end()});
}

Cell Count(const Quantity& quantity) {
  return Cell::Number(quantity.Text());
}

const wchar_t* StateOf(const Bom* bom) {
  if (!bom) return L"missing";
  if (bom->cancelled) return L"cancelled";
  return bom->inUse ? L"in use" : L"not in use";
}

Quantity QuantityFrom(const BomRequest& request) {
  const auto quantity = Quantity::Parse(request.quantity);
  if (!quantity || quantity->IsZero())
    throw UsageError(L"--qty is a number above or below 0, not " + request.quantity);
  return *quantity;
}

} // namespace

Grid TreeGrid(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth, bool indented) {
  Grid grid({L"level", L"item", L"name", L"quantity", L"unit", L"bom", L"remark"});
  grid.Reserve(graph.lines().size() + 1); // mostly each of them once, below the BOM itself
  Explode(graph, bom, quantity, depth, [&](const Node& node) {
    const ShownItem item(graph, node.item);
    std::wstring number = item.Number();
    if (indented) number.insert(0, static_cast<size_t>(std::min(node.level, kDeepestIndent)) * 2, L' ');
    grid.Add(Count(node.level), Cell::Text(std::move(number)), Cell::Text(item.Name()), Count(node.quantity),
             Cell::Text(item.BaseUnit()), Cell::Text(node.bom ? node.bom->number : std::wstring()),
             Cell::Text(node.cycle ? L"cycle: it is above already" : L""));
  });
  return grid;
}

Grid WhereUsedGrid(const Graph& graph, const Item& item, bool top) {
  Grid grid(
      {L"level", L"bom", L"version", L"state", L"item", L"name", L"line", L"uses", L"quantity", L"unit"});
  std::vector<Use> uses = UsesOf(graph, item.id);
  if (top) uses = TopsOf(graph, uses);
  grid.Reserve(uses.size());
  for (const Use& use : uses) {
    const Bom* bom = use.bom;
    const ShownItem product(graph, bom ? bom->item : 0);
    grid.Add(Count(use.level), Cell::Text(bom ? bom->number : std::to_wstring(use.line->bom)),
             Cell::Text(bom ? bom->version : std::wstring()), Cell::Text(StateOf(bom)),
             Cell::Text(bom ? product.Number() : std::wstring()),
             Cell::Text(bom ? product.Name() : std::wstring()), Count(use.line->entry),
             Cell::Text(ShownItem(graph, use.line->item).Number()), Count(use.line->quantityInUnit),
             Cell::Text(UnitOf(graph, use.line->unit)));
  }
  return grid;
}

Grid DifferenceGrid(const Graph& graph, const Bom& before, const Bom& after) {
  Grid grid({L"change", L"item", L"name", L"line", L"quantity", L"unit", L"what"});
  for (const Difference& difference : DifferencesOf(graph, before, after)) {
    const Line& line = difference.after ? *difference.after : *difference.before;
    const wchar_t* change = !difference.before ? L"added" : !difference.after ? L"removed" : L"changed";
    const ShownItem item(graph, line.item);
    grid.Add(Cell::Text(change), Cell::Text(item.Number()), Cell::Text(item.Name()), Count(line.entry),
             Count(line.quantityInUnit), Cell::Text(UnitOf(graph, line.unit)), Cell::Text(difference.what));
  }
  return grid;
}

Grid CheckGrid(const Graph& graph) {
  Grid grid({L"finding", L"bom", L"line", L"what"});
  for (const Finding& finding : Check(graph))
    grid.Add(Cell::Text(finding.kind), Cell::Text(finding.bom),
             finding.entry == 0 ? Cell::Text({}) : Count(finding.entry), Cell::Text(finding.what));
  return grid;
}

Grid BoughtGrid(const Graph& graph, const Bom& bom, const Quantity& quantity) {
  Grid grid({L"bom", L"item", L"name", L"quantity", L"unit", L"remark"});
  const Totals totals = TotalsOf(graph, bom, quantity);
  for (const Total& total : totals.bought) {
    const ShownItem item(graph, total.item);
    grid.Add(Cell::Text(bom.number), Cell::Text(item.Number()), Cell::Text(item.Name()),
             Count(total.quantity), Cell::Text(item.BaseUnit()),
             Cell::Text(totals.cycle ? L"without what a cycle would add" : L""));
  }
  return grid;
}

Grid CostLinesGrid(const Graph& graph) {
  Grid grid(
      {L"bom", L"version", L"product", L"line", L"item", L"name", L"quantity", L"unit", L"scrap", L"made"});
  for (const Bom& bom : graph.boms()) {
    if (!bom.inUse) continue;
    const ShownItem product(graph, bom.item);
    for (const Line* line : graph.LinesOf(bom)) {
      const ShownItem item(graph, line->item);
      grid.Add(Cell::Text(bom.number), Cell::Text(bom.version), Cell::Text(product.Number()),
               Count(line->entry), Cell::Text(item.Number()), Cell::Text(item.Name()),
               Count(line->quantity / bom.quantity), Cell::Text(item.BaseUnit()), Cell::Number(line->scrap),
               Cell{Cell::Kind::Boolean, graph.BomBelow(*line) ? L"True" : L"False"});
    }
  }
  return grid;
}

ReportResult MakeReport(const CommandLine& line, const std::wstring& descriptor, size_t width,
                        bool coloured) {
  const BomRequest& request = line.bom;
  const Quantity quantity = QuantityFrom(request);
  Reader reader(descriptor);
  ReportResult result;
  const auto show = [&](const Grid& grid) {
    const Style style{width, coloured};
    result.text = line.columns.empty() ? ShowGrid(grid, line.format, style)
                                       : ShowGrid(WithColumns(grid, line.columns), line.format, style);
  };
  switch (request.report) {
  case BomRequest::Report::Tree: {
    const Graph graph = reader.ReadBelow(request.names, request.depth);
    const Bom& bom = *graph.BomNumbered(request.names[0]);
    if (request.picture == BomRequest::Picture::Dot)
      result.text = DotOf(graph, bom, request.depth);
    else if (request.picture == BomRequest::Picture::Html)
      result.text = HtmlOf(graph, bom, quantity, request.depth);
    else
      show(TreeGrid(graph, bom, quantity, request.depth, line.format == Format::Text));
    break;
  }
  case BomRequest::Report::WhereUsed: {
    const Graph graph = reader.ReadAbove(request.names[0]);
    show(WhereUsedGrid(graph, *graph.ItemNumbered(request.names[0]), request.top));
    break;
  }
  case BomRequest::Report::Diff: {
    const Graph graph = reader.ReadBelow(request.names, 1);
    show(DifferenceGrid(graph, *graph.BomNumbered(request.names[0]), *graph.BomNumbered(request.names[1])));
    break;
  }
  case BomRequest::Report::Check: {
    const Grid grid = CheckGrid(reader.ReadAll());
    result.clean = grid.rowCount() == 0;
    show(grid);
    break;
  }
  case BomRequest::Report::CostLines:
    if (request.names.empty()) {
      show(CostLinesGrid(reader.ReadAll()));
    } else {
      const Graph graph = reader.ReadBelow(request.names, 0);
      show(BoughtGrid(graph, *graph.BomNumbered(request.names[0]), quantity));
    }
    break;
  }
  return result;
}

} // namespace bomcall::bom
