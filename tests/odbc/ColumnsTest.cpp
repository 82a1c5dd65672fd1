#include "odbc/Columns.h"

#include <gtest/gtest.h>

#include "odbc/Api.h"

namespace odbc {
namespace {

using tsql::Type;
using tsql::TypeId;

TEST(TypeOf, FollowsTheServersNameOfTheType) {
  EXPECT_EQ(TypeOf(L"money", SQL_DECIMAL, 19, 4), (Type{.id = TypeId::Money, .precision = 19, .scale = 4}));
  EXPECT_EQ(TypeOf(L"smallmoney", SQL_DECIMAL, 10, 4),
            (Type{.id = TypeId::SmallMoney, .precision = 10, .scale = 4}));
  EXPECT_EQ(TypeOf(L"decimal", SQL_DECIMAL, 28, 10),
            (Type{.id = TypeId::Decimal, .precision = 28, .scale = 10}));
  EXPECT_EQ(TypeOf(L"INT identity", SQL_INTEGER, 10, 0), (Type{.id = TypeId::Int}));
  EXPECT_EQ(TypeOf(L"decimal() identity", SQL_DECIMAL, 9, 0), (Type{.id = TypeId::Decimal, .precision = 9}));
  EXPECT_EQ(TypeOf(L"smalldatetime", SQL_TYPE_TIMESTAMP, 16, 0), (Type{.id = TypeId::SmallDateTime}));
}

TEST(TypeOf, KnowsTextsWithoutALimit) {
  EXPECT_EQ(TypeOf(L"varchar", SQL_VARCHAR, 20, 0), (Type{.id = TypeId::VarChar, .length = 20}));
  EXPECT_EQ(TypeOf(L"varchar", SQL_VARCHAR, 0, 0), (Type{.id = TypeId::VarChar, .length = -1}));
  EXPECT_EQ(TypeOf(L"nvarchar", SQL_WLONGVARCHAR, 0x3FFFFFFF, 0),
            (Type{.id = TypeId::NVarChar, .length = -1}));
  EXPECT_EQ(TypeOf(L"text", SQL_LONGVARCHAR, 0x7FFFFFFF, 0), (Type{.id = TypeId::Text, .length = -1}));
  EXPECT_EQ(TypeOf(L"varbinary", SQL_VARBINARY, 8000, 0), (Type{.id = TypeId::VarBinary, .length = 8000}));
}

TEST(TypeOf, TakesOdbcsNumberForANameThatItDoesNotKnow) {
  EXPECT_EQ(TypeOf(L"double", SQL_DOUBLE, 53, 0), (Type{.id = TypeId::Float}));
  EXPECT_EQ(TypeOf(L"", SQL_WVARCHAR, 7, 0), (Type{.id = TypeId::NVarChar, .length = 7}));
  EXPECT_EQ(TypeOf(L"rowversion", SQL_BINARY, 8, 0), (Type{.id = TypeId::Binary, .length = 8}));
  constexpr SQLSMALLINT kTime2 = -154;
  EXPECT_EQ(TypeOf(L"time", kTime2, 16, 7), (Type{.id = TypeId::NVarChar, .length = 16}))
      << "anything can be read as text";
}

} // namespace
} // namespace odbc
