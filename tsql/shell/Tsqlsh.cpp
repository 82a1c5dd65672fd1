// tsqlsh [--tsv] [--time] DATABASE [FILE...]: runs T-SQL scripts, or standard input, on a database of the
// embedded engine: a file, which is made if it is not there, or ":memory:NAME"; or on a server that a
// descriptor names.
//
// A script is UTF-8; a line "GO" or "GO n" ends a batch. Results, row counts (unless NOCOUNT is on) and PRINT
// go to standard output; errors to standard error, with the line within the batch, and the next batch
// follows. The exit status is 1 when any batch failed, 2 when the command line is wrong.
#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tsql/Script.h"
#include "tsql/shell/CommandLine.h"
#include "tsql/shell/EmbeddedTarget.h"
#include "tsql/shell/Output.h"
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

using tsql::shell::Form;
using tsql::shell::PathOf;

constexpr const char* kUsage =
    "usage: tsqlsh [--tsv] [--time] DATABASE [FILE...]\n"
    "  DATABASE  a file, made if it is not there, :memory:NAME, or a server's\n"
    "            'Provider=ODBC;Connection={...}', which the shell for Windows reaches\n"
    "  FILE      a T-SQL script in UTF-8, GO or GO n between its batches; standard input without one\n"
    "  --tsv     a line of names and tab-separated rows, with \\t \\n \\r \\\\ in texts\n"
    "  --time    how long each batch took, to standard error\n";

struct Options {
  Form form = Form::Table;
  bool time = false;
  std::vector<std::string> arguments;
};

bool IsTerminal() {
#ifdef _WIN32
  return _isatty(_fileno(stdin)) != 0;
#else
  return isatty(STDIN_FILENO) != 0;
#endif
}

bool RunScript(tsql::ShellTarget& target, const Options& options, std::istream& in, bool isTerminal) {
  bool succeeded = true;
  const auto prompt = [](int line) { std::cout << line << "> " << std::flush; };
  tsql::ScriptReader reader(in, isTerminal ? prompt : std::function<void(int)>());
  while (const std::optional<tsql::ScriptBatch> batch = reader.Next()) {
    for (int i = 0; i < batch->count; ++i) {
      tsql::shell::Output output(target, options.form, std::cout, std::cerr);
      const auto start = std::chrono::steady_clock::now();
      succeeded = target.Execute(batch->text, output) && succeeded;
      const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
      std::cout.flush();
      if (options.time) std::fprintf(stderr, "Time: %.3f ms\n", took.count());
    }
  }
  return succeeded;
}

std::unique_ptr<tsql::ShellTarget> OpenTarget(const std::string& database) {
  if (tsql::IsServer(database)) return tsql::OpenServer(database);
  return std::make_unique<tsql::shell::EmbeddedTarget>(database);
}

int Run(const Options& options) {
  const std::string database = tsql::FileOf(options.arguments.front());
  const auto target = OpenTarget(database);
  if (options.arguments.size() == 1) return RunScript(*target, options, std::cin, IsTerminal()) ? 0 : 1;
  bool succeeded = true;
  for (size_t i = 1; i < options.arguments.size(); ++i) {
    std::ifstream file(PathOf(options.arguments[i]), std::ios::binary);
    if (file) {
      succeeded = RunScript(*target, options, file, false) && succeeded;
    } else {
      std::fprintf(stderr, "tsqlsh: %s cannot be read\n", options.arguments[i].c_str());
      succeeded = false;
    }
  }
  return succeeded ? 0 : 1;
}

// Nothing when the command line is wrong.
std::optional<Options> ReadOptions(const std::vector<std::string>& arguments) {
  Options options;
  bool onlyNames = false;
  for (const std::string& argument : arguments) {
    if (onlyNames || !argument.starts_with("--")) {
      options.arguments.push_back(argument);
    } else if (argument == "--tsv") {
      options.form = Form::Tsv;
    } else if (argument == "--time") {
      options.time = true;
    } else if (argument == "--") {
      onlyNames = true;
    } else {
      return std::nullopt;
    }
  }
  if (options.arguments.empty()) return std::nullopt;
  return options;
}

} // namespace

#ifdef _WIN32
int wmain(int argc, wchar_t** argv) {
  // Lines end as the scripts have them, and UTF-8 passes as it is.
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
#else
int main(int argc, char** argv) {
#endif
  try {
    const std::vector<std::string> arguments = tsql::shell::ArgumentsOf(argc, argv);
    if (arguments.size() == 1 && arguments[0] == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    const std::optional<Options> options = ReadOptions(arguments);
    if (!options) {
      std::fputs(kUsage, stderr);
      return 2;
    }
    return Run(*options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tsqlsh: %s\n", error.what());
    return 1;
  }
}
