// The eleven public classes of the component, as they are registered and created.
#pragma once

#include <span>

#include "com/ClassObject.h"

namespace mbom {

std::span<const com::ClassEntry> PublicClasses();

} // namespace mbom
