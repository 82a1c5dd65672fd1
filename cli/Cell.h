// A value as it is shown: its text, and what it is where the form of the output tells that apart.
#pragma once

#include <cstdint>
#include <string>

#include "com/Variant.h"

namespace bomcall {

class JsonWriter;

struct Cell {
  enum class Kind : uint8_t { Null, Text, Number, Boolean, Json };

  Kind kind = Kind::Null;
  std::wstring text;

  static Cell Text(std::wstring text) { return {Kind::Text, std::move(text)}; }
  static Cell Number(std::wstring digits) { return {Kind::Number, std::move(digits)}; }
};

// What is in the value; an object or an array is its JSON on one line.
Cell CellOf(const com::Variant& value);
// The same for what is neither an object nor an array, but for bytes.
Cell PlainCell(const com::Variant& value);

// Whether the value is an array of bytes.
bool HoldsBytes(const com::Variant& value);

// For readers: "NULL" for a null.
std::wstring ReadableText(const Cell& cell);
void WriteCell(JsonWriter& writer, const Cell& cell);

} // namespace bomcall
