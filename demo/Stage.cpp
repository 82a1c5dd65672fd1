#include "demo/Stage.h"

#include <cstdio>

#include "cli/Json.h"
#include "cli/Kinds.h"
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

} // namespace

Stage::Stage(const std::wstring& database, bool trace)
    : database_(database), trace_(trace), connection_(Object::Create(L"ADODB.Connection")) {
  connection_.Call(L"Open", L"Provider=Embedded;Data Source=" + database_);
}

void Stage::Chapter(const std::wstring& title) const {
  Print(L"\n" + title + L"\n" + std::wstring(bomcall::DisplayWidth(title), L'=') + L"\n");
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

std::wstring Stage::Dsn(int32_t user, const wchar_t* language) const {
  return L"Provider=Embedded;Data Source=" + database_ + L";User ID=" + std::to_wstring(user) +
         L";Now=2026-03-31 09:15:00;Language=" + language;
}

void Stage::Save(const wchar_t* hook, const char* save, int32_t user, const wchar_t* language) const {
  const Object trace = Object::Create(L"ErpStandIn.Trace");
  const Object bom =
      Object::Create(L"ErpStandIn.Host").Call(L"CreateObject", L"QorvaneMBomBill.BomUpdate").AsObject();
  Print(L"\n  > BomUpdate." + std::wstring(hook) + L"  SaveVect=" + com::FromUtf8(save) + L"  user " +
        std::to_wstring(user) + L", " + language + L"\n");

  Variant saveArgument = bomcall::FromJson(bomcall::Json::parse(save));
  Variant message(L"");
  trace.Call(L"Clear");
  trace.Call(L"Start");
  const Variant result =
      bom.Call(hook, Dsn(user, language), Variant::Reference(saveArgument), Variant::Reference(message));
  trace.Call(L"Stop");

  Print(L"    Result: " + com::ToText(result) + L"\n");
  if (!message.AsText().empty()) Print(L"    ReturnMsg: " + message.AsText() + L"\n");
  const Object header = saveArgument.AsObject().Get(L"Item", 1).AsObject();
  if (header.Call(L"Exists", L"SaveRetCode").AsBool())
    Print(L"    SaveRetCode: " + com::ToText(header.Get(L"Value", L"SaveRetCode")) + L"\n");

  const int32_t count = trace_ ? trace.Get(L"Count").AsLong() : 0;
  for (int32_t i = 1; i <= count; ++i) {
    std::wstring event = trace.Get(L"Item", i).AsText();
    if (const size_t tab = event.find(L'\t'); tab != std::wstring::npos) event.replace(tab, 1, L"  ");
    Print(L"    | " + event + L"\n");
  }
}

} // namespace demo
