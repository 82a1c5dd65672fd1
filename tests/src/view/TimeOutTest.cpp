// A lookup list over groups whose parents go in a circle never ends on its own, nor does a search for a
// number that seems to be used whatever its serial: the time-out of the connection's commands ends them. The
// data-access library is played, so that the connection has a time-out of one second.
#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/PlayedDataAccess.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;

constexpr unsigned kTimeOut = 0x80040E31;

// Group 2 lies in group 3, and 3 in 2.
void MakeCircle(const TestDatabase& database) {
  database.Execute(L"INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES "
                   L"(2, 'A', 'Bikes', 3, 3), (3, 'B', 'City', 2, 3)");
  database.Execute(
      L"INSERT INTO t_ICItem (FItemID, FNumber, FName, FERPClsID) VALUES (501, '05', 'Bike', 2)");
  database.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FItemID, FParentID, FStatus, FBomType) VALUES "
                   L"(11, 'B11', 501, 2, 1, 0)");
}

Object ConnectionWithTimeOut(const std::wstring& dsn) {
  Object connection = Object::Create(L"ADODB.Connection");
  connection.Put(L"CommandTimeout", 1);
  connection.Call(L"Open", dsn);
  return connection;
}

TEST(TimeOut, EndsALookupListOverACircleAndTheNextCallWorks) {
  const TestDatabase database;
  MakeCircle(database);
  const std::wstring dsn = database.Dsn();
  InPlayedDataAccess(
      [&] { return ConnectionWithTimeOut(dsn); },
      [&] {
        const Object view = Unhosted(L"BomView");
        for (const wchar_t* list :
             {L"GetBomSimplifyList", L"GetCustBomSimplifyList", L"GetBomSimplifyListEx"}) {
          SCOPED_TRACE(com::ToUtf8(list));
          PlayedDataAccess::calls.clear();
          const Raised raised = RaisedBy([&] { view.Call(list, dsn); });
          EXPECT_EQ(static_cast<unsigned>(raised.code), kTimeOut);
          EXPECT_EQ(raised.description, L"Timeout expired");
          EXPECT_EQ(PlayedDataAccess::calls, std::vector<std::wstring>{L"VoteAbort"});
        }
        // Nothing of the tables is left, and without the circle the same object lists the BOM under its
        // groups.
        EXPECT_EQ(database.Value(L"SELECT COUNT(*) FROM sysobjects WHERE name LIKE '##BomItemID%'"), L"0");
        database.Execute(L"UPDATE ICBOMGroup SET FParentID = 0 WHERE FInterID = 3");
        const Object rows = view.Call(L"GetBomSimplifyList", dsn).AsObject();
        EXPECT_EQ(rows.Get(L"UBound"), com::Variant(4)); // the root, two groups, the BOM
        EXPECT_EQ(PlayedDataAccess::calls.back(), L"VoteComplete");
      });
}

// The prefix comments the serial out, so that every serial seems to be used.
TEST(TimeOut, EndsASearchForANumberThatFindsNoEnd) {
  const TestDatabase database;
  database.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber) VALUES (1, 'P')");
  database.Execute(L"INSERT INTO ICBillNo (FBillID, FCurNo) VALUES (50, 5)");
  const std::wstring dsn = database.Dsn();
  InPlayedDataAccess(
      [&] { return ConnectionWithTimeOut(dsn); },
      [&] {
        const Object bom = Unhosted(L"CBomFunction");
        EXPECT_EQ(bom.Call(L"GetBomCodeNum", dsn, L"P' --"), com::Variant(-1));
        EXPECT_EQ(PlayedDataAccess::calls, (std::vector<std::wstring>{L"VoteAbort", L"VoteAbort"}));
        EXPECT_EQ(database.Value(L"SELECT FCurNo FROM ICBillNo"), L"5");
        EXPECT_EQ(bom.Call(L"GetBomCodeNum", dsn, L"P"), com::Variant(5)) << "the next call works";
      });
}

} // namespace
} // namespace mbom::test
