// ClientRecordset: a recordset that the component makes and opens itself, client-side, so that it is counted
// and can be detached. Made closed.
#pragma once

#include <cstdint>

#include "src/frame/Sql.h"
#include "src/frame/ado/Connection.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

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

 private:
  Connection connection_;
};

// The rows of a query, client-side and off the connection: what callers are given.
Recordset OpenDetached(const Connection& connection, const Sql& query);

} // namespace mbom
