#include "odbc/RowReader.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

#include "com/Text.h"
#include "odbc/Error.h"

namespace odbc {
namespace {

using tsql::TypeId;
using Kind = tsql::Value::Kind;

constexpr size_t kBlockBytes = 256 * 1024;
constexpr size_t kMostRowsOfABlock = 512;
constexpr size_t kPieceBytes = 32 * 1024;

// How values of a type are asked of the driver. A decimal is asked for as text: not every driver fills in the
// scale of ODBC's number.
SQLSMALLINT CTypeOf(const tsql::Type& type) {
  switch (type.id) {
  case TypeId::TinyInt:
  case TypeId::SmallInt:
  case TypeId::Int:
  case TypeId::BigInt:
  case TypeId::Bit: return SQL_C_SBIGINT;
  case TypeId::Decimal:
  case TypeId::Money:
  case TypeId::SmallMoney:
  case TypeId::UniqueIdentifier: return SQL_C_CHAR;
  case TypeId::Float:
  case TypeId::Real: return SQL_C_DOUBLE;
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date: return SQL_C_TYPE_TIMESTAMP;
  case TypeId::Binary:
  case TypeId::VarBinary:
  case TypeId::Image: return SQL_C_BINARY;
  case TypeId::Char:
  case TypeId::VarChar:
  case TypeId::Text:
  case TypeId::Time:
  case TypeId::DateTime2:
  case TypeId::NChar:
  case TypeId::NVarChar:
  case TypeId::NText: break;
  }
  return SQL_C_WCHAR;
}

// What ends the data in a buffer of the C type.
size_t EndOf(SQLSMALLINT cType) {
  return cType == SQL_C_WCHAR ? sizeof(wchar_t) : cType == SQL_C_CHAR ? 1 : 0;
}

// The bytes of the longest value; 0 for a type without a limit.
size_t WidthOf(const tsql::Type& type) {
  constexpr size_t kLongestNumber = 48;
  switch (CTypeOf(type)) {
  case SQL_C_SBIGINT: return sizeof(int64_t);
  case SQL_C_DOUBLE: return sizeof(double);
  case SQL_C_TYPE_TIMESTAMP: return sizeof(SQL_TIMESTAMP_STRUCT);
  case SQL_C_CHAR: return kLongestNumber;
  default: break;
  }
  if (type.length < 0) return 0;
  const auto length = static_cast<size_t>(type.length);
  return CTypeOf(type) == SQL_C_WCHAR ? (length + 1) * sizeof(wchar_t) : std::max<size_t>(length, 1);
}

[[noreturn]] void FailToRead(SQLHSTMT statement) {
  throw FailureOf(SQL_HANDLE_STMT, statement);
}

// The failure that the last fetch has left. Where rows end in one, some drivers hand out those before it and
// say of the fetch that it has information.
std::optional<Error> FailureOfFetch(SQLHSTMT statement, SQLRETURN result) {
  if (result == SQL_SUCCESS) return std::nullopt;
  if (!SQL_SUCCEEDED(result)) return FailureOf(SQL_HANDLE_STMT, statement);
  for (const Error& record : Records(SQL_HANDLE_STMT, statement))
    if (!record.IsInformation()) return record;
  return std::nullopt;
}

[[noreturn]] void ThrowMalformed(const tsql::Column& column, std::string_view text) {
  throw Error(0, "22018", "Column '" + column.name + "': '" + std::string(text) + "' is not a number.");
}

// "-123.4500" as a number; nullopt when it is none, or one of more than 38 digits.
std::optional<tsql::Decimal> ParseDecimal(std::string_view text) {
  tsql::Decimal number;
  if (text.starts_with('-') || text.starts_with('+')) {
    number.negative = text.front() == '-';
    text.remove_prefix(1);
  }
  bool hasDigit = false;
  bool isFraction = false;
  for (const char c : text) {
    if (c == '.' && !isFraction) {
      isFraction = true;
      continue;
    }
    if (c < '0' || c > '9') return std::nullopt;
    hasDigit = true;
    // Times ten, and the digit; in halves of the low part to see what is carried.
    const uint64_t low = (number.low & 0xFFFFFFFF) * 10 + static_cast<uint64_t>(c - '0');
    const uint64_t middle = (number.low >> 32) * 10 + (low >> 32);
    constexpr uint64_t kMostHigh = 0x4B3B4CA85A86C47AU; // 10^38 - 1
    number.low = (middle << 32) | (low & 0xFFFFFFFF);
    if (number.high > kMostHigh / 10) return std::nullopt;
    number.high = number.high * 10 + (middle >> 32);
    if (number.high > kMostHigh) return std::nullopt;
    if (isFraction) ++number.scale;
  }
  if (!hasDigit) return std::nullopt;
  return number;
}

tsql::DateTime MomentOf(const SQL_TIMESTAMP_STRUCT& stamp) {
  using namespace std::chrono;
  constexpr int64_t kTicks = 300;
  constexpr int64_t kNanoseconds = 1'000'000'000;
  constexpr int32_t kTicksPerDay = 300 * 86400;
  const sys_days day{year{stamp.year} / month{stamp.month} / std::chrono::day{stamp.day}};
  const int64_t seconds = (stamp.hour * 60 + stamp.minute) * 60 + stamp.second;
  const auto ticks = static_cast<int32_t>(
      seconds * kTicks + (static_cast<int64_t>(stamp.fraction) * kTicks + kNanoseconds / 2) / kNanoseconds);
  const auto days = static_cast<int32_t>((day - sys_days{year{1900} / 1 / 1}).count());
  // Less than half a tick before midnight is the next day.
  return ticks < kTicksPerDay ? tsql::DateTime{days, ticks} : tsql::DateTime{days + 1, 0};
}

} // namespace

// Where a column's values are put by the driver and taken from.
class RowReader::ColumnBuffer {
 public:
  explicit ColumnBuffer(const tsql::Column& column)
      : column_(&column), cType_(CTypeOf(column.type)), width_(WidthOf(column.type)) {}

