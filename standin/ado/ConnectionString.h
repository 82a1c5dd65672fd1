// ConnectionString: the key=value pairs of a connection descriptor, separated by ";". Keys compare without
// case; a value that holds a ";" stands in braces, and may hold others.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace standin::ado {

// What serves a descriptor's connection.
enum class Server : uint8_t {
  Embedded, // the engine: its provider, or a data source and no provider
  Odbc,     // a driver of ODBC
  Unknown,
};

class ConnectionString {
 public:
  explicit ConnectionString(std::wstring_view text);

  const std::wstring& text() const { return text_; }
  // The value of the key's first pair, trimmed and without braces; empty when there is none.
  std::wstring Get(std::wstring_view key) const;
  // The descriptor without these keys' pairs.
  std::wstring Without(std::initializer_list<std::wstring_view> keys) const;

  Server server() const;

 private:
  struct Pair {
    std::wstring key;
    std::wstring value;
    std::wstring text; // as written
  };
  std::wstring text_;
  std::vector<Pair> pairs_;
};

} // namespace standin::ado
