// The short-number switch: whether items are shown by FShortNumber instead of FNumber.
#pragma once

#include "src/frame/ado/Connection.h"

namespace mbom {

// Reads the setting IC/UseShortNumber of t_SystemProfile on the connection: a value other than 0 switches it
// on, no such setting and Null leave it off. A value that is no number is a type mismatch
// (DISP_E_TYPEMISMATCH).
bool IsUseShortNumber(const Connection& connection);
// The same through a recordset of the component's own.
bool IsUseShortNumberClientSide(const Connection& connection);

} // namespace mbom
