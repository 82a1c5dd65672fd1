#include "tsql/run/ForeignKeys.h"

#include <algorithm>

#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

std::string ChildColumn(const TableInfo& child, const KeyInfo& key, size_t i) {
  return QuoteName(child.columns[static_cast<size_t>(key.columns[i])].name);
}

// "FROM parent AS p WHERE p.a = c.x AND p.b = c.y", `row` standing for c.
std::string MatchingParent(const TableInfo& child, const KeyInfo& key, const TableInfo& parent,
                           const char* row) {
  std::string sql = " FROM " + QuoteName(parent.storageName) + " AS p WHERE ";
  for (size_t i = 0; i < key.columns.size(); ++i)
    sql += (i > 0 ? " AND p." : "p.") + QuoteName(key.referencedColumns[i]) + " = " + row +
           ChildColumn(child, key, i);
  return sql;
}

// A row that refers to nothing: all its columns have values, and no parent has them.
std::string IsOrphan(const TableInfo& child, const KeyInfo& key, const TableInfo& parent, const char* row) {
  std::string sql;
  for (size_t i = 0; i < key.columns.size(); ++i)
    sql += row + ChildColumn(child, key, i) + " IS NOT NULL AND ";
  return sql + "NOT EXISTS (SELECT 1" + MatchingParent(child, key, parent, row) + ")";
}

using Event = storage::ForeignKeyEvent;

std::string TriggerName(const TableInfo& child, const KeyInfo& key, Event event) {
  return "main." + QuoteName(storage::TriggerName(child.ConstraintKey(key), event));
}

} // namespace

std::vector<ForeignKey> ForeignKeysOf(const TableInfo& table, const Catalog& catalog) {
  std::vector<ForeignKey> found;
  if (table.place != Place::Main) return found;
  for (const TablePtr& child : catalog.TablesWithForeignKeys()) {
    for (const KeyInfo& key : child->keys) {
      if (key.kind != KeyKind::ForeignKey) continue;
      const bool isChild = EqualNames(child->storageName, table.storageName);
      if (!isChild && !EqualNames(key.referencedTable, table.storageName)) continue;
      found.push_back({child, &key, catalog.TableOfKey(key.referencedTable)});
    }
  }
  return found;
}

void CreateForeignKeyTriggers(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                              const TableInfo& parent) {
  std::string childColumns;
  std::string parentColumns;
  std::string referring; // rows of the child that refer to the parent's old row
  std::string changed;
  for (size_t i = 0; i < key.columns.size(); ++i) {
    const std::string own = ChildColumn(child, key, i);
    const std::string other = QuoteName(key.referencedColumns[i]);
    childColumns += (i > 0 ? ", " : "") + own;
    parentColumns += (i > 0 ? ", " : "") + other;
    referring.append(i > 0 ? " AND c." : "c.").append(own).append(" = old.").append(other);
    changed.append(i > 0 ? " OR old." : "old.").append(other).append(" IS NOT new.").append(other);
  }
  const std::string orphan = IsOrphan(child, key, parent, "new.");
  const std::string left =
      "EXISTS (SELECT 1 FROM " + QuoteName(child.storageName) + " AS c WHERE " + referring + ")";
  const std::string begin =
      std::string(" BEGIN SELECT ") + names::kSuspect + "(" + QuoteText(child.ConstraintKey(key)) + "); END";
  const auto create = [&](Event event, const std::string& change, const TableInfo& on,
                          const std::string& when) {
    connection.Run("CREATE TRIGGER " + TriggerName(child, key, event) + " AFTER " + change + " ON " +
                   QuoteName(on.storageName) + " WHEN " + when + begin);
  };
  create(Event::ChildInserted, "INSERT", child, orphan);
  create(Event::ChildUpdated, "UPDATE OF " + childColumns, child, orphan);
  create(Event::ParentDeleted, "DELETE", parent, left);
  create(Event::ParentUpdated, "UPDATE OF " + parentColumns, parent, "(" + changed + ") AND " + left);
}

void DropForeignKeyTriggers(const Connection& connection, const TableInfo& child, const KeyInfo& key) {
  for (const Event event :
       {Event::ChildInserted, Event::ChildUpdated, Event::ParentDeleted, Event::ParentUpdated})
    connection.Run("DROP TRIGGER IF EXISTS " + TriggerName(child, key, event));
}

bool IsViolated(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                const TableInfo& parent) {
  PreparedStatement orphans = connection.Prepare("SELECT 1 FROM " + child.SqlName() + " AS c WHERE " +
                                                 IsOrphan(child, key, parent, "c.") + " LIMIT 1");
  return orphans.Step();
}

std::vector<ForeignKey> ActingKeys(const TableInfo& parent, TriggerEvent event,
                                   const std::vector<bool>& updated, const Catalog& catalog) {
  std::vector<ForeignKey> acting = ForeignKeysOf(parent, catalog);
  std::erase_if(acting, [&](const ForeignKey& foreignKey) {
    const KeyInfo& key = *foreignKey.key;
    if (key.disabled || key.ActionOn(event) == ReferentialAction::NoAction) return true;
    if (!EqualNames(key.referencedTable, parent.storageName)) return true;
    return event == TriggerEvent::Update &&
           std::ranges::none_of(key.referencedColumns, [&](const std::string& name) {
             return updated[static_cast<size_t>(parent.FindColumn(name))];
           });
  });
  return acting;
}

Error ForeignKeyError(const ForeignKey& foreignKey, bool isOfChild, std::string_view verb,
                      const Catalog& catalog) {
  const KeyInfo& key = *foreignKey.key;
  const bool isSame = foreignKey.child == foreignKey.parent;
  const TableInfo& other = isOfChild ? *foreignKey.parent : *foreignKey.child;
  const std::string& column = isOfChild ? key.referencedColumns[0]
                                        : foreignKey.child->columns[static_cast<size_t>(key.columns[0])].name;
  const char* kind = isOfChild ? (isSame ? "FOREIGN KEY SAME TABLE" : "FOREIGN KEY")
                               : (isSame ? "SAME TABLE REFERENCE" : "REFERENCE");
  return MakeError(547, 0,
                   {verb, kind, key.name, catalog.DatabaseName(), other.QualifiedName(),
                    key.columns.size() == 1 ? ", column '" + column + "'" : std::string()});
}

} // namespace tsql
