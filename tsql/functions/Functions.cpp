#include "tsql/functions/Functions.h"

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

int Collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
  return CompareText({static_cast<const char*>(left), static_cast<size_t>(leftSize)},
                     {static_cast<const char*>(right), static_cast<size_t>(rightSize)});
}

} // namespace

void RegisterFunctions(sqlite3* connection, FunctionContext& context) {
  CheckRegistered(connection, sqlite3_create_collation_v2(connection, storage::kCollation, SQLITE_UTF8,
                                                          nullptr, Collate, nullptr));
  RegisterStatementFunctions(connection, context);
  RegisterAggregateFunctions(connection, context);
  RegisterCatalogFunctions(connection, context);
  RegisterComputeFunction(connection, context);
  RegisterDecimalFunctions(connection, context);
  RegisterNumericFunctions(connection, context);
  RegisterTextFunctions(connection, context);
  RegisterDateFunctions(connection, context);
}

} // namespace tsql
