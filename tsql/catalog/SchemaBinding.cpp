#include "tsql/catalog/SchemaBinding.h"

#include <algorithm>

#include "tsql/syntax/Lexer.h"
#include "tsql/syntax/Parser.h"
#include "tsql/values/Collation.h"

namespace tsql {

bool IsSchemaBound(const ModuleInfo& module) {
  if (!Names(module, "schemabinding")) return false; // most modules need not be parsed
  const ParseOptions options{module.options.quotedIdentifier};
  const std::unique_ptr<Batch> batch = ParseModule(module.text, module.schema, module.name, options);
  const Statement& statement = *batch->statements.front();
  if (statement.kind == StatementKind::CreateView)
    return static_cast<const CreateViewStatement&>(statement).schemaBound;
  return statement.kind == StatementKind::CreateFunction &&
         static_cast<const CreateFunctionStatement&>(statement).schemaBound;
}

bool Names(const ModuleInfo& module, std::string_view name) {
  std::optional<Error> error;
  return std::ranges::any_of(Tokenize(module.text, error), [&](const Token& token) {
    const bool isName = token.kind == TokenKind::Word || token.kind == TokenKind::QuotedName;
    return isName && EqualNames(token.text, name);
  });
}

} // namespace tsql
