// A provider that hands back nothing where a recordset is expected: played by a data-access library of the
// test's own, which takes the real one's place on a thread of its own.
#include <gtest/gtest.h>
#include <objbase.h>

#include <array>
#include <thread>

#include "com/ClassObject.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

thread_local std::vector<std::wstring> t_calls;

class MuteConnection {
 public:
  Object Execute(const std::wstring& text, const Variant& /*affected*/, int32_t /*options*/) {
    t_calls.push_back(text);
    return Object();
  }
};

class MuteCallerInfo {
 public:
  std::wstring CallerKey() const { return L"nobody"; }
};

class MuteContext {
 public:
  void VoteAbort() { t_calls.emplace_back(L"VoteAbort"); }
  void VoteComplete() { t_calls.emplace_back(L"VoteComplete"); }
  Object GetCallerInfo() { return com::ToObject(com::Make<MuteCallerInfo>()); }
  Variant BindDsn(const std::wstring& /*sDsn*/) { return {}; }
  Object GetConnection() { return com::ToObject(com::Make<MuteConnection>()); }
};

class MuteGlobal {
 public:
  Object GetDataContext() { return com::ToObject(com::Make<MuteContext>()); }
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<MuteConnection>() {
  static const DispatchTable table(
      IID_NULL, {Method<&MuteConnection::Execute>(
                    1, L"Execute", {L"text", {L"affected", Variant::Missing()}, {L"options", -1}})});
  return table;
}
template <>
const DispatchTable& TableOf<MuteCallerInfo>() {
  static const DispatchTable table(IID_NULL, {PropertyGet<&MuteCallerInfo::CallerKey>(1, L"CallerKey")});
  return table;
}
template <>
const DispatchTable& TableOf<MuteContext>() {
  static const DispatchTable table(IID_NULL, {
                                                 Method<&MuteContext::VoteAbort>(1, L"VoteAbort"),
                                                 Method<&MuteContext::VoteComplete>(2, L"VoteComplete"),
                                                 Method<&MuteContext::GetCallerInfo>(3, L"GetCallerInfo"),
                                                 Method<&MuteContext::BindDsn>(4, L"BindDsn", {L"sDsn"}),
                                                 Method<&MuteContext::GetConnection>(5, L"GetConnection"),
                                             });
  return table;
}
template <>
const DispatchTable& TableOf<MuteGlobal>() {
  static const DispatchTable table(IID_NULL, {Method<&MuteGlobal::GetDataContext>(1, L"GetDataContext")});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

// Registers MuteGlobal in place of the data-access library's global object, for this apartment.
class Replacement {
 public:
  Replacement() {
    CLSID classId;
    com::Check(CLSIDFromProgID(L"QorvaneGlobal.Global", &classId));
    entries_ = {
        com::ClassEntry{classId, L"QorvaneGlobal.Global", L"", &com::CreateDispatchObject<MuteGlobal>}};
    com::Ptr<IUnknown> factory;
    com::Check(com::GetClassObject(entries_, classId, IID_IUnknown, factory.OutVoid()));
    com::Check(
        CoRegisterClassObject(classId, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_));
  }
  ~Replacement() { CoRevokeClassObject(cookie_); }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

 private:
  std::array<com::ClassEntry, 1> entries_{};
  DWORD cookie_ = 0;
};

TEST(NoRecordset, MakesEndSaveFailWithoutAMessage) {
  std::thread([] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
      const Replacement replacement;
      Variant message(L"as it came");
      const Object save = MakeVector({MakeDictionary({{L"FInterID", 1}})});
      EXPECT_FALSE(Unhosted(L"BomUpdate").Call(L"EndSave", L"", save, Variant::Reference(message)).AsBool());
      EXPECT_EQ(message, Variant(L"as it came"));
      EXPECT_EQ(t_calls,
                (std::vector<std::wstring>{L"VoteAbort", L"select FEcnInterId from IcBom where FInterId = 1",
                                           L"VoteAbort"}));
    }
    CoUninitialize();
  }).join();
}

} // namespace
} // namespace mbom::test
