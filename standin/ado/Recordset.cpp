#include "standin/ado/Recordset.h"

#include <oleauto.h>

#include <algorithm>
#include <new>
#include <vector>

#include "com/DispatchObject.h"
#include "com/Elements.h"
#include "standin/ado/AdoError.h"
#include "standin/ado/Command.h"
#include "standin/ado/Connection.h"
#include "standin/ado/Fields.h"
#include "standin/host/EventLog.h"

namespace standin::ado {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kRecordsetSource[] = L"ADODB.Recordset";

// What Move and GetRows take for a row instead of a bookmark (BookmarkEnum).
constexpr int32_t kBookmarkCurrent = 0;
constexpr int32_t kBookmarkFirst = 1;
constexpr int32_t kBookmarkLast = 2;

CursorType CheckedCursorType(int32_t value) {
  if (value < static_cast<int32_t>(CursorType::Unspecified) ||
      value > static_cast<int32_t>(CursorType::Static))
    Raise(AdoError::InvalidArgument, kRecordsetSource);
  return static_cast<CursorType>(value);
}

LockType CheckedLockType(int32_t value) {
  if (value != kUnspecified && (value < static_cast<int32_t>(LockType::ReadOnly) ||
                                value > static_cast<int32_t>(LockType::BatchOptimistic)))
    Raise(AdoError::InvalidArgument, kRecordsetSource);
  return static_cast<LockType>(value);
}

// The columns that GetRows is asked for: one, an array of them, or all.
std::vector<size_t> ColumnsOf(const RowSet& rows, const Variant& fields) {
  std::vector<size_t> columns;
  if (fields.IsMissing() || fields.IsEmpty()) {
    for (size_t i = 0; i < rows.columns().size(); ++i) columns.push_back(i);
    return columns;
  }
  const auto elements = com::ElementsOf(fields);
  if (!elements) return {ColumnOf(rows, fields)};
  for (const Variant& field : *elements) columns.push_back(ColumnOf(rows, field));
  return columns;
}

} // namespace

CursorLocation CheckedCursorLocation(int32_t value, const wchar_t* source) {
  if (value != static_cast<int32_t>(CursorLocation::Server) &&
      value != static_cast<int32_t>(CursorLocation::Client))
    Raise(AdoError::InvalidArgument, source);
  return static_cast<CursorLocation>(value);
}

Object Recordset::Make(const Variant& source, const Connection& connection, Results results) {
  const auto object = com::Make<Recordset>();
  Recordset& recordset = object->object();
  recordset.source_ = source;
  recordset.connection_ = connection.self();
  recordset.ShowFirst(std::move(results), connection.session());
  return com::ToObject(object);
}

void Recordset::ShowFirst(Results results, std::shared_ptr<Session> session) {
  if (Streams()) results.KeepBusy();
  Result first = results.Take(!Streams());
  Show(std::move(first), std::move(results), std::move(session));
}

void Recordset::Show(Result result, Results rest, std::shared_ptr<Session> session) {
  *cursor_ = {std::move(result.rows), std::move(session), 0};
  cut_ = std::move(result.failure);
  rest_ = std::move(rest);
  // From now on a change of the connection's default changes nothing here.
  cursorLocation_ = EffectiveLocation();
  if (cursorLocation_ == CursorLocation::Client) cursorType_ = CursorType::Static;
  LetGoWhenRead();
}

void Recordset::Arrive() {
  if (!cursor_->eof()) return;
  ErrorList failure = std::move(cut_);
  cut_.clear();
  LetGoWhenRead();
  if (!failure.empty()) cursor_->session->Fail(std::move(failure));
}

void Recordset::LetGoWhenRead() {
  const bool hasUnreadRows = Streams() && cursor_->rows && !cursor_->eof();
  if (rest_.empty() && !hasUnreadRows) rest_ = Results();
}

bool Recordset::Streams() const {
  return ForwardOnly() && EffectiveLocation() == CursorLocation::Server;
}

CursorLocation Recordset::EffectiveLocation() const {
  if (cursorLocation_) return *cursorLocation_;
  const auto* connection = com::Unwrap<Connection>(connection_.pointer());
  return connection ? connection->cursorLocation() : CursorLocation::Server;
}

void Recordset::RequireOpen() const {
  if (!cursor_->open()) Raise(AdoError::ObjectClosed, kRecordsetSource);
}

void Recordset::RequireClosed() const {
  if (cursor_->open()) Raise(AdoError::ObjectOpen, kRecordsetSource);
}

