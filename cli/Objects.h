// Objects by ProgID, and calls by name, whose errors say what failed.
#pragma once

#include <span>
#include <string>

#include "com/ComError.h"
#include "com/Object.h"

namespace bomcall {

// As com::Object::Create; the ComError names the ProgID.
com::Object CreateObject(const std::wstring& progId);
// The same, and null where no class is registered under the ProgID for programs of this one's width.
com::Object CreateIfRegistered(const std::wstring& progId);

// The call of a method failed in a way that names an argument: its place, from 0.
struct BadArgument : com::ComError {
  BadArgument(const com::ComError& error, size_t place) : com::ComError(error), position(place) {}
  size_t position;
};

// Calls the method or reads the property. Throws BadArgument, or any other ComError.
com::Variant CallMember(const com::Object& object, const std::wstring& name,
                        std::span<const com::Variant> arguments);

} // namespace bomcall
