// DataContext: binds a connection descriptor, hands out its connection, and votes on the unit of work.
#pragma once

#include <string>

#include "com/Object.h"

namespace standin {

class DataContext {
 public:
  void VoteAbort() const;
  void VoteComplete() const;
  com::Object GetCallerInfo() const;
  bool BindDsn(const std::wstring& descriptor); // always True
  // Both throw when nothing is bound.
  com::Object GetConnection() const;
  com::Object GetConnectionObject() const;

 private:
  com::Object Bound() const;

  std::wstring userId_ = L"0";
  com::Object connection_;
};

} // namespace standin
