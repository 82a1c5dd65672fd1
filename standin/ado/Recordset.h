// Recordset (ADODB.Recordset) on the results of a session. It is for reading: its lock type is kept, updates
// are refused.
//
// All rows are there when it opens. What a cursor may do still follows its kind, so that a client finds out
// here what a server would refuse. A forward-only one on the server is not counted and does not go back, it
// keeps its connection busy until it is read to the end, closed or released, and it meets the failure of its
// statement where the rows end. The others are complete when they open, and meet it then. Only a client-side
// one can be disconnected.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "com/Object.h"
#include "standin/ado/Constants.h"
#include "standin/ado/Cursor.h"

namespace standin::ado {

class Connection;

class Recordset {
 public:
  // A recordset on a batch's results: forward-only, or static where the connection's cursors are the
  // client's.
  static com::Object Make(const com::Variant& source, const Connection& connection, Results results);

  void Open(const com::Variant& source, const com::Variant& activeConnection, int32_t cursorType,
            int32_t lockType, int32_t options);
  void Close();
  void Requery(int32_t options);
  int32_t State() const { return cursor_->open() ? kStateOpen : kStateClosed; }

  com::Object GetFields() const;
  bool Bof() const;
  bool Eof() const;
  void MoveFirst();
  void MoveLast();
  void MoveNext();
  void MovePrevious();
  void Move(int32_t count, const com::Variant& start);
  int32_t RecordCount() const;
  int32_t AbsolutePosition() const;
  void PutAbsolutePosition(int32_t value);
  com::Object NextRecordset(com::Variant& recordsAffected);
  com::Object Clone(int32_t lockType) const;
  com::Variant GetRows(int32_t rows, const com::Variant& start, const com::Variant& fields);

  com::Variant Source() const;
  void PutSource(const com::Variant& value);
  com::Object ActiveConnection() const { return connection_; }
  void PutActiveConnection(const com::Variant& value);
  int32_t GetCursorLocation() const { return static_cast<int32_t>(EffectiveLocation()); }
  void PutCursorLocation(int32_t value);
  int32_t GetCursorType() const { return static_cast<int32_t>(cursorType_); }
  void PutCursorType(int32_t value);
  int32_t GetLockType() const { return static_cast<int32_t>(lockType_); }
  void PutLockType(int32_t value);
  com::Variant Filter() const;
  void PutFilter(const com::Variant& value);

 private:
  // Shows the first of the results.
  void ShowFirst(Results results, std::shared_ptr<Session> session);
  void Show(Result result, Results rest, std::shared_ptr<Session> session);
  // Every move ends here: it may have come to the end of the rows.
  void Arrive();
  void LetGoWhenRead();
  CursorLocation EffectiveLocation() const;
  // Whether its rows come from the server one after another while it is read.
  bool Streams() const;
  void RequireOpen() const;
  void RequireClosed() const;
  bool ForwardOnly() const { return cursorType_ == CursorType::ForwardOnly; }
  ptrdiff_t Last() const { return static_cast<ptrdiff_t>(cursor_->rows->rowCount()) - 1; }

  std::shared_ptr<Cursor> cursor_ = std::make_shared<Cursor>();
  Results rest_;  // what follows the result that is shown
  ErrorList cut_; // why the rows end where they do
  com::Object connection_;
  com::Variant source_;
  std::optional<CursorLocation> cursorLocation_; // else the connection's
  CursorType cursorType_ = CursorType::ForwardOnly;
  LockType lockType_ = LockType::ReadOnly;
  int32_t options_ = kUnspecified;
};

// Throws InvalidArgument for a number that is no cursor location.
CursorLocation CheckedCursorLocation(int32_t value, const wchar_t* source);

} // namespace standin::ado
