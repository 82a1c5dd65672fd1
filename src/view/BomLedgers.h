// The statements of the BOM browser's ledgers: their column titles and their rows.
//
// Titles come from ICTableFieldInfo, in the columns of the descriptor's language; the user-defined ones from
// the bill's template Z01. sFilter (a condition) and sOrder (a list of columns) are left out when empty.
#pragma once

#include <cstdint>
#include <string>

#include "src/frame/Collections.h"
#include "src/frame/Sql.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The columns that titles are read from, by the descriptor's language.
enum class TitleLanguage : uint8_t { Simplified, Traditional, English };
TitleLanguage TitleLanguageOf(const std::wstring& sDsn);

// The fixed titles of a ledger: of BOMs (header, lines) and of customer BOMs (header, lines; of the last one
// the server rejects the condition).
Sql BomTitles(TitleLanguage language, const std::wstring& sFilter);
Sql BomEntryTitles(TitleLanguage language, const std::wstring& sFilter);
Sql CustBomTitles(TitleLanguage language, const std::wstring& sFilter);
Sql CustBomEntryTitles(TitleLanguage language, const std::wstring& sFilter);

// The titles of the user-defined fields of BOM headers and lines.
Sql BomUserDefinedTitles(TitleLanguage language, const std::wstring& sFilter);
Sql BomEntryUserDefinedTitles(TitleLanguage language, const std::wstring& sFilter);

// How the rows of a ledger look.
struct LedgerStyle {
  bool shortNumbers;     // items by their short numbers
  bool extensionColumns; // with the columns of the extension component
};

Sql BomLedger(const LedgerStyle& style, const Texts& text, const std::wstring& sFilter,
              const std::wstring& sOrder);
// `period` holds the days BItemTime and EItemTime: lines of ordinary BOMs that are not valid in it are to be
// drawn in another colour. Null for no period.
Sql BomEntryLedger(const LedgerStyle& style, const Texts& text, const Dictionary& period,
                   const std::wstring& sFilter, const std::wstring& sOrder);
Sql CustBomLedger(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                  const std::wstring& sOrder);
Sql CustBomEntryLedger(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                       const std::wstring& sOrder);

} // namespace mbom
