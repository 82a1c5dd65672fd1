// The numbers by which scripts know objects: OBJECT_ID gives them, and functions and system views take them.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

// The number of the object or constraint of a key: positive, and the same for the same key.
int64_t NumberOfKey(std::string_view key);
// The object of the main database with the number, or nothing.
std::optional<Catalog::Object> FindObject(const Catalog& catalog, int64_t number);

} // namespace tsql
