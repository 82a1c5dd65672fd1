// What every dispatch table of the component needs: the table's vocabulary and the type library's GUIDs.
#pragma once

#include "QorvaneMBomBill_h.h" // generated from the IDL
#include "com/DispatchTable.h"
