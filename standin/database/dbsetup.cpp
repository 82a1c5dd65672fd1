// dbsetup [--new] DATABASE SCRIPT...: runs T-SQL scripts into a database file of the embedded engine.
//
// A script is UTF-8; a line that holds only GO ends a batch. --new replaces the file, otherwise it is created
// if it is not there. A script's first error is followed by no more of its batches, and the exit code is 1.
#include "standin/tsql/tsql.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

class Report : public tsql::ResultSink {
 public:
  Report(const std::string& script, int firstLine) : script_(script), firstLine_(firstLine) {}
  bool failed() const { return failed_; }

  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> /*values*/) override {}
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& info) override { std::printf("%s\n", info.what()); }
  void Failed(const tsql::Error& error) override {
    failed_ = true;
    // The line within the script says more than the one within the batch.
    std::fprintf(stderr, "Msg %d, Level %d, State %d, Line %d\n%s: %s\n", error.number, error.severity,
                 error.state, firstLine_ + error.line - 1, script_.c_str(), error.what());
  }

 private:
  const std::string& script_;
  int firstLine_;
  bool failed_ = false;
};

bool IsGo(std::string_view line) {
  constexpr std::string_view blanks = " \t\r";
  const size_t first = line.find_first_not_of(blanks);
  if (first == std::string_view::npos) return false;
  const std::string_view word = line.substr(first, line.find_last_not_of(blanks) + 1 - first);
  return word.size() == 2 && (word[0] == 'G' || word[0] == 'g') && (word[1] == 'O' || word[1] == 'o');
}

struct Batch {
  std::string text;
  int firstLine = 1;
};

std::vector<Batch> Split(std::string_view script) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (script.starts_with(byteOrderMark)) script.remove_prefix(byteOrderMark.size());
  std::vector<Batch> batches(1);
  for (int line = 1; !script.empty(); ++line) {
    const size_t end = script.find('\n');
    const std::string_view text = script.substr(0, end);
    script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
    if (IsGo(text)) {
      batches.push_back({{}, line + 1});
    } else {
      batches.back().text.append(text).append("\n");
    }
  }
  std::erase_if(batches, [](const Batch& batch) {
    return batch.text.find_first_not_of(" \t\r\n") == std::string::npos;
  });
  return batches;
}

bool RunScript(tsql::Session& session, const std::string& script) {
  std::ifstream file(PathOf(script), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) {
    std::fprintf(stderr, "%s: cannot be read\n", script.c_str());
    return false;
  }
  for (const Batch& batch : Split(text)) {
    Report report(script, batch.firstLine);
    const bool done = session.Execute(batch.text, {}, report);
    if (!done || report.failed()) return false;
  }
  return true;
}

int Run(std::vector<std::string> arguments) {
  const bool replace = !arguments.empty() && arguments.front() == "--new";
  if (replace) arguments.erase(arguments.begin());
  if (arguments.size() < 2) {
    std::fputs("usage: dbsetup [--new] DATABASE SCRIPT...\n", stderr);
    return 2;
  }
  const std::string database = arguments.front();
  arguments.erase(arguments.begin());
  if (replace) {
    // The file and what SQLite may have left beside it.
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(PathOf(database + suffix));
  }
  const auto mode = fs::exists(PathOf(database)) ? tsql::OpenMode::Existing : tsql::OpenMode::Create;
  const auto session = tsql::Session::Open(tsql::Database::Open(database, mode));
  for (const std::string& script : arguments) {
    if (!RunScript(*session, script)) return 1;
  }
  return 0;
}

} // namespace

// Wide on Windows, where the narrow arguments are in some code page; as UTF-8 from here on.
#ifdef _WIN32
int wmain(int argc, wchar_t** argv) {
#else
int main(int argc, char** argv) {
#endif
  try {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
      const std::u8string utf8 = fs::path(argv[i]).u8string();
      arguments.emplace_back(utf8.begin(), utf8.end());
    }
    return Run(std::move(arguments));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "dbsetup: %s\n", error.what());
    return 1;
  }
}
