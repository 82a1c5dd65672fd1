#include "demo/Stage.h"

#include <cstdio>
#include <utility>

#include "cli/Kinds.h"
#include "cli/Show.h"
#include "cli/Table.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace demo {
namespace {

using com::Object;
using com::Variant;

void Print(const std::wstring& text) {
  const std::string utf8 = com::ToUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
}

std::wstring Indented(const std::wstring& text) {
  std::wstring out;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find(L'\n', start);
    out += L"    " + text.substr(start, end - start) + L"\n";
    if (end == std::wstring::npos) break;
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
    : source_(source), trace_(trace), connection_(Object::Create(L"ADODB.Connection")),
      classes_(bomcall::ReadClassDescriptions()) {
  connection_.Call(L"Open", source_);
}

void Stage::Chapter(const std::wstring& title) {
  const std::wstring heading = std::to_wstring(++chapters_) + L". " + title;
  Print(L"\n" + heading + L"\n" + std::wstring(bomcall::DisplayWidth(heading), L'=') + L"\n");
}

void Stage::Say(const std::wstring& text) const {
  Print(L"\n" + text + L"\n");
}

void Stage::Execute(const std::wstring& sql) const {
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
  Print(L"\n  " + caption + L"\n" + Indented(bomcall::FormatTable(reader.names(), rows)));
}

std::wstring Stage::Value(const std::wstring& sql) const {
  return Cell(bomcall::RecordsetReader(connection_.Call(L"Execute", sql).AsObject()).Value(0));
}

bomcall::Outcome Stage::Make(const std::wstring& method, const std::vector<Argument>& arguments, int32_t user,
                             const wchar_t* language) const {
  const size_t dot = method.find(L'.');
  bomcall::CommandLine line;
  line.className = method.substr(0, dot);
  line.methodName = method.substr(dot + 1);
  line.values = arguments;
  line.descriptor = source_ + L";User ID=" + std::to_wstring(user) + L";Now=2026-03-31 09:15:00";
  line.language = language;
  line.trace = trace_;

  std::wstring call = L"\n  > " + method;
  for (const Argument& argument : arguments) call += L"  " + argument.name + L"=" + argument.value;
  Print(call + L"  user " + std::to_wstring(user) + L", " + language + L"\n");
  return bomcall::MakeCall(classes_, line);
}

void Stage::Call(const std::wstring& method, const std::vector<Argument>& arguments, int32_t user,
                 const wchar_t* language) const {
  bomcall::Outcome outcome = Make(method, arguments, user, language);
  const std::vector<std::wstring> trace = std::exchange(outcome.trace, {});
  Print(Indented(ShowAsText(outcome)));
  PrintTrace(trace);
}

void Stage::List(const std::wstring& method, const std::vector<Argument>& arguments,
                 const std::vector<std::wstring>& columns, int32_t user, const wchar_t* language) const {
  const bomcall::Outcome outcome = Make(method, arguments, user, language);
  if (outcome.error) {
    Print(Indented(ShowAsText(outcome)));
  } else {
    const Object vector = outcome.result.AsObject();
    std::vector<bomcall::Row> rows;
    for (int32_t i = 1; i <= vector.Get(L"UBound").AsLong(); ++i) {
      const Object item = vector.Get(L"Item", i).AsObject();
      bomcall::Row& row = rows.emplace_back();
      for (const std::wstring& column : columns) row.push_back(Cell(item.Get(L"Value", column)));
    }
    Print(Indented(bomcall::FormatTable(columns, rows)));
  }
  PrintTrace(outcome.trace);
}

void Stage::Save(const std::wstring& hook, const wchar_t* save, int32_t user, const wchar_t* language) const {
  bomcall::Outcome outcome = Make(hook, {{L"SaveVect", save}}, user, language);
  const Object header = outcome.changed[0].value.AsObject().Get(L"Item", 1).AsObject();
  const Variant message = outcome.changed[1].value;
  outcome.changed.clear();
  if (!message.AsText().empty()) outcome.changed.push_back({L"ReturnMsg", message});
  if (header.Call(L"Exists", L"SaveRetCode").AsBool())
    outcome.changed.push_back({L"SaveRetCode", header.Get(L"Value", L"SaveRetCode")});
  const std::vector<std::wstring> trace = std::exchange(outcome.trace, {});
  Print(Indented(ShowAsText(outcome)));
  PrintTrace(trace);
}

} // namespace demo
