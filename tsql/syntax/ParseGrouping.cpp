// GROUP BY. What stands for several groupings is multiplied out into a list of sets.
#include <iterator>
#include <utility>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr size_t kMostSets = 4096;

using Sets = std::vector<std::vector<size_t>>;

void CheckSetCount(size_t count, int line) {
  if (count > kMostSets) Fail(10703, {std::to_string(kMostSets)}, line);
}

// Each set of the one with each set of the other, as items beside each other mean.
Sets Combine(const Sets& left, const Sets& right, int line) {
  CheckSetCount(left.size() * right.size(), line);
  Sets combined;
  for (const std::vector<size_t>& first : left) {
    for (const std::vector<size_t>& second : right) {
      combined.push_back(first);
      combined.back().insert(combined.back().end(), second.begin(), second.end());
    }
  }
  return combined;
}

// All elements, then without the last one, and so on to none.
Sets RollUp(const Sets& elements) {
  Sets sets;
  for (size_t count = elements.size() + 1; count-- > 0;) {
    sets.emplace_back();
    for (size_t i = 0; i < count; ++i)
      sets.back().insert(sets.back().end(), elements[i].begin(), elements[i].end());
  }
  return sets;
}

// Every choice of elements, that of all first.
Sets Cube(const Sets& elements, int line) {
  Sets sets{{}};
  for (const std::vector<size_t>& element : elements) sets = Combine(sets, {element, {}}, line);
  return sets;
}

} // namespace

void Parser::ParseGroupBy(Select& select) {
  const int line = Current().line;
  ExpectWord("group");
  ExpectWord("by");
  if (IsWord("all")) RefuseHere("GROUP BY ALL");
  GroupingSets sets{{}};
  bool hasConstruct = false;
  do {
    hasConstruct = hasConstruct || StartsGroupingConstruct();
    sets = Combine(sets, ParseGroupingItem(select), line);
  } while (TakeSymbol(","));
  const bool isRollUp = AreWordsAt(0, "WITH ROLLUP");
  if (isRollUp || AreWordsAt(0, "WITH CUBE")) {
    if (hasConstruct) Fail(10702, {}, line);
    GroupingSets elements;
    for (const size_t place : sets.front()) elements.push_back({place});
    sets = isRollUp ? RollUp(elements) : Cube(elements, line);
    hasConstruct = true;
    at_ += 2;
  }
  if (hasConstruct) select.groupingSets = std::move(sets);
}

// Whether something other than an expression is there.
bool Parser::StartsGroupingConstruct() const {
  return (AreWordsAt(0, "GROUPING SETS") && IsSymbolAt(2, "(")) || (IsSymbol("(") && IsSymbolAt(1, ")")) ||
         ((IsWord("rollup") || IsWord("cube")) && IsSymbolAt(1, "("));
}

Parser::GroupingSets Parser::ParseGroupingItem(Select& select) {
  if (!StartsGroupingConstruct()) return {{ParseGroupingExpression(select)}};
  const int line = Current().line;
  if (IsWord("grouping")) return ParseGroupingSets(select);
  if (TakeSymbol("(")) {
    ExpectSymbol(")");
    return {{}};
  }
  const bool isRollUp = IsWord("rollup");
  ++at_;
  ExpectSymbol("(");
  GroupingSets elements;
  do elements.push_back(ParseGroupingElement(select));
  while (TakeSymbol(","));
  ExpectSymbol(")");
  CheckSetCount(elements.size(), line);
  return isRollUp ? RollUp(elements) : Cube(elements, line);
}

Parser::GroupingSets Parser::ParseGroupingSets(Select& select) {
  const int line = Current().line;
  at_ += 2;
  ExpectSymbol("(");
  GroupingSets sets;
  do {
    GroupingSets more = ParseGroupingSet(select);
    CheckSetCount(sets.size() + more.size(), line);
    std::move(more.begin(), more.end(), std::back_inserter(sets));
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  return sets;
}

// One within GROUPING SETS, where these cannot stand again.
Parser::GroupingSets Parser::ParseGroupingSet(Select& select) {
  if (AreWordsAt(0, "GROUPING SETS")) SyntaxError();
  const size_t after = AfterParenthesis(0);
  const bool isList =
      IsSymbol("(") && !IsSymbolAt(1, ")") && (IsSymbolAt(after, ",") || IsSymbolAt(after, ")"));
  if (!isList) return ParseGroupingItem(select);
  const int line = Current().line;
  ExpectSymbol("(");
  GroupingSets sets{{}};
  do {
    if (AreWordsAt(0, "GROUPING SETS")) SyntaxError();
    sets = Combine(sets, ParseGroupingItem(select), line);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  return sets;
}

// An expression of ROLLUP or CUBE, or several in parentheses that go together.
std::vector<size_t> Parser::ParseGroupingElement(Select& select) {
  const size_t after = AfterParenthesis(0);
  const bool isList = IsSymbol("(") && !StartsQuery() && (IsSymbolAt(after, ",") || IsSymbolAt(after, ")"));
  if (!isList) return {ParseGroupingExpression(select)};
  ExpectSymbol("(");
  std::vector<size_t> places;
  do places.push_back(ParseGroupingExpression(select));
  while (TakeSymbol(","));
  ExpectSymbol(")");
  return places;
}

size_t Parser::ParseGroupingExpression(Select& select) {
  const size_t first = at_;
  select.groupBy.push_back(ParseExpression());
  RefuseSubqueries(first, 144);
  return select.groupBy.size() - 1;
}

} // namespace tsql
