#include "bench/calls/Caller.h"

#include <stdexcept>
#include <utility>

namespace bench {

using com::Object;
using com::Variant;

Data::Data(std::wstring file) : file_(std::move(file)) {
  connection_->object().Open(Dsn(), Variant::Missing(), Variant::Missing(), -1);
}

std::wstring Data::Dsn() const {
  return L"Provider=Embedded;Data Source=" + file_ + L";User ID=16402;Language=en;SubID=SC";
}

void Data::Run(const std::wstring& statement) const {
  connection_->object().Run(statement, standin::ado::CommandType::Text).Take(true);
}

Object Create(const std::wstring& className, bool hosted) {
  const std::wstring progId = L"QorvaneMBomBill." + className;
  if (!hosted) return Object::Create(progId.c_str());
  return Object::Create(L"ErpStandIn.Host").Call(L"CreateObject", progId).AsObject();
}

std::vector<std::wstring> StatementsOf(const std::function<void()>& work) {
  const Object trace = Object::Create(L"ErpStandIn.Trace");
  trace.Call(L"Clear");
  trace.Call(L"Start");
  work();
  trace.Call(L"Stop");
  std::vector<std::wstring> statements;
  for (int32_t i = 1; i <= trace.Get(L"Count").AsLong(); ++i) {
    const std::wstring event = trace.Get(L"Item", i).AsText();
    const size_t tab = event.find(L'\t');
    const std::wstring kind = event.substr(0, tab);
    if (kind == L"Open" || kind == L"Execute") statements.push_back(event.substr(tab + 1));
    if (kind == L"Command")
      statements.emplace_back(
          L"DECLARE @FInterID int EXEC GetICMaxNum 'ICBOM', @FInterID OUTPUT SELECT @FInterID");
  }
  trace.Call(L"Clear");
  if (statements.empty()) throw std::runtime_error("a call sends nothing");
  return statements;
}

Caller::Caller(const Call& call, const Data& data, bool hosted)
    : call_(call), data_(data), object_(Create(call.className, hosted)) {
  // Only this one has no descriptor: it takes the connection of the call before it.
  if (call.method != L"GetMaxNum") arguments_.emplace_back(data.Dsn());
  arguments_.insert(arguments_.end(), call.arguments.begin(), call.arguments.end());
  if (call.method == L"GetMaxNum") object_.Call(L"GetRoutingData", data.Dsn(), true, 0, L"");
}

Variant Caller::Make() const {
  std::vector<Variant> arguments = arguments_;
  return object_.CallWith(call_.method.c_str(), arguments);
}

Variant Caller::MakeAnew() const {
  if (!call_.reset.empty()) data_.Run(call_.reset);
  return Make();
}

double Caller::Seconds() const {
  double all = 0;
  for (int i = 0; i < call_.pieces; ++i) {
    if (!call_.reset.empty()) data_.Run(call_.reset);
    all += SecondsOf([&] { return Make(); });
  }
  return all / call_.pieces;
}

std::vector<std::wstring> Caller::Statements() const {
  return StatementsOf([&] { MakeAnew(); });
}

namespace {

double SecondsOfStatements(const Call& call, const Data& data, const std::vector<std::wstring>& statements,
                           bool hosted) {
  double all = 0;
  for (int i = 0; i < call.pieces; ++i) {
    if (!call.reset.empty()) data.Run(call.reset);
    all += SecondsOf([&] {
      if (hosted) data.Begin();
      for (const std::wstring& statement : statements) data.Run(statement);
      if (hosted) data.Commit();
      return 0;
    });
  }
  return all / call.pieces;
}

} // namespace

void Compare(const Call& call, const Data& data, bool hosted) {
  const Caller caller(call, data, hosted);
  const std::vector<std::wstring> statements = caller.Statements();
  SideBySide(
      {call.name + (hosted ? ", hosted" : ", not hosted"), "its statements", call.aim}, kTurns, 1,
      [&] { return caller.Seconds(); }, [&] { return SecondsOfStatements(call, data, statements, hosted); });
}

} // namespace bench
