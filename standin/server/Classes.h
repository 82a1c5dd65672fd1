// The classes of the stand-in, as they are registered and created.
#pragma once

#include <span>

#include "com/ClassObject.h"

namespace standin {

std::span<const com::ClassEntry> Classes();

// The same without ADO's, for Windows: it has its own, and its registration is not touched.
std::span<const com::ClassEntry> ClassesBesidesAdo();

} // namespace standin
