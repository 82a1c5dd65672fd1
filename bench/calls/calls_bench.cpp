// Benchmarks of whole calls: each beside the statements that it sends, run on a connection that is open, in a
// file. Short calls on the factory's data, in a host and without one; calls for a BOM of 1,800 lines; and
// calls for one BOM among 1,000 and among 470,000.
//
// calls_bench FACTORY [FOLDER]: FACTORY is the factory's database, of which a copy is used; the databases are
// made in FOLDER, by default in build/bench.
#include <objbase.h>

#include <cstdio>
#include <functional>
#include <vector>

#include "bench/SideBySide.h"
#include "bench/view/BrowserData.h"
#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/Text.h"
#include "standin/ado/Connection.h"

namespace bench {
namespace {

using com::Object;
using com::Variant;

constexpr int kTurns = 11;

// A file, and an open connection to it that belongs to nobody else.
class Data {
 public:
  explicit Data(std::wstring file) : file_(std::move(file)) {
    connection_->object().Open(Dsn(), Variant::Missing(), Variant::Missing(), -1);
  }

  std::wstring Dsn() const {
    return L"Provider=Embedded;Data Source=" + file_ + L";User ID=16402;Language=en;SubID=SC";
  }
  void Run(const std::wstring& statement) const {
    connection_->object().Run(statement, standin::ado::CommandType::Text).Take(true);
  }
  void Begin() const { connection_->object().BeginTrans(); }
  void Commit() const { connection_->object().CommitTrans(); }

 private:
  std::wstring file_;
  com::Ptr<com::DispatchObject<standin::ado::Connection>> connection_ = com::Make<standin::ado::Connection>();
};

// A call of the component.
struct Call {
  std::string name;
  std::wstring className; // "BomView"
  std::wstring method;
  std::vector<Variant> arguments = {}; // after the descriptor
  std::wstring reset = {};             // the statement that makes the call possible again; or empty
  int pieces = 20;                     // so many in a turn
  Aim aim = {.ratio = 1.3, .microsecondsAbove = 100};
};

Object Create(const std::wstring& className, bool hosted) {
  const std::wstring progId = L"QorvaneMBomBill." + className;
  if (!hosted) return Object::Create(progId.c_str());
  return Object::Create(L"ErpStandIn.Host").Call(L"CreateObject", progId).AsObject();
}

// The component's side of a call.
class Caller {
 public:
  Caller(const Call& call, const Data& data, bool hosted)
      : call_(call), data_(data), object_(Create(call.className, hosted)) {
    // Only this one has no descriptor: it takes the connection of the call before it.
    if (call.method != L"GetMaxNum") arguments_.emplace_back(data.Dsn());
    arguments_.insert(arguments_.end(), call.arguments.begin(), call.arguments.end());
    if (call.method == L"GetMaxNum") object_.Call(L"GetRoutingData", data.Dsn(), true, 0, L"");
  }
  Variant Make() const {
    std::vector<Variant> arguments = arguments_;
    return object_.CallWith(call_.method.c_str(), arguments);
  }
  // Of one call, on the average of a turn.
  double Seconds() const {
    double all = 0;
    for (int i = 0; i < call_.pieces; ++i) {
      if (!call_.reset.empty()) data_.Run(call_.reset);
      all += SecondsOf([&] { return Make(); });
    }
    return all / call_.pieces;
  }
  // What the call sends, in order.
  std::vector<std::wstring> Statements() const {
    if (!call_.reset.empty()) data_.Run(call_.reset);
    const Object trace = Object::Create(L"ErpStandIn.Trace");
    trace.Call(L"Clear");
    trace.Call(L"Start");
    Make();
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
    if (statements.empty()) throw std::runtime_error(call_.name + " sends nothing");
    return statements;
  }

