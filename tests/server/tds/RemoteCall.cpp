#include "tests/server/tds/RemoteCall.h"

#include <array>
#include <utility>

#include "tests/server/tds/WireValue.h"

namespace tds {
namespace {

// The server's own procedures that have a number, from 1 on.
constexpr std::array kNumbered{
    "sp_cursor",          "sp_cursoropen",  "sp_cursorprepare", "sp_cursorexecute", "sp_cursorprepexec",
    "sp_cursorunprepare", "sp_cursorfetch", "sp_cursoroption",  "sp_cursorclose",   "sp_executesql",
    "sp_prepare",         "sp_execute",     "sp_prepexec",      "sp_prepexecrpc",   "sp_unprepare"};
constexpr uint16_t kHasNumber = 0xFFFF;
// Between two calls of a message.
constexpr uint8_t kNextCall = 0xFF;
constexpr uint8_t kNextCallUnanswered = 0xFE;

std::string TakeProcedure(ByteReader& in) {
  const auto length = in.Take<uint16_t>();
  if (length != kHasNumber) return in.Text(length);
  const auto number = in.Take<uint16_t>();
  if (number < 1 || number > kNumbered.size()) throw Malformed("no procedure has this number");
  return kNumbered[number - 1];
}

tsql::Parameter TakeParameter(ByteReader& in) {
  constexpr uint8_t kByReference = 1;
  tsql::Parameter parameter;
  parameter.name = in.ShortText();
  parameter.output = (in.Take<uint8_t>() & kByReference) != 0;
  TakeTypeAndValue(in, parameter);
  return parameter;
}

bool IsBetweenCalls(uint8_t byte) {
  return byte == kNextCall || byte == kNextCallUnanswered;
}

} // namespace

std::vector<RemoteCall> ReadCalls(ByteReader in) {
  std::vector<RemoteCall> calls;
  while (!in.IsAtEnd()) {
    RemoteCall call;
    call.procedure = TakeProcedure(in);
    in.Take<uint16_t>(); // options
    // A name is shorter than what stands between two calls.
    while (!in.IsAtEnd() && !IsBetweenCalls(in.Peek())) call.parameters.push_back(TakeParameter(in));
    if (!in.IsAtEnd()) in.Take<uint8_t>();
    calls.push_back(std::move(call));
  }
  for (RemoteCall& call : calls) Settle(call.parameters);
  return calls;
}

void Settle(std::vector<tsql::Parameter>& parameters) {
  using Kind = tsql::Value::Kind;
  for (tsql::Parameter& parameter : parameters)
    if (parameter.value.kind == Kind::Text || parameter.value.kind == Kind::Bytes)
      parameter.value.text = parameter.storage;
}

std::vector<Declared> ReadDeclarations(std::string_view text) {
  std::vector<Declared> declared;
  while (!text.empty()) {
    size_t end = 0;
    for (int depth = 0; end < text.size() && (text[end] != ',' || depth > 0); ++end)
      depth += text[end] == '(' ? 1 : text[end] == ')' ? -1 : 0;
    std::string_view one = text.substr(0, end);
    text.remove_prefix(end < text.size() ? end + 1 : end);
    constexpr std::string_view kBlanks = " \t\r\n";
    one.remove_prefix(std::min(one.find_first_not_of(kBlanks), one.size()));
    const std::string_view lastWord = one.substr(one.find_last_of(kBlanks) + 1);
    declared.push_back(
        {std::string(one.substr(0, one.find_first_of(kBlanks))),
         lastWord == "output" || lastWord == "OUTPUT" || lastWord == "out" || lastWord == "OUT"});
  }
  return declared;
}

} // namespace tds
