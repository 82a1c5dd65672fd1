// How the component calls ADO: the order in which the properties of a recordset are put, the options of Open
// and Execute, and the parameters of its commands. ADO is the test's own.
#include <gtest/gtest.h>

#include "src/frame/Frame.h"
#include "src/frame/globals/SystemProfile.h"
#include "src/frame/globals/Texts.h"
#include "tests/support/Client.h"
#include "tests/support/PlayedAdo.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// ADO's constants.
constexpr int32_t kUseClient = 3;
constexpr int32_t kForwardOnly = 0;
constexpr int32_t kStatic = 3;
constexpr int32_t kReadOnly = 1;
constexpr int32_t kInput = 1;
constexpr int32_t kOutput = 2;
constexpr int32_t kInteger = 3;
constexpr int32_t kVarChar = 200;
constexpr int32_t kVarWChar = 202;

Texts& g_calls = PlayedAdo::calls;

std::wstring Opened(const std::wstring& source) {
  return L"Open " + source + L"|the connection|-1|-1|-1";
}

Variant CallOn(const wchar_t* className, const wchar_t* method, std::vector<Variant> arguments) {
  const Object object = Unhosted(className);
  g_calls.clear();
  return object.CallWith(method, arguments);
}

// ---- recordsets

TEST(AdoCalls, AHandedOutRecordsetIsOpenedClientSideWithNothingElseSpecified) {
  WithPlayedAdo([] {
    const Texts open{L"ActiveConnection=the connection", L"CursorLocation=3"};
    const auto expected = [&](const std::wstring& source, bool detached) {
      Texts all = open;
      all.push_back(Opened(source));
      if (detached) all.emplace_back(L"ActiveConnection=Nothing");
      return all;
    };
    CallOn(L"BomInfo", L"GetBomInfo", {L"D"});
    EXPECT_EQ(g_calls, expected(L"SELECT * FROM ICBOM", true));
    CallOn(L"BomInfo", L"GetBomEntryInfo", {L"D", L"FInterID=1", L"FEntryID"});
    EXPECT_EQ(g_calls, expected(L"SELECT * FROM ICBomChild WHERE FInterID=1 ORDER BY FEntryID", true));
    CallOn(L"BomInfo", L"GetInfo", {L"D", L"select 1"});
    EXPECT_EQ(g_calls, expected(L"select 1", true));
    CallOn(L"clsMCustBOM", L"GetRecordSet", {L"D", L"select 1"});
    EXPECT_EQ(g_calls, expected(L"select 1", false));
    CallOn(L"clsMBOMRule", L"GetRecordSet", {L"D", L"select 1"});
    EXPECT_EQ(g_calls, expected(L"select 1", false));
    CallOn(L"BomView", L"GetBomUserDefinedTitle", {L"Language=en"});
    ASSERT_EQ(g_calls.size(), 4U);
    EXPECT_EQ(Texts(g_calls.begin(), g_calls.begin() + 2), open);
    EXPECT_TRUE(g_calls[2].ends_with(L" ORDER BY FCtlIndex|the connection|-1|-1|-1"));
    EXPECT_EQ(g_calls[3], L"ActiveConnection=Nothing");
  });
}

TEST(AdoCalls, AChecksRecordsetIsStaticAndOpenedAgainForItsNextQuery) {
  WithPlayedAdo([] {
    const Texts open{L"ActiveConnection=the connection", L"CursorLocation=3", L"CursorType=3"};
    const auto expected = [&](const Texts& sources) {
      Texts all = open;
      for (const std::wstring& source : sources) all.push_back(Opened(source));
      return all;
    };
    CallOn(L"CBomCheck", L"BomCheck", {L"Language=chs", 7, L"N", 5, L""});
    EXPECT_EQ(
        g_calls,
        expected({L" select FInterID, FBOMNumber FBillNo, FCheckID, FStatus From ICBOM Where FInterID = 7"}));
    CallOn(L"CBomCheck", L"BomUndoCheck", {L"Language=chs", 7, L"N", 5});
    EXPECT_EQ(g_calls, expected({L" select FInterID,fbomnumber FBillNo, FCheckID, FStatus, FCheckerID From "
                                 L"ICBOM Where FInterID = 7"}));
    for (const OpenedRecordset& opened : PlayedAdo::opened) {
      EXPECT_EQ(opened.location, kUseClient);
      EXPECT_EQ(opened.cursor, kStatic);
      EXPECT_TRUE(opened.onConnection);
    }
  });
}

TEST(AdoCalls, TheQueriesOfADeletionAndAModificationAreStaticAndClientSide) {
  for (const wchar_t* method : {L"GetBomDelInfo", L"GetBomModifyInfo"}) {
    WithPlayedAdo([method] {
      EXPECT_EQ(CallOn(L"CBomCheck", method, {L"Language=chs", 7, L"N", L""}), Variant(1));
      const size_t queries = std::wstring(method) == L"GetBomDelInfo" ? 3 : 2;
      ASSERT_EQ(PlayedAdo::opened.size(), queries);
      for (const OpenedRecordset& opened : PlayedAdo::opened) {
        EXPECT_EQ(opened.location, kUseClient) << com::ToUtf8(opened.source);
        EXPECT_EQ(opened.cursor, kStatic) << com::ToUtf8(opened.source);
        EXPECT_TRUE(opened.onConnection) << com::ToUtf8(opened.source);
      }
    });
  }
}

