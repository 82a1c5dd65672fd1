#include "tsql/compile/SystemProcedures.h"

#include "tsql/syntax/Parser.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

struct Known {
  SystemProcedure procedure;
  std::string_view name;
  const char* text;
};

constexpr Known kProcedures[] = {
    {SystemProcedure::Rename, "sp_rename",
     "CREATE PROCEDURE sp_rename @objname NVARCHAR(1035), @newname NVARCHAR(128), @objtype VARCHAR(13) = NULL"
     " AS RETURN 1"},
    {SystemProcedure::HelpText, "sp_helptext",
     "CREATE PROCEDURE sp_helptext @objname NVARCHAR(776), @columnname NVARCHAR(128) = NULL AS RETURN 1"}};

} // namespace

std::unique_ptr<Batch> MakeSystemProcedure(const ObjectName& name) {
  const std::string& schema = name.schema;
  if (!schema.empty() && !EqualNames(schema, "dbo") && !EqualNames(schema, "sys")) return nullptr;
  for (const Known& known : kProcedures) {
    if (!EqualNames(known.name, name.name)) continue;
    std::unique_ptr<Batch> batch = ParseBatch(known.text, {});
    auto& definition = static_cast<CreateProcedureStatement&>(*batch->statements.front());
    auto work = std::make_unique<SystemStatement>(known.procedure);
    definition.body.insert(definition.body.begin(), std::move(work));
    return batch;
  }
  return nullptr;
}

} // namespace tsql
