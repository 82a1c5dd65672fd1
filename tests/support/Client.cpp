#include "tests/support/Client.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <fstream>
#include <map>
#include <mutex>
#include <stdexcept>

#include "com/Passwords.h"
#include "com/Text.h"
#include "tests/support/Rows.h"
#include "tests/support/SourceFolder.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

// The batches of a script of the project: its parts between lines that hold only GO. Each script is read
// once.
const std::vector<std::wstring>& Batches(const std::string& path) {
  static std::mutex mutex;
  static std::map<std::string, std::vector<std::wstring>> scripts;
  const std::lock_guard lock(mutex);
  const auto [script, isNew] = scripts.try_emplace(path);
  std::vector<std::wstring>& batches = script->second;
  if (!isNew) return batches;
  std::ifstream file(SourceFolder() + "/" + path, std::ios::binary);
  if (!file) ADD_FAILURE() << "cannot read " << path;
  std::string batch;
  for (std::string line; std::getline(file, line);) {
    if (line == "GO" || line == "GO\r") {
      batches.push_back(com::FromUtf8(batch));
      batch.clear();
    } else {
      batch += line + "\n";
    }
  }
  if (batch.find_first_not_of(" \r\n") != std::string::npos) batches.push_back(com::FromUtf8(batch));
  return batches;
}

std::wstring NextName() {
  static std::atomic<int> next{0};
  return L":memory:test" + std::to_wstring(++next);
}

// The descriptor of the server on which all test databases are, one after another; empty when each is in
// memory. tools/test-server sets it.
const std::wstring& Server() {
  static const std::wstring server = [] {
    std::wstring value(GetEnvironmentVariableW(L"TEST_SERVER", nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(L"TEST_SERVER", value.data(), static_cast<DWORD>(value.size())));
    return value;
  }();
  return server;
}

// There is one database on a server.
int g_onServer = 0;

std::wstring NextSource() {
  if (Server().empty()) return L"Provider=Embedded;Data Source=" + NextName();
  if (g_onServer > 0) throw std::runtime_error("a server has no second database for a test");
  return Server();
}

} // namespace

TestDatabase::TestDatabase()
    : source_(NextSource()), isOnServer_(!Server().empty()),
      connection_(Object::Create(L"ADODB.Connection")) {
  connection_.Call(L"Open", source_);
  if (isOnServer_) DropAll();
  AddTables();
  if (isOnServer_) ++g_onServer;
}

TestDatabase::TestDatabase(const std::wstring& descriptor)
    : source_(descriptor), connection_(Object::Create(L"ADODB.Connection")) {
  connection_.Call(L"Open", source_);
  if (Value(L"SELECT COUNT(*) FROM sysobjects WHERE xtype = 'U'") == L"0") AddTables();
}

TestDatabase::~TestDatabase() {
  if (isOnServer_) --g_onServer;
}

void TestDatabase::AddTables() const {
  RunScript("standin/database/schema.sql");
  RunScript("standin/database/procedures.sql");
}

// What the test before has left on the server.
void TestDatabase::DropAll() const {
  struct Kind {
    const wchar_t* type;
    const wchar_t* name;
  };
  constexpr std::array kKinds{Kind{L"TR", L"TRIGGER"}, Kind{L"P", L"PROCEDURE"}, Kind{L"V", L"VIEW"},
                              Kind{L"U", L"TABLE"}};
  for (const Kind& kind : kKinds) {
    const std::wstring query =
        L"SELECT name FROM sysobjects WHERE xtype = '" + std::wstring(kind.type) + L"'";
    std::vector<std::wstring> left = Rows(query);
    while (!left.empty()) {
      Raised refused;
      for (const std::wstring& object : left) {
        const Raised raised =
            RaisedBy([&] { Execute(L"DROP " + std::wstring(kind.name) + L" [" + object + L"]"); });
        if (FAILED(raised.code)) refused = raised;
      }
      // A table that another one refers to goes when that is gone.
      std::vector<std::wstring> still = Rows(query);
      if (still.size() == left.size()) throw com::ComError(refused.code, refused.source, refused.description);
      left = std::move(still);
    }
  }
}

