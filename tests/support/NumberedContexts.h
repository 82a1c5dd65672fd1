// The data-access library, played by a test that asks which data context gets which call.
//
// The contexts are numbered in the order in which they are handed out, and every call is noted with its
// context's number ("2 VoteComplete"). The connection is whatever the test gives.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "com/DispatchObject.h"
#include "tests/support/Collections.h"
#include "tests/support/Replacement.h"

namespace mbom::test {

struct NumberedContexts {
  static inline int32_t last = 0;
  static inline std::vector<std::wstring> calls;
  static inline std::function<com::Object()> connection;
  static inline std::wstring failing; // the operation that raises E_ABORT; none when empty

  static void Note(int32_t number, const std::wstring& operation, const std::wstring& argument = {}) {
    calls.push_back(std::to_wstring(number) + L" " + operation + argument);
    if (operation == failing) throw com::ComError(E_ABORT, L"QorvaneGlobal", L"played failure");
  }
  // The votes among the calls, in order.
  static std::vector<std::wstring> Votes() {
    std::vector<std::wstring> votes;
    for (const std::wstring& call : calls)
      if (call.find(L" Vote") != std::wstring::npos) votes.push_back(call);
    return votes;
  }
};

class NumberedCallerInfo {
 public:
  std::wstring CallerKey() const { return L"nobody"; }
};

class NumberedContext {
 public:
  explicit NumberedContext(int32_t number) : number_(number) {}

  void VoteAbort() const { NumberedContexts::Note(number_, L"VoteAbort"); }
  void VoteComplete() const { NumberedContexts::Note(number_, L"VoteComplete"); }
  com::Object GetCallerInfo() const {
    NumberedContexts::Note(number_, L"GetCallerInfo");
    return com::ToObject(com::Make<NumberedCallerInfo>());
  }
  com::Variant BindDsn(const std::wstring& sDsn) const {
    NumberedContexts::Note(number_, L"BindDsn", L" " + sDsn);
    return {};
  }
  com::Object GetConnection() const {
    NumberedContexts::Note(number_, L"GetConnection");
    return NumberedContexts::connection();
  }
  com::Object GetConnectionObject() const {
    NumberedContexts::Note(number_, L"GetConnectionObject");
    return NumberedContexts::connection();
  }

 private:
  int32_t number_;
};

class NumberedGlobal {
 public:
  com::Object GetDataContext() const {
    const int32_t number = NumberedContexts::last + 1;
    NumberedContexts::calls.push_back(L"GetDataContext " + std::to_wstring(number));
    if (NumberedContexts::failing == L"GetDataContext")
      throw com::ComError(E_ABORT, L"QorvaneGlobal", L"played failure");
    NumberedContexts::last = number;
    return com::ToObject(com::Make<NumberedContext>(number));
  }
};

// Runs `test` on a thread of its own, which has not met another library yet.
template <class Test>
void InNumberedContexts(std::function<com::Object()> connection, const Test& test) {
  NumberedContexts::last = 0;
  NumberedContexts::calls.clear();
  NumberedContexts::failing.clear();
  NumberedContexts::connection = std::move(connection);
  InApartment([&test] {
    const Replacement<NumberedGlobal> global(L"QorvaneGlobal.Global");
    test();
  });
  NumberedContexts::connection = nullptr;
}

} // namespace mbom::test

template <>
inline const com::DispatchTable& com::TableOf<mbom::test::NumberedCallerInfo>() {
  using mbom::test::NumberedCallerInfo;
  static const DispatchTable table(IID_NULL, {PropertyGet<&NumberedCallerInfo::CallerKey>(1, L"CallerKey")});
  return table;
}
template <>
inline const com::DispatchTable& com::TableOf<mbom::test::NumberedContext>() {
  using mbom::test::NumberedContext;
  static const DispatchTable table(
      IID_NULL, {
                    Method<&NumberedContext::VoteAbort>(1, L"VoteAbort"),
                    Method<&NumberedContext::VoteComplete>(2, L"VoteComplete"),
                    Method<&NumberedContext::GetCallerInfo>(3, L"GetCallerInfo"),
                    Method<&NumberedContext::BindDsn>(4, L"BindDsn", {L"sDsn"}),
                    Method<&NumberedContext::GetConnection>(5, L"GetConnection"),
                    Method<&NumberedContext::GetConnectionObject>(6, L"GetConnectionObject"),
                });
  return table;
}
template <>
inline const com::DispatchTable& com::TableOf<mbom::test::NumberedGlobal>() {
  using mbom::test::NumberedGlobal;
  static const DispatchTable table(IID_NULL, {Method<&NumberedGlobal::GetDataContext>(1, L"GetDataContext")});
  return table;
}
