#include "tsql/run/Database.h"

#include <filesystem>
#include <map>
#include <mutex>

#include "tsql/run/Diagnostics.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"

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

// The file under any of its names. It need not be there.
std::string NormalPath(const std::string& path) {
  std::error_code failure;
  const std::filesystem::path file(std::u8string(path.begin(), path.end()));
  const std::filesystem::path full = std::filesystem::absolute(file, failure).lexically_normal();
  if (failure) return path;
  const std::u8string text = full.u8string();
  std::string normal(text.begin(), text.end());
#ifdef _WIN32
  for (char& character : normal)
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
#endif
  return normal;
}

bool IsFileThere(const std::string& path) {
  std::error_code failure;
  return std::filesystem::is_regular_file(std::u8string(path.begin(), path.end()), failure);
}

// The databases of the process by name: files and in-memory ones.
struct Registry {
  std::mutex mutex;
  std::map<std::string, std::weak_ptr<DatabaseImpl>, std::less<>> databases;
};

Registry& Databases() {
  static Registry registry;
  return registry;
}

constexpr int kLockTimeout = 5000;   // milliseconds
constexpr int kLookasideSize = 1200; // bytes, as SQLite's own
constexpr int kLookasideCount = 100;

} // namespace

std::atomic<uint64_t> DatabaseImpl::globalVersion{1};

DatabaseImpl::DatabaseImpl(std::string path, OpenMode mode) : path_(std::move(path)) {
  isFile_ = !path_.starts_with(kMemoryPrefix);
  name_ = isFile_ ? FileStem(path_) : path_.substr(kMemoryPrefix.size());
  try {
    anchor_ = std::make_unique<Connection>(isFile_ ? Attach(":memory:", 0) : Connect());
    storage::CreateTables(*anchor_, Place::Global);
    if (!isFile_) storage::CreateTables(*anchor_, Place::Main);
    if (isFile_ && mode == OpenMode::Create) Create();
    if (isFile_) PrepareFile();
  } catch (const SqliteFailure& failure) {
    FailOpening(failure);
  }
}

void DatabaseImpl::FailOpening(const SqliteFailure& failure) const {
  switch (failure.code & 0xFF) {
  case SQLITE_BUSY:
  case SQLITE_LOCKED:
  case SQLITE_PROTOCOL: Fail(1222, {});
  case SQLITE_NOTADB: Fail(4060, {path_});
  case SQLITE_CANTOPEN:
    if (!IsFileThere(path_)) Fail(4060, {path_});
    [[fallthrough]];
  default: throw StorageError(failure.what());
  }
}

Connection DatabaseImpl::Attach(const std::string& name, int flags) const {
  Connection connection(name, SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | flags);
  // The functions that a session registers take the small pieces of memory that SQLite sets aside for running
  // statements, for as long as the connection is open. There are more than it would have of its own accord.
  sqlite3_db_config(connection.Handle(), SQLITE_DBCONFIG_LOOKASIDE, nullptr, kLookasideSize, kLookasideCount);
  // Opening waits for others like any statement.
  sqlite3_busy_timeout(connection.Handle(), kLockTimeout);
  connection.Run("ATTACH 'file:/tsql-shared-temporary?vfs=memdb' AS global");
  return connection;
}

Connection DatabaseImpl::Connect() const {
  Connection connection = isFile_
                              ? Attach(path_, 0)
                              : Attach("file:/tsql-" + EncodeUri(name_) + "?vfs=memdb", SQLITE_OPEN_CREATE);
  if (isFile_ && !storage::IsMarked(connection)) Fail(4060, {path_});
  // Pages of a database in memory are copied from there whenever the cache has them no more: a large cache
  // would only keep them twice. The log grows to the size of the cache before it goes into the file: at
  // SQLite's 1,000 pages a change of a few thousand rows that lie apart would empty it each time.
  if (isFile_)
    connection.Run(
        "PRAGMA synchronous = NORMAL; PRAGMA cache_size = -32768; PRAGMA wal_autocheckpoint = 8192");
  return connection;
}

void DatabaseImpl::Create() const {
  const Connection connection = Attach(path_, SQLITE_OPEN_CREATE);
  if (storage::IsMarked(connection)) return;
  if (!IsEmpty(connection)) Fail(4060, {path_});
  connection.Run("PRAGMA journal_mode = WAL");
  storage::Mark(connection);
}

void DatabaseImpl::PrepareFile() const {
  const Connection connection = Connect();
  if (!storage::CheckVersion(connection, name_)) MarkVersion(path_);
  storage::CreateTables(connection, Place::Main);
}

std::shared_ptr<Database> Database::Open(const std::string& path, OpenMode mode) {
  const bool isFile = !path.starts_with(kMemoryPrefix);
  Registry& registry = Databases();
  const std::lock_guard lock(registry.mutex);
  std::erase_if(registry.databases, [](const auto& entry) { return entry.second.expired(); });
  std::weak_ptr<DatabaseImpl>& entry = registry.databases[isFile ? NormalPath(path) : path];
  if (std::shared_ptr<DatabaseImpl> open = entry.lock()) return open;
  if (!isFile && mode == OpenMode::Existing) Fail(4060, {path.substr(kMemoryPrefix.size())});
  auto database = std::make_shared<DatabaseImpl>(path, mode);
  entry = database;
  return database;
}

void ReleaseStorage() {
  sqlite3_shutdown();
}

} // namespace tsql
