// The procedures that the server has and the engine carries out itself. Each has a text that declares its
// parameters; its work is one statement that no batch can write.
#pragma once

#include "tsql/syntax/StatementTree.h"

namespace tsql {

enum class SystemProcedure : uint8_t { Rename, HelpText };

// What a system procedure does, with its parameters as the first variables. Where it fails, the procedure
// goes on behind it and returns 1.
struct SystemStatement : Statement {
  explicit SystemStatement(SystemProcedure does) : Statement(StatementKind::System), procedure(does) {}
  SystemProcedure procedure;
};

// The tree of the procedure of that name, in dbo, sys or no written schema; null where there is none.
std::unique_ptr<Batch> MakeSystemProcedure(const ObjectName& name);

} // namespace tsql
