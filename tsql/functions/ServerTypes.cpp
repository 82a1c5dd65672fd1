#include "tsql/functions/ServerTypes.h"

#include <algorithm>

namespace tsql {
namespace {

constexpr ServerType kServerTypes[] = {
    {"image", 34, 16, 0, 0},         {"text", 35, 16, 0, 0},       {"uniqueidentifier", 36, 16, 0, 0},
    {"date", 40, 3, 10, 0},          {"time", 41, 5, 16, 7},       {"datetime2", 42, 8, 27, 7},
    {"tinyint", 48, 1, 3, 0},        {"smallint", 52, 2, 5, 0},    {"int", 56, 4, 10, 0},
    {"smalldatetime", 58, 4, 16, 0}, {"real", 59, 4, 24, 0},       {"money", 60, 8, 19, 4},
    {"datetime", 61, 8, 23, 3},      {"float", 62, 8, 53, 0},      {"ntext", 99, 16, 0, 0},
    {"bit", 104, 1, 1, 0},           {"decimal", 106, 17, 38, 38}, {"numeric", 108, 17, 38, 38},
    {"smallmoney", 122, 4, 10, 4},   {"bigint", 127, 8, 19, 0},    {"varbinary", 165, 8000, 0, 0},
    {"varchar", 167, 8000, 0, 0},    {"binary", 173, 8000, 0, 0},  {"char", 175, 8000, 0, 0},
    {"nvarchar", 231, 8000, 0, 0},   {"nchar", 239, 8000, 0, 0}};

} // namespace

std::span<const ServerType> ServerTypes() {
  return kServerTypes;
}

ServerType ServerTypeOf(const Type& type) {
  const std::string name = type.id == TypeId::Decimal ? "decimal" : TypeName(type.id);
  ServerType found = *std::ranges::find(kServerTypes, name, &ServerType::name);
  if (type.id == TypeId::Decimal) {
    found.precision = type.precision;
    found.scale = type.scale;
  }
  // A fraction takes its digits and a point.
  if (IsFine(type.id)) {
    const int missing = kMaxFraction - type.scale;
    found.precision -= missing + (type.scale == 0 ? 1 : 0);
    found.scale = type.scale;
  }
  return found;
}

} // namespace tsql
