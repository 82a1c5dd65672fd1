// Databases for the benchmarks: as many BOMs, lines, groups and user-defined values as wanted, in a file.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

struct Size {
  int32_t boms = 0; // ordinary ones, with FInterID 1 to boms
  int32_t linesPerBom = 1;
  int32_t groups = 100;   // roots with nine children each, the BOMs spread over them
  int32_t lineFields = 0; // user-defined fields of lines, each line with a value for each
  int32_t largeBom = 0;   // lines of one more BOM, with the FInterID boms + 1
};

// Makes the database new.
void Build(const std::wstring& file, const Size& size);

} // namespace bench
