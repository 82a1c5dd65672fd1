// FOREIGN KEY constraints without referential actions, checked when a statement has ended.
//
// Triggers notice rows that may break a constraint and note its name; when the statement has ended, the
// constraints that were noted are looked at as a whole. So the rows of one statement may come in any order,
// as on the server.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

// A constraint with its two tables; the same table twice where it refers to itself.
struct ForeignKey {
  TablePtr child;
  const KeyInfo* key = nullptr; // of the child
  TablePtr parent;
};

// The constraints that changes of the table can break, as child or as parent.
std::vector<ForeignKey> ForeignKeysOf(const TableInfo& table, const Catalog& catalog);

void CreateForeignKeyTriggers(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                              const TableInfo& parent);
void DropForeignKeyTriggers(const Connection& connection, const KeyInfo& key);

// Whether a row of the child has no row of the parent.
bool IsViolated(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                const TableInfo& parent);

// 547 for a statement on `target`: "FOREIGN KEY" where that is the child, else "REFERENCE".
Error ForeignKeyError(const ForeignKey& foreignKey, const TableInfo& target, std::string_view verb,
                      const Catalog& catalog);

} // namespace tsql
