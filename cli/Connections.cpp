#include "cli/Connections.h"

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "cli/SourceText.h"
#include "com/Text.h"

namespace bomcall {
namespace {

std::wstring Trimmed(const std::wstring& text) {
  const size_t first = text.find_first_not_of(L" \t\r");
  return first == std::wstring::npos ? std::wstring()
                                     : text.substr(first, text.find_last_not_of(L" \t\r") - first + 1);
}

std::filesystem::path ProfileFile() {
  if (const wchar_t* file = _wgetenv(L"BOMCALL_PROFILE")) return file;
  const wchar_t* folder = _wgetenv(L"APPDATA");
  return folder ? std::filesystem::path(folder) / L"bomcall" / L"connections.txt" : std::filesystem::path();
}

std::optional<std::wstring> FromProfile(const std::wstring& name) {
  const std::filesystem::path file = ProfileFile();
  std::error_code none;
  if (file.empty() || !std::filesystem::exists(file, none)) return std::nullopt;
  for (const NamedText& connection :
       ParseProfile(ReadSourceText(file.wstring(), Encoding::Unicode), file.wstring()))
    if (com::EqualsNoCase(connection.name, name)) return connection.value;
  return std::nullopt;
}

std::wstring WithoutLanguage(const CommandLine& line) {
  if (line.descriptor) return *line.descriptor;
  if (!line.connection.empty()) {
    if (const auto named = FromProfile(line.connection)) return *named;
    throw UsageError(L"there is no connection " + line.connection + L" in " + ProfileFile().wstring());
  }
  if (const wchar_t* fromEnvironment = _wgetenv(L"BOMCALL_DSN")) return fromEnvironment;
  if (const auto named = FromProfile(L"default")) return *named;
  throw UsageError("a connection is needed: give --dsn or --connection, or set BOMCALL_DSN");
}

} // namespace

std::wstring DescriptorOf(const CommandLine& line) {
  return WithLanguage(WithoutLanguage(line), line.language);
}

std::vector<NamedText> ParseProfile(const std::string& utf8, const std::wstring& file) {
  std::vector<NamedText> connections;
  const std::wstring text = com::FromUtf8(utf8);
  size_t number = 0;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(L'\n', at), text.size());
    const std::wstring line = Trimmed(text.substr(at, end - at));
    at = end + 1;
    ++number;
    if (line.empty() || line.starts_with(L'#')) continue;
    const size_t equals = line.find(L'=');
    const std::wstring name = Trimmed(line.substr(0, equals));
    if (equals == std::wstring::npos || name.empty())
      throw UsageError(file + L", line " + std::to_wstring(number) + L", is not \"name = descriptor\"");
    connections.push_back({name, Trimmed(line.substr(equals + 1))});
  }
  return connections;
}

} // namespace bomcall
