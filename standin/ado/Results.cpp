#include "standin/ado/Results.h"

#include <utility>

#include "standin/ado/Session.h"

namespace standin::ado {

Reading::Reading(std::shared_ptr<Session> session) : session_(std::move(session)) {
  session_->AddReader();
}

Reading::~Reading() {
  session_->RemoveReader();
}

Results::Results(std::shared_ptr<Session> session, std::deque<Result> queue)
    : session_(std::move(session)), queue_(std::move(queue)) {}

int64_t Results::NextCount() const {
  return queue_.empty() ? -1 : queue_.front().count;
}

Result Results::Take(bool allRows) {
  if (queue_.empty()) return {};
  Result result = std::move(queue_.front());
  queue_.pop_front();
  if (result.failure.empty() || (result.rows && !allRows)) return result;
  const std::shared_ptr<Session> session = session_;
  if (queue_.empty()) *this = Results();
  session->Fail(std::move(result.failure));
}

void Results::TakeAll() {
  while (!queue_.empty()) Take(true);
}

void Results::KeepBusy() {
  if (session_ && !reading_) reading_ = std::make_unique<Reading>(session_);
}

} // namespace standin::ado
