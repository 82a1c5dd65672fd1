// Batches that are made from the fuzz target's seeds, by token and by grammar: none may fail as SQLite's own
// complaint about a statement that the engine made (823), and none may end the process.
#include "tests/tsql/fuzz/BatchMutator.h"

#include "tests/tsql/EngineFixture.h"
#include "tests/tsql/fuzz/FuzzSchema.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tsql::test {
namespace {

constexpr int kStorageError = 823;

std::vector<std::string> ReadSeeds() {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(TSQL_SOURCE_DIR) + "/tests/tsql/fuzz/seeds"))
    paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> seeds;
  for (const std::filesystem::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return seeds;
}

// The batches run one after another on one database, which is made anew now and then.
class FuzzedDatabase {
 public:
  FuzzedDatabase() { Renew(); }

  void Run(const std::string& batch) {
    constexpr int kBatchesPerDatabase = 100;
    constexpr int64_t kSteps = 1000;
    if (++batches_ % kBatchesPerDatabase == 0) Renew();
    std::vector<Parameter> parameters(3);
    parameters[0].type.id = TypeId::Int;
    parameters[1].name = "@text";
    parameters[1].type = Type{TypeId::NVarChar, 30, 0, 0};
    parameters[2].name = "@n";
    parameters[2].type.id = TypeId::Int;
    session_->SetWorkLimit(kSteps);
    Output output;
    session_->Execute(batch, parameters, output);
    for (const Error& error : output.errors)
      EXPECT_NE(error.number, kStorageError) << error.what() << "\n" << batch;
    session_->SetWorkLimit(std::nullopt);
    if (session_->TransactionCount() > 0) session_->Rollback();
  }

 private:
  void Renew() {
    session_.reset();
    session_ = Session::Open(Database::Open(UniqueMemoryName(), OpenMode::Create));
    Output output;
    EXPECT_TRUE(session_->Execute(kFuzzSchema, {}, output));
  }

  std::unique_ptr<Session> session_;
  int batches_ = 0;
};

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
