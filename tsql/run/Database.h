// A database that is open in this process, and what its sessions share.
#pragma once

#include <atomic>

#include "tsql/catalog/Catalog.h"

namespace tsql {

class DatabaseImpl : public Database {
 public:
  DatabaseImpl(std::string path, OpenMode mode);

  // A new connection with the shared temporary database attached. Throws 4060 when the file is missing or is
  // no database of this engine.
  Connection Connect() const;
  // Throws the server's error for a failure of SQLite while a connection is opened.
  [[noreturn]] void FailOpening(const SqliteFailure& failure) const;
  const std::string& Name() const { return name_; }
  bool IsFile() const { return isFile_; }

  std::atomic<uint64_t> schemaVersion{1};
  static std::atomic<uint64_t> globalVersion;

 private:
  Connection Attach(const std::string& name, int flags) const;
  void Create() const;
  // Checks the format of the file and makes what is missing in it.
  void PrepareFile() const;

  std::string path_;
  std::string name_;
  bool isFile_ = true;
  // Keeps an in-memory database and the shared temporary one alive between sessions. A file is not held open.
  std::unique_ptr<Connection> anchor_;
};

} // namespace tsql
