// Makes batches from a grammar of the whole dialect: its statements, clauses, functions and types. They speak
// of the tables of FuzzSchema.h, so that most of them bind. The same seed makes the same batches.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace tsql::test {

class BatchGrammar {
 public:
  explicit BatchGrammar(uint32_t seed) : random_(seed) {}

  std::string Next();
  // All that the grammar can say, for tests of what it knows.
  static std::string Text();

 private:
  void Expand(std::string_view rule, int depth, std::string& result);

  std::mt19937 random_;
};

} // namespace tsql::test
