// Calls of users' functions: as a value, and as a table that SQLite reads through a module of virtual tables.
#include "tsql/functions/FunctionCall.h"
#include "tsql/functions/SystemRows.h"

namespace tsql {
namespace {

void CallFunction(const FunctionCall& call) {
  std::vector<Datum> arguments;
  arguments.reserve(static_cast<size_t>(call.Count()) - 1);
  for (int i = 1; i < call.Count(); ++i) arguments.push_back(call.Value(i));
  call.Return(call.Context().userFunctions->CallScalar(call.Text(0), std::move(arguments)));
}

// ---- functions that are tables
//
// The table has the columns c0, c1 ... of any function. Hidden behind them are the function's name and its
// arguments, which stand in parentheses behind the table's name. A number in the name's place is that of a
// system view.

constexpr int kColumns = 1024; // as many as a table of the server may have
constexpr int kArguments = 100;

struct FunctionTable {
  sqlite3_vtab base;
  FunctionContext* context;
};

struct FunctionCursor {
  sqlite3_vtab_cursor base;
  UserFunctions::Rows rows;
  size_t at = 0;
};

FunctionCursor& CursorOf(sqlite3_vtab_cursor* cursor) {
  return *reinterpret_cast<FunctionCursor*>(cursor);
}

int Connect(sqlite3* connection, void* context, int /*count*/, const char* const* /*arguments*/,
            sqlite3_vtab** table, char** /*message*/) {
  const int result = DeclareColumns(connection, kColumns, kArguments);
  if (result != SQLITE_OK) return result;
  auto* made = new (std::nothrow) FunctionTable{{}, static_cast<FunctionContext*>(context)};
  if (made == nullptr) return SQLITE_NOMEM;
  *table = &made->base;
  return SQLITE_OK;
}

int Disconnect(sqlite3_vtab* table) {
  delete reinterpret_cast<FunctionTable*>(table);
  return SQLITE_OK;
}

int BestIndex(sqlite3_vtab* /*table*/, sqlite3_index_info* info) {
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.iColumn < kColumns || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    // The arguments must be known before the function can be called.
    if (constraint.usable == 0) return SQLITE_CONSTRAINT;
    info->aConstraintUsage[i].argvIndex = constraint.iColumn - kColumns + 1;
    info->aConstraintUsage[i].omit = 1;
  }
  constexpr double kCost = 1000000; // to call it once is better than often
  info->estimatedCost = kCost;
  info->estimatedRows = 1000;
  return SQLITE_OK;
}

int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  auto* made = new (std::nothrow) FunctionCursor();
  if (made == nullptr) return SQLITE_NOMEM;
  *cursor = &made->base;
  return SQLITE_OK;
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete &CursorOf(cursor);
  return SQLITE_OK;
}

int Filter(sqlite3_vtab_cursor* cursor, int /*index*/, const char* /*text*/, int count,
           sqlite3_value** values) {
  FunctionContext& context = *reinterpret_cast<FunctionTable*>(cursor->pVtab)->context;
  try {
    const FunctionCall call(nullptr, count, values);
    std::vector<Datum> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(call.Value(i));
    FunctionCursor& own = CursorOf(cursor);
    own.at = 0;
    const bool isView = sqlite3_value_type(call.Raw(0)) == SQLITE_INTEGER;
    own.rows = isView ? SystemRows(*context.catalog, static_cast<SystemView::Id>(call.Integer(0)))
                      : context.userFunctions->CallTable(call.Text(0), std::move(arguments));
  } catch (const Error& error) {
    context.error = error;
    sqlite3_free(cursor->pVtab->zErrMsg);
    cursor->pVtab->zErrMsg = sqlite3_mprintf("%s", error.what());
    return SQLITE_ERROR;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
  return SQLITE_OK;
}

int Next(sqlite3_vtab_cursor* cursor) {
  ++CursorOf(cursor).at;
  return SQLITE_OK;
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) {
  const FunctionCursor& own = CursorOf(cursor);
  return own.at >= own.rows.size() ? 1 : 0;
}

int GiveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const FunctionCursor& own = CursorOf(cursor);
  const std::vector<Datum>& row = own.rows[own.at];
  const auto index = static_cast<size_t>(column);
  if (index < row.size()) FunctionCall(context, 0, nullptr).Return(row[index]);
  return SQLITE_OK;
}

int GiveRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(CursorOf(cursor).at);
  return SQLITE_OK;
}

sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.xConnect = Connect;
  module.xDisconnect = Disconnect;
  module.xBestIndex = BestIndex;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = IsAtEnd;
  module.xColumn = GiveColumn;
  module.xRowid = GiveRowid;
  return module;
}

} // namespace

void RegisterUserFunctions(sqlite3* connection, FunctionContext& context) {
  static const sqlite3_module kModule = MakeModule();
  Register<CallFunction>(connection, context, names::kCallFunction, -1, Purity::Volatile);
  CheckRegistered(connection,
                  sqlite3_create_module_v2(connection, names::kFunctionRows, &kModule, &context, nullptr));
}

} // namespace tsql
