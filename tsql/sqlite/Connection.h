// A connection to an SQLite database.
#pragma once

#include "tsql/sqlite/PreparedStatement.h"

namespace tsql {

class Connection {
 public:
  // `uri` is a path or an URI, `flags` are SQLITE_OPEN_ flags.
  Connection(const std::string& uri, int flags);
  sqlite3* Handle() const { return handle_.get(); }
  PreparedStatement Prepare(const std::string& sql) const;
  // Any number of statements without parameters.
  void Run(const char* sql) const;
  void Run(const std::string& sql) const { Run(sql.c_str()); }

 private:
  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::unique_ptr<sqlite3, Closer> handle_;
};

} // namespace tsql
