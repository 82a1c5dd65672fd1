// The rows that a change has staged, as a table that SQLite reads through a module of virtual tables. They
// are kept outside of SQLite, so that a change within a change has rows of its own and no table has to be
// made while a statement runs. So are those that a MERGE has joined. A trigger sees those of the statement
// that fires it as two tables, of the new and the old values.
#include "tsql/functions/FunctionCall.h"

namespace tsql {
namespace {

enum class Image : uint8_t { Whole, Merged, New, Old };

struct StagedRowsTable {
  sqlite3_vtab base;
  const FunctionContext* context;
  Image image;
};

// Null where there are none: an insert has no old values, a delete no new ones.
const StagedRows* RowsOf(const FunctionContext& context, Image image) {
  if (image == Image::Whole) return context.staged;
  if (image == Image::Merged) return context.merged;
  const TriggerEvent without = image == Image::New ? TriggerEvent::Delete : TriggerEvent::Insert;
  return context.fired == nullptr || context.fired->event == without ? nullptr : &context.fired->rows;
}

// Where the values of a column are in a row.
size_t PositionOf(int column, Image image) {
  const auto index = static_cast<size_t>(column);
  return image == Image::Whole || image == Image::Merged ? index : 2 * index + (image == Image::New ? 1 : 2);
}

struct StagedCursor {
  sqlite3_vtab_cursor base;
  const StagedRows* rows = nullptr;
  size_t at = 0;

  static StagedCursor& Of(sqlite3_vtab_cursor* cursor) { return *reinterpret_cast<StagedCursor*>(cursor); }
};

template <Image image>
int ConnectStaged(sqlite3* connection, void* context, int /*count*/, const char* const* /*arguments*/,
                  sqlite3_vtab** table, char** /*message*/) {
  // Of each column of a table the values before and after, and the row's number.
  constexpr int kMostColumns = 1 + 2 * 1024;
  const int result = DeclareColumns(connection, kMostColumns);
  if (result != SQLITE_OK) return result;
  auto* made = new (std::nothrow) StagedRowsTable{{}, static_cast<const FunctionContext*>(context), image};
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
  const auto& table = *reinterpret_cast<StagedRowsTable*>(cursor->pVtab);
  own.rows = RowsOf(*table.context, table.image);
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
  const size_t index = PositionOf(column, reinterpret_cast<StagedRowsTable*>(own.base.pVtab)->image);
  if (index < row.size()) FunctionCall(context, 0, nullptr).Return(row[index]);
  return SQLITE_OK;
}

int GiveStagedRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(StagedCursor::Of(cursor).at);
  return SQLITE_OK;
}

template <Image image>
sqlite3_module MakeStagedModule() {
  sqlite3_module module{};
  module.xConnect = ConnectStaged<image>;
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

template <Image image>
void RegisterImage(sqlite3* connection, FunctionContext& context, const char* name) {
  static const sqlite3_module kModule = MakeStagedModule<image>();
  CheckRegistered(connection, sqlite3_create_module_v2(connection, name, &kModule, &context, nullptr));
}

} // namespace

void RegisterStagedRows(sqlite3* connection, FunctionContext& context) {
  RegisterImage<Image::Whole>(connection, context, names::kStagedRows);
  RegisterImage<Image::Merged>(connection, context, names::kMergedRows);
  RegisterImage<Image::New>(connection, context, names::kInsertedRows);
  RegisterImage<Image::Old>(connection, context, names::kDeletedRows);
}

} // namespace tsql
