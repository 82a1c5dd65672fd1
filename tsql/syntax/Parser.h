// Makes the syntax tree of a batch. The first syntax error (102, 156 ...) is thrown, with the line of its
// token.
#pragma once

#include "tsql/syntax/StatementTree.h"

namespace tsql {

// What reading depends on beside the text.
struct ParseOptions {
  // Whether double quotation marks enclose names, or texts. A batch may set it; what follows is read so.
  bool quotedIdentifier = true;
  // The database whose name may stand in front of a schema's; without a value that of any.
  std::optional<std::string_view> database = {};
};

std::unique_ptr<Batch> ParseBatch(std::string text, const ParseOptions& options);
// The text of a module that has the schema (empty for dbo) and name now, whatever the text says.
std::unique_ptr<Batch> ParseModule(std::string text, const std::string& schema, const std::string& name,
                                   const ParseOptions& options);
// The source of a DEFAULT, a CHECK and a view, as the catalog keeps it.
ExprPtr ParseDefault(const std::string& text);
ExprPtr ParseCheck(const std::string& text);
// The declarations of the parameters of sp_executesql.
std::vector<ProcedureParameter> ParseParameters(const std::string& text);
QueryPtr ParseView(const std::string& text, const std::string& schema, const std::string& name,
                   const ParseOptions& options, std::vector<std::string>& columns);

} // namespace tsql
