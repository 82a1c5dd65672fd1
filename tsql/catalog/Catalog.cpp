#include "tsql/catalog/Catalog.h"

#include "tsql/values/Collation.h"

#include <algorithm>

namespace tsql {
namespace {

std::string JoinNumbers(const std::vector<int>& numbers, const std::vector<bool>& descending) {
  std::string text;
  for (size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) text += ' ';
    text += std::to_string(numbers[i]);
    if (i < descending.size() && descending[i]) text += 'd';
  }
  return text;
}

void SplitNumbers(std::string_view text, KeyInfo& key) {
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

// A foreign key keeps what it refers to where a check keeps its text: table and columns, a line each.
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

} // namespace

const char* PlaceName(Place place) {
  return place == Place::Main ? "main" : place == Place::Global ? "global" : "temp";
}

Place PlaceOf(const ObjectName& name) {
  if (name.name.starts_with("##")) return Place::Global;
  return name.name.starts_with("#") ? Place::Temp : Place::Main;
}

bool NameLess::operator()(const std::string& left, const std::string& right) const {
  return CompareText(left, right) < 0;
}

int TableInfo::FindColumn(std::string_view columnName) const {
  for (size_t i = 0; i < columns.size(); ++i)
    if (EqualNames(columns[i].name, columnName)) return static_cast<int>(i);
  return -1;
}

std::string TableInfo::SqlName() const {
  return std::string(PlaceName(place)) + "." + QuoteName(storageName);
}

Catalog::Catalog(const Connection& connection, std::string databaseName)
    : connection_(connection), databaseName_(std::move(databaseName)) {}

void Catalog::CreateStorage(const Connection& connection, Place place) {
  const std::string in = std::string(" ") + PlaceName(place) + ".";
  connection.Run("CREATE TABLE IF NOT EXISTS" + in +
                 "\"~tables\"(name TEXT PRIMARY KEY, seed INTEGER, rowid_column INTEGER);"
                 "CREATE TABLE IF NOT EXISTS" +
                 in +
                 "\"~columns\"(table_name TEXT, ordinal INTEGER, name TEXT, type INTEGER, nullable INTEGER, "
                 "identity INTEGER, default_text TEXT, PRIMARY KEY(table_name, ordinal));"
                 "CREATE TABLE IF NOT EXISTS" +
                 in +
                 "\"~keys\"(table_name TEXT, name TEXT, kind INTEGER, columns TEXT, check_text TEXT);"
                 "CREATE TABLE IF NOT EXISTS" +
                 in + "\"~modules\"(name TEXT PRIMARY KEY, kind INTEGER, text TEXT);");
}

void Catalog::Refresh(uint64_t mainVersion, uint64_t globalVersion) {
  if (main_.version != mainVersion) {
    Load(Place::Main, main_);
    main_.version = mainVersion;
    ++version_;
  }
  if (global_.version != globalVersion) {
    Load(Place::Global, global_);
    global_.version = globalVersion;
    ++version_;
  }
}

void Catalog::Invalidate(Place place) {
  ContentsOf(place).version = 0;
}

void Catalog::Load(Place place, Contents& contents) const {
  const std::string from = std::string(" FROM ") + PlaceName(place) + ".";
  std::map<std::string, TableInfo, NameLess> tables;
  PreparedStatement rows = connection_.Prepare("SELECT name, seed, rowid_column" + from + "\"~tables\"");
  while (rows.Step()) {
    TableInfo table;
    table.name = std::string(rows.ColumnText(0));
    table.storageName = table.name;
    table.place = place;
    table.seed = rows.ColumnInteger(1);
    table.rowidColumn = static_cast<int>(rows.ColumnInteger(2));
    tables.emplace(table.name, std::move(table));
  }
  LoadColumns(place, tables);
  LoadKeys(place, tables);
  contents = {};
  for (auto& [name, table] : tables)
    contents.tables.emplace(name, std::make_shared<const TableInfo>(std::move(table)));
  FindForeignKeys(contents);
  rows = connection_.Prepare("SELECT name, kind, text" + from + "\"~modules\"");
  while (rows.Step()) {
    auto module = std::make_shared<ModuleInfo>();
    module->name = std::string(rows.ColumnText(0));
    module->text = std::string(rows.ColumnText(2));
    const bool isView = static_cast<ObjectKind>(rows.ColumnInteger(1)) == ObjectKind::View;
    (isView ? contents.views : contents.procedures).emplace(module->name, module);
  }
}

void Catalog::FindForeignKeys(Contents& contents) {
  contents.withForeignKeys.clear();
  for (const auto& entry : contents.tables) {
    const std::vector<KeyInfo>& keys = entry.second->keys;
    if (std::any_of(keys.begin(), keys.end(),
                    [](const KeyInfo& key) { return key.kind == KeyKind::ForeignKey; }))
      contents.withForeignKeys.push_back(entry.second);
  }
}

void Catalog::LoadColumns(Place place, std::map<std::string, TableInfo, NameLess>& tables) const {
  PreparedStatement rows = connection_.Prepare(
      std::string("SELECT table_name, name, type, nullable, identity, default_text FROM ") +
      PlaceName(place) + ".\"~columns\" ORDER BY table_name, ordinal");
  while (rows.Step()) {
    TableInfo& table = tables.at(std::string(rows.ColumnText(0)));
    ColumnInfo column;
    column.name = std::string(rows.ColumnText(1));
    column.type = DecodeType(rows.ColumnInteger(2));
    column.nullable = rows.ColumnInteger(3) != 0;
    column.identity = rows.ColumnInteger(4) != 0;
    column.defaultText = std::string(rows.ColumnText(5));
    if (column.identity) table.identityColumn = static_cast<int>(table.columns.size());
    table.columns.push_back(std::move(column));
  }
}

void Catalog::LoadKeys(Place place, std::map<std::string, TableInfo, NameLess>& tables) const {
  PreparedStatement rows =
      connection_.Prepare(std::string("SELECT table_name, name, kind, columns, check_text FROM ") +
                          PlaceName(place) + ".\"~keys\" ORDER BY rowid");
  while (rows.Step()) {
    KeyInfo key;
    key.name = std::string(rows.ColumnText(1));
    key.kind = static_cast<KeyKind>(rows.ColumnInteger(2));
    SplitNumbers(rows.ColumnText(3), key);
    key.checkText = std::string(rows.ColumnText(4));
    if (key.kind == KeyKind::ForeignKey) SplitReference(key);
    tables.at(std::string(rows.ColumnText(0))).keys.push_back(std::move(key));
  }
}

TablePtr Catalog::FindTable(const ObjectName& name) const {
  const Place place = PlaceOf(name);
  if (place == Place::Temp) {
    // The latest hides those of the callers.
    const auto found = std::find_if(temp_.rbegin(), temp_.rend(), [&](const TempTable& entry) {
      return EqualNames(entry.table->name, name.name);
    });
    return found != temp_.rend() ? found->table : nullptr;
  }
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const Contents& contents = place == Place::Global ? global_ : main_;
  const auto found = contents.tables.find(name.name);
  return found != contents.tables.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindView(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = main_.views.find(name.name);
  return found != main_.views.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindProcedure(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = main_.procedures.find(name.name);
  return found != main_.procedures.end() ? found->second : nullptr;
}

bool Catalog::Exists(const ObjectName& name) const {
  if (PlaceOf(name) == Place::Temp)
    return std::any_of(temp_.begin(), temp_.end(), [&](const TempTable& entry) {
      return entry.depth == depth_ && EqualNames(entry.table->name, name.name);
    });
  return FindTable(name) || FindView(name) || FindProcedure(name);
}

std::vector<std::string> Catalog::ObjectNames() const {
  std::vector<std::string> names;
  for (const auto& entry : main_.tables) names.push_back(entry.second->name);
  for (const auto& entry : main_.views) names.push_back(entry.second->name);
  for (const auto& entry : main_.procedures) names.push_back(entry.second->name);
  return names;
}

bool Catalog::ConstraintExists(const std::string& name) const {
  return std::any_of(main_.tables.begin(), main_.tables.end(), [&](const auto& entry) {
    const std::vector<KeyInfo>& keys = entry.second->keys;
    return std::any_of(keys.begin(), keys.end(), [&](const KeyInfo& key) {
      const bool isConstraint = key.kind != KeyKind::Index && key.kind != KeyKind::UniqueIndex;
      return isConstraint && EqualNames(key.name, name);
    });
  });
}

void Catalog::WriteTable(const TableInfo& table) const {
  const std::string into = std::string("INSERT INTO ") + PlaceName(table.place) + ".";
  RunWith(connection_, into + "\"~tables\" VALUES (?, ?, ?)",
          {Text(table.name), Datum::OfInteger(table.seed), Datum::OfInteger(table.rowidColumn)});
  int64_t ordinal = 0;
  for (const ColumnInfo& column : table.columns)
    RunWith(connection_, into + "\"~columns\" VALUES (?, ?, ?, ?, ?, ?, ?)",
            {Text(table.name), Datum::OfInteger(ordinal++), Text(column.name),
             Datum::OfInteger(EncodeType(column.type)), Datum::OfInteger(column.nullable ? 1 : 0),
             Datum::OfInteger(column.identity ? 1 : 0), Text(column.defaultText)});
  for (const KeyInfo& key : table.keys)
    RunWith(connection_, into + "\"~keys\" VALUES (?, ?, ?, ?, ?)",
            {Text(table.name), Text(key.name), Datum::OfInteger(static_cast<int64_t>(key.kind)),
             Text(JoinNumbers(key.columns, key.descending)),
             Text(key.kind == KeyKind::ForeignKey ? JoinReference(key) : key.checkText)});
}

void Catalog::EraseTable(const TableInfo& table) const {
  const std::string from = std::string("DELETE FROM ") + PlaceName(table.place) + ".";
  RunWith(connection_, from + "\"~tables\" WHERE name = ?", {Text(table.name)});
  RunWith(connection_, from + "\"~columns\" WHERE table_name = ?", {Text(table.name)});
  RunWith(connection_, from + "\"~keys\" WHERE table_name = ?", {Text(table.name)});
}

void Catalog::AddTable(const TableInfo& table) {
  ++version_;
  auto shared = std::make_shared<const TableInfo>(table);
  if (table.place == Place::Temp) {
    temp_.push_back({std::move(shared), depth_});
    return;
  }
  WriteTable(table);
  if (table.place == Place::Global) ownGlobal_.push_back(table.name);
  ContentsOf(table.place).tables[table.name] = std::move(shared);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::ReplaceTable(const TableInfo& table) {
  ++version_;
  auto shared = std::make_shared<const TableInfo>(table);
  if (table.place == Place::Temp) {
    for (TempTable& entry : temp_)
      if (entry.table->storageName == table.storageName) entry.table = shared;
    return;
  }
  EraseTable(table);
  WriteTable(table);
  ContentsOf(table.place).tables[table.name] = std::move(shared);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::RemoveTable(const TableInfo& table) {
  ++version_;
  if (table.place == Place::Temp) {
    std::erase_if(temp_,
                  [&](const TempTable& entry) { return entry.table->storageName == table.storageName; });
    return;
  }
  EraseTable(table);
  std::erase(ownGlobal_, table.name);
  ContentsOf(table.place).tables.erase(table.name);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::TouchSchema() const {
  // Views and procedures are rows to SQLite: its count of schema changes must move with them all the same.
  PreparedStatement read = connection_.Prepare("PRAGMA main.schema_version");
  read.Step();
  const int64_t next = read.ColumnInteger(0) + 1;
  read.Reset();
  connection_.Run("PRAGMA main.schema_version = " + std::to_string(next));
}

void Catalog::AddModule(ObjectKind kind, const ModuleInfo& module) {
  ++version_;
  TouchSchema();
  RunWith(connection_, "INSERT OR REPLACE INTO main.\"~modules\" VALUES (?, ?, ?)",
          {Text(module.name), Datum::OfInteger(static_cast<int64_t>(kind)), Text(module.text)});
  auto& modules = kind == ObjectKind::View ? main_.views : main_.procedures;
  modules[module.name] = std::make_shared<const ModuleInfo>(module);
}

void Catalog::RemoveModule(const std::string& name) {
  ++version_;
  TouchSchema();
  RunWith(connection_, "DELETE FROM main.\"~modules\" WHERE name = ?", {Text(name)});
  main_.views.erase(name);
  main_.procedures.erase(name);
}

std::vector<TablePtr> Catalog::LeaveScope() {
  std::vector<TablePtr> ended;
  for (const TempTable& entry : temp_)
    if (entry.depth == depth_) ended.push_back(entry.table);
  --depth_;
  return ended;
}

std::string Catalog::TempStorageName(const std::string& name) const {
  return depth_ == 0 ? name : name + ":" + std::to_string(depth_);
}

void Catalog::RestoreTempTables(std::vector<TempTable> tables) {
  ++version_;
  temp_ = std::move(tables);
}

} // namespace tsql
