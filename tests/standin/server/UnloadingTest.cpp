// The DLL loaded, used and unloaded again and again: nothing of it stays in the process.
#include "tests/support/Unloading.h"

#include <sstream>

#include "com/Text.h"
#include "standin/server/Classes.h"
#include "tests/standin/DataFile.h"
#include "tests/standin/Support.h"

namespace standin::test {
namespace {

using com::test::LoadedServer;

Object Create(const LoadedServer& server, const wchar_t* progId) {
  for (const com::ClassEntry& entry : Classes())
    if (com::EqualsNoCase(entry.progId, progId)) return server.Create(entry.classId);
  ADD_FAILURE() << com::ToUtf8(progId);
  return {};
}

// Rows of a file, an error of the engine, collections.
void Use(const LoadedServer& server, const DataFile& file) {
  const Object connection = Create(server, L"ADODB.Connection");
  connection.Call(L"Open", file.Dsn());
  EXPECT_EQ(ColumnText(connection.Call(L"Execute", L"SELECT FInterID FROM t").AsObject()), L"1");
  EXPECT_NE(RaisedBy([&] { connection.Call(L"Execute", L"SELECT * FROM nowhere"); }).code, 0);
  const Object row = Create(server, L"ruvo10.Dictionary");
  row.Put(L"Value", L"FName", L"a text that is longer than a small string");
  SetErrorInfo(0, nullptr);
}

TEST(Unloading, LeavesNothingBehind) {
  const DataFile file(1);
  const com::test::DllCopy dll(L"ErpStandIn.dll");
  const auto cycle = [&] {
    {
      const LoadedServer server(dll.path());
      Use(server, file);
      EXPECT_TRUE(server.MayGo());
    }
    ASSERT_FALSE(dll.IsLoaded());
  };
  std::ostringstream figures;
  EXPECT_LT(com::test::GrowingRounds(cycle, figures), 2) << figures.str();
  RecordProperty("figures", figures.str());
}

} // namespace
} // namespace standin::test
