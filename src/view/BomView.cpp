#include "src/view/BomView.h"

#include "com/ComError.h"
#include "src/domain/ShortNumber.h"
#include "src/frame/Collections.h"
#include "src/frame/Convert.h"
#include "src/frame/MParse.h"
#include "src/frame/ado/ClientRecordset.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"
#include "src/frame/globals/RowConversion.h"
#include "src/frame/globals/Texts.h"
#include "src/frame/modVexoLogMsg.h"
#include "src/view/BomFilter.h"
#include "src/view/BomLedgers.h"
#include "src/view/BomLists.h"
#include "src/view/GroupTree.h"
#include "src/view/clsReadUserDefined.h"

namespace mbom {
namespace {

using com::Object;

// The bill transaction type of BOMs.
constexpr wchar_t kBomTranType[] = L"50";

bool HasComponentExtension(const Connection& conn) {
  try {
    return !conn.Execute(
                    Sql()
                    << L"select FComponentExt from t_components where FComponent = 'QorvaneMBomBill.BomView'")
                .Eof();
  } catch (const com::ComError&) {
    return false;
  }
}

// Appends the items of `source` to `target`.
void MergeVect(const Vector& target, const Vector& source) {
  // The log knows it under the name of the procedure that it is a copy of.
  const LoggedProcedure log(L"QorvaneMBomBill.clsReadUserDefined.MergeVect");
  const int32_t count = source.UBound();
  for (int32_t i = 1; i <= count; ++i) target.Add(source[i]);
}

} // namespace

Object BomView::Read(const std::wstring& sDsn, const Sql& query) {
  frame_.OpenDataContext(sDsn);
  return RecordsetToVector(OpenDetached(frame_.GetConnectionObject(), query));
}

template <class Statement>
Object BomView::ReadNumbered(const std::wstring& sDsn, const Statement& statement) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnectionObject();
    const bool shortNumbers = IsUseShortNumberClientSide(conn);
    return RecordsetToVector(OpenDetached(conn, statement(shortNumbers, Texts(sDsn))));
  });
}

template <class Statement>
Object BomView::ReadLedger(const std::wstring& sDsn, bool isBillHead, const Statement& statement) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnectionObject();
    const bool shortNumbers = IsUseShortNumberClientSide(conn);
    const LedgerStyle style{shortNumbers, HasComponentExtension(conn)};
    const Recordset rows = OpenDetached(conn, statement(style, Texts(sDsn)));
    rows.Rewind();
    // The values of the user-defined fields are another whole call.
    Object recordset = rows.object();
    return clsReadUserDefined().GetUserDefinedValue(sDsn, kBomTranType, recordset, isBillHead);
  });
}

// ---- the tree

Object BomView::GetBomGroupList(const std::wstring& sDsn, const Object& GroupVect, const Object& FilterDict,
                                bool bLongNumber, bool bBomView) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnectionObject();
    const Sql batch = GroupTreeBatch(Vector(GroupVect), Dictionary(FilterDict), bLongNumber, bBomView);
    return RecordsetToVector(OpenDetached(conn, batch));
  });
}

// ---- lists

Object BomView::GetBomLstInfo(const std::wstring& sDsn, const Object& GroupVect, const Object& FilterDict,
                              bool bLongNumber, Object& dDict, bool& bIsFind) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    ParseDsn(sDsn);
    Sql list = BomListStart(GetParsedValue(L"SubID"), bLongNumber);
    list << BuildBomFilterWhere(Dictionary(FilterDict), bLongNumber)
         << BuildGroupInList(Vector(GroupVect), bIsFind);
    if (dDict) list << QuickFind(Dictionary(dDict), bLongNumber);
    list << L"\r\n"
            L" ORDER BY FBomNumber";
    const Recordset rows = conn.ExecuteClientSide(list);
    rows.Detach();
    return RecordsetToVector(rows);
  });
}

Object BomView::GetBomList(const std::wstring& sDsn, const std::wstring& sFilter,
                           const std::wstring& sOrder) {
  return ReadNumbered(sDsn, [&](bool shortNumbers, const Texts& text) {
    return BomTreeList(shortNumbers, text, sFilter, sOrder);
  });
}

Object BomView::GetCustBomList(const std::wstring& sDsn, const std::wstring& sFilter,
                               const std::wstring& sOrder) {
  return ReadNumbered(sDsn, [&](bool shortNumbers, const Texts& text) {
    return CustBomTreeList(shortNumbers, text, sFilter, sOrder);
  });
}

template <class Statement>
Object BomView::ReadLookupList(const std::wstring& sDsn, const std::wstring& sFilter,
                               const std::wstring& sLookType, const Statement& statement) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Connection conn = frame_.GetConnection();
    const bool shortNumbers = IsUseShortNumberClientSide(conn);
    const std::wstring table = NewBomItemIdTable();
    conn.Run(BuildBomItemIdBatch(table, sFilter, sLookType));
    Object rows = RecordsetToVector(OpenDetached(conn, statement(table, shortNumbers, Texts(sDsn))));
    conn.Run(Sql() << L"DROP TABLE " << table);
    return rows;
  });
}

