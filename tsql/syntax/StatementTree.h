// The syntax tree of statements: what was written, nothing resolved. The parser makes it and the binder reads
// it; nobody changes it afterwards.
#pragma once

#include "tsql/syntax/QueryTree.h"

namespace tsql {

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
  uint32_t number = 0; // among the expressions and statements of the batch
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
  bool checksRows = true; // whether existing rows must satisfy new constraints
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
  std::vector<ObjectName> names; // for an index, the table stands as its schema
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
  ExprPtr defaultValue; // null where there is none
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
  ExprPtr initial;
};

struct DeclareStatement : Statement {
  DeclareStatement() : Statement(StatementKind::Declare) {}
  std::vector<VariableDeclaration> variables;
};

struct SetVariableStatement : Statement {
  SetVariableStatement() : Statement(StatementKind::SetVariable) {}
  std::string name;
  ExprPtr value;
};

struct SetOptionStatement : Statement {
  SetOptionStatement() : Statement(StatementKind::SetOption) {}
  std::string option; // lower case
  std::string value;  // ON, OFF or what was written
  ObjectName table;   // of IDENTITY_INSERT
};

struct IfStatement : Statement {
  IfStatement() : Statement(StatementKind::If) {}
  ExprPtr condition;
  StatementPtr thenBranch;
  StatementPtr elseBranch;
};

struct WhileStatement : Statement {
  WhileStatement() : Statement(StatementKind::While) {}
  ExprPtr condition;
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
  ExprPtr value;
};

struct PrintStatement : Statement {
  PrintStatement() : Statement(StatementKind::Print) {}
  ExprPtr value;
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
  std::vector<ExprPtr> arguments; // message, severity, state, values
};

struct ThrowStatement : Statement {
  ThrowStatement() : Statement(StatementKind::Throw) {}
  std::vector<ExprPtr> arguments; // none, or number, message, state
};

struct ExecuteArgument {
  std::string name; // @p = value
  ExprPtr value;
  std::string outputVariable;
  bool useDefault = false;
};

struct ExecuteStatement : Statement {
  ExecuteStatement() : Statement(StatementKind::Execute) {}
  std::string returnVariable;
  ObjectName procedure;
  ExprPtr text; // EXEC(text)
  std::vector<ExecuteArgument> arguments;
};

// A parsed batch or procedure body. It owns its text, which tokens and messages refer to.
struct Batch {
  std::string text;
  StatementList statements;
  int markers = 0; // parameters that are written as "?"
};

} // namespace tsql
