// Queries that are evaluated as plainly as possible: nested loops over vectors, three-valued logic, and no
// types but integers, decimals of two places, texts, and texts under a collation that tells cases apart. Each
// is a text of T-SQL together with a closure that evaluates it.
//
// The dialect leaves it open which of two texts that differ only in case or trailing blanks stands for a
// group, and of trailing blanks alone where cases are told apart. Texts are therefore compared without these,
// and computed with trimmed only.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tsql::test::plain {

enum class Kind : uint8_t { Int, Dec, Text, Cased };

inline bool IsOfText(Kind kind) {
  return kind == Kind::Text || kind == Kind::Cased;
}

struct V {
  bool null = true;
  int64_t number = 0; // of a Dec: hundredths
  std::string text;
};

struct Skip {}; // the query overflows, or the dialect leaves its result open

inline V Num(int64_t number) {
  return {false, number, {}};
}
inline V Txt(std::string text) {
  return {false, 0, std::move(text)};
}

inline std::string Plain(std::string text, Kind kind) {
  text.erase(text.find_last_not_of(' ') + 1);
  for (char& c : text)
    if (kind == Kind::Text && c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return text;
}

inline V Checked(int64_t number) {
  if (number > INT32_MAX || number < INT32_MIN) throw Skip();
  return Num(number);
}

inline int Order(const V& a, const V& b, Kind kind) {
  if (IsOfText(kind)) {
    const int order = Plain(a.text, kind).compare(Plain(b.text, kind));
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  }
  return a.number < b.number ? -1 : a.number > b.number ? 1 : 0;
}

inline int NullsFirst(const V& a, const V& b, Kind kind) {
  if (a.null || b.null) return static_cast<int>(b.null) - static_cast<int>(a.null);
  return Order(a, b, kind);
}

inline std::string Show(const V& value, Kind kind) {
  if (value.null) return "NULL";
  if (IsOfText(kind)) return "'" + Plain(value.text, kind) + "'";
  if (kind == Kind::Int) return std::to_string(value.number);
  std::string digits = std::to_string(std::abs(value.number));
  if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
  return (value.number < 0 ? "-" : "") + digits.insert(digits.size() - 2, ".");
}

enum class Truth : uint8_t { False, Unknown, True };

inline Truth Not(Truth truth) {
  return static_cast<Truth>(2 - static_cast<int>(truth));
}
inline Truth Is(bool value) {
  return value ? Truth::True : Truth::False;
}

using Row = std::vector<V>;

// The rows that names stand for, and the group that aggregates run over.
struct Env {
  std::map<int, Row> rows;
  const std::vector<Env>* group = nullptr;
};

struct Expr {
  std::string sql;
  Kind kind = Kind::Int;
  std::function<V(const Env&)> eval;
};

struct Cond {
  std::string sql;
  std::function<Truth(const Env&)> eval;
};

struct Col {
  int source = 0;
  size_t index = 0;
  Kind kind = Kind::Int;
  std::string name;
};

struct Source {
  std::string sql;
  std::vector<Col> cols;
  std::map<int, size_t> widths; // of the sources within, for rows of NULLs
  std::function<std::vector<Env>(const Env&)> rows;
};

struct Query {
  std::string sql;
  std::vector<Kind> kinds;
  std::function<std::vector<Row>(const Env&)> rows;
};

struct Table {
  std::string name;
  std::vector<Row> rows;
};

constexpr std::array kColumns{"id", "a", "b", "s", "d", "c"};
constexpr std::array kKinds{Kind::Int, Kind::Int, Kind::Int, Kind::Text, Kind::Dec, Kind::Cased};

inline bool SameRow(const Row& a, const Row& b, const std::vector<Kind>& kinds) {
  for (size_t i = 0; i < kinds.size(); ++i)
    if (NullsFirst(a[i], b[i], kinds[i]) != 0) return false;
  return true;
}

inline bool Contains(const std::vector<Row>& rows, const Row& row, const std::vector<Kind>& kinds) {
  return std::any_of(rows.begin(), rows.end(), [&](const Row& other) { return SameRow(row, other, kinds); });
}

inline std::vector<Row> Distinct(const std::vector<Row>& rows, const std::vector<Kind>& kinds) {
  std::vector<Row> result;
  for (const Row& row : rows)
    if (!Contains(result, row, kinds)) result.push_back(row);
  return result;
}

} // namespace tsql::test::plain
