// Rows as one value: t_pack(a, b, ...) is an aggregate that packs those of a query, and t_rows(value) stands
// in FROM and gives them back as its columns c0, c1, .... An argument of a function in FROM may use the
// sources left of it, so that a query which does so is written as t_rows((SELECT t_pack(...) FROM (query))).
//
// A packed value is the number of columns (4 bytes) and then each value: a byte that is SQLite's number of
// its kind, and 8 bytes for a number, or the size (8 bytes) and the bytes.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr int kColumns = 256;
constexpr int kArgument = kColumns; // the hidden column that is the argument

// ---- t_pack

struct Packer {
  std::string* bytes;
};

template <typename Number>
void AppendNumber(std::string& bytes, Number number) {
  std::array<char, sizeof(Number)> raw{};
  std::memcpy(raw.data(), &number, raw.size());
  bytes.append(raw.data(), raw.size());
}

void AppendValue(std::string& bytes, sqlite3_value* value) {
  const int kind = sqlite3_value_type(value);
  bytes.push_back(static_cast<char>(kind));
  switch (kind) {
  case SQLITE_INTEGER: AppendNumber(bytes, sqlite3_value_int64(value)); break;
  case SQLITE_FLOAT: AppendNumber(bytes, sqlite3_value_double(value)); break;
  case SQLITE_TEXT:
  case SQLITE_BLOB: {
    const auto* start = static_cast<const char*>(sqlite3_value_blob(value));
    const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
    AppendNumber(bytes, static_cast<int64_t>(size));
    if (start != nullptr) bytes.append(start, size);
    break;
  }
  default: break;
  }
}

void PackStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<Packer*>(sqlite3_aggregate_context(context, sizeof(Packer)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const FunctionCall call(context, count, values);
  Protect(call, [&] {
    if (state->bytes == nullptr) {
      state->bytes = new std::string();
      AppendNumber(*state->bytes, static_cast<int32_t>(count));
    }
    for (int i = 0; i < count; ++i) AppendValue(*state->bytes, values[i]);
  });
}

void PackFinal(sqlite3_context* context) {
  auto* state = static_cast<Packer*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->bytes == nullptr) return sqlite3_result_null(context);
  const std::unique_ptr<std::string> bytes(std::exchange(state->bytes, nullptr));
  sqlite3_result_blob64(context, bytes->data(), bytes->size(), SQLITE_TRANSIENT);
}

// t_split(text, separator): the parts of a text as rows of one column.
void Split(const FunctionCall& call) {
  const std::string_view separator = call.IsNull(1) ? std::string_view() : call.Text(1);
  if (CharCount(separator) != 1) Fail(214, {"separator", "nchar(1)/nvarchar(1)"});
  if (call.IsNull(0)) return call.ReturnNull();
  std::string bytes;
  AppendNumber(bytes, int32_t{1});
  const std::string_view text = call.Text(0);
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find(separator, start), text.size());
    bytes.push_back(static_cast<char>(SQLITE_TEXT));
    AppendNumber(bytes, static_cast<int64_t>(end - start));
    bytes.append(text.substr(start, end - start));
    start = end + separator.size();
  }
  call.ReturnBytes(bytes);
}

// ---- t_rows

