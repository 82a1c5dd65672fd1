// Values from the engine to the client, type by type, and the cost of many rows.
#include "standin/ado/RowSet.h"

#include <gtest/gtest.h>

#include "standin/ado/Types.h"
#include "tests/standin/Support.h"

namespace standin::ado {
namespace {

using com::Variant;
using tsql::TypeId;
using Kind = tsql::Value::Kind;

Variant Convert(tsql::Type type, const tsql::Value& value) {
  const tsql::Column column{"c", type, true};
  RowSet rows({&column, 1});
  rows.Append({&value, 1});
  return rows.Value(0, 0);
}

tsql::Value Integer(int64_t number) {
  tsql::Value value;
  value.kind = Kind::Integer;
  value.integer = number;
  return value;
}
tsql::Value Text(std::string_view text) {
  tsql::Value value;
  value.kind = Kind::Text;
  value.text = text;
  return value;
}
tsql::Value Exact(uint64_t low, uint64_t high, uint8_t scale, bool negative) {
  tsql::Value value;
  value.kind = Kind::Decimal;
  value.decimal = {low, high, scale, negative};
  return value;
}
tsql::Value Moment(int32_t days, int32_t ticks) {
  tsql::Value value;
  value.kind = Kind::DateTime;
  value.datetime = {days, ticks};
  return value;
}

TEST(RowSet, GivesWholeNumbersInTheirColumnsType) {
  EXPECT_EQ(Convert({.id = TypeId::Int}, Integer(-7)), Variant(-7));
  EXPECT_EQ(Convert({.id = TypeId::SmallInt}, Integer(-7)), Variant(static_cast<int16_t>(-7)));
  EXPECT_EQ(Convert({.id = TypeId::Bit}, Integer(1)), Variant(true));
  const Variant tiny = Convert({.id = TypeId::TinyInt}, Integer(255));
  EXPECT_EQ(tiny.type(), VT_UI1);
  EXPECT_EQ(tiny.raw().bVal, 255);
  const Variant big = Convert({.id = TypeId::BigInt}, Integer(9007199254740993));
  EXPECT_EQ(big.type(), VT_I8);
  EXPECT_EQ(big.raw().llVal, 9007199254740993);
}

// Texts of odd lengths before numbers that have to be aligned, in more rows than lie in one block.
TEST(RowSet, KeepsManyRowsOfAllLengths) {
  const std::array columns{tsql::Column{"t", {.id = TypeId::NVarChar}, true},
                           tsql::Column{"d", {.id = TypeId::Decimal, .precision = 10}, true}};
  constexpr size_t kRows = 1000;
  const auto textOf = [](size_t i) { return std::string(i % 7, static_cast<char>('a' + i % 26)); };
  RowSet rows(columns);
  for (size_t i = 0; i < kRows; ++i) {
    const std::string text = textOf(i);
    rows.Append(std::array{Text(text), Exact(i, 0, 0, false)});
  }
  ASSERT_EQ(rows.rowCount(), kRows);
  for (size_t i = 0; i < kRows; ++i) {
    const std::string text = textOf(i);
    EXPECT_EQ(rows.Value(i, 0), Variant(std::wstring(text.begin(), text.end()))) << i;
    EXPECT_EQ(rows.Value(i, 1).AsLong(), static_cast<int32_t>(i));
  }
}

TEST(RowSet, TellsWhatRepeatsFromWhatDoesNot) {
  const std::array columns{tsql::Column{"t", {.id = TypeId::NVarChar}, true},
                           tsql::Column{"d", {.id = TypeId::Decimal, .precision = 10, .scale = 2}, true}};
  const tsql::Value null;
  const std::vector<std::array<tsql::Value, 2>> values{
      {Text("a"), Exact(150, 0, 2, false)},
      {Text("a"), Exact(150, 0, 2, false)},
      {Text("ab"), Exact(150, 0, 2, true)},
      {Text("A"), Exact(151, 0, 2, true)},
      {null, null},
      {Text("A"), Exact(151, 0, 2, true)},
      {Text(""), Exact(0, 1, 2, false)},
      {Text("b"), Exact(0, 0, 2, false)},
  };
  RowSet rows(columns);
  for (const auto& row : values) rows.Append(row);
  const std::array texts{L"a", L"a", L"ab", L"A", L"", L"A", L"", L"b"};
  const std::array decimals{L"1.5", L"1.5", L"-1.5", L"-1.51", L"", L"-1.51", L"184467440737095516.16", L"0"};
  for (size_t i = 0; i < values.size(); ++i) {
    const bool isNull = i == 4;
    EXPECT_EQ(rows.Value(i, 0).IsNull(), isNull) << i;
    EXPECT_EQ(rows.Value(i, 1).IsNull(), isNull) << i;
    if (isNull) continue;
    EXPECT_EQ(rows.Value(i, 0), Variant(texts[i])) << i;
    EXPECT_EQ(rows.Value(i, 1).AsText(), decimals[i]) << i;
  }
}

TEST(RowSet, GivesNullForEveryType) {
  EXPECT_TRUE(Convert({.id = TypeId::Int}, {}).IsNull());
  EXPECT_TRUE(Convert({.id = TypeId::NVarChar, .length = 10}, {}).IsNull());
}

TEST(RowSet, GivesExactNumbersExactly) {
  const Variant number = Convert({.id = TypeId::Decimal, .precision = 28, .scale = 10},
                                 Exact(12345678901234567890U, 5, 10, true));
  ASSERT_EQ(number.type(), VT_DECIMAL);
  EXPECT_EQ(number.raw().decVal.Lo64, 12345678901234567890U);
  EXPECT_EQ(number.raw().decVal.Hi32, 5U);
  EXPECT_EQ(number.raw().decVal.scale, 10);
  EXPECT_EQ(number.raw().decVal.sign, DECIMAL_NEG);
  EXPECT_EQ(Convert({.id = TypeId::Decimal, .precision = 5, .scale = 2}, Exact(12345, 0, 2, true)).AsText(),
            L"-123.45");
  const Variant money =
      Convert({.id = TypeId::Money, .precision = 19, .scale = 4}, Exact(123400, 0, 4, true));
  EXPECT_EQ(money.type(), VT_CY);
  EXPECT_EQ(money.raw().cyVal.int64, -123400);
}

TEST(RowSet, RefusesAnExactNumberThatTheClientsTypeCannotHold) {
  const auto convert = [](const tsql::Value& value) {
    return test::RaisedBy([&] {
             Convert({.id = TypeId::Decimal, .precision = 38, .scale = value.decimal.scale}, value);
           })
        .code;
  };
  EXPECT_EQ(convert(Exact(0, 0x1'0000'0000, 0, false)), DISP_E_OVERFLOW);
  EXPECT_EQ(convert(Exact(1, 0, 29, false)), DISP_E_OVERFLOW);
  EXPECT_EQ(convert(Exact(~0ULL, 0xFFFF'FFFF, 28, false)), 0);
}

TEST(RowSet, GivesFloatingNumbers) {
  tsql::Value value;
  value.kind = Kind::Float;
  value.real = 0.5;
  EXPECT_EQ(Convert({.id = TypeId::Float}, value), Variant(0.5));
  const Variant real = Convert({.id = TypeId::Real}, value);
  EXPECT_EQ(real.type(), VT_R4);
  EXPECT_EQ(real.raw().fltVal, 0.5F);
}

TEST(RowSet, GivesTextsAndIdentifiers) {
  EXPECT_EQ(Convert({.id = TypeId::VarChar, .length = 20}, Text("自行车 a")), Variant(L"自行车 a"));
  EXPECT_EQ(Convert({.id = TypeId::NVarChar, .length = 20}, Text("")), Variant(L""));
  EXPECT_EQ(Convert({.id = TypeId::NText, .length = -1}, Text("\xF0\x9F\x9A\xB2")), Variant(L"\U0001F6B2"));
  EXPECT_EQ(Convert({.id = TypeId::UniqueIdentifier}, Text("6F9619FF-8B86-D011-B42D-00C04FC964FF")),
            Variant(L"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"));
  tsql::Value bytes = Text(std::string_view("\0\xFF", 2));
  bytes.kind = Kind::Bytes;
  const Variant array = Convert({.id = TypeId::VarBinary, .length = 10}, bytes);
  ASSERT_EQ(array.type(), VT_ARRAY | VT_UI1);
  LONG last = -1;
  SafeArrayGetUBound(array.raw().parray, 1, &last);
  ASSERT_EQ(last, 1);
  BYTE second = 0;
  SafeArrayGetElement(array.raw().parray, &last, &second);
  EXPECT_EQ(second, 0xFF);
}

TEST(RowSet, GivesDatesAsAutomationCountsThem) {
  // 1899-12-30 is day 0; before it the time of day still counts forwards.
  EXPECT_EQ(Convert({.id = TypeId::DateTime}, Moment(0, 0)), Variant::Date(2));
  EXPECT_EQ(Convert({.id = TypeId::DateTime}, Moment(43829, 300 * 43200)), Variant::Date(43831.5));
  EXPECT_EQ(Convert({.id = TypeId::DateTime}, Moment(-2, 300 * 21600)), Variant::Date(0.25));
  EXPECT_EQ(Convert({.id = TypeId::DateTime}, Moment(-3, 300 * 21600)), Variant::Date(-1.25));
}

// The provider is older than these types.
TEST(RowSet, GivesLaterMomentsAsTexts) {
  EXPECT_EQ(Convert({.id = TypeId::Date}, Moment(43829, 0)), Variant(L"2020-01-01"));
  EXPECT_EQ(Convert({.id = TypeId::Date}, Moment(-693595, 0)), Variant(L"0001-01-01"));
  EXPECT_EQ(Convert({.id = TypeId::Time, .scale = 7}, Text("10:11:12.1234567")),
            Variant(L"10:11:12.1234567"));
  const auto sizeOf = [](const tsql::Type& type) {
    const FieldType field = FieldTypeOf(type);
    EXPECT_EQ(field.type, DataType::VarWChar);
    return field.definedSize;
  };
  EXPECT_EQ(sizeOf({.id = TypeId::Date}), 10);
  EXPECT_EQ(sizeOf({.id = TypeId::Time, .scale = 7}), 16);
  EXPECT_EQ(sizeOf({.id = TypeId::Time, .scale = 0}), 8);
  EXPECT_EQ(sizeOf({.id = TypeId::DateTime2, .scale = 7}), 27);
  EXPECT_EQ(sizeOf({.id = TypeId::DateTime2, .scale = 3}), 23);
}

TEST(Types, TakeDatesBackAsTheyGaveThem) {
  constexpr int32_t kTicksPerDay = 300 * 86400;
  for (const tsql::DateTime moment :
       {tsql::DateTime{0, 0}, tsql::DateTime{46084, 299}, tsql::DateTime{-2, 1}, tsql::DateTime{-3, 150},
        tsql::DateTime{-53690, kTicksPerDay - 1}, tsql::DateTime{2958463, kTicksPerDay - 1}})
    EXPECT_EQ(ToDateTime(ToDate(moment)), moment) << moment.days << ' ' << moment.ticks;
  EXPECT_EQ(ToDateTime(43831.999999999), (tsql::DateTime{43830, 0})) << "rounds up to the next day";
}

TEST(RowSet, FindsItsColumnsInAnyCase) {
  const std::vector<tsql::Column> columns{
      {"FInterID", {}, true}, {"", {}, true}, {"编号", {}, true}, {"finterid", {}, true}};
  const RowSet rows(columns);
  EXPECT_EQ(rows.FindColumn(L"FINTERID"), 0U);
  EXPECT_EQ(rows.FindColumn(L"编号"), 2U);
  EXPECT_EQ(rows.FindColumn(L"FInter"), 4U);
}

TEST(RowSet, KeepsManyRowsInLittleMemory) {
  const std::vector<tsql::Column> columns{{"a", {.id = TypeId::Int}, true},
                                          {"b", {.id = TypeId::NVarChar, .length = 40}, true}};
  RowSet rows(columns);
  constexpr int kRows = 20000;
  for (int i = 0; i < kRows; ++i) {
    const std::string text = "row number " + std::to_string(i);
    const std::array<tsql::Value, 2> row{Integer(i), Text(text)};
    rows.Append(row);
  }
  ASSERT_EQ(rows.rowCount(), static_cast<size_t>(kRows));
  EXPECT_EQ(rows.Value(kRows - 1, 0), Variant(kRows - 1));
  EXPECT_EQ(rows.Value(0, 1), Variant(L"row number 0"));
  EXPECT_EQ(rows.Value(kRows - 1, 1), Variant(L"row number 19999"));
  EXPECT_EQ(rows.ActualSize(0, 1), 24); // twelve characters of two bytes
}

} // namespace
} // namespace standin::ado
