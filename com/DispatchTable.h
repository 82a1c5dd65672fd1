// DispatchTable: the late-bound face of one plain C++ class.
//
// A table lists the class's members, each with its DISPID, its name, its parameters and a pointer to the C++
// member that does the work. Types, results and in/out parameters are derived from that member's signature:
//
//   const Text&/Object&/Variant&, bool, int16_t, int32_t, double    in
//   Text&, Object&, Variant&, bool&, int16_t&, int32_t&             in/out
//
// Invoke does what a type-library dispatcher does (named arguments, optional ones, DISP_E_… with the
// argument's position) and also takes an in/out argument as script passes it: a reference to a variant of any
// type that converts. In/out arguments are written back even when the member throws: what was set before a
// failure stays set.
#pragma once

#include <oaidl.h>

#include <array>
#include <initializer_list>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "com/ComError.h"
#include "com/Object.h"
#include "com/Text.h"
#include "com/Variant.h"

namespace com {

constexpr DISPID kNextId = DISPID_UNKNOWN; // a member without an id of its own gets the next free one

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

// ---- from signatures to conversions

template <class T>
struct Conversion;
template <>
struct Conversion<std::wstring> {
  static constexpr VARTYPE type = VT_BSTR;
  static std::wstring From(const Variant& value) { return value.AsText(); }
};
template <>
struct Conversion<bool> {
  static constexpr VARTYPE type = VT_BOOL;
  static bool From(const Variant& value) { return value.AsBool(); }
};
template <>
struct Conversion<int16_t> {
  static constexpr VARTYPE type = VT_I2;
  static int16_t From(const Variant& value) { return value.AsShort(); }
};
template <>
struct Conversion<int32_t> {
  static constexpr VARTYPE type = VT_I4;
  static int32_t From(const Variant& value) { return value.AsLong(); }
};
template <>
struct Conversion<double> {
  static constexpr VARTYPE type = VT_R8;
  static double From(const Variant& value) { return value.AsDouble(); }
};
template <>
struct Conversion<Object> {
  static constexpr VARTYPE type = VT_DISPATCH;
  static Object From(const Variant& value) { return value.AsObject(); }
};
template <>
struct Conversion<Variant> {
  static constexpr VARTYPE type = VT_VARIANT;
  static Variant From(const Variant& value) { return value; }
};

template <class T>
constexpr bool isInOut = std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

template <class R>
struct Result {
  static constexpr VARTYPE type = Conversion<R>::type;
};
template <>
struct Result<void> {
  static constexpr VARTYPE type = VT_EMPTY;
};
template <>
struct Result<Ptr<IUnknown>> {
  static constexpr VARTYPE type = VT_UNKNOWN;
};

inline Variant ToVariant(Ptr<IUnknown>&& value) {
  return Variant::FromUnknown(value);
}
template <class T>
Variant ToVariant(T&& value) {
  return Variant(std::forward<T>(value));
}

// What a call returns, as a variant; one that is a variant already is made in its place.
template <class Call>
Variant ResultOf(const Call& call) {
  if constexpr (std::is_same_v<decltype(call()), Variant>)
    return call();
  else
    return ToVariant(call());
}

// Where an argument comes from; slots are made in place from it.
struct Place {
  const Arguments& arguments;
  size_t index;
};

// One argument on its way through a call: converted in, handed to the member, written back.
template <class T>
class Slot {
 public:
  using Plain = std::remove_cvref_t<T>;

  explicit Slot(const Place& place)
      : arguments_(place.arguments), index_(place.index), value_(Load()), original_(value_) {}
  Plain& value() { return value_; }
  // An untouched argument stays the caller's own value, of the caller's own type.
  void Store() const {
    if constexpr (isInOut<T>) {
      VARIANTARG* reference = arguments_.Out(index_);
      if (reference && !(value_ == original_)) WriteBack(*reference, Variant(value_));
    }
  }

 private:
  struct Nothing {
    explicit Nothing(const Plain& /*value*/) {}
  };

  Plain Load() const {
    if constexpr (isInOut<T>) {
      const VARIANTARG* reference = arguments_.Out(index_);
      if (reference && !CanWriteBack(*reference, Conversion<Plain>::type))
        throw ArgumentError{DISP_E_TYPEMISMATCH, index_};
    }
    try {
      return Conversion<Plain>::From(arguments_.In(index_));
    } catch (const ComError& error) {
      throw ArgumentError{error.code(), index_};
    }
  }

  const Arguments& arguments_;
  size_t index_;
  Plain value_;
  std::conditional_t<isInOut<T>, const Plain, const Nothing> original_;
};

// A value of any type that is only read is not copied on its way.
template <>
class Slot<const Variant&> {
 public:
  explicit Slot(const Place& place)
      : borrowed_(place.arguments.Borrowed(place.index)),
        own_(borrowed_ ? Variant() : place.arguments.In(place.index)) {}
  const Variant& value() const { return borrowed_ ? *borrowed_ : own_; }
  void Store() const {}

 private:
  const Variant* borrowed_;
  Variant own_;
};

template <class C, class R, class... A>
struct Signature {
  using Class = C;
  static constexpr VARTYPE result = Result<R>::type;
  static constexpr size_t count = sizeof...(A);
  static constexpr std::array<VARTYPE, sizeof...(A)> types{Conversion<std::remove_cvref_t<A>>::type...};
  static constexpr std::array<bool, sizeof...(A)> inOut{isInOut<A>...};

  template <auto Member>
  static Variant Call(void* instance, const Arguments& arguments) {
    return Call<Member>(*static_cast<C*>(instance), arguments, std::index_sequence_for<A...>());
  }

