// The statements about the status of customer BOMs: what uses them, what is built from them, audit and
// disabling.
//
// `ids` is a list of ICBOM.FInterID separated by commas; it stands in the statements as it comes.
#pragma once

#include <cstdint>
#include <string>

#include "src/frame/Sql.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The documents that can use a customer BOM: at most one row for each kind, with its translated name in
// FTableName. `condition` is what stands behind the column: " = 12", " IN (12,15)".
Sql UsageQuery(const std::wstring& condition, const Texts& text);

// The numbers of the customer BOMs that are built from any of the list, a row for each line.
Sql UpperNumbersQuery(const std::wstring& ids);

// The customer BOMs that are built from any of the list: FInterID, FBomNumber, FStatus (0 for Null).
Sql UpperLevelQuery(const std::wstring& ids);

// Audits the list in the name of `user`, at the time `now`, and takes it into use.
Sql AuditUpdate(const std::wstring& ids, int32_t user, const std::wstring& now);

// Takes the audit of the list back, and the list out of use.
Sql UndoAuditUpdate(const std::wstring& ids);

// Disables the list (FForbid -1) or enables it (0).
Sql DisableUpdate(const std::wstring& ids, bool disable);

} // namespace mbom
