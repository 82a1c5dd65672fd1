// A provider whose rows are lost half-way, that yields no recordset where there was one before, or whose
// procedure sets no number: ADO is the test's own.
#include <gtest/gtest.h>

#include "tests/support/Client.h"
#include "tests/support/PlayedAdo.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

TEST(PlayedRows, CheckBomUsedKeepsTheListAsFarAsItWasBuilt) {
  for (size_t failingRow = 1; failingRow <= 3; ++failingRow) {
    WithPlayedAdo([failingRow] {
      PlayedAdo::answers = {{true,
                             {L"FTableName", L"FBomInterID"},
                             {{L"成本对象表", 1}, {L"销售订单", 1}, {L"more", 1}},
                             failingRow}};
      Variant info(L"as it came");
      EXPECT_EQ(Unhosted(L"BomUpdate").Call(L"CheckBomUsed", L"Language=chs", 1, Variant::Reference(info)),
                Variant(-1));
      std::wstring list;
      if (failingRow > 1) list += L"该BOM在 成本对象表 中已经被引用。\r\n";
      if (failingRow > 2) list += L"该BOM在 销售订单 中已经被引用。\r\n";
      EXPECT_EQ(info, Variant(list));
      EXPECT_EQ(NumberedContexts::Votes(), Texts{L"2 VoteAbort"});
    });
  }
}

// A BOM that may be un-audited by anybody, and the two settings that say so.
PlayedRows AuditedBom() {
  return {true, {L"FInterID", L"FBillNo", L"FCheckID", L"FStatus", L"FCheckerID"}, {{7, L"B7", 4, 1, 6}}, 0};
}
PlayedRows Setting(const wchar_t* value) {
  return {true, {L"FValue"}, {{value}}, 0};
}

TEST(PlayedRows, UndoIsRefusedWhenTheReferenceQueryYieldsNoRecordset) {
  WithPlayedAdo([] {
    PlayedAdo::answers = {AuditedBom(), Setting(L"0"), {false, {}, {}, 0}};
    Variant message(L"as it came");
    EXPECT_EQ(Unhosted(L"CBomCheck")
                  .Call(L"BomUndoCheck", L"Language=chs", 7, L"N", 5, 0, Variant::Reference(message)),
              Variant(2));
    EXPECT_EQ(message, Variant(L"BOM[编号：N]反审核没有成功。原因为：检查BOM是否被引用时出现错误，"
                               L"请检查参数是否正确。"));
    EXPECT_EQ(NumberedContexts::Votes(), Texts{L"2 VoteAbort"});
    for (const std::wstring& call : PlayedAdo::calls)
      EXPECT_FALSE(call.starts_with(L"Execute  Update")) << com::ToUtf8(call);
    ASSERT_EQ(PlayedAdo::opened.size(), 2U); // the BOM and the references
    EXPECT_TRUE(PlayedAdo::opened[1].source.starts_with(L" select top 1 '成本对象表' as FTableName"));
  });
}

TEST(PlayedRows, UndoFailsWhenTheReferencesAreLostHalfWay) {
  WithPlayedAdo([] {
    PlayedAdo::answers = {
        AuditedBom(), Setting(L"0"), {true, {L"FTableName"}, {{L"成本对象表"}, {L"销售订单"}}, 2}};
    Variant message(L"as it came");
    EXPECT_EQ(Unhosted(L"CBomCheck")
                  .Call(L"BomUndoCheck", L"Language=chs", 7, L"N", 5, 0, Variant::Reference(message)),
              Variant(0));
    EXPECT_EQ(message, Variant(L"BOM[编号：N]反审核没有成功。原因为：出现意外错误。the row was lost"));
    EXPECT_EQ(NumberedContexts::Votes(), Texts{L"2 VoteAbort"});
  });
}

TEST(PlayedRows, GetMaxNumTakesTheNumberThatTheOutputBeginsWith) {
  WithPlayedAdo([] {
    const Object function = Unhosted(L"CBomFunction");
    function.Call(L"UpdateBomGroupName", L"D", 3, L"x");
    const auto number = [&](const Variant& output) {
      PlayedAdo::output = output;
      return function.Call(L"GetMaxNum", L"ICBOM");
    };
    EXPECT_EQ(number(Variant(61)), Variant(61));
    EXPECT_EQ(number(Variant(L"  62 ")), Variant(62));
    EXPECT_EQ(number(Variant(L"63rd")), Variant(63));
    EXPECT_EQ(number(Variant(L"no number")), Variant(0));
    EXPECT_EQ(number(Variant(L"")), Variant(0));
    EXPECT_EQ(number(Variant()), Variant(0));
    NumberedContexts::calls.clear();
    EXPECT_TRUE(FAILED(RaisedBy([&] { number(Variant::Null()); }).code));
    EXPECT_EQ(NumberedContexts::calls, Texts{}); // it sets nothing up and casts no vote
  });
}

} // namespace
} // namespace mbom::test
