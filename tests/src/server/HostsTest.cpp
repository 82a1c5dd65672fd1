// Several hosts on one server: processes with apartments that import, take numbers, copy and audit at the
// same time, each call a unit of work of its own. Identifiers are unique, what was done is there exactly
// once, and a call that came to nothing, because another one held what it needed, works when it is made
// again. HOST_CALLS in the environment sets how often each apartment does all of it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "com/Text.h"
#include "tests/support/Client.h"
#include "tests/support/ImportedBom.h"
#include "tests/support/TdsServer.h"
#include "tests/tsql/Processes.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

constexpr int kProcesses = 4;
constexpr int kApartments = 4;

int Rounds() {
  const char* const calls = std::getenv("HOST_CALLS");
  return calls ? std::atoi(calls) : 3;
}

Object Connect(const std::wstring& dsn) {
  Object connection = Object::Create(L"ADODB.Connection");
  connection.Call(L"Open", dsn);
  return connection;
}

// Makes the call until it has done its work.
template <typename Call>
void Repeat(const char* what, Call isDone) {
  constexpr int kMost = 1000;
  for (int i = 0; i < kMost; ++i)
    if (isDone()) return;
  throw std::runtime_error(std::string(what) + " does not get through");
}

bool IsLockTimeout(const Raised& raised) {
  return raised.description.find(L"Lock request time out") != std::wstring::npos;
}

// What one apartment does. Returns the rows in which it tells of the identifiers and numbers that it was
// given.
std::vector<std::wstring> Work(const std::wstring& dsn, const std::wstring& name) {
  const Object importer = Hosted(L"BOMImport");
  const Object function = Hosted(L"CBomFunction");
  const Object check = Hosted(L"CBomCheck");
  std::vector<std::wstring> told;
  const auto tell = [&](const wchar_t* kind, int32_t number) {
    told.push_back(L"('" + std::wstring(kind) + L"', " + std::to_wstring(number) + L")");
  };
  for (int round = 0; round < Rounds(); ++round) {
    const std::wstring number = name + std::to_wstring(round);
    Repeat("an import", [&] {
      const Raised raised = RaisedBy([&] {
        importer.Call(L"UpdateBOM", dsn, ImportedBom(L"I" + number, 3, 501, {502, 3, 0}));
      });
      if (raised.code != S_OK && !IsLockTimeout(raised))
        throw std::runtime_error(com::ToUtf8(raised.description));
      return raised.code == S_OK;
    });
    Repeat("a number", [&] {
      const std::wstring serial = function.Call(L"GetBomCodeNumEx", dsn, 501).AsText();
      if (!serial.empty()) tell(L"number", std::stoi(serial));
      return !serial.empty();
    });
    int32_t copy = -1;
    Repeat("a copy", [&] {
      copy = function
                 .Call(L"CopyBom", dsn,
                       MakeDictionary({{L"FInterID", 51},
                                       {L"FBOMNumber", (L"C" + number).c_str()},
                                       {L"FParentID", 3},
                                       {L"FCheckID", 16},
                                       {L"FOperatorID", 17}}))
                 .AsLong();
      return copy != -1;
    });
    tell(L"copy", copy);
    Repeat("an audit", [&] {
      constexpr int32_t kAuditor = 7;
      constexpr int32_t kAudited = 1;
      Variant message(L"");
      return check
                 .Call(L"BomCheck", dsn, copy, (L"C" + number).c_str(), kAuditor, Variant::Reference(message))
                 .AsLong() == kAudited;
    });
  }
  return told;
}

// A host: a process with apartments.
void Serve(const std::wstring& dsn) {
  std::mutex mutex;
  std::vector<std::wstring> told;
  std::vector<std::thread> apartments;
  apartments.reserve(kApartments);
  for (int i = 0; i < kApartments; ++i)
    apartments.emplace_back([&, i] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      try {
        const std::vector<std::wstring> rows =
            Work(dsn, std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(i) + L"-");
        const std::lock_guard lock(mutex);
        told.insert(told.end(), rows.begin(), rows.end());
      } catch (const std::exception& failure) {
        ADD_FAILURE() << failure.what();
      }
      CoUninitialize();
    });
  for (std::thread& apartment : apartments) apartment.join();
  const Object connection = Connect(dsn);
  for (const std::wstring& row : told)
    Repeat("the report", [&] {
      return RaisedBy([&] { connection.Call(L"Execute", L"INSERT INTO told VALUES " + row); }).code == S_OK;
    });
}

void Fill(const Object& connection) {
  for (
      const wchar_t* batch :
      {L"CREATE TABLE told (kind varchar(10) NOT NULL, n int NOT NULL)",
       L"INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES ('ICBOM', 60)",
       L"INSERT INTO ICBillNo (FBillID, FBillName, FCurNo) VALUES (50, 'BOM', 5)",
       L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FUseStatus, FStatus, FParentID, FRoutingID, FVersion, "
       L"FCheckID) VALUES (51, 'P1', 501, 1072, 0, 3, 0, '', 5)",
       L"INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FAuxQty, FQty) VALUES (51, 1, 502, 2, 2), "
       L"(51, 2, 503, 1, 1)"})
    connection.Call(L"Execute", batch);
}

TEST(Hosts, ShareAServer) {
  const std::string role = tsql::test::GivenRole();
  if (!role.empty()) return Serve(com::FromUtf8(role));
  SKIP_WITHOUT_TDS_SERVER();
  const com::test::TdsServer server;
  const std::wstring dsn = server.Dsn() + L";User ID=16394";
  const TestDatabase database(server.Dsn());
  const Object connection = Connect(server.Dsn());
  Fill(connection);
  EXPECT_EQ(
      tsql::test::RunAgain("Hosts.ShareAServer", std::vector<std::string>(kProcesses, com::ToUtf8(dsn))),
      std::vector<int>(kProcesses, 0));

  const auto value = [&](const std::wstring& sql) { return database.Value(sql); };
  const auto times = [](int factor) { return std::to_wstring(kProcesses * kApartments * Rounds() * factor); };
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber LIKE 'I%' AND FNote = N'自行车'"), times(1));
  EXPECT_EQ(value(L"SELECT COUNT(*) FROM ICBOM WHERE FBOMNumber LIKE 'C%'"), times(1));
  EXPECT_EQ(value(L"SELECT COUNT(DISTINCT FInterID) FROM ICBOM WHERE FInterID > 60"), times(2));
  EXPECT_EQ(value(L"SELECT FMaxNum - 60 FROM ICMaxNum WHERE FTableName = 'ICBOM'"), times(2));
  EXPECT_EQ(
      value(L"SELECT COUNT(*) FROM ICBOMChild c, ICBOM b WHERE c.FInterID = b.FInterID AND b.FInterID > 60"),
      times(3))
      << "an import has one line, a copy two";
  EXPECT_EQ(
      value(L"SELECT COUNT(DISTINCT t.n) FROM told t, ICBOM b WHERE t.kind = 'copy' AND b.FInterID = t.n AND "
            L"b.FBOMNumber LIKE 'C%' AND b.FStatus = 1 AND b.FCheckerID = 7"),
      times(1))
      << "each copy is the one that its maker was told of, and is audited";
  EXPECT_EQ(value(L"SELECT COUNT(DISTINCT n) FROM told WHERE kind = 'number'"), times(1));
  EXPECT_EQ(value(L"SELECT FCurNo - 5 FROM ICBillNo WHERE FBillID = 50"), times(1));
}

} // namespace
} // namespace mbom::test
