#include "tests/tsql/fuzz/BatchMutator.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace tsql::test {
namespace {

bool IsWordByte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return std::isalnum(value) != 0 || value >= 0x80 || byte == '_' || byte == '@' || byte == '#' ||
         byte == '$';
}

std::string Upper(std::string text) {
  for (char& byte : text) byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
  return text;
}

} // namespace

BatchMutator::BatchMutator(const std::vector<std::string>& texts, uint32_t seed) : random_(seed) {
  for (const std::string& text : texts) texts_.push_back(Split(text));
}

BatchMutator::Tokens BatchMutator::Split(std::string_view text) {
  Tokens tokens;
  for (size_t at = 0; at < text.size();) {
    const size_t start = at;
    const char first = text[at++];
    if (std::isspace(static_cast<unsigned char>(first)) != 0) continue;
    if (first == '\'' || first == '"' || first == '[') {
      const char closing = first == '[' ? ']' : first;
      while (at < text.size() && text[at] != closing) ++at;
      at = std::min(at + 1, text.size());
    } else if (IsWordByte(first)) {
      while (at < text.size() && IsWordByte(text[at])) ++at;
    }
    tokens.emplace_back(text.substr(start, at - start));
  }
  return tokens;
}

bool BatchMutator::IsWord(const std::string& token) {
  return IsWordByte(token[0]) && std::isdigit(static_cast<unsigned char>(token[0])) == 0;
}

bool BatchMutator::IsValue(const std::string& token) {
  return std::isdigit(static_cast<unsigned char>(token[0])) != 0 || token[0] == '\'' || token[0] == '@';
}

bool BatchMutator::IsKeyword(const std::string& token) {
  static constexpr std::array<std::string_view, 24> kKeywords = {
      "WHERE",  "ON",     "JOIN",   "LEFT",   "RIGHT", "FULL",   "INNER", "CROSS",
      "GROUP",  "ORDER",  "UNION",  "HAVING", "SET",   "SELECT", "END",   "WITH",
      "UPDATE", "DELETE", "INSERT", "EXCEPT", "IF",    "DROP",   "ALTER", "CREATE"};
  return std::find(kKeywords.begin(), kKeywords.end(), Upper(token)) != kKeywords.end();
}

bool BatchMutator::LeadsTable(const std::string& token) {
  const std::string word = Upper(token);
  return word == "FROM" || word == "JOIN";
}

size_t BatchMutator::GroupEnd(const Tokens& tokens, size_t open) {
  int depth = 0;
  for (size_t i = open; i < tokens.size(); ++i) {
    depth += tokens[i] == "(" ? 1 : tokens[i] == ")" ? -1 : 0;
    if (depth == 0) return i + 1;
  }
  return tokens.size();
}

template <typename Wanted>
size_t BatchMutator::Find(const Tokens& tokens, Wanted isWanted) {
  const size_t start = tokens.empty() ? 0 : Below(tokens.size());
  for (size_t i = 0; i < tokens.size(); ++i) {
    const size_t at = (start + i) % tokens.size();
    if (isWanted(at)) return at;
  }
  return tokens.size();
}

void BatchMutator::DropOrDouble(Tokens& tokens) {
  const auto begin = tokens.begin() + static_cast<std::ptrdiff_t>(Below(tokens.size()));
  const auto end =
      begin + std::min<std::ptrdiff_t>(tokens.end() - begin, 1 + static_cast<std::ptrdiff_t>(Below(4)));
  if (Below(2) == 0) {
    tokens.erase(begin, end);
    return;
  }
  const Tokens copy(begin, end);
  tokens.insert(end, copy.begin(), copy.end());
}

void BatchMutator::Exchange(Tokens& tokens) {
  const size_t one = Below(tokens.size());
  const size_t other = Find(tokens, [&](size_t at) { return IsWord(tokens[at]) == IsWord(tokens[one]); });
  if (other < tokens.size()) std::swap(tokens[one], tokens[other]);
}

// A group in parentheses, or a word, from another text.
void BatchMutator::TakeOver(Tokens& tokens) {
  const Tokens source = texts_.empty() ? tokens : texts_[Below(texts_.size())];
  const bool isGroup = Below(2) == 0;
  const auto isWanted = [isGroup](const std::string& token) {
    return isGroup ? token == "(" : IsWord(token);
  };
  const size_t to = Find(tokens, [&](size_t at) { return isWanted(tokens[at]); });
  const size_t from = Find(source, [&](size_t at) { return isWanted(source[at]); });
  if (to == tokens.size() || from == source.size()) return;
  const auto offset = [](const Tokens& list, size_t at) {
    return list.begin() + static_cast<std::ptrdiff_t>(at);
  };
  const Tokens taken(offset(source, from), offset(source, isGroup ? GroupEnd(source, from) : from + 1));
  const auto begin = tokens.begin() + static_cast<std::ptrdiff_t>(to);
  const size_t end = isGroup ? GroupEnd(tokens, to) : to + 1;
  const auto at = tokens.erase(begin, tokens.begin() + static_cast<std::ptrdiff_t>(end));
  tokens.insert(at, taken.begin(), taken.end());
}

