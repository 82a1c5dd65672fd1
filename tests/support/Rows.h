// Recordsets as the tests compare them.
#pragma once

#include <string>
#include <vector>

#include "com/Object.h"
#include "com/ValueText.h"

namespace mbom::test {

// The remaining rows: a text a row, the values separated by "|"; NULL reads NULL.
inline std::vector<std::wstring> RowsOf(const com::Object& recordset) {
  const com::Object fields = recordset.Get(L"Fields").AsObject();
  const int32_t count = fields.Get(L"Count").AsLong();
  std::vector<std::wstring> rows;
  for (; !recordset.Get(L"EOF").AsBool(); recordset.Call(L"MoveNext")) {
    std::wstring row;
    for (int32_t i = 0; i < count; ++i) {
      const com::Variant value = fields.Get(L"Item", i).AsObject().Get(L"Value");
      row += (i > 0 ? L"|" : L"") + (value.IsNull() ? std::wstring(L"NULL") : com::ToText(value));
    }
    rows.push_back(row);
  }
  return rows;
}

inline std::vector<std::wstring> ColumnsOf(const com::Object& recordset) {
  const com::Object fields = recordset.Get(L"Fields").AsObject();
  std::vector<std::wstring> names;
  for (int32_t i = 0; i < fields.Get(L"Count").AsLong(); ++i)
    names.push_back(fields.Get(L"Item", i).AsObject().Get(L"Name").AsText());
  return names;
}

} // namespace mbom::test
