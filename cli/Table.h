// Tables of text, aligned in a terminal's columns: a Chinese character takes two.
#pragma once

#include <string>
#include <vector>

namespace bomcall {

using Row = std::vector<std::wstring>;

// How many columns of a terminal the text takes.
size_t DisplayWidth(const std::wstring& text);

// A header line, a rule, and a line a row; line breaks inside a value show as a blank. Each line ends with
// LF.
std::wstring FormatTable(const Row& header, const std::vector<Row>& rows);

} // namespace bomcall
