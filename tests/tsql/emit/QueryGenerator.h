// Makes random queries on random tables: joins, derived tables, grouping, set operations.
#pragma once

#include "tests/tsql/emit/ExpressionGenerator.h"

namespace tsql::test::plain {

class QueryGenerator : public ExpressionGenerator {
 public:
  using ExpressionGenerator::ExpressionGenerator;
  Query MakeQuery() { return MakeUnion({}, 2); }

 private:
  // ---- sources

  Source Derived(int depth) {
    const Query query = MakeUnion({}, depth);
    const int id = NextSource();
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
    Expr value = IsOfText(kind) ? Leaf(kind, cols) : MakeExpr(kind, cols, 1);
    // The argument of an aggregate has no subquery.
    while (value.sql.find("SELECT") != std::string::npos) value = MakeExpr(kind, cols, 1);
    const int what = IsOfText(kind) ? 3 + Upto(1) : kind == Kind::Dec ? 2 + Upto(2) : Upto(6);
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
};

} // namespace tsql::test::plain
