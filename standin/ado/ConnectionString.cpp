#include "standin/ado/ConnectionString.h"

#include <algorithm>

#include "com/Text.h"

namespace standin::ado {
namespace {

std::wstring_view Trim(std::wstring_view text) {
  const size_t first = text.find_first_not_of(L" \t\r\n");
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(L" \t\r\n") - first + 1);
}

// The brace that closes the one at `at`; the first one when they do not match, the end when there is none.
size_t ClosingBrace(std::wstring_view text, size_t at) {
  int depth = 0;
  for (size_t i = at; i < text.size(); ++i) {
    if (text[i] == L'{') ++depth;
    if (text[i] == L'}' && --depth == 0) return i;
  }
  return std::min(text.find(L'}', at), text.size());
}

} // namespace

ConnectionString::ConnectionString(std::wstring_view text) : text_(text) {
  while (!text.empty()) {
    const size_t equals = text.find_first_of(L"=;");
    if (equals == std::wstring_view::npos) return;
    if (text[equals] == L';') {
      text.remove_prefix(equals + 1);
      continue;
    }
    size_t end = text.find(L';', equals);
    const size_t valueAt = text.find_first_not_of(L" \t\r\n", equals + 1);
    std::wstring_view value;
    if (valueAt != std::wstring_view::npos && text[valueAt] == L'{') {
      const size_t brace = ClosingBrace(text, valueAt);
      value = text.substr(valueAt + 1, brace - valueAt - 1);
      end = text.find(L';', brace);
    } else {
      value = text.substr(equals + 1, end == std::wstring_view::npos ? end : end - equals - 1);
    }
    end = std::min(end, text.size());
    pairs_.push_back({std::wstring(Trim(text.substr(0, equals))), std::wstring(Trim(value)),
                      std::wstring(text.substr(0, end))});
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

std::wstring ConnectionString::Get(std::wstring_view key) const {
  const auto pair = std::ranges::find_if(
      pairs_, [&](const Pair& candidate) { return com::EqualsNoCase(candidate.key, key); });
  return pair == pairs_.end() ? std::wstring() : pair->value;
}

std::wstring ConnectionString::Without(std::initializer_list<std::wstring_view> keys) const {
  std::wstring result;
  for (const Pair& pair : pairs_) {
    if (std::ranges::any_of(keys, [&](std::wstring_view key) { return com::EqualsNoCase(pair.key, key); }))
      continue;
    if (!result.empty()) result += L';';
    result += pair.text;
  }
  return result;
}

Server ConnectionString::server() const {
  const std::wstring provider = Get(L"Provider");
  if (com::EqualsNoCase(provider, L"ODBC")) return Server::Odbc;
  const bool isEmbedded =
      provider.empty() ? !Get(L"Data Source").empty() : com::EqualsNoCase(provider, L"Embedded");
  return isEmbedded ? Server::Embedded : Server::Unknown;
}

} // namespace standin::ado
