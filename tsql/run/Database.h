// A database that is open in this process, and what its sessions share.
#pragma once

#include "tsql/catalog/Catalog.h"

#include <atomic>

namespace tsql {

class DatabaseImpl : public Database {
 public:
  DatabaseImpl(std::string path, OpenMode mode);

  // A new connection with the shared temporary database attached.
  Connection Connect() const;
  const std::string& Name() const { return name_; }
  bool IsFile() const { return isFile_; }

  std::atomic<uint64_t> schemaVersion{1};
  static std::atomic<uint64_t> globalVersion;

 private:
  void Prepare(OpenMode mode);

  std::string path_;
  std::string name_;
  bool isFile_ = true;
  // Keeps an in-memory database and the shared temporary one alive between sessions.
  std::unique_ptr<Connection> anchor_;
};

} // namespace tsql
