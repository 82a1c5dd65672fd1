// Conversions evaluated plainly: a value as numbers and characters of its own, the server's documented table
// of conversions, and its documented rules, without anything of the engine's but its types.
#pragma once

#include <random>
#include <variant>

#include "tsql/tsql.h"

namespace tsql::test::plain {

// They hold the 38 digits of a decimal.
__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;

// A decimal or money: units / 10^scale.
struct Exact {
  Wide units = 0;
  int scale = 0;
};

struct Moment {
  int64_t ticks = 0; // 1/300 seconds since 1900-01-01
};

// A time or datetime2.
struct Fine {
  int64_t units = 0; // 100 ns since 1900-01-01
};

struct Guid {
  std::string digits; // 32 of them, as they are shown
};

struct Bytes {
  std::string bytes;
};

// Integers and bit; decimals and money; float and real; texts; moments of both kinds; binary values; GUIDs.
using Plain = std::variant<int64_t, Exact, double, std::u32string, Moment, Fine, Bytes, Guid>;

// What a conversion comes to: a value, or the number of an error.
struct Outcome {
  Plain value;
  int error = 0;
};

enum class Allowed : uint8_t { Implicitly, Explicitly, Never };
Allowed IsAllowed(TypeId from, TypeId to);

// The result of CAST; the conversion is allowed.
Outcome Cast(const Plain& value, const Type& from, const Type& to);

// A random value of the type, often one that other types can read.
Plain MakeValue(const Type& type, std::mt19937_64& random);

// The value as a text that shows its type's digits.
std::string Show(const Plain& value, const Type& type);

// As a parameter, whose texts are in `storage`.
Value ToValue(const Plain& value, std::string& storage);

} // namespace tsql::test::plain
