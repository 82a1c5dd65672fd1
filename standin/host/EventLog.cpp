#include "standin/host/EventLog.h"

#include <algorithm>
#include <array>

#include "com/ComError.h"
#include "com/Text.h"
#include "standin/host/ThreadState.h"

namespace standin {
namespace {

constexpr wchar_t kSource[] = L"ErpStandIn";

// In the order of EventKind.
constexpr std::array kKindNames{
    L"GetDataContext",     L"GetCallerInfo",       L"BindDsn",  L"VoteAbort", L"VoteComplete",
    L"GetConnection",      L"GetConnectionObject", L"Execute",  L"Open",      L"Command",
    L"CreateServerObject", L"LoadString",          L"LogStart", L"LogEnd",
};

} // namespace

void EventLog::Arm(std::wstring_view kind, int32_t nth, HRESULT hr, const std::wstring& description) {
  const auto name = std::ranges::find_if(
      kKindNames, [&](const wchar_t* candidate) { return com::EqualsNoCase(candidate, kind); });
  if (name == kKindNames.end() || nth < 1 || SUCCEEDED(hr))
    com::Raise(com::RuntimeError::InvalidCall, kSource);
  faults_.push_back({static_cast<EventKind>(name - kKindNames.begin()), nth, hr, description});
}

void EventLog::Record(EventKind kind, std::optional<std::wstring_view> detail) {
  if (pauses_ > 0) return;
  if (recording_) {
    std::wstring event = kKindNames[static_cast<size_t>(kind)];
    if (detail) {
      event += L'\t';
      event += *detail;
    }
    events_.push_back(std::move(event));
  }
  for (Fault& fault : faults_)
    if (fault.kind == kind) --fault.left;
  const auto due = std::ranges::find(faults_, 0, &Fault::left);
  if (due == faults_.end()) return;
  const Fault fault = std::move(*due);
  std::erase_if(faults_, [](const Fault& armed) { return armed.left == 0; });
  throw com::ComError(fault.hr, kSource, fault.description);
}

void Event(EventKind kind, std::optional<std::wstring_view> detail) {
  CurrentThread().events.Record(kind, detail);
}

} // namespace standin
