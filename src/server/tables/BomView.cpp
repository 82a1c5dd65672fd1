#include "src/view/BomView.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BomView>() {
  using mbom::BomView;
  const Parameter filter{L"sFilter", Variant::Missing()};
  const Parameter filter1{L"sFilter1", Variant::Missing()};
  const Parameter order{L"sOrder", Variant::Missing()};
  const Parameter isCustBom{L"bIsCustBom", false};
  const Parameter type{L"aType", 0};
  static const DispatchTable table(
      DIID__BomView,
      {
          PropertyGet<&BomView::TransMode>(1, L"TransMode"),
          Method<&BomView::GetBomGroupList>(
              2, L"GetBomGroupList",
              {L"sDsn", L"GroupVect", L"FilterDict", L"bLongNumber", {L"bBomView", false}}),
          Method<&BomView::GetBomLstInfo>(3, L"GetBomLstInfo",
                                          {L"sDsn",
                                           L"GroupVect",
                                           L"FilterDict",
                                           L"bLongNumber",
                                           {L"dDict", Variant::Missing()},
                                           {L"bIsFind", false}}),
          Method<&BomView::GetBomList>(4, L"GetBomList", {L"sDsn", filter, order}),
          Method<&BomView::GetCustBomList>(5, L"GetCustBomList", {L"sDsn", filter, order}),
          Method<&BomView::GetBomSimplifyList>(6, L"GetBomSimplifyList", {L"sDsn", filter, filter1, order}),
          Method<&BomView::GetCustBomSimplifyList>(7, L"GetCustBomSimplifyList",
                                                   {L"sDsn", filter, filter1, order}),
          Method<&BomView::GetBomSimplifyListEx>(
              8, L"GetBomSimplifyListEx",
              {L"sDsn", filter, filter1, order, {L"sLookType", Variant::Missing()}}),
          Method<&BomView::ExistsEcnBill>(9, L"ExistsEcnBill", {L"sDsn"}),
          Method<&BomView::GetBomTitle>(10, L"GetBomTitle", {L"sDsn", filter, isCustBom}),
          Method<&BomView::GetBomEntryTitle>(11, L"GetBomEntryTitle", {L"sDsn", filter, isCustBom}),
          Method<&BomView::GetBomUserDefinedTitle>(12, L"GetBomUserDefinedTitle", {L"sDsn", filter}),
          Method<&BomView::GetBomEntryUserDefinedTitle>(13, L"GetBomEntryUserDefinedTitle",
                                                        {L"sDsn", filter}),
          Method<&BomView::GetCustBomTitle>(14, L"GetCustBomTitle", {L"sDsn", filter}),
          Method<&BomView::GetCustBomEntryTitle>(15, L"GetCustBomEntryTitle", {L"sDsn", filter}),
          Method<&BomView::GetBomLdgInfo>(16, L"GetBomLdgInfo", {L"sDsn", filter, order}),
          Method<&BomView::GetBomEntryLdgInfo>(
              17, L"GetBomEntryLdgInfo", {L"sDsn", type, filter, order, {L"dctFilter", Variant::Missing()}}),
          Method<&BomView::GetCustBomLdgInfo>(18, L"GetCustBomLdgInfo", {L"sDsn", filter, order}),
          Method<&BomView::GetCustBomEntryLdgInfo>(19, L"GetCustBomEntryLdgInfo",
                                                   {L"sDsn", type, filter, order}),
      });
  return table;
}
