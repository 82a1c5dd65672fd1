// What the importers share: an incoming record replaces what carries its number, under the next identifier of
// the counter table ICMaxNum.
//
// Nothing is trapped: the COM error of a failing statement rises, and what ran before it stays, unless the
// caller's transaction takes it back. The counter is read and written back without a lock.
#pragma once

#include <cstdint>

#include "src/frame/Frame.h"
#include "src/frame/ado/Connection.h"

namespace mbom {

// The beginning of an import: votes abort, binds `sDsn`, votes complete, and gives the connection.
Connection BeginImport(Frame& frame, const std::wstring& sDsn);

// The identifier after the highest one that ICMaxNum has for the table; 1 when it has none.
int32_t NextIdentifier(const Connection& connection, const wchar_t* table);

// Writes the identifier back as the highest one. A table without a counter gets none.
void StoreIdentifier(const Connection& connection, const wchar_t* table, int32_t identifier);

} // namespace mbom
