#include "src/log/RotatingFile.h"

#include <algorithm>

namespace mbom {
namespace {

// One process at a time writes and renames: where the system does not append in one step, two would write to
// the same place. Without the mutex (no memory, no rights) each still writes its lines.
class Turn {
 public:
  explicit Turn(HANDLE mutex) noexcept : mutex_(mutex) {
    constexpr DWORD kMostMilliseconds = 1000;
    if (!mutex_) return;
    const DWORD answer = WaitForSingleObject(mutex_, kMostMilliseconds);
    owned_ = answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED;
  }
  ~Turn() {
    if (owned_) ReleaseMutex(mutex_);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  HANDLE mutex_;
  bool owned_ = false;
};

class Exclusive {
 public:
  explicit Exclusive(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
  ~Exclusive() { ReleaseSRWLockExclusive(&lock_); }
  Exclusive(const Exclusive&) = delete;
  Exclusive& operator=(const Exclusive&) = delete;

 private:
  SRWLOCK& lock_;
};

} // namespace

RotatingFile::RotatingFile(std::wstring path, uint64_t most)
    : path_(std::move(path)), older_(path_ + L".1"), most_(most),
      mutex_(CreateMutexW(nullptr, FALSE, MutexName(path_).c_str())) {}

std::wstring RotatingFile::MutexName(const std::wstring& path) {
  // A name has no backslash, and less than MAX_PATH characters: a path's last ones tell files apart.
  constexpr size_t kMostOfPath = 200;
  std::wstring name = path.substr(path.size() - std::min(path.size(), kMostOfPath));
  std::replace(name.begin(), name.end(), L'\\', L'/');
  CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
  return L"QorvaneMBomBill.log." + name;
}

RotatingFile::~RotatingFile() {
  Close();
  if (mutex_) CloseHandle(mutex_);
}

void RotatingFile::Append(std::string_view line) noexcept {
  const Exclusive alone(lock_);
  const Turn turn(mutex_);
  if (!Open()) return;
  if (Full()) Rotate();
  if (!Open()) return;
  DWORD written = 0;
  WriteFile(file_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

bool RotatingFile::Open() noexcept {
  constexpr uint64_t kRetryMilliseconds = 1000;
  if (file_ != INVALID_HANDLE_VALUE) return true;
  const uint64_t now = GetTickCount64();
  if (now < retry_) return false;
  // With this right alone each write goes to the end of the file.
  file_ = CreateFileW(path_.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file_ == INVALID_HANDLE_VALUE) retry_ = now + kRetryMilliseconds;
  return file_ != INVALID_HANDLE_VALUE;
}

void RotatingFile::Close() noexcept {
  if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
  file_ = INVALID_HANDLE_VALUE;
}

bool RotatingFile::Full() const noexcept {
  LARGE_INTEGER size;
  return GetFileSizeEx(file_, &size) && static_cast<uint64_t>(size.QuadPart) >= most_;
}

void RotatingFile::Rotate() noexcept {
  // Another process may have renamed the file meanwhile: then the one with its name is another, and not full.
  Close();
  if (!Open() || !Full()) return;
  Close();
  MoveFileExW(path_.c_str(), older_.c_str(), MOVEFILE_REPLACE_EXISTING);
}

} // namespace mbom
