#include "cli/Table.h"

#include <algorithm>

#include "tsql/CharacterWidth.h"

namespace bomcall {
namespace {

std::wstring OneLine(const std::wstring& text) {
  std::wstring result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n') continue;
    result += text[i] == L'\r' || text[i] == L'\n' || text[i] == L'\t' ? L' ' : text[i];
  }
  return result;
}

void AppendLine(std::wstring& out, const Row& cells, const std::vector<size_t>& widths) {
  std::wstring line;
  for (size_t i = 0; i < widths.size(); ++i) {
    const std::wstring cell = i < cells.size() ? OneLine(cells[i]) : std::wstring();
    if (i > 0) line += L"  ";
    line += cell;
    line.append(widths[i] - DisplayWidth(cell), L' ');
  }
  line.erase(line.find_last_not_of(L' ') + 1);
  out += line + L"\n";
}

} // namespace

size_t DisplayWidth(const std::wstring& text) {
  size_t width = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size())
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
    width += tsql::CharacterWidth(c);
  }
  return width;
}

std::wstring FormatTable(const Row& header, const std::vector<Row>& rows) {
  std::vector<size_t> widths;
  widths.reserve(header.size());
  for (const std::wstring& cell : header) widths.push_back(DisplayWidth(OneLine(cell)));
  for (const Row& row : rows)
    for (size_t i = 0; i < widths.size() && i < row.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(OneLine(row[i])));

  std::wstring out;
  AppendLine(out, header, widths);
  Row rule;
  rule.reserve(widths.size());
  for (const size_t width : widths) rule.emplace_back(width, L'-');
  AppendLine(out, rule, widths);
  for (const Row& row : rows) AppendLine(out, row, widths);
  return out;
}

} // namespace bomcall
