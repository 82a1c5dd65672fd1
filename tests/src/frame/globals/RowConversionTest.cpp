#include "src/frame/globals/RowConversion.h"

#include <gtest/gtest.h>

#include "src/frame/Frame.h"
#include "tests/support/Client.h"
#include "tests/support/Collections.h"
#include "tests/support/Printing.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;
using Texts = std::vector<std::wstring>;

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
