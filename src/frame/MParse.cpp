#include "src/frame/MParse.h"

#include <unordered_map>

#include "com/ComError.h"
#include "com/Text.h"
#include "src/frame/Convert.h"

namespace mbom {
namespace {

constexpr wchar_t kSource[] = L"QorvaneMBomBill";

// Keys in lower case. Never released, like the rest of the thread's state.
using Values = std::unordered_map<std::wstring, std::wstring>;
thread_local Values* t_values = nullptr;

// The part of `rest` before the first separator, or all of it; `rest` keeps what follows.
std::wstring SplitFirst(std::wstring& rest, wchar_t separator) {
  const size_t at = rest.find(separator);
  std::wstring first = rest.substr(0, at);
  rest = at == std::wstring::npos ? std::wstring() : rest.substr(at + 1);
  return first;
}

std::wstring NextDsnKey(std::wstring& rest) {
  return Trim(SplitFirst(rest, L'='));
}

std::wstring NextDsnValue(std::wstring& rest) {
  rest = Trim(rest);
  if (!rest.starts_with(L'{')) return Trim(SplitFirst(rest, L';'));
  rest.erase(0, 1);
  std::wstring value = SplitFirst(rest, L'}');
  SplitFirst(rest, L';');
  return Trim(value);
}

} // namespace

bool ParseDsn(const std::wstring& sDsn) {
  if (!t_values) t_values = new Values;
  t_values->clear();
  std::wstring rest = sDsn;
  for (;;) {
    const std::wstring key = NextDsnKey(rest);
    const std::wstring value = NextDsnValue(rest);
    if (key.empty()) return true;
    if (!t_values->emplace(com::Lower(key), value).second) com::Raise(com::RuntimeError::KeyExists, kSource);
  }
}

std::wstring GetParsedValue(const std::wstring& sKey) {
  if (t_values) {
    if (const auto found = t_values->find(com::Lower(sKey)); found != t_values->end()) return found->second;
  }
  com::Raise(com::RuntimeError::InvalidCall, kSource);
}

} // namespace mbom
