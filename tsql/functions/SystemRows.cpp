#include "tsql/functions/SystemRows.h"

#include <algorithm>

#include "tsql/catalog/Schemas.h"
#include "tsql/functions/ObjectNumbers.h"
#include "tsql/functions/ServerTypes.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

using Row = std::vector<Datum>;
using Rows = std::vector<Row>;

Datum NameValue(std::string_view name) {
  return Datum::OfText(std::string(name));
}

Datum Flag(bool isSet) {
  return Datum::OfInteger(isSet ? 1 : 0);
}

Datum Position(size_t index) {
  return Datum::OfInteger(static_cast<int64_t>(index) + 1);
}

std::string_view Shown(std::string_view schema) {
  return schema.empty() ? "dbo" : schema;
}

Datum SchemaId(const Catalog& catalog, std::string_view schema) {
  return Datum::OfInteger(catalog.FindSchema(Shown(schema)).value_or(0));
}

Datum IdOf(std::string_view key) {
  return Datum::OfInteger(NumberOfKey(key));
}

// As many characters of the text as that, and what is behind them.
std::pair<std::string_view, std::string_view> Split(std::string_view text, size_t characters) {
  size_t bytes = 0;
  while (characters-- > 0 && bytes < text.size()) {
    ++bytes;
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) ++bytes;
  }
  return {text.substr(0, bytes), text.substr(bytes)};
}

constexpr size_t kTextLength = 4000;

// ---- schemas and types

// Those of users belong to dbo, of the server's each to whoever has its name.
Rows SchemaRows(const Catalog& catalog) {
  Rows rows;
  for (const ServerSchema& own : ServerSchemas())
    rows.push_back({NameValue(own.name), Datum::OfInteger(own.id), Datum::OfInteger(own.id)});
  for (const auto& [name, id] : catalog.Schemas())
    rows.push_back({NameValue(name), Datum::OfInteger(id), Datum::OfInteger(kDboSchema)});
  return rows;
}

Rows SchemataRows(const Catalog& catalog) {
  Rows rows;
  for (const ServerSchema& own : ServerSchemas())
    rows.push_back({NameValue(catalog.DatabaseName()), NameValue(own.name), NameValue(own.name)});
  for (const auto& [name, id] : catalog.Schemas())
    rows.push_back({NameValue(catalog.DatabaseName()), NameValue(name), NameValue("dbo")});
  return rows;
}

Rows TypeRows() {
  constexpr int64_t kSystemSchema = 4;
  Rows rows;
  for (const ServerType& type : ServerTypes())
    rows.push_back({NameValue(type.name), Datum::OfInteger(type.id), Datum::OfInteger(type.id),
                    Datum::OfInteger(kSystemSchema), Datum::OfInteger(type.length),
                    Datum::OfInteger(type.precision), Datum::OfInteger(type.scale), Flag(true), Flag(false)});
  return rows;
}

Rows SysTypeRows() {
  Rows rows;
  for (const ServerType& type : ServerTypes()) {
    const bool isNumber = type.precision > 0;
    const bool isUnicode = type.name == "nchar" || type.name == "nvarchar"; // of two bytes a character
    const int digits = isNumber ? type.precision : isUnicode ? type.length / 2 : type.length;
    rows.push_back({NameValue(type.name), Datum::OfInteger(type.id), Datum::OfInteger(type.id),
                    Datum::OfInteger(type.length), Datum::OfInteger(digits),
                    isNumber ? Datum::OfInteger(type.scale) : Datum(), Flag(true)});
  }
  return rows;
}

// ---- tables and what belongs to them

Datum ColumnId(const TableInfo& table, std::string_view name) {
  return Datum::OfInteger(table.FindColumn(name) + 1);
}

// The number of an index: 1 of the primary key, which is taken to be clustered, the others behind it.
int64_t IndexId(const TableInfo& table, const KeyInfo& wanted) {
  if (wanted.kind == KeyKind::PrimaryKey) return 1;
  int64_t id = 2;
  for (const KeyInfo& key : table.keys) {
    if (&key == &wanted) return id;
    if (key.HasIndex() && key.kind != KeyKind::PrimaryKey) ++id;
  }
  return id;
}

bool HasPrimaryKey(const TableInfo& table) {
  return std::ranges::any_of(table.keys, [](const KeyInfo& key) { return key.kind == KeyKind::PrimaryKey; });
}

template <typename Give>
void ForEachKey(const Catalog& catalog, Give give) {
  for (const auto& [key, table] : catalog.Tables())
    for (const KeyInfo& entry : table->keys) give(*table, entry);
}

