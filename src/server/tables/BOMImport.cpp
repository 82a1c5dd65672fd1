#include "src/import/BOMImport.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BOMImport>() {
  using mbom::BOMImport;
  static const DispatchTable table(
      DIID__BOMImport, {
                           PropertyGet<&BOMImport::TransMode>(1, L"TransMode"),
                           Method<&BOMImport::UpdateBomGroup>(2, L"UpdateBomGroup", {L"sDsn", L"tDict"}),
                           Method<&BOMImport::UpdateBOM>(3, L"UpdateBOM", {L"sDsn", L"tDict"}),
                       });
  return table;
}
