#include "odbc/Dialect.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cwchar>

#include "com/Text.h"

namespace odbc {
namespace {

using tsql::TypeId;
using Kind = tsql::Value::Kind;

bool IsWide(TypeId type) {
  return type == TypeId::NChar || type == TypeId::NVarChar || type == TypeId::NText;
}

std::wstring Quoted(std::wstring_view text) {
  std::wstring result = L"'";
  for (const wchar_t c : text) result.append(c == L'\'' ? 2 : 1, c);
  return result + L'\'';
}

std::wstring Digits(const tsql::Decimal& number) {
  // Long division of the two halves by ten, in four digits of 32 bits.
  std::array<uint64_t, 4> parts{number.high >> 32, number.high & 0xFFFFFFFF, number.low >> 32,
                                number.low & 0xFFFFFFFF};
  std::wstring digits;
  while (std::ranges::any_of(parts, [](uint64_t part) { return part != 0; })) {
    uint64_t rest = 0;
    for (uint64_t& part : parts) {
      const uint64_t value = (rest << 32) | part;
      part = value / 10;
      rest = value % 10;
    }
    digits.insert(digits.begin(), static_cast<wchar_t>(L'0' + rest));
  }
  if (digits.size() <= number.scale) digits.insert(0, number.scale + 1 - digits.size(), L'0');
  if (number.scale > 0) digits.insert(digits.size() - number.scale, 1, L'.');
  return number.negative ? L'-' + digits : digits;
}

std::wstring Float(double number) {
  std::array<char, 40> buffer{};
  // With an exponent it is a float, without one a decimal.
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific);
  return {buffer.data(), end};
}

std::wstring Moment(tsql::DateTime moment, Dialect dialect) {
  using namespace std::chrono;
  constexpr int kTicks = 300;
  const year_month_day day{sys_days{year{1900} / 1 / 1} + days{moment.days}};
  const int seconds = moment.ticks / kTicks;
  // Thirds of hundredths: .000, .003, .007.
  const int thousandths = (moment.ticks % kTicks * 10 + 1) / 3;
  std::array<wchar_t, 40> text{};
  std::swprintf(text.data(), text.size(), L"'%04d-%02u-%02u%c%02d:%02d:%02d.%03d'",
                static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()),
                // The T makes the order of year, month and day the same in every language of the server.
                dialect == Dialect::TransactSql ? 'T' : ' ', seconds / 3600, seconds / 60 % 60, seconds % 60,
                thousandths);
  return text.data();
}

std::wstring Bytes(std::string_view bytes, Dialect dialect) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  const bool transactSql = dialect == Dialect::TransactSql;
  std::wstring result = transactSql ? L"0x" : L"X'";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    result += kDigits[value >> 4];
    result += kDigits[value & 15];
  }
  return transactSql ? result : result + L'\'';
}

// The end of what begins at `at` and holds no markers: a text, a quoted name, a comment. `at` itself when
// nothing of that kind begins there.
size_t EndOfOpaque(std::wstring_view batch, size_t at) {
  const auto behind = [&](std::wstring_view end, size_t from) {
    const size_t found = batch.find(end, from);
    return found == std::wstring_view::npos ? batch.size() : found + end.size();
  };
  switch (batch[at]) {
  // A doubled quote is an end and a new beginning.
  case L'\'': return behind(L"'", at + 1);
  case L'"': return behind(L"\"", at + 1);
  // After a name's doubled bracket no new one begins.
  case L'[':
    do at = behind(L"]", at + 1);
    while (at < batch.size() && batch[at] == L']');
    return at;
  default: break;
  }
  const std::wstring_view rest = batch.substr(at);
  if (rest.starts_with(L"--")) return behind(L"\n", at);
  if (!rest.starts_with(L"/*")) return at;
  int depth = 0;
  while (at < batch.size()) {
    const std::wstring_view two = batch.substr(at, 2);
    if (two == L"/*") ++depth;
    if (two == L"*/") --depth;
    at += two == L"/*" || two == L"*/" ? 2 : 1;
    if (depth == 0) break;
  }
  return at;
}

bool ContainsNoCase(std::wstring_view text, std::wstring_view word) {
  for (size_t at = 0; at + word.size() <= text.size(); ++at)
    if (com::EqualsNoCase(text.substr(at, word.size()), word)) return true;
  return false;
}

} // namespace