  size_t width() const { return width_; }

  void Bind(SQLHSTMT statement, SQLUSMALLINT position, size_t rows) {
    Reserve(rows);
    if (!SQL_SUCCEEDED(SQLBindCol(statement, position, cType_, data_.data(), static_cast<SQLLEN>(width_),
                                  lengths_.data())))
      FailToRead(statement);
  }

  // The value of a row of the block.
  tsql::Value At(size_t row) {
    const SQLLEN length = lengths_[row];
    if (length == SQL_NULL_DATA) return {};
    if (const size_t end = EndOf(cType_);
        length == SQL_NO_TOTAL || (IsOfBytes() && static_cast<size_t>(length) + end > width_))
      throw Error(0, "22001", "Column '" + column_->name + "' holds more than its type allows.");
    return ValueOf(&data_[row * width_], static_cast<size_t>(length));
  }

  // The value of the current row, by SQLGetData.
  tsql::Value Get(SQLHSTMT statement, SQLUSMALLINT position) {
    if (IsOfBytes()) return GetPieces(statement, position);
    Reserve(1);
    if (!SQL_SUCCEEDED(SQLGetData(statement, position, cType_, data_.data(), static_cast<SQLLEN>(width_),
                                  lengths_.data())))
      FailToRead(statement);
    return At(0);
  }

 private:
  bool IsOfBytes() const { return cType_ == SQL_C_WCHAR || cType_ == SQL_C_CHAR || cType_ == SQL_C_BINARY; }

  void Reserve(size_t rows) {
    data_.resize(rows * width_);
    lengths_.resize(rows);
  }

  tsql::Value GetPieces(SQLHSTMT statement, SQLUSMALLINT position) {
    data_.clear();
    const size_t end = EndOf(cType_);
    for (;;) {
      const size_t had = data_.size();
      data_.resize(had + kPieceBytes);
      SQLLEN length = 0;
      const SQLRETURN result =
          SQLGetData(statement, position, cType_, &data_[had], static_cast<SQLLEN>(kPieceBytes), &length);
      // Of an empty rest some drivers say that there is no data.
      if (result != SQL_NO_DATA && !SQL_SUCCEEDED(result)) FailToRead(statement);
      if (result != SQL_NO_DATA && length == SQL_NULL_DATA) return {};
      const bool isWhole = result == SQL_NO_DATA ||
                           (length != SQL_NO_TOTAL && static_cast<size_t>(length) + end <= kPieceBytes);
      const size_t got = result == SQL_NO_DATA ? 0
                         : isWhole             ? static_cast<size_t>(length)
                                               : kPieceBytes - end;
      data_.resize(had + got);
      if (isWhole) return ValueOf(data_.data(), data_.size());
    }
  }

