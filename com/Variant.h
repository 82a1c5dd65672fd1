// Variant: an owned Automation VARIANT.
//
// Conversions follow Automation's rules without a locale (a point, never a comma) and throw
// DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW. References (VT_BYREF) are borrowed, never owned.
#pragma once

#include <oaidl.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "com/Ptr.h"

namespace com {

class Object;

class Variant {
 public:
  Variant() noexcept : v_{} {}
  // NOLINTBEGIN(google-explicit-constructor): a value stands for itself in an argument list
  Variant(bool value) noexcept;
  Variant(int16_t value) noexcept;
  Variant(int32_t value) noexcept;
  Variant(long value) noexcept : Variant(static_cast<int32_t>(value)) {}
  Variant(double value) noexcept;
  Variant(const wchar_t* text) : Variant(std::wstring_view(text)) {}
  Variant(std::wstring_view text);
  Variant(const std::wstring& text) : Variant(std::wstring_view(text)) {}
  Variant(const Object& object) noexcept;
  Variant(Object&& object) noexcept;
  // NOLINTEND(google-explicit-constructor)
  // A copy; a reference is followed.
  explicit Variant(const VARIANT& value);
  Variant(const Variant& other) : v_(other.v_) {
    if (Owns(v_.vt)) CopyOwned(other);
  }
  Variant(Variant&& other) noexcept : v_(other.Detach()) {}
  ~Variant() {
    if (Owns(v_.vt)) VariantClear(&v_);
  }
  Variant& operator=(Variant other) noexcept {
    std::swap(v_, other.v_);
    return *this;
  }

  static Variant Null() noexcept;
  // An omitted optional argument.
  static Variant Missing() noexcept;
  // Takes over `owned`.
  static Variant Attach(const VARIANT& owned) noexcept;
  static Variant FromUnknown(const Ptr<IUnknown>& object) noexcept;
  // `days` since 1899-12-30, as Automation dates count.
  static Variant Date(double days) noexcept;
  // An array of variants, counted from 0.
  static Variant Array(const Variant* values, size_t count);
  // A reference to a variable that outlives the call.
  static Variant Reference(Variant& target) noexcept;
  // The same as a reference to a variable of the value's own type (a text, a number), as typed languages pass
  // theirs.
  static Variant TypedReference(Variant& target) noexcept;

  // The same type and the same value; objects by identity. No conversion; arrays are never the same.
  bool operator==(const Variant& other) const noexcept;

  VARTYPE type() const noexcept { return v_.vt; }
  bool IsEmpty() const noexcept { return v_.vt == VT_EMPTY; }
  bool IsNull() const noexcept { return v_.vt == VT_NULL; }
  bool IsMissing() const noexcept { return v_.vt == VT_ERROR && v_.scode == DISP_E_PARAMNOTFOUND; }
  bool IsObject() const noexcept { return v_.vt == VT_DISPATCH || v_.vt == VT_UNKNOWN; }

  // The value as a VARIANT of `type`.
  Variant As(VARTYPE type) const;
  bool AsBool() const;
  int16_t AsShort() const;
  int32_t AsLong() const; // halves round to even, as Automation rounds
  double AsDouble() const;
  std::wstring AsText() const; // Empty gives "", Null is a type mismatch
  Object AsObject() const;     // Nothing is a null Object

  const VARIANT& raw() const noexcept { return v_; }
  VARIANT& raw() noexcept { return v_; }
  // Clears the value and lends its place for an out parameter.
  VARIANT* Out() noexcept;
  // Gives the value away; Empty stays behind.
  VARIANT Detach() noexcept {
    const VARIANT result = v_;
    v_ = {};
    return result;
  }

 private:
  // Whether a value of the type owns something; the others come and go without asking the system.
  static bool Owns(VARTYPE type) noexcept {
    switch (type) {
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_RECORD: return true;
    default: return (type & (VT_ARRAY | VT_BYREF)) == VT_ARRAY;
    }
  }
  void CopyOwned(const Variant& other);

  VARIANT v_;
};

} // namespace com
