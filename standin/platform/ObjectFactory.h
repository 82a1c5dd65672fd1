// ObjectFactory: the object factory of the shared base library (QorvaneWoskBase.ObjectFactory).
#pragma once

#include <string>

#include "com/Object.h"
#include "com/Variant.h"

namespace standin {

class ObjectFactory {
 public:
  // A new object of the class; the server is the local one, whichever is named.
  com::Object CreateServerObject(const std::wstring& progId, const com::Variant& server) const;
};

} // namespace standin
