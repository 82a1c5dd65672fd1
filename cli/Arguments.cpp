#include "cli/Arguments.h"

#include <algorithm>
#include <array>

#include "cli/Cell.h"
#include "cli/CommandLine.h"
#include "cli/Json.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kObjectForms[] = L"give {…}, […] or null";

// "argument 2, SaveVect"
std::wstring NameOf(const MethodInfo& method, const ParameterInfo& parameter) {
  return L"argument " + std::to_wstring(&parameter - method.parameters.data() + 1) + L", " + parameter.name;
}

Variant ObjectFromText(const std::wstring& name, const std::wstring& text, Encoding encoding) {
  const bool isFile = text.starts_with(L'@');
  const std::wstring where = isFile && text != L"@-" ? name + L", " + text.substr(1) : name;
  std::string json;
  try {
    json = isFile ? ReadSourceText(text.substr(1), encoding) : com::ToUtf8(text);
  } catch (const UsageError& error) {
    throw UsageError(com::ToUtf8(name) + ": " + error.what());
  }
  try {
    return ReadJson(json);
  } catch (const JsonError& error) {
    const bool isSyntax = error.reason() == JsonError::Reason::Syntax;
    throw UsageError(com::ToUtf8(where) + (isSyntax ? " is not JSON: " : ": ") + error.what());
  }
}

// A text that is no JSON stands for itself.
Variant JsonOrText(const std::wstring& name, const std::wstring& text) {
  try {
    return ReadJson(com::ToUtf8(text));
  } catch (const JsonError& error) {
    if (error.reason() == JsonError::Reason::Syntax) return text;
    throw UsageError(com::ToUtf8(name) + ": " + error.what() + "; in quotes it is a text");
  }
}

Variant CheckedObject(const std::wstring& name, const Variant& value) {
  if (value.IsNull()) return Object();
  if (!value.IsObject()) throw UsageError(name + L", is an object: " + kObjectForms);
  return value;
}

bool IsWholeNumber(const std::wstring& text) {
  const size_t first = text.starts_with(L'-') || text.starts_with(L'+') ? 1 : 0;
  return text.size() > first && text.find_first_not_of(L"0123456789", first) == std::wstring::npos;
}

// Automation takes any number for a boolean, one that no value can be included.
bool IsBoolean(const std::wstring& text) {
  return std::ranges::any_of(std::array{L"True", L"False", L"1", L"0", L"-1"},
                             [&](const wchar_t* word) { return com::EqualsNoCase(text, word); });
}

Variant PlainValue(const std::wstring& name, VARTYPE type, const std::wstring& text) {
  const bool isWhole = type == VT_I2 || type == VT_I4 || type == VT_INT;
  try {
    // Automation would round a fraction in silence.
    if (isWhole ? IsWholeNumber(text) : type != VT_BOOL || IsBoolean(text)) return Variant(text).As(type);
  } catch (const com::ComError&) {
  }
  const wchar_t* wanted = isWhole           ? L", which is no whole number of its size"
                          : type == VT_BOOL ? L": give True or False"
                                            : L"";
  throw UsageError(name + L", does not take the value \"" + text + L"\"" + wanted);
}

Variant Converted(const std::wstring& name, const ParameterInfo& parameter, const GivenArgument& given,
                  Encoding encoding) {
  switch (parameter.type) {
  case VT_DISPATCH:
    return CheckedObject(name, given.value ? *given.value : ObjectFromText(name, given.text, encoding));
  case VT_VARIANT: return given.value ? *given.value : JsonOrText(name, given.text);
  default: break;
  }
  if (given.value && (given.value->IsObject() || given.value->IsNull()))
    throw UsageError(name + L", takes a plain value, neither an object nor null");
  const std::wstring text = given.value ? CellOf(*given.value).text : given.text;
  return parameter.type == VT_BSTR ? Variant(text) : PlainValue(name, parameter.type, text);
}

Variant ValueWithoutGiven(const std::wstring& name, const ParameterInfo& parameter,
                          const ArgumentSource& source) {
  if (IsDescriptor(parameter)) return source.descriptor();
  const bool isObject = parameter.type == VT_DISPATCH;
  // A text or number that a method only gives back need not be given to it. It is taken even where it is
  // optional.
  if (parameter.inOut && !isObject) return Variant().As(parameter.type);
  if (parameter.inOut && parameter.optional) return Object();
  if (parameter.optional) return Variant::Missing();
  throw UsageError(L"the method needs " + name +
                   (isObject ? std::wstring(L", an object: ") + kObjectForms : L""));
}

void CheckNames(const MethodInfo& method, const std::vector<GivenArgument>& given) {
  for (const GivenArgument& argument : given) {
    bool known = false;
    for (const ParameterInfo& parameter : method.parameters)
      known = known || com::EqualsNoCase(parameter.name, argument.name);
    if (!known) throw UsageError(L"there is no parameter " + argument.name + L" in " + Describe(method));
    for (const GivenArgument& other : given)
      if (&other != &argument && com::EqualsNoCase(other.name, argument.name))
        throw UsageError(argument.name + L" is given twice");
  }
}

} // namespace

bool IsDescriptor(const ParameterInfo& parameter) {
  return com::EqualsNoCase(parameter.name, L"sDsn") || com::EqualsNoCase(parameter.name, L"sToParse");
}

std::vector<Variant> ArgumentsFor(const MethodInfo& method, const std::vector<GivenArgument>& given,
                                  const ArgumentSource& source) {
  CheckNames(method, given);
  std::vector<Variant> values;
  for (const ParameterInfo& parameter : method.parameters) {
    const std::wstring name = NameOf(method, parameter);
    const GivenArgument* found = nullptr;
    for (const GivenArgument& argument : given)
      if (com::EqualsNoCase(argument.name, parameter.name)) found = &argument;
    values.push_back(found ? Converted(name, parameter, *found, source.encoding)
                           : ValueWithoutGiven(name, parameter, source));
  }
  return values;
}

} // namespace bomcall
