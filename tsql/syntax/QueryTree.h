// The syntax tree of expressions and queries: what was written, nothing resolved.
#pragma once

#include <memory>

#include "tsql/syntax/Lexer.h"
#include "tsql/values/Types.h"

namespace tsql {

struct Query;

// ---- expressions

struct ObjectName {
  std::string schema; // empty where none was written
  std::string name;
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
  Exists,
  Subquery,
  Case,
  Call,
  Cast,
  Convert,
};

enum class CompareOp : uint8_t { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };

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
  bool hasOperand = false;
  bool hasElse = false;
  int marker = 0;                 // 0-based
  int depth = 1;                  // of the tree below, subqueries included
  std::string text;               // a literal's text, a function's or variable's name
  std::vector<std::string> parts; // a column's name with its qualifiers
  Type type;                      // CAST and CONVERT
  // Case: [operand] (when, then)* [else]; InList: the tested value first.
  std::vector<std::unique_ptr<Expr>> args;
  std::unique_ptr<Query> query;
};
using ExprPtr = std::unique_ptr<Expr>;

bool IsPredicate(const Expr& expr);

// ---- queries

enum class JoinKind : uint8_t { Inner, Left, Right, Full, Cross };

struct TableSource {
  enum class Kind : uint8_t { Named, Derived, Join };
  Kind kind = Kind::Named;
  int line = 1;
  ObjectName name;
  std::string alias;
  std::vector<std::string> columnAliases;
  bool updateLock = false;
  std::unique_ptr<Query> query;
  JoinKind join = JoinKind::Inner;
  std::unique_ptr<TableSource> left;
  std::unique_ptr<TableSource> right;
  ExprPtr on;
};
using TableSourcePtr = std::unique_ptr<TableSource>;

struct SelectItem {
  ExprPtr expr; // null for a star
  std::string alias;
  std::string variable; // SELECT @v = expr
  std::vector<std::string> starPrefix;
};

struct OrderItem {
  ExprPtr expr;
  bool descending = false;
};

struct Select {
  int line = 1;
  bool distinct = false;
  ExprPtr top;
  std::vector<SelectItem> items;
  std::optional<ObjectName> into;
  TableSourcePtr from;
  ExprPtr where;
  std::vector<ExprPtr> groupBy;
  ExprPtr having;
};

struct CommonTable {
  std::string name;
  std::vector<std::string> columns;
  std::unique_ptr<Query> query;
};

enum class SetOp : uint8_t { None, Union, UnionAll, Except, Intersect };

// Either one SELECT (op None) or two queries combined.
struct Query {
  std::vector<CommonTable> commonTables;
  SetOp op = SetOp::None;
  std::unique_ptr<Select> select;
  std::unique_ptr<Query> left;
  std::unique_ptr<Query> right;
  std::vector<OrderItem> orderBy;
};
using QueryPtr = std::unique_ptr<Query>;

} // namespace tsql
