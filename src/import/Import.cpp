#include "src/import/Import.h"

#include <limits>

#include "com/ComError.h"
#include "src/frame/ado/ClientRecordset.h"

namespace mbom {

Connection BeginImport(Frame& frame, const std::wstring& sDsn) {
  frame.VoteAbort();
  frame.OpenDataContext(sDsn);
  frame.VoteComplete();
  return frame.GetConnection();
}

int32_t NextIdentifier(const Connection& connection, const wchar_t* table) {
  const ClientRecordset counter(connection);
  counter.Open(Sql() << L"SELECT FMaxNum FROM ICMaxNum WHERE FTableName='" << table << L"'");
  if (counter.Eof()) return 1;
  const int32_t highest = counter[L"FMaxNum"].AsLong();
  if (highest == std::numeric_limits<int32_t>::max())
    com::Raise(com::RuntimeError::Overflow, L"QorvaneMBomBill");
  return highest + 1;
}

void StoreIdentifier(const Connection& connection, const wchar_t* table, int32_t identifier) {
  connection.Run(Sql() << L"UPDATE ICMaxNum SET FMaxNum=" << identifier << L" WHERE FTableName='" << table
                       << L"'");
}

} // namespace mbom
