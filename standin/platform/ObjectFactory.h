// ObjectFactory: the object factory of the shared base library (QorvaneWoskBase.ObjectFactory). It looks each
// class up once and keeps it: a class that is registered anew is taken by the factories that are made later.
#pragma once

#include <map>
#include <string>

#include "com/Object.h"
#include "com/Variant.h"

namespace standin {

class ObjectFactory {
 public:
  // A new object of the class; the server is the local one, whichever is named.
  com::Object CreateServerObject(const std::wstring& progId, const com::Variant& server);

 private:
  std::map<std::wstring, com::ObjectClass> classes_; // by ProgID
};

} // namespace standin
