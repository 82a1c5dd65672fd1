// Connection: a late-bound ADO connection. Failures of ADO throw their COM error unchanged.
#pragma once

#include <chrono>

#include "com/Object.h"
#include "src/frame/Sql.h"
#include "src/frame/ado/Held.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

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
  // How long one command may take; 0 for as long as it wants.
  std::chrono::seconds CommandTimeout() const;
  const com::Object& object() const noexcept { return held_.object(); }
  Keeper* keeper() const noexcept { return held_.keeper(); }

 private:
  Held held_;
};

} // namespace mbom