std::string BatchMutator::TableOf(const Tokens& tokens) {
  const size_t at =
      Find(tokens, [&](size_t i) { return i > 0 && LeadsTable(tokens[i - 1]) && IsWord(tokens[i]); });
  return at < tokens.size() ? tokens[at] : "ICBOM";
}

void BatchMutator::DeriveTable(Tokens& tokens) {
  const size_t at =
      Find(tokens, [&](size_t i) { return i > 0 && LeadsTable(tokens[i - 1]) && IsWord(tokens[i]); });
  if (at == tokens.size()) return;
  const bool hasAlias = at + 1 < tokens.size() && IsWord(tokens[at + 1]) && !IsKeyword(tokens[at + 1]);
  tokens[at] = "(SELECT * FROM " + tokens[at] + ")" + (hasAlias ? "" : " AS " + tokens[at]);
}

void BatchMutator::AddSubquery(Tokens& tokens) {
  const size_t at = Find(tokens, [&](size_t i) {
    const std::string word = Upper(tokens[i]);
    return word == "WHERE" || word == "ON" || word == "HAVING";
  });
  if (at == tokens.size()) return;
  static constexpr std::array<std::string_view, 3> kBegin = {"EXISTS (SELECT * FROM ", "1 IN (SELECT 1 FROM ",
                                                             "1 < (SELECT COUNT(*) FROM "};
  // One after the other, so that a seed means the same changes with every compiler.
  const std::string table = TableOf(tokens);
  const std::string_view begin = Pick(kBegin);
  tokens.insert(tokens.begin() + static_cast<std::ptrdiff_t>(at) + 1, std::string(begin) + table + ") AND");
}

void BatchMutator::ReplaceValue(Tokens& tokens) {
  const size_t at = Find(tokens, [&](size_t i) { return IsValue(tokens[i]); });
  if (at == tokens.size()) return;
  static constexpr std::array<std::string_view, 15> kValues = {"NULL",
                                                               "(SELECT MAX(c) FROM n)",
                                                               "-1",
                                                               "''",
                                                               "@text",
                                                               "?",
                                                               "COUNT(*)",
                                                               "MAX(FInterID)",
                                                               "(SELECT NULL)",
                                                               "9223372036854775807",
                                                               "1.5",
                                                               "CAST(NULL AS INT)",
                                                               "FItemID",
                                                               "GETDATE()",
                                                               "(1)"};
  tokens[at] = Pick(kValues);
}

void BatchMutator::AddClause(Tokens& tokens) {
  static constexpr std::array<std::string_view, 14> kBehind = {" HAVING 1 = 1",
                                                               " HAVING COUNT(*) > 0",
                                                               " GROUP BY FItemID",
                                                               " ORDER BY 1",
                                                               " ORDER BY COUNT(*)",
                                                               " UNION ALL SELECT 1",
                                                               " UNION SELECT NULL",
                                                               " WHERE 1 = 1",
                                                               " LEFT JOIN ICBOM z ON 1 = 1",
                                                               " JOIN t_ICItem y ON y.FItemID = 1",
                                                               " ORDER BY NULL",
                                                               " GROUP BY 1",
                                                               " EXCEPT SELECT 1",
                                                               " , ICMaxNum x"};
  static constexpr std::array<std::string_view, 6> kAfterSelect = {"TOP (@n)", "TOP (1)",    "DISTINCT",
                                                                   "TOP (-1)", "TOP (NULL)", "COUNT(*),"};
  if (Below(2) == 0) {
    const size_t at = Find(tokens, [&](size_t i) { return Upper(tokens[i]) == "SELECT"; });
    if (at == tokens.size()) return;
    tokens.insert(tokens.begin() + static_cast<std::ptrdiff_t>(at) + 1, std::string(Pick(kAfterSelect)));
    return;
  }
  const size_t at = Find(tokens, [&](size_t i) { return tokens[i] == ")"; });
  tokens.insert(tokens.begin() + static_cast<std::ptrdiff_t>(at), std::string(Pick(kBehind)));
}

void BatchMutator::Change(Tokens& tokens) {
  if (tokens.empty()) return;
  constexpr size_t kKinds = 7;
  switch (Below(kKinds)) {
  case 0: DropOrDouble(tokens); break;
  case 1: Exchange(tokens); break;
  case 2: TakeOver(tokens); break;
  case 3: DeriveTable(tokens); break;
  case 4: AddSubquery(tokens); break;
  case 5: ReplaceValue(tokens); break;
  default: AddClause(tokens);
  }
}

std::string BatchMutator::Mutate(std::string_view text) {
  Tokens tokens = Split(text);
  constexpr size_t kMaxTokens = 2000;
  const size_t changes = 1 + Below(4);
  for (size_t i = 0; i < changes && tokens.size() < kMaxTokens; ++i) Change(tokens);
  std::string result;
  for (const std::string& token : tokens) result += token + " ";
  return result;
}

std::string BatchMutator::Next() {
  std::string text;
  for (const std::string& token : texts_[Below(texts_.size())]) text += token + " ";
  return Mutate(text);
}

} // namespace tsql::test
