// What the tests of all classes say about the component's outside calls.
#pragma once

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "com/Text.h"

namespace mbom::test {

// The nth event of a kind.
struct OutsideCall {
  const wchar_t* kind;
  int32_t nth;
};

inline void PrintTo(const OutsideCall& call, std::ostream* out) {
  *out << com::ToUtf8(call.kind) << " #" << call.nth;
}

// The outside calls of a set-up on the descriptor `dsn`, after `before` and in front of `after`.
inline std::vector<std::wstring> AroundSetUp(std::initializer_list<std::wstring> before,
                                             const std::wstring& dsn,
                                             const std::vector<std::wstring>& after) {
  std::vector<std::wstring> all(before);
  for (const std::wstring& event : {std::wstring(L"GetDataContext"), L"BindDsn\t" + dsn,
                                    std::wstring(L"GetCallerInfo"), std::wstring(L"GetConnection")})
    all.push_back(event);
  all.insert(all.end(), after.begin(), after.end());
  return all;
}

// The same for a method that votes to abort first.
inline std::vector<std::wstring> AfterSetUp(const std::wstring& dsn, const std::vector<std::wstring>& after) {
  return AroundSetUp({L"VoteAbort"}, dsn, after);
}

// The votes of a method that votes to abort first and then fails.
inline const std::vector<std::wstring> kAbortedTwice{L"VoteAbort", L"VoteAbort"};

// An outside call of a method that is to fail.
struct FailingCall {
  const wchar_t* method;
  OutsideCall call;
};

inline void PrintTo(const FailingCall& failing, std::ostream* out) {
  *out << com::ToUtf8(failing.method) << ", ";
  PrintTo(failing.call, out);
}

} // namespace mbom::test
