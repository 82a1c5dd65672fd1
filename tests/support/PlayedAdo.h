// ADO, played by a test: a connection, recordsets and commands that note what is put and passed, and answer
// with the rows that the test lays out.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "com/DispatchObject.h"
#include "com/ValueText.h"
#include "tests/support/NumberedContexts.h"

namespace mbom::test {

// The rows that a statement yields.
struct PlayedRows {
  bool open = true; // a statement that yields no rows leaves its recordset closed
  std::vector<std::wstring> fields;
  std::vector<std::vector<com::Variant>> rows;
  size_t failingRow = 0; // the row, counted from 1, whose values cannot be read; 0 for none
};

// A recordset as it was when it was opened.
struct OpenedRecordset {
  std::wstring source;
  bool onConnection = false;
  int32_t location = 0;
  int32_t cursor = 0;
  int32_t lock = 0;
};

struct AppendedParameter {
  std::wstring name;
  int32_t type = 0;
  int32_t direction = 0;
  com::Variant size;
  com::Variant value;
};

struct PlayedAdo {
  static inline std::vector<std::wstring> calls;
  static inline std::vector<OpenedRecordset> opened;
  static inline std::vector<AppendedParameter> parameters;
  static inline std::deque<PlayedRows> answers; // to one statement after another; after them, none has rows
  static inline com::Variant output;            // of every output parameter
  static inline com::Object connection;

  static void Reset() {
    calls.clear();
    opened.clear();
    parameters.clear();
    answers.clear();
    output = com::Variant();
    connection = com::Object();
  }
  static PlayedRows NextAnswer(bool open) {
    if (answers.empty()) return {open, {}, {}, 0};
    PlayedRows next = std::move(answers.front());
    answers.pop_front();
    return next;
  }
  // Whether the value is the played connection, as the notes name it.
  static std::wstring Name(const com::Variant& value) {
    if (!value.IsObject()) return L"something else";
    const com::Object object = value.AsObject();
    if (!object) return L"Nothing";
    return object == connection ? L"the connection" : L"something else";
  }
};

// Where a recordset stands in its rows.
struct PlayedCursor {
  PlayedRows rows;
  size_t position = 0;
};

class PlayedField {
 public:
  PlayedField(std::shared_ptr<PlayedCursor> cursor, size_t index)
      : cursor_(std::move(cursor)), index_(index) {}
  std::wstring Name() const { return cursor_->rows.fields[index_]; }
  com::Variant Value() const {
    if (cursor_->rows.failingRow == cursor_->position + 1)
      throw com::ComError(E_FAIL, L"ADODB.Field", L"the row was lost");
    return cursor_->rows.rows.at(cursor_->position).at(index_);
  }

 private:
  std::shared_ptr<PlayedCursor> cursor_;
  size_t index_;
};

class PlayedFields {
 public:
  explicit PlayedFields(std::shared_ptr<PlayedCursor> cursor) : cursor_(std::move(cursor)) {}
  int32_t Count() const { return static_cast<int32_t>(cursor_->rows.fields.size()); }
  com::Object Item(const com::Variant& nameOrIndex) const {
    const std::vector<std::wstring>& fields = cursor_->rows.fields;
    if (nameOrIndex.type() != VT_BSTR) return Field(static_cast<size_t>(nameOrIndex.AsLong()));
    for (size_t i = 0; i < fields.size(); ++i)
      if (com::EqualsNoCase(fields[i], nameOrIndex.AsText())) return Field(i);
    throw com::ComError(E_INVALIDARG, L"ADODB.Fields", L"no such field: " + nameOrIndex.AsText());
  }

 private:
  com::Object Field(size_t index) const { return com::ToObject(com::Make<PlayedField>(cursor_, index)); }
  std::shared_ptr<PlayedCursor> cursor_;
};

class PlayedRecordset {
 public:
  PlayedRecordset() = default;
  // The result of an execution.
  explicit PlayedRecordset(PlayedRows rows) { Show(std::move(rows)); }

