#include "tests/support/SourceFolder.h"

namespace mbom::test {

std::string SourceFolder() {
  return SOURCE_FOLDER;
}

} // namespace mbom::test