Object BomView::GetBomSimplifyList(const std::wstring& sDsn, const std::wstring& sFilter,
                                   const std::wstring& sFilter1, const std::wstring& sOrder) {
  return ReadLookupList(sDsn, sFilter, L"",
                        [&](const std::wstring& table, bool shortNumbers, const Texts& text) {
                          return BomSimplifyList(table, shortNumbers, text, sFilter1, sOrder);
                        });
}

Object BomView::GetCustBomSimplifyList(const std::wstring& sDsn, const std::wstring& sFilter,
                                       const std::wstring& sFilter1, const std::wstring& sOrder) {
  return ReadLookupList(sDsn, sFilter, L"",
                        [&](const std::wstring& table, bool shortNumbers, const Texts& text) {
                          return CustBomSimplifyList(table, shortNumbers, text, sFilter, sFilter1, sOrder);
                        });
}

Object BomView::GetBomSimplifyListEx(const std::wstring& sDsn, const std::wstring& sFilter,
                                     const std::wstring& sFilter1, const std::wstring& sOrder,
                                     const std::wstring& sLookType) {
  return ReadLookupList(sDsn, sFilter, sLookType,
                        [&](const std::wstring& table, bool shortNumbers, const Texts& text) {
                          return BomSimplifyListEx(table, shortNumbers, text, sFilter1, sOrder, sLookType);
                        });
}

bool BomView::ExistsEcnBill(const std::wstring& sDsn) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    const Recordset count =
        frame_.GetConnection().Execute(Sql() << L"SELECT ISNULL(COUNT(*),0) AS FEcnCount FROM ICECN ");
    return !Equals(count[L"FEcnCount"], 0);
  });
}

// ---- column titles

Object BomView::GetBomTitle(const std::wstring& sDsn, const std::wstring& sFilter, bool bIsCustBom) {
  return frame_.AbortOnFailure([&] {
    Object titles = Read(sDsn, BomTitles(TitleLanguageOf(sDsn), sFilter));
    if (!bIsCustBom) MergeVect(Vector(titles), Vector(GetBomUserDefinedTitle(sDsn, sFilter)));
    return titles;
  });
}

Object BomView::GetBomEntryTitle(const std::wstring& sDsn, const std::wstring& sFilter, bool bIsCustBom) {
  return frame_.AbortOnFailure([&] {
    Object titles = Read(sDsn, BomEntryTitles(TitleLanguageOf(sDsn), sFilter));
    if (!bIsCustBom) MergeVect(Vector(titles), Vector(GetBomEntryUserDefinedTitle(sDsn, sFilter)));
    return titles;
  });
}

Object BomView::GetBomUserDefinedTitle(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.AbortOnFailure(
      [&] { return Read(sDsn, BomUserDefinedTitles(TitleLanguageOf(sDsn), sFilter)); });
}

Object BomView::GetBomEntryUserDefinedTitle(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.AbortOnFailure(
      [&] { return Read(sDsn, BomEntryUserDefinedTitles(TitleLanguageOf(sDsn), sFilter)); });
}

Object BomView::GetCustBomTitle(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.AbortOnFailure([&] { return Read(sDsn, CustBomTitles(TitleLanguageOf(sDsn), sFilter)); });
}

Object BomView::GetCustBomEntryTitle(const std::wstring& sDsn, const std::wstring& sFilter) {
  return frame_.AbortOnFailure(
      [&] { return Read(sDsn, CustBomEntryTitles(TitleLanguageOf(sDsn), sFilter)); });
}

// ---- ledgers

Object BomView::GetBomLdgInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                              const std::wstring& sOrder) {
  return ReadLedger(sDsn, true, [&](const LedgerStyle& style, const Texts& text) {
    return BomLedger(style, text, sFilter, sOrder);
  });
}

Object BomView::GetBomEntryLdgInfo(const std::wstring& sDsn, int32_t /*aType*/, const std::wstring& sFilter,
                                   const std::wstring& sOrder, const Object& dctFilter) {
  return ReadLedger(sDsn, false, [&](const LedgerStyle& style, const Texts& text) {
    return BomEntryLedger(style, text, Dictionary(dctFilter), sFilter, sOrder);
  });
}

Object BomView::GetCustBomLdgInfo(const std::wstring& sDsn, const std::wstring& sFilter,
                                  const std::wstring& sOrder) {
  return ReadNumbered(sDsn, [&](bool shortNumbers, const Texts& text) {
    return CustBomLedger(shortNumbers, text, sFilter, sOrder);
  });
}

Object BomView::GetCustBomEntryLdgInfo(const std::wstring& sDsn, int32_t /*aType*/,
                                       const std::wstring& sFilter, const std::wstring& sOrder) {
  return ReadNumbered(sDsn, [&](bool shortNumbers, const Texts& text) {
    return CustBomEntryLedger(shortNumbers, text, sFilter, sOrder);
  });
}

} // namespace mbom
