#include "cli/Machine.h"

#include <algorithm>

#include "cli/ClassDescriptions.h"
#include "cli/Objects.h"
#include "src/frame/OutsideNames.h"

namespace bomcall {
namespace {

TriedClass Try(const std::wstring& progId) {
  try {
    CreateObject(progId);
    return {progId, {}};
  } catch (const com::ComError& error) {
    return {progId, error.description()};
  }
}

} // namespace

std::vector<TriedClass> TryClasses() {
  constexpr wchar_t kComponent[] = L"QorvaneMBomBill";
  std::vector<TriedClass> tried;
  for (const wchar_t* progId : mbom::outside::kProgIds) tried.push_back(Try(progId));
  try {
    for (const ClassInfo& own : ReadClassDescriptions()) tried.push_back(Try(kComponent + (L"." + own.name)));
  } catch (const com::ComError& error) {
    tried.push_back({kComponent, error.description()});
  }
  return tried;
}

bool AllThere(const std::vector<TriedClass>& classes) {
  return std::ranges::all_of(classes, [](const TriedClass& tried) { return tried.error.empty(); });
}

Grid GridOf(const std::vector<TriedClass>& classes) {
  Grid grid({L"ProgID", L"State"});
  for (const TriedClass& tried : classes)
    grid.Add(Cell::Text(tried.progId), Cell::Text(tried.error.empty() ? L"ok" : tried.error));
  return grid;
}

} // namespace bomcall
