#include "src/frame/ado/ClientRecordset.h"

#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
namespace ado = outside::ado;

// ADO's constants.
constexpr int32_t kUnspecified = -1;
constexpr int32_t kUseClient = 3;
constexpr int32_t kStateClosed = 0;

} // namespace

ClientRecordset::ClientRecordset(const Connection& connection, Cursor cursor, Lock lock, OnLeave onLeave)
    : Recordset(Object::Create(ado::kRecordsetProgId), connection.keeper(), onLeave),
      connection_(connection) {
  object().Put(ado::kActiveConnection, connection.object());
  object().Put(ado::kCursorLocation, kUseClient);
  if (cursor != Cursor::Unspecified) object().Put(ado::kCursorType, static_cast<int32_t>(cursor));
  if (lock != Lock::Unspecified) object().Put(ado::kLockType, static_cast<int32_t>(lock));
}

void ClientRecordset::Open(const Sql& query) const {
  if (IsOpen()) object().Call(ado::kClose);
  object().Call(ado::kOpen, query.text(), connection_.object(), kUnspecified, kUnspecified, kUnspecified);
}

bool ClientRecordset::IsOpen() const {
  return object().Get(ado::kState).AsLong() != kStateClosed;
}

int32_t ClientRecordset::RecordCount() const {
  return object().Get(ado::kRecordCount).AsLong();
}

Recordset OpenDetached(const Connection& connection, const Sql& query) {
  ClientRecordset rows(connection);
  rows.Open(query);
  rows.Detach();
  return rows;
}

} // namespace mbom
