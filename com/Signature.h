// Signature: how a call's arguments become those of a C++ member, and its result a variant, derived from the
// member's signature.
#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "com/Arguments.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "com/Text.h"
#include "com/Variant.h"

namespace com {

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
  static constexpr VARTYPE resultType = Result<R>::type;
  static constexpr size_t count = sizeof...(A);
  static constexpr std::array<VARTYPE, sizeof...(A)> types{Conversion<std::remove_cvref_t<A>>::type...};
  static constexpr std::array<bool, sizeof...(A)> inOut{isInOut<A>...};

  template <auto Member>
  static Variant Call(void* instance, const Arguments& arguments) {
    return Call<Member>(*static_cast<C*>(instance), arguments, std::index_sequence_for<A...>());
  }

  // A member that takes values of any type, or nothing, is called on the caller's own arguments when none of
  // them has to be converted, filled in or written back. Such members run once for each value of each row.
  static constexpr bool takesValues = (std::is_same_v<A, const Variant&> && ...);
  // False, and nothing is done, when one of them has to.
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
    const auto storeAll = [&] { (std::get<I>(slots).Store(), ...); };
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

} // namespace com
