// RotatingFile: a text file that several processes append lines to, and that does not grow without end.
//
// When it is full it takes the name with ".1" at its end, in the place of the one that had it, and a new file
// begins: at most twice the size is on the disk. What fails is lost in silence: no caller waits for a log,
// and none fails with it. A file that cannot be opened is tried again a second later.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace mbom {

class RotatingFile {
 public:
  // `most` bytes; a line is not cut, so a file can be longer by one.
  RotatingFile(std::wstring path, uint64_t most);
  ~RotatingFile();
  RotatingFile(const RotatingFile&) = delete;
  RotatingFile& operator=(const RotatingFile&) = delete;

  // The name of the mutex by which processes that write to `path` take turns. Those that spell the path in
  // different ways (a relative one, a short name) do not wait for each other.
  static std::wstring MutexName(const std::wstring& path);

  // Adds a line with its end. Lines of several threads and processes stay whole.
  void Append(std::string_view line) noexcept;

 private:
  bool Open() noexcept;
  void Close() noexcept;
  bool Full() const noexcept;
  void Rotate() noexcept;

  const std::wstring path_;
  const std::wstring older_;
  const uint64_t most_;
  SRWLOCK lock_ = SRWLOCK_INIT;
  HANDLE mutex_; // of all processes; null where it cannot be had
  HANDLE file_ = INVALID_HANDLE_VALUE;
  uint64_t retry_ = 0; // of GetTickCount64: not opened before
};

} // namespace mbom
