// Where the project's sources are, for tests that read files of the tree.
#pragma once

#include <string>

namespace mbom::test {

// The project's top folder, as Windows programs name it, without a slash at the end.
std::string SourceFolder();

} // namespace mbom::test
