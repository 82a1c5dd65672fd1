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
  context_ = NewDataContext();
  context_.Call(context::kBindDsn, sDsn);
  callerInfo_ = CallerInfoOf(context_);
  return false;
}

Connection Frame::GetConnection() const {
  return Connection(context_.Call(context::kGetConnection).AsObject());
}

Connection Frame::GetConnectionObject() const {
  return Connection(context_.Call(context::kGetConnectionObject).AsObject());
}

void Frame::VoteAbort() const {
  context_.Call(context::kVoteAbort);
}

void Frame::VoteComplete() const {
  context_.Call(context::kVoteComplete);
}

} // namespace mbom
