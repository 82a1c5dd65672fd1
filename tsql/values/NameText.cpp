#include "tsql/values/NameText.h"

namespace tsql {

std::optional<std::vector<std::string>> NameParts(std::string_view name) {
  std::vector<std::string> parts(1);
  for (size_t at = 0; at < name.size(); ++at) {
    if (name[at] == '.') {
      parts.emplace_back();
      continue;
    }
    if (name[at] != '[' && name[at] != '"') {
      parts.back() += name[at];
      continue;
    }
    const char close = name[at] == '[' ? ']' : '"';
    if (!parts.back().empty()) return std::nullopt;
    for (++at;; ++at) {
      if (at >= name.size()) return std::nullopt;
      if (name[at] != close) {
        parts.back() += name[at];
      } else if (at + 1 < name.size() && name[at + 1] == close) {
        parts.back() += name[at++];
      } else {
        break;
      }
    }
    if (at + 1 < name.size() && name[at + 1] != '.') return std::nullopt;
  }
  return parts;
}

} // namespace tsql
