// The types as the server numbers them, which its system views and functions show.
#pragma once

#include <span>

#include "tsql/values/Types.h"

namespace tsql {

// Size, precision and scale are those of the longest of the type.
struct ServerType {
  std::string_view name;
  int id;
  int length;
  int precision;
  int scale;
};

std::span<const ServerType> ServerTypes();

// The entry of a type, with its own precision and scale. The engine takes numeric for decimal.
ServerType ServerTypeOf(const Type& type);

} // namespace tsql
