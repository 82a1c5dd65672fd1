// Every statement that the component sends stands in a file of the folder statements/. Each case is a
// late-bound call on the factory's data, which is made again after a case that may have changed it; what it
// sends is held against its files, in order, and no file is left that no case sends.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>

#include "com/ComError.h"
#include "com/Text.h"
#include "src/server/Tables.h"
#include "tests/src/statements/Cases.h"
#include "tests/support/Client.h"
#include "tests/support/SourceFolder.h"

namespace mbom::test {
namespace {

using com::Object;
using com::Variant;

const std::filesystem::path kFolder = SourceFolder() + "/statements";
constexpr std::string_view kShared = "Shared.";

// A statement of a case without a command's parameters.
std::string FileOf(const std::string& statement) {
  return statement.substr(0, statement.find('\t'));
}

// The texts of the files by their names without ".sql".
const std::map<std::string, std::string>& Files() {
  static const auto files = [] {
    std::map<std::string, std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
      if (entry.path().extension() != ".sql") continue;
      std::ifstream file(entry.path(), std::ios::binary);
      texts[entry.path().stem().string()] = {std::istreambuf_iterator<char>(file),
                                             std::istreambuf_iterator<char>()};
    }
    return texts;
  }();
  return files;
}

// What the files of a case hold, with a command's parameters behind its text.
std::vector<std::string> Expected(const StatementCase& example) {
  std::vector<std::string> texts;
  for (const std::string& statement : example.statements) {
    const std::string name = FileOf(statement);
    const auto file = Files().find(name);
    texts.push_back(file == Files().end() ? "no file " + name + ".sql"
                                          : file->second + statement.substr(name.size()));
  }
  return texts;
}

std::unique_ptr<TestDatabase> FactoryData() {
  auto database = std::make_unique<TestDatabase>();
  for (const char* script : {"factory", "ecn", "browsing"})
    database->RunScript("standin/database/" + std::string(script) + ".sql");
  return database;
}

std::vector<std::string> SentBy(const StatementCase& example, const TestDatabase& database) {
  const Circumstances& given = example.given;
  if (given.data[0] != L'\0') database.Execute(given.data);
  const std::wstring dsn =
      database.DsnFor(given.user, L"2026-05-03 14:05:06",
                      L"Language=" + std::wstring(given.language) + L";SubID=" + given.subsystem);

  const Object object = Hosted(example.className);
  if (given.bound) object.Call(L"UpdateBomGroupName", dsn, 7, L"样车 Prototype");
  std::vector<Variant> arguments;
  if (given.descriptor) arguments.emplace_back(dsn);
  arguments.insert(arguments.end(), example.arguments.begin(), example.arguments.end());

  const Trace trace;
  try {
    object.CallWith(example.method, arguments);
  } catch (const com::ComError&) {
    // Some statements are refused by every server. That they were sent is all that counts here.
  }
  std::vector<std::string> sent;
  for (const std::wstring& event : trace.Events())
    for (const std::wstring_view kind : {L"Execute\t", L"Open\t", L"Command\t"})
      if (event.starts_with(kind)) sent.push_back(WithoutTableNumber(com::ToUtf8(event.substr(kind.size()))));
  return sent;
}

// Whether the data is as it was before the case: it sent something, and nothing but queries. A call that
// sends nothing may have had others work on the data.
bool LeavesDataAlone(const StatementCase& example, const std::vector<std::string>& sent) {
  return example.given.data[0] == L'\0' && !example.given.bound && !sent.empty() &&
         std::ranges::all_of(sent, [](const std::string& text) {
           const size_t start = text.find_first_not_of(' ');
           return start != std::string::npos &&
                  com::EqualsNoCase(com::FromUtf8(text.substr(start, 7)), L"select ");
         });
}

TEST(StatementCatalogueTest, EveryCallSendsWhatItsFilesHold) {
  std::unique_ptr<TestDatabase> database;
  for (const StatementCase& example : AllCases()) {
    SCOPED_TRACE(MethodOf(example) + ", " + example.name);
    if (!database) database = FactoryData();
    const std::vector<std::string> sent = SentBy(example, *database);
    if (!LeavesDataAlone(example, sent)) database.reset();
    const std::vector<std::string> expected = Expected(example);
    EXPECT_EQ(sent.size(), expected.size());
    for (size_t i = 0; i < std::max(sent.size(), expected.size()); ++i) {
      EXPECT_EQ(i < sent.size() ? sent[i] : "(nothing is sent)",
                i < expected.size() ? expected[i] : "(no file is named)")
          << (i < expected.size() ? example.statements[i] : "");
    }
  }
}

TEST(StatementCatalogueTest, EveryFileIsSent) {
  std::set<std::string> sent;
  for (const StatementCase& example : AllCases())
    for (const std::string& statement : example.statements) sent.insert(FileOf(statement));
  for (const auto& [name, text] : Files()) EXPECT_TRUE(sent.contains(name)) << name;
}

TEST(StatementCatalogueTest, FilesAreNamedAfterTheOneMethodThatSendsThemOrShared) {
  std::map<std::string, std::set<std::string>> methods;
  for (const StatementCase& example : AllCases())
    for (const std::string& statement : example.statements)
      methods[FileOf(statement)].insert(MethodOf(example));
  for (const auto& [name, senders] : methods) {
    if (name.starts_with(kShared)) {
      EXPECT_GE(senders.size(), 2U) << name;
    } else {
      EXPECT_EQ(senders.size(), 1U) << name;
      const std::string& method = *senders.begin();
      EXPECT_TRUE(name == method || name.starts_with(method + ".")) << name << " is sent by " << method;
    }
  }
}

TEST(StatementCatalogueTest, NoTwoFilesHoldTheSameText) {
  std::map<std::string, std::string> names;
  for (const auto& [name, text] : Files()) {
    const auto [other, isNew] = names.try_emplace(text, name);
    EXPECT_TRUE(isNew) << name << " and " << other->second;
  }
}

struct TableOfClass {
  const char* name;
  const com::DispatchTable& (*table)();
};

TEST(StatementCatalogueTest, EveryMethodOfEveryClassIsCalled) {
  std::set<std::string> called;
  for (const StatementCase& example : AllCases()) called.insert(MethodOf(example));
  size_t methods = 0;
  for (const auto& [name, table] : {TableOfClass{"BOMImport", com::TableOf<BOMImport>},
                                    {"BomInfo", com::TableOf<BomInfo>},
                                    {"BomUpdate", com::TableOf<BomUpdate>},
                                    {"BomView", com::TableOf<BomView>},
                                    {"CBomCheck", com::TableOf<CBomCheck>},
                                    {"CBomFunction", com::TableOf<CBomFunction>},
                                    {"CEcnInfo", com::TableOf<CEcnInfo>},
                                    {"PPorderImort", com::TableOf<PPorderImort>},
                                    {"clsMBOMRule", com::TableOf<clsMBOMRule>},
                                    {"clsMCustBOM", com::TableOf<clsMCustBOM>},
                                    {"clsReadUserDefined", com::TableOf<clsReadUserDefined>}}) {
    for (const com::Member& member : table().members()) {
      if (member.kind != DISPATCH_METHOD) continue;
      ++methods;
      EXPECT_TRUE(called.contains(std::string(name) + "." + com::ToUtf8(member.name)))
          << name << "." << com::ToUtf8(member.name);
    }
  }
  EXPECT_EQ(methods, called.size());
}

} // namespace
} // namespace mbom::test
