// Objects of the system that the base library's object factory creates.
#pragma once

#include "com/Object.h"

namespace mbom {

// A new object of the class registered under `progId`, from the thread's object factory. Failures throw.
com::Object CreateServerObject(const wchar_t* progId);

} // namespace mbom
