#include "cli/Table.h"

#include <algorithm>
#include <numeric>

#include "tsql/CharacterWidth.h"

namespace bomcall {
namespace {

constexpr size_t kNarrowest = 8;
constexpr size_t kGap = 2;

std::wstring OneLine(const std::wstring& text) {
  std::wstring result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n') continue;
    result += text[i] == L'\r' || text[i] == L'\n' || text[i] == L'\t' ? L' ' : text[i];
  }
  return result;
}

// The character that begins at `at`, which moves behind it.
char32_t NextCharacter(const std::wstring& text, size_t& at) {
  const char32_t c = text[at++];
  if (c >= 0xD800 && c < 0xDC00 && at < text.size())
    return 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text[at++]) - 0xDC00);
  return c;
}

// The text as far as it fits, with an ellipsis where it does not.
std::wstring Fitted(std::wstring text, size_t width) {
  if (DisplayWidth(text) <= width) return text;
  size_t used = 0;
  for (size_t at = 0; at < text.size();) {
    const size_t begin = at;
    used += tsql::CharacterWidth(NextCharacter(text, at));
    if (used + 1 <= width) continue;
    text.erase(begin);
    break;
  }
  return text + L"…";
}

// Takes from the widest columns until the line fits, or none is left that may be narrower.
void Narrow(std::vector<size_t>& widths, size_t width) {
  size_t total = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
  while (total > width) {
    const auto widest = std::ranges::max_element(widths);
    if (*widest <= kNarrowest) return;
    --*widest;
    --total;
  }
}

void AppendLine(std::wstring& out, const Row& cells, const std::vector<size_t>& widths) {
  std::wstring line;
  for (size_t i = 0; i < widths.size(); ++i) {
    const std::wstring cell = i < cells.size() ? Fitted(OneLine(cells[i]), widths[i]) : std::wstring();
    if (i > 0) line.append(kGap, L' ');
    line += cell;
    line.append(widths[i] - DisplayWidth(cell), L' ');
  }
  line.erase(line.find_last_not_of(L' ') + 1);
  out += line + L"\n";
}

} // namespace

size_t DisplayWidth(const std::wstring& text) {
  size_t width = 0;
  for (size_t at = 0; at < text.size();) width += tsql::CharacterWidth(NextCharacter(text, at));
  return width;
}

std::wstring FormatTable(const Row& header, const std::vector<Row>& rows, size_t width, bool coloured) {
  std::vector<size_t> widths;
  widths.reserve(header.size());
  for (const std::wstring& cell : header) widths.push_back(DisplayWidth(OneLine(cell)));
  for (const Row& row : rows)
    for (size_t i = 0; i < widths.size() && i < row.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(OneLine(row[i])));
  if (width > 0 && !widths.empty()) Narrow(widths, width);

  std::wstring out;
  if (coloured) out += L"\x1b[1m";
  AppendLine(out, header, widths);
  if (coloured) out.insert(out.size() - 1, L"\x1b[0m");
  Row rule;
  rule.reserve(widths.size());
  for (const size_t columnWidth : widths) rule.emplace_back(columnWidth, L'-');
  AppendLine(out, rule, widths);
  for (const Row& row : rows) AppendLine(out, row, widths);
  return out;
}

} // namespace bomcall
