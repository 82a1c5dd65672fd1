#include "tsql/catalog/DefinitionStore.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tsql/values/CollationNames.h"

namespace tsql {
namespace {

// The positions of a key's columns, with a "d" after those in descending order: "0 2d".
std::string JoinNumbers(const std::vector<int>& numbers, const std::vector<bool>& descending) {
  std::string text;
  for (size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) text += ' ';
    text += std::to_string(numbers[i]);
    if (i < descending.size() && descending[i]) text += 'd';
  }
  return text;
}

// What the engine has not written is not worked with: the file is damaged.
void RequireIntact(bool intact) {
  if (!intact) throw SqliteFailure(SQLITE_CORRUPT, "database disk image is malformed: its definitions");
}

bool IsIntact(const Type& type) {
  constexpr int kMostPrecision = 38;
  constexpr int32_t kMostBytes = 8000;
  return type.id <= TypeId::DateTime2 && type.precision <= kMostPrecision && type.scale <= kMostPrecision &&
         type.length >= -1 && type.length <= kMostBytes;
}

// The entry of a table, which must be there.
TableInfo& TableOf(std::map<std::string, TableInfo, NameLess>& tables, std::string_view name) {
  const auto found = tables.find(std::string(name));
  RequireIntact(found != tables.end());
  return found->second;
}

void SplitNumbers(std::string_view text, KeyInfo& key) {
  constexpr int kMostColumns = 10000; // far more than a table can have
  int number = 0;
  bool pending = false;
  const auto flush = [&](bool descending) {
    if (!pending) return;
    key.columns.push_back(number);
    key.descending.push_back(descending);
    number = 0;
    pending = false;
  };
  for (const char character : text) {
    if (character >= '0' && character <= '9') {
      number = number * 10 + (character - '0');
      RequireIntact(number <= kMostColumns);
      pending = true;
    } else {
      flush(character == 'd');
    }
  }
  flush(false);
}

void RunWith(const Connection& connection, const std::string& sql, const std::vector<Datum>& values) {
  PreparedStatement statement = connection.Prepare(sql);
  int index = 1;
  for (const Datum& value : values) statement.Bind(index++, value);
  statement.Step();
}

// Whether there is something in the table that came with version 3.
bool HasThirdVersion(const TableInfo& table) {
  const auto isNew = [](const KeyInfo& key) { return key.kind == KeyKind::Default || key.disabled; };
  return std::ranges::any_of(table.keys, isNew) ||
         std::ranges::any_of(table.columns, &ColumnInfo::IsComputed);
}

int64_t EncodeKind(ModuleKind kind, const ModuleInfo& module) {
  return static_cast<int64_t>(kind) + (module.disabled ? storage::kDisabled : 0) +
         (module.options.ansiNulls ? 0 : storage::kAnsiNullsOff) +
         (module.options.quotedIdentifier ? 0 : storage::kQuotedIdentifierOff);
}

// The kind of a key and what goes with it, as one number.
int64_t EncodeKind(const KeyInfo& key) {
  return static_cast<int64_t>(key.kind) + (key.disabled ? storage::kDisabled : 0) +
         static_cast<int64_t>(key.onDelete) * storage::kOnDelete +
         static_cast<int64_t>(key.onUpdate) * storage::kOnUpdate;
}

void DecodeKind(int64_t number, KeyInfo& key) {
  RequireIntact(number >= 0 && number < storage::kActions * storage::kOnUpdate);
  key.kind = static_cast<KeyKind>(number % storage::kDisabled);
  key.disabled = number % storage::kOnDelete >= storage::kDisabled;
  key.onDelete = static_cast<ReferentialAction>(number / storage::kOnDelete % storage::kActions);
  key.onUpdate = static_cast<ReferentialAction>(number / storage::kOnUpdate);
  RequireIntact(key.kind <= KeyKind::Default);
  RequireIntact(key.kind == KeyKind::ForeignKey || !key.HasAction());
}

storage::ColumnValue ValueOf(const TableInfo& table, const ColumnInfo& column) {
  using storage::ColumnValue;
  if (column.IsComputed()) return column.isPersisted ? ColumnValue::Persisted : ColumnValue::Computed;
  if (!column.identity) return ColumnValue::Given;
  return table.CountsIdentity() ? ColumnValue::CountedIdentity : ColumnValue::Identity;
}

// What is kept with the value of the column: the source of its default or of its expression, or the increment
// of an identity column that SQLite does not count.
std::string TextOf(const TableInfo& table, const ColumnInfo& column) {
  if (column.IsComputed()) return column.computedText;
  return column.identity && table.CountsIdentity() ? std::to_string(table.increment) : column.defaultText;
}

int64_t IncrementOf(std::string_view text) {
  int64_t increment = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), increment);
  RequireIntact(error == std::errc() && end == text.data() + text.size() && increment != 0);
  return increment;
}

