// Enumerator: what a collection's _NewEnum returns, so that a client's "For Each" works. It walks over a
// snapshot of the elements.
#pragma once

#include <vector>

#include "com/Ptr.h"
#include "com/Variant.h"

namespace standin {

com::Ptr<IUnknown> MakeEnumerator(std::vector<com::Variant> elements);

} // namespace standin
