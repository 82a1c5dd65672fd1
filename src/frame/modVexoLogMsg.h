// modVexoLogMsg: reports the start and the end of procedures to the system's log component, where there is
// one. Best effort: what fails in logging is ignored, and an error that is pending on the thread stays.
//
// The component is created by the first LogStart of a thread, and never tried again there; when it answers
// that it is disabled, it is released and the thread logs nothing more.
#pragma once

#include <cstdint>
#include <string_view>

namespace mbom {

// `procedure` is the full name, library.class.procedure. The handle for LogEnd; 0 when nothing is logged.
int32_t LogStart(std::wstring_view procedure);
void LogEnd(int32_t handle, int32_t value);

// The stretch of a procedure in the log, however it is left.
class LoggedProcedure {
 public:
  explicit LoggedProcedure(const wchar_t* procedure) : handle_(LogStart(procedure)) {}
  ~LoggedProcedure() { LogEnd(handle_, 0); }
  LoggedProcedure(const LoggedProcedure&) = delete;
  LoggedProcedure& operator=(const LoggedProcedure&) = delete;

 private:
  int32_t handle_;
};

} // namespace mbom
