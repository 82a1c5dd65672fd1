// EmbeddedTarget: a database of the engine as a shell's target.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "tsql/ShellTarget.h"
#include "tsql/shell/CommandLine.h"

namespace tsql::shell {

// Opens the file, or makes it where there is none. Throws where the file's folder is missing: the engine
// would speak of a login, as a server does.
class EmbeddedTarget final : public ShellTarget {
 public:
  explicit EmbeddedTarget(const std::string& database)
      : session_(Session::Open(Database::Open(database, ModeFor(database)))) {}

  bool Execute(std::string_view batch, ResultSink& sink) override {
    return session_->Execute(batch, {}, sink);
  }
  bool NoCount() const override { return session_->NoCount(); }

 private:
  static OpenMode ModeFor(const std::string& database) {
    if (database.starts_with(":memory:")) return OpenMode::Create;
    if (std::filesystem::exists(PathOf(database))) return OpenMode::Existing;
    const std::filesystem::path folder = PathOf(database).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder))
      throw std::runtime_error("the folder of " + database + " is not there");
    return OpenMode::Create;
  }

  std::unique_ptr<Session> session_;
};

} // namespace tsql::shell
