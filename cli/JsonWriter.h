// Writes JSON piece by piece, so that numbers keep the digits that they are given with.
#pragma once

#include <string>
#include <string_view>

namespace bomcall {

class JsonWriter {
 public:
  // On one line, or indented by two blanks a level.
  explicit JsonWriter(bool indented) : indented_(indented) {}

  void BeginObject() { Begin('{'); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void EndArray() { End(']'); }
  void Key(std::wstring_view name);
  void Text(std::wstring_view text);
  // A number, true, false or null, as it is to stand there.
  void Literal(std::wstring_view literal);

  const std::string& text() const { return text_; }

 private:
  void Begin(char bracket);
  void End(char bracket);
  void Separate();
  void NewLine();

  bool indented_;
  size_t depth_ = 0;
  bool first_ = true;     // nothing stands in the innermost bracket yet
  bool afterKey_ = false; // a value comes next
  std::string text_;
};

} // namespace bomcall
