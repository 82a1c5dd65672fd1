#include "standin/ado/Connection.h"

#include "com/DispatchObject.h"
#include "com/Passwords.h"
#include "standin/ado/AdoError.h"
#include "standin/ado/Errors.h"
#include "standin/ado/Recordset.h"
#include "standin/host/EventLog.h"

namespace standin::ado {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kConnectionSource[] = L"ADODB.Connection";

} // namespace

Connection::~Connection() {
  if (session_) session_->Close();
}

void Connection::RequireClosed() const {
  if (session_) Raise(AdoError::ObjectOpen, kConnectionSource);
}

void Connection::RequireOpen() const {
  if (!session_) Raise(AdoError::ObjectClosed, kConnectionSource);
}

void Connection::Open(const Variant& connectionString, const Variant& /*user*/, const Variant& /*password*/,
                      int32_t /*options*/) {
  RequireClosed();
  if (!connectionString.IsMissing() && !connectionString.IsEmpty()) {
    const std::wstring text = connectionString.AsText();
    if (!text.empty()) connectionString_ = text;
  }
  OpenOn(ConnectionString(connectionString_));
}

void Connection::OpenOn(const ConnectionString& descriptor) {
  RequireClosed();
  connectionString_ = descriptor.text();
  session_ = std::make_shared<Session>(descriptor, errors_);
}

void Connection::Close() {
  RequireOpen();
  if (session_->inTransaction()) Raise(AdoError::InTransaction, kConnectionSource);
  // The recordsets that are still attached see that it is closed.
  session_->Close();
  session_ = nullptr;
}

const std::shared_ptr<Session>& Connection::session() const {
  if (!session_) Raise(AdoError::InvalidConnection, kConnectionSource);
  return session_;
}

Results Connection::Run(const std::wstring& text, CommandType type, int32_t timeout) const {
  switch (type) {
  case CommandType::StoredProcedure: {
    int32_t status = 0;
    return session()->Call(text, timeout, {}, status);
  }
  case CommandType::Table:
  case CommandType::TableDirect: return session()->Execute(L"select * from " + text, timeout);
  default: return session()->Execute(text, timeout);
  }
}

Object Connection::Execute(const std::wstring& commandText, Variant& recordsAffected, int32_t options) {
  Event(EventKind::Execute, commandText);
  RequireOpen();
  return Answer(commandText, *this, Run(commandText, CommandTypeOf(options)), options, recordsAffected);
}

int32_t Connection::BeginTrans() {
  RequireOpen();
  session_->Begin();
  return 1;
}

void Connection::CommitTrans() {
  RequireOpen();
  session_->Commit();
}

void Connection::RollbackTrans() {
  RequireOpen();
  session_->Rollback();
}

Object Connection::GetErrors() const {
  return com::ToObject(com::Make<Errors>(errors_));
}

std::wstring Connection::ConnectionText() const {
  return session_ ? com::Masked(connectionString_) : connectionString_;
}

void Connection::PutConnectionText(const std::wstring& value) {
  RequireClosed();
  connectionString_ = value;
}

void Connection::PutProvider(const std::wstring& value) {
  RequireClosed();
  provider_ = value;
}

void Connection::PutCursorLocation(int32_t value) {
  cursorLocation_ = CheckedCursorLocation(value, kConnectionSource);
}

void Connection::PutCommandTimeout(int32_t value) {
  if (value < 0) Raise(AdoError::InvalidArgument, kConnectionSource);
  commandTimeout_ = value;
}

void Connection::PutConnectionTimeout(int32_t value) {
  RequireClosed();
  if (value < 0) Raise(AdoError::InvalidArgument, kConnectionSource);
  connectionTimeout_ = value;
}

Object ConnectionFrom(const Variant& value, const wchar_t* source) {
  if (value.IsMissing() || value.IsEmpty() || value.IsNull()) return {};
  if (value.type() == VT_BSTR) {
    const auto connection = com::Make<Connection>();
    connection->object().Open(value, Variant::Missing(), Variant::Missing(), kUnspecified);
    return com::ToObject(connection);
  }
  if (!value.IsObject()) Raise(AdoError::InvalidArgument, source);
  Object object = value.AsObject();
  if (object && !com::Unwrap<Connection>(object.pointer())) Raise(AdoError::InvalidArgument, source);
  return object;
}

CommandType CommandTypeOf(int32_t options) {
  if (options == kUnspecified) return CommandType::Unspecified;
  for (const CommandType type :
       {CommandType::Text, CommandType::Table, CommandType::StoredProcedure, CommandType::TableDirect})
    if ((options & static_cast<int32_t>(type)) != 0) return type;
  return CommandType::Unknown;
}

Object Answer(const Variant& source, const Connection& connection, Results results, int32_t options,
              Variant& recordsAffected) {
  recordsAffected = static_cast<int32_t>(results.NextCount());
  if (options != kUnspecified && (options & kExecuteNoRecords) != 0) {
    results.TakeAll();
    return {};
  }
  return Recordset::Make(source, connection, std::move(results));
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Connection>() {
  using standin::ado::Connection;
  using standin::ado::kUnspecified;
  static const DispatchTable table(
      IID_NULL,
      {
          PropertyGet<&Connection::ConnectionText>(DISPID_VALUE, L"ConnectionString"),
          PropertyPut<&Connection::PutConnectionText>(DISPID_VALUE, L"ConnectionString", {L"Value"}),
          Method<&Connection::Open>(kNextId, L"Open",
                                    {{L"ConnectionString", Variant::Missing()},
                                     {L"UserID", Variant::Missing()},
                                     {L"Password", Variant::Missing()},
                                     {L"Options", kUnspecified}}),
          Method<&Connection::Close>(kNextId, L"Close"),
          PropertyGet<&Connection::State>(kNextId, L"State"),
          Method<&Connection::Execute>(
              kNextId, L"Execute",
              {L"CommandText", {L"RecordsAffected", Variant::Missing()}, {L"Options", kUnspecified}}),
          Method<&Connection::BeginTrans>(kNextId, L"BeginTrans"),
          Method<&Connection::CommitTrans>(kNextId, L"CommitTrans"),
          Method<&Connection::RollbackTrans>(kNextId, L"RollbackTrans"),
          PropertyGet<&Connection::GetErrors>(kNextId, L"Errors"),
          PropertyGet<&Connection::Provider>(kNextId, L"Provider"),
          PropertyPut<&Connection::PutProvider>(kNextId, L"Provider", {L"Value"}),
          PropertyGet<&Connection::Version>(kNextId, L"Version"),
          PropertyGet<&Connection::GetCursorLocation>(kNextId, L"CursorLocation"),
          PropertyPut<&Connection::PutCursorLocation>(kNextId, L"CursorLocation", {L"Value"}),
          PropertyGet<&Connection::CommandTimeout>(kNextId, L"CommandTimeout"),
          PropertyPut<&Connection::PutCommandTimeout>(kNextId, L"CommandTimeout", {L"Value"}),
          PropertyGet<&Connection::ConnectionTimeout>(kNextId, L"ConnectionTimeout"),
          PropertyPut<&Connection::PutConnectionTimeout>(kNextId, L"ConnectionTimeout", {L"Value"}),
      });
  return table;
}