  void PutActiveConnection(const com::Variant& connection) {
    PlayedAdo::calls.push_back(L"ActiveConnection=" + PlayedAdo::Name(connection));
    onConnection_ = PlayedAdo::Name(connection) == L"the connection";
  }
  void PutCursorLocation(int32_t location) {
    PlayedAdo::calls.push_back(L"CursorLocation=" + std::to_wstring(location));
    location_ = location;
  }
  void PutCursorType(int32_t type) {
    PlayedAdo::calls.push_back(L"CursorType=" + std::to_wstring(type));
    cursor_ = type;
  }
  void PutLockType(int32_t type) {
    PlayedAdo::calls.push_back(L"LockType=" + std::to_wstring(type));
    lock_ = type;
  }
  // What is unspecified (-1) is as it was put before.
  void Open(const com::Variant& source, const com::Variant& connection, int32_t cursor, int32_t lock,
            int32_t options) {
    const std::wstring text = source.IsObject() ? L"a command" : source.AsText();
    PlayedAdo::calls.push_back(L"Open " + text + L"|" + PlayedAdo::Name(connection) + L"|" +
                               std::to_wstring(cursor) + L"|" + std::to_wstring(lock) + L"|" +
                               std::to_wstring(options));
    PlayedAdo::opened.push_back({text, onConnection_ || PlayedAdo::Name(connection) == L"the connection",
                                 location_, cursor == -1 ? cursor_ : cursor, lock == -1 ? lock_ : lock});
    Show(PlayedAdo::NextAnswer(true));
  }
  void Close() { state_ = 0; }
  int32_t State() const { return state_; }
  bool Eof() const { return rows_->position >= rows_->rows.rows.size(); }
  bool Bof() const { return rows_->rows.rows.empty(); }
  int32_t RecordCount() const { return static_cast<int32_t>(rows_->rows.rows.size()); }
  void MoveFirst() { rows_->position = 0; }
  void MoveNext() { ++rows_->position; }
  com::Object Fields() const { return com::ToObject(com::Make<PlayedFields>(rows_)); }
  com::Object NextRecordset(const com::Variant& /*affected*/) const { return {}; }

 private:
  void Show(PlayedRows rows) {
    state_ = rows.open ? 1 : 0;
    rows_ = std::make_shared<PlayedCursor>();
    rows_->rows = std::move(rows);
  }

  bool onConnection_ = false;
  // ADO's own: server-side, forward-only, read-only.
  int32_t location_ = 2;
  int32_t cursor_ = 0;
  int32_t lock_ = 1;
  int32_t state_ = 0;
  std::shared_ptr<PlayedCursor> rows_ = std::make_shared<PlayedCursor>();
};

class PlayedConnection {
 public:
  com::Object Execute(const std::wstring& text, const com::Variant& affected, const com::Variant& options) {
    PlayedAdo::calls.push_back(L"Execute " + text + (affected.IsMissing() ? L"|missing|" : L"|given|") +
                               com::ToText(options));
    return com::ToObject(com::Make<PlayedRecordset>(PlayedAdo::NextAnswer(false)));
  }
  int32_t CursorLocation() const { return location_; }
  void PutCursorLocation(int32_t location) { location_ = location; }

 private:
  int32_t location_ = 2;
};

class PlayedParameter {
 public:
  explicit PlayedParameter(AppendedParameter parameter) : parameter_(std::move(parameter)) {}
  com::Variant Value() const {
    constexpr int32_t kInput = 1;
    return parameter_.direction == kInput ? parameter_.value : PlayedAdo::output;
  }
  const AppendedParameter& parameter() const { return parameter_; }

 private:
  AppendedParameter parameter_;
};

class PlayedParameters {
 public:
  void Append(const com::Object& parameter) {
    PlayedAdo::parameters.push_back(com::Unwrap<PlayedParameter>(parameter.pointer())->parameter());
    all_.push_back(parameter);
  }
  com::Object Item(int32_t index) const { return all_.at(static_cast<size_t>(index)); }

 private:
  std::vector<com::Object> all_;
};

class PlayedCommand {
 public:
  PlayedCommand() : parameters_(com::ToObject(com::Make<PlayedParameters>())) {}

  void PutActiveConnection(const com::Variant& connection) {
    PlayedAdo::calls.push_back(L"ActiveConnection=" + PlayedAdo::Name(connection));
  }
  void PutCommandType(int32_t type) { PlayedAdo::calls.push_back(L"CommandType=" + std::to_wstring(type)); }
  void PutCommandText(const std::wstring& text) { PlayedAdo::calls.push_back(L"CommandText=" + text); }
  com::Object CreateParameter(const std::wstring& name, int32_t type, int32_t direction,
                              const com::Variant& size, const com::Variant& value) {
    return com::ToObject(com::Make<PlayedParameter>(AppendedParameter{name, type, direction, size, value}));
  }
  com::Object Parameters() const { return parameters_; }
  com::Object Execute() {
    PlayedAdo::calls.emplace_back(L"Execute");
    return com::ToObject(com::Make<PlayedRecordset>(PlayedAdo::NextAnswer(false)));
  }

