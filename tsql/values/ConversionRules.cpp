#include "tsql/values/ConversionRules.h"

#include <array>
#include <string_view>

namespace tsql {
namespace {

// Types that convert alike.
enum class Group : uint8_t {
  Integer,
  Decimal,
  Money,
  Float,
  Char,
  NChar,
  Text,
  NText,
  Moment,
  Date,
  Time,
  DateTime2,
  Binary,
  Image,
  Guid
};
constexpr size_t kGroupCount = static_cast<size_t>(Group::Guid) + 1;

Group GroupOf(TypeId id) {
  switch (id) {
  case TypeId::Text: return Group::Text;
  case TypeId::NText: return Group::NText;
  case TypeId::Date: return Group::Date;
  case TypeId::Time: return Group::Time;
  case TypeId::DateTime2: return Group::DateTime2;
  case TypeId::Image: return Group::Image;
  default: break;
  }
  switch (FamilyOf(id)) {
  case Family::Integer: return Group::Integer;
  case Family::Decimal: return IsMoney(id) ? Group::Money : Group::Decimal;
  case Family::Float: return Group::Float;
  case Family::Text: return IsUnicode(id) ? Group::NChar : Group::Char;
  case Family::DateTime: return Group::Moment;
  case Family::Binary: return Group::Binary;
  case Family::Guid: break;
  }
  return Group::Guid;
}

// A row for each group that is converted, a letter for each group that it is converted to, both in the order
// of Group: I implicit, E explicit only, - impossible.
constexpr std::array<std::string_view, kGroupCount> kConversions = {
    "IIIIII--I---I--", // Integer
    "IIIIII--I---I--", // Decimal
    "IIIIEE--I---I--", // Money
    "IIIIII--I---I--", // Float
    "IIIIIIIIIIIIEII", // Char
    "IIIIIIIIIIIIE-I", // NChar
    "----IEII-------", // Text
    "----EIII-------", // NText
    "EEEEII--IIIIE--", // Moment
    "----II--II-IE--", // Date
    "----II--I-IIE--", // Time
    "----II--IIIIE--", // DateTime2
    "III-II--IEEEIII", // Binary
    "------------II-", // Image
    "----II------I-I", // Guid
};

} // namespace

Conversion FindConversion(TypeId from, TypeId to) {
  switch (kConversions[static_cast<size_t>(GroupOf(from))][static_cast<size_t>(GroupOf(to))]) {
  case 'I': return Conversion::Implicit;
  case 'E': return Conversion::ExplicitOnly;
  default: return Conversion::Impossible;
  }
}

} // namespace tsql
