// The bound tree: every name resolved, every expression typed, every conversion explicit. The binder makes it
// and the emitter reads it. It speaks of the dialect alone; how SQLite is asked for it is the emitter's
// business. Sources are numbered throughout a statement, so that a column is a source's number and the
// column's name there, at whatever depth it is used.
#pragma once

#include "tsql/catalog/Catalog.h"
#include "tsql/catalog/SystemViews.h"

namespace tsql {

struct BoundQuery;

// The server's global values that a batch may read, as BoundExpr::Kind::Global numbers them in `index`.
enum class GlobalValue : uint8_t {
  RowCount,
  Identity,
  ScopeIdentity,
  Error,
  TransactionCount,
  ErrorNumber,
  ErrorMessage,
  ErrorSeverity,
  ErrorState,
  ErrorLine,
  ErrorProcedure,
  ProcedureNesting,
};

enum class AggregateId : uint8_t { Count, CountBig, Sum, Average, Min, Max };

// The functions that are computed row by row.
enum class FunctionId : uint8_t {
  IsNull,
  Coalesce,
  NullIf,
  Len,
  DataLength,
  Ascii,
  Unicode,
  PatIndex,
  CharIndex,
  QuoteName,
  LTrim,
  RTrim,
  Trim,
  Upper,
  Lower,
  Reverse,
  Left,
  Right,
  Substring,
  Replace,
  Replicate,
  Stuff,
  Space,
  Char,
  NChar,
  Str,
  IsNumeric,
  IsDate,
  GetDate,
  DateAdd,
  DateDiff,
  DatePart,
  DateName,
  Sqrt,
  Square,
  Power,
  Exp,
  Log,
  Log10,
  Abs,
  Sign,
  Floor,
  Ceiling,
  Round,
  NewId,
  ObjectId,
  ObjectName,
  ColLength,
  // The value, unless it is null, which is an error: for a column whose name is the second argument.
  NotNull,
  RowLimit, // the argument of TOP, unless it is null or negative
};
constexpr size_t kFunctionCount = static_cast<size_t>(FunctionId::RowLimit) + 1;

struct BoundExpr {
  enum class Kind : uint8_t {
    Constant,
    Column,
    Variable,
    Marker,
    Global,
    Cast,
    Store, // a cast that refuses text that is too long
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
  bool baseColumn = false; // a column of a table, for which SQLite knows the collation
  ArithmeticOp arithmetic = ArithmeticOp::Add;
  CompareOp compare = CompareOp::Equal;
  FunctionId function = FunctionId::IsNull;
  AggregateId aggregate = AggregateId::Count;
  int source = -1;
  int index = 0; // of a variable, marker or global value
  int style = 0; // of a cast
  Datum constant;
  std::string name;    // of a column within its source
  std::string display; // the column as messages name it
  std::vector<std::unique_ptr<BoundExpr>> args;
  std::unique_ptr<BoundQuery> query;
};
using BoundExprPtr = std::unique_ptr<BoundExpr>;

BoundExprPtr MakeNode(BoundExpr::Kind kind, const Type& type);
BoundExprPtr MakeConstant(Datum value, const Type& type);
BoundExprPtr MakeFunction(FunctionId function, const Type& type, std::vector<BoundExprPtr> args);
BoundExprPtr MakeGlobal(GlobalValue value, const Type& type);
bool IsNullConstant(const BoundExpr& expr);
// Whether both are the same expression. Subqueries always count as different.
bool SameExpr(const BoundExpr& left, const BoundExpr& right);

// The name that column number `index` of a query's result has within the statement.
std::string ResultColumnName(size_t index);

struct BoundSource {
  enum class Kind : uint8_t { Table, Query, Common, System, Join };
  Kind kind = Kind::Table;
  int id = 0;
  const SystemView* system = nullptr;
  TablePtr table;
  int common = 0; // the number of a common table expression
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

// A common table expression.
struct BoundCommon {
  int id = 0;
  bool recursive = false;
  int own = -1; // of a recursive one: the source in its right query that gives the rows made before
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
  // Either rows of values or a query.
  std::vector<std::vector<BoundExprPtr>> rows;
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
