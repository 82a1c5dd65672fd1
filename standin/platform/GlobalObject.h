// GlobalObject: the data-access library (QorvaneGlobal.Global), which hands out data contexts.
#pragma once

#include "com/Object.h"

namespace standin {

class GlobalObject {
 public:
  com::Object GetDataContext() const;
};

} // namespace standin