Rows IndexRows(const Catalog& catalog) {
  Rows rows;
  for (const auto& [key, table] : catalog.Tables())
    if (!HasPrimaryKey(*table))
      rows.push_back({IdOf(key), {}, Datum::OfInteger(0), Flag(false), Flag(false), Flag(false)});
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    if (!key.HasIndex()) return;
    rows.push_back({IdOf(table.storageName), NameValue(key.name), Datum::OfInteger(IndexId(table, key)),
                    Flag(key.kind != KeyKind::Index), Flag(key.kind == KeyKind::PrimaryKey),
                    Flag(key.kind == KeyKind::Unique)});
  });
  return rows;
}

Rows SysIndexRows(const Catalog& catalog) {
  Rows rows;
  for (const Row& row : IndexRows(catalog)) rows.push_back({row[0], row[2], row[1]});
  return rows;
}

Rows IndexColumnRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    for (size_t i = 0; key.HasIndex() && i < key.columns.size(); ++i)
      rows.push_back({IdOf(table.storageName), Datum::OfInteger(IndexId(table, key)), Position(i),
                      Datum::OfInteger(key.columns[i] + 1), Position(i),
                      Flag(i < key.descending.size() && key.descending[i]), Flag(false)});
  });
  return rows;
}

// What all constraints have in common: name, number, schema, table, kind.
Row ConstraintRow(const Catalog& catalog, const TableInfo& table, const KeyInfo& key, const char* type,
                  const char* description) {
  return {NameValue(key.name),
          IdOf(table.ConstraintKey(key)),
          SchemaId(catalog, table.schema),
          IdOf(table.storageName),
          NameValue(type),
          NameValue(description)};
}

Datum ActionName(ReferentialAction action) {
  constexpr const char* kNames[] = {"NO_ACTION", "CASCADE", "SET_NULL", "SET_DEFAULT"};
  return NameValue(kNames[static_cast<size_t>(action)]);
}

Rows ForeignKeyRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    if (key.kind != KeyKind::ForeignKey) return;
    Row row = ConstraintRow(catalog, table, key, "F ", "FOREIGN_KEY_CONSTRAINT");
    const auto number = [](ReferentialAction action) { return static_cast<int64_t>(action); };
    for (Datum& value :
         Row{IdOf(key.referencedTable), Flag(key.disabled), Datum::OfInteger(number(key.onDelete)),
             ActionName(key.onDelete), Datum::OfInteger(number(key.onUpdate)), ActionName(key.onUpdate)})
      row.push_back(std::move(value));
    rows.push_back(std::move(row));
  });
  return rows;
}

Rows ForeignKeyColumnRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    if (key.kind != KeyKind::ForeignKey) return;
    const TablePtr parent = catalog.TableOfKey(key.referencedTable);
    for (size_t i = 0; i < key.columns.size(); ++i)
      rows.push_back({IdOf(table.ConstraintKey(key)), Position(i), IdOf(table.storageName),
                      Datum::OfInteger(key.columns[i] + 1), IdOf(key.referencedTable),
                      ColumnId(*parent, key.referencedColumns[i])});
  });
  return rows;
}

Rows KeyConstraintRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    const bool isPrimary = key.kind == KeyKind::PrimaryKey;
    if (!isPrimary && key.kind != KeyKind::Unique) return;
    rows.push_back(ConstraintRow(catalog, table, key, isPrimary ? "PK" : "UQ",
                                 isPrimary ? "PRIMARY_KEY_CONSTRAINT" : "UNIQUE_CONSTRAINT"));
    rows.back().push_back(Datum::OfInteger(IndexId(table, key)));
  });
  return rows;
}

Rows DefaultRows(const Catalog& catalog) {
  Rows rows;
  for (const auto& [tableKey, table] : catalog.Tables()) {
    for (size_t i = 0; i < table->columns.size(); ++i) {
      if (table->columns[i].defaultText.empty()) continue;
      KeyInfo key;
      key.name = table->DefaultName(i);
      rows.push_back(ConstraintRow(catalog, *table, key, "D ", "DEFAULT_CONSTRAINT"));
      rows.back().push_back(Position(i));
    }
  }
  return rows;
}

Rows CheckRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    if (key.kind != KeyKind::Check) return;
    rows.push_back(ConstraintRow(catalog, table, key, "C ", "CHECK_CONSTRAINT"));
    rows.back().push_back(Flag(key.disabled));
  });
  return rows;
}

// The constraint and its table by their three names each.
Row ConstraintNames(const Catalog& catalog, const TableInfo& table, const KeyInfo& key) {
  const Datum database = NameValue(catalog.DatabaseName());
  const Datum schema = NameValue(Shown(table.schema));
  return {database, schema, NameValue(key.name), database, schema, NameValue(table.name)};
}

Rows TableConstraintRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    const char* type = nullptr;
    switch (key.kind) {
    case KeyKind::PrimaryKey: type = "PRIMARY KEY"; break;
    case KeyKind::Unique: type = "UNIQUE"; break;
    case KeyKind::Check: type = "CHECK"; break;
    case KeyKind::ForeignKey: type = "FOREIGN KEY"; break;
    default: return;
    }
    Row row = ConstraintNames(catalog, table, key);
    for (const char* const value : {type, "NO", "NO"}) row.push_back(NameValue(value));
    rows.push_back(std::move(row));
  });
  return rows;
}