void TestDatabase::RunScript(const std::string& path) const {
  for (const std::wstring& batch : Batches(path)) Execute(batch);
}

void TestDatabase::Execute(const std::wstring& sql) const {
  connection_.Call(L"Execute", sql);
}

std::vector<std::wstring> TestDatabase::Rows(const std::wstring& sql) const {
  return RowsOf(connection_.Call(L"Execute", sql).AsObject());
}

std::wstring TestDatabase::Value(const std::wstring& sql) const {
  const std::vector<std::wstring> rows = Rows(sql);
  return rows.size() == 1 ? rows[0] : L"(" + std::to_wstring(rows.size()) + L" rows)";
}

std::wstring TestDatabase::Dsn(const std::wstring& extra) const {
  return DsnFor(L"16394", L"2026-03-05 14:30:00", extra);
}

std::wstring TestDatabase::DsnFor(const std::wstring& user, const std::wstring& now,
                                  const std::wstring& extra) const {
  std::wstring dsn = source_ + L";User ID=" + user;
  // The clock of a server is its own.
  if (Server().empty()) dsn += L";Now=" + now;
  return extra.empty() ? dsn : dsn + L";" + extra;
}

Object MakeDictionary(std::initializer_list<std::pair<const wchar_t*, Variant>> items) {
  Object dictionary = Object::Create(L"ruvo10.Dictionary");
  for (const auto& [key, value] : items) dictionary.Put(L"Value", key, value);
  return dictionary;
}

Object MakeVector(std::initializer_list<Variant> items) {
  Object vector = Object::Create(L"ruvo10.Vector");
  for (const Variant& item : items) vector.Call(L"Add", item);
  return vector;
}

Object Hosted(const wchar_t* className) {
  return Object::Create(L"ErpStandIn.Host")
      .Call(L"CreateObject", L"QorvaneMBomBill." + std::wstring(className))
      .AsObject();
}

Object Unhosted(const wchar_t* className) {
  return Object::Create((L"QorvaneMBomBill." + std::wstring(className)).c_str());
}

Trace::Trace() : trace_(Object::Create(L"ErpStandIn.Trace")) {
  trace_.Call(L"Clear");
  trace_.Call(L"Start");
}

Trace::~Trace() {
  trace_.Call(L"Stop");
  trace_.Call(L"Clear");
}

std::vector<std::wstring> Trace::Events() const {
  std::vector<std::wstring> events;
  const int32_t count = trace_.Get(L"Count").AsLong();
  // The trace shows no password; the tests expect the descriptor as they gave it.
  const std::wstring masked = com::Masked(Server());
  for (int32_t i = 1; i <= count; ++i) {
    std::wstring& event = events.emplace_back(trace_.Get(L"Item", i).AsText());
    if (masked != Server())
      if (const size_t at = event.find(masked); at != std::wstring::npos)
        event.replace(at, masked.size(), Server());
  }
  return events;
}

std::vector<std::wstring> Trace::Details(const std::wstring& kind) const {
  std::vector<std::wstring> details;
  for (const std::wstring& event : Events())
    if (event.starts_with(kind + L"\t")) details.push_back(event.substr(kind.size() + 1));
  return details;
}

std::vector<std::wstring> Trace::Votes() const {
  std::vector<std::wstring> votes;
  for (const std::wstring& event : Events())
    if (event.starts_with(L"Vote")) votes.push_back(event);
  return votes;
}

void Trace::Clear() const {
  trace_.Call(L"Clear");
}

Fault::Fault(const std::wstring& kind, int32_t nth) : faults_(Object::Create(L"ErpStandIn.Faults")) {
  faults_.Call(L"Fail", kind, nth, static_cast<int32_t>(kCode), kText);
}

Fault::~Fault() {
  faults_.Call(L"Clear");
}

} // namespace mbom::test
