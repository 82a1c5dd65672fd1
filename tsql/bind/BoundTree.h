// The bound tree: every name resolved, every expression typed, every conversion explicit. Binder output and
// emitter input. Sources are numbered throughout a statement, so that a column is a source's number and the
// column's name in SQLite, at whatever depth it is used.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

struct BoundQuery;

struct BoundExpr {
  enum class Kind : uint8_t {
    Constant,
    Column,
    Variable,
    Marker,
    Global,
    Cast,
    Store,
    Negate,
    BitNot,
    Arithmetic,
    Compare,
    And,
    Or,
    Not,
    IsNull,
    Like,
    Between,
    In,
    InQuery,
    Exists,
    Subquery,
    Case,
    Function,
    Aggregate,
  };
  Kind kind = Kind::Constant;
  Type type;
  bool nullable = true;
  bool negated = false;
  bool distinct = false;
  bool hasOperand = false;
  bool hasElse = false;
  bool baseColumn = false; // of a table: it carries the collation itself
  ArithmeticOp arithmetic = ArithmeticOp::Add;
  CompareOp compare = CompareOp::Equal;
  int source = -1;
  int index = 0; // of a variable or marker
  int style = 0; // of a cast
  Datum constant;
  std::string name;    // SQLite's name of a column or function, or the global's
  std::string display; // the column as messages name it
  std::vector<std::unique_ptr<BoundExpr>> args;
  std::unique_ptr<BoundQuery> query;
};
using BoundExprPtr = std::unique_ptr<BoundExpr>;

bool SameExpr(const BoundExpr& left, const BoundExpr& right);

struct BoundSource {
  enum class Kind : uint8_t { Table, Query, Common, System, Join };
  Kind kind = Kind::Table;
  int id = 0;
  std::string sql; // of a system view
  TablePtr table;
  int common = 0;
  std::unique_ptr<BoundQuery> query;
  JoinKind join = JoinKind::Inner;
  std::unique_ptr<BoundSource> left;
  std::unique_ptr<BoundSource> right;
  BoundExprPtr on;
};
using BoundSourcePtr = std::unique_ptr<BoundSource>;

struct BoundItem {
  std::string name;
  BoundExprPtr expr;
  int variable = -1; // that the item assigns
};

struct BoundOrder {
  int ordinal = -1; // 0-based item, or -1 for the expression
  BoundExprPtr expr;
  bool descending = false;
};

struct BoundSelect {
  bool distinct = false;
  bool grouped = false;
  BoundExprPtr top;
  std::vector<BoundItem> items;
  BoundSourcePtr from;
  BoundExprPtr where;
  std::vector<BoundExprPtr> groupBy;
  BoundExprPtr having;
};

struct BoundCommon {
  int id = 0;
  bool recursive = false;
  std::unique_ptr<BoundQuery> query;
};

struct BoundQuery {
  std::vector<BoundCommon> commons;
  SetOp op = SetOp::None;
  std::unique_ptr<BoundSelect> select;
  std::unique_ptr<BoundQuery> left;
  std::unique_ptr<BoundQuery> right;
  std::vector<BoundOrder> orderBy;
  std::vector<Column> columns;
};
using BoundQueryPtr = std::unique_ptr<BoundQuery>;

struct BoundInsert {
  TablePtr table;
  std::vector<int> columns;
  std::vector<std::vector<BoundExprPtr>> rows; // or
  BoundQueryPtr query;
  // Values beside the query's columns: defaults of the columns that the statement leaves out.
  std::vector<BoundExprPtr> extras;
  // Conversions of the query's columns when they cannot be made inside it: over source `wrapper`.
  std::vector<BoundExprPtr> conversions;
  int wrapper = -1;
};

struct BoundUpdate {
  std::vector<BoundCommon> commons;
  TablePtr table;
  int target = 0; // the source's number
  std::vector<std::pair<int, BoundExprPtr>> assignments;
  BoundSourcePtr from; // with the target in it; null without FROM
  BoundExprPtr where;
  BoundExprPtr top;
};

struct BoundDelete {
  std::vector<BoundCommon> commons;
  TablePtr table;
  int target = 0;
  BoundSourcePtr from;
  BoundExprPtr where;
  BoundExprPtr top;
};

} // namespace tsql
