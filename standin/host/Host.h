// Host (ErpStandIn.Host): creates objects as a transactional component host does. Every call into one is a
// unit of work, unless the client has begun one that holds many calls.
#pragma once

#include <memory>
#include <string>

#include "com/Object.h"
#include "standin/host/UnitOfWork.h"

namespace standin {

class Host {
 public:
  com::Object CreateObject(const std::wstring& progId) const;

  // From now on the thread's calls into hosted objects join one unit of work, until EndUnit. Run-time error 5
  // where one is open already.
  void BeginUnit();
  // Whether the last vote in that unit was to abort.
  bool IsAborting() const;
  // Ends it: commits if `complete` is true and the last vote was not to abort, else rolls back. Run-time
  // error 5 where none was begun.
  void EndUnit(bool complete);

 private:
  UnitOfWork& Begun() const;

  std::unique_ptr<UnitOfWork> unit_;
};

} // namespace standin