void Recordset::Open(const Variant& source, const Variant& activeConnection, int32_t cursorType,
                     int32_t lockType, int32_t options) {
  RequireClosed();
  if (!source.IsMissing()) PutSource(source);
  if (Object connection = ConnectionFrom(activeConnection, kRecordsetSource))
    connection_ = std::move(connection);
  if (cursorType != kUnspecified) PutCursorType(cursorType);
  if (lockType != kUnspecified) PutLockType(lockType);
  options_ = options;

  if (auto* command = source_.IsObject() ? com::Unwrap<Command>(source_.AsObject().pointer()) : nullptr) {
    if (Object connection = command->ActiveConnection()) connection_ = std::move(connection);
    const auto* connection = com::Unwrap<Connection>(connection_.pointer());
    if (!connection) Raise(AdoError::InvalidConnection, kRecordsetSource);
    return ShowFirst(command->Run(*connection), connection->session());
  }
  if (source_.type() != VT_BSTR) Raise(AdoError::InvalidArgument, kRecordsetSource);
  const std::wstring text = source_.AsText();
  Event(EventKind::Open, text);
  const auto* connection = com::Unwrap<Connection>(connection_.pointer());
  if (!connection) Raise(AdoError::InvalidConnection, kRecordsetSource);
  ShowFirst(connection->Run(text, CommandTypeOf(options)), connection->session());
}

void Recordset::Close() {
  RequireOpen();
  Show({}, {}, nullptr);
}

void Recordset::Requery(int32_t options) {
  RequireOpen();
  if (!connection_) Raise(AdoError::InvalidConnection, kRecordsetSource);
  Close();
  Open(Variant::Missing(), Variant::Missing(), kUnspecified, kUnspecified,
       options == kUnspecified ? options_ : options);
}

Object Recordset::GetFields() const {
  return com::ToObject(com::Make<Fields>(cursor_));
}

bool Recordset::Bof() const {
  RequireOpen();
  return cursor_->bof();
}

bool Recordset::Eof() const {
  RequireOpen();
  return cursor_->eof();
}

void Recordset::MoveFirst() {
  RequireOpen();
  if (ForwardOnly() && cursor_->position != 0) Raise(Refusal::RestartPosition);
  if (Last() < 0) Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  cursor_->position = 0;
}

void Recordset::MoveLast() {
  RequireOpen();
  if (ForwardOnly()) Raise(Refusal::FetchBackward);
  if (Last() < 0) Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  cursor_->position = Last();
}

void Recordset::MoveNext() {
  RequireOpen();
  if (cursor_->eof()) Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  ++cursor_->position;
  Arrive();
}

void Recordset::MovePrevious() {
  RequireOpen();
  if (ForwardOnly()) Raise(Refusal::FetchBackward);
  if (cursor_->bof()) Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  --cursor_->position;
}

void Recordset::Move(int32_t count, const Variant& start) {
  RequireOpen();
  ptrdiff_t from = cursor_->position;
  if (!start.IsMissing() && start.AsLong() != kBookmarkCurrent) {
    if (ForwardOnly()) RaiseUnsupported(L"Bookmarks", kRecordsetSource);
    switch (start.AsLong()) {
    case kBookmarkFirst: from = 0; break;
    case kBookmarkLast: from = Last(); break;
    default: Raise(AdoError::InvalidArgument, kRecordsetSource);
    }
  }
  if (ForwardOnly() && count < 0) Raise(Refusal::FetchBackward);
  if ((count > 0 && cursor_->eof()) || (count < 0 && cursor_->bof()))
    Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  cursor_->position = std::clamp<ptrdiff_t>(from + count, -1, Last() + 1);
  Arrive();
}

int32_t Recordset::RecordCount() const {
  RequireOpen();
  const bool counted = cursorType_ == CursorType::Static || cursorType_ == CursorType::Keyset;
  return counted ? static_cast<int32_t>(cursor_->rows->rowCount()) : -1;
}

int32_t Recordset::AbsolutePosition() const {
  RequireOpen();
  if (RecordCount() < 0) return kPositionUnknown;
  if (cursor_->eof()) return kPositionEof;
  if (cursor_->bof()) return kPositionBof;
  return static_cast<int32_t>(cursor_->position) + 1;
}

