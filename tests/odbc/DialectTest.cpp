// Statements for a server whose driver gets them as one text.
#include "odbc/Dialect.h"

#include <gtest/gtest.h>

#include "com/Text.h"
#include "tests/support/Printing.h"

namespace odbc {
namespace {

using tsql::TypeId;
using Kind = tsql::Value::Kind;

tsql::Parameter Text(std::string_view text, TypeId type = TypeId::VarChar) {
  tsql::Parameter parameter;
  parameter.type = {.id = type, .length = 20};
  parameter.value.kind = Kind::Text;
  parameter.value.text = text;
  return parameter;
}

tsql::Parameter Integer(int64_t number) {
  tsql::Parameter parameter;
  parameter.value.kind = Kind::Integer;
  parameter.value.integer = number;
  return parameter;
}

std::string With(std::wstring_view batch, std::initializer_list<tsql::Parameter> parameters) {
  return com::ToUtf8(WithLiterals(batch, {parameters.begin(), parameters.size()}, Dialect::TransactSql));
}

std::string Literal(const tsql::Value& value, TypeId type = TypeId::VarChar,
                    Dialect dialect = Dialect::TransactSql) {
  return com::ToUtf8(LiteralOf(value, {.id = type}, dialect));
}

tsql::Value Exact(uint64_t low, uint64_t high, uint8_t scale, bool negative) {
  tsql::Value value;
  value.kind = Kind::Decimal;
  value.decimal = {low, high, scale, negative};
  return value;
}

TEST(Literal, OfATextDoublesItsQuotesAndSaysWhetherItIsUnicode) {
  EXPECT_EQ(Literal(Text("it's").value), "'it''s'");
  EXPECT_EQ(Literal(Text("自行车").value, TypeId::NVarChar), "N'自行车'");
  EXPECT_EQ(Literal(Text("自行车").value, TypeId::NText, Dialect::Sqlite), "'自行车'");
  EXPECT_EQ(Literal({}), "NULL");
}

TEST(Literal, OfAnExactNumberHasAllItsDigits) {
  EXPECT_EQ(Literal(Exact(12345, 0, 3, false)), "12.345");
  EXPECT_EQ(Literal(Exact(5, 0, 4, true)), "-0.0005");
  EXPECT_EQ(Literal(Exact(0, 0, 0, false)), "0");
  EXPECT_EQ(Literal(Exact(0, 0, 2, false)), "0.00");
  // 10^38 - 1, the largest one.
  EXPECT_EQ(Literal(Exact(0x098A223FFFFFFFFF, 0x4B3B4CA85A86C47A, 38, true)),
            "-0.99999999999999999999999999999999999999");
}

TEST(Literal, OfAFloatHasAnExponent) {
  tsql::Value value;
  value.kind = Kind::Float;
  value.real = 0.25;
  EXPECT_EQ(Literal(value), "2.5e-01");
  value.real = -3;
  EXPECT_EQ(Literal(value), "-3e+00");
}

TEST(Literal, OfAMomentIsReadTheSameInEveryLanguage) {
  tsql::Value value;
  value.kind = Kind::DateTime;
  // 2026-03-05 is day 46084; 14:30:09.003.
  value.datetime = {46084, ((14 * 60 + 30) * 60 + 9) * 300 + 1};
  EXPECT_EQ(Literal(value), "'2026-03-05T14:30:09.003'");
  EXPECT_EQ(Literal(value, TypeId::DateTime, Dialect::Sqlite), "'2026-03-05 14:30:09.003'");
  value.datetime = {-53690, 300 * 86400 - 1};
  EXPECT_EQ(Literal(value), "'1753-01-01T23:59:59.997'");
}

TEST(Literal, OfBytesIsHexadecimal) {
  tsql::Value value;
  value.kind = Kind::Bytes;
  value.text = std::string_view("\0\xFF\x1A", 3);
  EXPECT_EQ(Literal(value), "0x00FF1A");
  EXPECT_EQ(Literal(value, TypeId::VarBinary, Dialect::Sqlite), "X'00FF1A'");
}

TEST(WithLiterals, FillsMarkersInOrder) {
  EXPECT_EQ(With(L"SELECT ?, ?", {Integer(1), Text("x")}), "SELECT  1 ,  'x' ");
  EXPECT_EQ(With(L"SELECT ?", {}), "SELECT ?");
  EXPECT_EQ(With(L"SELECT ?, ?", {Integer(1)}), "SELECT  1 , ?") << "the server refuses it";
}

TEST(WithLiterals, KeepsANumberApartFromItsNeighbours) {
  EXPECT_EQ(With(L"SELECT n-? FROM t", {Integer(-5)}), "SELECT n- -5  FROM t");
  EXPECT_EQ(With(L"WHERE n=?AND 1=1", {Integer(5)}), "WHERE n= 5 AND 1=1");
}

TEST(WithLiterals, LeavesTextsNamesAndCommentsAlone) {
  for (const wchar_t* opaque : {L"'?''?'", L"\"?\"", L"[?]]?]", L"--?\n", L"/*?/*?*/?*/"}) {
    const std::string expected = com::ToUtf8(opaque) + " 7 ";
    EXPECT_EQ(With(std::wstring(opaque) + L"?", {Integer(7)}), expected);
  }
  EXPECT_EQ(With(L"SELECT 'open ?", {Integer(7)}), "SELECT 'open ?");
  EXPECT_EQ(With(L"-? / ?", {Integer(1), Integer(2)}), "- 1  /  2 ");
}

TEST(Dialect, KnowsWhatOutlivesABatch) {
  EXPECT_TRUE(LeavesTraces(L"SELECT * INTO #t FROM t", Dialect::TransactSql));
  EXPECT_TRUE(LeavesTraces(L"SELECT * FROM ##all", Dialect::TransactSql));
  EXPECT_FALSE(LeavesTraces(L"UPDATE t SET a = 1", Dialect::TransactSql));
  EXPECT_TRUE(LeavesTraces(L"create temp table x (a)", Dialect::Sqlite));
  EXPECT_FALSE(LeavesTraces(L"create table x (a)", Dialect::Sqlite));
}

TEST(Dialect, IsTransactSqlButForSqlite) {
  EXPECT_EQ(DialectOf(L"SQLite"), Dialect::Sqlite);
  EXPECT_EQ(DialectOf(L"Microsoft SQL Server"), Dialect::TransactSql);
  EXPECT_EQ(DialectOf(L""), Dialect::TransactSql);
}

} // namespace
} // namespace odbc
