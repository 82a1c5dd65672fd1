#include "com/Passwords.h"

#include <algorithm>
#include <array>
#include <vector>

#include "com/Text.h"

namespace com {
namespace {

constexpr std::wstring_view kMask = L"***";
constexpr std::wstring_view kBlanks = L" \t\r\n";

struct Range {
  size_t begin;
  size_t end;
};

// Where the value ends that begins at `at`.
size_t EndOfValue(std::wstring_view text, size_t at) {
  if (at < text.size() && text[at] == L'{') {
    // A closing brace within the value is doubled.
    for (size_t end = text.find(L'}', at); end != std::wstring_view::npos; end = text.find(L'}', end + 2))
      if (end + 1 >= text.size() || text[end + 1] != L'}') return end + 1;
    return text.size();
  }
  if (at < text.size() && (text[at] == L'"' || text[at] == L'\'')) {
    // So is a quote within quotes. What no quote ends is a password to its last character.
    const wchar_t quote = text[at];
    for (size_t end = text.find(quote, at + 1); end != std::wstring_view::npos;
         end = text.find(quote, end + 2))
      if (end + 1 >= text.size() || text[end + 1] != quote) return end + 1;
    return text.size();
  }
  size_t end = std::min(text.find(L';', at), text.size());
  // The last brace may be that of the descriptor around the connection string.
  while (end > at && kBlanks.find(text[end - 1]) != std::wstring_view::npos) --end;
  return end > at && text[end - 1] == L'}' ? end - 1 : end;
}

std::vector<Range> PasswordsIn(std::wstring_view text) {
  constexpr std::array<std::wstring_view, 2> kKeys{L"PWD", L"Password"};
  std::vector<Range> found;
  size_t at = 0;
  while (at < text.size()) {
    const size_t keyAt = text.find_first_not_of(L" \t\r\n;{", at);
    if (keyAt == std::wstring_view::npos) break;
    const size_t next = text.find_first_of(L";{=", keyAt);
    if (next == std::wstring_view::npos) break;
    at = next + 1;
    if (text[next] != L'=') continue;
    const std::wstring_view key = text.substr(keyAt, text.find_last_not_of(kBlanks, next - 1) + 1 - keyAt);
    const size_t valueAt = text.find_first_not_of(kBlanks, at);
    if (valueAt == std::wstring_view::npos) break;
    for (const std::wstring_view password : kKeys) {
      if (!com::EqualsNoCase(key, password)) continue;
      at = EndOfValue(text, valueAt);
      found.push_back({valueAt, at});
    }
    // Another key's value may be a connection string; else what follows is behind its end.
    if (at == next + 1 && text[valueAt] != L'{') at = std::min(text.find(L';', valueAt), text.size());
  }
  return found;
}

} // namespace

std::wstring Masked(std::wstring_view connectionString) {
  std::wstring result;
  size_t done = 0;
  for (const Range& password : PasswordsIn(connectionString)) {
    result += connectionString.substr(done, password.begin - done);
    result += kMask;
    done = password.end;
  }
  result += connectionString.substr(done);
  return result;
}

std::wstring WithoutPasswordsOf(std::wstring_view connectionString, std::wstring message) {
  for (const Range& range : PasswordsIn(connectionString)) {
    std::wstring_view password = connectionString.substr(range.begin, range.end - range.begin);
    const bool isQuoted = password.size() >= 2 &&
                          (password.front() == L'{' || password.front() == L'"' || password.front() == L'\'');
    if (isQuoted) password = password.substr(1, password.size() - 2);
    if (password.empty()) continue;
    for (size_t at = message.find(password); at != std::wstring::npos;
         at = message.find(password, at + kMask.size()))
      message.replace(at, password.size(), kMask);
  }
  return message;
}

} // namespace com
