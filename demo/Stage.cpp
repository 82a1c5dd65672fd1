#include "demo/Stage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "cli/CommandLine.h"
#include "cli/Console.h"
#include "cli/Kinds.h"
#include "cli/Show.h"
#include "cli/Table.h"
#include "com/Text.h"
#include "com/ValueText.h"
#include "demo/Paragraph.h"

namespace demo {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kIndent[] = L"    ";
constexpr size_t kIndentWidth = std::size(kIndent) - 1;

void Print(const std::wstring& text) {
  bomcall::Print(stdout, com::ToUtf8(text));
}

// What every terminal has; more where the terminal, or COLUMNS, has more.
size_t LineWidth() {
  constexpr size_t kLeast = 100;
  const wchar_t* given = _wgetenv(L"COLUMNS");
  const size_t columns = given ? std::wcstoul(given, nullptr, 10) : 0;
  return std::max({kLeast, columns, bomcall::TerminalWidth()});
}

std::wstring Indented(const std::wstring& text, size_t width) {
  std::wstring out;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find(L'\n', start), text.size());
    out += Paragraph(text.substr(start, end - start), width, kIndent, std::wstring(kIndent) + L"    ");
    start = end + 1;
  }
  return out;
}

std::wstring Cell(const Variant& value) {
  return value.IsNull() ? L"NULL" : com::ToText(value);
}

void PrintTrace(const std::vector<std::wstring>& trace) {
  for (std::wstring event : trace) {
    if (const size_t tab = event.find(L'\t'); tab != std::wstring::npos) event.replace(tab, 1, L"  ");
    Print(L"    | " + event + L"\n");
  }
}

} // namespace

Stage::Stage(const std::wstring& source, bool trace)
    : source_(source), trace_(trace), width_(LineWidth()), connection_(Object::Create(L"ADODB.Connection")),
      classes_(bomcall::ReadClassDescriptions()) {
  connection_.Call(L"Open", source_);
}

void Stage::Story(size_t number) {
  story_ = number;
  chapters_ = 0;
}

void Stage::Chapter(const std::wstring& title, const std::vector<const wchar_t*>& codes) {
  const std::wstring heading = std::to_wstring(story_) + L"." + std::to_wstring(++chapters_) + L". " + title;
  Print(L"\n" + heading + L"\n" + std::wstring(bomcall::DisplayWidth(heading), L'=') + L"\n");
  if (!codes.empty()) Print(L"\n");
  for (const wchar_t* code : codes) Print(Paragraph(code, width_, L"  | ", L"  |     "));
}

void Stage::Say(const std::wstring& text) const {
  Print(L"\n" + Paragraph(text, width_, L"", L""));
}

void Stage::Execute(const std::wstring& sql) const {
  Print(L"\n" + Command({L"demo/sql", sql}, width_));
  connection_.Call(L"Execute", sql);
}

void Stage::Show(const std::wstring& caption, const std::wstring& sql) const {
  const bomcall::RecordsetReader reader(connection_.Call(L"Execute", sql).AsObject());
  std::vector<bomcall::Row> rows;
  for (; reader.HasRow(); reader.Next()) {
    bomcall::Row row;
    for (size_t i = 0; i < reader.names().size(); ++i) row.push_back(Cell(reader.Value(i)));
    rows.push_back(std::move(row));
  }
  Print(L"\n" + Paragraph(caption, width_, L"  ", L"  ") +
        Indented(bomcall::FormatTable(reader.names(), rows, width_ - kIndentWidth), width_));
}

std::wstring Stage::Value(const std::wstring& sql) const {
  return Cell(bomcall::RecordsetReader(connection_.Call(L"Execute", sql).AsObject()).Value(0));
}

std::vector<std::wstring> Stage::Words(const std::wstring& method, const std::vector<Argument>& arguments,
                                       const User& user, const wchar_t* language,
                                       const std::vector<std::wstring>& options) {
  std::vector<std::wstring> words{L"-c", user.name, L"--lang", language};
  words.insert(words.end(), options.begin(), options.end());
  words.push_back(method);
  for (const Argument& argument : arguments) words.push_back(argument.name + L"=" + argument.value);
  return words;
}

void Stage::Make(const std::vector<std::wstring>& words, const User& user, Part part) const {
  bomcall::CommandLine line = bomcall::ParseCommandLine(words);
  line.descriptor = source_ + L";User ID=" + std::to_wstring(user.id) + L";Now=2026-03-31 09:15:00";
  line.trace = trace_;
  bomcall::Outcome outcome = bomcall::MakeCall(classes_, line);
  const std::vector<std::wstring> trace = std::exchange(outcome.trace, {});
  if (part == Part::Result) outcome.changed.clear();
  Print(Indented(ShowOutcome(outcome, line, {.width = width_ - kIndentWidth}), width_));
  if (part == Part::Result) Print(std::wstring(kIndent) + L"…\n");
  PrintTrace(trace);
}

void Stage::Call(const std::wstring& method, const std::vector<Argument>& arguments, const User& user,
                 const wchar_t* language, const std::vector<std::wstring>& options, Part part) const {
  const std::vector<std::wstring> words = Words(method, arguments, user, language, options);
  std::vector<std::wstring> command{L"demo/bomcall"};
  command.insert(command.end(), words.begin(), words.end());
  Print(L"\n" + Command(command, width_));
  Make(words, user, part);
}

void Stage::Failing(const std::wstring& method, const std::vector<Argument>& arguments, const User& user,
                    const wchar_t* language) const {
  std::wstring call = L"> " + method;
  for (const Argument& argument : arguments) call += L" " + argument.name + L"=" + argument.value;
  Print(L"\n" + Paragraph(call, width_, L"  ", kIndent));
  Make(Words(method, arguments, user, language, {}), user, Part::All);
}

void Stage::Save(const std::wstring& hook, const wchar_t* save, const User& user,
                 const wchar_t* language) const {
  Call(hook, {{L"SaveVect", save}}, user, language);
}

} // namespace demo
