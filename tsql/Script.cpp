#include "tsql/Script.h"

#include <charconv>
#include <istream>
#include <string_view>
#include <utility>

namespace tsql {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

std::string_view Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// How often a line with GO asks to run the batch; nullopt when the line is another one.
std::optional<int> ParseGo(std::string_view line) {
  const std::string_view text = Trim(line);
  if (text.size() < 2 || (text[0] | 0x20) != 'g' || (text[1] | 0x20) != 'o') return std::nullopt;
  if (text.size() == 2) return 1;
  if (kBlanks.find(text[2]) == std::string_view::npos) return std::nullopt;
  const std::string_view digits = Trim(text.substr(2));
  int count = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
  if (error != std::errc() || end != digits.data() + digits.size() || count < 0) return std::nullopt;
  return count;
}

} // namespace

ScriptReader::ScriptReader(std::istream& in, std::function<void(int line)> beforeLine)
    : in_(in), beforeLine_(std::move(beforeLine)) {}

void ScriptReader::Scan(const std::string& line) {
  for (size_t i = 0; i < line.size(); ++i) {
    const std::string_view pair = std::string_view(line).substr(i, 2);
    if (quote_ != 0) {
      // A doubled delimiter closes the text and opens it again, so it needs no rule of its own.
      if (line[i] == quote_) quote_ = 0;
    } else if (comments_ > 0 || pair == "/*") {
      if (pair == "/*" || pair == "*/") {
        comments_ += pair == "/*" ? 1 : -1;
        ++i;
      }
    } else if (pair == "--") {
      return;
    } else if (line[i] == '\'' || line[i] == '"' || line[i] == '[') {
      quote_ = line[i] == '[' ? ']' : line[i];
    }
  }
}

std::optional<ScriptBatch> ScriptReader::Next() {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  ScriptBatch batch;
  batch.firstLine = line_ + 1;
  std::string line;
  const auto read = [&] {
    if (beforeLine_) beforeLine_(line_ + 2 - batch.firstLine);
    return static_cast<bool>(std::getline(in_, line));
  };
  while (read()) {
    if (++line_ == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    const std::optional<int> go = quote_ == 0 && comments_ == 0 ? ParseGo(line) : std::nullopt;
    if (!go) {
      Scan(line);
      batch.text.append(line).append("\n");
      continue;
    }
    if (!Trim(batch.text).empty()) {
      batch.count = *go;
      return batch;
    }
    batch.text.clear();
    batch.firstLine = line_ + 1;
  }
  quote_ = 0;
  comments_ = 0;
  if (Trim(batch.text).empty()) return std::nullopt;
  return batch;
}

} // namespace tsql
