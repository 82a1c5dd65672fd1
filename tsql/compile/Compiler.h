// Compiles for one session: batches, procedures, views, SELECT ... INTO, and the expressions within
// definitions. It keeps what it has compiled, so that a batch or procedure that runs again is not compiled
// again.
#pragma once

#include <map>
#include <span>
#include <unordered_map>

#include "tsql/compile/Planner.h"

namespace tsql {

class Compiler {
 public:
  Compiler(const Connection& connection, const Catalog& catalog) : context_{connection, catalog, {}} {}

  // The names and types of the parameters are part of what a batch means. Those with a name are the first of
  // the unit's variables, those without are its markers, both in their order.
  std::shared_ptr<CompiledUnit> CompileBatch(std::string_view text, std::span<const Parameter> parameters);
  std::shared_ptr<CompiledUnit> CompileProcedure(const ObjectName& name); // 2812 when there is none

  // For the plans of one unit.
  Planner PlannerFor(CompiledUnit& unit) const { return {context_, unit}; }

  // SELECT ... INTO is compiled in two steps, because its table is made between them: the first gives the
  // query with its columns, the second the plan that fills the table from it.
  BoundQueryPtr BindInto(const QueryStatement& statement, const CompiledUnit& unit) const;
  Plan PlanInto(BoundQueryPtr query, const TablePtr& table) const;

  // Throws what is wrong with a view's query.
  void CheckView(const CreateViewStatement& statement) const;

  // A CHECK condition of the table in SQLite's terms.
  std::string CompileCheck(const TableInfo& table, const std::string& text) const;
  // The present value of a column's DEFAULT, or 0 without one, as a constant in SQLite's terms.
  std::string CompileDefault(const ColumnInfo& column) const;

  // The table that SET IDENTITY_INSERT allows explicit values for; empty for none.
  const std::string& IdentityInsert() const { return context_.identityInsertTable; }
  void SetIdentityInsert(std::string table) { context_.identityInsertTable = std::move(table); }

 private:
  CompileContext context_;
  std::map<std::string, std::shared_ptr<CompiledUnit>, NameLess> procedures_;
  std::unordered_map<std::string, std::shared_ptr<CompiledUnit>> batches_;
  std::string key_; // of the batch that is looked for; it keeps its memory
};

} // namespace tsql
