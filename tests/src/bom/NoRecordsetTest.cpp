// A provider that hands back nothing where a recordset is expected, none that is open or none with a row:
// played by a data-access library, a connection and recordsets of the test's own.
#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/PlayedDataAccess.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

// What the test that runs calls, and how it is answered.
std::vector<std::wstring>& g_calls = PlayedDataAccess::calls;
bool g_emptyAnswers = false;

// Never open, and at its end.
class MuteRecordset {
 public:
  int32_t State() const { return 0; }
  bool Eof() const { return true; }
  void PutActiveConnection(const Variant& /*connection*/) {}
  void PutCursorLocation(int32_t location) { EXPECT_EQ(location, 3); }
  void PutCursorType(int32_t type) { EXPECT_EQ(type, 3); }
  void Open(const std::wstring& source, const Variant& /*connection*/, int32_t cursorType, int32_t lockType,
            int32_t options) {
    EXPECT_EQ(cursorType, -1);
    EXPECT_EQ(lockType, -1);
    EXPECT_EQ(options, -1);
    g_calls.push_back(source);
  }
};

class MuteConnection {
 public:
  Object Execute(const std::wstring& text, const Variant& /*affected*/, int32_t /*options*/) {
    g_calls.push_back(text);
    return g_emptyAnswers ? com::ToObject(com::Make<MuteRecordset>()) : Object();
  }
};

} // namespace
} // namespace mbom::test

namespace com {

using namespace mbom::test;

template <>
const DispatchTable& TableOf<MuteRecordset>() {
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&MuteRecordset::State>(1, L"State"),
                    PropertyGet<&MuteRecordset::Eof>(2, L"EOF"),
                    PropertyPut<&MuteRecordset::PutActiveConnection>(3, L"ActiveConnection", {L"value"}),
                    PropertyPut<&MuteRecordset::PutCursorLocation>(4, L"CursorLocation", {L"value"}),
                    PropertyPut<&MuteRecordset::PutCursorType>(5, L"CursorType", {L"value"}),
                    Method<&MuteRecordset::Open>(
                        6, L"Open", {L"source", L"connection", L"cursorType", L"lockType", L"options"}),
                });
  return table;
}
template <>
const DispatchTable& TableOf<MuteConnection>() {
  static const DispatchTable table(
      IID_NULL, {Method<&MuteConnection::Execute>(
                    1, L"Execute", {L"text", {L"affected", Variant::Missing()}, {L"options", -1}})});
  return table;
}

} // namespace com

