#include "src/view/clsReadUserDefined.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::clsReadUserDefined>() {
  using mbom::clsReadUserDefined;
  static const DispatchTable table(
      DIID__clsReadUserDefined,
      {
          PropertyGet<&clsReadUserDefined::TransMode>(1, L"TransMode"),
          Method<&clsReadUserDefined::GetUserDefinedValue>(
              2, L"GetUserDefinedValue", {L"sDsn", L"pBillTranType", L"rs", {L"isBillHead", true}}),
      });
  return table;
}
