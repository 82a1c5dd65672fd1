#include "standin/platform/DataContext.h"

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/Passwords.h"
#include "standin/host/EventLog.h"
#include "standin/host/UnitOfWork.h"
#include "standin/platform/CallerInfo.h"
#include "standin/platform/DataSource.h"

namespace standin {

using com::Object;

namespace {

// Outside of a unit of work there is nothing to decide.
void Vote(bool complete) {
  if (UnitOfWork* unit = UnitOfWork::Current()) unit->Vote(complete);
}

} // namespace

void DataContext::VoteAbort() const {
  Event(EventKind::VoteAbort);
  Vote(false);
}

void DataContext::VoteComplete() const {
  Event(EventKind::VoteComplete);
  Vote(true);
}

Object DataContext::GetCallerInfo() const {
  Event(EventKind::GetCallerInfo);
  return com::ToObject(com::Make<CallerInfo>(userId_));
}

bool DataContext::BindDsn(const std::wstring& descriptor) {
  Event(EventKind::BindDsn, com::Masked(descriptor));
  const DataSource source(descriptor);
  connection_ = source.Connect();
  userId_ = source.UserId();
  return true;
}

Object DataContext::Bound() const {
  if (!connection_)
    throw com::ComError(E_UNEXPECTED, L"QorvaneGlobal",
                        L"No connection descriptor is bound to this context.");
  return connection_;
}

Object DataContext::GetConnection() const {
  Event(EventKind::GetConnection);
  return Bound();
}

Object DataContext::GetConnectionObject() const {
  Event(EventKind::GetConnectionObject);
  return Bound();
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::DataContext>() {
  using standin::DataContext;
  static const DispatchTable table(
      IID_NULL, {
                    Method<&DataContext::VoteAbort>(kNextId, L"VoteAbort"),
                    Method<&DataContext::VoteComplete>(kNextId, L"VoteComplete"),
                    Method<&DataContext::GetCallerInfo>(kNextId, L"GetCallerInfo"),
                    Method<&DataContext::BindDsn>(kNextId, L"BindDsn", {L"Dsn"}),
                    Method<&DataContext::GetConnection>(kNextId, L"GetConnection"),
                    Method<&DataContext::GetConnectionObject>(kNextId, L"GetConnectionObject"),
                });
  return table;
}
