#include "tsql/run/Database.h"

#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"

#include <map>
#include <mutex>

namespace tsql {
namespace {

constexpr std::string_view kMemoryPrefix = ":memory:";

std::string EncodeUri(std::string_view text) {
  std::string uri;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool plain =
        (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    if (plain) {
      uri += character;
    } else {
      uri += '%';
      AppendHex(uri, character);
    }
  }
  return uri;
}

std::string FileStem(std::string_view path) {
  const size_t slash = path.find_last_of("/\\");
  std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const size_t dot = name.rfind('.');
  if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
  return std::string(name);
}

bool IsEmpty(const Connection& connection) {
  PreparedStatement statement = connection.Prepare("SELECT 1 FROM main.sqlite_schema");
  return !statement.Step();
}

// The file can be read without the mark. Where another session writes at this moment, a later opening sets
// it.
void MarkVersion(const std::string& path) {
  try {
    storage::MarkVersion(Connection(path, SQLITE_OPEN_READWRITE)); // it does not wait for locks
  } catch (const SqliteFailure&) {                                 // NOLINT(bugprone-empty-catch)
  }
}

struct Registry {
  std::mutex mutex;
  std::map<std::string, std::weak_ptr<DatabaseImpl>, std::less<>> memory;
};

Registry& MemoryDatabases() {
  static Registry registry;
  return registry;
}

} // namespace

std::atomic<uint64_t> DatabaseImpl::globalVersion{1};

DatabaseImpl::DatabaseImpl(std::string path, OpenMode mode) : path_(std::move(path)) {
  isFile_ = !path_.starts_with(kMemoryPrefix);
  name_ = isFile_ ? FileStem(path_) : path_.substr(kMemoryPrefix.size());
  Prepare(mode);
}

Connection DatabaseImpl::Connect() const {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI;
  Connection connection(isFile_ ? path_ : "file:/tsql-" + EncodeUri(name_) + "?vfs=memdb", flags);
  sqlite3_busy_timeout(connection.Handle(), 5000);
  connection.Run("PRAGMA synchronous = NORMAL; PRAGMA cache_size = -32768;"
                 "ATTACH 'file:/tsql-shared-temporary?vfs=memdb' AS global");
  return connection;
}

void DatabaseImpl::Prepare(OpenMode mode) {
  if (isFile_ && mode == OpenMode::Existing) {
    try {
      const Connection probe(path_, SQLITE_OPEN_READWRITE);
      if (!storage::IsMarked(probe)) Fail(4060, {name_});
    } catch (const SqliteFailure&) {
      Fail(4060, {name_});
    }
  }
  try {
    anchor_ = std::make_unique<Connection>(Connect());
    if (isFile_ && !storage::IsMarked(*anchor_)) {
      if (!IsEmpty(*anchor_)) Fail(4060, {name_});
      anchor_->Run("PRAGMA journal_mode = WAL");
      storage::Mark(*anchor_);
    }
    if (isFile_ && !storage::CheckVersion(*anchor_, name_)) MarkVersion(path_);
    storage::CreateTables(*anchor_, Place::Main);
    storage::CreateTables(*anchor_, Place::Global);
  } catch (const SqliteFailure&) {
    Fail(4060, {name_});
  }
}

std::shared_ptr<Database> Database::Open(const std::string& path, OpenMode mode) {
  if (!path.starts_with(kMemoryPrefix)) return std::make_shared<DatabaseImpl>(path, mode);
  Registry& registry = MemoryDatabases();
  const std::lock_guard lock(registry.mutex);
  std::weak_ptr<DatabaseImpl>& entry = registry.memory[path];
  if (std::shared_ptr<DatabaseImpl> open = entry.lock()) return open;
  if (mode == OpenMode::Existing) Fail(4060, {path.substr(kMemoryPrefix.size())});
  auto database = std::make_shared<DatabaseImpl>(path, mode);
  entry = database;
  return database;
}

} // namespace tsql
