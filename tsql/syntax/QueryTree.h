// The syntax tree of expressions and queries: what was written, nothing resolved.
#pragma once

#include <memory>

#include "tsql/syntax/Lexer.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Types.h"

namespace tsql {

struct Query;
struct Window;

// ---- expressions

struct ObjectName {
  std::string database; // the session's own, where it was written
  std::string schema;   // empty where none was written
  std::string name;
  bool variable = false; // a table variable's, with its @
  // Within a module of a schema other than dbo: that schema, where a name without a schema is looked for
  // before dbo.
  std::string home;
  std::string Written() const {
    if (!database.empty()) return database + "." + schema + "." + name;
    return schema.empty() ? name : schema + "." + name;
  }
};

enum class ExprKind : uint8_t {
  Null,
  Default, // the keyword in place of a value
  Literal,
  Column,
  Variable,
  Marker,
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
  InList,
  InQuery,
  Quantified, // a comparison with ALL of a query if negated, else with ANY
  Exists,
  Subquery,
  Case,
  Call,
  UserCall, // of a function of a user, whose name is in parts
  Cast,
  Convert,
  Collate,
};

enum class CompareOp : uint8_t { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

struct OrderItem {
  ExprPtr expr;
  bool descending = false;
};

struct Expr {
  ExprKind kind = ExprKind::Null;
  int line = 1;
  uint32_t number = 0; // among the expressions and statements of the batch
  TokenKind literal = TokenKind::End;
  ArithmeticOp arithmetic = ArithmeticOp::Add;
  CompareOp compare = CompareOp::Equal;
  bool negated = false;  // IS NOT NULL, NOT LIKE, NOT BETWEEN, NOT IN
  bool distinct = false; // COUNT(DISTINCT x)
  bool star = false;     // COUNT(*)
  bool attempt = false;  // TRY_CAST and TRY_CONVERT: what cannot be converted is null
  bool hasOperand = false;
  bool hasElse = false;
  CollationId collation = CollationId::Default; // of Collate, whose name is the text as in NamedCollation
  int marker = 0;                               // 0-based
  int depth = 1;                                // of the tree below, subqueries included
  std::string text;                             // a literal's text, a function's or variable's name
  std::vector<std::string> parts;               // a column's name with its qualifiers
  Type type;                                    // CAST and CONVERT
  // Case: [operand] (when, then)* [else]; InList: the tested value first.
  std::vector<std::unique_ptr<Expr>> args;
  std::unique_ptr<Query> query;
  std::unique_ptr<Window> over;  // of a call
  std::vector<OrderItem> within; // WITHIN GROUP (ORDER BY ...) of a call
};

bool IsPredicate(const Expr& expr);

// ---- queries

enum class JoinKind : uint8_t { Inner, Left, Right, Full, Cross, CrossApply, OuterApply };

struct TableSource {
  // Merged are the rows that a MERGE has joined, as its actions see them.
  enum class Kind : uint8_t { Named, Derived, Values, Function, Merged, Join };
  Kind kind = Kind::Named;
  int line = 1;
  ObjectName name;
  std::string alias;
  std::vector<std::string> columnAliases;
  bool updateLock = false;
  std::vector<ExprPtr> args; // of a function
  std::unique_ptr<Query> query;
  std::vector<std::vector<ExprPtr>> rows;
  JoinKind join = JoinKind::Inner;
  std::unique_ptr<TableSource> left;
  std::unique_ptr<TableSource> right;
  ExprPtr on;
};
using TableSourcePtr = std::unique_ptr<TableSource>;

// What an identity column counts.
struct IdentityDefinition {
  int64_t seed = 1;
  int64_t increment = 1;
};

struct SelectItem {
  ExprPtr expr; // null for a star and for IDENTITY()
  // IDENTITY(type, seed, increment) of SELECT ... INTO.
  std::optional<IdentityDefinition> identity;
  Type identityType;
  std::string alias;
  std::string variable; // SELECT @v = expr
  std::vector<std::string> starPrefix;
  std::vector<std::string> starWithout; // columns that the star leaves out
};

// Which rows around the current one a window function sees.
enum class FrameUnit : uint8_t { None, Rows, Range };
enum class FrameEdge : uint8_t { UnboundedPreceding, Preceding, CurrentRow, Following, UnboundedFollowing };
struct Frame {
  FrameUnit unit = FrameUnit::None;
  FrameEdge start = FrameEdge::UnboundedPreceding;
  FrameEdge end = FrameEdge::CurrentRow;
  int64_t startRows = 0; // with Preceding and Following
  int64_t endRows = 0;
  bool operator==(const Frame&) const = default;
};

// OVER (...)
struct Window {
  std::vector<ExprPtr> partitionBy;
  std::vector<OrderItem> orderBy;
  Frame frame;
};

// Of a query that stands for PIVOT: it is grouped by what its star gives. Of one that stands for UNPIVOT: the
// columns that its star leaves out have one type.
enum class PivotKind : uint8_t { None, Pivot, Unpivot };

struct Select {
  int line = 1;
  PivotKind pivot = PivotKind::None;
  bool distinct = false;
  ExprPtr top;
  bool topPercent = false;
  bool topTies = false; // WITH TIES
  std::vector<SelectItem> items;
  std::optional<ObjectName> into;
  TableSourcePtr from;
  ExprPtr where;
  std::vector<ExprPtr> groupBy;
  // ROLLUP, CUBE and GROUPING SETS, multiplied out: each set has the places of its expressions in groupBy.
  std::vector<std::vector<size_t>> groupingSets; // empty for a plain GROUP BY
  ExprPtr having;
};

struct CommonTable {
  std::string name;
  std::vector<std::string> columns;
  std::unique_ptr<Query> query;
};

enum class SetOp : uint8_t { None, Union, UnionAll, Except, Intersect };

// How deep a recursive common table expression may go unless the statement says otherwise; 0 is no limit.
inline constexpr int kMaxRecursion = 100;

// Either one SELECT (op None) or two queries combined.
struct Query {
  std::vector<CommonTable> commonTables;
  SetOp op = SetOp::None;
  std::unique_ptr<Select> select;
  std::unique_ptr<Query> left;
  std::unique_ptr<Query> right;
  std::vector<OrderItem> orderBy;
  ExprPtr offset;
  ExprPtr fetch; // null where no FETCH follows the OFFSET
  int maxRecursion = kMaxRecursion;
};
using QueryPtr = std::unique_ptr<Query>;

// The table that SELECT ... INTO makes, which the first SELECT of a UNION names; null for none.
const ObjectName* IntoOf(const Query& query);

} // namespace tsql
