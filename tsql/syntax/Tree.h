// The syntax tree of a batch: what was written, nothing resolved. Parser output and binder input.
#pragma once

#include "tsql/syntax/Lexer.h"
#include "tsql/values/Types.h"

#include <memory>

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

// An expression that the interpreter evaluates on its own; `slot` numbers its plan within the batch.
struct Evaluated {
  ExprPtr expr;
  int slot = 0;
};

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

// ---- statements

enum class StatementKind : uint8_t {
  Query,
  Insert,
  Update,
  Delete,
  CreateTable,
  CreateIndex,
  Drop,
  AlterTable,
  Truncate,
  CreateView,
  CreateProcedure,
  Declare,
  SetVariable,
  SetOption,
  If,
  While,
  Block,
  Break,
  Continue,
  Return,
  Print,
  Transaction,
  TryCatch,
  Raiserror,
  Throw,
  Execute,
};

struct Statement {
  explicit Statement(StatementKind statementKind) : kind(statementKind) {}
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  virtual ~Statement() = default;
  StatementKind kind;
  int line = 1;
  int slot = 0; // of its plan, for the kinds that have one
};
using StatementPtr = std::unique_ptr<Statement>;
using StatementList = std::vector<StatementPtr>;

struct QueryStatement : Statement {
  QueryStatement() : Statement(StatementKind::Query) {}
  QueryPtr query;
};

struct InsertStatement : Statement {
  InsertStatement() : Statement(StatementKind::Insert) {}
  ObjectName table;
  std::vector<std::string> columns;
  std::vector<std::vector<ExprPtr>> rows;
  QueryPtr query;
  bool defaultValues = false;
};

struct Assignment {
  std::vector<std::string> column;
  ExprPtr value;
};

struct UpdateStatement : Statement {
  UpdateStatement() : Statement(StatementKind::Update) {}
  std::vector<CommonTable> commonTables;
  ObjectName target;
  ExprPtr top;
  std::vector<Assignment> assignments;
  TableSourcePtr from;
  ExprPtr where;
};

struct DeleteStatement : Statement {
  DeleteStatement() : Statement(StatementKind::Delete) {}
  std::vector<CommonTable> commonTables;
  ObjectName target;
  ExprPtr top;
  TableSourcePtr from;
  ExprPtr where;
};

struct ColumnDefinition {
  std::string name;
  Type type;
  std::optional<bool> nullable;
  bool identity = false;
  int64_t seed = 1;
  std::string defaultText; // source of the DEFAULT expression
  int line = 1;
};

struct ConstraintDefinition {
  enum class Kind : uint8_t { PrimaryKey, Unique, Check, ForeignKey };
  Kind kind = Kind::PrimaryKey;
  std::string name;
  std::vector<std::string> columns;
  std::string checkText;
  ObjectName referenced;
  std::vector<std::string> referencedColumns;
};

struct CreateTableStatement : Statement {
  CreateTableStatement() : Statement(StatementKind::CreateTable) {}
  ObjectName table;
  std::vector<ColumnDefinition> columns;
  std::vector<ConstraintDefinition> constraints;
};

struct AlterTableStatement : Statement {
  AlterTableStatement() : Statement(StatementKind::AlterTable) {}
  ObjectName table;
  bool checksRows = true; // those that are there, against the new constraints
  std::vector<ColumnDefinition> columns;
  std::vector<ConstraintDefinition> constraints;
};

struct CreateIndexStatement : Statement {
  CreateIndexStatement() : Statement(StatementKind::CreateIndex) {}
  std::string name;
  ObjectName table;
  std::vector<std::string> columns;
  std::vector<bool> descending;
  bool unique = false;
};

enum class ObjectKind : uint8_t { Table, View, Procedure, Index };

struct DropStatement : Statement {
  DropStatement() : Statement(StatementKind::Drop) {}
  ObjectKind object = ObjectKind::Table;
  std::vector<ObjectName> names; // of an index: table.index
  bool ifExists = false;
};

struct TruncateStatement : Statement {
  TruncateStatement() : Statement(StatementKind::Truncate) {}
  ObjectName table;
};

struct CreateViewStatement : Statement {
  CreateViewStatement() : Statement(StatementKind::CreateView) {}
  ObjectName name;
  std::vector<std::string> columns;
  QueryPtr query;
  std::string text;
  bool alter = false;
};

struct ProcedureParameter {
  std::string name;
  Type type;
  bool output = false;
  Evaluated defaultValue; // expr null where there is none
};

struct CreateProcedureStatement : Statement {
  CreateProcedureStatement() : Statement(StatementKind::CreateProcedure) {}
  ObjectName name;
  std::vector<ProcedureParameter> parameters;
  StatementList body;
  std::string text;
  bool alter = false;
};

struct VariableDeclaration {
  std::string name;
  Type type;
  Evaluated initial;
};

struct DeclareStatement : Statement {
  DeclareStatement() : Statement(StatementKind::Declare) {}
  std::vector<VariableDeclaration> variables;
};

struct SetVariableStatement : Statement {
  SetVariableStatement() : Statement(StatementKind::SetVariable) {}
  std::string name;
  Evaluated value;
};

struct SetOptionStatement : Statement {
  SetOptionStatement() : Statement(StatementKind::SetOption) {}
  std::string option; // lower case
  std::string value;  // ON, OFF or what was written
  ObjectName table;   // of IDENTITY_INSERT
};

struct IfStatement : Statement {
  IfStatement() : Statement(StatementKind::If) {}
  Evaluated condition;
  StatementPtr thenBranch;
  StatementPtr elseBranch;
};

struct WhileStatement : Statement {
  WhileStatement() : Statement(StatementKind::While) {}
  Evaluated condition;
  StatementPtr body;
};

struct BlockStatement : Statement {
  BlockStatement() : Statement(StatementKind::Block) {}
  StatementList statements;
};

struct SimpleStatement : Statement {
  using Statement::Statement; // BREAK, CONTINUE
};

struct ReturnStatement : Statement {
  ReturnStatement() : Statement(StatementKind::Return) {}
  Evaluated value;
};

struct PrintStatement : Statement {
  PrintStatement() : Statement(StatementKind::Print) {}
  Evaluated value;
};

enum class TransactionAction : uint8_t { Begin, Commit, Rollback };

struct TransactionStatement : Statement {
  TransactionStatement() : Statement(StatementKind::Transaction) {}
  TransactionAction action = TransactionAction::Begin;
};

struct TryCatchStatement : Statement {
  TryCatchStatement() : Statement(StatementKind::TryCatch) {}
  StatementList tryBody;
  StatementList catchBody;
};

struct RaiserrorStatement : Statement {
  RaiserrorStatement() : Statement(StatementKind::Raiserror) {}
  std::vector<Evaluated> arguments; // message, severity, state, values
};

struct ThrowStatement : Statement {
  ThrowStatement() : Statement(StatementKind::Throw) {}
  std::vector<Evaluated> arguments; // none, or number, message, state
};

struct ExecuteArgument {
  std::string name; // @p = value
  Evaluated value;
  std::string outputVariable;
  bool useDefault = false;
};

struct ExecuteStatement : Statement {
  ExecuteStatement() : Statement(StatementKind::Execute) {}
  std::string returnVariable;
  ObjectName procedure;
  Evaluated text; // EXEC(text)
  std::vector<ExecuteArgument> arguments;
};

// A parsed batch or procedure body. It owns its text, which tokens and messages refer to.
struct Batch {
  std::string text;
  StatementList statements;
  int slots = 0;
  int markers = 0;
};

} // namespace tsql
