#include "cli/Show.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <span>

#include "cli/Json.h"
#include "cli/JsonWriter.h"
#include "cli/Kinds.h"
#include "cli/Table.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Variant;

std::wstring ErrorCode(HRESULT code) {
  wchar_t text[16];
  std::swprintf(text, std::size(text), L"0x%08lX", static_cast<unsigned long>(code));
  return text;
}

std::wstring ShowTrace(const std::vector<std::wstring>& trace, const Style& style) {
  std::vector<Row> rows;
  for (const std::wstring& event : trace) {
    const size_t tab = event.find(L'\t');
    rows.push_back({event.substr(0, tab), tab == std::wstring::npos ? L"" : event.substr(tab + 1)});
  }
  // Statements are shown whole, whatever the terminal's width.
  return FormatTable({L"event", L"detail"}, rows, 0, style.coloured);
}

std::wstring ShowTitled(const std::wstring& name, const Variant& value, const Style& style) {
  if (value.IsObject() && KindOf(value.AsObject()) == Kind::Nothing) return name + L": Nothing\n";
  const auto grid = GridOf(value);
  if (!grid) return name + L": " + ReadableText(CellOf(value)) + L"\n";
  const bool isEmptyList = grid->rowCount() == 0 && KindOf(value.AsObject()) == Kind::Vector;
  return name + L":\n" + (isEmptyList ? L"(no rows)\n" : TableOf(*grid, style.width, style.coloured));
}

// The outcome's table: the result if it is one, else the first changed argument that is. Else its single
// values, as one row.
Grid MainGrid(const Outcome& outcome) {
  if (outcome.hasResult)
    if (auto grid = GridOf(outcome.result)) return *grid;
  for (const NamedValue& changed : outcome.changed)
    if (auto grid = GridOf(changed.value)) return *grid;
  std::vector<std::wstring> names;
  std::vector<Cell> cells;
  const auto add = [&](const std::wstring& name, const Variant& value) {
    names.push_back(name);
    cells.push_back(CellOf(value));
  };
  if (outcome.hasResult) add(L"Result", outcome.result);
  for (const NamedValue& changed : outcome.changed) add(changed.name, changed.value);
  Grid single(std::move(names));
  single.AddRow(cells);
  return single;
}

void WriteGrid(JsonWriter& writer, const Grid& grid) {
  writer.BeginArray();
  for (size_t i = 0; i < grid.rowCount(); ++i) {
    const std::span<const Cell> row = grid.Row(i);
    writer.BeginObject();
    for (size_t j = 0; j < row.size(); ++j) {
      writer.Key(grid.columns()[j]);
      WriteCell(writer, row[j]);
    }
    writer.EndObject();
  }
  writer.EndArray();
}

void WriteOutcome(JsonWriter& writer, const Outcome& outcome) {
  if (outcome.error) {
    writer.Key(L"error");
    writer.BeginObject();
    writer.Key(L"code");
    writer.Text(ErrorCode(outcome.error->code()));
    writer.Key(L"source");
    writer.Text(outcome.error->source());
    writer.Key(L"description");
    writer.Text(outcome.error->description());
    writer.EndObject();
  } else {
    writer.Key(L"result");
    WriteJson(writer, outcome.result);
  }
  writer.Key(L"arguments");
  writer.BeginObject();
  for (const NamedValue& changed : outcome.changed) {
    writer.Key(changed.name);
    WriteJson(writer, changed.value);
  }
  writer.EndObject();
  if (!outcome.trace.empty()) {
    writer.Key(L"trace");
    writer.BeginArray();
    for (const std::wstring& event : outcome.trace) writer.Text(event);
    writer.EndArray();
  }
}

const ClassInfo& ClassNamed(const ClassDescriptions& classes, const std::wstring& name) {
  const ClassInfo* info = FindClass(classes, name);
  if (!info) throw UsageError(L"there is no class " + name + L"; --list shows the classes");
  return *info;
}

} // namespace

std::wstring ShowError(const com::ComError& error, bool coloured) {
  const std::wstring title = L"Error " + ErrorCode(error.code());
  return (coloured ? L"\x1b[31m" + title + L"\x1b[0m" : title) + L"\nSource: " + error.source() + L"\n" +
         error.description() + L"\n";
}

