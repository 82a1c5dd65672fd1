// A compiled batch or procedure: the tree, its variables, and the plans of its statements and expressions.
#pragma once

#include <memory>
#include <vector>

#include "tsql/bind/Binder.h"
#include "tsql/emit/Emitter.h"

namespace tsql {

// How many procedures and functions may be open within each other.
inline constexpr int kMaxNesting = 32;

// One statement or expression as SQLite runs it.
struct Plan {
  uint64_t version = 0; // of the catalog when it was bound; 0 for never
  BindOptions options;  // with which it was bound
  bool identityInsert = false;
  bool limited = false; // to the rows of SET ROWCOUNT
  bool fires = false;   // a change that triggers wait for
  bool wantsLock = false;
  bool callsFunctions = false;
  uint64_t ready = 0; // the catalog's version when these were made ready
  std::vector<Dependency> dependencies;
  std::vector<ParameterRef> parameters;
  std::vector<Column> columns;      // of a result
  std::vector<int> named;           // columns to which an UPDATE gives values
  std::vector<int> assigned;        // variables that a SELECT or SET assigns, by item
  TablePtr target;                  // of a change
  std::vector<TablePtr> changeable; // through a cursor: those whose rows' numbers follow the columns
  PreparedStatement statement;
  BoundExprPtr integer; // an expression that needs no statement (IntegerExpression.h); null for any other
};

// How an INSERT is made: as it is, returning what is staged of its rows, or not at all, for those rows alone.
enum class InsertForm : uint8_t { Plain, Returning, RowsOnly };

// A changing statement whose rows are staged. It is made for each run.
struct StagedPlan {
  EmittedChange sql;           // nothing for an INSERT
  EmittedSql outputSql;        // what OUTPUT gives
  std::vector<Column> columns; // of that
  TablePtr into;               // the table that it is put into, or null
};

struct CompiledUnit : std::enable_shared_from_this<CompiledUnit> {
  std::unique_ptr<Batch> batch;
  const StatementList* body = nullptr;
  const CreateProcedureStatement* procedure = nullptr; // or function or trigger; null for a batch
  const CreateFunctionStatement* function = nullptr;   // null for a batch, procedure or trigger
  const CreateTriggerStatement* trigger = nullptr;     // null for anything else
  std::vector<VariableInfo> variables;                 // a procedure's parameters come first
  std::vector<Type> markers;
  std::vector<std::string> cursors; // the cursor variables
  // The table variables, as they are declared. A function's unit has tables in SQLite of its own for them, of
  // which the first is what the function returns if it fills a table.
  std::vector<TablePtr> tables;
  uint32_t number = 0;                     // of a function's unit, in the names of these tables
  std::vector<PreparedStatement> clearing; // empties them
  bool clearsFirst = false;                // they could not be emptied when a call ended
  PreparedStatement result;                // reads the table that the function fills
  // Whether a statement waits to be bound until it runs.
  bool isDeferred = false;
  // By the number of the statement or expression. The planner makes them when they are first needed.
  std::vector<std::unique_ptr<Plan>> plans;
  bool isNew = false;                   // it is checked, before it is made
  ModulePtr module;                     // the procedure's text that this was compiled from
  std::optional<ModuleOptions> options; // of a module, which it has whatever the session sets
};

// Whether the dependency is a function that is called while a statement runs. An inline one is a part of it.
bool IsCall(const Dependency& dependency);

// Which parameter of a procedure an argument is for: that of its name, or without a name the one at its
// position. 8145 when the procedure has none of the name, 8144 when it has not so many.
size_t ParameterIndex(const CompiledUnit& procedure, const std::string& name, size_t position);

} // namespace tsql
