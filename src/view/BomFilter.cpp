#include "src/view/BomFilter.h"

#include "src/frame/Sql.h"

namespace mbom {

std::wstring BuildBomFilterWhere(const Dictionary& filter, bool bLongNumber) {
  const wchar_t* const number = bLongNumber ? kLongNumber : kShortNumber;
  Sql where;
  where << L"WHERE 1 = 1 ";
  const auto restrict = [&](const wchar_t* key, std::wstring_view before, std::wstring_view after) {
    const std::wstring value = com::ToText(filter[key]);
    if (!value.empty()) where << before << value << after;
  };
  const auto quoted = [&](const wchar_t* key, const std::wstring& column, const wchar_t* comparison) {
    restrict(key, L" AND " + column + comparison + L"'", L"'\r\n");
  };
  const auto contains = [&](const wchar_t* key, const std::wstring& column) {
    restrict(key, L" AND " + column + L" LIKE '%", L"%'\r\n");
  };
  quoted(L"BItemNumber", number, L" >= ");
  quoted(L"EItemNumber", number, L" <= ");
  quoted(L"BBomBound", L"t1.FBomNumber", L" >= ");
  quoted(L"EBomBound", L"t1.FBomNumber", L" <= ");
  quoted(L"Checker", L"t5.FName", L" = ");
  quoted(L"Creator", L"t6.FName", L" = ");
  contains(L"BomNumber", L"t1.FBomNumber");
  contains(L"ItemNumber", number);
  contains(L"ChildNumber", L"t7.FNumber");
  contains(L"Note", L"t1.FNote");
  restrict(L"UseStatus", L" AND t1.FUseStatus = ", L"");
  restrict(L"CheckState", L" AND t1.FStatus = ", L"");
  return where.text();
}

std::wstring GroupIds(const Vector& groups, bool found) {
  Sql ids;
  const int32_t count = groups ? groups.UBound() : 0;
  for (int32_t i = 1; i <= count; ++i)
    ids << (i > 1 ? L"," : L"") << groups.DictionaryAt(i)[found ? L"FInterID" : L"Key"];
  return ids.text();
}

std::wstring BuildGroupInList(const Vector& groups, bool found) {
  if (!groups || groups.UBound() < 1) return {};
  return L" AND t3.FInterID IN (" + GroupIds(groups, found) + L")";
}

} // namespace mbom