void Recordset::PutAbsolutePosition(int32_t value) {
  RequireOpen();
  if (RecordCount() < 0) RaiseUnsupported(L"AbsolutePosition", kRecordsetSource);
  if (value < 1 || value > RecordCount()) Raise(AdoError::InvalidArgument, kRecordsetSource);
  cursor_->position = value - 1;
}

Object Recordset::NextRecordset(Variant& recordsAffected) {
  const auto* connection = com::Unwrap<Connection>(connection_.pointer());
  if (!connection || (cursor_->session && cursor_->session->closed()))
    Raise(AdoError::ObjectClosed, kRecordsetSource);
  const std::shared_ptr<Session> session = cursor_->session;
  // This recordset is closed now. It keeps the results that are left, so that a client can go on after a
  // failure.
  Show({}, std::move(rest_), session);
  if (rest_.empty()) return {};
  const int64_t count = rest_.NextCount();
  Result result = rest_.Take(!Streams());
  recordsAffected = static_cast<int32_t>(count);
  const auto object = com::Make<Recordset>();
  Recordset& next = object->object();
  next.source_ = source_;
  next.connection_ = connection_;
  next.cursorLocation_ = cursorLocation_;
  next.cursorType_ = cursorType_;
  next.lockType_ = lockType_;
  next.options_ = options_;
  next.Show(std::move(result), std::move(rest_), session);
  return com::ToObject(object);
}

Object Recordset::Clone(int32_t lockType) const {
  RequireOpen();
  if (ForwardOnly()) RaiseUnsupported(L"Clone of a forward-only recordset", kRecordsetSource);
  const auto object = com::Make<Recordset>();
  Recordset& clone = object->object();
  *clone.cursor_ = {cursor_->rows, cursor_->session, 0};
  clone.connection_ = connection_;
  clone.source_ = source_;
  clone.cursorLocation_ = EffectiveLocation();
  clone.cursorType_ = cursorType_;
  clone.lockType_ = lockType == kUnspecified ? lockType_ : CheckedLockType(lockType);
  clone.options_ = options_;
  return com::ToObject(object);
}

Variant Recordset::GetRows(int32_t rows, const Variant& start, const Variant& fields) {
  RequireOpen();
  if (!start.IsMissing()) Move(0, start);
  if (cursor_->bof() || cursor_->eof()) Raise(AdoError::NoCurrentRecord, kRecordsetSource);
  const std::vector<size_t> columns = ColumnsOf(*cursor_->rows, fields);
  const auto left = static_cast<int32_t>(Last() - cursor_->position + 1);
  const int32_t count = rows < 0 ? left : std::min(rows, left);

  SAFEARRAYBOUND bounds[]{{static_cast<ULONG>(columns.size()), 0}, {static_cast<ULONG>(count), 0}};
  SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 2, bounds);
  if (!array) throw std::bad_alloc();
  Variant result;
  result.raw().vt = VT_ARRAY | VT_VARIANT;
  result.raw().parray = array;
  // The field is the first dimension of the client's array, so its index runs fastest.
  VARIANT* element = nullptr;
  com::Check(SafeArrayAccessData(array, reinterpret_cast<void**>(&element)));
  // Each value is made in its place in the array, which owns it.
  for (int32_t i = 0; i < count; ++i, ++cursor_->position)
    for (const size_t column : columns)
      new (element++) Variant(cursor_->rows->Value(static_cast<size_t>(cursor_->position), column));
  SafeArrayUnaccessData(array);
  Arrive();
  return result;
}

Variant Recordset::Source() const {
  if (source_.IsEmpty()) return {L""};
  const auto* command = source_.IsObject() ? com::Unwrap<Command>(source_.AsObject().pointer()) : nullptr;
  return command ? Variant(command->CommandText()) : source_;
}

void Recordset::PutSource(const Variant& value) {
  RequireClosed();
  if (value.IsObject() ? !com::Unwrap<Command>(value.AsObject().pointer()) : value.type() != VT_BSTR)
    Raise(AdoError::InvalidArgument, kRecordsetSource);
  source_ = value;
}

void Recordset::PutActiveConnection(const Variant& value) {
  if (!cursor_->open()) {
    connection_ = ConnectionFrom(value, kRecordsetSource);
    return;
  }
  if (EffectiveLocation() != CursorLocation::Client) Raise(AdoError::ObjectOpen, kRecordsetSource);
  Object connection = ConnectionFrom(value, kRecordsetSource);
  const auto* attached = com::Unwrap<Connection>(connection.pointer());
  cursor_->session = attached ? attached->session() : nullptr;
  connection_ = std::move(connection);
  rest_ = Results();
}

