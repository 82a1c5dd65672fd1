// Cursor: where a recordset stands in its rows. A recordset shares its cursor with the Field objects that it
// handed out.
#pragma once

#include <cstddef>
#include <memory>

#include "standin/ado/RowSet.h"
#include "standin/ado/Session.h"

namespace standin::ado {

struct Cursor {
  bool open() const { return rows && !(session && session->closed()); }
  bool bof() const { return position < 0 || rows->rowCount() == 0; }
  bool eof() const { return position >= static_cast<ptrdiff_t>(rows->rowCount()); }

  std::shared_ptr<const RowSet> rows;
  std::shared_ptr<Session> session; // null when disconnected
  ptrdiff_t position = 0;           // -1 before the first row, their number after the last
};

} // namespace standin::ado
