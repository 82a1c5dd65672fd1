// How tsqlsh shows what a batch sends: results and messages to one stream, errors to another.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tsql/ShellTarget.h"
#include "tsql/tsql.h"

namespace tsql::shell {

enum class Form : uint8_t {
  Table, // aligned columns under their names, numbers to the right
  Tsv,   // a line of names, then a line a row; tab, line feed, carriage return and backslash as \t \n \r \\.
};

// A value as the shell writes it: NULL, exact decimals, yyyy-mm-dd hh:mm:ss.mmm, 0x…, the shortest text that
// reads back as the same float.
std::string FormatValue(const Value& value, const Type& type);

// The columns that a terminal needs for the text: East Asian characters take two.
size_t DisplayWidth(std::string_view text);

class Output : public ResultSink {
 public:
  // `target` tells whether NOCOUNT is on where a result ends.
  Output(const ShellTarget& target, Form form, std::ostream& out, std::ostream& errors)
      : target_(target), form_(form), out_(out), errors_(errors) {}
  void BeginRows(std::span<const Column> columns) override;
  void Row(std::span<const Value> values) override;
  void EndRows(int64_t count) override;
  void RowCount(int64_t count) override;
  void Message(const Error& info) override;
  void Failed(const Error& error) override;

 private:
  void WriteTable();
  void WriteTsvLine(const std::vector<std::string>& cells);

  const ShellTarget& target_;
  Form form_;
  std::ostream& out_;
  std::ostream& errors_;
  std::vector<Column> columns_;
  std::vector<std::string> names_;
  std::vector<std::vector<std::string>> rows_; // of a table, which needs all of them for its widths
};

} // namespace tsql::shell