 private:
  const Call& call_;
  const Data& data_;
  Object object_;
  std::vector<Variant> arguments_;
};

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

void Compare(const Call& call, const Data& data, bool hosted) {
  const Caller caller(call, data, hosted);
  const std::vector<std::wstring> statements = caller.Statements();
  SideBySide(
      {call.name + (hosted ? ", hosted" : ", not hosted"), "its statements", call.aim}, kTurns, 1,
      [&] { return caller.Seconds(); }, [&] { return SecondsOfStatements(call, data, statements, hosted); });
}

void ShortCalls(const std::wstring& factory, const std::wstring& folder) {
  const std::wstring file = folder + L"\\calls.db";
  for (const wchar_t* suffix : {L"-wal", L"-shm"}) DeleteFileW((file + suffix).c_str());
  if (!CopyFileW(factory.c_str(), file.c_str(), FALSE))
    throw std::runtime_error("the factory's database cannot be copied");
  const Data data(file);
  const Object header = Object::Create(L"ruvo10.Dictionary");
  header.Put(L"Value", L"FInterID", 1005);
  header.Put(L"Value", L"FTransType", 50);
  const Object save = Object::Create(L"ruvo10.Vector");
  save.Call(L"Add", header);
  const std::vector<Call> calls{
      {"ExistsEcnBill", L"BomView", L"ExistsEcnBill", {}},
      {"GetBomTitle", L"BomView", L"GetBomTitle", {}},
      {"EndSave", L"BomUpdate", L"EndSave", {save, L""}},
      {"BomCheck",
       L"CBomCheck",
       L"BomCheck",
       {1003, L"BOM000003", 16402, L""},
       L"UPDATE ICBOM SET FStatus = 0, FCheckerID = NULL WHERE FInterID = 1003"},
      {"GetMaxNum", L"CBomFunction", L"GetMaxNum", {L"ICBOM"}},
  };
  for (const Call& call : calls)
    for (const bool hosted : {true, false}) Compare(call, data, hosted);
}

std::vector<Call> CallsOfOneBom(int32_t bom, const std::string& suffix, const Aim& aim) {
  const std::wstring id = std::to_wstring(bom);
  const Object source = Object::Create(L"ruvo10.Dictionary");
  source.Put(L"Value", L"FInterID", bom);
  source.Put(L"Value", L"FBOMNumber", L"COPY");
  source.Put(L"Value", L"FParentID", 1);
  source.Put(L"Value", L"FCheckID", 16401);
  source.Put(L"Value", L"FOperatorID", 16401);
  const std::wstring noCopy = L"DELETE FROM ICBOMChild WHERE FInterID > " + id +
                              L" DELETE FROM ICBOM WHERE FInterID > " + id +
                              L" DELETE FROM ICMaxNum WHERE FTableName = 'ICBOM' INSERT INTO ICMaxNum "
                              L"(FTableName, FMaxNum) VALUES ('ICBOM', " +
                              id + L")";
  return {
      {"GetBomEntryLdgInfo" + suffix,
       L"BomView",
       L"GetBomEntryLdgInfo",
       {0, L"a.FInterID=" + id, L"a.FEntryID"},
       L"",
       1,
       aim},
      {"CopyBom" + suffix, L"CBomFunction", L"CopyBom", {source}, noCopy, 1, aim},
      {"BomCheck" + suffix,
       L"CBomCheck",
       L"BomCheck",
       {bom, L"LARGE", 16402, L""},
       L"UPDATE ICBOM SET FStatus = 0, FCheckerID = NULL WHERE FInterID = " + id,
       20,
       aim},
      {"GetBomDelInfo" + suffix, L"CBomCheck", L"GetBomDelInfo", {bom, L"LARGE", L""}, L"", 20, aim},
      {"CheckBomUsed" + suffix, L"BomUpdate", L"CheckBomUsed", {bom, L""}, L"", 20, aim},
  };
}

void LargeBom(const std::wstring& folder) {
  constexpr int32_t kBoms = 1000;
  const std::wstring file = folder + L"\\large.db";
  Build(file, {.boms = kBoms, .lineFields = 6, .largeBom = 1800});
  const Data data(file);
  for (const Call& call : CallsOfOneBom(kBoms + 1, ", 1800 lines", {.ratio = 1.2})) Compare(call, data, true);
}

void AmongMany(const std::wstring& folder) {
  constexpr int32_t kFew = 1000;
  constexpr int32_t kMany = 470000;
  const std::wstring fewFile = folder + L"\\few.db";
  const std::wstring manyFile = folder + L"\\many.db";
  Build(fewFile, {.boms = kFew, .largeBom = 1800});
  Build(manyFile, {.boms = kMany, .largeBom = 1800});
  const Data few(fewFile);
  const Data many(manyFile);
  const std::vector<Call> fewCalls = CallsOfOneBom(kFew + 1, "", {});
  const std::vector<Call> manyCalls = CallsOfOneBom(kMany + 1, "", {});
  for (size_t i = 0; i < fewCalls.size(); ++i) {
    const Caller fewCaller(fewCalls[i], few, true);
    const Caller manyCaller(manyCalls[i], many, true);
    SideBySide(
        {fewCalls[i].name + " among 470000 BOMs", "among 1000", {.ratio = 1.2}}, kTurns, 1,
        [&] { return manyCaller.Seconds(); }, [&] { return fewCaller.Seconds(); });
  }
}

} // namespace
} // namespace bench

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: calls_bench FACTORY [FOLDER]\n", stderr);
    return 2;
  }
  const std::wstring folder = argc == 3 ? com::FromUtf8(argv[2]) : L"build\\bench";
  CreateDirectoryW(folder.c_str(), nullptr);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 0;
  try {
    bench::ShortCalls(com::FromUtf8(argv[1]), folder);
    bench::LargeBom(folder);
    bench::AmongMany(folder);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "calls_bench: %s\n", error.what());
    status = 2;
  }
  CoUninitialize();
  return status;
}
