// The statements of the BOM browser's lists and lookup lists.
//
// A tree list is one result of three branches: a fixed root row, the BOM groups and the BOMs, each row with
// its own key in the tree and its parent's. sFilter and sFilter1 (conditions) and sOrder (a list of columns)
// are left out when empty.
#pragma once

#include <string>

#include "src/frame/Collections.h"
#include "src/frame/Sql.h"
#include "src/frame/globals/Texts.h"

namespace mbom {

// The BOMs of a join that a filter clause and further restrictions follow. `subsystem` is the descriptor's:
// "JH", in any case, lists all items but class 9, any other one the classes 2, 6 and 9.
Sql BomListStart(const std::wstring& subsystem, bool bLongNumber);

// The quick-find restrictions: what `find` holds under BomNumber, ItemNumber and ItemName.
std::wstring QuickFind(const Dictionary& find, bool bLongNumber);

// The list of all BOMs with all groups, and the one of configuration and customer BOMs. Its group branch has
// a column too many: the server rejects it.
Sql BomTreeList(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                const std::wstring& sOrder);
Sql CustBomTreeList(bool shortNumbers, const Texts& text, const std::wstring& sFilter,
                    const std::wstring& sOrder);

// A name for the table of a lookup list that no other call on the server uses: several may run at a time, and
// what a failed one leaves behind blocks none.
std::wstring NewBomItemIdTable();

// The batch that fills `table` with the BOMs that match `filter` (level 1, with their item) and, level by
// level, the groups above them. The look type ECNLOOKUP, in any case, keeps items of class 5; any other drops
// them.
Sql BuildBomItemIdBatch(const std::wstring& table, const std::wstring& filter, const std::wstring& lookType);

// The lookup lists: the BOMs and groups that are in `table`.
Sql BomSimplifyList(const std::wstring& table, bool shortNumbers, const Texts& text,
                    const std::wstring& sFilter1, const std::wstring& sOrder);
Sql CustBomSimplifyList(const std::wstring& table, bool shortNumbers, const Texts& text,
                        const std::wstring& sFilter, const std::wstring& sFilter1,
                        const std::wstring& sOrder);
Sql BomSimplifyListEx(const std::wstring& table, bool shortNumbers, const Texts& text,
                      const std::wstring& sFilter1, const std::wstring& sOrder,
                      const std::wstring& sLookType);

} // namespace mbom
