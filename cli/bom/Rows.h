// The rows of a query, with their values as the reports use them.
#pragma once

#include <functional>
#include <string>

#include "cli/bom/Day.h"
#include "cli/bom/Quantity.h"
#include "com/Object.h"

namespace bomcall::bom {

// A row, by the place of the column in the query. A null is 0, an empty text or no day.
class RowView {
 public:
  explicit RowView(const VARIANT* values) : values_(values) {}

  int32_t Number(size_t column) const;
  std::wstring Text(size_t column) const;
  Quantity Decimal(size_t column) const;
  Day DayAt(size_t column) const;
  bool IsNull(size_t column) const { return values_[column].vt == VT_NULL; }

 private:
  const VARIANT* values_;
};

void ForEachRow(const com::Object& connection, const std::wstring& query,
                const std::function<void(const RowView&)>& visit);

} // namespace bomcall::bom
