// Join: texts put together in their order.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace mbom {

// The pieces in a row. In braces they are evaluated in their order, as an operator would not promise.
inline std::wstring Join(std::initializer_list<std::wstring_view> pieces) {
  std::wstring result;
  for (const std::wstring_view piece : pieces) result += piece;
  return result;
}

} // namespace mbom