// What a foreign key refers to: the table and its columns, a line each.
std::string JoinReference(const KeyInfo& key) {
  std::string text = key.referencedTable;
  for (const std::string& column : key.referencedColumns) text += "\n" + column;
  return text;
}

void SplitReference(KeyInfo& key) {
  std::string_view text = key.checkText;
  const size_t end = text.find('\n');
  key.referencedTable = text.substr(0, end);
  for (size_t at = end; at != std::string_view::npos;) {
    const size_t next = text.find('\n', at + 1);
    key.referencedColumns.emplace_back(
        text.substr(at + 1, next == std::string_view::npos ? next : next - at - 1));
    at = next;
  }
  key.checkText.clear();
}

Datum Text(const std::string& text) {
  return Datum::OfText(text);
}

std::string Qualified(Place place, const char* table) {
  return std::string(PlaceName(place)) + "." + table;
}

} // namespace

std::vector<DefinitionStore::Schema> DefinitionStore::ReadSchemas() const {
  std::vector<Schema> schemas;
  if (!storage::HasSchemas(connection_)) return schemas;
  PreparedStatement rows =
      connection_.Prepare("SELECT id, name FROM " + Qualified(Place::Main, storage::kSchemas));
  while (rows.Step()) schemas.push_back({rows.ColumnInteger(0), std::string(rows.ColumnText(1))});
  return schemas;
}

void DefinitionStore::WriteSchema(const Schema& schema) const {
  if (!storage::HasSchemas(connection_)) storage::CreateSchemas(connection_);
  RunWith(connection_, "INSERT INTO " + Qualified(Place::Main, storage::kSchemas) + " VALUES (?, ?)",
          {Datum::OfInteger(schema.id), Text(schema.name)});
}

void DefinitionStore::EraseSchema(const Schema& schema) const {
  RunWith(connection_, "DELETE FROM " + Qualified(Place::Main, storage::kSchemas) + " WHERE id = ?",
          {Datum::OfInteger(schema.id)});
}

std::vector<TableInfo> DefinitionStore::ReadTables(Place place) const {
  TablesByName tables;
  PreparedStatement rows =
      connection_.Prepare("SELECT name, seed, rowid_column FROM " + Qualified(place, storage::kTables));
  while (rows.Step()) {
    TableInfo table;
    table.name = std::string(rows.ColumnText(0));
    table.storageName = table.name;
    table.place = place;
    table.seed = rows.ColumnInteger(1);
    table.rowidColumn = static_cast<int>(rows.ColumnInteger(2));
    tables.emplace(table.name, std::move(table));
  }
  ReadColumns(place, tables);
  ReadCollations(place, tables);
  ReadKeys(place, tables);
  std::vector<TableInfo> list;
  list.reserve(tables.size());
  for (auto& [name, table] : tables) {
    RequireIntact(table.rowidColumn >= -1 && std::cmp_less(table.rowidColumn + 1, table.columns.size() + 1));
    list.push_back(std::move(table));
  }
  return list;
}

