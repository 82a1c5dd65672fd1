// Texts: the translations that one call needs, in the language of its connection descriptor.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "src/frame/Globals.h"

namespace mbom {

class Texts {
 public:
  explicit Texts(const std::wstring& sDsn) : language_(GetDsnValue(sDsn, L"Language")) {}

  // As LoadResText: never fails, a failing loader gives an empty text.
  std::wstring operator()(const std::wstring& source) const { return LoadResText(source, language_); }

  // As LoadResTextFormat: a template with the markers %1, %2 … filled. A failure of the formatting throws.
  std::wstring operator()(const std::wstring& source, std::initializer_list<com::Variant> values) const {
    return LoadResTextFormat(source, language_, values);
  }

 private:
  std::wstring language_;
};

// The pieces in a row. In braces they are evaluated in their order, as an operator would not promise.
inline std::wstring Join(std::initializer_list<std::wstring_view> pieces) {
  std::wstring result;
  for (const std::wstring_view piece : pieces) result += piece;
  return result;
}

} // namespace mbom
