// DiagnosticLog: what the component does, line by line, for whoever looks for the reason of a failure in
// production. Off as a rule; an event then costs one look at a pointer.
//
// Each line is a JSON object, in UTF-8:
//
//   time      UTC, "2026-11-22T10:15:30.123Z"
//   process   its id
//   thread    its id
//   class     of the call, without the component's name: "BomUpdate"; absent outside of a call
//   method    of the call
//   event     "begin" and "end" of a call, "set-up", "statement", "vote", "trapped"
//   text      the descriptor, the statement, "abort" or "complete", the reason of the trapped failure
//   ms        milliseconds that it took; absent for "begin" and "trapped"
//   rows      of a statement, where its recordset knows them
//   failed    true: the step ended with a failure, whose reason follows with "trapped" or "end"
//   code      of an "end" that is not S_OK: "0x80020009"; with `text` for what was raised
//
// Passwords are masked in all texts. No failure of the log reaches a call.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "com/ClassObject.h"

namespace mbom {

struct LogSettings {
  std::wstring path; // empty: no log
  uint64_t mostBytes = 0;
};

// What the process asks for: QORVANEMBOMBILL_LOG (a path) and QORVANEMBOMBILL_LOG_KB (the size at which a new
// file begins, 10240 if it is absent) in the environment, or else Log (REG_SZ or REG_EXPAND_SZ) and LogKB
// (REG_DWORD) in HKEY_LOCAL_MACHINE\SOFTWARE\QorvaneMBomBill.
LogSettings LogSettingsOfProcess();

// Switches the log on until StopLog, or until the module goes. `classes` name what is called, and live as
// long as the module. Nothing happens without a path.
void StartLog(const LogSettings& settings, std::span<const com::ClassEntry> classes);
void StopLog() noexcept; // while nobody calls
// StartLog with what the process asks for, at the first time; nothing later.
void StartLogOfProcess(std::span<const com::ClassEntry> classes) noexcept;
bool LogIsOn() noexcept;

void LogTrapped(const std::exception& failure) noexcept;

// A step of a call while it runs: its line is written when it ends, with "failed" if an exception ends it.
class LoggedStep {
 public:
  // Both live as long as this object.
  LoggedStep(const wchar_t* event, std::wstring_view text) noexcept;
  ~LoggedStep();
  LoggedStep(const LoggedStep&) = delete;
  LoggedStep& operator=(const LoggedStep&) = delete;

  // `count` gives the rows, or a negative number if it does not know them; it is asked only while the log is
  // on.
  template <class Count>
  void Rows(const Count& count) noexcept {
    if (!on_) return;
    try {
      rows_ = count();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the line goes without them
    }
  }

 private:
  const bool on_;
  const wchar_t* const event_;
  const std::wstring_view text_;
  const int failures_; // that were on their way when this object was made
  int32_t rows_ = -1;
  long long start_ = 0;
};

} // namespace mbom