 private:
  com::Object parameters_;
};

// Runs `test` on a thread of its own where the data-access library hands out the played connection and every
// recordset and command is a played one. What was noted stays until the next run.
template <class Test>
void WithPlayedAdo(const Test& test) {
  PlayedAdo::Reset();
  InNumberedContexts([] { return PlayedAdo::connection; },
                     [&test] {
                       const Replacement<PlayedRecordset> recordset(L"ADODB.Recordset");
                       const Replacement<PlayedCommand> command(L"ADODB.Command");
                       PlayedAdo::connection = com::ToObject(com::Make<PlayedConnection>());
                       test();
                       PlayedAdo::connection = com::Object();
                     });
}

} // namespace mbom::test

namespace com {

template <>
inline const DispatchTable& TableOf<mbom::test::PlayedField>() {
  using mbom::test::PlayedField;
  static const DispatchTable table(IID_NULL, {
                                                 PropertyGet<&PlayedField::Name>(1, L"Name"),
                                                 PropertyGet<&PlayedField::Value>(2, L"Value"),
                                             });
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedFields>() {
  using mbom::test::PlayedFields;
  static const DispatchTable table(IID_NULL, {
                                                 PropertyGet<&PlayedFields::Count>(1, L"Count"),
                                                 PropertyGet<&PlayedFields::Item>(2, L"Item", {L"index"}),
                                             });
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedRecordset>() {
  using mbom::test::PlayedRecordset;
  static const DispatchTable table(
      IID_NULL,
      {
          PropertyPut<&PlayedRecordset::PutActiveConnection>(1, L"ActiveConnection", {L"value"}),
          PropertyPut<&PlayedRecordset::PutCursorLocation>(2, L"CursorLocation", {L"value"}),
          PropertyPut<&PlayedRecordset::PutCursorType>(3, L"CursorType", {L"value"}),
          PropertyPut<&PlayedRecordset::PutLockType>(4, L"LockType", {L"value"}),
          Method<&PlayedRecordset::Open>(5, L"Open",
                                         {{L"source", Variant::Missing()},
                                          {L"connection", Variant::Missing()},
                                          {L"cursorType", -1},
                                          {L"lockType", -1},
                                          {L"options", -1}}),
          Method<&PlayedRecordset::Close>(6, L"Close"),
          PropertyGet<&PlayedRecordset::State>(7, L"State"),
          PropertyGet<&PlayedRecordset::Eof>(8, L"EOF"),
          PropertyGet<&PlayedRecordset::Bof>(9, L"BOF"),
          PropertyGet<&PlayedRecordset::RecordCount>(10, L"RecordCount"),
          Method<&PlayedRecordset::MoveFirst>(11, L"MoveFirst"),
          Method<&PlayedRecordset::MoveNext>(12, L"MoveNext"),
          PropertyGet<&PlayedRecordset::Fields>(13, L"Fields"),
          Method<&PlayedRecordset::NextRecordset>(14, L"NextRecordset", {{L"affected", Variant::Missing()}}),
      });
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedConnection>() {
  using mbom::test::PlayedConnection;
  static const DispatchTable table(
      IID_NULL,
      {
          Method<&PlayedConnection::Execute>(
              1, L"Execute", {L"text", {L"affected", Variant::Missing()}, {L"options", Variant::Missing()}}),
          PropertyGet<&PlayedConnection::CursorLocation>(2, L"CursorLocation"),
          PropertyPut<&PlayedConnection::PutCursorLocation>(2, L"CursorLocation", {L"value"}),
      });
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedParameter>() {
  using mbom::test::PlayedParameter;
  static const DispatchTable table(IID_NULL, {PropertyGet<&PlayedParameter::Value>(1, L"Value")});
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedParameters>() {
  using mbom::test::PlayedParameters;
  static const DispatchTable table(IID_NULL, {
                                                 Method<&PlayedParameters::Append>(1, L"Append", {L"object"}),
                                                 PropertyGet<&PlayedParameters::Item>(2, L"Item", {L"index"}),
                                             });
  return table;
}
template <>
inline const DispatchTable& TableOf<mbom::test::PlayedCommand>() {
  using mbom::test::PlayedCommand;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyPut<&PlayedCommand::PutActiveConnection>(1, L"ActiveConnection", {L"value"}),
                    PropertyPut<&PlayedCommand::PutCommandType>(2, L"CommandType", {L"value"}),
                    PropertyPut<&PlayedCommand::PutCommandText>(3, L"CommandText", {L"value"}),
                    Method<&PlayedCommand::CreateParameter>(4, L"CreateParameter",
                                                            {L"name",
                                                             L"type",
                                                             L"direction",
                                                             {L"size", Variant::Missing()},
                                                             {L"value", Variant::Missing()}}),
                    PropertyGet<&PlayedCommand::Parameters>(5, L"Parameters"),
                    Method<&PlayedCommand::Execute>(6, L"Execute"),
                });
  return table;
}

} // namespace com
