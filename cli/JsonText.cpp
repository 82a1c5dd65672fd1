#include <oleauto.h>

#include "cli/Cell.h"
#include "cli/Grid.h"
#include "cli/Json.h"
#include "cli/JsonWriter.h"
#include "cli/Kinds.h"
#include "com/Elements.h"
#include "com/Object.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

// Objects may hold each other in a ring.
constexpr int kDeepestShown = 500;

void WriteValue(JsonWriter& writer, const Variant& value, int depth);

void WriteObject(JsonWriter& writer, const Object& object, int depth) {
  switch (KindOf(object)) {
  case Kind::Nothing: writer.Literal(L"null"); return;
  case Kind::Dictionary:
    writer.BeginObject();
    for (const std::wstring& key : KeysOf(object)) {
      writer.Key(key);
      WriteValue(writer, object.Get(L"Value", key), depth);
    }
    writer.EndObject();
    return;
  case Kind::Vector: {
    writer.BeginArray();
    const int32_t count = object.Get(L"Count").AsLong();
    for (int32_t i = 1; i <= count; ++i) WriteValue(writer, object.Get(L"Item", i), depth);
    writer.EndArray();
    return;
  }
  case Kind::Recordset: {
    writer.BeginArray();
    const RecordsetReader reader(object);
    const std::vector<std::wstring> names = DistinctNames(reader.names());
    for (; reader.HasRow(); reader.Next()) {
      writer.BeginObject();
      for (size_t i = 0; i < names.size(); ++i) {
        writer.Key(names[i]);
        WriteValue(writer, reader.Value(i), depth);
      }
      writer.EndObject();
    }
    writer.EndArray();
    return;
  }
  case Kind::Other: break;
  }
  writer.Text(L"(object)");
}

void WriteValue(JsonWriter& writer, const Variant& value, int depth) {
  if (++depth > kDeepestShown) {
    writer.Text(L"(deeper)");
  } else if (value.IsEmpty()) {
    writer.Literal(L"null");
  } else if (value.IsObject()) {
    WriteObject(writer, value.AsObject(), depth);
  } else if (const auto elements = HoldsBytes(value) ? std::nullopt : com::ElementsOf(value)) {
    writer.BeginArray();
    for (const Variant& element : *elements) WriteValue(writer, element, depth);
    writer.EndArray();
  } else {
    WriteCell(writer, PlainCell(value));
  }
}

std::string Written(const Variant& value, bool indented) {
  JsonWriter writer(indented);
  WriteJson(writer, value);
  return writer.text();
}

} // namespace

void WriteJson(JsonWriter& writer, const Variant& value) {
  WriteValue(writer, value, 0);
}

std::string JsonText(const Variant& value) {
  return Written(value, true);
}

std::string JsonLine(const Variant& value) {
  return Written(value, false);
}

} // namespace bomcall