void DefinitionStore::ReadColumns(Place place, TablesByName& tables) const {
  PreparedStatement rows =
      connection_.Prepare("SELECT table_name, name, type, nullable, identity, default_text FROM " +
                          Qualified(place, storage::kColumns) + " ORDER BY table_name, ordinal");
  while (rows.Step()) {
    TableInfo& table = TableOf(tables, rows.ColumnText(0));
    ColumnInfo column;
    column.name = std::string(rows.ColumnText(1));
    column.type = DecodeType(rows.ColumnInteger(2));
    RequireIntact(IsIntact(column.type));
    column.nullable = rows.ColumnInteger(3) != 0;
    const auto value = static_cast<storage::ColumnValue>(rows.ColumnInteger(4));
    RequireIntact(value >= storage::ColumnValue::Given && value <= storage::ColumnValue::CountedIdentity);
    const bool isCounted = value == storage::ColumnValue::CountedIdentity;
    column.identity = isCounted || value == storage::ColumnValue::Identity;
    column.isPersisted = value == storage::ColumnValue::Persisted;
    const bool isComputed = column.isPersisted || value == storage::ColumnValue::Computed;
    const std::string_view text = rows.ColumnText(5);
    if (isCounted) {
      table.increment = IncrementOf(text);
    } else {
      (isComputed ? column.computedText : column.defaultText) = std::string(text);
    }
    RequireIntact(isComputed == column.IsComputed());
    if (column.identity) table.identityColumn = static_cast<int>(table.columns.size());
    RequireIntact(!isCounted || table.CountsIdentity());
    table.columns.push_back(std::move(column));
  }
}

void DefinitionStore::ReadCollations(Place place, TablesByName& tables) const {
  if (!storage::HasCollations(connection_, place)) return;
  PreparedStatement rows =
      connection_.Prepare("SELECT table_name, ordinal, name FROM " + Qualified(place, storage::kCollations));
  while (rows.Step()) {
    TableInfo& table = TableOf(tables, rows.ColumnText(0));
    const int64_t ordinal = rows.ColumnInteger(1);
    RequireIntact(ordinal >= 0 && std::cmp_less(ordinal, table.columns.size()));
    std::optional<NamedCollation> collation = FindCollation(rows.ColumnText(2));
    RequireIntact(collation.has_value());
    table.columns[static_cast<size_t>(ordinal)].collation = std::move(*collation);
  }
}

void DefinitionStore::WriteCollations(const TableInfo& table) const {
  const auto isDefault = [](const ColumnInfo& column) { return column.collation.name.empty(); };
  if (std::ranges::all_of(table.columns, isDefault)) return;
  storage::CreateCollations(connection_, table.place);
  for (size_t i = 0; i < table.columns.size(); ++i)
    if (!isDefault(table.columns[i]))
      RunWith(connection_,
              "INSERT INTO " + Qualified(table.place, storage::kCollations) + " VALUES (?, ?, ?)",
              {Text(table.storageName), Datum::OfInteger(static_cast<int64_t>(i)),
               Text(table.columns[i].collation.name)});
}

void DefinitionStore::ReadKeys(Place place, TablesByName& tables) const {
  PreparedStatement rows = connection_.Prepare("SELECT table_name, name, kind, columns, check_text FROM " +
                                               Qualified(place, storage::kKeys) + " ORDER BY rowid");
  while (rows.Step()) {
    KeyInfo key;
    key.name = std::string(rows.ColumnText(1));
    DecodeKind(rows.ColumnInteger(2), key);
    SplitNumbers(rows.ColumnText(3), key);
    key.checkText = std::string(rows.ColumnText(4));
    if (key.kind == KeyKind::ForeignKey) SplitReference(key);
    TableInfo& table = TableOf(tables, rows.ColumnText(0));
    for (const int column : key.columns) RequireIntact(std::cmp_less(column, table.columns.size()));
    RequireIntact(key.kind != KeyKind::Default || key.columns.size() == 1);
    table.keys.push_back(std::move(key));
  }
}

std::vector<DefinitionStore::Module> DefinitionStore::ReadModules(Place place) const {
  std::vector<Module> modules;
  PreparedStatement rows = connection_.Prepare("SELECT name, kind, text FROM " +
                                               Qualified(place, storage::kModules) + " ORDER BY rowid");
  while (rows.Step()) {
    Module module;
    const int64_t kind = rows.ColumnInteger(1);
    RequireIntact(kind >= 0 && kind < 2 * storage::kQuotedIdentifierOff);
    module.kind = static_cast<ModuleKind>(kind % storage::kDisabled);
    module.info.disabled = (kind & storage::kDisabled) != 0;
    module.info.options.ansiNulls = (kind & storage::kAnsiNullsOff) == 0;
    module.info.options.quotedIdentifier = (kind & storage::kQuotedIdentifierOff) == 0;
    RequireIntact(module.kind >= ModuleKind::View && module.kind <= ModuleKind::Trigger);
    RequireIntact(!module.info.disabled || module.kind == ModuleKind::Trigger);
    module.info.kind = module.kind;
    module.info.name = std::string(rows.ColumnText(0));
    module.info.key = module.info.name;
    module.info.text = std::string(rows.ColumnText(2));
    modules.push_back(std::move(module));
  }
  return modules;
}

