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
  TriggerNesting,
  TransactionState,
  SessionNumber,
  FirstDay,    // of a week
  LockTimeout, // in milliseconds
  Options,     // of SET, by bit
  RowLimit,    // of SET ROWCOUNT
  FetchStatus,
  CursorRows,
  CurrentRow, // the number in SQLite of the row of WHERE CURRENT OF
};

enum class AggregateId : uint8_t {
  Count,
  CountBig,
  Sum,
  Average,
  Min,
  Max,
  Deviation, // of a sample; the next ones of a population, and the variances
  PopulationDeviation,
  Variance,
  PopulationVariance,
  StringAggregate
};

// The functions that look at other rows of the result; they stand only with OVER.
enum class WindowId : uint8_t {
  RowNumber,
  Rank,
  DenseRank,
  NTile,
  CumulativeDistribution,
  PercentRank,
  Lag,
  Lead,
  FirstValue,
  LastValue,
};

// The functions that are computed row by row.
enum class FunctionId : uint8_t {
  IsNull,
  Coalesce,
  NullIf,
  Concat,
  ConcatWithSeparator,
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
  TrimCharacters,
  Translate,
  ParseName,
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
  Soundex,
  Difference,
  HashBytes,
  IsNumeric,
  IsDate,
  GetDate,
  GetUtcDate,
  SysDateTime,
  SysUtcDateTime,
  DateAdd,
  DateDiff,
  DateDiffBig,
  DatePart,
  DateName,
  DateFromParts,
  EndOfMonth,
  Random,
  Acos,
  Asin,
  Atan,
  Atan2,
  Cos,
  Cot,
  Sin,
  Tan,
  Degrees,
  Radians,
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
  ObjectSchemaName,
  ObjectProperty,
  ColumnProperty,
  ColumnName,
  ObjectDefinition,
  SchemaName,
  SchemaId,
  ColLength,
  IdentitySeed,
  IdentityIncrement,
  CurrentIdentity,
  DatabaseId,
  DatabaseName,
  UserName,
  LoginName,
  TypeId,
  TypeName,
  IsMember,
  CursorStatus,
  Updated, // UPDATE() of the column whose position is the argument
  // The value, unless it is null, which is an error: for a column whose name is the second argument.
  NotNull,
  RowLimit, // the argument of TOP, unless it is null or negative
  // The first argument, unless it is less than the second, which is the error that the third is the number
  // of, or null, which is the error of the fourth.
  AtLeast,
  // Gives a variable, whose index and type are the first arguments, the value of the last, whose type is the
  // third. The result is that value.
  AssignVariable,
  GivenIdentity, // the number that an INSERT gives to a row whose identity column the engine counts
  Then,          // the second of two values, after the first has been computed
};
constexpr size_t kFunctionCount = static_cast<size_t>(FunctionId::Then) + 1;

// OVER (...) of an aggregate or a window function. What it partitions and orders by are the last arguments of
// the function's node.
struct BoundWindow {
  size_t partitions = 0;
  std::vector<bool> descending; // an item for each expression of ORDER BY
  Frame frame;
  bool operator==(const BoundWindow&) const = default;
};

// How much a text's collation counts against that of another text. Literals and variables take the other
// one's, and a column has its own. What is made of columns whose collations differ has none, and COLLATE
// decides over all of them.
enum class CollationStrength : uint8_t { Coercible, Implicit, Unresolved, Explicit };

// The two collations of which a text that is made of both has none.
struct CollationConflict {
  std::string first;
  std::string second;
  std::string operation;
};

struct BoundExpr {
  enum class Kind : uint8_t {
    Constant,
    Column,
    Variable,
    Marker,
    Global,
    Cast,
    TryCast, // a cast that gives null for what cannot be converted
    Store,   // a cast that refuses text that is too long
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
    Quantified, // the comparison of a value with the query's column, for all rows if negated, else for any
    Exists,
    Subquery,
    Case,
    Function,
    UserFunction, // of a user, by name
    Aggregate,
    Window,
    Grouping, // which of the keys that the arguments number are left out, a bit for each
  };
  Kind kind = Kind::Constant;
  Type type;
  bool nullable = true;
  bool negated = false;
  bool distinct = false;
  bool hasOperand = false;
  bool hasElse = false;
  bool nullsEqual = false; // of a comparison by = or <>: it is never unknown, as with ANSI_NULLS off
  CollationStrength strength = CollationStrength::Coercible;
  CollationId collation = CollationId::Default;
  CollationId ownCollation = CollationId::Default; // of a column, whatever COLLATE makes of it
  bool baseColumn = false; // a column of a table with the database's collation, which SQLite knows
  ArithmeticOp arithmetic = ArithmeticOp::Add;
  CompareOp compare = CompareOp::Equal;
  FunctionId function = FunctionId::IsNull;
  AggregateId aggregate = AggregateId::Count;
  WindowId window = WindowId::RowNumber;
  int source = -1;
  int index = 0; // of a variable, marker or global value
  int style = 0; // of a cast
  Datum constant;
  std::string name;                                  // of a column within its source
  std::string display;                               // the column as messages name it
  std::string collationName;                         // empty for the database's
  std::shared_ptr<const CollationConflict> conflict; // of an unresolved collation
  std::vector<std::unique_ptr<BoundExpr>> args;
  std::unique_ptr<BoundQuery> query;
  std::unique_ptr<BoundWindow> over;
  // The directions of the order in which an aggregate takes its rows; what it orders by are its last
  // arguments.
  std::vector<bool> descending;
};
using BoundExprPtr = std::unique_ptr<BoundExpr>;

