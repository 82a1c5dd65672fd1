// FOREIGN KEY constraints without referential actions, checked when a statement has ended.
//
// Triggers notice rows that may break a constraint and note its name; when the statement has ended, the
// constraints that were noted are looked at as a whole. So the rows of one statement may come in any order,
// as on the server.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

// A constraint with its two tables, which may be the same.
struct ForeignKey {
  TablePtr child;
  const KeyInfo* key = nullptr; // of the child
  TablePtr parent;
};

// The constraints of the table and those that refer to it.
std::vector<ForeignKey> ForeignKeysOf(const TableInfo& table, const Catalog& catalog);

void CreateForeignKeyTriggers(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                              const TableInfo& parent);
void DropForeignKeyTriggers(const Connection& connection, const TableInfo& child, const KeyInfo& key);

// Whether some row of the child refers to a row that the parent does not have.
bool IsViolated(const Connection& connection, const TableInfo& child, const KeyInfo& key,
                const TableInfo& parent);

// Error 547 of a statement on `target`, which is the child or the parent.
Error ForeignKeyError(const ForeignKey& foreignKey, const TableInfo& target, std::string_view verb,
                      const Catalog& catalog);

} // namespace tsql
