#include <gtest/gtest.h>

#include <atomic>

#include "com/Module.h"
#include "com/ValueText.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

// Registers the DLL that lies beside the tests, so that they are about that one, and keeps it loaded.
class Registration : public testing::Environment {
 public:
  void SetUp() override {
    const std::wstring self = com::ModulePath();
    const HMODULE dll =
        LoadLibraryW((self.substr(0, self.find_last_of(L'\\') + 1) + L"ErpStandIn.dll").c_str());
    ASSERT_TRUE(dll);
    using Entry = HRESULT STDAPICALLTYPE();
    auto* registerServer =
        reinterpret_cast<Entry*>(reinterpret_cast<void*>(GetProcAddress(dll, "DllRegisterServer")));
    ASSERT_TRUE(registerServer);
    ASSERT_EQ(registerServer(), S_OK);
  }
};

const testing::Environment* const kRegistration = testing::AddGlobalTestEnvironment(new Registration);

} // namespace

std::wstring NextMemoryName() {
  static std::atomic<int> last{0};
  return L":memory:standin" + std::to_wstring(++last);
}

Database::Database() : name_(NextMemoryName()), connection_(New(L"ADODB.Connection")) {
  connection_.Call(L"Open", Dsn());
  Execute(L"CREATE TABLE t (FInterID int NOT NULL PRIMARY KEY, FName nvarchar(20) NULL)");
  Execute(L"INSERT INTO t (FInterID, FName) VALUES (1, 'one'), (2, 'two'), (3, NULL)");
}

std::wstring Database::Dsn(const std::wstring& extra) const {
  const std::wstring dsn = L"Provider=Embedded;Data Source=" + name_;
  return extra.empty() ? dsn : dsn + L";" + extra;
}

std::wstring Database::Column(const std::wstring& sql) const {
  return ColumnText(Execute(sql));
}

Object Database::Open(const std::wstring& sql, int32_t location) const {
  Object recordset = New(L"ADODB.Recordset");
  recordset.Put(L"CursorLocation", location);
  recordset.Call(L"Open", sql, connection_);
  return recordset;
}

std::wstring ColumnText(const Object& recordset) {
  std::wstring result;
  for (; !recordset.Get(L"EOF").AsBool(); recordset.Call(L"MoveNext")) {
    const Variant value = recordset.Get(L"Fields").AsObject().Get(L"Item", 0).AsObject().Get(L"Value");
    if (!result.empty()) result += L",";
    result += value.IsNull() ? L"NULL" : com::ToText(value);
  }
  return result;
}

Variant ValueOf(const Object& recordset, const wchar_t* field) {
  return recordset.Get(L"Fields").AsObject().Get(L"Item", field).AsObject().Get(L"Value");
}

Trace::Trace() : trace_(New(L"ErpStandIn.Trace")) {
  trace_.Call(L"Clear");
  trace_.Call(L"Start");
}

Trace::~Trace() {
  trace_.Call(L"Stop");
  trace_.Call(L"Clear");
}

Texts Trace::Events() const {
  Texts events;
  const int32_t count = trace_.Get(L"Count").AsLong();
  for (int32_t i = 1; i <= count; ++i) events.push_back(trace_.Get(L"Item", i).AsText());
  return events;
}

} // namespace standin::test
