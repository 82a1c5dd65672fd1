// The grammar of the fuzzer: that it knows all of the dialect, and that nothing it says fails in SQLite (823)
// or ends the process.
#include "tests/tsql/fuzz/BatchGrammar.h"

#include <set>

#include "tests/tsql/fuzz/FuzzedDatabase.h"
#include "tsql/bind/Binder.h"
#include "tsql/syntax/Parser.h"
#include "tsql/values/Collation.h"

namespace tsql::test {
namespace {

TEST(BatchGrammarTest, KnowsEveryFunctionAndType) {
  const std::string text = ToLower(BatchGrammar::Text());
  for (const std::string_view name : Binder::FunctionNames())
    EXPECT_NE(text.find(std::string(name) + "("), std::string::npos) << name;
  for (int id = 0; id <= static_cast<int>(TypeId::DateTime2); ++id) {
    const std::string name = TypeName(static_cast<TypeId>(id));
    EXPECT_NE(text.find(name), std::string::npos) << name;
  }
}

void AddKinds(const StatementList& statements, std::set<StatementKind>& kinds);

void AddKinds(const Statement& statement, std::set<StatementKind>& kinds) {
  kinds.insert(statement.kind);
  switch (statement.kind) {
  case StatementKind::Block: AddKinds(static_cast<const BlockStatement&>(statement).statements, kinds); break;
  case StatementKind::While: AddKinds(*static_cast<const WhileStatement&>(statement).body, kinds); break;
  case StatementKind::If: AddKinds(*static_cast<const IfStatement&>(statement).thenBranch, kinds); break;
  case StatementKind::TryCatch:
    AddKinds(static_cast<const TryCatchStatement&>(statement).catchBody, kinds);
    break;
  default: break;
  }
}

void AddKinds(const StatementList& statements, std::set<StatementKind>& kinds) {
  for (const StatementPtr& statement : statements) AddKinds(*statement, kinds);
}

TEST(BatchGrammarTest, SaysEveryStatementAndMostAreParsed) {
  constexpr uint32_t kBatches = 2000;
  std::set<StatementKind> kinds;
  int parsed = 0;
  for (uint32_t seed = 0; seed < kBatches; ++seed) {
    try {
      AddKinds(ParseBatch(BatchGrammar(seed).Next(), {})->statements, kinds);
      ++parsed;
    } catch (const Error&) { // NOLINT(bugprone-empty-catch): some batches are wrong on purpose
    }
  }
  EXPECT_EQ(kinds.size(), static_cast<size_t>(StatementKind::Execute) + 1);
  EXPECT_GT(parsed, static_cast<int>(kBatches / 2));
}

TEST(BatchGrammarTest, BatchesAreNoStorageErrors) {
  constexpr uint32_t kBatches = 2000;
  FuzzedDatabase database;
  for (uint32_t seed = 0; seed < kBatches; ++seed) database.Run(BatchGrammar(seed).Next());
  // Enough of them do something.
  EXPECT_GT(database.Succeeded(), static_cast<int>(kBatches / 10));
}

} // namespace
} // namespace tsql::test
