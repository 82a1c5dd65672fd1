#include "src/frame/Globals.h"

#include <gtest/gtest.h>

#include "com/PendingError.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"
#include "tests/support/Client.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::ComError;
using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

// ---- GetDsnValue

TEST(GetDsnValue, ReadsAKeyWithAndWithoutAClosingSeparator) {
  EXPECT_EQ(GetDsnValue(L"DSN=x;Language=en", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"DSN=x;Language=en;", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"language=chs;DSN=x", L"Language"), L"chs");
}

TEST(GetDsnValue, FallsBackToTraditionalChinese) {
  EXPECT_EQ(GetDsnValue(L"DSN=x", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language=", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language= ;", L"Language"), L"cht");
  EXPECT_EQ(GetDsnValue(L"Language;en", L"Language"), L"cht");
}

TEST(GetDsnValue, DoesNotTrimAValue) {
  EXPECT_EQ(GetDsnValue(L"Language=chs ;x", L"Language"), L"chs ");
}

TEST(GetDsnValue, MatchesTheKeyAnywhere) {
  EXPECT_EQ(GetDsnValue(L"XLanguage=en;Language=chs", L"Language"), L"en");
  EXPECT_EQ(GetDsnValue(L"A={x;LANGUAGE=en};", L"Language"), L"en}");
}

// ---- LoadResText

TEST(LoadResText, KeepsTheBlanksAroundTheText) {
  EXPECT_EQ(LoadResText(L"  成本对象表 ", L"chs"), L"  成本对象表 ");
  EXPECT_EQ(LoadResText(L"  成本对象表 ", L"en"), L"  Cost Objects ");
  const Trace trace;
  LoadResText(L"  成本对象表 ", L"cht");
  EXPECT_EQ(trace.Details(L"LoadString"), Texts{L"成本对象表"});
}

TEST(LoadResText, PadsEnglishTextsOnly) {
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Both), L" Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Leading), L" Sales Orders");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::Trailing), L"Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", Spacing::None), L"Sales Orders");
  EXPECT_EQ(LoadResText(L"销售订单", L"en", static_cast<Spacing>(7)), L"Sales Orders");
  EXPECT_EQ(LoadResText(L"  销售订单", L"en", Spacing::Both), L"  Sales Orders ");
  EXPECT_EQ(LoadResText(L"销售订单", L"chs", Spacing::Both), L"销售订单");
  EXPECT_EQ(LoadResText(L"销售订单", L"cht", Spacing::Both), L"銷售訂單");
}

TEST(LoadResText, TranslatesTheMarkedPiecesOfACompoundText) {
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B", L"en"), L"ASales OrdersB");
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B", L"cht"), L"A銷售訂單B");
  EXPECT_EQ(LoadResText(L"销售订单^|^", L"en"), L"销售订单");
  EXPECT_EQ(LoadResText(L"^|^~$~ 销售订单 ^|^~$x", L"en", Spacing::Both), L" Sales Orders ~$x");
}

TEST(LoadResText, GivesAnUnknownTextBack) {
  EXPECT_EQ(LoadResText(L"没有译文的文本", L"en"), L"没有译文的文本");
  EXPECT_EQ(LoadResText(L"", L"en"), L"");
  EXPECT_EQ(LoadResText(L"   ", L"en"), L"   ");
}

TEST(LoadResText, PointsTheLoaderAtItsModuleAndLanguage) {
  LoadResText(L"销售订单", L"en");
  namespace names = outside::loader;
  ResourceLoader().Put(names::kResFileBaseName, L"SomebodyElses");
  ResourceLoader().Put(names::kLanguageID, L"chs");
  EXPECT_EQ(LoadResText(L"销售订单", L"en"), L"Sales Orders");
  EXPECT_EQ(ResourceLoader().Get(names::kResFileBaseName).AsText(), L"TarnelManufacture");
  EXPECT_EQ(ResourceLoader().Get(names::kLanguageID).AsText(), L"en");
}

