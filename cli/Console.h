// The console that bomcall talks to.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace bomcall {

// UTF-8 on the console while this lives. The user's own code page comes back with its end, and when the
// program is interrupted.
class Utf8Console {
 public:
  Utf8Console();
  ~Utf8Console();
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;
};

// Whether the stream is a terminal.
bool IsTerminal(std::FILE* stream);
// The columns of the terminal that the standard output is; 0 where it is none.
size_t TerminalWidth();
// Whether the standard output is a terminal that shows colours and NO_COLOR is not set. Makes it show them.
bool ShowsColours();

void Print(std::FILE* stream, std::string_view utf8);

} // namespace bomcall
