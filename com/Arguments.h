// Arguments: the arguments of one dispatch call, sorted into the order of the member's parameters, and the
// way back for in/out ones.
#pragma once

#include <oaidl.h>

#include <array>
#include <type_traits>
#include <utility>
#include <vector>

#include "com/Variant.h"

namespace com {

// A parameter as its table names it: required, or optional with the value it has when omitted.
struct Parameter {
  Parameter(const wchar_t* parameterName) : name(parameterName) {} // NOLINT(google-explicit-constructor)
  Parameter(const wchar_t* parameterName, Variant defaultValue)
      : name(parameterName), optional(true), fallback(std::move(defaultValue)) {}

  const wchar_t* name;
  bool optional = false;
  Variant fallback; // Missing: an optional parameter without a value
  VARTYPE type = VT_EMPTY;
  bool inOut = false;
};

inline bool IsOmitted(const VARIANTARG& argument) {
  return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND;
}
// Whether the argument is the value itself.
inline bool IsValue(const VARIANTARG& argument) {
  return (argument.vt & VT_BYREF) == 0 && !IsOmitted(argument);
}
// Whether the named argument `name` is the new value of a property that is put.
inline bool IsNewValue(DISPID name, WORD flags) {
  return name == DISPID_PROPERTYPUT && (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
}
// Whether a call gives exactly `count` arguments, each in its place: the last one first, a property's new
// value as the last one.
inline bool InPlace(const DISPPARAMS& params, WORD flags, size_t count) {
  return params.cArgs == count &&
         (params.cNamedArgs == 0 ||
          (params.cNamedArgs == 1 && IsNewValue(params.rgdispidNamedArgs[0], flags)));
}

// The caller's own value, without a copy.
inline const Variant& AsVariant(const VARIANTARG& value) {
  // A Variant is a VARIANT and nothing else.
  static_assert(sizeof(Variant) == sizeof(VARIANTARG) && std::is_standard_layout_v<Variant>);
  return reinterpret_cast<const Variant&>(value);
}

// An argument that does not fit its parameter.
struct ArgumentError {
  HRESULT hr;
  size_t parameter;
};

// The arguments of one call in the order of the parameters; null where one was omitted.
class Arguments {
 public:
  static constexpr size_t kMost = 16;

  // No more than kMost parameters: the tables see to that. Bind comes before anything else.
  explicit Arguments(const std::vector<Parameter>& parameters) : parameters_(parameters) {}
  // Sorts out positional and named arguments. What does not fit gives DISP_E_…, with its position.
  HRESULT Bind(const DISPPARAMS& params, WORD flags, UINT* badArgument);

  Variant In(size_t i) const;
  // The caller's own value of parameter i, without a copy; null when it is a reference or was omitted.
  const Variant* Borrowed(size_t i) const {
    const VARIANTARG* given = given_[i];
    return given && IsValue(*given) ? &AsVariant(*given) : nullptr;
  }
  // The reference that parameter i is written back to; null when it was passed by value or omitted.
  VARIANTARG* Out(size_t i) const;
  const std::vector<Parameter>& parameters() const { return parameters_; }
  // The position in DISPPARAMS of the argument for parameter i; 0 when it was omitted.
  UINT Position(size_t i) const { return given_[i] ? static_cast<UINT>(given_[i] - first_) : 0; }

 private:
  HRESULT Sort(const DISPPARAMS& params, WORD flags, UINT* badArgument);

  const std::vector<Parameter>& parameters_;
  VARIANTARG* first_ = nullptr;
  std::array<VARIANTARG*, kMost> given_; // as many as there are parameters
};

// Whether a value of `type` can be written through `reference`: to a variant, or to a variable of that very
// type.
bool CanWriteBack(const VARIANTARG& reference, VARTYPE type);
// Writes `value` to the variable that `reference` (VT_BYREF) names, converted to the variable's type.
void WriteBack(const VARIANTARG& reference, const Variant& value);

} // namespace com
