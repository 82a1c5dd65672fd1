#include "cli/Call.h"

#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "cli/Json.h"
#include "cli/Kinds.h"
#include "cli/Table.h"
#include "com/Object.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

bool IsDescriptor(const ParameterInfo& parameter) {
  return com::EqualsNoCase(parameter.name, L"sDsn") || com::EqualsNoCase(parameter.name, L"sToParse");
}

std::string ReadFile(const std::wstring& name) {
  if (name == L"-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::ifstream file(std::filesystem::path(name), std::ios::binary);
  if (!file) throw UsageError(L"cannot read " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

Json ParseJson(const std::wstring& name, const std::wstring& value) {
  const std::string text = value.starts_with(L'@') ? ReadFile(value.substr(1)) : com::ToUtf8(value);
  try {
    return ReadJson(text);
  } catch (const Json::exception& error) {
    throw UsageError(com::ToUtf8(name) + " is not JSON: " + error.what());
  } catch (const NestedTooDeep& error) {
    throw UsageError(com::ToUtf8(name) + " has " + error.what());
  }
}

Variant ObjectValue(const ParameterInfo& parameter, const std::wstring& value) {
  const Json json = ParseJson(parameter.name, value);
  if (json.is_null()) return Object();
  if (!json.is_object() && !json.is_array())
    throw UsageError(parameter.name + L" is an object: give {…}, […] or null");
  return FromJson(json);
}

// A text that is no JSON stands for itself.
Variant JsonOrText(const ParameterInfo& parameter, const std::wstring& value) {
  try {
    return FromJson(ReadJson(com::ToUtf8(value)));
  } catch (const Json::exception&) {
    return value;
  } catch (const NestedTooDeep& error) {
    throw UsageError(com::ToUtf8(parameter.name) + " has " + error.what());
  }
}

Variant Convert(const ParameterInfo& parameter, const std::wstring& value) {
  switch (parameter.type) {
  case VT_BSTR: return value;
  case VT_DISPATCH: return ObjectValue(parameter, value);
  case VT_VARIANT: return JsonOrText(parameter, value);
  default: break;
  }
  try {
    return Variant(value).As(parameter.type);
  } catch (const com::ComError&) {
    throw UsageError(parameter.name + L" does not take the value \"" + value + L"\"");
  }
}

const NamedText* FindValue(const CommandLine& line, const ParameterInfo& parameter) {
  for (const NamedText& given : line.values)
    if (com::EqualsNoCase(given.name, parameter.name)) return &given;
  return nullptr;
}

std::wstring DescriptorOf(const CommandLine& line) {
  if (line.descriptor) return *line.descriptor;
  const wchar_t* fromEnvironment = _wgetenv(L"BOMCALL_DSN");
  if (!fromEnvironment) throw UsageError("the method needs a connection: give --dsn, or set BOMCALL_DSN");
  return fromEnvironment;
}

Variant ArgumentFor(const CommandLine& line, const ParameterInfo& parameter) {
  if (const NamedText* given = FindValue(line, parameter)) return Convert(parameter, given->value);
  if (IsDescriptor(parameter)) return WithLanguage(DescriptorOf(line), line.language);
  // What a method only gives back need not be given to it. It is taken even where it is optional.
  if (parameter.inOut)
    return parameter.type == VT_DISPATCH ? Variant(Object()) : Variant().As(parameter.type);
  if (parameter.optional) return Variant::Missing();
  throw UsageError(L"the method needs " + parameter.name);
}

const MethodInfo& FindMethod(const ClassDescriptions& classes, const CommandLine& line) {
  const ClassInfo* info = FindClass(classes, line.className);
  if (!info) throw UsageError(L"there is no class " + line.className + L"; --list shows the classes");
  const MethodInfo* method = info->Find(line.methodName);
  if (!method)
    throw UsageError(info->name + L" has no method " + line.methodName + L"; --list " + info->name +
                     L" shows them");
  for (const NamedText& given : line.values) {
    bool known = false;
    for (const ParameterInfo& parameter : method->parameters)
      known = known || com::EqualsNoCase(parameter.name, given.name);
    if (!known) throw UsageError(L"there is no parameter " + given.name + L" in " + Describe(*method));
  }
  return *method;
}

Object NewObject(const CommandLine& line, const std::wstring& className) {
  const std::wstring progId = L"QorvaneMBomBill." + className;
  return line.host ? Object::Create(L"ErpStandIn.Host").Call(L"CreateObject", progId).AsObject()
                   : Object::Create(progId.c_str());
}

std::vector<std::wstring> TakeTrace(const Object& trace) {
  std::vector<std::wstring> events;
  const int32_t count = trace.Get(L"Count").AsLong();
  for (int32_t i = 1; i <= count; ++i) events.push_back(trace.Get(L"Item", i).AsText());
  return events;
}

// ---- showing

std::wstring Cell(const Variant& value) {
  if (value.IsNull()) return L"NULL";
  if (value.IsObject() || (value.type() & VT_ARRAY) != 0) return com::FromUtf8(ToJson(value).dump());
  return com::ToText(value);
}

std::wstring RecordsetTable(const Object& recordset) {
  const RecordsetReader reader(recordset);
  std::vector<Row> rows;
  for (; reader.HasRow(); reader.Next()) {
    Row row;
    for (size_t i = 0; i < reader.names().size(); ++i) row.push_back(Cell(reader.Value(i)));
    rows.push_back(std::move(row));
  }
  return reader.names().empty() ? L"(no rows)\n" : FormatTable(reader.names(), rows);
}

// A Vector of Dictionaries with the first one's keys as columns; any other list one item a line.
std::wstring VectorTable(const Object& vector) {
  const int32_t count = vector.Get(L"Count").AsLong();
  if (count == 0) return L"(no rows)\n";
  Row header;
  std::vector<Row> rows;
  for (int32_t i = 1; i <= count; ++i) {
    const Variant item = vector.Get(L"Item", i);
    if (!item.IsObject() || KindOf(item.AsObject()) != Kind::Dictionary) {
      rows.push_back({Cell(item)});
      continue;
    }
    const Object dictionary = item.AsObject();
    if (header.empty()) header = KeysOf(dictionary);
    Row row;
    for (const std::wstring& key : header) row.push_back(Cell(dictionary.Get(L"Value", key)));
    rows.push_back(std::move(row));
  }
  return FormatTable(header.empty() ? Row{L"item"} : header, rows);
}

std::wstring ShowValue(const std::wstring& name, const Variant& value) {
  if (value.IsObject()) {
    const Object object = value.AsObject();
    switch (KindOf(object)) {
    case Kind::Nothing: return name + L": Nothing\n";
    case Kind::Recordset: return name + L":\n" + RecordsetTable(object);
    case Kind::Vector: return name + L":\n" + VectorTable(object);
    case Kind::Dictionary: {
      std::vector<Row> rows;
      for (const std::wstring& key : KeysOf(object)) rows.push_back({key, Cell(object.Get(L"Value", key))});
      return name + L":\n" + FormatTable({L"key", L"value"}, rows);
    }
    case Kind::Other: break;
    }
  }
  return name + L": " + Cell(value) + L"\n";
}

std::wstring CodeText(HRESULT code) {
  wchar_t text[16];
  std::swprintf(text, std::size(text), L"0x%08lX", static_cast<unsigned long>(code));
  return text;
}

std::wstring ShowTrace(const std::vector<std::wstring>& trace) {
  std::vector<Row> rows;
  for (const std::wstring& event : trace) {
    const size_t tab = event.find(L'\t');
    rows.push_back({event.substr(0, tab), tab == std::wstring::npos ? L"" : event.substr(tab + 1)});
  }
  return FormatTable({L"event", L"detail"}, rows);
}

} // namespace

Outcome MakeCall(const ClassDescriptions& classes, const CommandLine& line) {
  const MethodInfo& method = FindMethod(classes, line);
  const ClassInfo& info = *FindClass(classes, line.className);
  std::vector<Variant> values;
  for (const ParameterInfo& parameter : method.parameters) values.push_back(ArgumentFor(line, parameter));

  Outcome outcome;
  try {
    Object trace;
    if (line.trace) {
      trace = Object::Create(L"ErpStandIn.Trace");
      trace.Call(L"Clear");
      trace.Call(L"Start");
    }
    try {
      const Object object = NewObject(line, info.name);
      std::vector<Variant> arguments;
      for (size_t i = 0; i < values.size(); ++i) {
        arguments.push_back(method.parameters[i].inOut ? Variant::Reference(values[i]) : values[i]);
      }
      outcome.result = object.CallWith(method.name.c_str(), arguments);
      outcome.hasResult = method.result != VT_EMPTY;
    } catch (const com::ComError& error) {
      outcome.error = error;
    }
    if (line.trace) {
      outcome.trace = TakeTrace(trace);
      trace.Call(L"Stop");
    }
  } catch (const com::ComError& error) {
    outcome.error = error;
  }
  for (size_t i = 0; i < values.size(); ++i)
    if (method.parameters[i].inOut) outcome.changed.push_back({method.parameters[i].name, values[i]});
  return outcome;
}

std::wstring ShowAsText(const Outcome& outcome) {
  std::wstring out;
  if (!outcome.trace.empty()) out += ShowTrace(outcome.trace) + L"\n";
  if (outcome.error) {
    out += L"Error " + CodeText(outcome.error->code()) + L"\nSource: " + outcome.error->source() + L"\n" +
           outcome.error->description() + L"\n";
  } else if (outcome.hasResult) {
    out += ShowValue(L"Result", outcome.result);
  }
  for (const NamedValue& changed : outcome.changed) out += ShowValue(changed.name, changed.value);
  return out;
}

std::wstring ShowAsJson(const Outcome& outcome) {
  Json json = Json::object();
  if (outcome.error) {
    json["error"] = {{"code", com::ToUtf8(CodeText(outcome.error->code()))},
                     {"source", com::ToUtf8(outcome.error->source())},
                     {"description", com::ToUtf8(outcome.error->description())}};
  } else {
    json["result"] = ToJson(outcome.result);
  }
  json["arguments"] = Json::object();
  for (const NamedValue& changed : outcome.changed)
    json["arguments"][com::ToUtf8(changed.name)] = ToJson(changed.value);
  if (!outcome.trace.empty()) {
    json["trace"] = Json::array();
    for (const std::wstring& event : outcome.trace) json["trace"].push_back(com::ToUtf8(event));
  }
  return com::FromUtf8(json.dump(2)) + L"\n";
}

std::wstring ShowClasses(const ClassDescriptions& classes, const std::wstring& className) {
  if (!className.empty() && !FindClass(classes, className))
    throw UsageError(L"there is no class " + className + L"; --list shows the classes");
  std::wstring out;
  for (const ClassInfo& info : classes) {
    if (!className.empty() && !com::EqualsNoCase(info.name, className)) continue;
    out += info.name + L"  " + info.description + L"\n";
    for (const MethodInfo& method : info.methods) out += L"  " + Describe(method) + L"\n";
  }
  return out;
}

} // namespace bomcall
