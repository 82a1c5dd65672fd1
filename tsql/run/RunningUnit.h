// The state of a batch or procedure that runs.
#pragma once

#include "tsql/compile/CompiledUnit.h"

namespace tsql {

struct Cursor;

struct RunningUnit {
  CompiledUnit* unit = nullptr;
  std::vector<Datum> variables; // as the unit numbers them
  std::vector<Datum> markers;
  Datum scopeIdentity;
  std::string procedure; // its name; empty for a batch
  int32_t returnStatus = 0;
  Datum result;                                 // of a scalar function
  std::vector<std::shared_ptr<Cursor>> cursors; // the local ones, which end with the unit

  // Makes it as new, but for the memory that it has.
  void Clear() {
    unit = nullptr;
    variables.clear();
    markers.clear();
    if (!scopeIdentity.IsNull()) scopeIdentity = Datum();
    procedure.clear();
    returnStatus = 0;
    if (!result.IsNull()) result = Datum();
    cursors.clear();
  }
};

} // namespace tsql
