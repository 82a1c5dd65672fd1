#include "tests/src/statements/Cases.h"

#include <gtest/gtest.h>

#include "com/Text.h"

namespace mbom::test {

StatementCases AllCases() {
  StatementCases all;
  for (const StatementCases& cases : {BomCases(), ViewCases(), EcnAndImportCases(), CustBomCases()})
    all.insert(all.end(), cases.begin(), cases.end());
  return all;
}

std::string MethodOf(const StatementCase& example) {
  return com::ToUtf8(example.className) + "." + com::ToUtf8(example.method);
}

std::string WithoutTableNumber(std::string text) {
  const std::string table = "##BomItemID";
  constexpr size_t kDigits = 32;
  for (size_t at = 0; (at = text.find(table + "_", at)) != std::string::npos;) {
    const size_t number = at + table.size() + 1;
    const size_t end = text.find_first_not_of("0123456789ABCDEF", number);
    EXPECT_EQ((end == std::string::npos ? text.size() : end) - number, kDigits) << text;
    text.erase(number - 1, kDigits + 1);
    at += table.size();
  }
  return text;
}

} // namespace mbom::test
