// A data-access library that hands out a connection which is closed. The connection is ADO's.
#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/PlayedDataAccess.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

const std::vector<std::wstring>& g_votes = PlayedDataAccess::calls;

// ADO's errors: the object is closed (3704), the connection is closed or invalid here (3709).
bool IsClosedError(HRESULT code) {
  return static_cast<unsigned>(code) == 0x800A0E78U || static_cast<unsigned>(code) == 0x800A0E7DU;
}

template <class Test>
void WithClosedConnection(const Test& test) {
  InPlayedDataAccess([] { return Object::Create(L"ADODB.Connection"); }, test);
}

// The connection's error rises out of the call.
template <class Call>
void ExpectRises(const Call& call) {
  const Raised raised = RaisedBy(call);
  EXPECT_TRUE(IsClosedError(raised.code)) << std::hex << raised.code;
  EXPECT_EQ(raised.source.substr(0, 5), L"ADODB");
  EXPECT_NE(raised.description, L"");
}

TEST(ClosedConnection, EndsTheMaintenanceMethods) {
  WithClosedConnection([] {
    const Object update = Unhosted(L"BomUpdate");
    Variant id(7);
    Variant info(L"");
    EXPECT_EQ(update.Call(L"AddBomGroup", L"", MakeDictionary({{L"FParentID", 0}}), Variant::Reference(id)),
              Variant(false));
    EXPECT_EQ(id, Variant(7));
    EXPECT_EQ(update.Call(L"CheckBomUsed", L"", 1, Variant::Reference(info)), Variant(-1));
    EXPECT_EQ(update.Call(L"SetVisibelBySysProfile", L"", L"0"), Variant(false));
    EXPECT_EQ(g_votes.back(), L"VoteAbort");
    ExpectRises([&] {
      update.Call(L"UpdateBomGroup", L"", MakeDictionary({{L"FName", L"x"}}), L"FInterID=1");
    });
    ExpectRises([&] { update.Call(L"DeleteBom", L"", L"FInterID=1"); });
    ExpectRises([&] { update.Call(L"DeleteBomGroup", L"", L"FInterID=1"); });
    EXPECT_EQ(g_votes.back(), L"VoteAbort");
  });
}

TEST(ClosedConnection, EndsTheAuditMethodsWithItsReason) {
  WithClosedConnection([] {
    const Object check = Unhosted(L"CBomCheck");
    for (const wchar_t* method : {L"BomCheck", L"GetBomDelInfo", L"GetBomModifyInfo"}) {
      Variant message(L"");
      std::vector<Variant> arguments{L"Language=chs", 1, L"N"};
      if (std::wstring(method) == L"BomCheck") arguments.emplace_back(5);
      arguments.push_back(Variant::Reference(message));
      EXPECT_EQ(check.CallWith(method, arguments), Variant(0));
      EXPECT_NE(message.AsText().find(L"原因为：出现意外错误。"), std::wstring::npos);
      EXPECT_EQ(g_votes.back(), L"VoteAbort");
    }
    Variant message(L"");
    EXPECT_EQ(check.Call(L"BomUndoCheck", L"", 1, L"N", 5, 0, Variant::Reference(message)), Variant(0));
    EXPECT_EQ(g_votes, (std::vector<std::wstring>(4, L"VoteAbort")));
  });
}

TEST(ClosedConnection, EndsTheBomFunctions) {
  WithClosedConnection([] {
    const Object function = Unhosted(L"CBomFunction");
    Variant text(L"P");
    EXPECT_EQ(function.Call(L"GetBomCodeNum", L"", Variant::Reference(text)), Variant(-1));
    EXPECT_EQ(text, Variant(L"P"));
    EXPECT_EQ(function.Call(L"CopyBom", L"", MakeDictionary({{L"FInterID", 1}})), Variant(-1));
    EXPECT_FALSE(function.Call(L"GetRoutingData", L"", true, -1, Variant::Reference(text)).AsObject());
    EXPECT_EQ(function.Call(L"UpdateBomGroup", L"", 1, 2, 3), Variant(false));
    EXPECT_EQ(function.Call(L"UpdateBomGroupName", L"", 1, L"x"), Variant(false));
    EXPECT_EQ(g_votes.back(), L"VoteAbort");
    // The connection of the previous set-up is the closed one.
    ExpectRises([&] { function.Call(L"GetMaxNum", L"ICBOM"); });
  });
}

TEST(ClosedConnection, EndsTheBomQueries) {
  WithClosedConnection([] {
    const Object info = Unhosted(L"BomInfo");
    ExpectRises([&] { info.Call(L"GetBomInfo", L""); });
    ExpectRises([&] { info.Call(L"GetBomGroupInfo", L""); });
    EXPECT_FALSE(info.Call(L"GetBomInfoByItemNumber", L"", L"1").AsObject());
    EXPECT_EQ(g_votes.back(), L"VoteAbort");
  });
}

} // namespace
} // namespace mbom::test
