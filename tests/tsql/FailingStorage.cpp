#include "tests/tsql/FailingStorage.h"

#include <atomic>

namespace tsql::test {
namespace {

sqlite3_vfs* g_real = nullptr;
std::atomic<StorageFault> g_fault;
std::atomic<bool> g_armed{false};
std::atomic<bool> g_stays{false};
std::atomic<bool> g_readOnly{false};
std::atomic<int64_t> g_left{0};

bool Fails(StorageFault fault) {
  if (!g_armed || g_fault != fault) return false;
  const int64_t left = --g_left;
  return left == 0 || (left < 0 && g_stays);
}

// SQLite's file; the real one lies behind it in memory.
struct File {
  sqlite3_file base;
  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* RealOf(sqlite3_file* file) {
  return reinterpret_cast<File*>(file)->Real();
}

int Close(sqlite3_file* file) {
  return RealOf(file)->pMethods->xClose(RealOf(file));
}

int Read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
  if (Fails(StorageFault::NoRead)) return SQLITE_IOERR_READ;
  return RealOf(file)->pMethods->xRead(RealOf(file), bytes, count, offset);
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
  if (Fails(StorageFault::Full)) return SQLITE_FULL;
  if (Fails(StorageFault::NoWrite)) return SQLITE_IOERR_WRITE;
  return RealOf(file)->pMethods->xWrite(RealOf(file), bytes, count, offset);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (Fails(StorageFault::NoWrite)) return SQLITE_IOERR_TRUNCATE;
  return RealOf(file)->pMethods->xTruncate(RealOf(file), size);
}

int Sync(sqlite3_file* file, int flags) {
  if (Fails(StorageFault::NoWrite)) return SQLITE_IOERR_FSYNC;
  return RealOf(file)->pMethods->xSync(RealOf(file), flags);
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  return RealOf(file)->pMethods->xFileSize(RealOf(file), size);
}

int Lock(sqlite3_file* file, int level) {
  return RealOf(file)->pMethods->xLock(RealOf(file), level);
}

int Unlock(sqlite3_file* file, int level) {
  return RealOf(file)->pMethods->xUnlock(RealOf(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* result) {
  return RealOf(file)->pMethods->xCheckReservedLock(RealOf(file), result);
}

int FileControl(sqlite3_file* file, int operation, void* argument) {
  return RealOf(file)->pMethods->xFileControl(RealOf(file), operation, argument);
}

int SectorSize(sqlite3_file* file) {
  return RealOf(file)->pMethods->xSectorSize(RealOf(file));
}

int DeviceCharacteristics(sqlite3_file* file) {
  return RealOf(file)->pMethods->xDeviceCharacteristics(RealOf(file));
}

int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** memory) {
  if (extend != 0 && (Fails(StorageFault::Full) || Fails(StorageFault::NoWrite))) return SQLITE_IOERR_SHMSIZE;
  return RealOf(file)->pMethods->xShmMap(RealOf(file), page, size, extend, memory);
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags) {
  return RealOf(file)->pMethods->xShmLock(RealOf(file), offset, count, flags);
}

void ShmBarrier(sqlite3_file* file) {
  RealOf(file)->pMethods->xShmBarrier(RealOf(file));
}

int ShmUnmap(sqlite3_file* file, int deletes) {
  return RealOf(file)->pMethods->xShmUnmap(RealOf(file), deletes);
}

// Version 2: with shared memory, as a write-ahead log needs it, and without mapped files.
constexpr sqlite3_io_methods kMethods{2,
                                      Close,
                                      Read,
                                      Write,
                                      Truncate,
                                      Sync,
                                      FileSize,
                                      Lock,
                                      Unlock,
                                      CheckReservedLock,
                                      FileControl,
                                      SectorSize,
                                      DeviceCharacteristics,
                                      ShmMap,
                                      ShmLock,
                                      ShmBarrier,
                                      ShmUnmap,
                                      nullptr,
                                      nullptr};

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* given) {
  auto* own = reinterpret_cast<File*>(file);
  own->base.pMethods = nullptr;
  if (g_readOnly && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
    flags &= ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    flags |= SQLITE_OPEN_READONLY;
  }
  const int result = g_real->xOpen(g_real, name, own->Real(), flags, given);
  if (own->Real()->pMethods != nullptr) own->base.pMethods = &kMethods;
  return result;
}

sqlite3_vfs g_failing;

} // namespace

FailingStorage::FailingStorage() : before_(sqlite3_vfs_find(nullptr)) {
  g_real = before_;
  g_failing = *g_real;
  g_failing.zName = "failing";
  g_failing.szOsFile = static_cast<int>(sizeof(File)) + g_real->szOsFile;
  g_failing.xOpen = Open;
  sqlite3_vfs_register(&g_failing, 1);
}

FailingStorage::~FailingStorage() {
  Mend();
  g_readOnly = false;
  sqlite3_vfs_unregister(&g_failing);
  sqlite3_vfs_register(before_, 1);
}

void FailingStorage::FailAt(StorageFault fault, int64_t nth, bool stays) {
  g_fault = fault;
  g_left = nth;
  g_stays = stays;
  g_armed = true;
}

bool FailingStorage::Mend() {
  return g_armed.exchange(false) && g_left <= 0;
}

void FailingStorage::SetReadOnly(bool readOnly) {
  g_readOnly = readOnly;
}

} // namespace tsql::test
