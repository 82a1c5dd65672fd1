// A BOM of one line as the imports take it.
#pragma once

#include <string>

#include "tests/support/Client.h"

namespace mbom::test {

struct ImportedLine {
  int32_t item;
  int32_t quantity;
  int32_t stock;
};

// In use, without routing and operations; `parent` is its group.
inline com::Object ImportedBom(const std::wstring& number, int32_t parent, int32_t item,
                               const ImportedLine& line) {
  const com::Object entry = MakeDictionary({{L"EntryItem", line.item},
                                            {L"Qty", line.quantity},
                                            {L"Scrap", 0},
                                            {L"Oper", 0},
                                            {L"MachinePos", L""},
                                            {L"Note", L"imported"},
                                            {L"MaterielType", 371},
                                            {L"MarshalType", 385},
                                            {L"Percent", 100},
                                            {L"OffSetDay", 0},
                                            {L"BackFlush", 1059},
                                            {L"Stock", line.stock},
                                            {L"SP", 0}});
  return MakeDictionary({{L"BOMNumber", number},
                         {L"UseStatus", 1072},
                         {L"Version", L"1"},
                         {L"Parent", parent},
                         {L"Item", item},
                         {L"Qty", 1},
                         {L"Yield", 100},
                         {L"Routing", 0},
                         {L"BOMType", 0},
                         {L"Note", L"自行车"},
                         {L"Entry", MakeVector({entry})}});
}

} // namespace mbom::test
