// RemoteCall: a call of a procedure, as a client's message has it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/server/tds/Bytes.h"
#include "tsql/tsql.h"

namespace tds {

struct RemoteCall {
  std::string procedure;
  std::vector<tsql::Parameter> parameters;
};

// The calls of a message, which stand behind its headers. Throws Malformed.
std::vector<RemoteCall> ReadCalls(ByteReader in);

// Lets each value have the text of its own parameter, wherever that has been moved to.
void Settle(std::vector<tsql::Parameter>& parameters);

// What a text such as "@a int, @b varchar(10) OUTPUT" declares: names, and which of them are outputs.
struct Declared {
  std::string name;
  bool output;
};
std::vector<Declared> ReadDeclarations(std::string_view text);

} // namespace tds
