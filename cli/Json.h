// JSON in and out: objects are the foundation's Dictionary, arrays its Vector.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "com/Variant.h"

namespace bomcall {

using Json = nlohmann::ordered_json;

// A text with more objects and arrays inside each other than a stack should be asked to hold.
struct NestedTooDeep : std::runtime_error {
  NestedTooDeep();
};

// Throws NestedTooDeep, and Json::exception for a text that is not JSON or holds a number that no double can
// be.
Json ReadJson(const std::string& text);

// A new Dictionary for an object, a new Vector for an array, Null for null; a whole number is a 32-bit
// integer where it fits, else a double.
com::Variant FromJson(const Json& json);

// Dictionary, Vector and recordset (an array of rows) in depth; a date as yyyy-mm-dd [hh:nn:ss]; exact
// numbers as numbers. Any other object is named by its kind.
Json ToJson(const com::Variant& value);

} // namespace bomcall
