// DataSource: how a connection descriptor becomes an open ADO connection.
#pragma once

#include <string>

#include "com/Object.h"
#include "standin/ado/ConnectionString.h"

namespace standin {

class DataSource {
 public:
  explicit DataSource(const std::wstring& descriptor) : descriptor_(descriptor) {}

  const std::wstring& descriptor() const { return descriptor_.text(); }

  // The current user's id; "0" without one.
  std::wstring UserId() const;

  // The open connection: inside a unit of work the unit's own for this data source, else a new one. The
  // providers "Embedded" and "ODBC" are this library's; any other one is real ADO's, with the descriptor less
  // the keys that only this system reads.
  com::Object Connect() const;

 private:
  std::wstring Identity() const;
  com::Object Open() const;

  ado::ConnectionString descriptor_;
};

} // namespace standin