BoundExprPtr MakeNode(BoundExpr::Kind kind, const Type& type);
BoundExprPtr MakeConstant(Datum value, const Type& type);
BoundExprPtr MakeFunction(FunctionId function, const Type& type, std::vector<BoundExprPtr> args);
BoundExprPtr MakeGlobal(GlobalValue value, const Type& type);
// Whether a time or datetime2 is in it, which only newer files may keep.
bool HasFineType(const BoundExpr& expr);
bool IsNullConstant(const BoundExpr& expr);
// Gives a text the collation of the other, if that has one.
void TakeCollation(BoundExpr& expr, const BoundExpr& from);
// Whether a collation other than the default one is somewhere in it.
bool HasCollation(const BoundExpr& expr);
// Whether its value depends on when it is computed.
bool AsksClock(const BoundExpr& expr);
// How many of its arguments are those of the function itself.
size_t OwnArguments(const BoundExpr& expr);
std::vector<BoundExpr*> Pointers(const std::vector<BoundExprPtr>& exprs);
// Whether both are the same expression. Subqueries always count as different.
bool SameExpr(const BoundExpr& left, const BoundExpr& right);

// The name that column number `index` of a query's result has within the statement.
std::string ResultColumnName(size_t index);

struct BoundSource {
  enum class Kind : uint8_t {
    Table,
    Query,
    Function,
    Split,
    Common,
    System,
    Values,
    Staged,
    Merged,
    Fired,
    Join
  };
  Kind kind = Kind::Table;
  int id = 0;
  const SystemView* system = nullptr;
  TablePtr table;
  int common = 0;     // the number of a common table expression
  bool isOld = false; // of what a trigger sees: deleted, not inserted
  std::string function;
  std::vector<BoundExprPtr> args; // of the function, or of STRING_SPLIT
  std::vector<Column> columns;    // that it gives
  std::unique_ptr<BoundQuery> query;
  std::vector<std::vector<BoundExprPtr>> rows; // of VALUES
  // Of the right side of an APPLY: the rows depend on those of the left side, and are found for each of them.
  bool applied = false;
  JoinKind join = JoinKind::Inner; // APPLY is a cross join or a left join
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
  bool windowed = false; // has a function with OVER
  BoundExprPtr top;
  bool topPercent = false;
  bool topTies = false;
  std::vector<BoundItem> items;
  BoundSourcePtr from;
  BoundExprPtr where;
  std::vector<BoundExprPtr> groupBy;
  // The rows are grouped once for each set, whose bits say by which of groupBy; the first items are those
  // of groupBy. Empty for a plain GROUP BY.
  std::vector<uint32_t> groupingSets;
  bool selectsGroups = false; // from a query with grouping sets, which with this one was a single one
  BoundExprPtr having;
};

// A common table expression.
struct BoundCommon {
  int id = 0;
  bool recursive = false;
  int maxRecursion = kMaxRecursion;
  int own = -1; // of a recursive one: the source in its right query that gives the rows made before
  std::unique_ptr<BoundQuery> query;
};

// The identity column of the table that SELECT ... INTO makes.
struct IntoIdentity {
  bool isGenerated = false; // by IDENTITY(), beside the query's columns; else it is one of them
  size_t column = 0;        // its place among the columns of the table
  std::string name;
  Type type;
  IdentityDefinition numbers;
  bool mayRepeat = false; // the column that it is made after is counted by the engine
};

struct BoundQuery {
  std::vector<BoundCommon> commons;
  SetOp op = SetOp::None;
  std::unique_ptr<BoundSelect> select;
  std::unique_ptr<BoundQuery> left;
  std::unique_ptr<BoundQuery> right;
  std::vector<BoundOrder> orderBy;
  BoundExprPtr offset;
  BoundExprPtr fetch;
  std::vector<Column> columns;
  std::optional<IntoIdentity> identity; // of SELECT ... INTO
};
using BoundQueryPtr = std::unique_ptr<BoundQuery>;
// The column in the first SELECT of the query. Its collation is that of the query's column.
BoundExpr& FirstItem(BoundQuery& query, size_t column);

struct BoundOutput;

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
  BoundExprPtr limit; // of the rows, of a query over the wrapper; null for none
  std::unique_ptr<BoundOutput> output;
};

// What OUTPUT gives: a query of the rows that the change has staged. Each has its number in SQLite, for each
// column of the table the new value and the old one, and what the output uses of other sources.
struct BoundOutput {
  BoundQueryPtr query;
  std::vector<BoundExprPtr> others; // of other sources
  std::optional<BoundInsert> into;  // the query then is its query
};
// The names of their columns.
std::string StagedRowName();
std::string StagedNewName(size_t column);
std::string StagedOldName(size_t column);
std::string StagedOtherName(const TableInfo& table, size_t index);

// What an UPDATE and a DELETE have in common.
struct BoundChange {
  std::vector<BoundCommon> commons;
  TablePtr table;
  int target = 0;      // the source's number
  BoundSourcePtr from; // with the target in it; null without FROM
  BoundExprPtr where;
  BoundExprPtr top;
  bool topPercent = false;
  BoundExprPtr limit; // of SET ROWCOUNT, beside TOP PERCENT; else TOP has it
  std::unique_ptr<BoundOutput> output;
};

struct BoundUpdate : BoundChange {
  std::vector<int> named; // the columns that the statement gives values
  std::vector<std::pair<int, BoundExprPtr>> assignments;
  std::vector<int> variables; // that the values assign, row by row
};

struct BoundDelete : BoundChange {};

} // namespace tsql
