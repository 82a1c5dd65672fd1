// The server of an ODBC driver as a target of the engine's shells. They take the descriptor of the stand-in:
// Provider=ODBC;Connection={...}.
#include <memory>
#include <optional>
#include <utility>

#include "com/Text.h"
#include "odbc/Session.h"
#include "tsql/ShellTarget.h"

namespace odbc {
namespace {

class ShellServer final : public tsql::ShellTarget {
 public:
  explicit ShellServer(std::wstring connectionString) : session_(std::move(connectionString)) {}

  bool Execute(std::string_view batch, tsql::ResultSink& sink) override {
    return session_.Execute(com::FromUtf8(batch), {}, sink);
  }
  bool NoCount() const override { return false; }

 private:
  Session session_;
};

// What stands in the braces behind "Connection="; those within it match.
std::optional<std::wstring> ConnectionOf(const std::wstring& descriptor) {
  constexpr std::wstring_view kKey = L"Connection={";
  const size_t at = descriptor.find(kKey);
  if (!com::EqualsNoCase(std::wstring_view(descriptor).substr(0, 14), L"Provider=ODBC;") ||
      at == std::wstring::npos)
    return std::nullopt;
  const size_t start = at + kKey.size();
  int depth = 1;
  for (size_t i = start; i < descriptor.size(); ++i) {
    if (descriptor[i] == L'{') ++depth;
    if (descriptor[i] == L'}' && --depth == 0) return descriptor.substr(start, i - start);
  }
  return std::nullopt;
}

} // namespace
} // namespace odbc

std::unique_ptr<tsql::ShellTarget> tsql::OpenServer(const std::string& descriptor) {
  std::optional<std::wstring> connection = odbc::ConnectionOf(com::FromUtf8(descriptor));
  if (!connection) throw Error(0, 16, 1, 0, "not a descriptor of the form Provider=ODBC;Connection={...}");
  return std::make_unique<odbc::ShellServer>(*std::move(connection));
}
