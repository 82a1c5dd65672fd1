// Random queries on random small tables with NULLs, each answered by the engine and by the plainest
// evaluation that can be written: nested loops over vectors, three-valued logic, no types but the three used
// here.
//
// A query is generated as its text together with a closure that evaluates it. TSQL_PROPERTY_COUNT sets how
// many queries are tried, TSQL_PROPERTY_SEED where the seeds start; a failure names the seed of its query.
//
// Left out because the dialect leaves it open: which of two texts that differ in case or trailing blanks
// stands for a group. Texts are therefore compared without either, and computed with trimmed only.
#include "tests/tsql/EngineFixture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>

namespace tsql::test {
namespace {

// ---- values

enum class Kind : uint8_t { Int, Dec, Text };

struct V {
  bool null = true;
  int64_t number = 0; // of a Dec: hundredths
  std::string text;
};

struct Skip {}; // the query overflows, or the dialect leaves its result open

V Num(int64_t number) {
  return {false, number, {}};
}
V Txt(std::string text) {
  return {false, 0, std::move(text)};
}

std::string Plain(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return text;
}

V Checked(int64_t number) {
  if (number > INT32_MAX || number < INT32_MIN) throw Skip();
  return Num(number);
}

int Order(const V& a, const V& b, Kind kind) {
  if (kind == Kind::Text) {
    const int order = Plain(a.text).compare(Plain(b.text));
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  }
  return a.number < b.number ? -1 : a.number > b.number ? 1 : 0;
}

int NullsFirst(const V& a, const V& b, Kind kind) {
  if (a.null || b.null) return static_cast<int>(b.null) - static_cast<int>(a.null);
  return Order(a, b, kind);
}

std::string Show(const V& value, Kind kind) {
  if (value.null) return "NULL";
  if (kind == Kind::Text) return "'" + Plain(value.text) + "'";
  if (kind == Kind::Int) return std::to_string(value.number);
  std::string digits = std::to_string(std::abs(value.number));
  if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
  return (value.number < 0 ? "-" : "") + digits.insert(digits.size() - 2, ".");
}

// ---- what queries are made of

enum class Truth : uint8_t { False, Unknown, True };

Truth Not(Truth truth) {
  return static_cast<Truth>(2 - static_cast<int>(truth));
}
Truth Is(bool value) {
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

constexpr std::array kColumns{"id", "a", "b", "s", "d"};
constexpr std::array kKinds{Kind::Int, Kind::Int, Kind::Int, Kind::Text, Kind::Dec};

bool SameRow(const Row& a, const Row& b, const std::vector<Kind>& kinds) {
  for (size_t i = 0; i < kinds.size(); ++i)
    if (NullsFirst(a[i], b[i], kinds[i]) != 0) return false;
  return true;
}

bool Contains(const std::vector<Row>& rows, const Row& row, const std::vector<Kind>& kinds) {
  return std::any_of(rows.begin(), rows.end(), [&](const Row& other) { return SameRow(row, other, kinds); });
}

std::vector<Row> Distinct(const std::vector<Row>& rows, const std::vector<Kind>& kinds) {
  std::vector<Row> result;
  for (const Row& row : rows)
    if (!Contains(result, row, kinds)) result.push_back(row);
  return result;
}

// ---- the generator

class Generator {
 public:
  explicit Generator(uint64_t seed) : random_(seed) {
    for (int t = 0; t < 3; ++t) {
      Table table{"t" + std::to_string(t), {}};
      const int count = Upto(6);
      for (int i = 0; i < count; ++i) {
        Row row{Num(i), Maybe(Num(Upto(4) - 1)), Maybe(Num(Upto(3))), Maybe(Txt(AnyText())),
                Maybe(Num(Upto(8) * 50 - 100))};
        table.rows.push_back(std::move(row));
      }
      tables_.push_back(std::move(table));
    }
  }

  std::string Setup() const {
    std::string sql;
    for (const Table& table : tables_) {
      sql +=
          "CREATE TABLE " + table.name +
          " (id INT NOT NULL PRIMARY KEY, a INT NULL, b INT NULL, s VARCHAR(6) NULL, d DECIMAL(6,2) NULL)\n";
      if (table.name == "t1") sql += "CREATE INDEX i1 ON t1 (a, s)\n";
      for (const Row& row : table.rows) {
        sql += "INSERT INTO " + table.name + " VALUES (";
        for (size_t i = 0; i < row.size(); ++i)
          sql += (i > 0 ? ", " : "") +
                 (row[i].null || kKinds[i] != Kind::Text ? Show(row[i], kKinds[i]) : "'" + row[i].text + "'");
        sql += ")\n";
      }
    }
    return sql;
  }

  Query MakeQuery() { return MakeUnion({}, 2); }
  int Upto(int most) { return static_cast<int>(random_() % static_cast<uint64_t>(most + 1)); }
  bool Chance(int percent) { return Upto(99) < percent; }

 private:
  V Maybe(V value) { return Chance(25) ? V() : std::move(value); }
  std::string AnyText() {
    constexpr std::array kTexts{"", "a", "A", "ab", "AB ", "b  ", "B", "ba"};
    return kTexts[static_cast<size_t>(Upto(static_cast<int>(kTexts.size()) - 1))];
  }
  Kind AnyKind() { return kKinds[static_cast<size_t>(Upto(4))]; }

  // ---- expressions

  Expr Literal(Kind kind) {
    V value = kind == Kind::Text  ? Txt(AnyText())
              : kind == Kind::Int ? Num(Upto(6) - 2)
                                  : Num(Upto(8) * 50 - 150);
    std::string sql = kind == Kind::Text ? "'" + value.text + "'" : Show(value, kind);
    if (sql[0] == '-') sql = "(" + sql + ")";
    // A literal's own type is as narrow as its digits; columns and results are wider.
    if (kind == Kind::Dec) sql = "CAST(" + sql + " AS DECIMAL(6,2))";
    return {sql, kind, [value](const Env&) { return value; }};
  }

  Expr Leaf(Kind kind, const std::vector<Col>& cols) {
    std::vector<Col> fitting;
    std::copy_if(cols.begin(), cols.end(), std::back_inserter(fitting),
                 [kind](const Col& col) { return col.kind == kind; });
    if (fitting.empty() || Chance(15)) return Literal(kind);
    const Col col = fitting[static_cast<size_t>(Upto(static_cast<int>(fitting.size()) - 1))];
    return {"x" + std::to_string(col.source) + "." + col.name, kind,
            [col](const Env& env) { return env.rows.at(col.source)[col.index]; }};
  }

  Expr MakeExpr(Kind kind, const std::vector<Col>& cols, int depth) {
    if (depth == 0 || Chance(40)) return Leaf(kind, cols);
    switch (Upto(6)) {
    case 0: { // CASE
      const Cond when = MakeCond(cols, depth - 1);
      const Expr then = MakeExpr(kind, cols, depth - 1);
      const Expr other = MakeExpr(kind, cols, depth - 1);
      const bool hasElse = Chance(70);
      return {"CASE WHEN " + when.sql + " THEN " + then.sql + (hasElse ? " ELSE " + other.sql : "") + " END",
              kind, [=](const Env& env) {
                if (when.eval(env) == Truth::True) return then.eval(env);
                return hasElse ? other.eval(env) : V();
              }};
    }
    case 1: {
      const Expr first = MakeExpr(kind, cols, depth - 1);
      const Expr second = MakeExpr(kind, cols, depth - 1);
      // ISNULL takes the type of its first argument, which would cut a longer text.
      const std::string name = kind == Kind::Text || Chance(50) ? "COALESCE(" : "ISNULL(";
      return {name + first.sql + ", " + second.sql + ")", kind, [=](const Env& env) {
                const V value = first.eval(env);
                return value.null ? second.eval(env) : value;
              }};
    }
    case 2: return Scalar(kind, cols, depth - 1);
    case 3: {
      const Expr first = MakeExpr(kind, cols, depth - 1);
      const Expr second = MakeExpr(kind, cols, depth - 1);
      return {"NULLIF(" + first.sql + ", " + second.sql + ")", kind, [=](const Env& env) {
                const V value = first.eval(env);
                const V other = second.eval(env);
                const bool same = !value.null && !other.null && Order(value, other, kind) == 0;
                return same ? V() : value;
              }};
    }
    default: return Arithmetic(kind, cols, depth);
    }
  }

  Expr Arithmetic(Kind kind, const std::vector<Col>& cols, int depth) {
    if (kind == Kind::Text) {
      const Expr left = Leaf(kind, cols);
      const Expr right = Leaf(kind, cols);
      return {"(RTRIM(" + left.sql + ") + RTRIM(" + right.sql + "))", kind, [=](const Env& env) {
                const V a = left.eval(env);
                const V b = right.eval(env);
                return a.null || b.null ? V() : Txt(Plain(a.text) + Plain(b.text));
              }};
    }
    const int op = Upto(kind == Kind::Int ? 4 : 1);
    const bool isLeaf = op == 2;
    const Expr left = isLeaf ? Leaf(kind, cols) : MakeExpr(kind, cols, depth - 1);
    const Expr right = isLeaf ? Leaf(kind, cols) : MakeExpr(kind, cols, depth - 1);
    constexpr std::array kOps{" + ", " - ", " * ", " / ", " % "};
    const bool divides = op > 2;
    const std::string divisor = divides ? "NULLIF(" + right.sql + ", 0)" : right.sql;
    return {"(" + left.sql + kOps[static_cast<size_t>(op)] + divisor + ")", kind, [=](const Env& env) {
              const V a = left.eval(env);
              const V b = right.eval(env);
              if (a.null || b.null || (divides && b.number == 0)) return V();
              switch (op) {
              case 0: return Checked(a.number + b.number);
              case 1: return Checked(a.number - b.number);
              case 2: return Checked(a.number * b.number);
              case 3: return Checked(a.number / b.number);
              default: return Num(a.number % b.number);
              }
            }};
  }

  // A correlated subquery with an aggregate, which has one row whatever happens.
  Expr Scalar(Kind kind, const std::vector<Col>& cols, int depth) {
    const Source source = Base();
    std::vector<Col> all = source.cols;
    all.insert(all.end(), cols.begin(), cols.end());
    const Expr value = Leaf(kind, source.cols);
    const Cond where = MakeCond(all, std::min(depth, 1));
    const bool isMax = Chance(50);
    return {std::string("(SELECT ") + (isMax ? "MAX(" : "MIN(") + value.sql + ") FROM " + source.sql +
                " WHERE " + where.sql + ")",
            kind, [=](const Env& env) {
              V best;
              for (const Env& row : source.rows(env)) {
                if (where.eval(row) != Truth::True) continue;
                const V own = value.eval(row);
                if (own.null) continue;
                const int order = best.null ? 0 : Order(own, best, kind);
                if (best.null || (isMax ? order > 0 : order < 0)) best = own;
              }
              return best;
            }};
  }

  // ---- conditions

  Cond MakeCond(const std::vector<Col>& cols, int depth) {
    const int what = Upto(depth > 0 ? 10 : 5);
    const Kind kind = AnyKind();
    switch (what) {
    case 3: {
      const Expr value = MakeExpr(kind, cols, depth > 0 ? depth - 1 : 0);
      const bool negated = Chance(50);
      return {value.sql + (negated ? " IS NOT NULL" : " IS NULL"),
              [=](const Env& env) { return Is(value.eval(env).null != negated); }};
    }
    case 4: return InList(kind, cols);
    case 5: return Like(cols);
    case 6:
    case 7: {
      const Cond left = MakeCond(cols, depth - 1);
      const Cond right = MakeCond(cols, depth - 1);
      const bool isAnd = what == 6;
      return {"(" + left.sql + (isAnd ? " AND " : " OR ") + right.sql + ")", [=](const Env& env) {
                const Truth a = left.eval(env);
                const Truth b = right.eval(env);
                return isAnd ? std::min(a, b) : std::max(a, b);
              }};
    }
    case 8: {
      const Cond inner = MakeCond(cols, depth - 1);
      return {"NOT (" + inner.sql + ")", [=](const Env& env) { return Not(inner.eval(env)); }};
    }
    case 9: return Exists(cols, depth);
    case 10: return InQuery(kind, cols, depth);
    default: break;
    }
    const Expr left = MakeExpr(kind, cols, depth > 0 ? depth - 1 : 0);
    const Expr right = MakeExpr(kind, cols, depth > 0 ? depth - 1 : 0);
    constexpr std::array kOps{" = ", " <> ", " < ", " <= ", " > ", " >= "};
    const int op = Upto(5);
    return {left.sql + kOps[static_cast<size_t>(op)] + right.sql, [=](const Env& env) {
              const V a = left.eval(env);
              const V b = right.eval(env);
              if (a.null || b.null) return Truth::Unknown;
              const int order = Order(a, b, kind);
              return Is(op == 0   ? order == 0
                        : op == 1 ? order != 0
                        : op == 2 ? order < 0
                        : op == 3 ? order <= 0
                        : op == 4 ? order > 0
                                  : order >= 0);
            }};
  }

  static Truth Member(const V& value, const std::vector<V>& values, Kind kind) {
    Truth found = Truth::False;
    for (const V& other : values) {
      if (value.null || other.null) {
        found = std::max(found, Truth::Unknown);
      } else if (Order(value, other, kind) == 0) {
        return Truth::True;
      }
    }
    return found;
  }

  Cond InList(Kind kind, const std::vector<Col>& cols) {
    const Expr value = Leaf(kind, cols);
    std::vector<Expr> list;
    std::string sql;
    for (int i = Upto(2); i >= 0; --i) {
      list.push_back(Leaf(kind, cols));
      sql += (sql.empty() ? "" : ", ") + list.back().sql;
    }
    const bool negated = Chance(40);
    if (list.size() == 2 && Chance(40))
      return {value.sql + (negated ? " NOT BETWEEN " : " BETWEEN ") + list[0].sql + " AND " + list[1].sql,
              [=](const Env& env) {
                const V v = value.eval(env);
                const V low = list[0].eval(env);
                const V high = list[1].eval(env);
                const Truth first = v.null || low.null ? Truth::Unknown : Is(Order(v, low, kind) >= 0);
                const Truth second = v.null || high.null ? Truth::Unknown : Is(Order(v, high, kind) <= 0);
                const Truth both = std::min(first, second);
                return negated ? Not(both) : both;
              }};
    return {value.sql + (negated ? " NOT IN (" : " IN (") + sql + ")", [=](const Env& env) {
              std::vector<V> values;
              values.reserve(list.size());
              for (const Expr& expr : list) values.push_back(expr.eval(env));
              const Truth found = Member(value.eval(env), values, kind);
              return negated ? Not(found) : found;
            }};
  }

  Cond Like(const std::vector<Col>& cols) {
    const Expr value = Leaf(Kind::Text, cols);
    const std::string part = Chance(50) ? "a" : "B";
    const int form = Upto(2);
    const std::string pattern = form == 0 ? part + "%" : form == 1 ? "%" + part : "%" + part + "%";
    const bool negated = Chance(30);
    return {"RTRIM(" + value.sql + ")" + (negated ? " NOT LIKE '" : " LIKE '") + pattern + "'",
            [=](const Env& env) {
              const V v = value.eval(env);
              if (v.null) return Truth::Unknown;
              const std::string text = Plain(v.text);
              const std::string want = Plain(part);
              const bool matches = form == 0   ? text.starts_with(want)
                                   : form == 1 ? text.ends_with(want)
                                               : text.find(want) != std::string::npos;
              return Is(matches != negated);
            }};
  }

  Cond Exists(const std::vector<Col>& cols, int depth) {
    const Source source = Base();
    std::vector<Col> all = source.cols;
    all.insert(all.end(), cols.begin(), cols.end());
    const Cond where = MakeCond(all, depth - 1);
    const bool negated = Chance(40);
    return {std::string(negated ? "NOT " : "") + "EXISTS (SELECT 1 FROM " + source.sql + " WHERE " +
                where.sql + ")",
            [=](const Env& env) {
              const std::vector<Env> rows = source.rows(env);
              const bool found = std::any_of(rows.begin(), rows.end(),
                                             [&](const Env& row) { return where.eval(row) == Truth::True; });
              return Is(found != negated);
            }};
  }

  Cond InQuery(Kind kind, const std::vector<Col>& cols, int depth) {
    const Expr value = Leaf(kind, cols);
    const Source source = Base();
    std::vector<Col> all = source.cols;
    all.insert(all.end(), cols.begin(), cols.end());
    const Expr item = Leaf(kind, source.cols);
    const Cond where = MakeCond(all, depth - 1);
    const bool negated = Chance(40);
    return {value.sql + (negated ? " NOT IN (SELECT " : " IN (SELECT ") + item.sql + " FROM " + source.sql +
                " WHERE " + where.sql + ")",
            [=](const Env& env) {
              std::vector<V> values;
              for (const Env& row : source.rows(env))
                if (where.eval(row) == Truth::True) values.push_back(item.eval(row));
              const Truth found = Member(value.eval(env), values, kind);
              return negated ? Not(found) : found;
            }};
  }

  // ---- sources

  Source Base() {
    const Table& table = tables_[static_cast<size_t>(Upto(2))];
    const int id = next_++;
    Source source;
    source.sql = table.name + (Chance(50) ? " AS x" : " x") + std::to_string(id);
    for (size_t i = 0; i < kColumns.size(); ++i) source.cols.push_back({id, i, kKinds[i], kColumns[i]});
    source.widths[id] = kColumns.size();
    source.rows = [&rows = table.rows, id](const Env& outer) {
      std::vector<Env> result;
      for (const Row& row : rows) {
        result.push_back(outer);
        result.back().rows[id] = row;
      }
      return result;
    };
    return source;
  }

  Source Derived(int depth) {
    const Query query = MakeUnion({}, depth);
    const int id = next_++;
    Source source;
    source.sql = "(" + query.sql + ") x" + std::to_string(id);
    for (size_t i = 0; i < query.kinds.size(); ++i)
      source.cols.push_back({id, i, query.kinds[i], "c" + std::to_string(i)});
    source.widths[id] = query.kinds.size();
    source.rows = [=](const Env& outer) {
      std::vector<Env> result;
      for (const Row& row : query.rows({})) {
        result.push_back(outer);
        result.back().rows[id] = row;
      }
      return result;
    };
    return source;
  }

  Source MakeSource(int depth) {
    if (depth > 0 && Chance(45)) return Join(depth);
    return depth > 0 && Chance(25) ? Derived(depth - 1) : Base();
  }

  Source Join(int depth) {
    const Source left = MakeSource(depth - 1);
    const Source right = MakeSource(depth - 1);
    constexpr std::array kJoins{" JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ", ", "};
    const int kind = Upto(4);
    Source source;
    source.cols = left.cols;
    source.cols.insert(source.cols.end(), right.cols.begin(), right.cols.end());
    source.widths = left.widths;
    source.widths.insert(right.widths.begin(), right.widths.end());
    const Cond on =
        kind == 4 ? Cond{"1 = 1", [](const Env&) { return Truth::True; }} : MakeCond(source.cols, 1);
    source.sql = kind == 4
                     ? "(" + left.sql + " CROSS JOIN " + right.sql + ")"
                     : "(" + left.sql + kJoins[static_cast<size_t>(kind)] + right.sql + " ON " + on.sql + ")";
    const bool keepsLeft = kind == 1 || kind == 3;
    const bool keepsRight = kind == 2 || kind == 3;
    source.rows = [=](const Env& outer) {
      const auto pad = [](Env& env, const std::map<int, size_t>& widths) {
        for (const auto& [id, width] : widths) env.rows[id] = Row(width);
      };
      const std::vector<Env> lefts = left.rows(outer);
      const std::vector<Env> rights = right.rows(outer);
      std::vector<bool> used(rights.size(), false);
      std::vector<Env> result;
      for (const Env& a : lefts) {
        bool matched = false;
        for (size_t i = 0; i < rights.size(); ++i) {
          Env both = a;
          for (const auto& [id, row] : rights[i].rows) both.rows[id] = row;
          if (on.eval(both) != Truth::True) continue;
          matched = used[i] = true;
          result.push_back(std::move(both));
        }
        if (matched || !keepsLeft) continue;
        result.push_back(a);
        pad(result.back(), right.widths);
      }
      for (size_t i = 0; i < rights.size() && keepsRight; ++i) {
        if (used[i]) continue;
        result.push_back(rights[i]);
        pad(result.back(), left.widths);
      }
      return result;
    };
    return source;
  }

  // ---- queries

  static std::string Items(const std::vector<Expr>& items) {
    std::string sql;
    for (size_t i = 0; i < items.size(); ++i)
      sql += (i > 0 ? ", " : "") + items[i].sql + " AS c" + std::to_string(i);
    return sql;
  }

  Query MakeUnion(std::vector<Kind> kinds, int depth) {
    if (kinds.empty())
      for (int i = Upto(2); i >= 0; --i) kinds.push_back(AnyKind());
    Query left = Chance(35) ? Grouped(kinds, depth) : Plainly(kinds, depth);
    if (!Chance(20)) return left;
    const Query right = Chance(35) ? Grouped(kinds, depth) : Plainly(kinds, depth);
    constexpr std::array kOps{" UNION ", " UNION ALL ", " EXCEPT ", " INTERSECT "};
    const int op = Upto(3);
    return {left.sql + kOps[static_cast<size_t>(op)] + right.sql, kinds, [=](const Env& env) {
              std::vector<Row> rows = left.rows(env);
              const std::vector<Row> others = right.rows(env);
              if (op < 2) rows.insert(rows.end(), others.begin(), others.end());
              if (op == 1) return rows;
              if (op > 1)
                std::erase_if(rows,
                              [&](const Row& row) { return Contains(others, row, kinds) == (op == 2); });
              return Distinct(rows, kinds);
            }};
  }

  Query Plainly(const std::vector<Kind>& kinds, int depth) {
    const Source source = MakeSource(depth);
    std::vector<Expr> items;
    items.reserve(kinds.size());
    for (const Kind kind : kinds) items.push_back(MakeExpr(kind, source.cols, 2));
    const bool hasWhere = Chance(70);
    const Cond where = MakeCond(source.cols, 2);
    const bool isDistinct = Chance(25);
    return {std::string("SELECT ") + (isDistinct ? "DISTINCT " : "") + Items(items) + " FROM " + source.sql +
                (hasWhere ? " WHERE " + where.sql : ""),
            kinds, [=](const Env& env) {
              std::vector<Row> rows;
              for (const Env& own : source.rows(env)) {
                if (hasWhere && where.eval(own) != Truth::True) continue;
                rows.emplace_back();
                for (const Expr& item : items) rows.back().push_back(item.eval(own));
              }
              return isDistinct ? Distinct(rows, kinds) : rows;
            }};
  }

  Expr Aggregate(Kind kind, const std::vector<Col>& cols) {
    const Expr value = kind == Kind::Text ? Leaf(kind, cols) : MakeExpr(kind, cols, 1);
    const int what = kind == Kind::Text ? 3 + Upto(1) : kind == Kind::Dec ? 2 + Upto(2) : Upto(6);
    // COUNT(*), COUNT, SUM, MIN, MAX, AVG, COUNT(DISTINCT)
    constexpr std::array kNames{"COUNT(*", "COUNT(", "SUM(", "MIN(", "MAX(", "AVG(", "COUNT(DISTINCT "};
    const std::string name = kNames[static_cast<size_t>(what)];
    // Sums of decimals have 38 digits, which further use would notice.
    const bool cuts = kind == Kind::Dec && what == 2;
    return {(cuts ? "CAST(" : "") + name + (what == 0 ? "" : value.sql) + ")" +
                (cuts ? " AS DECIMAL(12,2))" : ""),
            kind, [=](const Env& env) {
              std::vector<Row> values;
              for (const Env& row : *env.group) {
                const V v = what == 0 ? Num(1) : value.eval(row);
                if (!v.null) values.push_back({v});
              }
              if (what == 6) values = Distinct(values, {kind});
              if (what < 2 || what == 6) return Num(static_cast<int64_t>(values.size()));
              if (values.empty()) return V();
              V result = values[0][0];
              int64_t sum = 0;
              for (const Row& row : values) {
                sum += row[0].number;
                const int order = Order(row[0], result, kind);
                if (what == 3 ? order < 0 : order > 0) result = row[0];
              }
              if (what == 3 || what == 4) return result;
              Checked(sum);
              return what == 2 ? Num(sum) : Num(sum / static_cast<int64_t>(values.size()));
            }};
  }

  Query Grouped(const std::vector<Kind>& kinds, int depth) {
    const Source source = MakeSource(depth);
    std::vector<Expr> keys;
    std::vector<Kind> keyKinds;
    std::string by;
    if (Chance(75)) {
      for (int i = Upto(1); i >= 0; --i) {
        keyKinds.push_back(AnyKind());
        // A constant cannot be grouped by.
        Expr key = Leaf(keyKinds.back(), source.cols);
        while (key.sql[0] != 'x') {
          keyKinds.back() = AnyKind();
          key = Leaf(keyKinds.back(), source.cols);
        }
        by += (by.empty() ? " GROUP BY " : ", ") + key.sql;
        keys.push_back(std::move(key));
      }
    }
    std::vector<Expr> items;
    for (const Kind kind : kinds) {
      const auto key = std::find(keyKinds.begin(), keyKinds.end(), kind);
      const bool takesKey = key != keyKinds.end() && Chance(50);
      items.push_back(takesKey ? keys[static_cast<size_t>(key - keyKinds.begin())]
                               : Aggregate(kind, source.cols));
    }
    const bool allKeys = std::none_of(
        items.begin(), items.end(), [](const Expr& item) { return item.sql.find('(') != std::string::npos; });
    if (keys.empty() && allKeys) items[0] = Aggregate(kinds[0], source.cols);
    const Cond where = MakeCond(source.cols, 1);
    const bool hasWhere = Chance(40);
    const bool hasHaving = Chance(35);
    const Expr tested = Aggregate(Kind::Int, source.cols);
    const Expr limit = Literal(Kind::Int);
    const std::string sql = "SELECT " + Items(items) + " FROM " + source.sql +
                            (hasWhere ? " WHERE " + where.sql : "") + by +
                            (hasHaving ? " HAVING " + tested.sql + " >= " + limit.sql : "");
    return {sql, kinds, [=](const Env& env) {
              std::vector<std::pair<Row, std::vector<Env>>> groups;
              if (keys.empty()) groups.emplace_back();
              for (const Env& own : source.rows(env)) {
                if (hasWhere && where.eval(own) != Truth::True) continue;
                Row key;
                for (const Expr& expr : keys) key.push_back(expr.eval(own));
                auto found = std::find_if(groups.begin(), groups.end(), [&](const auto& group) {
                  return SameRow(group.first, key, keyKinds);
                });
                if (found == groups.end()) found = groups.insert(groups.end(), {key, {}});
                found->second.push_back(own);
              }
              std::vector<Row> rows;
              for (const auto& group : groups) {
                Env own = group.second.empty() ? env : group.second.front();
                own.group = &group.second;
                if (hasHaving) {
                  const V value = tested.eval(own);
                  if (value.null || value.number < limit.eval(own).number) continue;
                }
                rows.emplace_back();
                for (const Expr& item : items) rows.back().push_back(item.eval(own));
              }
              return rows;
            }};
  }

  std::mt19937_64 random_;
  std::vector<Table> tables_;
  int next_ = 0;
};

// ---- the comparison

Lines Shown(const std::vector<Row>& rows, const std::vector<Kind>& kinds) {
  Lines lines;
  for (const Row& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) line += (i > 0 ? "|" : "") + Show(row[i], kinds[i]);
    lines.push_back(std::move(line));
  }
  return lines;
}

// The engine's rows as this test shows them.
struct Answer : Output {
  void Row(std::span<const Value> values) override {
    std::string line;
    for (size_t i = 0; i < values.size(); ++i) {
      line += i > 0 ? "|" : "";
      line += values[i].kind == Value::Kind::Text ? "'" + Plain(std::string(values[i].text)) + "'"
                                                  : ToText(values[i]);
    }
    results.back().push_back(std::move(line));
  }
};

uint64_t FromEnvironment(const char* name, uint64_t otherwise) {
  const char* text = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets it meanwhile
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

TEST(PropertyTest, QueriesAnswerAsPlainlyEvaluated) {
  const uint64_t first = FromEnvironment("TSQL_PROPERTY_SEED", 1);
  const uint64_t count = FromEnvironment("TSQL_PROPERTY_COUNT", 600);
  uint64_t compared = 0;
  for (uint64_t seed = first; seed < first + count; ++seed) {
    Generator generator(seed);
    const Query query = generator.MakeQuery();
    std::vector<Row> rows;
    try {
      rows = query.rows({});
    } catch (const Skip&) {
      continue;
    }
    // Ordered by all columns, the first ones that remain are determined too.
    std::vector<bool> descending;
    std::string sql = query.sql;
    const bool ordered = generator.Chance(50);
    if (ordered) {
      for (size_t i = 0; i < query.kinds.size(); ++i) {
        descending.push_back(generator.Chance(50));
        sql += (i == 0 ? " ORDER BY " : ", ") + std::to_string(i + 1) + (descending.back() ? " DESC" : "");
      }
      std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
        for (size_t i = 0; i < query.kinds.size(); ++i) {
          const int order = NullsFirst(a[i], b[i], query.kinds[i]);
          if (order != 0) return descending[i] ? order > 0 : order < 0;
        }
        return false;
      });
    }
    const bool isSingle = query.sql.find(" UNION ") == std::string::npos &&
                          query.sql.find(" EXCEPT ") == std::string::npos &&
                          query.sql.find(" INTERSECT ") == std::string::npos;
    if (ordered && isSingle && generator.Chance(30)) {
      const bool isDistinct = sql.starts_with("SELECT DISTINCT ");
      const auto top = static_cast<size_t>(generator.Upto(3));
      sql.insert(isDistinct ? 16 : 7, "TOP " + std::to_string(top) + " ");
      if (rows.size() > top) rows.resize(top);
    }
    const auto session = Session::Open(Database::Open(UniqueMemoryName(), OpenMode::Create));
    Output setup;
    ASSERT_TRUE(session->Execute(generator.Setup(), {}, setup));
    Answer answer;
    session->Execute(sql, {}, answer);
    Lines expected = Shown(rows, query.kinds);
    const std::string context = "seed " + std::to_string(seed) + "\n" + generator.Setup() + sql;
    ASSERT_TRUE(answer.errors.empty()) << answer.errors[0].number << " " << answer.errors[0].what() << "\n"
                                       << context;
    ASSERT_EQ(answer.results.size(), 1U) << context;
    Lines actual = answer.results[0];
    if (!ordered) {
      std::sort(expected.begin(), expected.end());
      std::sort(actual.begin(), actual.end());
    }
    ASSERT_EQ(actual, expected) << context;
    ++compared;
  }
  EXPECT_GT(compared, count * 9 / 10) << "too many queries overflow";
}

} // namespace
} // namespace tsql::test
