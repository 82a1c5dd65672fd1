// Which data context gets which vote: one that is cast before a call's set-up goes to the context that the
// object still holds, from its making or from the call before; one that is cast after it goes to the fresh
// context.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/Client.h"
#include "tests/support/NumberedContexts.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

Texts& g_contextCalls = NumberedContexts::calls;

class ContextVotes : public testing::Test {
 protected:
  // Runs `test` where contexts are numbered and every connection is one to the test's database.
  template <class Test>
  void Run(const Test& test) const {
    InNumberedContexts(
        [this] {
          Object connection = Object::Create(L"ADODB.Connection");
          connection.Call(L"Open", database_.Dsn());
          return connection;
        },
        test);
  }

  const TestDatabase database_;
};

// The calls of a set-up that yields the context `number`.
Texts SetUpOf(int32_t number, const std::wstring& dsn) {
  const std::wstring of = std::to_wstring(number);
  return {L"GetDataContext " + of, of + L" BindDsn " + dsn, of + L" GetCallerInfo"};
}

Texts Concat(std::initializer_list<Texts> parts) {
  Texts all;
  for (const Texts& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

TEST_F(ContextVotes, AWriterAbortsTheContextThatItHoldsAndCompletesTheFreshOne) {
  Run([] {
    const Object bom = Unhosted(L"BomUpdate");
    EXPECT_EQ(g_contextCalls, (Texts{L"GetDataContext 1", L"1 GetCallerInfo"}));
    for (const int32_t fresh : {2, 3}) {
      g_contextCalls.clear();
      EXPECT_EQ(bom.Call(L"BeginSave", L"D", MakeVector({}), L""), Variant(true));
      const std::wstring of = std::to_wstring(fresh);
      EXPECT_EQ(g_contextCalls, Concat({{std::to_wstring(fresh - 1) + L" VoteAbort"},
                                        SetUpOf(fresh, L"D"),
                                        {of + L" GetConnection", of + L" VoteComplete"}}));
    }
  });
}

TEST_F(ContextVotes, ARefusalAbortsTheFreshContext) {
  Run([this] {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FEcnInterID) VALUES (1, 'B1', 5)");
    const Object bom = Unhosted(L"BomUpdate");
    g_contextCalls.clear();
    const Object save = MakeVector({MakeDictionary({{L"FInterID", 1}})});
    EXPECT_EQ(bom.Call(L"EndSave", L"D", save, L""), Variant(false));
    EXPECT_EQ(g_contextCalls,
              Concat({{L"1 VoteAbort"}, SetUpOf(2, L"D"), {L"2 GetConnection", L"2 VoteAbort"}}));
  });
}

TEST_F(ContextVotes, ASetUpThatFailsLeavesTheAbortToTheContextThatIsHeldThen) {
  Run([] {
    const Object bom = Unhosted(L"BomUpdate");
    const Object save = MakeVector({MakeDictionary({{L"FInterID", 1}})});
    const auto endSave = [&](const wchar_t* failing) {
      NumberedContexts::failing = failing;
      g_contextCalls.clear();
      EXPECT_EQ(bom.Call(L"EndSave", L"D", save, L""), Variant(false));
      return g_contextCalls;
    };
    EXPECT_EQ(endSave(L"BindDsn"),
              (Texts{L"1 VoteAbort", L"GetDataContext 2", L"2 BindDsn D", L"2 VoteAbort"}));
    // No fresh context: the old one is still there.
    EXPECT_EQ(endSave(L"GetDataContext"), (Texts{L"2 VoteAbort", L"GetDataContext 3", L"2 VoteAbort"}));
    EXPECT_EQ(endSave(L"GetConnection"),
              Concat({{L"2 VoteAbort"}, SetUpOf(3, L"D"), {L"3 GetConnection", L"3 VoteAbort"}}));
  });
}

TEST_F(ContextVotes, AnErrorThatRisesLeavesTheHeldContextAborted) {
  Run([] {
    const Object bom = Unhosted(L"BomUpdate");
    g_contextCalls.clear();
    EXPECT_NE(RaisedBy([&] { bom.Call(L"UpdateIcBomStatus", L"D", L"O'Neil"); }).code, S_OK);
    EXPECT_EQ(NumberedContexts::Votes(), Texts{L"1 VoteAbort"});
  });
}

TEST_F(ContextVotes, TheSwitchOfTheValidityColumnsCompletesTheContextThatItHolds) {
  Run([] {
    const Object bom = Unhosted(L"BomUpdate");
    g_contextCalls.clear();
    EXPECT_EQ(bom.Call(L"SetVisibelBySysProfile", L"D", L"1"), Variant(true));
    EXPECT_EQ(g_contextCalls, Concat({{L"1 VoteComplete"}, SetUpOf(2, L"D"), {L"2 GetConnection"}}));
    g_contextCalls.clear();
    EXPECT_EQ(bom.Call(L"SetVisibelBySysProfile", L"D", L"it's"), Variant(false));
    EXPECT_EQ(NumberedContexts::Votes(), (Texts{L"2 VoteComplete", L"3 VoteAbort"}));
  });
}

TEST_F(ContextVotes, AnImportCompletesTheFreshContextBeforeAndAfterItsWork) {
  Run([] {
    // What each of the imports reads of it.
    const Object record = MakeDictionary({{L"Number", L"G1"},
                                          {L"Name", L"x"},
                                          {L"Parent", 0},
                                          {L"BOMNumber", L"B1"},
                                          {L"UseStatus", 1072},
                                          {L"Version", L""},
                                          {L"Item", 501},
                                          {L"Qty", 1},
                                          {L"Yield", 100},
                                          {L"Routing", 0},
                                          {L"BOMType", 0},
                                          {L"Note", L""},
                                          {L"BillNo", L"P1"},
                                          {L"Date", L"2026-05-04"},
                                          {L"Biller", 16403},
                                          {L"CheckDate", L"2026-05-05"},
                                          {L"Checker", 46147}});
    record.Put(L"Value", L"Entry", MakeVector({}));
    const std::pair<const wchar_t*, const wchar_t*> imports[] = {
        {L"BOMImport", L"UpdateBomGroup"}, {L"BOMImport", L"UpdateBOM"}, {L"PPorderImort", L"UpdatePPOrder"}};
    for (const auto& [className, method] : imports) {
      NumberedContexts::last = 0;
      const Object import = Unhosted(className);
      g_contextCalls.clear();
      import.Call(method, L"D", record);
      EXPECT_EQ(g_contextCalls, Concat({{L"1 VoteAbort"},
                                        SetUpOf(2, L"D"),
                                        {L"2 VoteComplete", L"2 GetConnection", L"2 VoteComplete"}}))
          << com::ToUtf8(method);
    }
  });
}

TEST_F(ContextVotes, AReaderOrACheckCastsNoVoteBeforeItsSetUp) {
  Run([this] {
    database_.Execute(L"INSERT INTO ICBOM (FInterID, FBOMNumber, FStatus) VALUES (1, 'B1', 0)");
    const auto callsOf = [](const wchar_t* className, const wchar_t* method, std::vector<Variant> arguments) {
      NumberedContexts::last = 0;
      const Object object = Unhosted(className);
      g_contextCalls.clear();
      object.CallWith(method, arguments);
      return g_contextCalls;
    };
    const Texts completed = Concat({SetUpOf(2, L"D"), {L"2 GetConnection", L"2 VoteComplete"}});
    EXPECT_EQ(callsOf(L"BomUpdate", L"CheckBomUsed", {L"D", 1, L""}), completed);
    EXPECT_EQ(callsOf(L"CBomCheck", L"BomCheck", {L"D", 1, L"B1", 5, L""}), completed);
    EXPECT_EQ(callsOf(L"CBomCheck", L"GetBomDelInfo", {L"D", 1, L"B1", L""}), completed);
    EXPECT_EQ(callsOf(L"CBomCheck", L"GetBomModifyInfo", {L"D", 1, L"B1", L""}), completed);
    EXPECT_EQ(callsOf(L"CEcnInfo", L"CheckECN", {L"D", 1}), completed);
    EXPECT_EQ(callsOf(L"CEcnInfo", L"CheckEcnBom", {L"D", 1}), completed);
    EXPECT_EQ(callsOf(L"BomInfo", L"GetBomInfo", {L"D"}), completed);
    EXPECT_EQ(callsOf(L"CBomCheck", L"BomCheck", {L"D", 4711, L"N", 5, L""}),
              Concat({SetUpOf(2, L"D"), {L"2 GetConnection", L"2 VoteAbort"}}));
  });
}

TEST_F(ContextVotes, TheFirstHookOfAChangeNoticeCompletesTheContextThatItHolds) {
  Run([] {
    const Object ecn = Unhosted(L"CEcnInfo");
    g_contextCalls.clear();
    EXPECT_EQ(ecn.Call(L"BeginSave", L"D", MakeVector({}), L""), Variant(true));
    EXPECT_EQ(g_contextCalls, Texts{L"1 VoteComplete"});
    ecn.Call(L"CheckECN", L"D", 1);
    g_contextCalls.clear();
    EXPECT_EQ(ecn.Call(L"BeginSave", L"D", MakeVector({}), L""), Variant(true));
    EXPECT_EQ(g_contextCalls, Texts{L"2 VoteComplete"});
  });
}

TEST_F(ContextVotes, ALedgersReaderOfUserDefinedValuesVotesOnAContextOfItsOwn) {
  Run([] {
    const Object view = Unhosted(L"BomView");
    // The ledger holds 1 and sets 2 up; its reader is made with 3 and sets 4 up.
    view.Call(L"GetBomLdgInfo", L"D");
    EXPECT_EQ(NumberedContexts::Votes(), (Texts{L"4 VoteComplete", L"2 VoteComplete"}));
    g_contextCalls.clear();
    view.Call(L"GetBomEntryLdgInfo", L"D");
    EXPECT_EQ(NumberedContexts::Votes(), (Texts{L"7 VoteComplete", L"5 VoteComplete"}));
  });
}

// ---- every method

struct PublicCall {
  const wchar_t* className;
  const wchar_t* method;
  std::function<std::vector<Variant>()> arguments; // behind the descriptor; made in the apartment
};

void PrintTo(const PublicCall& call, std::ostream* out) {
  *out << com::ToUtf8(call.className) << '.' << com::ToUtf8(call.method);
}

std::vector<PublicCall> EveryCall() {
  const auto given = [](const std::vector<Variant>& values) { return [values] { return values; }; };
  const auto withDictionary = [] {
    return std::vector<Variant>{MakeDictionary({{L"FName", L"x"}, {L"FParentID", 0}})};
  };
  const auto none = given({});
  return {
      {L"BomUpdate", L"BeginSave",
       [] {
         return std::vector<Variant>{MakeVector({}), L""};
       }},
      {L"BomUpdate", L"EndSave",
       [] {
         return std::vector<Variant>{MakeVector({}), L""};
       }},
      {L"BomUpdate", L"UpdateIcBomStatus", given({L"B1"})},
      {L"BomUpdate", L"AddBomGroup", withDictionary},
      {L"BomUpdate", L"UpdateBomGroup",
       [] {
         return std::vector<Variant>{MakeDictionary({{L"FName", L"x"}}), L"FInterID=1"};
       }},
      {L"BomUpdate", L"DeleteBom", given({L"FInterID=1"})},
      {L"BomUpdate", L"DeleteBomGroup", given({L"FInterID=1"})},
      {L"BomUpdate", L"CheckBomUsed", given({1, L""})},
      {L"CBomCheck", L"BomUndoCheck", given({1, L"N", 5})},
      {L"CBomFunction", L"GetBomCodeNum", given({L"P"})},
      {L"CBomFunction", L"UpdateBomNumber", given({1, L"B1", L""})},
      {L"CBomFunction", L"CopyBom", withDictionary},
      {L"CBomFunction", L"GetRoutingData", given({false, -1, L""})},
      {L"CBomFunction", L"UpdateBomRouting", [] { return std::vector<Variant>{MakeVector({})}; }},
      {L"CBomFunction", L"UpdateBomGroup", given({1, 2, 3})},
      {L"CBomFunction", L"UpdateBomGroupName", given({1, L"x"})},
      {L"CEcnInfo", L"EndSave",
       [] {
         return std::vector<Variant>{MakeVector({MakeDictionary({{L"FInterID", 1}})}), L""};
       }},
      {L"CEcnInfo", L"GetThenCheckCBomNumber", given({L"B1"})},
      {L"CEcnInfo", L"GetCheckCBomNoChecked", given({1})},
      {L"CEcnInfo", L"CheckBomUsed", given({1, L"B1", L""})},
      {L"CEcnInfo", L"StarUpEcn", given({1, 2, 3})},
      {L"CEcnInfo", L"UnStarUpEcn", given({1})},
      {L"CEcnInfo", L"GetEcnBomHead", given({L"1"})},
      {L"CEcnInfo", L"GetEcnBomEntry", given({L"1"})},
      {L"CEcnInfo", L"AnalyseBomNumber", given({L"SELECT 1"})},
      {L"BomInfo", L"GetBomInfoByItemNumber", given({L"1"})},
      {L"BomInfo", L"GetBomList", given({L"1"})},
      {L"BomView", L"GetBomList", none},
      {L"BomView", L"GetBomSimplifyList", none},
      {L"BomView", L"ExistsEcnBill", none},
      {L"BomView", L"GetCustBomTitle", none},
      {L"BomView", L"GetCustBomLdgInfo", none},
      {L"clsMCustBOM", L"UpdateAuditFlag", given({L"1", true})},
      {L"clsMCustBOM", L"UpdateAuditFlag", given({L"1", false, L"1"})},
      {L"clsMCustBOM", L"GetUsedCustBomNumber", given({L"1"})},
      {L"clsMCustBOM", L"UpdateDisableStatus", given({L"1", true})},
      {L"clsMCustBOM", L"CheckCustBOMIsAssisted", given({L"1", L"1", L""})},
      {L"clsMCustBOM", L"GetRightBottomDataM", none},
      {L"clsMCustBOM", L"SetCustBOM", given({L"1", L"1", L"1"})},
      {L"clsMCustBOM", L"GetItemFNumber", given({L"1"})},
      {L"clsMCustBOM", L"GetRecordSet", given({L"SELECT 1"})},
      {L"clsMCustBOM", L"GetTeZhenSubItems", given({L"1"})},
      {L"clsMBOMRule", L"GetICItemParent", given({L"1"})},
      {L"clsMBOMRule", L"GetRecordSet", given({L"SELECT 1"})},
  };
}

class EveryMethodsVotes : public ContextVotes, public testing::WithParamInterface<PublicCall> {};

// Whether the call succeeds or not, and however often it sets itself up.
TEST_P(EveryMethodsVotes, GoToTheContextThatIsHeldThen) {
  Run([] {
    const Object object = Unhosted(GetParam().className);
    std::vector<Variant> arguments = GetParam().arguments();
    arguments.insert(arguments.begin(), Variant(L"D"));
    std::wstring held = L"1";
    for (int call = 0; call < 2; ++call) {
      g_contextCalls.clear();
      RaisedBy([&] { object.CallWith(GetParam().method, arguments); });
      int votes = 0;
      constexpr std::wstring_view kFresh = L"GetDataContext ";
      for (const std::wstring& event : g_contextCalls) {
        if (event.starts_with(kFresh)) held = event.substr(kFresh.size());
        const size_t vote = event.find(L" Vote");
        if (vote == std::wstring::npos) continue;
        ++votes;
        EXPECT_EQ(event.substr(0, vote), held) << com::ToUtf8(event);
      }
      EXPECT_GT(votes, 0);
      EXPECT_NE(held, L"1"); // it has set itself up
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Calls, EveryMethodsVotes, testing::ValuesIn(EveryCall()));

} // namespace
} // namespace mbom::test
