// The foundation collections as the component reads and writes them, late-bound.
#pragma once

#include <cstdint>
#include <string>

#include "com/Object.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {

// Field name -> value; names in any case, a missing one reads Empty.
class Dictionary {
 public:
  explicit Dictionary(com::Object object) : object_(std::move(object)) {}
  // A new one, empty.
  static Dictionary Make() { return Dictionary(DictionaryClass().Create()); }

  com::Variant operator[](const wchar_t* key) const { return object_.Get(outside::dictionary::kValue, key); }
  // The value under a name that has to be there; run-time error 5 where it is missing.
  com::Variant Require(const wchar_t* key) const;
  void Put(const wchar_t* key, const com::Variant& value) const {
    object_.Put(outside::dictionary::kValue, key, value);
  }
  bool Holds(const wchar_t* key) const { return object_.Call(outside::dictionary::kExists, key).AsBool(); }
  int32_t Count() const { return object_.Get(outside::dictionary::kCount).AsLong(); }
  // The value; `fallback` where the name is missing.
  com::Variant GetValue(const wchar_t* key, const com::Variant& fallback) const {
    return object_.Get(outside::dictionary::kGetValue, key, fallback);
  }
  const com::Object& object() const noexcept { return object_; }

 private:
  com::Object object_;
};

// A list counted from 1.
class Vector {
 public:
  explicit Vector(com::Object object) : object_(std::move(object)) {}

  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  int32_t UBound() const { return object_.Get(outside::vector::kUBound).AsLong(); }
  com::Variant operator[](int32_t index) const { return object_.Get(outside::vector::kItem, index); }
  Dictionary DictionaryAt(int32_t index) const { return Dictionary((*this)[index].AsObject()); }
  void Add(const com::Variant& value) const { object_.Call(outside::vector::kAdd, value); }
  const com::Object& object() const noexcept { return object_; }

 private:
  com::Object object_;
};

} // namespace mbom
