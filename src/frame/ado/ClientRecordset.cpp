#include "src/frame/ado/ClientRecordset.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"
#include "src/frame/ado/Constants.h"
#include "src/log/DiagnosticLog.h"

namespace mbom {
namespace {

namespace ado = outside::ado;

} // namespace

ClientRecordset::ClientRecordset(const Connection& connection, Cursor cursor, Lock lock, OnLeave onLeave)
    : Recordset(RecordsetClass().Create(), connection.keeper(), onLeave), connection_(connection) {
  object().Put(ado::kActiveConnection, connection.object());
  object().Put(ado::kCursorLocation, ad::kUseClient);
  if (cursor != Cursor::Unspecified) object().Put(ado::kCursorType, static_cast<int32_t>(cursor));
  if (lock != Lock::Unspecified) object().Put(ado::kLockType, static_cast<int32_t>(lock));
}

void ClientRecordset::Open(const Sql& query) const {
  if (IsOpen()) object().Call(ado::kClose);
  LoggedStep logged(L"statement", query.text());
  object().Call(ado::kOpen, query.text(), connection_.object(), ad::kUnspecified, ad::kUnspecified,
                ad::kUnspecified);
  logged.Rows([this] { return RecordCount(); });
}

bool ClientRecordset::IsOpen() const {
  return object().Get(ado::kState).AsLong() != ad::kStateClosed;
}

Recordset OpenDetached(const Connection& connection, const Sql& query) {
  ClientRecordset rows(connection);
  rows.Open(query);
  rows.Detach();
  return rows;
}

} // namespace mbom
