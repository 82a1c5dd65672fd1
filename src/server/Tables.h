// The dispatch tables of the public classes. Each stands in a file of its own under tables/; its names,
// DISPIDs and types agree with the type library.
#pragma once

#include "QorvaneMBomBill_h.h" // generated from the IDL
#include "com/DispatchTable.h"

namespace mbom {
class BomUpdate;
class BomView;
class BOMImport;
class PPorderImort;
class CBomFunction;
class CBomCheck;
class CEcnInfo;
class BomInfo;
class clsMCustBOM;
class clsMBOMRule;
class clsReadUserDefined;
} // namespace mbom

namespace com {
template <>
const DispatchTable& TableOf<mbom::BomUpdate>();
template <>
const DispatchTable& TableOf<mbom::BomView>();
template <>
const DispatchTable& TableOf<mbom::BOMImport>();
template <>
const DispatchTable& TableOf<mbom::PPorderImort>();
template <>
const DispatchTable& TableOf<mbom::CBomFunction>();
template <>
const DispatchTable& TableOf<mbom::CBomCheck>();
template <>
const DispatchTable& TableOf<mbom::CEcnInfo>();
template <>
const DispatchTable& TableOf<mbom::BomInfo>();
template <>
const DispatchTable& TableOf<mbom::clsMCustBOM>();
template <>
const DispatchTable& TableOf<mbom::clsMBOMRule>();
template <>
const DispatchTable& TableOf<mbom::clsReadUserDefined>();
} // namespace com
