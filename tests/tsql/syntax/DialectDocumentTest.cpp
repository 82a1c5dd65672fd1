// docs/dialect.md says what the tables of the engine say. Its lists stand between a comment with their name
// and one with "end"; where one is stale, the failure shows the list as it ought to be.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"

namespace tsql::test {
namespace {

std::string ReadDocument() {
  std::ifstream file(std::string(TSQL_SOURCE_DIR) + "/docs/dialect.md", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What stands in the document between the comments of a list.
std::string Listed(const std::string& document, const std::string& list) {
  const std::string open = "<!-- " + list + " -->\n";
  const size_t begin = document.find(open);
  const size_t end = document.find("<!-- end -->", begin);
  if (begin == std::string::npos || end == std::string::npos) return "the document has no such list";
  return document.substr(begin + open.size(), end - begin - open.size());
}

// The names in lines that are no longer than the other lines of the document.
std::string NameList(std::vector<std::string> names) {
  constexpr size_t kWidth = 118;
  std::sort(names.begin(), names.end());
  std::string text;
  std::string line;
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string item = "`" + names[i] + "`" + (i + 1 < names.size() ? "," : "");
    if (line.size() + item.size() + 1 > kWidth) {
      text += line + "\n";
      line.clear();
    }
    line += (line.empty() ? "" : " ") + item;
  }
  return text + line + "\n";
}

std::string NameList(RefusedKind kind) {
  const std::span<const std::string_view> names = RefusedNames(kind);
  return NameList(std::vector<std::string>(names.begin(), names.end()));
}

std::string ConstructTable() {
  std::string text = "| not supported | example |\n|---|---|\n";
  for (const Refusal& refusal : kRefusedConstructs)
    text.append("| ").append(refusal.name).append(" | `").append(refusal.example).append("` |\n");
  return text;
}

TEST(DialectDocumentTest, TheListsAreThoseOfTheEngine) {
  const std::string document = ReadDocument();
  std::vector<std::string> functions;
  for (const std::string_view name : Binder::FunctionNames()) functions.push_back(ToUpper(name));
  EXPECT_EQ(Listed(document, "functions"), NameList(functions));
  std::vector<std::string> types;
  for (int id = 0; id <= static_cast<int>(TypeId::DateTime2); ++id)
    types.push_back(TypeName(static_cast<TypeId>(id)));
  EXPECT_EQ(Listed(document, "types"), NameList(types));
  EXPECT_EQ(Listed(document, "refused constructs"), ConstructTable());
  const std::pair<const char*, RefusedKind> kLists[] = {
      {"refused statements", RefusedKind::Statement},
      {"refused CREATE", RefusedKind::Create},
      {"refused ALTER", RefusedKind::Alter},
      {"refused DROP", RefusedKind::Drop},
      {"refused ALTER TABLE", RefusedKind::AlterTable},
      {"refused functions", RefusedKind::Function},
      {"refused types", RefusedKind::Type},
      {"refused variables", RefusedKind::Global},
      {"refused options", RefusedKind::Option},
      {"refused table hints", RefusedKind::TableHint},
      {"refused procedures", RefusedKind::Procedure},
      {"refused system views", RefusedKind::SystemView},
      {"refused system columns", RefusedKind::SystemColumn}};
  for (const auto& [list, kind] : kLists) EXPECT_EQ(Listed(document, list), NameList(kind)) << list;
}

} // namespace
} // namespace tsql::test
