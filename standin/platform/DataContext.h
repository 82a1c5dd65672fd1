// The data-access library (QorvaneGlobal): a global object that hands out data contexts, each of which binds
// a connection descriptor and votes on the unit of work.
#pragma once

#include <string>

#include "com/Object.h"

namespace standin {

class CallerInfo {
 public:
  explicit CallerInfo(std::wstring callerKey) : callerKey_(std::move(callerKey)) {}
  // The current user's id as text.
  std::wstring CallerKey() const { return callerKey_; }

 private:
  std::wstring callerKey_;
};

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

class GlobalObject {
 public:
  com::Object GetDataContext() const;
};

} // namespace standin