TEST(LoadResText, GivesWhatItHasWhenTheLoaderFails) {
  {
    const Fault fault(L"LoadString");
    EXPECT_EQ(LoadResText(L" 销售订单 ", L"en"), L"");
  }
  const Fault fault(L"LoadString");
  EXPECT_EQ(LoadResText(L"A^|^~$~销售订单^|^B^|^~$~销售订单", L"en"), L"ABSales Orders");
}

TEST(LoadResText, LeavesThePendingErrorAsItWas) {
  ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
  LoadResText(L"销售订单", L"en");
  {
    const Fault fault(L"LoadString");
    const com::PendingError keep; // arming a fault is no part of the test
    ComError(E_ABORT, L"Caller", L"the caller's own").SetOnThread();
    LoadResText(L"销售订单", L"en");
    EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"the caller's own");
  }
  EXPECT_EQ(ComError::FromThread(E_ABORT).description(), L"the caller's own");

  const Fault fault(L"LoadString");
  LoadResText(L"销售订单", L"en");
  com::Ptr<IErrorInfo> none;
  EXPECT_EQ(GetErrorInfo(0, none.Out()), S_FALSE);
}

TEST(LoadResTextFormat, FillsTheMarkersInOrder) {
  EXPECT_EQ(LoadResTextFormat(L"[%1] 至 [%2] / %1", L"chs", {L"甲", 2}), L"[甲] 至 [2] / 甲");
  EXPECT_EQ(LoadResTextFormat(L"单据体第[%1]行物料有效期为 [%2] 至 [%3]", L"chs",
                              {1, L"2020-01-01", L"2020-12-31"}),
            L"单据体第[1]行物料有效期为 [2020-01-01] 至 [2020-12-31]");
}

// ---- the user, the settings

TEST(GetCurrentUserId, AsksTheSecurityServiceAfresh) {
  const TestDatabase database;
  Frame frame;
  frame.OpenDataContext(database.Dsn());
  const Trace trace;
  EXPECT_EQ(GetCurrentUserId(frame), 16394);
  EXPECT_EQ(GetCurrentUserId(frame), 16394);
  EXPECT_EQ(trace.Events(), (Texts{L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo",
                                   L"CreateServerObject\tQorvaneWoskBase.SecurityInfo", L"GetCallerInfo"}));
  const Fault fault(L"CreateServerObject");
  EXPECT_EQ(RaisedBy([&] { GetCurrentUserId(frame); }).code, Fault::kCode);
}

