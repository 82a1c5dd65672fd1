// T-SQL scripts: batches that lines holding only GO end. The server never sees GO; shells do.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

namespace tsql {

struct ScriptBatch {
  std::string text;  // UTF-8, lines ending in LF
  int firstLine = 1; // within the script
  int count = 1;     // how often it is to run: GO n
};

// Reads a script batch by batch, as its lines come in. A line "GO" or "GO n", in any case, ends a batch,
// unless a block comment or a text is open there. Batches of blanks alone are left out, and so is a byte
// order mark.
class ScriptReader {
 public:
  // `beforeLine`, if any, is called before each line is read, with the line's number within its batch.
  explicit ScriptReader(std::istream& in, std::function<void(int line)> beforeLine = {});
  std::optional<ScriptBatch> Next(); // nullopt at the end

 private:
  void Scan(const std::string& line);

  std::istream& in_;
  std::function<void(int line)> beforeLine_;
  int line_ = 0;
  int comments_ = 0; // block comments open, they nest
  char quote_ = 0;   // what closes the text or name that is open
};

} // namespace tsql
