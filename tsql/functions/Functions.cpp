#include "tsql/functions/Functions.h"

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

template <int (*Compare)(std::string_view, std::string_view)>
int Collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
  return Compare({static_cast<const char*>(left), static_cast<size_t>(leftSize)},
                 {static_cast<const char*>(right), static_cast<size_t>(rightSize)});
}

} // namespace

void RegisterFunctions(sqlite3* connection, FunctionContext& context) {
  const auto addCollation = [connection](const char* name, auto compare) {
    CheckRegistered(connection,
                    sqlite3_create_collation_v2(connection, name, SQLITE_UTF8, nullptr, compare, nullptr));
  };
  addCollation(storage::kCollation, Collate<CompareText>);
  addCollation(storage::kCasedCollation, Collate<CompareCased>);
  addCollation(storage::kBinaryCollation, Collate<ComparePoints>);
  RegisterPackedRows(connection, context);
  RegisterPropertyFunctions(connection, context);
  RegisterStatementFunctions(connection, context);
  RegisterAggregateFunctions(connection, context);
  RegisterCatalogFunctions(connection, context);
  RegisterComputeFunction(connection, context);
  RegisterDecimalFunctions(connection, context);
  RegisterNumericFunctions(connection, context);
  RegisterTextFunctions(connection, context);
  RegisterTextCodes(connection, context);
  RegisterDateFunctions(connection, context);
  RegisterServerFunctions(connection, context);
  RegisterStagedRows(connection, context);
  RegisterUserFunctions(connection, context);
}

} // namespace tsql
