#include "src/import/PPorderImort.h"

#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::PPorderImort>() {
  using mbom::PPorderImort;
  static const DispatchTable table(
      DIID__PPorderImort, {
                              PropertyGet<&PPorderImort::TransMode>(1, L"TransMode"),
                              Method<&PPorderImort::UpdatePPOrder>(2, L"UpdatePPOrder", {L"sDsn", L"tDict"}),
                          });
  return table;
}
