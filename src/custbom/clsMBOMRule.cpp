#include "src/custbom/clsMBOMRule.h"

#include "src/custbom/Query.h"

namespace mbom {
namespace {

std::wstring QuotesDoubled(const std::wstring& text) {
  std::wstring doubled;
  for (const wchar_t c : text) doubled.append(c == L'\'' ? 2 : 1, c);
  return doubled;
}

} // namespace

com::Object clsMBOMRule::GetICItemParent(const std::wstring& sDsn, const std::wstring& s_ItemID) {
  return frame_.AbortOnFailure([&] {
    frame_.OpenDataContext(sDsn);
    frame_.GetConnection();
    return RunQuery(frame_, sDsn,
                    Sql() << L"select t_icitem.fitemid,t_item.fitemid as groupid,t_item.fname as groupname "
                             L"from t_icitem left outer join t_item on t_icitem.fparentid=t_item.fitemid "
                             L"and t_item.fdetail=0 and fitemclassid=4 "
                          << L" WHERE t_icitem.fitemid='" << QuotesDoubled(s_ItemID) << L"'")
        .object();
  });
}

com::Object clsMBOMRule::GetRecordSet(std::wstring& sDsn, std::wstring& s_SQL) {
  return RunQuery(frame_, sDsn, Sql() << s_SQL).object();
}

} // namespace mbom