namespace mbom::test {
namespace {

// Runs `test` where everything is mute.
template <class Test>
void WithMuteProvider(const Test& test) {
  g_emptyAnswers = false;
  InPlayedDataAccess([] { return com::ToObject(com::Make<MuteConnection>()); },
                     [&test] {
                       const Replacement<MuteRecordset> recordset(L"ADODB.Recordset");
                       test();
                     });
}

TEST(NoRecordset, MakesEndSaveFailWithoutAMessage) {
  WithMuteProvider([] {
    Variant message(L"as it came");
    const Object save = MakeVector({MakeDictionary({{L"FInterID", 1}})});
    EXPECT_FALSE(Unhosted(L"BomUpdate").Call(L"EndSave", L"", save, Variant::Reference(message)).AsBool());
    EXPECT_EQ(message, Variant(L"as it came"));
    EXPECT_EQ(g_calls, (std::vector<std::wstring>{
                           L"VoteAbort", L"select FEcnInterId from IcBom where FInterId = 1", L"VoteAbort"}));
  });
}

TEST(NoRecordset, MakesAddBomGroupFailWithTheIdZeroWhenThereIsNoRow) {
  WithMuteProvider([] {
    g_emptyAnswers = true;
    Variant id(7);
    const Object group = MakeDictionary({{L"FParentID", 0}});
    EXPECT_FALSE(Unhosted(L"BomUpdate").Call(L"AddBomGroup", L"", group, Variant::Reference(id)).AsBool());
    EXPECT_EQ(id, Variant(0));
    ASSERT_EQ(g_calls.size(), 3u);
    EXPECT_EQ(g_calls.front(), L"VoteAbort");
    EXPECT_EQ(g_calls.back(), L"VoteAbort");
  });
}

TEST(NoRecordset, MakesDeleteBomAnswerFalseWhenThereIsNoRow) {
  WithMuteProvider([] {
    g_emptyAnswers = true;
    EXPECT_FALSE(Unhosted(L"BomUpdate").Call(L"DeleteBom", L"", L"FInterID=1").AsBool());
    EXPECT_EQ(g_calls.back(), L"VoteComplete");
  });
}

TEST(NoRecordset, MakesCheckBomUsedFailWithAMessage) {
  WithMuteProvider([] {
    Variant info(L"as it came");
    EXPECT_EQ(Unhosted(L"BomUpdate").Call(L"CheckBomUsed", L"Language=chs", 1, Variant::Reference(info)),
              Variant(-1));
    EXPECT_EQ(info, Variant(L"检查BOM是否被引用时出现错误，请检查参数是否正确。"));
    EXPECT_EQ(g_calls.back(), L"VoteAbort");
  });
}

TEST(NoRecordset, MakesTheChecksOfAChangeNoticeFailWithAMessageOrFindNothing) {
  WithMuteProvider([] {
    const Object ecn = Unhosted(L"CEcnInfo");
    Variant info(L"as it came");
    const auto check = [&] {
      return ecn.Call(L"CheckBomUsed", L"Language=chs", 1, L"B1", Variant::Reference(info));
    };
    EXPECT_EQ(check(), Variant(-1));
    EXPECT_EQ(info, Variant(L"检查BOM是否被引用时出现错误，请检查参数是否正确。"));
    EXPECT_EQ(g_calls.size(), 2u); // a query and an abort
    EXPECT_EQ(g_calls.back(), L"VoteAbort");
    EXPECT_EQ(ecn.Call(L"GetCheckCBomNoChecked", L"", 1), Variant(false));
    EXPECT_EQ(g_calls.back(), L"VoteComplete");

    // No later notice, and a usage query that yields no rows.
    g_emptyAnswers = true;
    EXPECT_EQ(check(), Variant(-1));
    EXPECT_EQ(info, Variant(L""));
    EXPECT_EQ(g_calls.back(), L"VoteAbort");
  });
}

TEST(NoRecordset, MakesTheAuditChecksRefuse) {
  WithMuteProvider([] {
    const Object check = Unhosted(L"CBomCheck");
    const std::wstring dsn = L"Language=chs";
    Variant message(L"");
    EXPECT_EQ(check.Call(L"BomCheck", dsn, 1, L"N", 5, Variant::Reference(message)), Variant(2));
    EXPECT_EQ(message,
              Variant(L"BOM[编号：N]审核没有成功。原因为：读取BOM数据出现错误，请检查参数是否正确。"));
    EXPECT_EQ(check.Call(L"BomUndoCheck", dsn, 1, L"N", 5, 0, Variant::Reference(message)), Variant(2));
    EXPECT_EQ(message,
              Variant(L"BOM[编号：N]反审核没有成功。原因为：读取BOM数据出现错误，请检查参数是否正确。"));
    EXPECT_EQ(check.Call(L"GetBomDelInfo", dsn, 1, L"N", Variant::Reference(message)), Variant(0));
    EXPECT_EQ(
        message,
        Variant(L"BOM[编号：N]删除没有成功。原因为：检查BOM是否被引用时出现错误，请检查参数是否正确。"));
    EXPECT_EQ(check.Call(L"GetBomModifyInfo", dsn, 1, L"N", Variant::Reference(message)), Variant(0));
    EXPECT_EQ(
        message,
        Variant(L"BOM[编号：N]修改没有成功。原因为：检查BOM是否被引用时出现错误，请检查参数是否正确。"));
    EXPECT_EQ(g_calls.size(), 8u); // each a query and an abort
    EXPECT_EQ(g_calls[1], L"VoteAbort");
    EXPECT_EQ(g_calls[7], L"VoteAbort");
  });
}

} // namespace
} // namespace mbom::test
