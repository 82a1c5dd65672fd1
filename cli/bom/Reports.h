// The reports about BOMs as tables.
#pragma once

#include "cli/CommandLine.h"
#include "cli/Grid.h"
#include "cli/bom/Graph.h"
#include "cli/bom/Quantity.h"

namespace bomcall::bom {

// Items are indented by their level if `indented`.
Grid TreeGrid(const Graph& graph, const Bom& bom, const Quantity& quantity, int depth, bool indented);
Grid WhereUsedGrid(const Graph& graph, const Item& item, bool top);
Grid DifferenceGrid(const Graph& graph, const Bom& before, const Bom& after);
Grid CheckGrid(const Graph& graph);
// What is bought for a BOM, each item once.
Grid BoughtGrid(const Graph& graph, const Bom& bom, const Quantity& quantity);
// Every line of every BOM in use, for one of its item.
Grid CostLinesGrid(const Graph& graph);

struct ReportResult {
  std::wstring text; // in the form that the command line asks for
  bool clean = true; // false when a check has found something
};

// Reads what the report needs and makes it. Throws UsageError for numbers that there are not.
ReportResult MakeReport(const CommandLine& line, const std::wstring& descriptor, size_t width, bool coloured);

} // namespace bomcall::bom
