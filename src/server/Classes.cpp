#include "src/server/Classes.h"

#include <array>

#include "src/bom/BomInfo.h"
#include "src/bom/BomUpdate.h"
#include "src/bom/CBomCheck.h"
#include "src/bom/CBomFunction.h"
#include "src/custbom/clsMBOMRule.h"
#include "src/custbom/clsMCustBOM.h"
#include "src/ecn/CEcnInfo.h"
#include "src/import/BOMImport.h"
#include "src/import/PPorderImort.h"
#include "src/server/Tables.h"
#include "src/view/BomView.h"
#include "src/view/clsReadUserDefined.h"

namespace mbom {
namespace {

template <class T>
com::ClassEntry Entry(REFCLSID classId, const wchar_t* progId, const wchar_t* description) {
  return {classId, progId, description, &com::CreateDispatchObject<T>};
}

} // namespace

std::span<const com::ClassEntry> PublicClasses() {
  static const std::array classes{
      Entry<BomUpdate>(CLSID_BomUpdate, L"QorvaneMBomBill.BomUpdate", L"BOM save hooks and maintenance"),
      Entry<BomView>(CLSID_BomView, L"QorvaneMBomBill.BomView", L"BOM browsing: tree, lists, ledgers"),
      Entry<BOMImport>(CLSID_BOMImport, L"QorvaneMBomBill.BOMImport", L"BOM and group import"),
      Entry<PPorderImort>(CLSID_PPorderImort, L"QorvaneMBomBill.PPorderImort", L"Production-order import"),
      Entry<CBomFunction>(CLSID_CBomFunction, L"QorvaneMBomBill.CBomFunction",
                          L"BOM functions: numbering, copy, routing, groups"),
      Entry<CBomCheck>(CLSID_CBomCheck, L"QorvaneMBomBill.CBomCheck", L"BOM audit and checks"),
      Entry<CEcnInfo>(CLSID_CEcnInfo, L"QorvaneMBomBill.CEcnInfo", L"Engineering change notices"),
      Entry<BomInfo>(CLSID_BomInfo, L"QorvaneMBomBill.BomInfo", L"BOM information queries"),
      Entry<clsMCustBOM>(CLSID_clsMCustBOM, L"QorvaneMBomBill.clsMCustBOM", L"Customer BOM"),
      Entry<clsMBOMRule>(CLSID_clsMBOMRule, L"QorvaneMBomBill.clsMBOMRule", L"Customer BOM rules"),
      Entry<clsReadUserDefined>(CLSID_clsReadUserDefined, L"QorvaneMBomBill.clsReadUserDefined",
                                L"User-defined bill fields"),
  };
  return classes;
}

} // namespace mbom
