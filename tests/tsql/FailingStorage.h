// FailingStorage: disks that are full, broken or write-protected, under whatever SQLite opens while it lives.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace tsql::test {

enum class StorageFault : uint8_t {
  Full,    // nothing is written any more
  NoWrite, // writing, cutting off and flushing fail
  NoRead,  // reading fails
};

class FailingStorage {
 public:
  FailingStorage();
  // Files that are still open go on without faults.
  ~FailingStorage();
  FailingStorage(const FailingStorage&) = delete;
  FailingStorage& operator=(const FailingStorage&) = delete;

  // The nth operation of the kind from now fails, counted from 1; with `stays`, all that follow fail as well.
  void FailAt(StorageFault fault, int64_t nth, bool stays);
  // No more faults. Whether there was any.
  bool Mend();
  // Whether database files that are opened from now on can only be read.
  void SetReadOnly(bool readOnly);

 private:
  sqlite3_vfs* before_;
};

} // namespace tsql::test
