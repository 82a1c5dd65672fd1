// Reads BOMs through ADO, with plain queries of the tables that the component uses itself.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "cli/bom/Graph.h"
#include "cli/bom/Rows.h"
#include "com/Object.h"

namespace bomcall::bom {

class Reader {
 public:
  // The connection that a descriptor stands for, as the component gets it.
  explicit Reader(const std::wstring& descriptor);

  // Everything there is.
  Graph ReadAll();
  // The BOMs of these numbers and what is below them, `depth` levels at most (0: all). Throws UsageError for
  // a number that no BOM has.
  Graph ReadBelow(const std::vector<std::wstring>& numbers, int depth);
  // The item of that number and the BOMs above it. Throws UsageError when there is no such item.
  Graph ReadAbove(const std::wstring& itemNumber);

 private:
  using Ids = std::vector<Id>;

  // The condition is the end of a query, or empty. What was read for the first time is returned.
  Ids ReadBoms(const std::wstring& condition);
  // Customers' BOMs have a table of their own for their lines.
  void ReadLines(const std::wstring& condition);
  void ReadCustomLines(const std::wstring& condition);
  void AddLine(const RowView& row);
  void ReadItems(const std::wstring& condition);
  void ReadUnits();
  void ReadItemsOnce(const Ids& items);

  com::Object connection_;
  Graph graph_;
  std::unordered_set<Id> boms_;
  std::unordered_set<Id> items_;       // that were asked for
  Ids parents_;                        // the items of BOMs read last
  std::vector<std::pair<Id, Id>> met_; // the BOM and item of lines read last
  Ids customBoms_;                     // that lines read last are built from
  std::unordered_map<Id, Quantity> factors_;
};

} // namespace bomcall::bom
