// Tables of text, aligned in a terminal's columns: a Chinese character takes two.
#pragma once

#include <string>
#include <vector>

namespace bomcall {

using Row = std::vector<std::wstring>;

// How many columns of a terminal the text takes.
size_t DisplayWidth(const std::wstring& text);

// A header line, a rule, and a line a row; line breaks inside a value show as a blank. Each line ends with
// LF. Where the lines were longer than `width` (0: any length), the widest columns are cut, with "…" where
// something is missing; a column keeps at least 8. The header is bold if `coloured`.
std::wstring FormatTable(const Row& header, const std::vector<Row>& rows, size_t width = 0,
                         bool coloured = false);

} // namespace bomcall
