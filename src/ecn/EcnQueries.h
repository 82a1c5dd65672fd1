// What engineering change notices are filled from and asked about: a BOM's header and lines, and what uses
// it.
#pragma once

#include <string>

#include "src/frame/Sql.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The kinds of documents that use the BOM with the number `bomNumber`, one row for each.
Sql BuildBomUsageSql(const std::wstring& bomNumber, const Texts& text);

// The header of the BOM with its item, shown by its short or long number.
Sql HeadQuery(const std::wstring& bom, bool shortNumber);

// The lines of the BOM as lines of a notice that alters them, by line number. A filter that is not empty
// stands behind the joins as it is.
Sql EntriesQuery(const std::wstring& bom, const std::wstring& filter, const Texts& text);

} // namespace mbom