std::wstring ShowAsText(const Outcome& outcome, const Style& style) {
  std::wstring out;
  if (!outcome.trace.empty()) out += ShowTrace(outcome.trace, style) + L"\n";
  if (outcome.error)
    out += ShowError(*outcome.error, style.coloured);
  else if (outcome.hasResult)
    out += ShowTitled(L"Result", outcome.result, style);
  for (const NamedValue& changed : outcome.changed) out += ShowTitled(changed.name, changed.value, style);
  return out;
}

std::wstring ShowAsJson(const Outcome& outcome) {
  JsonWriter writer(true);
  writer.BeginObject();
  WriteOutcome(writer, outcome);
  writer.EndObject();
  return com::FromUtf8(writer.text()) + L"\n";
}

std::wstring ShowAsJsonLine(const Outcome& outcome, size_t line, const std::wstring& call) {
  JsonWriter writer(false);
  writer.BeginObject();
  writer.Key(L"line");
  writer.Literal(std::to_wstring(line));
  writer.Key(L"call");
  writer.Text(call);
  WriteOutcome(writer, outcome);
  writer.EndObject();
  return com::FromUtf8(writer.text()) + L"\n";
}

std::wstring ShowGrid(const Grid& grid, Format format, const Style& style) {
  switch (format) {
  case Format::Csv: return CsvOf(grid);
  case Format::Vertical: return VerticalOf(grid);
  case Format::Json: {
    JsonWriter writer(true);
    WriteGrid(writer, grid);
    return com::FromUtf8(writer.text()) + L"\n";
  }
  case Format::Text: break;
  }
  return TableOf(grid, style.width, style.coloured);
}

std::wstring ShowOutcome(const Outcome& outcome, const CommandLine& line, const Style& style) {
  const bool isWhole = line.columns.empty() && (line.format == Format::Text || line.format == Format::Json);
  if (isWhole || outcome.error)
    return line.format == Format::Json ? ShowAsJson(outcome) : ShowAsText(outcome, style);
  const Grid grid = MainGrid(outcome);
  const std::wstring shown =
      ShowGrid(line.columns.empty() ? grid : WithColumns(grid, line.columns), line.format, style);
  // In the other forms a trace would not be told from the rows.
  return line.format == Format::Text && !outcome.trace.empty()
             ? ShowTrace(outcome.trace, style) + L"\n" + shown
             : shown;
}

std::optional<NamedText> FirstHolding(const std::vector<NamedText>& conditions, const Outcome& outcome) {
  for (const NamedText& condition : conditions) {
    const Variant* value = nullptr;
    if (com::EqualsNoCase(condition.name, L"Result") && outcome.hasResult) value = &outcome.result;
    for (const NamedValue& changed : outcome.changed)
      if (com::EqualsNoCase(changed.name, condition.name)) value = &changed.value;
    if (value && com::EqualsNoCase(ReadableText(CellOf(*value)), condition.value)) return condition;
  }
  return std::nullopt;
}

std::wstring ShowClasses(const ClassDescriptions& classes, const std::wstring& className) {
  std::wstring out;
  const auto show = [&](const ClassInfo& info) {
    out += info.name + L"  " + info.description + L"\n";
    for (const MethodInfo& method : info.methods) out += L"  " + Describe(method) + L"\n";
  };
  if (className.empty())
    std::ranges::for_each(classes, show);
  else
    show(ClassNamed(classes, className));
  return out;
}

std::wstring ShowHelp(const ClassDescriptions& classes, const std::wstring& topic) {
  const size_t dot = topic.find(L'.');
  if (dot == std::wstring::npos) return ShowClasses(classes, topic);
  const ClassInfo* info = nullptr;
  const MethodInfo& method = FindMethod(classes, topic.substr(0, dot), topic.substr(dot + 1), info);
  std::wstring out = info->name + L"." + Describe(method) + L"\n";
  if (!method.description.empty()) out += L"\n" + method.description + L"\n";
  if (!method.parameters.empty()) out += L"\n";
  for (size_t i = 0; i < method.parameters.size(); ++i)
    out += L"  " + std::to_wstring(i + 1) + L"  " + Describe(method.parameters[i]) + L"\n";
  return out;
}

} // namespace bomcall
