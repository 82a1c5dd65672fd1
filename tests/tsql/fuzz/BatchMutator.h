// Makes new batches from given ones by changes of their grammar: tokens and groups in parentheses are
// dropped, doubled, exchanged and taken over from other texts; tables become derived tables; conditions get
// subqueries; clauses are put in. The same seed makes the same batches.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tsql::test {

class BatchMutator {
 public:
  BatchMutator(const std::vector<std::string>& texts, uint32_t seed);

  // As if it were made with this seed.
  void Restart(uint32_t seed) { random_.seed(seed); }

  // One of the texts with some changes.
  std::string Next();
  std::string Mutate(std::string_view text);

 private:
  using Tokens = std::vector<std::string>;

  static Tokens Split(std::string_view text);
  static bool IsWord(const std::string& token);
  static bool IsValue(const std::string& token);
  static bool IsKeyword(const std::string& token);
  static bool LeadsTable(const std::string& token);
  static size_t GroupEnd(const Tokens& tokens, size_t open); // behind the parenthesis that closes it

  size_t Below(size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(random_); }
  std::string_view Pick(std::span<const std::string_view> choices) { return choices[Below(choices.size())]; }
  // The position of a token that `isWanted`, from a random one on; the number of tokens if there is none.
  template <typename Wanted>
  size_t Find(const Tokens& tokens, Wanted isWanted);
  void Change(Tokens& tokens);
  void DropOrDouble(Tokens& tokens);
  void Exchange(Tokens& tokens);
  void TakeOver(Tokens& tokens);
  void DeriveTable(Tokens& tokens);
  void AddSubquery(Tokens& tokens);
  void ReplaceValue(Tokens& tokens);
  void AddClause(Tokens& tokens);
  std::string TableOf(const Tokens& tokens);

  std::vector<Tokens> texts_;
  std::mt19937 random_;
};

} // namespace tsql::test
