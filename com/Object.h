// Object: an Automation object that is called late-bound, by name.
//
// Member names are string literals: an Object remembers the DISPIDs of the last few literals it was asked
// for, by address, so a loop asks the server once. The memory is the object's own, because two objects of one
// kind may number their members differently (script objects do).
//
// Every failure throws ComError; calling through a null Object is run-time error 91.
#pragma once

#include <unknwn.h>

#include <array>
#include <span>
#include <string>

#include "com/Ptr.h"
#include "com/Variant.h"

namespace com {

class Object {
 public:
  Object() noexcept = default;
  explicit Object(Ptr<IDispatch> object) noexcept : object_(std::move(object)) {}

  // A new object of the class registered under `progId`. Many of one class: ObjectClass.
  static Object Create(const wchar_t* progId);

  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  IDispatch* pointer() const noexcept { return object_.Get(); }
  // Gives the reference away; a null Object stays behind.
  IDispatch* Detach() noexcept { return object_.Detach(); }
  bool operator==(const Object& other) const noexcept { return object_ == other.object_; }

  template <class... Args>
  Variant Get(const wchar_t* name, Args&&... args) const {
    return Invoke(name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, std::forward<Args>(args)...);
  }
  template <class... Args>
  Variant Call(const wchar_t* name, Args&&... args) const {
    return Invoke(name, DISPATCH_METHOD, std::forward<Args>(args)...);
  }
  // For calls whose arguments are known at run time only.
  Variant CallWith(const wchar_t* name, std::span<Variant> args) const {
    return InvokeArray(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, args.data(), args.size());
  }
  // The last argument is the value, those before it index the property. An object is put by reference.
  template <class... Args>
  void Put(const wchar_t* name, Args&&... indexesAndValue) const {
    Invoke(name, DISPATCH_PROPERTYPUT, std::forward<Args>(indexesAndValue)...);
  }

 private:
  friend class BoundMember;

  struct KnownMember {
    const wchar_t* name = nullptr;
    DISPID id = DISPID_UNKNOWN;
  };

  template <class... Args>
  Variant Invoke(const wchar_t* name, WORD flags, Args&&... args) const {
    std::array<Variant, sizeof...(Args)> values{Variant(std::forward<Args>(args))...};
    return InvokeArray(name, flags, values.data(), values.size());
  }
  Variant InvokeArray(const wchar_t* name, WORD flags, Variant* args, size_t count) const;
  DISPID IdOf(const wchar_t* name) const;

  Ptr<IDispatch> object_;
  mutable std::array<KnownMember, 4> known_;
  mutable size_t nextKnown_ = 0;
};

// ObjectClass: the class registered under a ProgID, looked up once, for whoever creates many objects of it.
// All of them are of one kind and number their members alike.
class ObjectClass {
 public:
  explicit ObjectClass(const wchar_t* progId);
  Object Create() const;

 private:
  Ptr<IClassFactory> factory_;
};

// BoundMember: a member by its DISPID, for loops over many rows: it is looked up once, and values go through
// as they are, without copies.
class BoundMember {
 public:
  // The member of `object`, and of every other object of its kind.
  BoundMember(const Object& object, const wchar_t* name);

  Variant Get(const Object& object) const;
  Variant Get(const Object& object, const Variant& index) const;
  Variant Get(const Object& object, const Variant& first, const Variant& second) const;
  void Call(const Object& object) const;
  void Call(const Object& object, const Variant& argument) const;
  void Put(const Object& object, const Variant& index, const Variant& value) const;

 private:
  DISPID id_;
};

} // namespace com
