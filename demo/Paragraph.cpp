#include "demo/Paragraph.h"

#include <cwchar>

#include "cli/Table.h"

namespace demo {
namespace {

using bomcall::DisplayWidth;

// Where the first line of the text ends, at most `width` columns wide: behind it the next one begins. The
// whole text where it fits or nothing breaks it. `breaksBehind` are the characters that end a line, besides
// wide ones.
size_t LineEnd(const std::wstring& text, size_t width, const wchar_t* breaksBehind) {
  size_t end = text.size();
  size_t used = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const size_t columns = DisplayWidth(text.substr(i, 1));
    used += columns;
    if (used > width && end < text.size()) return end;
    if (columns == 2 || std::wcschr(breaksBehind, text[i])) end = i + 1;
  }
  return used > width ? end : text.size();
}

std::wstring WithoutBlanksBehind(std::wstring text) {
  text.erase(text.find_last_not_of(L' ') + 1);
  return text;
}

} // namespace

std::wstring Paragraph(const std::wstring& text, size_t width, const std::wstring& first,
                       const std::wstring& further) {
  if (text.empty()) return first + L"\n";
  std::wstring out;
  std::wstring before = first;
  for (std::wstring rest = text; !rest.empty();) {
    const size_t end = LineEnd(rest, width - before.size(), L" ");
    out += WithoutBlanksBehind(before + rest.substr(0, end)) + L"\n";
    rest.erase(0, end);
    before = further;
  }
  return out;
}

std::wstring Quoted(const std::wstring& word) {
  constexpr wchar_t kPlain[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.,=/:@%+-";
  if (!word.empty() && word.find_first_not_of(kPlain) == std::wstring::npos) return word;
  if (word.find(L'\'') == std::wstring::npos) return L"'" + word + L"'";
  std::wstring quoted = L"\"";
  for (const wchar_t c : word) {
    if (c == L'"' || c == L'\\' || c == L'$' || c == L'`') quoted += L'\\';
    quoted += c;
  }
  return quoted + L"\"";
}

std::wstring Command(const std::vector<std::wstring>& words, size_t width) {
  const std::wstring prompt = L"  $ ";
  const std::wstring indent(prompt.size() + 2, L' ');
  const std::wstring continued = L" \\";
  std::wstring out;
  std::wstring line = prompt;
  for (const std::wstring& word : words) {
    std::wstring quoted = Quoted(word);
    if (line.size() > indent.size()) {
      if (DisplayWidth(line) + 1 + DisplayWidth(quoted) + continued.size() > width) {
        out += line + continued + L"\n";
        line = indent;
      } else {
        line += L' ';
      }
    }
    const bool mayBreak = quoted != word;
    while (mayBreak && DisplayWidth(line + quoted) > width) {
      const size_t end = LineEnd(quoted, width - DisplayWidth(line), L" ,");
      if (end == quoted.size()) break;
      out += WithoutBlanksBehind(line + quoted.substr(0, end)) + L"\n";
      quoted.erase(0, end);
      line = indent;
    }
    line += quoted;
  }
  return out + line + L"\n";
}

} // namespace demo
