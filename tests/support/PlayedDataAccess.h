// The data-access library, played by a test that wants its own connection behind it.
//
// A test calls InPlayedDataAccess, in which the component meets this library in place of the stand-in's: its
// votes are recorded, nothing is bound, and the connection is whatever the test gives.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "com/DispatchObject.h"
#include "tests/support/Collections.h"
#include "tests/support/Replacement.h"

namespace mbom::test {

struct PlayedDataAccess {
  static inline std::vector<std::wstring> calls; // the votes, and what the test's own classes add
  static inline std::function<com::Object()> connection;
};

class PlayedCallerInfo {
 public:
  std::wstring CallerKey() const { return L"nobody"; }
};

class PlayedContext {
 public:
  void VoteAbort() { PlayedDataAccess::calls.emplace_back(L"VoteAbort"); }
  void VoteComplete() { PlayedDataAccess::calls.emplace_back(L"VoteComplete"); }
  com::Object GetCallerInfo() { return com::ToObject(com::Make<PlayedCallerInfo>()); }
  com::Variant BindDsn(const std::wstring& /*sDsn*/) { return {}; }
  com::Object GetConnection() { return PlayedDataAccess::connection(); }
};

class PlayedGlobal {
 public:
  com::Object GetDataContext() { return com::ToObject(com::Make<PlayedContext>()); }
};

// Runs `test` on a thread of its own, which has not met another library yet.
template <class Test>
void InPlayedDataAccess(std::function<com::Object()> connection, const Test& test) {
  PlayedDataAccess::calls.clear();
  PlayedDataAccess::connection = std::move(connection);
  InApartment([&test] {
    const Replacement<PlayedGlobal> global(L"QorvaneGlobal.Global");
    test();
  });
}

} // namespace mbom::test

template <>
inline const com::DispatchTable& com::TableOf<mbom::test::PlayedCallerInfo>() {
  using mbom::test::PlayedCallerInfo;
  static const DispatchTable table(IID_NULL, {PropertyGet<&PlayedCallerInfo::CallerKey>(1, L"CallerKey")});
  return table;
}
template <>
inline const com::DispatchTable& com::TableOf<mbom::test::PlayedContext>() {
  using mbom::test::PlayedContext;
  static const DispatchTable table(IID_NULL, {
                                                 Method<&PlayedContext::VoteAbort>(1, L"VoteAbort"),
                                                 Method<&PlayedContext::VoteComplete>(2, L"VoteComplete"),
                                                 Method<&PlayedContext::GetCallerInfo>(3, L"GetCallerInfo"),
                                                 Method<&PlayedContext::BindDsn>(4, L"BindDsn", {L"sDsn"}),
                                                 Method<&PlayedContext::GetConnection>(5, L"GetConnection"),
                                             });
  return table;
}
template <>
inline const com::DispatchTable& com::TableOf<mbom::test::PlayedGlobal>() {
  using mbom::test::PlayedGlobal;
  static const DispatchTable table(IID_NULL, {Method<&PlayedGlobal::GetDataContext>(1, L"GetDataContext")});
  return table;
}
