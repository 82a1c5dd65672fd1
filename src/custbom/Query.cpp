#include "src/custbom/Query.h"

#include "com/ValueText.h"
#include "src/frame/Convert.h"
#include "src/frame/ado/ClientRecordset.h"

namespace mbom {

Recordset RunQuery(Frame& frame, const std::wstring& sDsn, const Sql& query) {
  return frame.AbortOnFailure([&]() -> Recordset {
    frame.OpenDataContext(sDsn);
    ClientRecordset rows(frame.GetConnection());
    rows.Open(query);
    return rows;
  });
}

std::wstring CommaList(const Recordset& rows, const wchar_t* field) {
  std::wstring list;
  for (; !rows.Eof(); rows.MoveNext()) list += Trim(com::ToText(rows[field])) + L",";
  if (!list.empty()) list.pop_back();
  return list;
}

} // namespace mbom
