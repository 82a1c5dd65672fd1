#include "tsql/shell/Output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>

#include "tsql/CharacterWidth.h"
#include "tsql/values/Collation.h"
#include "tsql/values/DateText.h"
#include "tsql/values/Decimal.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/Types.h"

namespace tsql::shell {
namespace {

std::string FloatText(double value) {
  std::array<char, 40> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return {buffer.data(), end};
}

std::string BytesText(std::string_view bytes) {
  std::string text = "0x";
  for (const char byte : bytes) AppendHex(text, byte);
  return text;
}

std::string MomentText(const DateTime& moment, TypeId type) {
  constexpr int kOdbcStyle = 121; // yyyy-mm-dd hh:mm:ss.mmm
  constexpr size_t kToSeconds = 19;
  std::string text =
      FormatDateTime(moment.days * kTicksPerDay + moment.ticks, MakeType(type), kOdbcStyle).value_or("");
  if (type == TypeId::SmallDateTime && text.size() > kToSeconds) text.resize(kToSeconds);
  return text;
}

// One line of a table: what would break it becomes a blank.
std::string OneLine(std::string text) {
  for (char& character : text)
    if (character == '\n' || character == '\r' || character == '\t') character = ' ';
  return text;
}

std::string Escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
    case '\t': result += "\\t"; break;
    case '\n': result += "\\n"; break;
    case '\r': result += "\\r"; break;
    case '\\': result += "\\\\"; break;
    default: result += character;
    }
  }
  return result;
}

} // namespace

std::string FormatValue(const Value& value, const Type& type) {
  switch (value.kind) {
  case Value::Kind::Null: return "NULL";
  case Value::Kind::Integer: return std::to_string(value.integer);
  case Value::Kind::Float: return FloatText(value.real);
  case Value::Kind::Decimal: return DecimalToText(value.decimal);
  case Value::Kind::Bytes: return BytesText(value.text);
  case Value::Kind::DateTime: return MomentText(value.datetime, type.id);
  case Value::Kind::Text: break;
  }
  return std::string(value.text);
}

size_t DisplayWidth(std::string_view text) {
  size_t width = 0;
  for (size_t at = 0; at < text.size();) width += CharacterWidth(NextChar(text, at));
  return width;
}

void Output::BeginRows(std::span<const Column> columns) {
  columns_.assign(columns.begin(), columns.end());
  names_.clear();
  rows_.clear();
  for (const Column& column : columns_)
    names_.push_back(column.name.empty() ? "(No column name)" : column.name);
  if (form_ == Form::Tsv) WriteTsvLine(names_);
}

void Output::Row(std::span<const Value> values) {
  std::vector<std::string> cells;
  for (size_t i = 0; i < values.size(); ++i) cells.push_back(FormatValue(values[i], columns_[i].type));
  if (form_ == Form::Tsv) {
    WriteTsvLine(cells);
  } else {
    rows_.push_back(std::move(cells));
  }
}

void Output::EndRows(int64_t count) {
  if (form_ == Form::Table) WriteTable();
  out_ << '\n';
  if (!target_.NoCount()) RowCount(count);
}

void Output::RowCount(int64_t count) {
  out_ << '(' << count << " rows affected)\n";
}

void Output::Message(const Error& info) {
  out_ << info.what() << '\n';
}

void Output::Failed(const Error& error) {
  out_.flush(); // so that both streams in one terminal keep their order
  errors_ << "Msg " << error.number << ", Level " << error.severity << ", State " << error.state << ", Line "
          << error.line << '\n'
          << error.what() << std::endl;
}

void Output::WriteTsvLine(const std::vector<std::string>& cells) {
  for (size_t i = 0; i < cells.size(); ++i) out_ << (i > 0 ? "\t" : "") << Escaped(cells[i]);
  out_ << '\n';
}

void Output::WriteTable() {
  std::vector<size_t> widths;
  for (size_t i = 0; i < names_.size(); ++i) {
    size_t width = DisplayWidth(names_[i]);
    for (std::vector<std::string>& row : rows_) {
      row[i] = OneLine(std::move(row[i]));
      width = std::max(width, DisplayWidth(row[i]));
    }
    widths.push_back(width);
  }
  const auto write = [&](const std::vector<std::string>& cells, bool isHead) {
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
      const std::string blanks(widths[i] - DisplayWidth(cells[i]), ' ');
      const bool toRight = !isHead && IsNumeric(columns_[i].type);
      line += (i > 0 ? " " : "") + (toRight ? blanks + cells[i] : cells[i] + blanks);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out_ << line << '\n';
  };
  write(names_, true);
  std::vector<std::string> rules;
  rules.reserve(widths.size());
  for (const size_t width : widths) rules.emplace_back(width, '-');
  write(rules, true);
  for (const std::vector<std::string>& row : rows_) write(row, false);
  rows_.clear();
}

} // namespace tsql::shell
