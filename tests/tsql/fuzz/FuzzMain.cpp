// A libFuzzer target: any text is parsed and run as a batch on a small in-memory database. Nothing may crash,
// leak or run for good; the engine may refuse what it likes, but never with SQLite's own complaint about a
// statement that the engine made (823), and afterwards the session works.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/tsql/fuzz/BatchGrammar.h"
#include "tests/tsql/fuzz/BatchMutator.h"
#include "tests/tsql/fuzz/FuzzSchema.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/tsql.h"

namespace {

using namespace tsql; // NOLINT(google-build-using-namespace): a program of one file

[[noreturn]] void Complain(const char* what, const std::string& detail) {
  std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
  std::abort();
}

struct Sink : ResultSink {
  void BeginRows(std::span<const Column> /*columns*/) override {}
  void Row(std::span<const Value> /*values*/) override { ++rows; }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const Error& /*info*/) override {}
  void Failed(const Error& error) override {
    constexpr int kStorageError = 823;
    if (error.number == kStorageError) Complain("storage error", error.what());
    failed = true;
    last = error.what();
  }
  int rows = 0;
  bool failed = false;
  std::string last;
};

void Must(Session& session, std::string_view batch) {
  Sink sink;
  if (!session.Execute(batch, {}, sink)) Complain("refused", sink.last);
}

} // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

// What a text may take parts over from: what is refused, and some batches of the grammar.
std::vector<std::string> OtherTexts() {
  std::vector<std::string> texts;
  for (const Refusal& refusal : kRefusedConstructs) texts.emplace_back(refusal.example);
  constexpr uint32_t kBatches = 300;
  for (uint32_t seed = 0; seed < kBatches; ++seed) texts.push_back(test::BatchGrammar(seed).Next());
  return texts;
}

} // namespace

// A third of the changes is of bytes, a third of tokens and clauses, and a third are new batches of the
// grammar, changed now and then.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
  if (seed % 3 == 0) return LLVMFuzzerMutate(data, size, maxSize);
  static test::BatchMutator mutator(OtherTexts(), 0);
  mutator.Restart(seed);
  std::string text(reinterpret_cast<const char*>(data), size);
  const bool isNew = seed % 3 == 1;
  if (isNew) text = test::BatchGrammar(seed).Next();
  if (!isNew || seed % 4 == 0) text = mutator.Mutate(text);
  const size_t length = std::min(text.size(), maxSize);
  std::copy_n(text.begin(), length, data);
  return length;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int64_t kSteps = 1000;
  const auto database = Database::Open(":memory:fuzz", OpenMode::Create);
  {
    const auto session = Session::Open(database);
    Must(*session, tsql::test::kFuzzSchema);
    session->SetNow(DateTime{46143, 0});
    session->SetLockTimeout(0);
    session->SetWorkLimit(kSteps);
    std::vector<Parameter> parameters(2);
    parameters[0].type.id = TypeId::Int;
    parameters[0].value.kind = Value::Kind::Integer;
    parameters[0].value.integer = 1;
    parameters[1].name = "@text";
    parameters[1].type.id = TypeId::NVarChar;
    parameters[1].type.length = 30;
    parameters[1].output = true;
    parameters[1].value.kind = Value::Kind::Text;
    parameters[1].value.text = "IC";
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Sink sink;
    const bool succeeded = session->Execute(text, parameters, sink);
    if (succeeded == sink.failed) Complain("result and report differ", sink.last);
    // The same again, from the compiled batch.
    session->Execute(text, parameters, sink);
    session->SetWorkLimit(std::nullopt);
    if (session->TransactionCount() > 0) session->Rollback();
    Sink after;
    if (!session->Execute("SET NOCOUNT OFF SELECT 1", {}, after) || after.rows != 1)
      Complain("the session", after.last);
  }
  // Nothing of it is left that would hinder the next session.
  Must(*Session::Open(database), "CREATE TABLE [~another] (a int) DROP TABLE [~another]");
  return 0;
}
