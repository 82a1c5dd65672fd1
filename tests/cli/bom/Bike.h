// Small BOMs for the tests of the graph.
#pragma once

#include "cli/bom/Graph.h"

namespace bomcall::bom {

inline Quantity Of(const wchar_t* text) {
  return *Quantity::Parse(text);
}

inline Day On(std::chrono::year_month_day day) {
  return std::chrono::sys_days(day);
}

inline Item MakeItem(Id id) {
  return {id, L"I" + std::to_wstring(id), L"name " + std::to_wstring(id), 1};
}

// In use, for one of its item, which has the same identifier.
inline Bom MakeBom(Id id) {
  Bom bom;
  bom.id = id;
  bom.number = L"B" + std::to_wstring(id);
  bom.item = id;
  bom.unit = 1;
  bom.inUse = true;
  return bom;
}

inline Line MakeLine(Id bom, int32_t entry, Id item, const wchar_t* quantity = L"1") {
  Line line;
  line.bom = bom;
  line.entry = entry;
  line.item = item;
  line.unit = 1;
  line.quantity = line.quantityInUnit = Of(quantity);
  line.scrap = L"0";
  line.beginDay = On(std::chrono::year(1900) / 1 / 1);
  line.endDay = On(std::chrono::year(2100) / 1 / 1);
  return line;
}

} // namespace bomcall::bom
