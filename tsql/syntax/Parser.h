// Builds the syntax tree of a batch. The first syntax error ends it (102, 156 ...), with the line of the
// token.
#pragma once

#include "tsql/syntax/StatementTree.h"

namespace tsql {

std::unique_ptr<Batch> ParseBatch(std::string text);
// A DEFAULT or CHECK expression as the catalog keeps it; its Batch owns the text.
ExprPtr ParseDefault(const std::string& text);
ExprPtr ParseCheck(const std::string& text);
QueryPtr ParseView(const std::string& text, std::vector<std::string>& columns);

} // namespace tsql
