#include "odbc/Columns.h"

#include <algorithm>
#include <array>
#include <optional>

#include "com/Text.h"
#include "odbc/Error.h"

namespace odbc {
namespace {

using tsql::TypeId;

struct NamedType {
  const wchar_t* name;
  TypeId id;
};

constexpr std::array kNamedTypes{
    NamedType{L"tinyint", TypeId::TinyInt},
    NamedType{L"smallint", TypeId::SmallInt},
    NamedType{L"int", TypeId::Int},
    NamedType{L"bigint", TypeId::BigInt},
    NamedType{L"bit", TypeId::Bit},
    NamedType{L"decimal", TypeId::Decimal},
    NamedType{L"numeric", TypeId::Decimal},
    NamedType{L"money", TypeId::Money},
    NamedType{L"smallmoney", TypeId::SmallMoney},
    NamedType{L"float", TypeId::Float},
    NamedType{L"real", TypeId::Real},
    NamedType{L"char", TypeId::Char},
    NamedType{L"varchar", TypeId::VarChar},
    NamedType{L"text", TypeId::Text},
    NamedType{L"nchar", TypeId::NChar},
    NamedType{L"nvarchar", TypeId::NVarChar},
    NamedType{L"ntext", TypeId::NText},
    NamedType{L"datetime", TypeId::DateTime},
    NamedType{L"datetime2", TypeId::DateTime},
    NamedType{L"smalldatetime", TypeId::SmallDateTime},
    NamedType{L"date", TypeId::Date},
    NamedType{L"binary", TypeId::Binary},
    NamedType{L"varbinary", TypeId::VarBinary},
    NamedType{L"image", TypeId::Image},
    NamedType{L"uniqueidentifier", TypeId::UniqueIdentifier},
};

std::optional<TypeId> ByName(std::wstring_view typeName) {
  // "int identity", "decimal() identity".
  const std::wstring_view name = typeName.substr(0, typeName.find_first_of(L" ("));
  const auto* const found = std::ranges::find_if(
      kNamedTypes, [&](const NamedType& type) { return com::EqualsNoCase(type.name, name); });
  return found == kNamedTypes.end() ? std::nullopt : std::optional(found->id);
}

TypeId ByNumber(SQLSMALLINT sqlType) {
  switch (sqlType) {
  case SQL_TINYINT: return TypeId::TinyInt;
  case SQL_SMALLINT: return TypeId::SmallInt;
  case SQL_INTEGER: return TypeId::Int;
  case SQL_BIGINT: return TypeId::BigInt;
  case SQL_BIT: return TypeId::Bit;
  case SQL_DECIMAL:
  case SQL_NUMERIC: return TypeId::Decimal;
  case SQL_FLOAT:
  case SQL_DOUBLE: return TypeId::Float;
  case SQL_REAL: return TypeId::Real;
  case SQL_CHAR: return TypeId::Char;
  case SQL_VARCHAR: return TypeId::VarChar;
  case SQL_LONGVARCHAR: return TypeId::Text;
  case SQL_WCHAR: return TypeId::NChar;
  case SQL_WLONGVARCHAR: return TypeId::NText;
  case SQL_BINARY: return TypeId::Binary;
  case SQL_VARBINARY: return TypeId::VarBinary;
  case SQL_LONGVARBINARY: return TypeId::Image;
  case SQL_TYPE_TIMESTAMP: return TypeId::DateTime;
  case SQL_TYPE_DATE: return TypeId::Date;
  case SQL_GUID: return TypeId::UniqueIdentifier;
  // Whatever else a server has can be read as text.
  default: return TypeId::NVarChar;
  }
}

std::wstring TypeName(SQLHSTMT statement, SQLUSMALLINT column) {
  std::array<wchar_t, 128> name{};
  SQLSMALLINT bytes = 0;
  const SQLRETURN result =
      SQLColAttributeW(statement, column, SQL_DESC_TYPE_NAME, name.data(),
                       static_cast<SQLSMALLINT>(name.size() * sizeof(wchar_t)), &bytes, nullptr);
  return SQL_SUCCEEDED(result) ? std::wstring(name.data()) : std::wstring();
}

} // namespace

tsql::Type TypeOf(std::wstring_view typeName, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT decimals) {
  // The longest char, varchar or varbinary that is not (max).
  constexpr SQLULEN kLongest = 8000;
  tsql::Type type{.id = ByName(typeName).value_or(ByNumber(sqlType))};
  switch (type.id) {
  case TypeId::Decimal:
    type.precision = static_cast<uint8_t>(std::min<SQLULEN>(size, 38));
    type.scale = static_cast<uint8_t>(std::clamp<int>(decimals, 0, 38));
    break;
  case TypeId::Money:
    type.precision = 19;
    type.scale = 4;
    break;
  case TypeId::SmallMoney:
    type.precision = 10;
    type.scale = 4;
    break;
  case TypeId::Text:
  case TypeId::NText:
  case TypeId::Image: type.length = -1; break;
  case TypeId::Char:
  case TypeId::VarChar:
  case TypeId::NChar:
  case TypeId::NVarChar:
  case TypeId::Binary:
  case TypeId::VarBinary: type.length = size == 0 || size > kLongest ? -1 : static_cast<int32_t>(size); break;
  default: break;
  }
  return type;
}

std::vector<tsql::Column> ColumnsOf(SQLHSTMT statement) {
  SQLSMALLINT count = 0;
  const auto fail = [&] { throw FailureOf(SQL_HANDLE_STMT, statement); };
  if (!SQL_SUCCEEDED(SQLNumResultCols(statement, &count))) fail();
  std::vector<tsql::Column> columns;
  std::wstring name(256, L'\0');
  for (SQLUSMALLINT i = 1; i <= count; ++i) {
    // Not to be relied on: some drivers count it in bytes of UTF-8.
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0;
    SQLULEN size = 0;
    SQLSMALLINT decimals = 0;
    SQLSMALLINT nullable = SQL_NULLABLE;
    if (!SQL_SUCCEEDED(SQLDescribeColW(statement, i, name.data(), static_cast<SQLSMALLINT>(name.size()),
                                       &length, &type, &size, &decimals, &nullable)))
      fail();
    columns.push_back({com::ToUtf8(name.c_str()), TypeOf(TypeName(statement, i), type, size, decimals),
                       nullable != SQL_NO_NULLS});
  }
  return columns;
}

} // namespace odbc
