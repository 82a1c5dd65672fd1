// Runs fuzzed batches one after another on one database, which is made anew now and then. None may fail as
// SQLite's own complaint about a statement that the engine made (823).
#pragma once

#include "tests/tsql/EngineFixture.h"
#include "tests/tsql/fuzz/FuzzSchema.h"

namespace tsql::test {

class FuzzedDatabase {
 public:
  FuzzedDatabase() { Renew(); }

  void Run(const std::string& batch) {
    constexpr int kBatchesPerDatabase = 100;
    constexpr int64_t kSteps = 1000;
    constexpr int kStorageError = 823;
    if (++batches_ % kBatchesPerDatabase == 0) Renew();
    std::vector<Parameter> parameters(3);
    parameters[0].type.id = TypeId::Int;
    parameters[1].name = "@text";
    parameters[1].type = Type{TypeId::NVarChar, 30, 0, 0};
    parameters[2].name = "@n";
    parameters[2].type.id = TypeId::Int;
    session_->SetWorkLimit(kSteps);
    Output output;
    if (session_->Execute(batch, parameters, output)) ++succeeded_;
    for (const Error& error : output.errors)
      EXPECT_NE(error.number, kStorageError) << error.what() << "\n" << batch;
    session_->SetWorkLimit(std::nullopt);
    if (session_->TransactionCount() > 0) session_->Rollback();
  }

  int Succeeded() const { return succeeded_; }

 private:
  void Renew() {
    session_.reset();
    session_ = Session::Open(Database::Open(UniqueMemoryName(), OpenMode::Create));
    Output output;
    EXPECT_TRUE(session_->Execute(kFuzzSchema, {}, output));
  }

  std::unique_ptr<Session> session_;
  int batches_ = 0;
  int succeeded_ = 0;
};

} // namespace tsql::test
