// A hosted object: forwards everything to the object behind it and makes every call a unit of work.
#pragma once

#include "com/Object.h"

namespace standin {

com::Object MakeHosted(const com::Object& inner);

} // namespace standin
