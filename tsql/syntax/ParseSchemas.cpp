#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {

// A batch that makes a schema may define and grant what is in it, and nothing else.
StatementPtr Parser::ParseCreateSchema(size_t start) {
  auto statement = MakeStatement<CreateSchemaStatement>(start);
  if (start != 0) Fail(111, {"CREATE SCHEMA"}, Current().line);
  if (!IsWord("authorization")) statement->name = TakeName();
  if (TakeWord("authorization")) statement->owner = TakeName();
  if (statement->name.empty()) statement->name = statement->owner;
  if (IsWord("create") || IsWord("grant") || IsWord("revoke") || IsWord("deny"))
    RefuseHere("CREATE SCHEMA with what is in it");
  TakeSymbol(";");
  if (!IsAtEnd()) SyntaxError();
  return statement;
}

StatementPtr Parser::ParseDropSchema(std::unique_ptr<DropStatement> statement) {
  statement->object = ObjectKind::Schema;
  if (TakeWord("if")) {
    ExpectWord("exists");
    statement->ifExists = true;
  }
  ObjectName name;
  name.name = TakeName();
  statement->names.push_back(std::move(name));
  return statement;
}

StatementPtr Parser::ParseAlterSchema(size_t start) {
  auto statement = MakeStatement<AlterSchemaStatement>(start);
  statement->schema = TakeName();
  ExpectWord("transfer");
  if (AreWordsAt(0, "XML SCHEMA COLLECTION") || (IsWord("type") && IsSymbolAt(1, "::")))
    RefuseHere("ALTER SCHEMA TRANSFER of something other than an object");
  if (IsWord("object") && IsSymbolAt(1, "::")) at_ += 2;
  statement->object = ParseDefinedName();
  return statement;
}

} // namespace tsql
