#include "standin/platform/SystemProfile.h"

#include "com/DispatchObject.h"
#include "standin/host/ThreadState.h"
#include "standin/platform/DataSource.h"

namespace standin {
namespace {

// A text as a literal of a statement.
std::wstring Quoted(const std::wstring& text) {
  std::wstring result = L"'";
  for (const wchar_t c : text) result.append(c == L'\'' ? 2 : 1, c);
  return result + L"'";
}

} // namespace

using com::Object;
using com::Variant;

Variant SystemProfile::GetProfile(const std::wstring& dsn, const std::wstring& category,
                                  const std::wstring& key) const {
  const EventLog::Pause ownDoing(CurrentThread().events);
  const Object connection = DataSource(dsn).Connect();
  const Object setting = connection
                             .Call(L"Execute", L"Select FValue From t_SystemProfile Where FCategory = " +
                                                   Quoted(category) + L" And FKey = " + Quoted(key))
                             .AsObject();
  if (setting.Get(L"EOF").AsBool()) return Variant::Null();
  return setting.Get(L"Fields").AsObject().Get(L"Item", L"FValue").AsObject().Get(L"Value");
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::SystemProfile>() {
  using standin::SystemProfile;
  static const DispatchTable table(
      IID_NULL, {Method<&SystemProfile::GetProfile>(kNextId, L"GetProfile", {L"Dsn", L"Category", L"Key"})});
  return table;
}
