// Recordset: a late-bound ADO recordset, or none: a provider may hand back nothing. Failures of ADO throw
// their COM error unchanged.
//
// It is let go where its holder is left, as Held says. What Connection::Execute returns is let go before the
// next statement of the connection is run: a connection serves one server-side recordset at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "com/Object.h"
#include "src/frame/ado/Held.h"

namespace mbom {

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
  // How many rows there are; negative when the provider does not know before it has read them.
  int32_t RecordCount() const;
  // Takes a client-side one off its connection; the rows stay.
  void Detach() const;
  // The next result of the batch, whose failure rises here; none behind the last one. This one is closed.
  Recordset Next() const;

 private:
  Held held_;
};

} // namespace mbom
