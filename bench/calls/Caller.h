// What whole calls are measured with: a database with an open connection, and a call of the component beside
// the statements that it sends.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/SideBySide.h"
#include "com/DispatchObject.h"
#include "com/Object.h"
#include "standin/ado/Connection.h"

namespace bench {

// The turns of a row that does not take long.
inline constexpr int kTurns = 11;

// A file, and an open connection to it that belongs to nobody else.
class Data {
 public:
  explicit Data(std::wstring file);

  std::wstring Dsn() const;
  const std::wstring& file() const { return file_; }
  void Run(const std::wstring& statement) const;
  void Begin() const { connection_->object().BeginTrans(); }
  void Commit() const { connection_->object().CommitTrans(); }

 private:
  std::wstring file_;
  com::Ptr<com::DispatchObject<standin::ado::Connection>> connection_ = com::Make<standin::ado::Connection>();
};

// A class of the component, "BomView", made by the host's context or without one.
com::Object Create(const std::wstring& className, bool hosted);

// The statements that `work` sends through the component, in order. Throws if there are none.
std::vector<std::wstring> StatementsOf(const std::function<void()>& work);

// A call of the component.
struct Call {
  std::string name;
  std::wstring className;
  std::wstring method;
  std::vector<com::Variant> arguments = {}; // after the descriptor
  std::wstring reset = {};                  // the statement that makes the call possible again; or empty
  int pieces = 20;                          // so many in a turn
  Aim aim = {.ratio = 1.3, .microsecondsAbove = 100};
};

// The component's side of a call. It refers to the call and the data that it is made with.
class Caller {
 public:
  Caller(const Call& call, const Data& data, bool hosted);

  com::Variant Make() const;
  // The same after the reset.
  com::Variant MakeAnew() const;
  // Of one call, on the average of a turn.
  double Seconds() const;
  std::vector<std::wstring> Statements() const;

 private:
  const Call& call_;
  const Data& data_;
  com::Object object_;
  std::vector<com::Variant> arguments_;
};

// A row: the call beside its statements on the data's open connection.
void Compare(const Call& call, const Data& data, bool hosted);

} // namespace bench
