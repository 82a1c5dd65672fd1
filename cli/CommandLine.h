// The command line of bomcall.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/SourceText.h"
#include "com/Text.h"

namespace bomcall {

// What the user typed wrongly, in words; bomcall ends with exit status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
  explicit UsageError(const std::wstring& text) : std::runtime_error(com::ToUtf8(text)) {}
};

enum class Action : uint8_t { Call, List, Check, Help, Version, Batch, Bom };
enum class Format : uint8_t { Text, Json, Csv, Vertical };

struct NamedText {
  std::wstring name;
  std::wstring value;
};

// A report about BOMs.
struct BomRequest {
  enum class Report : uint8_t { Tree, WhereUsed, Diff, Check, CostLines };
  enum class Picture : uint8_t { None, Dot, Html };

  Report report = Report::Tree;
  std::vector<std::wstring> names; // BOM numbers, or of WhereUsed an item's number
  int depth = 0;                   // of Tree: so many levels; 0 all
  std::wstring quantity = L"1";    // of Tree and CostLines: of the BOM's item
  bool top = false;                // of WhereUsed: only what is used nowhere itself
  Picture picture = Picture::None; // of Tree
};

struct CommandLine {
  Action action = Action::Call;
  std::wstring className;                 // of Call; of List: the one class to show, or empty
  std::wstring methodName;                // of Call
  std::vector<NamedText> values;          // of Call: name=value
  std::wstring helpTopic;                 // of Help: CLASS, CLASS.METHOD or "bom"; or empty
  std::wstring batchFile;                 // of Batch
  bool keepGoing = false;                 // of Batch
  BomRequest bom;                         // of Bom
  std::optional<std::wstring> descriptor; // --dsn
  std::wstring connection;                // --connection, or empty
  std::wstring language;                  // --lang, or empty
  Format format = Format::Text;
  std::vector<std::wstring> columns; // --columns, or empty
  std::vector<NamedText> failIf;     // --fail-if NAME=VALUE
  Encoding encoding = Encoding::Unicode;
  bool trace = false;
  bool host = true;
};

// Parses the arguments after the program's name. Throws UsageError.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

// The descriptor that a call gets: `language` is put in front, where the component finds it first.
std::wstring WithLanguage(const std::wstring& descriptor, const std::wstring& language);

} // namespace bomcall