TEST(ReadSystemProfile, ReadsTheSettingOrTheDefault) {
  const TestDatabase database;
  database.Execute(
      L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('General', 'SingleMan', '1')");
  Frame frame;
  frame.OpenDataContext(database.Dsn());
  const Trace trace;
  EXPECT_EQ(ReadSystemProfile(frame, L"SingleMan", L"General"), Variant(L"1"));
  EXPECT_EQ(
      trace.Events(),
      (Texts{L"GetConnection", L"Command\tSelect FValue From t_SystemProfile Where FCategory = ? And FKey = ?"
                               L"\t=General\t=SingleMan"}));
  EXPECT_EQ(ReadSystemProfile(frame, L"NoSuchKey", L"General"), Variant(L""));
  EXPECT_EQ(ReadSystemProfile(frame, L"NoSuchKey", L"General", 7), Variant(7));
  EXPECT_EQ(ReadSystemProfile(frame, L"General", L"SingleMan"), Variant(L""));
  const Fault fault(L"Command");
  EXPECT_EQ(RaisedBy([&] { ReadSystemProfile(frame, L"SingleMan", L"General"); }).code, Fault::kCode);
}

// ---- rows to collections

class RowsTest : public testing::Test {
 protected:
  void SetUp() override {
    database_.Execute(L"INSERT INTO t_SystemProfile (FCategory, FKey, FValue) VALUES ('C', 'A', '1'), "
                      L"('C', 'B', NULL), ('C', 'D', '3')");
    frame_.OpenDataContext(database_.Dsn());
  }
  Recordset Open(const wchar_t* condition) const {
    return frame_.GetConnection().Execute(Sql() << L"SELECT FKey, FValue AS Wert FROM t_SystemProfile WHERE "
                                                << condition << L" ORDER BY FKey");
  }
  static Texts KeysOf(const Object& dictionary) {
    Texts keys;
    const Variant names = dictionary.Call(L"Keys");
    LONG upper = -1;
    SafeArrayGetUBound(names.raw().parray, 1, &upper);
    for (LONG i = 0; i <= upper; ++i) {
      Variant name;
      SafeArrayGetElement(names.raw().parray, &i, name.Out());
      keys.push_back(name.AsText());
    }
    return keys;
  }

  const TestDatabase database_;
  Frame frame_;
};

TEST_F(RowsTest, RowToDictionaryTakesTheCurrentRowInFieldOrder) {
  const Recordset rows = Open(L"1=1");
  rows.MoveNext();
  const Object row = RowToDictionary(rows);
  EXPECT_EQ(KeysOf(row), (Texts{L"FKey", L"Wert"}));
  EXPECT_EQ(row.Get(L"Value", L"fkey"), Variant(L"B"));
  EXPECT_TRUE(row.Get(L"Value", L"WERT").IsNull());
}

TEST_F(RowsTest, RowToDictionaryAtTheEndKnowsTheNames) {
  const Object row = RowToDictionary(Open(L"1=0"));
  EXPECT_EQ(KeysOf(row), (Texts{L"FKey", L"Wert"}));
  EXPECT_TRUE(row.Get(L"Value", L"FKey").IsEmpty());
}

// A recordset of a statement without rows has no fields, and no end either.
TEST_F(RowsTest, RowToDictionaryWithoutFieldsIsEmpty) {
  const Recordset closed = frame_.GetConnection().Execute(Sql() << L"DECLARE @nothing int");
  ASSERT_TRUE(closed);
  EXPECT_NE(RaisedBy([&] { static_cast<void>(closed.Eof()); }).code, S_OK);
  EXPECT_EQ(KeysOf(RowToDictionary(closed)), Texts{});
}

TEST_F(RowsTest, RecordsetToVectorTakesTheRemainingRows) {
  const Recordset all = Open(L"1=1");
  const Object rows = RecordsetToVector(all);
  ASSERT_EQ(rows.Get(L"Count").AsLong(), 3);
  EXPECT_EQ(rows.Get(L"Item", 1).AsObject().Get(L"Value", L"Wert"), Variant(L"1"));
  EXPECT_EQ(rows.Get(L"Item", 3).AsObject().Get(L"Value", L"FKey"), Variant(L"D"));
  EXPECT_TRUE(all.Eof());

  const Recordset rest = Open(L"1=1");
  rest.MoveNext();
  rest.MoveNext();
  EXPECT_EQ(RecordsetToVector(rest).Get(L"Count").AsLong(), 1);
  EXPECT_EQ(RecordsetToVector(Open(L"1=0")).Get(L"Count").AsLong(), 0);
}

TEST_F(RowsTest, RecordsetToVectorTakesManyRowsInTheirOrder) {
  constexpr int32_t kCount = 150;
  const Recordset many = frame_.GetConnection().Execute(
      Sql() << L"SET NOCOUNT ON DECLARE @i int SET @i = 0 CREATE TABLE #many (FID int, FText varchar(10)) "
               L"WHILE @i < "
            << kCount
            << L" BEGIN SET @i = @i + 1 INSERT INTO #many VALUES (@i, 'n' + CAST(@i AS varchar(10))) END "
               L"SELECT FID, FText FROM #many ORDER BY FID DROP TABLE #many");
  const Object rows = RecordsetToVector(many);
  ASSERT_EQ(rows.Get(L"Count").AsLong(), kCount);
  for (int32_t i = 1; i <= kCount; ++i) {
    const Object row = rows.Get(L"Item", i).AsObject();
    EXPECT_EQ(row.Get(L"Value", L"FID"), Variant(i));
    EXPECT_EQ(row.Get(L"Value", L"FText"), Variant(L"n" + std::to_wstring(i)));
  }
  EXPECT_TRUE(many.Eof());
}

} // namespace
} // namespace mbom::test
