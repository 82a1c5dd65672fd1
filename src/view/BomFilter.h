// The restrictions that the BOM browser's filter screen puts on a join of BOMs: t1 the header, t2 the line,
// t3 the group, t4 the header's item, t7 the line's item, t5 the auditor, t6 the user in FCheckID. Values
// stand in them as they come.
#pragma once

#include <string>

#include "src/frame/Collections.h"

namespace mbom {

// The columns of the header's item that number it.
inline constexpr wchar_t kLongNumber[] = L"t4.FNumber";
inline constexpr wchar_t kShortNumber[] = L"t4.FShortNumber";

// The filter clause, from "WHERE 1 = 1 " on: what `filter` holds under the screen's keys, empty values left
// out. Items are compared by their long or short number.
std::wstring BuildBomFilterWhere(const Dictionary& filter, bool bLongNumber);

// The ids of the groups in `groups`, separated by commas: each item's value under "FInterID" where they were
// found, under "Key" where they were selected. Empty for no group, and for none at all.
std::wstring GroupIds(const Vector& groups, bool found);

// The restriction to these groups; empty for no group, and for none at all.
std::wstring BuildGroupInList(const Vector& groups, bool found);

} // namespace mbom
