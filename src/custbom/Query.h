// The generic query that both customer-BOM classes offer and use.
#pragma once

#include <string>

#include "src/frame/Frame.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

// A call of its own on the frame of the class, with its set-up and its vote: opens the statement client-side
// on the connection of `sDsn`. The rows stay on their connection; a statement without rows gives a closed
// recordset. What fails throws, the unit of work voted aborted.
Recordset RunQuery(Frame& frame, const std::wstring& sDsn, const Sql& query);

// The values of a field of all remaining rows, without blanks around them, separated by commas.
std::wstring CommaList(const Recordset& rows, const wchar_t* field);

} // namespace mbom
