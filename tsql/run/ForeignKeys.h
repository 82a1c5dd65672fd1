// FOREIGN KEY constraints, checked when a statement has ended and its referential actions are carried out
// (RunCascades.cpp).
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

// The constraints by which a change of the parent's rows is one of other tables' rows too. `updated` are the
// columns that it gives values to.
std::vector<ForeignKey> ActingKeys(const TableInfo& parent, TriggerEvent event,
                                   const std::vector<bool>& updated, const Catalog& catalog);

// Error 547 of a statement that has changed the child, or the parent.
Error ForeignKeyError(const ForeignKey& foreignKey, bool isOfChild, std::string_view verb,
                      const Catalog& catalog);

} // namespace tsql
