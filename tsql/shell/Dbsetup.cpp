// dbsetup [--new] DATABASE SCRIPT...: runs T-SQL scripts into a database file of the embedded engine, or on a
// server that a descriptor names.
//
// A script is UTF-8; a line that holds only GO, or GO and a number of repetitions, ends a batch. --new
// replaces the file, otherwise it is created if it is not there; a server's database is never replaced. A
// script's first error is followed by no more of its batches, and the exit code is 1.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tsql/Script.h"
#include "tsql/shell/CommandLine.h"
#include "tsql/shell/EmbeddedTarget.h"
#include "tsql/tsql.h"

namespace {

namespace fs = std::filesystem;
using tsql::shell::PathOf;

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
                 error.state, firstLine_ + std::max(error.line, 1) - 1, script_.c_str(), error.what());
  }

 private:
  const std::string& script_;
  int firstLine_;
  bool failed_ = false;
};

bool RunScript(tsql::ShellTarget& target, const std::string& script) {
  std::ifstream file(PathOf(script), std::ios::binary);
  if (!file) {
    std::fprintf(stderr, "%s: cannot be read\n", script.c_str());
    return false;
  }
  tsql::ScriptReader reader(file);
  while (const std::optional<tsql::ScriptBatch> batch = reader.Next()) {
    for (int i = 0; i < batch->count; ++i) {
      Report report(script, batch->firstLine);
      const bool done = target.Execute(batch->text, report);
      if (!done || report.failed()) return false;
    }
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
  const std::string database = tsql::FileOf(arguments.front());
  arguments.erase(arguments.begin());
  const bool isServer = tsql::IsServer(database);
  if (replace && isServer) {
    std::fputs("dbsetup: --new replaces files only\n", stderr);
    return 2;
  }
  if (replace) {
    // The file and what SQLite may have left beside it.
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(PathOf(database + suffix));
  }
  const std::unique_ptr<tsql::ShellTarget> target =
      isServer ? tsql::OpenServer(database) : std::make_unique<tsql::shell::EmbeddedTarget>(database);
  for (const std::string& script : arguments) {
    if (!RunScript(*target, script)) return 1;
  }
  return 0;
}

} // namespace

#ifdef _WIN32
int wmain(int argc, wchar_t** argv) {
#else
int main(int argc, char** argv) {
#endif
  try {
    std::vector<std::string> arguments = tsql::shell::ArgumentsOf(argc, argv);
    return Run(std::move(arguments));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "dbsetup: %s\n", error.what());
    return 1;
  }
}
