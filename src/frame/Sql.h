// Sql: a statement under construction. What is streamed in stands in the statement as it is: literals and
// values alike, with no quotes added and none doubled, so that a statement reads in the code as it reads on
// the wire.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "com/ValueText.h"

namespace mbom {

class Sql {
 public:
  Sql& operator<<(std::wstring_view text) {
    text_ += text;
    return *this;
  }
  Sql& operator<<(const wchar_t* text) { return *this << std::wstring_view(text); }
  Sql& operator<<(const std::wstring& text) { return *this << std::wstring_view(text); }
  Sql& operator<<(int32_t number) { return *this << std::wstring_view(std::to_wstring(number)); }
  Sql& operator<<(const com::Variant& value) { return *this << std::wstring_view(com::ToText(value)); }

  Sql& operator<<(const Sql& piece) { return *this << std::wstring_view(piece.text_); }

  const std::wstring& text() const noexcept { return text_; }

 private:
  std::wstring text_;
};

} // namespace mbom
