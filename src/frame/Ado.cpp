#include "src/frame/Ado.h"

#include "com/ComError.h"
#include "src/frame/OutsideNames.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;
namespace ado = outside::ado;

// ADO's constants.
constexpr int32_t kUnspecified = -1;
constexpr int32_t kCommandText = 1;
constexpr int32_t kStoredProcedure = 4;
constexpr int32_t kParameterInput = 1;
constexpr int32_t kParameterOutput = 2;
constexpr int32_t kParameterReturnValue = 4;
constexpr int32_t kInteger = 3;
constexpr int32_t kVarChar = 200;
constexpr int32_t kVarWChar = 202;
constexpr int32_t kUseClient = 3;
constexpr int32_t kStateClosed = 0;

} // namespace

bool Recordset::Eof() const {
  return object().Get(ado::kEof).AsBool();
}

bool Recordset::Bof() const {
  return object().Get(ado::kBof).AsBool();
}

void Recordset::Rewind() const {
  if (!(Eof() && Bof())) object().Call(ado::kMoveFirst);
}

void Recordset::MoveNext() const {
  object().Call(ado::kMoveNext);
}

Variant Recordset::operator[](const wchar_t* field) const {
  const Object fields = object().Get(ado::kFields).AsObject();
  return fields.Get(ado::kItem, field).AsObject().Get(ado::kValue);
}

Variant Recordset::operator[](int32_t index) const {
  const Object fields = object().Get(ado::kFields).AsObject();
  return fields.Get(ado::kItem, index).AsObject().Get(ado::kValue);
}

std::vector<std::wstring> Recordset::FieldNames() const {
  const Object fields = object().Get(ado::kFields).AsObject();
  const int32_t count = fields.Get(ado::kCount).AsLong();
  std::vector<std::wstring> names;
  names.reserve(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i)
    names.push_back(fields.Get(ado::kItem, i).AsObject().Get(ado::kName).AsText());
  return names;
}

void Recordset::Detach() const {
  object().Put(ado::kActiveConnection, Object());
}

Recordset Recordset::Next() const {
  return Recordset(object().Call(ado::kNextRecordset, Variant::Missing()).AsObject(), held_.keeper());
}

Recordset Connection::Execute(const Sql& statement) const {
  return Recordset(
      object().Call(ado::kExecute, statement.text(), Variant::Missing(), kUnspecified).AsObject(), keeper());
}

void Connection::Run(const Sql& statements) const {
  for (Recordset result = Execute(statements); result;) result = result.Next();
}

namespace {

// Makes a connection's recordsets the client's while it lives; others may use the connection too.
class ClientCursors {
 public:
  explicit ClientCursors(const Object& connection)
      : connection_(connection), before_(connection.Get(ado::kCursorLocation)) {
    connection_.Put(ado::kCursorLocation, kUseClient);
  }
  ~ClientCursors() {
    try {
      connection_.Put(ado::kCursorLocation, before_);
    } catch (
        const com::ComError&) { // NOLINT(bugprone-empty-catch): a lost connection has no location to keep
    }
  }
  ClientCursors(const ClientCursors&) = delete;
  ClientCursors& operator=(const ClientCursors&) = delete;

 private:
  const Object& connection_;
  Variant before_;
};

} // namespace

Recordset Connection::ExecuteClientSide(const Sql& statement) const {
  const ClientCursors clientSide(object());
  return Execute(statement);
}

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

Command::Command(const Connection& connection, const std::wstring& text)
    : object_(Object::Create(ado::kCommandProgId)), keeper_(connection.keeper()) {
  object_.Put(ado::kActiveConnection, connection.object());
  object_.Put(ado::kCommandType, kCommandText);
  object_.Put(ado::kCommandText, text);
}

void Command::AppendText(const std::wstring& value, int32_t size) const {
  const Variant parameter = object_.Call(ado::kCreateParameter, L"", kVarWChar, kParameterInput, size, value);
  object_.Get(ado::kParameters).AsObject().Call(ado::kAppend, parameter);
}

Recordset Command::Execute() const {
  return Recordset(object_.Call(ado::kExecute).AsObject(), keeper_);
}

StoredProcedure::StoredProcedure(const std::wstring& name) : object_(Object::Create(ado::kCommandProgId)) {
  object_.Put(ado::kCommandType, kStoredProcedure);
  object_.Put(ado::kCommandText, name);
}

StoredProcedure::StoredProcedure(const Connection& connection, const std::wstring& name)
    : StoredProcedure(name) {
  object_.Put(ado::kActiveConnection, connection.object());
}

void StoredProcedure::Append(const Variant& parameter) const {
  object_.Get(ado::kParameters).AsObject().Call(ado::kAppend, parameter);
}

void StoredProcedure::AppendInput(const std::wstring& parameter, const std::wstring& value,
                                  int32_t size) const {
  Append(object_.Call(ado::kCreateParameter, parameter, kVarChar, kParameterInput, size, value));
}

void StoredProcedure::AppendInput(const std::wstring& parameter, int32_t value) const {
  Append(
      object_.Call(ado::kCreateParameter, parameter, kInteger, kParameterInput, Variant::Missing(), value));
}

void StoredProcedure::AppendOutput(const std::wstring& parameter) const {
  Append(object_.Call(ado::kCreateParameter, parameter, kInteger, kParameterOutput, 0));
}

void StoredProcedure::AppendReturnValue(const std::wstring& parameter) const {
  constexpr int32_t kIntSize = 4;
  Append(object_.Call(ado::kCreateParameter, parameter, kInteger, kParameterReturnValue, kIntSize));
}

void StoredProcedure::Execute() const {
  for (Recordset result(object_.Call(ado::kExecute).AsObject()); result;) result = result.Next();
}

Recordset StoredProcedure::OpenDetached(const Connection& connection) const {
  object_.Put(ado::kActiveConnection, connection.object());
  Recordset rows(Object::Create(ado::kRecordsetProgId), connection.keeper());
  rows.object().Put(ado::kCursorLocation, kUseClient);
  rows.object().Call(ado::kOpen, object_, Variant::Missing(), kUnspecified, kUnspecified, kUnspecified);
  // ADO lets a recordset go only when its command has let go before.
  object_.Put(ado::kActiveConnection, Object());
  rows.Detach();
  return rows;
}

Variant StoredProcedure::Value(int32_t index) const {
  return object_.Get(ado::kParameters).AsObject().Get(ado::kItem, index).AsObject().Get(ado::kValue);
}

} // namespace mbom
