// Makes random tables, and random expressions and conditions on them.
#pragma once

#include <random>

#include "tests/tsql/emit/PlainQuery.h"

namespace tsql::test::plain {

class ExpressionGenerator {
 public:
  explicit ExpressionGenerator(uint64_t seed) : random_(seed) {
    for (int t = 0; t < 3; ++t) {
      Table table{"t" + std::to_string(t), {}};
      const int count = Upto(6);
      for (int i = 0; i < count; ++i) {
        Row row{Num(i),
                Maybe(Num(Upto(4) - 1)),
                Maybe(Num(Upto(3))),
                Maybe(Txt(AnyText())),
                Maybe(Num(Upto(8) * 50 - 100)),
                Maybe(Txt(AnyText()))};
        table.rows.push_back(std::move(row));
      }
      tables_.push_back(std::move(table));
    }
  }

  std::string Setup() const {
    std::string sql;
    for (const Table& table : tables_) {
      sql += "CREATE TABLE " + table.name +
             " (id INT NOT NULL PRIMARY KEY, a INT NULL, b INT NULL, s VARCHAR(6) NULL, d DECIMAL(6,2) NULL,"
             " c VARCHAR(6) COLLATE Latin1_General_BIN NULL)\n";
      if (table.name == "t1") sql += "CREATE INDEX i1 ON t1 (a, s)\n";
      if (table.name == "t2") sql += "CREATE INDEX i2 ON t2 (c, a)\n";
      for (const Row& row : table.rows) {
        sql += "INSERT INTO " + table.name + " VALUES (";
        for (size_t i = 0; i < row.size(); ++i)
          sql += (i > 0 ? ", " : "") +
                 (row[i].null || !IsOfText(kKinds[i]) ? Show(row[i], kKinds[i]) : "'" + row[i].text + "'");
        sql += ")\n";
      }
    }
    return sql;
  }

  int Upto(int most) { return static_cast<int>(random_() % static_cast<uint64_t>(most + 1)); }
  bool Chance(int percent) { return Upto(99) < percent; }

 protected:
  V Maybe(V value) { return Chance(25) ? V() : std::move(value); }
  std::string AnyText() {
    constexpr std::array kTexts{"", "a", "A", "ab", "AB ", "b  ", "B", "ba"};
    return kTexts[static_cast<size_t>(Upto(static_cast<int>(kTexts.size()) - 1))];
  }
  Kind AnyKind() { return kKinds[static_cast<size_t>(Upto(kKinds.size() - 1))]; }

  // ---- expressions

  Expr Literal(Kind kind) {
    V value = IsOfText(kind)      ? Txt(AnyText())
              : kind == Kind::Int ? Num(Upto(6) - 2)
                                  : Num(Upto(8) * 50 - 150);
    std::string sql = IsOfText(kind) ? "'" + value.text + "'" : Show(value, kind);
    // Beside a column a literal takes its collation, but not beside another literal.
    if (kind == Kind::Cased) sql += " COLLATE Latin1_General_BIN";
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
      const std::string name = IsOfText(kind) || Chance(50) ? "COALESCE(" : "ISNULL(";
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
    if (IsOfText(kind)) {
      const Expr left = Leaf(kind, cols);
      const Expr right = Leaf(kind, cols);
      return {"(RTRIM(" + left.sql + ") + RTRIM(" + right.sql + "))", kind, [=](const Env& env) {
                const V a = left.eval(env);
                const V b = right.eval(env);
                return a.null || b.null ? V() : Txt(Plain(a.text, kind) + Plain(b.text, kind));
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
    const Kind kind = Chance(50) ? Kind::Text : Kind::Cased;
    const Expr value = Leaf(kind, cols);
    const std::string part = Chance(50) ? "a" : "B";
    const int form = Upto(2);
    const std::string pattern = form == 0 ? part + "%" : form == 1 ? "%" + part : "%" + part + "%";
    const bool negated = Chance(30);
    return {"RTRIM(" + value.sql + ")" + (negated ? " NOT LIKE '" : " LIKE '") + pattern + "'",
            [=](const Env& env) {
              const V v = value.eval(env);
              if (v.null) return Truth::Unknown;
              const std::string text = Plain(v.text, kind);
              const std::string want = Plain(part, kind);
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

  // ---- tables

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

  int NextSource() { return next_++; }

 private:
  std::mt19937_64 random_;
  std::vector<Table> tables_;
  int next_ = 0;
};

} // namespace tsql::test::plain
