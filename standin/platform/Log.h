// Log (VexoLogMsg.Log): writes the start and the end of procedures to the file that the environment variable
// ERP_STANDIN_LOG names, one line for each. Without the variable it is disabled.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>

namespace standin {

class Log {
 public:
  bool IsEnabled() const;
  // The handle for LogEnd, unique in the process.
  int32_t LogStart(const std::wstring& procedure);
  void LogEnd(int32_t handle, int32_t value);

 private:
  struct Running {
    std::wstring procedure;
    ULONGLONG since;
  };
  std::map<int32_t, Running> running_;
};

} // namespace standin
