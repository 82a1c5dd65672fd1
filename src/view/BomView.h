// BomView: what the BOM browser shows: the tree of BOM groups, lists of BOMs, the column titles of the
// ledgers and their rows.
//
// All rows come as a Vector of Dictionary, field name -> value. Filters, orders and values stand in the
// statements as the caller gives them; optional ones are left out when empty. Nothing is voted at entry: a
// call votes once, complete at its end, or abort when something failed, which then rises. Items are shown by
// their short numbers where the setting IC/UseShortNumber is there and not 0 (lists and ledgers), texts in
// the descriptor's language.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/Frame.h"

namespace mbom {

class BomView {
 public:
  // The transaction mode that the host reads: 3.
  int32_t TransMode() const { return 3; }

  // The groups in `GroupVect` (Dictionary items, the group's id under "Key") and those of them that hold a
  // BOM matching `FilterDict`, with all groups above them; every group when GroupVect is empty or null. With
  // bBomView tree rows (FType, FRelative, FKey, FText, FImgNormal, FImgClick, FTag), a group once for each
  // path; else each group once (FBootID, FIndex, FInterID, FParentID, FName, FNumber). A parent comes before
  // its children.
  com::Object GetBomGroupList(const std::wstring& sDsn, const com::Object& GroupVect,
                              const com::Object& FilterDict, bool bLongNumber, bool bBomView);

  // The BOMs that match FilterDict, the groups in GroupVect (ids under "FInterID" when bIsFind, else "Key";
  // null for all) and the quick-find values of dDict (BomNumber, ItemNumber, ItemName; null for none), by
  // number: FInterID, FBomNumber, FBomType, FTranType, FImgNormal, FItemID, FNumber, FName, FModel. The
  // descriptor must name its SubID: "JH" leaves out items of class 9, any other one lists the classes 2, 6
  // and 9.
  com::Object GetBomLstInfo(const std::wstring& sDsn, const com::Object& GroupVect,
                            const com::Object& FilterDict, bool bLongNumber, com::Object& dDict,
                            bool& bIsFind);

  // The root, all groups and all BOMs in one list of tree rows.
  com::Object GetBomList(const std::wstring& sDsn, const std::wstring& sFilter, const std::wstring& sOrder);
  // The same of configuration and customer BOMs: always the server's error for a union of unequal branches.
  com::Object GetCustBomList(const std::wstring& sDsn, const std::wstring& sFilter,
                             const std::wstring& sOrder);
  // The lookup lists: BOMs that match sFilter (on t1, the BOM, and t2, its item) with the groups above them;
  // sFilter1 restricts the rows. Audited BOMs; configuration and customer BOMs, where sFilter1 counts only
  // with an sFilter; audited BOMs with the item's model and class, items of class 5 only for the look type
  // ECNLOOKUP.
  com::Object GetBomSimplifyList(const std::wstring& sDsn, const std::wstring& sFilter,
                                 const std::wstring& sFilter1, const std::wstring& sOrder);
  com::Object GetCustBomSimplifyList(const std::wstring& sDsn, const std::wstring& sFilter,
                                     const std::wstring& sFilter1, const std::wstring& sOrder);
  com::Object GetBomSimplifyListEx(const std::wstring& sDsn, const std::wstring& sFilter,
                                   const std::wstring& sFilter1, const std::wstring& sOrder,
                                   const std::wstring& sLookType);

  // Whether there is any engineering change (ICECN).
  bool ExistsEcnBill(const std::wstring& sDsn);

  // The titles of the ledgers' columns, by position: FNum, FCtlID, FCtlName, FLdgNum, FOrder, FCaption,
  // FHeadSecond, FName, FAlign, FVisible, FDecCtl, FNeedHeadSecond. Those of the user-defined fields come
  // after them unless bIsCustBom, under the same sFilter.
  com::Object GetBomTitle(const std::wstring& sDsn, const std::wstring& sFilter, bool bIsCustBom);
  com::Object GetBomEntryTitle(const std::wstring& sDsn, const std::wstring& sFilter, bool bIsCustBom);
  // The titles of the user-defined fields alone, with FFieldName besides.
  com::Object GetBomUserDefinedTitle(const std::wstring& sDsn, const std::wstring& sFilter);
  com::Object GetBomEntryUserDefinedTitle(const std::wstring& sDsn, const std::wstring& sFilter);
  com::Object GetCustBomTitle(const std::wstring& sDsn, const std::wstring& sFilter);
  // Always the server's error for a condition that lacks its AND.
  com::Object GetCustBomEntryTitle(const std::wstring& sDsn, const std::wstring& sFilter);

  // The BOMs with status texts, routing, group and the values of the user-defined fields; with FGMPExpectQty
  // where t_components has a row for this component.
  com::Object GetBomLdgInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                            const std::wstring& sOrder);
  // The lines of BOMs with the names of their base data and the values of the user-defined fields; with
  // FGMPUnitID and FGMPAuxQty as above. FAlterBackColor is 1 for a line of an ordinary BOM that is not valid
  // in the period of dctFilter (BItemTime to EItemTime; null for none), else 0. aType means nothing.
  com::Object GetBomEntryLdgInfo(const std::wstring& sDsn, int32_t aType, const std::wstring& sFilter,
                                 const std::wstring& sOrder, const com::Object& dctFilter);
  // The BOMs with their customers, and the lines of customer BOMs; no user-defined values.
  com::Object GetCustBomLdgInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                                const std::wstring& sOrder);
  com::Object GetCustBomEntryLdgInfo(const std::wstring& sDsn, int32_t aType, const std::wstring& sFilter,
                                     const std::wstring& sOrder);

 private:
  // The rows of a query, after a set-up.
  com::Object Read(const std::wstring& sDsn, const Sql& query);
  // Whole calls around a statement: of a list that shows items by their short or long numbers, of a lookup
  // list with its table, of a ledger of headers or lines with user-defined values.
  template <class Statement>
  com::Object ReadNumbered(const std::wstring& sDsn, const Statement& statement);
  template <class Statement>
  com::Object ReadLookupList(const std::wstring& sDsn, const std::wstring& sFilter,
                             const std::wstring& sLookType, const Statement& statement);
  template <class Statement>
  com::Object ReadLedger(const std::wstring& sDsn, bool isBillHead, const Statement& statement);

  Frame frame_;
};

} // namespace mbom
