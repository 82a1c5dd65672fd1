// The arguments of a method, from what the user gave for them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/ClassDescriptions.h"
#include "cli/SourceText.h"
#include "com/Variant.h"

namespace bomcall {

// What is given for the parameter of that name: a text to be read, or a value.
struct GivenArgument {
  std::wstring name;
  std::wstring text;
  std::optional<com::Variant> value;
};

struct ArgumentSource {
  std::function<std::wstring()> descriptor; // for the parameter that is one, when it is not given
  Encoding encoding = Encoding::Unicode;    // of the files that are named
};

// Whether the parameter takes the connection descriptor.
bool IsDescriptor(const ParameterInfo& parameter);

// A value for every parameter, in their order. Throws UsageError, which names the argument and its place:
// for a name that the method has not, one given twice, a value that does not fit, JSON that does not parse, a
// file that cannot be read, and a parameter that is needed and has no value.
std::vector<com::Variant> ArgumentsFor(const MethodInfo& method, const std::vector<GivenArgument>& given,
                                       const ArgumentSource& source);

} // namespace bomcall