void DefinitionStore::WriteTable(const TableInfo& table) const {
  const auto isFine = [](const ColumnInfo& column) { return IsFine(column.type.id); };
  if (table.place == Place::Main && std::ranges::any_of(table.columns, isFine))
    storage::RequireVersion(connection_, storage::kFineVersion);
  if (table.place == Place::Main && HasThirdVersion(table))
    storage::RequireVersion(connection_, storage::kConstraintVersion);
  if (table.place == Place::Main && table.CountsIdentity())
    storage::RequireVersion(connection_, storage::kIdentityVersion);
  if (table.place == Place::Main && std::ranges::any_of(table.keys, &KeyInfo::HasAction))
    storage::RequireVersion(connection_, storage::kActionVersion);
  const auto insert = [&](const char* into, const char* values) {
    return "INSERT INTO " + Qualified(table.place, into) + " VALUES " + values;
  };
  RunWith(connection_, insert(storage::kTables, "(?, ?, ?)"),
          {Text(table.storageName), Datum::OfInteger(table.seed), Datum::OfInteger(table.rowidColumn)});
  int64_t ordinal = 0;
  for (const ColumnInfo& column : table.columns)
    RunWith(connection_, insert(storage::kColumns, "(?, ?, ?, ?, ?, ?, ?)"),
            {Text(table.storageName), Datum::OfInteger(ordinal++), Text(column.name),
             Datum::OfInteger(EncodeType(column.type)), Datum::OfInteger(column.nullable ? 1 : 0),
             Datum::OfInteger(static_cast<int64_t>(ValueOf(table, column))), Text(TextOf(table, column))});
  WriteCollations(table);
  for (const KeyInfo& key : table.keys)
    RunWith(connection_, insert(storage::kKeys, "(?, ?, ?, ?, ?)"),
            {Text(table.storageName), Text(key.name), Datum::OfInteger(EncodeKind(key)),
             Text(JoinNumbers(key.columns, key.descending)),
             Text(key.kind == KeyKind::ForeignKey ? JoinReference(key) : key.checkText)});
}

void DefinitionStore::EraseTable(const TableInfo& table) const {
  const auto erase = [&](const char* from, const char* column) {
    RunWith(connection_, "DELETE FROM " + Qualified(table.place, from) + " WHERE " + column + " = ?",
            {Text(table.storageName)});
  };
  erase(storage::kTables, "name");
  erase(storage::kColumns, "table_name");
  erase(storage::kKeys, "table_name");
  if (storage::HasCollations(connection_, table.place)) erase(storage::kCollations, "table_name");
}

void DefinitionStore::WriteModule(ModuleKind kind, const ModuleInfo& module) const {
  if (kind > ModuleKind::Procedure) storage::RequireVersion(connection_, storage::kFunctionVersion);
  if (kind == ModuleKind::Trigger) storage::RequireVersion(connection_, storage::kTriggerVersion);
  if (module.options != ModuleOptions()) storage::RequireVersion(connection_, storage::kOptionVersion);
  // What is altered keeps its row: the order of the rows is that in which triggers fire.
  RunWith(connection_,
          "INSERT INTO " + Qualified(Place::Main, storage::kModules) +
              " VALUES (?, ?, ?) ON CONFLICT(name) DO UPDATE SET kind = excluded.kind, text = excluded.text",
          {Text(module.key), Datum::OfInteger(EncodeKind(kind, module)), Text(module.text)});
}

void DefinitionStore::RenameModule(const std::string& from, const std::string& to) const {
  RunWith(connection_, "UPDATE " + Qualified(Place::Main, storage::kModules) + " SET name = ? WHERE name = ?",
          {Text(to), Text(from)});
}

void DefinitionStore::EraseModule(const std::string& key) const {
  RunWith(connection_, "DELETE FROM " + Qualified(Place::Main, storage::kModules) + " WHERE name = ?",
          {Text(key)});
}

} // namespace tsql
