// The ADO objects as the component uses them. Each holds a reference to the real object, late-bound; a
// failure of ADO throws its COM error unchanged. Recordsets and connections of a frame are let go as Held
// says.
//
// A connection serves one server-side recordset at a time: what Execute returns is let go before the next
// statement of the connection is run.
#pragma once

#include <string>
#include <vector>

#include "com/Object.h"
#include "src/frame/Held.h"
#include "src/frame/Sql.h"

namespace mbom {

// A recordset, or none: a provider may hand back nothing.
class Recordset {
 public:
  Recordset() = default;
  explicit Recordset(com::Object object, Keeper* keeper = nullptr, OnLeave onLeave = OnLeave::Release)
      : held_(std::move(object), keeper, onLeave) {}

  explicit operator bool() const noexcept { return static_cast<bool>(held_); }
  const com::Object& object() const noexcept { return held_.object(); }

  bool Eof() const;
  bool Bof() const;
  // Goes to the first row, if there is any.
  void Rewind() const;
  void MoveNext() const;
  // The current row's value of the field; the name in any case.
  com::Variant operator[](const wchar_t* field) const;
  // The current row's value of the field at `index`, counted from 0.
  com::Variant operator[](int32_t index) const;
  std::vector<std::wstring> FieldNames() const;
  // Takes a client-side one off its connection; the rows stay.
  void Detach() const;
  // The next result of the batch, whose failure rises here; none behind the last one. This one is closed.
  Recordset Next() const;

 private:
  Held held_;
};

class Connection {
 public:
  explicit Connection(com::Object object, Keeper* keeper = nullptr) : held_(std::move(object), keeper) {}

  // Runs a statement and gives its first result; records affected are not asked for, the options are
  // unspecified (-1).
  Recordset Execute(const Sql& statement) const;
  // Executes statements that return no rows, and goes through all their results: the server reports the
  // failure of one behind a row count only there.
  void Run(const Sql& statements) const;
  // As Execute, the rows on the client's side, so that they are counted and can be detached.
  Recordset ExecuteClientSide(const Sql& statement) const;
  const com::Object& object() const noexcept { return held_.object(); }
  Keeper* keeper() const noexcept { return held_.keeper(); }

 private:
  Held held_;
};

// A recordset that the component opens itself: client-side, so that it is counted and can be detached. Made
// closed.
class ClientRecordset : public Recordset {
 public:
  enum class Cursor : int32_t { Unspecified = -1, ForwardOnly = 0, Static = 3 };
  enum class Lock : int32_t { Unspecified = -1, ReadOnly = 1 };

  explicit ClientRecordset(const Connection& connection, Cursor cursor = Cursor::Unspecified,
                           Lock lock = Lock::Unspecified, OnLeave onLeave = OnLeave::Release);

  // Opens it on the rows of a query; closes first what it was open on.
  void Open(const Sql& query) const;
  // Whether there is a result of rows, even an empty one. A statement that returns none leaves it closed.
  bool IsOpen() const;
  int32_t RecordCount() const;

 private:
  Connection connection_;
};

// The rows of a query, client-side and off the connection: what callers are given.
Recordset OpenDetached(const Connection& connection, const Sql& query);

// A parameterised command whose parameters are input texts.
class Command {
 public:
  Command(const Connection& connection, const std::wstring& text);
  void AppendText(const std::wstring& value, int32_t size) const;
  Recordset Execute() const;

 private:
  com::Object object_;
  Keeper* keeper_;
};

// A stored procedure with its parameters, in their order.
class StoredProcedure {
 public:
  // Without a connection: whoever executes it gives it one.
  explicit StoredProcedure(const std::wstring& name);
  StoredProcedure(const Connection& connection, const std::wstring& name);
  // A text of the database's code page (varchar).
  void AppendInput(const std::wstring& parameter, const std::wstring& value, int32_t size) const;
  void AppendInput(const std::wstring& parameter, int32_t value) const;
  // An int that the procedure sets.
  void AppendOutput(const std::wstring& parameter) const;
  // The int that the procedure returns.
  void AppendReturnValue(const std::wstring& parameter) const;
  // Executes it and goes through all its results: only then have the output parameters their values.
  void Execute() const;
  // Executes it on `connection` and gives its rows, client-side and off the connection.
  Recordset OpenDetached(const Connection& connection) const;
  // The value of the parameter at `index`, counted from 0.
  com::Variant Value(int32_t index) const;
  const com::Object& object() const noexcept { return object_; }

 private:
  void Append(const com::Variant& parameter) const;

  com::Object object_;
};

} // namespace mbom
