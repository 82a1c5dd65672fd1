// EmbeddedTarget: a database of the engine as a shell's target.
#pragma once

#include <string>

#include "tsql/ShellTarget.h"

namespace tsql::shell {

class EmbeddedTarget final : public ShellTarget {
 public:
  EmbeddedTarget(const std::string& database, OpenMode mode)
      : session_(Session::Open(Database::Open(database, mode))) {}

  bool Execute(std::string_view batch, ResultSink& sink) override {
    return session_->Execute(batch, {}, sink);
  }
  bool NoCount() const override { return session_->NoCount(); }

 private:
  std::unique_ptr<Session> session_;
};

} // namespace tsql::shell