// Walks through a packed value. It has been packed here, so that nothing in it is checked.
class Reader {
 public:
  void Open(std::string_view bytes) {
    rest_ = bytes;
    columns_ = rest_.empty() ? 0 : static_cast<size_t>(TakeNumber<int32_t>());
    values_.clear();
  }
  // Goes to the next row; false behind the last one.
  bool Next() {
    if (rest_.empty()) return false;
    values_.clear();
    for (size_t i = 0; i < columns_; ++i) {
      values_.push_back(rest_);
      Skip();
    }
    return true;
  }
  void Return(sqlite3_context* context, size_t column) const {
    if (column >= values_.size()) return sqlite3_result_null(context);
    std::string_view value = values_[column];
    const int kind = static_cast<unsigned char>(value.front());
    value.remove_prefix(1);
    switch (kind) {
    case SQLITE_INTEGER: return sqlite3_result_int64(context, NumberAt<int64_t>(value));
    case SQLITE_FLOAT: return sqlite3_result_double(context, NumberAt<double>(value));
    case SQLITE_TEXT:
    case SQLITE_BLOB: {
      const auto size = static_cast<uint64_t>(NumberAt<int64_t>(value));
      const char* start = value.data() + sizeof(int64_t);
      if (kind == SQLITE_BLOB) return sqlite3_result_blob64(context, start, size, SQLITE_TRANSIENT);
      return sqlite3_result_text64(context, start, size, SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    default: return sqlite3_result_null(context);
    }
  }

 private:
  template <typename Number>
  static Number NumberAt(std::string_view bytes) {
    Number number{};
    std::memcpy(&number, bytes.data(), sizeof(Number));
    return number;
  }
  template <typename Number>
  Number TakeNumber() {
    const auto number = NumberAt<Number>(rest_);
    rest_.remove_prefix(sizeof(Number));
    return number;
  }
  void Skip() {
    const int kind = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    if (kind == SQLITE_NULL) return;
    const auto number = TakeNumber<int64_t>();
    if (kind == SQLITE_TEXT || kind == SQLITE_BLOB) rest_.remove_prefix(static_cast<size_t>(number));
  }

  std::string_view rest_;
  size_t columns_ = 0;
  std::vector<std::string_view> values_; // of the row
};

struct Cursor : sqlite3_vtab_cursor {
  std::string bytes;
  Reader reader;
  bool atEnd = true;
  int64_t row = 0;
};

// Runs `body`, of which running out of memory does not get into SQLite.
template <typename Body>
int Guard(const Body& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

int Connect(sqlite3* connection, void* /*data*/, int /*count*/, const char* const* /*arguments*/,
            sqlite3_vtab** table, char** /*message*/) {
  return Guard([&] {
    std::string declaration = "CREATE TABLE x(";
    for (int i = 0; i < kColumns; ++i) declaration += "c" + std::to_string(i) + ", ";
    const int result = sqlite3_declare_vtab(connection, (declaration + "packed HIDDEN)").c_str());
    if (result != SQLITE_OK) return result;
    *table = new sqlite3_vtab();
    return sqlite3_vtab_config(connection, SQLITE_VTAB_INNOCUOUS);
  });
}

int Disconnect(sqlite3_vtab* table) {
  delete table;
  return SQLITE_OK;
}

// The argument must be known, or there are no rows to speak of.
int BestIndex(sqlite3_vtab* /*table*/, sqlite3_index_info* info) {
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.iColumn != kArgument || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.usable == 0) return SQLITE_CONSTRAINT;
    info->aConstraintUsage[i].argvIndex = 1;
    info->aConstraintUsage[i].omit = 1;
    info->estimatedCost = 10;
    info->estimatedRows = 10;
    return SQLITE_OK;
  }
  return SQLITE_CONSTRAINT;
}

int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  return Guard([&] {
    *cursor = new Cursor();
    return SQLITE_OK;
  });
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete static_cast<Cursor*>(cursor);
  return SQLITE_OK;
}

int Next(sqlite3_vtab_cursor* base) {
  auto& cursor = *static_cast<Cursor*>(base);
  return Guard([&] {
    cursor.atEnd = !cursor.reader.Next();
    ++cursor.row;
    return SQLITE_OK;
  });
}

int Filter(sqlite3_vtab_cursor* base, int /*index*/, const char* /*name*/, int /*count*/,
           sqlite3_value** values) {
  auto& cursor = *static_cast<Cursor*>(base);
  return Guard([&] {
    const auto* start = static_cast<const char*>(sqlite3_value_blob(values[0]));
    const auto size = static_cast<size_t>(sqlite3_value_bytes(values[0]));
    cursor.bytes = start == nullptr ? std::string() : std::string(start, size);
    cursor.reader.Open(cursor.bytes);
    cursor.row = 0;
    return Next(base);
  });
}

int AtEnd(sqlite3_vtab_cursor* base) {
  return static_cast<Cursor*>(base)->atEnd ? 1 : 0;
}

int ReadColumn(sqlite3_vtab_cursor* base, sqlite3_context* context, int column) {
  static_cast<Cursor*>(base)->reader.Return(context, static_cast<size_t>(column));
  return SQLITE_OK;
}

int ReadRow(sqlite3_vtab_cursor* base, sqlite3_int64* row) {
  *row = static_cast<Cursor*>(base)->row;
  return SQLITE_OK;
}

// Without xCreate it is a function in FROM and no kind of table that can be created.
constexpr sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.xConnect = Connect;
  module.xBestIndex = BestIndex;
  module.xDisconnect = Disconnect;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = AtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = ReadRow;
  return module;
}
constexpr sqlite3_module kRowsModule = MakeModule();

} // namespace

void RegisterPackedRows(sqlite3* connection, FunctionContext& context) {
  CheckRegistered(connection,
                  sqlite3_create_function_v2(connection, names::kPack, -1, SQLITE_UTF8 | SQLITE_INNOCUOUS,
                                             &context, nullptr, PackStep, PackFinal, nullptr));
  Register<Split>(connection, context, names::kSplit, 2);
  CheckRegistered(connection,
                  sqlite3_create_module_v2(connection, names::kRows, &kRowsModule, nullptr, nullptr));
}

} // namespace tsql
