// The rows of a recordset, read many at a time: a call for each value would take longer than the query.
#pragma once

#include <oaidl.h>

#include <functional>

#include "com/Object.h"

namespace com {

// Reads an open recordset from where it stands to its end. `visit` gets the values of a row in the order of
// its fields; they are lent for the call.
void ForEachRow(const Object& recordset, const std::function<void(const VARIANT* values)>& visit);

} // namespace com
