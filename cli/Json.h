// JSON in and out: objects are the foundation's Dictionary, arrays its Vector.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "com/Variant.h"

namespace bomcall {

using Json = nlohmann::ordered_json;

// A new Dictionary for an object, a new Vector for an array, Null for null; a whole number is a 32-bit
// integer where it fits, else a double.
com::Variant FromJson(const Json& json);

// Dictionary, Vector and recordset (an array of rows) in depth; a date as yyyy-mm-dd [hh:nn:ss]; exact
// numbers as numbers. Any other object is named by its kind.
Json ToJson(const com::Variant& value);

} // namespace bomcall
