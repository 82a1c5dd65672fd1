// Host (ErpStandIn.Host): creates objects as a transactional component host does. Every call into one is a
// unit of work.
#pragma once

#include <string>

#include "com/Object.h"

namespace standin {

class Host {
 public:
  com::Object CreateObject(const std::wstring& progId) const;
};

} // namespace standin
