// The shells of a system where no server can be reached.
#include "tsql/ShellTarget.h"

namespace tsql {

std::unique_ptr<ShellTarget> OpenServer(const std::string& /*descriptor*/) {
  throw Error(0, 16, 1, 0, "a server is reached by the shells for Windows only: tools/wine-run runs them");
}

} // namespace tsql
