// UnitOfWork: one call into a hosted object, with the transactions of every data source that is bound on the
// thread meanwhile.
//
// A unit that begins inside another joins it: only the outermost one ends the transactions. The last vote of
// the thread decides: complete or none commits, abort rolls back. A call that raises an error rolls back,
// whatever was voted.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "com/Object.h"

namespace standin {

class UnitOfWork {
 public:
  UnitOfWork();
  // Rolls back what Finish did not end.
  ~UnitOfWork();
  UnitOfWork(const UnitOfWork&) = delete;
  UnitOfWork& operator=(const UnitOfWork&) = delete;

  // The calling thread's outermost unit; null outside of any.
  static UnitOfWork* Current();

  void Vote(bool complete) { complete_ = complete; }
  bool IsAborting() const { return !complete_; }
  // The open ADO connection that the unit has for the data source, inside its transaction; `open` makes it
  // when it is the unit's first.
  com::Object Enlist(const std::wstring& dataSource, const std::function<com::Object()>& open);

  // Ends the unit. Throws when a commit fails; what is not committed by then is rolled back. Several data
  // sources commit one after another, not as one.
  void Finish();
  // Ends the unit without regard to the votes.
  void RollBack() noexcept;

 private:
  struct Enlisted {
    std::wstring dataSource;
    com::Object connection;
  };

  bool outermost_;
  bool complete_ = true;
  std::vector<Enlisted> enlisted_;
};

} // namespace standin
