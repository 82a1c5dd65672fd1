// Worker: a class of the kind that the host makes objects of. Its one method does what it is told.
#pragma once

#include <string>

#include "tests/standin/Support.h"

namespace standin::test {

class Worker {
 public:
  // The steps, separated by "|":
  //   bind        a new context, bound to the descriptor; its connection
  //   complete, abort  the current context's vote
  //   raise       run-time error 1000
  //   with        the next step is another descriptor to bind
  //   hold        the next step is a statement whose recordset is kept
  //   let go      the kept recordset is released
  //   nest        the rest is done by another hosted Worker
  // and anything else is a statement for the connection. Returns the number of steps done here.
  int32_t Run(const std::wstring& dsn, const std::wstring& steps);
  // Runs the statement and then reads the setting, all in this call.
  Variant ReadBack(const std::wstring& dsn, const std::wstring& statement, const std::wstring& category,
                   const std::wstring& key);
  int32_t Seven() const { return 7; }

 private:
  Object context_;
  Object connection_;
  Object recordset_; // kept by "hold"
};

Object NewWorker();
// Made by the host.
Object HostedWorker();

} // namespace standin::test
