// FoundationGlobal (ruvo10.Global): the foundation library's free functions.
#pragma once

#include <string>

#include "com/Variant.h"

namespace standin {

class FoundationGlobal {
 public:
  // Replaces the markers %1, %2, … of the template by the array's values in order. A marker without a value
  // and "%%" stay as they are; a marker takes all the digits that follow, so that %10 is the tenth value.
  std::wstring FormatText(const std::wstring& text, const com::Variant& values) const;
};

} // namespace standin
