#include "tests/standin/Worker.h"

#include <array>

#include "com/ClassObject.h"
#include "com/Registration.h"

namespace standin::test {
namespace {

constexpr wchar_t kProgId[] = L"StandInTests.Worker";
constexpr CLSID kWorkerId = {0x5c6f7d7e, 0x8a30, 0x4f1c, {0x9b, 0x02, 0x6a, 0x0f, 0x3f, 0x5d, 0x21, 0x77}};

std::span<const com::ClassEntry> WorkerClass() {
  static const std::array classes{
      com::ClassEntry{kWorkerId, kProgId, L"Test class", &com::CreateDispatchObject<Worker>}};
  return classes;
}

} // namespace

int32_t Worker::Run(const std::wstring& dsn, const std::wstring& steps) {
  std::wstring descriptor = dsn;
  int32_t done = 0;
  size_t start = 0;
  const auto next = [&] {
    const size_t end = std::min(steps.find(L'|', start), steps.size());
    std::wstring step = steps.substr(start, end - start);
    start = end + 1;
    return step;
  };
  for (; start <= steps.size(); ++done) {
    const std::wstring step = next();
    if (step == L"bind") {
      context_ = New(L"QorvaneGlobal.Global").Call(L"GetDataContext").AsObject();
      context_.Call(L"BindDsn", descriptor);
      connection_ = context_.Call(L"GetConnection").AsObject();
    } else if (step == L"with") {
      descriptor = next();
    } else if (step == L"complete") {
      context_.Call(L"VoteComplete");
    } else if (step == L"abort") {
      context_.Call(L"VoteAbort");
    } else if (step == L"raise") {
      com::RaiseRuntimeError(1000, L"Worker", L"as told");
    } else if (step == L"hold") {
      recordset_ = connection_.Call(L"Execute", next()).AsObject();
    } else if (step == L"let go") {
      recordset_ = Object();
    } else if (step == L"nest") {
      HostedWorker().Call(L"Run", dsn, steps.substr(std::min(start, steps.size())));
      return done + 1;
    } else {
      connection_.Call(L"Execute", step);
    }
  }
  return done;
}

Variant Worker::ReadBack(const std::wstring& dsn, const std::wstring& statement, const std::wstring& category,
                         const std::wstring& key) {
  Run(dsn, L"bind|" + statement);
  return New(L"QorvaneWoskBase.SystemProfile").Call(L"GetProfile", dsn, category, key);
}

namespace {

// Makes Worker known under its ProgID in this thread's apartment.
void RegisterWorker() {
  thread_local bool registered = false;
  if (registered) return;
  com::Check(com::Register({com::ModulePath(), WorkerClass(), false}));
  com::Ptr<IUnknown> classObject;
  com::Check(com::GetClassObject(WorkerClass(), kWorkerId, IID_IUnknown, classObject.OutVoid()));
  DWORD cookie = 0;
  com::Check(
      CoRegisterClassObject(kWorkerId, classObject.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie));
  registered = true;
}

} // namespace

Object NewWorker() {
  RegisterWorker();
  return New(kProgId);
}

Object HostedWorker() {
  RegisterWorker();
  return New(L"ErpStandIn.Host").Call(L"CreateObject", kProgId).AsObject();
}

} // namespace standin::test

template <>
const com::DispatchTable& com::TableOf<standin::test::Worker>() {
  using standin::test::Worker;
  static const DispatchTable table(
      IID_NULL, {Method<&Worker::Run>(kNextId, L"Run", {L"Dsn", L"Steps"}),
                 Method<&Worker::ReadBack>(kNextId, L"ReadBack", {L"Dsn", L"Statement", L"Category", L"Key"}),
                 PropertyGet<&Worker::Seven>(kNextId, L"Seven")});
  return table;
}