  tsql::Value ValueOf(const std::byte* data, size_t size) {
    tsql::Value value;
    const auto* const characters = reinterpret_cast<const char*>(data);
    switch (cType_) {
    case SQL_C_SBIGINT:
      value.kind = Kind::Integer;
      std::memcpy(&value.integer, data, sizeof(value.integer));
      break;
    case SQL_C_DOUBLE:
      value.kind = Kind::Float;
      std::memcpy(&value.real, data, sizeof(value.real));
      break;
    case SQL_C_TYPE_TIMESTAMP: {
      SQL_TIMESTAMP_STRUCT stamp;
      std::memcpy(&stamp, data, sizeof(stamp));
      value.kind = Kind::DateTime;
      value.datetime = MomentOf(stamp);
      break;
    }
    case SQL_C_BINARY:
      value.kind = Kind::Bytes;
      value.text = {characters, size};
      break;
    case SQL_C_CHAR: {
      if (column_->type.id == TypeId::UniqueIdentifier) {
        text_.assign(characters, size);
        std::ranges::transform(text_, text_.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        value.kind = Kind::Text;
        value.text = text_;
        break;
      }
      const std::optional<tsql::Decimal> number = ParseDecimal({characters, size});
      if (!number) ThrowMalformed(*column_, {characters, size});
      value.kind = Kind::Decimal;
      value.decimal = *number;
      if (column_->type.id != TypeId::Decimal) ToMoney(value.decimal);
      break;
    }
    default:
      text_ = com::ToUtf8({reinterpret_cast<const wchar_t*>(data), size / sizeof(wchar_t)});
      value.kind = Kind::Text;
      value.text = text_;
    }
    return value;
  }

  // Money has four decimals, however many its text has.
  void ToMoney(tsql::Decimal& number) const {
    constexpr uint8_t kScale = 4;
    for (; number.scale < kScale; ++number.scale) number.low *= 10;
    for (; number.scale > kScale; --number.scale) number.low /= 10;
  }

  const tsql::Column* column_;
  SQLSMALLINT cType_;
  size_t width_;
  std::vector<std::byte> data_;
  std::vector<SQLLEN> lengths_;
  std::string text_; // where the value's own text lies
};

RowReader::RowReader(SQLHSTMT statement, std::vector<tsql::Column> columns)
    : statement_(statement), columns_(std::move(columns)), values_(columns_.size()) {
  buffers_.reserve(columns_.size());
  for (const tsql::Column& column : columns_) buffers_.emplace_back(column);
}

RowReader::~RowReader() {
  // The buffers go; what follows on the statement has others.
  SQLFreeStmt(statement_, SQL_UNBIND);
}

void RowReader::ReadAll(tsql::ResultSink& sink) {
  sink.BeginRows(columns_);
  const bool isShort = std::ranges::all_of(buffers_, [](const ColumnBuffer& b) { return b.width() > 0; });
  sink.EndRows(isShort ? ReadBlocks(sink) : ReadCells(sink));
}

int64_t RowReader::ReadBlocks(tsql::ResultSink& sink) {
  size_t width = 0;
  for (const ColumnBuffer& buffer : buffers_) width += buffer.width() + sizeof(SQLLEN);
  const size_t size = std::clamp<size_t>(kBlockBytes / width, 1, kMostRowsOfABlock);
  SQLULEN fetched = 0;
  std::vector<SQLUSMALLINT> states(size, SQL_ROW_NOROW);
  const auto set = [&](SQLINTEGER attribute, SQLPOINTER value) {
    if (!SQL_SUCCEEDED(SQLSetStmtAttrW(statement_, attribute, value, 0))) FailToRead(statement_);
  };
  set(SQL_ATTR_ROW_ARRAY_SIZE, AsPointer(size));
  set(SQL_ATTR_ROWS_FETCHED_PTR, &fetched);
  set(SQL_ATTR_ROW_STATUS_PTR, states.data());
  for (size_t i = 0; i < buffers_.size(); ++i)
    buffers_[i].Bind(statement_, static_cast<SQLUSMALLINT>(i + 1), size);
  // What a failure leaves set would be written to when the next result is read.
  struct Unset {
    SQLHSTMT statement;
    ~Unset() {
      SQLSetStmtAttrW(statement, SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
      SQLSetStmtAttrW(statement, SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
      SQLSetStmtAttrW(statement, SQL_ATTR_ROW_ARRAY_SIZE, AsPointer(1), 0);
    }
  } const unset{statement_};

  int64_t count = 0;
  for (;;) {
    fetched = 0;
    const SQLRETURN result = SQLFetch(statement_);
    if (result == SQL_NO_DATA) return count;
    const std::optional<Error> failure = FailureOfFetch(statement_, result);
    for (SQLULEN row = 0; row < fetched && row < size; ++row) {
      if (states[row] != SQL_ROW_SUCCESS && states[row] != SQL_ROW_SUCCESS_WITH_INFO) {
        if (states[row] == SQL_ROW_ERROR) throw failure.value_or(FailureOf(SQL_HANDLE_STMT, statement_));
        continue;
      }
      for (size_t i = 0; i < buffers_.size(); ++i) values_[i] = buffers_[i].At(row);
      sink.Row(values_);
      ++count;
    }
    if (failure) throw Error(*failure);
    // A block that is not full is the last. A driver that is asked for another one may go on to the next
    // statement's count or failure, and take it for that of the rows.
    if (fetched < size) return count;
  }
}

int64_t RowReader::ReadCells(tsql::ResultSink& sink) {
  for (int64_t count = 0;; ++count) {
    const SQLRETURN result = SQLFetch(statement_);
    if (result == SQL_NO_DATA) return count;
    if (!SQL_SUCCEEDED(result)) FailToRead(statement_);
    for (size_t i = 0; i < buffers_.size(); ++i)
      values_[i] = buffers_[i].Get(statement_, static_cast<SQLUSMALLINT>(i + 1));
    sink.Row(values_);
  }
}

} // namespace odbc