Dialect DialectOf(std::wstring_view server) {
  return com::EqualsNoCase(server, L"SQLite") ? Dialect::Sqlite : Dialect::TransactSql;
}

std::wstring LiteralOf(const tsql::Value& value, const tsql::Type& type, Dialect dialect) {
  switch (value.kind) {
  case Kind::Null: return L"NULL";
  case Kind::Integer: return std::to_wstring(value.integer);
  case Kind::Float: return Float(value.real);
  case Kind::Decimal: return Digits(value.decimal);
  case Kind::DateTime: return Moment(value.datetime, dialect);
  case Kind::Bytes: return Bytes(value.text, dialect);
  case Kind::Text: break;
  }
  const std::wstring text = Quoted(com::FromUtf8(value.text));
  return IsWide(type.id) && dialect == Dialect::TransactSql ? L'N' + text : text;
}

std::wstring DeclarationOf(const tsql::Type& type) {
  const auto sized = [&](const wchar_t* name) {
    return name + (type.length < 0 ? std::wstring(L"(max)") : L'(' + std::to_wstring(type.length) + L')');
  };
  switch (type.id) {
  case TypeId::TinyInt: return L"tinyint";
  case TypeId::SmallInt: return L"smallint";
  case TypeId::Int: return L"int";
  case TypeId::BigInt: return L"bigint";
  case TypeId::Bit: return L"bit";
  case TypeId::Decimal:
    return L"decimal(" + std::to_wstring(type.precision) + L", " + std::to_wstring(type.scale) + L')';
  case TypeId::Money: return L"money";
  case TypeId::SmallMoney: return L"smallmoney";
  case TypeId::Float: return L"float";
  case TypeId::Real: return L"real";
  case TypeId::Char: return sized(L"char");
  case TypeId::VarChar: return sized(L"varchar");
  case TypeId::NChar: return sized(L"nchar");
  case TypeId::NVarChar: return sized(L"nvarchar");
  // No variable has one of the old types of long texts.
  case TypeId::Text: return L"varchar(max)";
  case TypeId::NText: return L"nvarchar(max)";
  case TypeId::Image: return L"varbinary(max)";
  case TypeId::DateTime: return L"datetime";
  case TypeId::SmallDateTime: return L"smalldatetime";
  case TypeId::Date: return L"date";
  case TypeId::Time: return L"time(" + std::to_wstring(type.scale) + L')';
  case TypeId::DateTime2: return L"datetime2(" + std::to_wstring(type.scale) + L')';
  case TypeId::Binary: return sized(L"binary");
  case TypeId::VarBinary: return sized(L"varbinary");
  case TypeId::UniqueIdentifier: return L"uniqueidentifier";
  }
  return {};
}

std::wstring_view ResetBatch(Dialect dialect) {
  if (dialect == Dialect::Sqlite) return L"ROLLBACK TRANSACTION";
  return L"IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION SET NOCOUNT OFF SET XACT_ABORT OFF SET LOCK_TIMEOUT -1 "
         L"SET TRANSACTION ISOLATION LEVEL READ COMMITTED";
}

bool LeavesTraces(std::wstring_view batch, Dialect dialect) {
  // Temporary tables.
  return dialect == Dialect::Sqlite ? ContainsNoCase(batch, L"TEMP")
                                    : batch.find(L'#') != std::wstring_view::npos;
}

std::wstring WithLiterals(std::wstring_view batch, std::span<const tsql::Parameter> parameters,
                          Dialect dialect) {
  if (parameters.empty()) return std::wstring(batch);
  std::wstring result;
  size_t next = 0;
  for (size_t at = 0; at < batch.size();) {
    if (const size_t end = EndOfOpaque(batch, at); end != at) {
      result += batch.substr(at, end - at);
      at = end;
      continue;
    }
    if (batch[at] == L'?' && next < parameters.size()) {
      // The blanks keep it apart from a name, and a minus from another one.
      result += L' ' + LiteralOf(parameters[next].value, parameters[next].type, dialect) + L' ';
      ++next;
    } else {
      result += batch[at];
    }
    ++at;
  }
  return result;
}

} // namespace odbc
