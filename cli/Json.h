// JSON in and out: objects are the foundation's Dictionary, arrays its Vector.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "com/Variant.h"

namespace bomcall {

// Why a text is refused; what() begins with the line and column.
class JsonError : public std::runtime_error {
 public:
  enum class Reason : uint8_t {
    Syntax, // it is not JSON
    Value,  // it is, but holds a number or a depth that nothing here can hold
  };
  JsonError(Reason reason, const std::string& text) : std::runtime_error(text), reason_(reason) {}
  Reason reason() const noexcept { return reason_; }

 private:
  Reason reason_;
};

// A new Dictionary for an object, a new Vector for an array, Null for null. A whole number is a 32-bit
// integer where it fits, else one of 64 bits, else a decimal; a fraction is a decimal, with an exponent a
// double. Throws JsonError, also for numbers beyond 64 bits, fractions of more digits than a decimal holds,
// and more than 500 objects and arrays inside each other.
com::Variant ReadJson(const std::string& utf8);

// Dictionary, Vector and recordset (an array of rows) in depth; a date as yyyy-mm-dd [hh:nn:ss]; numbers with
// all of their digits; bytes as a text 0x…. Any other object is named by its kind. UTF-8, indented by two
// blanks a level, or on one line.
std::string JsonText(const com::Variant& value);
std::string JsonLine(const com::Variant& value);

class JsonWriter;
void WriteJson(JsonWriter& writer, const com::Variant& value);

} // namespace bomcall
