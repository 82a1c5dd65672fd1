#include "src/frame/Frame.h"

#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {

using com::Object;
namespace context = outside::context;

namespace {

Object NewDataContext() {
  return GlobalObject().Call(outside::global::kGetDataContext).AsObject();
}

Object CallerInfoOf(const Object& dataContext) {
  return dataContext.Call(context::kGetCallerInfo).AsObject();
}

} // namespace

Frame::Frame() : context_(NewDataContext()) {
  callerInfo_ = CallerInfoOf(context_);
}

bool Frame::OpenDataContext(const std::wstring& sDsn) {
  const LoggedStep logged(L"set-up", sDsn);
  context_ = NewDataContext();
  context_.Call(context::kBindDsn, sDsn);
  callerInfo_ = CallerInfoOf(context_);
  return false;
}

Connection Frame::GetConnection() const {
  return Connection(context_.Call(context::kGetConnection).AsObject(), &keeper_);
}

Connection Frame::GetConnectionObject() const {
  return Connection(context_.Call(context::kGetConnectionObject).AsObject(), &keeper_);
}

void Frame::VoteAbort() const {
  const LoggedStep logged(L"vote", L"abort");
  context_.Call(context::kVoteAbort);
}

void Frame::VoteComplete() const {
  const LoggedStep logged(L"vote", L"complete");
  context_.Call(context::kVoteComplete);
}

void Frame::AbortFailed() noexcept {
  try {
    VoteAbort();
  } catch (const std::exception& failure) {
    LogTrapped(failure);
  }
  keeper_.LetGo();
}

} // namespace mbom
