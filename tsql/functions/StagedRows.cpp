// The rows that a change has staged, as a table that SQLite reads through a module of virtual tables. They
// are kept outside of SQLite, so that a change within a change has rows of its own and no table has to be
// made while a statement runs.
#include "tsql/functions/FunctionCall.h"

namespace tsql {
namespace {

struct StagedRowsTable {
  sqlite3_vtab base;
  const FunctionContext* context;
};

struct StagedCursor {
  sqlite3_vtab_cursor base;
  const StagedRows* rows = nullptr;
  size_t at = 0;

  static StagedCursor& Of(sqlite3_vtab_cursor* cursor) { return *reinterpret_cast<StagedCursor*>(cursor); }
};

int ConnectStaged(sqlite3* connection, void* context, int /*count*/, const char* const* /*arguments*/,
                  sqlite3_vtab** table, char** /*message*/) {
  const int result = DeclareColumns(connection, sqlite3_limit(connection, SQLITE_LIMIT_COLUMN, -1));
  if (result != SQLITE_OK) return result;
  auto* made = new (std::nothrow) StagedRowsTable{{}, static_cast<const FunctionContext*>(context)};
  if (made == nullptr) return SQLITE_NOMEM;
  *table = &made->base;
  return SQLITE_OK;
}

int DisconnectStaged(sqlite3_vtab* table) {
  delete reinterpret_cast<StagedRowsTable*>(table);
  return SQLITE_OK;
}

int PlanStaged(sqlite3_vtab* /*table*/, sqlite3_index_info* info) {
  // The rows are to be the outer side of a join with the table that is changed, which has an index.
  constexpr double kCost = 1000;
  info->estimatedCost = kCost;
  info->estimatedRows = 1000;
  return SQLITE_OK;
}

int OpenStaged(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  auto* made = new (std::nothrow) StagedCursor();
  if (made == nullptr) return SQLITE_NOMEM;
  *cursor = &made->base;
  return SQLITE_OK;
}

int CloseStaged(sqlite3_vtab_cursor* cursor) {
  delete &StagedCursor::Of(cursor);
  return SQLITE_OK;
}

int BeginStaged(sqlite3_vtab_cursor* cursor, int /*index*/, const char* /*text*/, int /*count*/,
                sqlite3_value** /*values*/) {
  StagedCursor& own = StagedCursor::Of(cursor);
  own.rows = reinterpret_cast<StagedRowsTable*>(cursor->pVtab)->context->staged;
  own.at = 0;
  return SQLITE_OK;
}

int NextStaged(sqlite3_vtab_cursor* cursor) {
  ++StagedCursor::Of(cursor).at;
  return SQLITE_OK;
}

int IsStagedEnd(sqlite3_vtab_cursor* cursor) {
  const StagedCursor& own = StagedCursor::Of(cursor);
  return own.rows == nullptr || own.at >= own.rows->size() ? 1 : 0;
}

int GiveStagedColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const StagedCursor& own = StagedCursor::Of(cursor);
  const std::vector<Datum>& row = (*own.rows)[own.at];
  const auto index = static_cast<size_t>(column);
  if (index < row.size()) FunctionCall(context, 0, nullptr).Return(row[index]);
  return SQLITE_OK;
}

int GiveStagedRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(StagedCursor::Of(cursor).at);
  return SQLITE_OK;
}

sqlite3_module MakeStagedModule() {
  sqlite3_module module{};
  module.xConnect = ConnectStaged;
  module.xDisconnect = DisconnectStaged;
  module.xBestIndex = PlanStaged;
  module.xOpen = OpenStaged;
  module.xClose = CloseStaged;
  module.xFilter = BeginStaged;
  module.xNext = NextStaged;
  module.xEof = IsStagedEnd;
  module.xColumn = GiveStagedColumn;
  module.xRowid = GiveStagedRowid;
  return module;
}

} // namespace

void RegisterStagedRows(sqlite3* connection, FunctionContext& context) {
  static const sqlite3_module kModule = MakeStagedModule();
  CheckRegistered(connection,
                  sqlite3_create_module_v2(connection, names::kStagedRows, &kModule, &context, nullptr));
}

} // namespace tsql
