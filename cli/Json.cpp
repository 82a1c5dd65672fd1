#include "cli/Json.h"

#include <oleauto.h>

#include <limits>

#include "cli/Kinds.h"
#include "com/Elements.h"
#include "com/Object.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

constexpr int kDeepest = 500;

bool FitsLong(const Json& number) {
  const auto value = number.get<int64_t>();
  return value >= std::numeric_limits<int32_t>::min() && value <= std::numeric_limits<int32_t>::max();
}

Json ArrayToJson(const Variant& array) {
  const auto elements = com::ElementsOf(array);
  if (!elements) return "(array)";
  Json result = Json::array();
  for (const Variant& element : *elements) result.push_back(ToJson(element));
  return result;
}

Json ObjectToJson(const Object& object) {
  switch (KindOf(object)) {
  case Kind::Nothing: return nullptr;
  case Kind::Dictionary: {
    Json result = Json::object();
    for (const std::wstring& key : KeysOf(object))
      result[com::ToUtf8(key)] = ToJson(object.Get(L"Value", key));
    return result;
  }
  case Kind::Vector: {
    Json result = Json::array();
    const int32_t count = object.Get(L"Count").AsLong();
    for (int32_t i = 1; i <= count; ++i) result.push_back(ToJson(object.Get(L"Item", i)));
    return result;
  }
  case Kind::Recordset: {
    Json result = Json::array();
    const RecordsetReader reader(object);
    while (reader.HasRow()) {
      Json row = Json::object();
      for (size_t i = 0; i < reader.names().size(); ++i)
        row[com::ToUtf8(reader.names()[i])] = ToJson(reader.Value(i));
      result.push_back(std::move(row));
      reader.Next();
    }
    return result;
  }
  case Kind::Other: break;
  }
  return "(object)";
}

} // namespace

NestedTooDeep::NestedTooDeep()
    : std::runtime_error("more than " + std::to_string(kDeepest) + " objects and arrays inside each other") {}

Json ReadJson(const std::string& text) {
  return Json::parse(text, [](int depth, Json::parse_event_t /*event*/, const Json& /*parsed*/) {
    if (depth >= kDeepest) throw NestedTooDeep();
    return true;
  });
}

Variant FromJson(const Json& json) {
  switch (json.type()) {
  case Json::value_t::null: return Variant::Null();
  case Json::value_t::boolean: return json.get<bool>();
  case Json::value_t::string: return Variant(com::FromUtf8(json.get<std::string>()));
  case Json::value_t::number_integer:
  case Json::value_t::number_unsigned:
    return FitsLong(json) ? Variant(json.get<int32_t>()) : Variant(json.get<double>());
  case Json::value_t::number_float: return json.get<double>();
  case Json::value_t::array: {
    Object vector = Object::Create(L"ruvo10.Vector");
    for (const Json& item : json) vector.Call(L"Add", FromJson(item));
    return vector;
  }
  case Json::value_t::object: {
    Object dictionary = Object::Create(L"ruvo10.Dictionary");
    for (const auto& [key, value] : json.items())
      dictionary.Put(L"Value", com::FromUtf8(key), FromJson(value));
    return dictionary;
  }
  default: return {};
  }
}

Json ToJson(const Variant& value) {
  switch (value.type()) {
  case VT_EMPTY:
  case VT_NULL: return nullptr;
  case VT_BOOL: return value.AsBool();
  case VT_UI1:
  case VT_I2:
  case VT_I4: return value.AsLong();
  case VT_DISPATCH:
  case VT_UNKNOWN: return ObjectToJson(value.AsObject());
  case VT_R4:
  case VT_R8: return value.AsDouble();
  // The digits of an exact number are a JSON number as they stand.
  case VT_DECIMAL:
  case VT_CY:
  case VT_I8: return Json::parse(com::ToUtf8(com::ToText(value)));
  case VT_ARRAY | VT_VARIANT: return ArrayToJson(value);
  default: return com::ToUtf8(com::ToText(value));
  }
}

} // namespace bomcall
