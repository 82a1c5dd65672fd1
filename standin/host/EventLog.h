// EventLog: what the component asked of the outside on one thread, and the failures that tests arm.
//
// An event is recorded before it runs, so that one that fails is there too. Armed failures work whether or
// not the log records.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

enum class EventKind : uint8_t {
  GetDataContext,
  GetCallerInfo,
  BindDsn,
  VoteAbort,
  VoteComplete,
  GetConnection,
  GetConnectionObject,
  Execute,
  Open,
  Command,
  CreateServerObject,
  LoadString,
  LogStart,
  LogEnd,
};

class EventLog {
 public:
  void Start() { recording_ = true; }
  void Stop() { recording_ = false; }
  void Clear() { events_.clear(); }
  // Each the kind's name, and for the kinds with a detail a TAB and the detail.
  const std::vector<std::wstring>& events() const { return events_; }

  // The nth event of the kind from now (1 is the next one) fails so. Throws run-time error 5 for an unknown
  // kind or a number below 1.
  void Arm(std::wstring_view kind, int32_t nth, HRESULT hr, const std::wstring& description);
  void Disarm() { faults_.clear(); }

  // Records the event. Throws the armed failure that is due with it.
  void Record(EventKind kind, std::optional<std::wstring_view> detail);

  // While one lives, what happens on the thread is the stand-in's own doing: no events.
  class Pause {
   public:
    explicit Pause(EventLog& log) : log_(log) { ++log_.pauses_; }
    ~Pause() { --log_.pauses_; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    EventLog& log_;
  };

 private:
  struct Fault {
    EventKind kind;
    int32_t left;
    HRESULT hr;
    std::wstring description;
  };

  bool recording_ = false;
  int pauses_ = 0;
  std::vector<std::wstring> events_;
  std::vector<Fault> faults_;
};

// Records an event of the calling thread.
void Event(EventKind kind, std::optional<std::wstring_view> detail = {});

} // namespace standin
