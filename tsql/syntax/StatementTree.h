// The syntax tree of statements: what was written, nothing resolved. The parser makes it and the binder reads
// it; nobody changes it afterwards.
#pragma once

#include "tsql/syntax/QueryTree.h"
#include "tsql/values/CollationNames.h"

namespace tsql {

enum class StatementKind : uint8_t {
  Query,
  Insert,
  InsertExecute,
  Update,
  Delete,
  Merge,
  CreateTable,
  CreateIndex,
  Drop,
  AlterTable,
  Truncate,
  CreateView,
  CreateProcedure,
  CreateFunction,
  CreateTrigger,
  SwitchTriggers,
  CreateSchema,
  AlterSchema,
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
  Label,
  Goto,
  WaitFor,
  Use,
  CheckIdentity,
  Administration,
  TryCatch,
  DeclareCursor,
  Cursor,
  Fetch,
  Raiserror,
  Throw,
  Execute,
  System, // the work of a procedure of the server; no batch can write it
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

// OUTPUT items [INTO table (columns)] of a changing statement. Of `select` there are the items alone.
struct OutputClause {
  Select select;
  std::optional<ObjectName> into;
  std::vector<std::string> columns;
};
using OutputPtr = std::unique_ptr<OutputClause>;

struct MergeStatement;

// Of a change that is an action of a MERGE: which one, from 1.
struct MergeRole {
  const MergeStatement* merge = nullptr;
  int action = 0;
};

struct InsertStatement : Statement {
  InsertStatement() : Statement(StatementKind::Insert) {}
  ExprPtr top;
  ObjectName table;
  std::vector<std::string> columns;
  std::vector<std::vector<ExprPtr>> rows;
  QueryPtr query;
  bool defaultValues = false;
  OutputPtr output;
  MergeRole role;
};

struct Assignment {
  std::string variable;            // SET @v = expr, SET @v = column = expr; empty for none
  std::vector<std::string> column; // none where only the variable is assigned
  bool isCompound = false;         // the value begins with the column itself
  ExprPtr value;
};

// A cursor as statements name it.
struct CursorName {
  std::string name; // with its @ for a cursor variable; empty for none
  bool isGlobal = false;
};

struct UpdateStatement : Statement {
  UpdateStatement() : Statement(StatementKind::Update) {}
  CursorName currentOf;
  std::vector<CommonTable> commonTables;
  ObjectName target;
  ExprPtr top;
  bool topPercent = false;
  std::vector<Assignment> assignments;
  TableSourcePtr from;
  ExprPtr where;
  int maxRecursion = kMaxRecursion;
  OutputPtr output;
  MergeRole role;
};

struct DeleteStatement : Statement {
  DeleteStatement() : Statement(StatementKind::Delete) {}
  CursorName currentOf;
  std::vector<CommonTable> commonTables;
  ObjectName target;
  ExprPtr top;
  bool topPercent = false;
  TableSourcePtr from;
  ExprPtr where;
  int maxRecursion = kMaxRecursion;
  OutputPtr output;
  MergeRole role;
};

// Which rows of the join of target and source an action of MERGE is for: those of both, of the source alone,
// of the target alone.
enum class MergeMatch : uint8_t { Both, Source, Target };

struct MergeAction {
  MergeMatch match = MergeMatch::Both;
  ExprPtr condition; // of AND; null for none
  // An INSERT, UPDATE or DELETE from the merged rows, which have the source's name and columns.
  StatementPtr change;
};

struct MergeStatement : Statement {
  MergeStatement() : Statement(StatementKind::Merge) {}
  std::vector<CommonTable> commonTables;
  TableSourcePtr target;
  TableSourcePtr source; // a derived table; behind the source's columns it has one that is never null
  ExprPtr on;
  std::vector<MergeAction> actions;
  int maxRecursion = kMaxRecursion;
};

struct ColumnDefinition {
  std::string name;
  Type type;
  std::optional<bool> nullable;
  bool identity = false;
  int64_t seed = 1;
  int64_t increment = 1;
  std::string defaultText;  // source of the DEFAULT expression
  std::string defaultName;  // of its constraint; empty where none was given
  std::string computedText; // source of a computed column's expression
  bool isPersisted = false;
  bool withValues = false;                 // rows that are there get the default
  std::optional<NamedCollation> collation; // where one is given
  int line = 1;
};

// What becomes of rows that refer to a row which is deleted, or whose key gets another value. Files keep the
// numbers.
enum class ReferentialAction : uint8_t { NoAction = 0, Cascade = 1, SetNull = 2, SetDefault = 3 };

struct ConstraintDefinition {
  enum class Kind : uint8_t { PrimaryKey, Unique, Check, ForeignKey, Default };
  Kind kind = Kind::PrimaryKey;
  std::string name;
  std::vector<std::string> columns;
  std::string checkText; // source of the condition, or of the DEFAULT expression
  ObjectName referenced;
  std::vector<std::string> referencedColumns;
  ReferentialAction onDelete = ReferentialAction::NoAction;
  ReferentialAction onUpdate = ReferentialAction::NoAction;
};

struct CreateTableStatement : Statement {
  CreateTableStatement() : Statement(StatementKind::CreateTable) {}
  ObjectName table;
  std::vector<ColumnDefinition> columns;
  std::vector<ConstraintDefinition> constraints;
};

enum class AlterAction : uint8_t { Add, AlterColumn, Drop, SwitchConstraints };

// What ALTER TABLE ... DROP names.
struct DroppedElement {
  std::string name;
  bool isColumn = false;
  bool ifExists = false;
};

struct AlterTableStatement : Statement {
  AlterTableStatement() : Statement(StatementKind::AlterTable) {}
  ObjectName table;
  AlterAction action = AlterAction::Add;
  bool checksRows = true;                // whether existing rows must satisfy the constraints
  std::vector<ColumnDefinition> columns; // the new ones, or the altered one
  std::vector<ConstraintDefinition> constraints;
  std::vector<DroppedElement> dropped;
  bool enables = false;              // the constraints, or switches them off
  std::vector<std::string> switched; // the names of those; none for ALL
};

struct CreateIndexStatement : Statement {
  CreateIndexStatement() : Statement(StatementKind::CreateIndex) {}
  std::string name;
  ObjectName table;
  std::vector<std::string> columns;
  std::vector<bool> descending;
  std::vector<std::string> included; // columns that are only kept in it
  bool unique = false;
};

enum class ObjectKind : uint8_t { Table, View, Procedure, Function, Trigger, Index, Schema };

struct DropStatement : Statement {
  DropStatement() : Statement(StatementKind::Drop) {}
  ObjectKind object = ObjectKind::Table;
  std::vector<ObjectName> names;
  std::vector<ObjectName> tables; // of indexes
  bool ifExists = false;
};

// GRANT, DENY, REVOKE, UPDATE STATISTICS, CHECKPOINT: what they name must be there, and nothing more becomes
// of it. Whoever runs statements owns the database, so that no permission counts, and there are no
// statistics.
struct AdministrationStatement : Statement {
  enum class Action : uint8_t { Permission, Statistics, Checkpoint };
  AdministrationStatement() : Statement(StatementKind::Administration) {}
  Action action = Action::Checkpoint;
  ObjectName object; // or a schema's name
  bool isSchema = false;
  std::vector<std::string> columns;    // that a permission is for
  std::vector<std::string> statistics; // of the table
};

struct CreateSchemaStatement : Statement {
  CreateSchemaStatement() : Statement(StatementKind::CreateSchema) {}
  std::string name;
  std::string owner; // empty where none was written
};

struct AlterSchemaStatement : Statement {
  AlterSchemaStatement() : Statement(StatementKind::AlterSchema) {}
  std::string schema; // that gets the object
  ObjectName object;
};

struct TruncateStatement : Statement {
  TruncateStatement() : Statement(StatementKind::Truncate) {}
  ObjectName table;
};

// How the text of a view, procedure, function or trigger begins. The last makes what is not there and changes
// what is.
enum class DefinitionForm : uint8_t { Create, Alter, CreateOrAlter };

struct CreateViewStatement : Statement {
  CreateViewStatement() : Statement(StatementKind::CreateView) {}
  ObjectName name;
  std::vector<std::string> columns;
  QueryPtr query;
  std::string text;
  DefinitionForm form = DefinitionForm::Create;
  bool schemaBound = false; // WITH SCHEMABINDING
};

struct ProcedureParameter {
  std::string name;
  Type type;
  bool output = false;
  ExprPtr defaultValue; // null where there is none
};

struct CreateProcedureStatement : Statement {
  CreateProcedureStatement() : CreateProcedureStatement(StatementKind::CreateProcedure) {}
  explicit CreateProcedureStatement(StatementKind statementKind) : Statement(statementKind) {}
  ObjectName name;
  std::vector<ProcedureParameter> parameters;
  StatementList body;
  std::string text;
  DefinitionForm form = DefinitionForm::Create;
};

struct VariableDeclaration {
  std::string name;
  Type type;
  ExprPtr initial;
};

struct TableVariable {
  ObjectName name;
  std::vector<ColumnDefinition> columns;
  std::vector<ConstraintDefinition> constraints;
  int line = 1;
};

enum class FunctionKind : uint8_t { Scalar, Inline, Table };

struct CreateFunctionStatement : CreateProcedureStatement {
  CreateFunctionStatement() : CreateProcedureStatement(StatementKind::CreateFunction) {}
  FunctionKind function = FunctionKind::Scalar;
  Type returns;              // of a scalar function
  bool isNullOfNull = false; // RETURNS NULL ON NULL INPUT
  bool schemaBound = false;  // WITH SCHEMABINDING
  QueryPtr query;            // of an inline function
  TableVariable result;      // of a function that fills a table
};

enum class TriggerEvent : uint8_t { Insert, Update, Delete };

struct CreateTriggerStatement : CreateProcedureStatement {
  CreateTriggerStatement() : CreateProcedureStatement(StatementKind::CreateTrigger) {}
  ObjectName table; // or view
  std::vector<TriggerEvent> events;
  bool insteadOf = false;
};

// ENABLE TRIGGER and DISABLE TRIGGER, also as a part of ALTER TABLE.
struct SwitchTriggersStatement : Statement {
  SwitchTriggersStatement() : Statement(StatementKind::SwitchTriggers) {}
  ObjectName table;
  bool enables = false;
  bool alters = false;              // as a part of ALTER TABLE
  std::vector<ObjectName> triggers; // none for ALL
};

struct DeclareStatement : Statement {
  DeclareStatement() : Statement(StatementKind::Declare) {}
  std::vector<VariableDeclaration> variables;
  std::vector<TableVariable> tables;
  std::vector<std::string> cursors; // cursor variables
};

struct SetVariableStatement : Statement {
  SetVariableStatement() : Statement(StatementKind::SetVariable) {}
  std::string name;
  ExprPtr value;
};

struct SetOptionStatement : Statement {
  SetOptionStatement() : Statement(StatementKind::SetOption) {}
  std::string option; // lower case
  std::string value;  // ON, OFF or what was written; a variable's name
  ObjectName table;   // of IDENTITY_INSERT
};

// DBCC CHECKIDENT. The table is given by its name, or by a text that has it.
struct CheckIdentityStatement : Statement {
  CheckIdentityStatement() : Statement(StatementKind::CheckIdentity) {}
  ObjectName table;
  ExprPtr nameText;
  bool reseeds = true;
  ExprPtr newSeed;
  bool isSilent = false;
};

struct UseStatement : Statement {
  UseStatement() : Statement(StatementKind::Use) {}
  std::string database;
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

enum class TransactionAction : uint8_t { Begin, Commit, Rollback, Save };

struct TransactionStatement : Statement {
  TransactionStatement() : Statement(StatementKind::Transaction) {}
  TransactionAction action = TransactionAction::Begin;
  std::string name;  // of the transaction or savepoint; empty where none was written
  ExprPtr nameValue; // a variable that holds the name
};

struct DeclareCursorStatement : Statement {
  DeclareCursorStatement() : Statement(StatementKind::DeclareCursor) {}
  CursorName cursor;
  bool isLocal = false;
  bool scrolls = false;
  bool isReadOnly = false;
  bool isCounted = false; // its rows are known when it is opened: STATIC, KEYSET, INSENSITIVE
  bool isDynamic = false; // DYNAMIC was written
  QueryPtr query;
};

enum class CursorAction : uint8_t { Open, Close, Deallocate };

struct CursorStatement : Statement {
  CursorStatement() : Statement(StatementKind::Cursor) {}
  CursorAction action = CursorAction::Open;
  CursorName cursor;
};

enum class FetchKind : uint8_t { Next, Prior, First, Last, Absolute, Relative };

struct FetchStatement : Statement {
  FetchStatement() : Statement(StatementKind::Fetch) {}
  FetchKind fetch = FetchKind::Next;
  ExprPtr row; // of ABSOLUTE and RELATIVE
  CursorName cursor;
  std::vector<std::string> into;
};

struct LabelStatement : Statement {
  LabelStatement() : Statement(StatementKind::Label) {}
  std::string name;
};

struct GotoStatement : Statement {
  GotoStatement() : Statement(StatementKind::Goto) {}
  std::string label;
  const LabelStatement* target = nullptr;
};

struct WaitForStatement : Statement {
  WaitForStatement() : Statement(StatementKind::WaitFor) {}
  bool untilTime = false; // TIME, not DELAY
  ExprPtr time;
};

struct TryCatchStatement : Statement {
  TryCatchStatement() : Statement(StatementKind::TryCatch) {}
  StatementList tryBody;
  StatementList catchBody;
};

struct RaiserrorStatement : Statement {
  RaiserrorStatement() : Statement(StatementKind::Raiserror) {}
  std::vector<ExprPtr> arguments; // message, severity, state, values
  int errorNumber = 0;            // of the old form RAISERROR 50001 'message'; 0 for the other
  bool isLogged = false;          // WITH LOG, which lets the severity be 19
  bool setsError = false;         // WITH SETERROR: @@ERROR is the number, whatever the severity
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

// A procedure that executes a text with parameters.
inline constexpr std::string_view kDynamicProcedure = "sp_executesql";

struct ExecuteStatement : Statement {
  ExecuteStatement() : Statement(StatementKind::Execute) {}
  std::string returnVariable;
  ObjectName procedure;
  std::string nameVariable; // that has the procedure's name; empty where it is written
  bool isDynamic = false;   // kDynamicProcedure, whose first argument is the text
  ExprPtr text;             // EXEC(text)
  std::vector<ExecuteArgument> arguments;
};

struct InsertExecuteStatement : Statement {
  InsertExecuteStatement() : Statement(StatementKind::InsertExecute) {}
  ObjectName table;
  std::vector<std::string> columns;
  std::unique_ptr<ExecuteStatement> execute;
};

// A parsed batch or procedure body. It owns its text, which tokens and messages refer to.
struct Batch {
  std::string text;
  StatementList statements;
  int markers = 0;                      // parameters that are written as "?"
  std::optional<bool> quotedIdentifier; // the last value that it sets by itself
};

} // namespace tsql
