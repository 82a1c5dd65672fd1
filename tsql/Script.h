// T-SQL scripts: batches of text, each ended by a line that holds only GO. GO is a command of the shells; the
// engine never sees it.
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

// Reads a script batch by batch, as its lines come in. A line "GO" or "GO n", in upper or lower case, ends a
// batch, unless it stands within a block comment or a text. Batches of blanks alone and a byte order mark are
// left out.
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
  int comments_ = 0; // open block comments, which nest
  char quote_ = 0;   // the character that ends the open text or name; 0 for none
};

} // namespace tsql