TEST(AdoCalls, UserDefinedFieldsAreLookedForWithAForwardOnlyReadOnlyRecordset) {
  WithPlayedAdo([] {
    const Object rows = com::ToObject(com::Make<PlayedRecordset>());
    for (const bool isBillHead : {true, false})
      CallOn(L"clsReadUserDefined", L"GetUserDefinedValue", {L"D", L"50", rows, isBillHead});
    EXPECT_EQ(g_calls.back(), L"ActiveConnection=Nothing");
    ASSERT_EQ(PlayedAdo::opened.size(), 2U);
    for (const OpenedRecordset& opened : PlayedAdo::opened) {
      EXPECT_EQ(opened.location, kUseClient);
      EXPECT_EQ(opened.cursor, kForwardOnly);
      EXPECT_EQ(opened.lock, kReadOnly);
      EXPECT_TRUE(opened.onConnection);
    }
  });
}

// ---- statements

TEST(AdoCalls, AStatementIsExecutedWithoutACountAndWithUnspecifiedOptions) {
  WithPlayedAdo([] {
    CallOn(L"BomUpdate", L"DeleteBomGroup", {L"D", L"FInterID=1"});
    EXPECT_EQ(g_calls, Texts{L"Execute DELETE FROM ICBomGroup WHERE FInterID=1|missing|-1"});
    CallOn(L"BomUpdate", L"UpdateIcBomStatus", {L"D", L"B1"});
    EXPECT_EQ(g_calls, Texts{L"Execute UPDATE ICBom SET FStatus=1, FUseStatus=1072 WHERE FBomNumber ='B1' "
                             L"|missing|-1"});
    CallOn(L"CBomFunction", L"UpdateBomGroupName", {L"D", 3, L"x"});
    EXPECT_EQ(g_calls, Texts{L"Execute update icbomgroup set FName='x' where FInterID=3|missing|-1"});
    CallOn(L"CEcnInfo", L"GetThenCheckCBomNumber", {L"D", L"B1"});
    EXPECT_EQ(g_calls, Texts{L"Execute select FInterId from IcBom where FBomNumber = 'B1'|missing|-1"});
    CallOn(L"CEcnInfo", L"StarUpEcn", {L"D", 1, 2, 3});
    ASSERT_EQ(g_calls.size(), 1U);
    EXPECT_TRUE(g_calls[0].ends_with(L"|missing|-1"));
    CallOn(L"clsMCustBOM", L"SetCustBOM", {L"D", L"5", L"9", L"501"});
    EXPECT_EQ(g_calls, Texts{L"Execute UPDATE ICCUSTBOMCHILD SET FCustBomCode='5' WHERE FInterID=9 AND "
                             L"FItemID=501|missing|-1"});
  });
}

// ---- commands

TEST(AdoCalls, ASettingIsReadByACommandWithTwoUnicodeTexts) {
  WithPlayedAdo([] {
    Frame frame;
    frame.OpenDataContext(L"D");
    EXPECT_EQ(ReadSystemProfile(frame, L"SingleMan", L"General", 7), Variant(7)); // it has no row
    EXPECT_EQ(g_calls,
              (Texts{L"ActiveConnection=the connection", L"CommandType=1",
                     L"CommandText=Select FValue From t_SystemProfile Where FCategory = ? And FKey = ?",
                     L"Execute"}));
    ASSERT_EQ(PlayedAdo::parameters.size(), 2U);
    const wchar_t* const values[] = {L"General", L"SingleMan"}; // the category comes first
    for (size_t i = 0; i < 2; ++i) {
      const AppendedParameter& parameter = PlayedAdo::parameters[i];
      EXPECT_EQ(parameter.type, kVarWChar);
      EXPECT_EQ(parameter.direction, kInput);
      EXPECT_EQ(parameter.size, Variant(30));
      EXPECT_EQ(parameter.value, Variant(values[i]));
    }
    // The first row's value comes as it is.
    PlayedAdo::answers = {{true, {L"FValue"}, {{Variant(1.5)}, {L"2"}}, 0},
                          {true, {L"FValue"}, {{Variant::Null()}}, 0}};
    EXPECT_EQ(ReadSystemProfile(frame, L"SingleMan", L"General", 7), Variant(1.5));
    EXPECT_TRUE(ReadSystemProfile(frame, L"SingleMan", L"General", 7).IsNull());
  });
}

TEST(AdoCalls, AnIdentifierIsTakenByAStoredProcedureWithAnOutputParameter) {
  WithPlayedAdo([] {
    const Object function = Unhosted(L"CBomFunction");
    function.Call(L"UpdateBomGroupName", L"D", 3, L"x");
    g_calls.clear();
    PlayedAdo::output = Variant(61);
    EXPECT_EQ(function.Call(L"GetMaxNum", L"ICBOM"), Variant(61));
    EXPECT_EQ(g_calls, (Texts{L"CommandType=4", L"CommandText=GetICMaxNum",
                              L"ActiveConnection=the connection", L"Execute"}));
    ASSERT_EQ(PlayedAdo::parameters.size(), 2U);
    const AppendedParameter& table = PlayedAdo::parameters[0];
    EXPECT_EQ(table.name, L"@TableName");
    EXPECT_EQ(table.type, kVarChar);
    EXPECT_EQ(table.direction, kInput);
    EXPECT_EQ(table.size, Variant(50));
    EXPECT_EQ(table.value, Variant(L"ICBOM"));
    const AppendedParameter& id = PlayedAdo::parameters[1];
    EXPECT_EQ(id.name, L"@FInterID");
    EXPECT_EQ(id.type, kInteger);
    EXPECT_EQ(id.direction, kOutput);
    EXPECT_EQ(id.size, Variant(0));
    EXPECT_TRUE(id.value.IsMissing());
  });
}

} // namespace
} // namespace mbom::test
