#include "database.h"

#include "diagnostics.h"
#include "errors.h"

#include <filesystem>
#include <map>
#include <mutex>

namespace tsql {
namespace {

constexpr std::string_view kMemoryPrefix = ":memory:";
constexpr int64_t kApplicationId = 0x7453514C; // marks a file as a database of this engine

std::string EncodeUri(std::string_view text) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string uri;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool plain =
        (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    if (plain) {
      uri += character;
    } else {
      uri += '%';
      uri += kDigits[byte >> 4U];
      uri += kDigits[byte & 0xFU];
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

int64_t ReadInteger(const Connection& connection, const std::string& sql) {
  PreparedStatement statement = connection.Prepare(sql);
  return statement.Step() ? statement.ColumnInteger(0) : 0;
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

// The databases of the process by name: files and in-memory ones.
struct Registry {
  std::mutex mutex;
  std::map<std::string, std::weak_ptr<DatabaseImpl>, std::less<>> databases;
};

Registry& Databases() {
  static Registry registry;
  return registry;
}

constexpr int kLockTimeout = 5000; // milliseconds

} // namespace

std::atomic<uint64_t> DatabaseImpl::globalVersion{1};

DatabaseImpl::DatabaseImpl(std::string path, OpenMode mode) : path_(std::move(path)) {
  isFile_ = !path_.starts_with(kMemoryPrefix);
  name_ = isFile_ ? FileStem(path_) : path_.substr(kMemoryPrefix.size());
  try {
    anchor_ = std::make_unique<Connection>(isFile_ ? Attach(":memory:", 0) : Connect());
    Catalog::CreateStorage(*anchor_, Place::Global);
    if (!isFile_) Catalog::CreateStorage(*anchor_, Place::Main);
    if (isFile_ && mode == OpenMode::Create) Create();
    if (isFile_) Catalog::CreateStorage(Connect(), Place::Main);
  } catch (const SqliteFailure& failure) {
    FailOpening(failure);
  }
}

void DatabaseImpl::FailOpening(const SqliteFailure& failure) const {
  switch (failure.code & 0xFF) {
  case SQLITE_BUSY:
  case SQLITE_LOCKED: Fail(1222, {});
  case SQLITE_CANTOPEN:
  case SQLITE_NOTADB: Fail(4060, {path_});
  default: throw StorageError(failure.what());
  }
}

Connection DatabaseImpl::Attach(const std::string& name, int flags) const {
  Connection connection(name, SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | flags);
  // Opening waits for others like any statement.
  sqlite3_busy_timeout(connection.Handle(), kLockTimeout);
  connection.Run("ATTACH 'file:/tsql-shared-temporary?vfs=memdb' AS global");
  return connection;
}

Connection DatabaseImpl::Connect() const {
  Connection connection = isFile_
                              ? Attach(path_, 0)
                              : Attach("file:/tsql-" + EncodeUri(name_) + "?vfs=memdb", SQLITE_OPEN_CREATE);
  if (isFile_ && ReadInteger(connection, "PRAGMA main.application_id") != kApplicationId) Fail(4060, {path_});
  connection.Run("PRAGMA synchronous = NORMAL; PRAGMA cache_size = -32768");
  return connection;
}

void DatabaseImpl::Create() const {
  const Connection connection = Attach(path_, SQLITE_OPEN_CREATE);
  if (ReadInteger(connection, "PRAGMA main.application_id") == kApplicationId) return;
  if (ReadInteger(connection, "SELECT count(*) FROM main.sqlite_schema") != 0) Fail(4060, {path_});
  connection.Run("PRAGMA journal_mode = WAL; PRAGMA main.application_id = " + std::to_string(kApplicationId));
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

} // namespace tsql
