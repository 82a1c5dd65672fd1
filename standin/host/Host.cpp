#include "standin/host/Host.h"

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "standin/host/HostedObject.h"

namespace standin {
namespace {

constexpr wchar_t kHostSource[] = L"ErpStandIn";

} // namespace

com::Object Host::CreateObject(const std::wstring& progId) const {
  return MakeHosted(com::Object::Create(progId.c_str()));
}

void Host::BeginUnit() {
  if (UnitOfWork::Current()) com::Raise(com::RuntimeError::InvalidCall, kHostSource);
  unit_ = std::make_unique<UnitOfWork>();
}

bool Host::IsAborting() const {
  return Begun().IsAborting();
}

void Host::EndUnit(bool complete) {
  Begun();
  const std::unique_ptr<UnitOfWork> unit = std::move(unit_);
  if (complete)
    unit->Finish();
  else
    unit->RollBack();
}

UnitOfWork& Host::Begun() const {
  if (!unit_) com::Raise(com::RuntimeError::InvalidCall, kHostSource);
  return *unit_;
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Host>() {
  using standin::Host;
  static const DispatchTable table(IID_NULL,
                                   {
                                       Method<&Host::CreateObject>(kNextId, L"CreateObject", {L"ProgID"}),
                                       Method<&Host::BeginUnit>(kNextId, L"BeginUnit"),
                                       PropertyGet<&Host::IsAborting>(kNextId, L"IsAborting"),
                                       Method<&Host::EndUnit>(kNextId, L"EndUnit", {L"Complete"}),
                                   });
  return table;
}
