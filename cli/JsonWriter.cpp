#include "cli/JsonWriter.h"

#include <nlohmann/json.hpp>

#include "com/Text.h"

namespace bomcall {

void JsonWriter::NewLine() {
  if (!indented_) return;
  text_ += '\n';
  text_.append(depth_ * 2, ' ');
}

void JsonWriter::Separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (!first_) text_ += ',';
  if (depth_ > 0) NewLine();
  first_ = false;
}

void JsonWriter::Begin(char bracket) {
  Separate();
  text_ += bracket;
  ++depth_;
  first_ = true;
}

void JsonWriter::End(char bracket) {
  --depth_;
  if (!first_) NewLine();
  text_ += bracket;
  first_ = false;
}

void JsonWriter::Key(std::wstring_view name) {
  Text(name);
  text_ += indented_ ? ": " : ":";
  afterKey_ = true;
}

void JsonWriter::Text(std::wstring_view text) {
  Separate();
  // Half a surrogate pair becomes U+FFFD on the way, so this is always UTF-8.
  text_ += nlohmann::json(com::ToUtf8(text)).dump();
}

void JsonWriter::Literal(std::wstring_view literal) {
  Separate();
  text_ += com::ToUtf8(literal);
}

} // namespace bomcall
