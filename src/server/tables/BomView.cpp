#include "src/view/BomView.h"
#include "src/server/Tables.h"

template <>
const com::DispatchTable& com::TableOf<mbom::BomView>() {
  using mbom::BomView;
  static const DispatchTable table(DIID__BomView, {
                                                      PropertyGet<&BomView::TransMode>(1, L"TransMode"),
                                                  });
  return table;
}
