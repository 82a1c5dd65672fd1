// What a database file is made of: how it is marked, the names of the engine's own tables, indexes and
// triggers in it, and the numbers that stand for kinds. docs/storage.md describes the format. A change of
// anything here changes files, so it takes a new version and code that reads the older ones.
#pragma once

#include <optional>

#include "tsql/sqlite/Connection.h"
#include "tsql/values/Collation.h"

namespace tsql {

// The SQLite schema that holds a table. Global temporary tables live in an in-memory database which all
// sessions of the process attach: they end with the process and never reach the file.
enum class Place : uint8_t { Main, Global, Temp };
const char* PlaceName(Place place);

// What a key of a table is. Files keep the numbers.
enum class KeyKind : uint8_t {
  PrimaryKey = 0,
  Unique = 1,
  UniqueIndex = 2,
  Index = 3,
  Check = 4,
  ForeignKey = 5,
  Default = 6, // since version 3: the name of a column's DEFAULT
};

// What is kept as its text. Files keep the numbers.
enum class ModuleKind : uint8_t {
  View = 1,
  Procedure = 2,
  ScalarFunction = 3, // since version 2
  InlineFunction = 4,
  TableFunction = 5,
  Trigger = 6, // since version 4
};

namespace storage {

// SQLite's application_id of a database of this engine: the letters "tSQL".
constexpr int64_t kApplicationId = 0x7453514C;
// SQLite's user_version: the version of the format. Files from before it was written have 0 there and are the
// same as version 1. A file is of the lowest version that has all that is in it, so that older engines read
// what they can.
constexpr int64_t kVersion = 8;
constexpr int64_t kFirstVersion = 1;
constexpr int64_t kFunctionVersion = 2; // functions of users
constexpr int64_t kFineVersion = 2;     // the types time and datetime2
// Names of defaults, constraints that are switched off, and computed columns.
constexpr int64_t kConstraintVersion = 3;
constexpr int64_t kTriggerVersion = 4; // triggers
constexpr int64_t kSchemaVersion = 5;  // schemas other than dbo
// Identity columns that are not SQLite's rowid.
constexpr int64_t kIdentityVersion = 6;
constexpr int64_t kActionVersion = 6; // foreign keys with referential actions
// Columns, CHECK conditions and computed columns with other collations than the database's.
constexpr int64_t kCollationVersion = 7;
constexpr int64_t kOptionVersion = 8; // modules made with SET options that are off

// What the value of a column is. Files keep the numbers.
enum class ColumnValue : int64_t {
  Given = 0,
  Identity = 1,
  Computed = 2, // since version 3
  Persisted = 3,
  CountedIdentity = 4, // since version 6: it is not SQLite's rowid
};

// Added to the kind of what is switched off: of a constraint since version 3, of a trigger since version 4.
constexpr int64_t kDisabled = 16;
// Added to the kind of a module that was made with the option off. Since version 8.
constexpr int64_t kAnsiNullsOff = 32;
constexpr int64_t kQuotedIdentifierOff = 64;
// The number of a foreign key's referential action on DELETE is added to its kind so many times, and that on
// UPDATE. Since version 6.
constexpr int64_t kOnDelete = 32;
constexpr int64_t kOnUpdate = 128;
constexpr int64_t kActions = 4; // how many there are

// The engine's own tables, quoted.
inline constexpr const char* kTables = "\"~tables\"";
inline constexpr const char* kColumns = "\"~columns\"";
inline constexpr const char* kKeys = "\"~keys\"";
inline constexpr const char* kModules = "\"~modules\"";
inline constexpr const char* kSchemas = "\"~schemas\""; // since version 5, where there is or was a schema
inline constexpr const char* kIdentities =
    "\"~identities\""; // since version 6, where there is or was such a column
inline constexpr const char* kCollations = "\"~collations\""; // since version 7, in the same way
// What a table is called while it is rebuilt, unquoted. Outside a transaction there is none of the name.
inline constexpr const char* kRebuilt = "~rebuilt";

// The key of an object: its name in the engine's own tables, and a table's name in SQLite. An object of dbo
// has its name, one of another schema the number of the schema in front: "~5~NAME".
std::string ObjectKey(int64_t schema, std::string_view name);
// The parts of a key that has the number of a schema; none for other names.
struct KeyParts {
  int64_t schema = 0;
  std::string_view name;
};
std::optional<KeyParts> SplitKey(std::string_view key);

// Whether no table of the dialect can have the name: one of those, a key of an object of another schema, or
// one that SQLite keeps for itself.
bool IsOwnName(std::string_view name);

// The names of the collations in SQLite. They must be registered with it before a table is used.
inline constexpr const char* kCollation = "tsql";
inline constexpr const char* kCasedCollation = "tsql_cased"; // in files since version 7, as the next one
inline constexpr const char* kBinaryCollation = "tsql_binary";
const char* CollationOf(CollationId id);

// The index of a key, and the second one that refuses duplicates where the key's columns may be null.
std::string IndexName(std::string_view table, std::string_view key);
std::string NullSafeIndexName(std::string_view table, std::string_view key);

// The changes that may break a foreign key, each noticed by a trigger.
enum class ForeignKeyEvent : char {
  ChildInserted = 'i',
  ChildUpdated = 'u',
  ParentDeleted = 'd',
  ParentUpdated = 'p',
};
std::string TriggerName(std::string_view key, ForeignKeyEvent event);

// Whether the connection's main database is one of this engine.
bool IsMarked(const Connection& connection);
// Marks an empty file as a database of this engine and of the present version.
void Mark(const Connection& connection);
// Refuses a file of a newer version with 948. False for one from before versions were written.
bool CheckVersion(const Connection& connection, const std::string& databaseName);
// Writes the first version.
void MarkVersion(const Connection& connection);
// Something is going to be kept that the version has and those before have not.
void RequireVersion(const Connection& connection, int64_t version);
// The table of schemas, which a file has from its first schema on.
bool HasSchemas(const Connection& connection);
void CreateSchemas(const Connection& connection);
// The table of the collations of columns, which there is from the first such column on.
bool HasCollations(const Connection& connection, Place place);
void CreateCollations(const Connection& connection, Place place);
// Makes the engine's own tables where they are missing.
void CreateTables(const Connection& connection, Place place);

} // namespace storage
} // namespace tsql