Rows KeyColumnRows(const Catalog& catalog) {
  Rows rows;
  ForEachKey(catalog, [&](const TableInfo& table, const KeyInfo& key) {
    const bool isKey = key.kind == KeyKind::PrimaryKey || key.kind == KeyKind::Unique;
    if (!isKey && key.kind != KeyKind::ForeignKey) return;
    for (size_t i = 0; i < key.columns.size(); ++i) {
      Row row = ConstraintNames(catalog, table, key);
      row.push_back(NameValue(table.columns[static_cast<size_t>(key.columns[i])].name));
      row.push_back(Position(i));
      rows.push_back(std::move(row));
    }
  });
  return rows;
}

// ---- modules

Rows ModuleObjectRows(const Catalog& catalog, ModuleKind kind, const char* type, const char* description) {
  Rows rows;
  for (const ModulePtr& module : catalog.AllModules())
    if (module->kind == kind)
      rows.push_back({NameValue(module->name), IdOf(module->key), SchemaId(catalog, module->schema),
                      Datum::OfInteger(0), NameValue(type), NameValue(description)});
  return rows;
}

Rows RoutineRows(const Catalog& catalog) {
  Rows rows;
  const Datum database = NameValue(catalog.DatabaseName());
  for (const ModulePtr& module : catalog.AllModules()) {
    if (module->kind == ModuleKind::View || module->kind == ModuleKind::Trigger) continue;
    const Datum schema = NameValue(Shown(module->schema));
    const Datum name = NameValue(module->name);
    rows.push_back({database, schema, name, database, schema, name,
                    NameValue(module->kind == ModuleKind::Procedure ? "PROCEDURE" : "FUNCTION"),
                    NameValue(Split(module->text, kTextLength).first)});
  }
  return rows;
}

// A view's text that is too long for the column is null.
Rows ViewRows(const Catalog& catalog) {
  Rows rows;
  for (const ModulePtr& module : catalog.AllModules()) {
    if (module->kind != ModuleKind::View) continue;
    const auto [text, rest] = Split(module->text, kTextLength);
    rows.push_back({NameValue(catalog.DatabaseName()), NameValue(Shown(module->schema)),
                    NameValue(module->name), rest.empty() ? NameValue(text) : Datum(), NameValue("NONE"),
                    NameValue("NO")});
  }
  return rows;
}

Rows CommentRows(const Catalog& catalog) {
  Rows rows;
  for (const ModulePtr& module : catalog.AllModules()) {
    std::string_view rest = module->text;
    for (size_t part = 0; !rest.empty(); ++part) {
      const auto [text, behind] = Split(rest, kTextLength);
      rows.push_back({IdOf(module->key), Datum::OfInteger(module->kind == ModuleKind::Procedure ? 1 : 0),
                      Position(part), NameValue(text)});
      rest = behind;
    }
  }
  return rows;
}

Rows SqlModuleRows(const Catalog& catalog) {
  Rows rows;
  for (const ModulePtr& module : catalog.AllModules())
    rows.push_back({IdOf(module->key), NameValue(module->text), Flag(module->options.ansiNulls),
                    Flag(module->options.quotedIdentifier)});
  return rows;
}

} // namespace

Rows SystemRows(const Catalog& catalog, SystemView::Id view) {
  using Id = SystemView::Id;
  switch (view) {
  case Id::Schemas: return SchemaRows(catalog);
  case Id::Schemata: return SchemataRows(catalog);
  case Id::Types: return TypeRows();
  case Id::Procedures: return ModuleObjectRows(catalog, ModuleKind::Procedure, "P ", "SQL_STORED_PROCEDURE");
  case Id::Views: return ModuleObjectRows(catalog, ModuleKind::View, "V ", "VIEW");
  case Id::Indexes: return IndexRows(catalog);
  case Id::IndexColumns: return IndexColumnRows(catalog);
  case Id::ForeignKeys: return ForeignKeyRows(catalog);
  case Id::ForeignKeyColumns: return ForeignKeyColumnRows(catalog);
  case Id::KeyConstraints: return KeyConstraintRows(catalog);
  case Id::DefaultConstraints: return DefaultRows(catalog);
  case Id::CheckConstraints: return CheckRows(catalog);
  case Id::TableConstraints: return TableConstraintRows(catalog);
  case Id::KeyColumns: return KeyColumnRows(catalog);
  case Id::Routines: return RoutineRows(catalog);
  case Id::SchemaViews: return ViewRows(catalog);
  case Id::SysIndexes: return SysIndexRows(catalog);
  case Id::SysComments: return CommentRows(catalog);
  case Id::SysTypes: return SysTypeRows();
  case Id::SqlModules: return SqlModuleRows(catalog);
  default: return {};
  }
}

} // namespace tsql
