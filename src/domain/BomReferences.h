// The documents that use a BOM, and the list of them that the user reads.
#pragma once

#include <cstdint>
#include <string>

#include "src/frame/Sql.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The query for the documents that use the BOM `interId`: at most one row for each kind of document, its
// translated caption in FTableName. Sales orders (SEOrderEntry) always count; cost objects (cbCostObj) for
// ordinary BOMs, batches (IcorderBatchTrace) for customer BOMs.
Sql BomUsedSql(int32_t interId, bool customerBom, const Texts& text);

// Appends a line to `list` for each remaining row of such a query, with the source text `bom` in front of the
// document's name. What was appended before a failure stays.
void AppendReferences(const Recordset& references, const Texts& text, std::wstring& list,
                      const wchar_t* bom = L"该BOM在 ");

} // namespace mbom
