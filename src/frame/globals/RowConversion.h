// Rows of recordsets as the foundation's collections: what most reads hand to their callers.
#pragma once

#include "com/Object.h"
#include "src/frame/ado/Recordset.h"

namespace mbom {

// The current row as a Dictionary, field name -> value in field order; empty when the recordset has no
// fields. At the end of the recordset every name is there, with Empty as its value.
com::Object RowToDictionary(const Recordset& recordset);

// All remaining rows as a Vector of Dictionary. The recordset is left at its end.
com::Object RecordsetToVector(const Recordset& recordset);

} // namespace mbom
