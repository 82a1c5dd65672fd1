// The statements of BomView and clsReadUserDefined.
#include "com/Object.h"
#include "tests/src/statements/Cases.h"
#include "tests/support/Client.h"

namespace mbom::test {
namespace {

using com::Object;

constexpr wchar_t kNoExtension[] = L"DELETE FROM t_components";
constexpr wchar_t kNoExtensionShortNumbers[] =
    L"DELETE FROM t_components "
    L"UPDATE t_SystemProfile SET FValue='1' WHERE FCategory='IC' AND FKey='UseShortNumber'";

// Groups as the browser's tree passes them, and as a search does.
Object Selected(std::initializer_list<int32_t> groups) {
  Object vector = MakeVector({});
  for (const int32_t group : groups) vector.Call(L"Add", MakeDictionary({{L"Key", group}}));
  return vector;
}
Object Found(std::initializer_list<int32_t> groups) {
  Object vector = MakeVector({});
  for (const int32_t group : groups) vector.Call(L"Add", MakeDictionary({{L"FInterID", group}}));
  return vector;
}

Object NoFilter() {
  return MakeDictionary({});
}

Object EveryFilter() {
  return MakeDictionary({{L"BItemNumber", L"01.001"},
                         {L"EItemNumber", L"09"},
                         {L"BBomBound", L"B"},
                         {L"EBomBound", L"C"},
                         {L"Checker", L"王芳"},
                         {L"Creator", L"李明"},
                         {L"BomNumber", L"BOM"},
                         {L"ItemNumber", L"0"},
                         {L"ChildNumber", L"0"},
                         {L"Note", L"a"},
                         {L"UseStatus", 1072},
                         {L"CheckState", 1}});
}

// Detached rows of their own.
Object RowsOf(const wchar_t* query) {
  Object rows = Object::Create(L"ADODB.Recordset");
  rows.Put(L"CursorLocation", 3);
  rows.Call(L"Open", query, L"Provider=Embedded;Data Source=:memory:rows");
  rows.Put(L"ActiveConnection", Object());
  return rows;
}

StatementCases ListCases() {
  const char* const numbers = "Shared.UseShortNumber";
  return {
      {L"BomView",
       L"GetBomGroupList",
       "every group, as tree rows",
       {MakeVector({}), NoFilter(), true, true},
       {"BomView.GetBomGroupList.all"}},
      {L"BomView",
       L"GetBomGroupList",
       "every group, as they are",
       {MakeVector({}), NoFilter(), true, false},
       {"BomView.GetBomGroupList.raw"}},
      {L"BomView",
       L"GetBomGroupList",
       "selected groups",
       {Selected({2, 7}), MakeDictionary({{L"UseStatus", 1072}}), true, true},
       {"BomView.GetBomGroupList.selected"}},
      {L"BomView",
       L"GetBomGroupList",
       "every filter",
       {Selected({2}), EveryFilter(), true, false},
       {"BomView.GetBomGroupList.filters"}},
      {L"BomView",
       L"GetBomGroupList",
       "a quote in a filter",
       {Selected({2}), MakeDictionary({{L"Note", L"it's"}}), true, false},
       {"BomView.GetBomGroupList.quote"}},
      {L"BomView", L"GetBomLstInfo", "", {MakeVector({}), NoFilter(), true}, {"BomView.GetBomLstInfo"}},
      {L"BomView",
       L"GetBomLstInfo",
       "in the planning subsystem, short numbers",
       {Selected({2, 5}), MakeDictionary({{L"UseStatus", 1072}}), false},
       {"BomView.GetBomLstInfo.JH"},
       {.subsystem = L"JH"}},
      {L"BomView",
       L"GetBomLstInfo",
       "a search",
       {Found({2, 3, 5}), NoFilter(), true,
        MakeDictionary({{L"BomNumber", L"BOM"}, {L"ItemNumber", L"02"}, {L"ItemName", L"轮"}}), true},
       {"BomView.GetBomLstInfo.find"},
       {.subsystem = L"JH"}},
      {L"BomView",
       L"GetBomLstInfo",
       "a search for short numbers",
       {MakeVector({}),
        MakeDictionary({{L"BItemNumber", L"001"}, {L"EItemNumber", L"009"}, {L"ItemNumber", L"0"}}), false,
        MakeDictionary({{L"ItemNumber", L"02"}}), true},
       {"BomView.GetBomLstInfo.find.shortNumber"}},
      {L"BomView", L"GetBomList", "", {}, {numbers, "BomView.GetBomList"}},
      {L"BomView",
       L"GetBomList",
       "filtered and sorted, short numbers",
       {L"FBomType=0 AND FBomNumber LIKE 'BOM%'", L"FBomNumber DESC,FKey"},
       {numbers, "BomView.GetBomList.filter"},
       {.data = kShortNumbers}},
      {L"BomView", L"GetCustBomList", "", {}, {numbers, "BomView.GetCustBomList"}},
      {L"BomView",
       L"GetBomSimplifyList",
       "",
       {},
       {numbers, "Shared.BuildBomItemID", "BomView.GetBomSimplifyList", "Shared.DropBomItemID"}},
      {L"BomView",
       L"GetBomSimplifyList",
       "filtered and sorted, short numbers",
       {L"", L"FNumber LIKE '0%'", L"FKey"},
       {numbers, "Shared.BuildBomItemID", "BomView.GetBomSimplifyList.filter", "Shared.DropBomItemID"},
       {.data = kShortNumbers}},
      {L"BomView",
       L"GetCustBomSimplifyList",
       "",
       {},
       {numbers, "Shared.BuildBomItemID", "BomView.GetCustBomSimplifyList", "Shared.DropBomItemID"}},
      {L"BomView",
       L"GetCustBomSimplifyList",
       "filtered",
       {L"t1.FStatus=1", L"FNumber LIKE '0%'"},
       {numbers, "BomView.GetCustBomSimplifyList.filter.build", "BomView.GetCustBomSimplifyList.filter",
        "Shared.DropBomItemID"}},
      {L"BomView",
       L"GetCustBomSimplifyList",
       "the second filter alone has no effect",
       {L"", L"FNumber LIKE '0%'"},
       {numbers, "Shared.BuildBomItemID", "BomView.GetCustBomSimplifyList", "Shared.DropBomItemID"}},
      {L"BomView",
       L"GetCustBomSimplifyList",
       "the first filter alone leaves a WHERE without a condition",
       {L"t1.FStatus=1"},
       {numbers, "BomView.GetCustBomSimplifyList.filter.build", "BomView.GetCustBomSimplifyList.emptyWhere"}},
      {L"BomView",
       L"GetBomSimplifyListEx",
       "",
       {},
       {numbers, "Shared.BuildBomItemID", "BomView.GetBomSimplifyListEx", "Shared.DropBomItemID"}},
      {L"BomView",
       L"GetBomSimplifyListEx",
       "for a change notice",
       {L"t1.FStatus=1", L"FType=1", L"FKey", L"ECNLOOKUP"},
       {numbers, "BomView.GetBomSimplifyListEx.ecn.build", "BomView.GetBomSimplifyListEx.ecn",
        "Shared.DropBomItemID"}},
      {L"BomView", L"ExistsEcnBill", "", {}, {"BomView.ExistsEcnBill"}},
  };
}

StatementCases TitleCases() {
  return {
      {L"BomView", L"GetBomTitle", "", {}, {"BomView.GetBomTitle.chs", "Shared.UserDefinedTitles"}},
      {L"BomView",
       L"GetBomTitle",
       "without the user-defined ones",
       {L"FName<>'FVersion'", true},
       {"BomView.GetBomTitle.cht"},
       {.language = L"cht"}},
      {L"BomView",
       L"GetBomEntryTitle",
       "",
       {},
       {"BomView.GetBomEntryTitle.en", "BomView.GetBomEntryTitle.userDefined.en"},
       {.language = L"en"}},
      {L"BomView",
       L"GetBomEntryTitle",
       "without the user-defined ones",
       {L"", true},
       {"BomView.GetBomEntryTitle.en"},
       {.language = L"en"}},
      {L"BomView", L"GetBomUserDefinedTitle", "", {}, {"Shared.UserDefinedTitles"}},
      {L"BomView",
       L"GetBomUserDefinedTitle",
       "filtered",
       {L"FCtlIndex=40"},
       {"BomView.GetBomUserDefinedTitle.cht"},
       {.language = L"cht"}},
      {L"BomView",
       L"GetBomEntryUserDefinedTitle",
       "filtered",
       {L"FCtlOrder>0"},
       {"BomView.GetBomEntryUserDefinedTitle.en"},
       {.language = L"en"}},
      {L"BomView", L"GetCustBomTitle", "", {}, {"BomView.GetCustBomTitle"}},
      {L"BomView", L"GetCustBomEntryTitle", "", {}, {"BomView.GetCustBomEntryTitle"}},
  };
}

StatementCases LedgerCases() {
  const char* const numbers = "Shared.UseShortNumber";
  const char* const extension = "Shared.ComponentExtension";
  const char* const headFields = "Shared.UserDefinedFields.head";
  const char* const entryFields = "Shared.UserDefinedFields.entry";
  return {
      {L"BomView",
       L"GetBomLdgInfo",
       "without the extension",
       {},
       {numbers, extension, "BomView.GetBomLdgInfo", headFields},
       {.data = kNoExtension}},
      {L"BomView",
       L"GetBomLdgInfo",
       "without the extension, short numbers",
       {},
       {numbers, extension, "BomView.GetBomLdgInfo.shortNumber", headFields},
       {.data = kNoExtensionShortNumbers}},
      {L"BomView",
       L"GetBomLdgInfo",
       "with the extension, filtered and sorted",
       {L"FGroupNumber='01.01' AND FStatusNum=0", L"FBOMNumber"},
       {numbers, extension, "BomView.GetBomLdgInfo.ext", headFields}},
      {L"BomView",
       L"GetBomEntryLdgInfo",
       "without the extension",
       {},
       {numbers, extension, "BomView.GetBomEntryLdgInfo", entryFields},
       {.data = kNoExtension}},
      {L"BomView",
       L"GetBomEntryLdgInfo",
       "without the extension, short numbers",
       {},
       {numbers, extension, "BomView.GetBomEntryLdgInfo.shortNumber", entryFields},
       {.data = kNoExtensionShortNumbers}},
      {L"BomView",
       L"GetBomEntryLdgInfo",
       "with the extension and a period, filtered and sorted",
       {0, L"a.FInterID=1001", L"a.FInterID,a.FEntryID",
        MakeDictionary({{L"BItemTime", L"2021-01-01"}, {L"EItemTime", L"2021-06-30"}})},
       {numbers, extension, "BomView.GetBomEntryLdgInfo.period", entryFields}},
      {L"BomView", L"GetCustBomLdgInfo", "", {}, {numbers, "BomView.GetCustBomLdgInfo.all"}},
      {L"BomView",
       L"GetCustBomLdgInfo",
       "filtered and sorted",
       {L"FBomType=3", L"FInterID"},
       {numbers, "BomView.GetCustBomLdgInfo"}},
      {L"BomView",
       L"GetCustBomLdgInfo",
       "short numbers",
       {},
       {numbers, "BomView.GetCustBomLdgInfo.all.shortNumber"},
       {.data = kShortNumbers}},
      {L"BomView",
       L"GetCustBomEntryLdgInfo",
       "filtered and sorted",
       {0, L"FInterID=3001", L"FEntryID"},
       {numbers, "BomView.GetCustBomEntryLdgInfo"}},
      {L"BomView",
       L"GetCustBomEntryLdgInfo",
       "short numbers",
       {},
       {numbers, "BomView.GetCustBomEntryLdgInfo.all.shortNumber"},
       {.data = kShortNumbers}},
      {L"clsReadUserDefined",
       L"GetUserDefinedValue",
       "of headers",
       {L"50", RowsOf(L"SELECT 1002 AS FInterID"), true},
       {headFields}},
      {L"clsReadUserDefined",
       L"GetUserDefinedValue",
       "of lines",
       {L"50", RowsOf(L"SELECT 1004 AS FInterID, 1 AS FEntryID"), false},
       {entryFields}},
  };
}

} // namespace

StatementCases ViewCases() {
  StatementCases all;
  for (const StatementCases& cases : {ListCases(), TitleCases(), LedgerCases()})
    all.insert(all.end(), cases.begin(), cases.end());
  return all;
}

} // namespace mbom::test
