// What the customer-BOM screen asks for: its tree, and the statements of its header and line lists.
//
// Items are shown by their short or long numbers, captions in the texts' language. Filters and orders stand
// in the statements as the caller gives them; empty ones are left out.
#pragma once

#include <string>

#include "src/frame/ado/StoredProcedure.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The tree: the stored procedure sp_GetCustBOMTree, without a connection, for the items of the configured
// class, or of all classes where lookType is "ECNLOOKUP" in any case. The two filters are joined by AND.
StoredProcedure TreeCommand(const std::wstring& filter, const std::wstring& filter1,
                            const std::wstring& lookType, const Texts& text);

// The headers: all of them, or with a filter, whatever it says, those of interId, which is a list for the
// bomType
// "-1" and "-99".
std::wstring HeaderQuery(bool shortNumber, const Texts& text, const std::wstring& interId,
                         const std::wstring& bomType, const std::wstring& filter, const std::wstring& order);

// The lines that the filter, a condition, selects: those of customer BOMs for the bomType "3", else those of
// the other BOMs.
std::wstring LineQuery(bool shortNumber, const Texts& text, const std::wstring& bomType,
                       const std::wstring& filter, const std::wstring& order);

} // namespace mbom