  // Members that take values of any type, or nothing, are called on the arguments as they lie, where nothing
  // has to be converted, filled in or written back: what runs for each value of each row should run straight.
  static constexpr bool takesValues = (std::is_same_v<A, const Variant&> && ...);
  // False, with nothing done, when the arguments do not lie so.
  template <auto Member>
  static bool CallInPlace(void* instance, const DISPPARAMS& params, WORD flags, VARIANT* result) {
    return CallInPlace<Member>(*static_cast<C*>(instance), params, flags, result,
                               std::index_sequence_for<A...>());
  }

 private:
  template <auto Member, size_t... I>
  static bool CallInPlace(C& object, const DISPPARAMS& params, WORD flags, VARIANT* result,
                          std::index_sequence<I...>) {
    if (!InPlace(params, flags, count) || !(IsValue(params.rgvarg[I]) && ...)) return false;
    const auto call = [&]() -> R { return (object.*Member)(AsVariant(params.rgvarg[count - 1 - I])...); };
    if (!result || std::is_void_v<R>)
      call();
    else if constexpr (!std::is_void_v<R>)
      new (result) Variant(ResultOf(call));
    return true;
  }

  template <auto Member, size_t... I>
  static Variant Call(C& object, [[maybe_unused]] const Arguments& arguments, std::index_sequence<I...>) {
    std::tuple<Slot<A>...> slots(Place{arguments, I}...);
    const auto storeAll = [&slots] { (std::get<I>(slots).Store(), ...); };
    try {
      if constexpr (std::is_void_v<R>) {
        (object.*Member)(std::get<I>(slots).value()...);
        storeAll();
        return {};
      } else {
        Variant result = ToVariant((object.*Member)(std::get<I>(slots).value()...));
        storeAll();
        return result;
      }
    } catch (const ComError&) {
      storeAll();
      throw;
    }
  }
};

template <class T>
struct SignatureOf;
template <class C, class R, class... A>
struct SignatureOf<R (C::*)(A...)> : Signature<C, R, A...> {};
template <class C, class R, class... A>
struct SignatureOf<R (C::*)(A...) const> : Signature<C, R, A...> {};

// ---- the table

struct Member {
  DISPID id;
  const wchar_t* name;
  WORD kind; // DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
  VARTYPE result;
  std::vector<Parameter> parameters;
  Variant (*call)(void* instance, const Arguments& arguments);
  // Null, or to be tried first: Signature::CallInPlace.
  bool (*callInPlace)(void* instance, const DISPPARAMS& params, WORD flags, VARIANT* result) = nullptr;
};

template <auto Function>
Member MakeMember(WORD kind, DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters) {
  using Shape = SignatureOf<decltype(Function)>;
  Member member{id, name, kind, Shape::result, parameters, &Shape::template Call<Function>};
  if constexpr (Shape::takesValues) member.callInPlace = &Shape::template CallInPlace<Function>;
  // A table that does not fit its class is a programming error, found when the table is first used.
  if (parameters.size() != Shape::count || Shape::count > Arguments::kMost) std::terminate();
  for (size_t i = 0; i < Shape::count; ++i) {
    member.parameters[i].type = Shape::types[i];
    member.parameters[i].inOut = Shape::inOut[i];
  }
  return member;
}

template <auto Function>
Member Method(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters = {}) {
  return MakeMember<Function>(DISPATCH_METHOD, id, name, parameters);
}
template <auto Function>
Member PropertyGet(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters = {}) {
  return MakeMember<Function>(DISPATCH_PROPERTYGET, id, name, parameters);
}
// The last parameter is the new value. Serves assignments by value and by reference alike.
template <auto Function>
Member PropertyPut(DISPID id, const wchar_t* name, std::initializer_list<Parameter> parameters) {
  return MakeMember<Function>(DISPATCH_PROPERTYPUT, id, name, parameters);
}

class DispatchTable {
 public:
  // `interfaceId` is the dispinterface of the class in the module's type library; IID_NULL when it has none.
  DispatchTable(REFIID interfaceId, std::initializer_list<Member> members);

  REFIID interfaceId() const noexcept { return interfaceId_; }
  const std::vector<Member>& members() const noexcept { return members_; }

  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept;
  // Never throws: failures come back as HRESULT, EXCEPINFO and the thread's error object.
  HRESULT Invoke(void* instance, DISPID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* info,
                 UINT* badArgument) const noexcept {
    if (!params) return E_INVALIDARG;
    if (result) *result = {};
    const Member* member = Find(id, flags);
    if (!member) return DISP_E_MEMBERNOTFOUND;
    try {
      if (member->callInPlace && member->callInPlace(instance, *params, flags, result)) return S_OK;
      return Call(*member, instance, flags, *params, result, info, badArgument);
    } catch (...) {
      return ReportCurrentException(info);
    }
  }

 private:
  const Member* Find(DISPID id, WORD flags) const noexcept {
    const WORD wanted = (flags & DISPATCH_PROPERTYPUTREF) != 0 ? flags | DISPATCH_PROPERTYPUT : flags;
    for (const Member& member : members_)
      if (member.id == id && (member.kind & wanted) != 0) return &member;
    return nullptr;
  }
  static HRESULT Call(const Member& member, void* instance, WORD flags, DISPPARAMS& params, VARIANT* result,
                      EXCEPINFO* info, UINT* badArgument);

  IID interfaceId_;
  std::vector<Member> members_;
};

// Each class that is called through COM defines its table beside it.
template <class T>
const DispatchTable& TableOf();

} // namespace com
