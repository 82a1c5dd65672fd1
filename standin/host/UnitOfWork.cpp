#include "standin/host/UnitOfWork.h"

#include <algorithm>

#include "com/ComError.h"
#include "standin/host/ThreadState.h"

namespace standin {

using com::Object;

UnitOfWork::UnitOfWork() : outermost_(CurrentThread().unit == nullptr) {
  if (outermost_) CurrentThread().unit = this;
}

UnitOfWork::~UnitOfWork() {
  if (!outermost_) return;
  CurrentThread().unit = nullptr;
  RollBack();
}

UnitOfWork* UnitOfWork::Current() {
  return CurrentThread().unit;
}

Object UnitOfWork::Enlist(const std::wstring& dataSource, const std::function<Object()>& open) {
  const auto known = std::ranges::find(enlisted_, dataSource, &Enlisted::dataSource);
  if (known != enlisted_.end()) return known->connection;
  Object connection = open();
  connection.Call(L"BeginTrans");
  enlisted_.push_back({dataSource, connection});
  return connection;
}

void UnitOfWork::Finish() {
  if (!outermost_) return;
  if (!complete_) return RollBack();
  try {
    while (!enlisted_.empty()) {
      // A connection whose commit fails stays, to be rolled back with the rest.
      enlisted_.front().connection.Call(L"CommitTrans");
      enlisted_.erase(enlisted_.begin());
    }
  } catch (...) {
    RollBack();
    throw;
  }
}

void UnitOfWork::RollBack() noexcept {
  for (const Enlisted& enlisted : enlisted_) {
    try {
      enlisted.connection.Call(L"RollbackTrans");
    } catch (const com::ComError&) {
      // The transaction is gone already: an error or the batch itself rolled it back.
    }
  }
  enlisted_.clear();
}

} // namespace standin
