// Batches that are made from the fuzz target's seeds, by token and by grammar: none may fail as SQLite's own
// complaint about a statement that the engine made (823), and none may end the process.
#include "tests/tsql/fuzz/BatchMutator.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/tsql/fuzz/FuzzedDatabase.h"

namespace tsql::test {
namespace {

std::vector<std::string> ReadTexts(const std::string& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(TSQL_SOURCE_DIR) + "/" + folder))
    paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> seeds;
  for (const std::filesystem::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return seeds;
}

std::vector<std::string> ReadSeeds() {
  return ReadTexts("tests/tsql/fuzz/seeds");
}

TEST(BatchMutatorTest, TheComponentsStatementsAreNoStorageErrors) {
  const std::vector<std::string> statements = ReadTexts("statements");
  ASSERT_GT(statements.size(), 100U);
  FuzzedDatabase database;
  for (const std::string& statement : statements) database.Run(statement);
  // And with changes.
  constexpr int kBatches = 1000;
  BatchMutator mutator(statements, 1);
  for (int i = 0; i < kBatches; ++i) database.Run(mutator.Next());
}

TEST(BatchMutatorTest, SeedsAreNoStorageErrors) {
  const std::vector<std::string> seeds = ReadSeeds();
  ASSERT_GT(seeds.size(), 15U);
  FuzzedDatabase database;
  for (const std::string& seed : seeds) database.Run(seed);
}

TEST(BatchMutatorTest, ChangedSeedsAreNoStorageErrors) {
  constexpr int kBatches = 4000;
  BatchMutator mutator(ReadSeeds(), 1);
  FuzzedDatabase database;
  for (int i = 0; i < kBatches; ++i) database.Run(mutator.Next());
}

TEST(BatchMutatorTest, FindsRecursionWithinDerivedTablesAndSubqueries) {
  // These are what it is for: a recursive member that uses its expression elsewhere than in its own FROM.
  constexpr int kBatches = 2000;
  BatchMutator mutator(ReadSeeds(), 1);
  bool derived = false;
  bool subquery = false;
  for (int i = 0; i < kBatches; ++i) {
    const std::string batch = mutator.Next();
    derived = derived || batch.find("(SELECT * FROM tree) t ON") != std::string::npos;
    subquery = subquery || batch.find("ON EXISTS (SELECT * FROM tree) AND") != std::string::npos;
  }
  EXPECT_TRUE(derived);
  EXPECT_TRUE(subquery);
}

} // namespace
} // namespace tsql::test
