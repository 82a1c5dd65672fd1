// Definitions in the dialect's terms: tables with their columns and keys, views and procedures.
#pragma once

#include <memory>

#include "tsql/catalog/Storage.h"
#include "tsql/syntax/StatementTree.h"

namespace tsql {

// The place that a name belongs to: "##name" and "#name" are temporary tables, and so are table variables.
Place PlaceOf(const ObjectName& name);

struct ColumnInfo {
  std::string name;
  Type type;
  bool nullable = true;
  bool identity = false;
  std::string defaultText;  // the source of the DEFAULT expression; empty for none
  std::string computedText; // the source of a computed column's expression; empty for others
  bool isPersisted = false; // the computed values are kept
  NamedCollation collation; // of a text
  bool IsComputed() const { return !computedText.empty(); }
  bool operator==(const ColumnInfo&) const = default;
};

struct KeyInfo {
  std::string name;
  KeyKind kind = KeyKind::Index;
  std::vector<int> columns; // of the table, by position
  std::vector<bool> descending;
  std::string checkText;       // the source of a CHECK condition
  std::string referencedTable; // of a foreign key: that table's key
  std::vector<std::string> referencedColumns;
  ReferentialAction onDelete = ReferentialAction::NoAction; // of the referenced row
  ReferentialAction onUpdate = ReferentialAction::NoAction;
  bool disabled = false; // a CHECK or foreign key that is not looked at
  bool IsIndexOnly() const { return kind == KeyKind::Index || kind == KeyKind::UniqueIndex; }
  // What is done with the table's rows when those that they refer to are changed so.
  ReferentialAction ActionOn(TriggerEvent event) const {
    if (event == TriggerEvent::Insert) return ReferentialAction::NoAction;
    return event == TriggerEvent::Delete ? onDelete : onUpdate;
  }
  bool HasAction() const {
    return onDelete != ReferentialAction::NoAction || onUpdate != ReferentialAction::NoAction;
  }
  bool HasIndex() const { return IsIndexOnly() || kind == KeyKind::PrimaryKey || kind == KeyKind::Unique; }
  bool operator==(const KeyInfo&) const = default;
};

struct TableInfo {
  std::string name;
  std::string schema;      // empty for dbo
  std::string storageName; // the table's name in SQLite; its key, unless it is a temporary one
  Place place = Place::Main;
  std::vector<ColumnInfo> columns;
  std::vector<KeyInfo> keys;
  // The column that is SQLite's rowid, -1 for none: an identity column with the increment 1, or an integer
  // primary key of one column.
  int rowidColumn = -1;
  int64_t seed = 1;        // of the identity column
  int64_t increment = 1;   // of the same
  int identityColumn = -1; // -1 for none
  // A view in the place of a table, for changes that its triggers stand for. SQLite has no such table.
  bool isView = false;

  int FindColumn(std::string_view columnName) const; // -1 when absent
  // The name of the column's DEFAULT: the given one, or one that the server could have made.
  std::string DefaultName(size_t column) const;
  // Who numbers the rows of a table with an identity column: SQLite, or the engine where SQLite cannot. That
  // is where the increment is another one, and where numbers may be there twice.
  bool IdentityIsRowid() const { return identityColumn >= 0 && rowidColumn == identityColumn; }
  bool CountsIdentity() const { return identityColumn >= 0 && rowidColumn != identityColumn; }
  // Whether its count has reached the one number after the other.
  bool IsBeyond(int64_t number, int64_t other) const {
    return increment > 0 ? number > other : number < other;
  }
  bool IsVariable() const { return place == Place::Temp && name.starts_with('@'); }
  std::string SqlName() const;       // quoted, with its schema
  std::string StoredColumns() const; // quoted: all but the computed ones, which nobody can write
  std::string QualifiedName() const; // with its schema, as messages have it
  std::string FullName(std::string_view databaseName) const; // with its database too
  // The name of one of its constraints as it is the only one in the database.
  std::string ConstraintKey(const KeyInfo& key) const;
  bool operator==(const TableInfo&) const = default;
};
using TablePtr = std::shared_ptr<const TableInfo>;

// The SET options that a module is read with, wherever it runs: those of the session that made it.
struct ModuleOptions {
  bool quotedIdentifier = true;
  bool ansiNulls = true;
  bool operator==(const ModuleOptions& other) const = default;
};

// A view, a procedure, a function or a trigger.
struct ModuleInfo {
  std::string name;
  std::string schema; // empty for dbo
  std::string key;
  std::string text;
  ModuleKind kind = ModuleKind::View;
  bool disabled = false; // a trigger that does not fire
  ModuleOptions options;
};
using ModulePtr = std::shared_ptr<const ModuleInfo>;
// Whether the one means what the other does.
bool IsSameModule(const ModuleInfo& left, const ModuleInfo& right);

// What its text says of a trigger.
struct TriggerInfo {
  ModulePtr module;
  std::string table; // the key of its table or view
  std::vector<TriggerEvent> events;
  bool insteadOf = false;
};
using TriggerPtr = std::shared_ptr<const TriggerInfo>;

// The numbers that an identity column of the type can have.
struct IdentityRange {
  int64_t smallest = 0;
  int64_t largest = 0;
};
IdentityRange IdentityRangeOf(const Type& type);

// Compares names as the server does; for maps.
struct NameLess {
  bool operator()(const std::string& left, const std::string& right) const;
};

} // namespace tsql