void Recordset::PutCursorLocation(int32_t value) {
  RequireClosed();
  cursorLocation_ = CheckedCursorLocation(value, kRecordsetSource);
}

void Recordset::PutCursorType(int32_t value) {
  RequireClosed();
  cursorType_ = CheckedCursorType(value);
  if (cursorType_ == CursorType::Unspecified) cursorType_ = CursorType::ForwardOnly;
}

void Recordset::PutLockType(int32_t value) {
  RequireClosed();
  lockType_ = CheckedLockType(value);
  if (lockType_ == LockType::Unspecified) lockType_ = LockType::ReadOnly;
}

Variant Recordset::Filter() const {
  RaiseUnsupported(L"Filter", kRecordsetSource);
}

void Recordset::PutFilter(const Variant& /*value*/) {
  RaiseUnsupported(L"Filter", kRecordsetSource);
}

} // namespace standin::ado

template <>
const com::DispatchTable& com::TableOf<standin::ado::Recordset>() {
  using standin::ado::kUnspecified;
  using standin::ado::Recordset;
  static const DispatchTable table(
      IID_NULL,
      {
          PropertyGet<&Recordset::GetFields>(DISPID_VALUE, L"Fields"),
          Method<&Recordset::Open>(kNextId, L"Open",
                                   {{L"Source", Variant::Missing()},
                                    {L"ActiveConnection", Variant::Missing()},
                                    {L"CursorType", kUnspecified},
                                    {L"LockType", kUnspecified},
                                    {L"Options", kUnspecified}}),
          Method<&Recordset::Close>(kNextId, L"Close"),
          Method<&Recordset::Requery>(kNextId, L"Requery", {{L"Options", kUnspecified}}),
          PropertyGet<&Recordset::State>(kNextId, L"State"),
          PropertyGet<&Recordset::Bof>(kNextId, L"BOF"),
          PropertyGet<&Recordset::Eof>(kNextId, L"EOF"),
          Method<&Recordset::MoveFirst>(kNextId, L"MoveFirst"),
          Method<&Recordset::MoveLast>(kNextId, L"MoveLast"),
          Method<&Recordset::MoveNext>(kNextId, L"MoveNext"),
          Method<&Recordset::MovePrevious>(kNextId, L"MovePrevious"),
          Method<&Recordset::Move>(kNextId, L"Move", {L"NumRecords", {L"Start", Variant::Missing()}}),
          PropertyGet<&Recordset::RecordCount>(kNextId, L"RecordCount"),
          PropertyGet<&Recordset::AbsolutePosition>(kNextId, L"AbsolutePosition"),
          PropertyPut<&Recordset::PutAbsolutePosition>(kNextId, L"AbsolutePosition", {L"Value"}),
          Method<&Recordset::NextRecordset>(kNextId, L"NextRecordset",
                                            {{L"RecordsAffected", Variant::Missing()}}),
          Method<&Recordset::Clone>(kNextId, L"Clone", {{L"LockType", kUnspecified}}),
          Method<&Recordset::GetRows>(
              kNextId, L"GetRows",
              {{L"Rows", kUnspecified}, {L"Start", Variant::Missing()}, {L"Fields", Variant::Missing()}}),
          PropertyGet<&Recordset::Source>(kNextId, L"Source"),
          PropertyPut<&Recordset::PutSource>(kNextId, L"Source", {L"Value"}),
          PropertyGet<&Recordset::ActiveConnection>(kNextId, L"ActiveConnection"),
          PropertyPut<&Recordset::PutActiveConnection>(kNextId, L"ActiveConnection", {L"Value"}),
          PropertyGet<&Recordset::GetCursorLocation>(kNextId, L"CursorLocation"),
          PropertyPut<&Recordset::PutCursorLocation>(kNextId, L"CursorLocation", {L"Value"}),
          PropertyGet<&Recordset::GetCursorType>(kNextId, L"CursorType"),
          PropertyPut<&Recordset::PutCursorType>(kNextId, L"CursorType", {L"Value"}),
          PropertyGet<&Recordset::GetLockType>(kNextId, L"LockType"),
          PropertyPut<&Recordset::PutLockType>(kNextId, L"LockType", {L"Value"}),
          PropertyGet<&Recordset::Filter>(kNextId, L"Filter"),
          PropertyPut<&Recordset::PutFilter>(kNextId, L"Filter", {L"Value"}),
      });
  return table;
}
