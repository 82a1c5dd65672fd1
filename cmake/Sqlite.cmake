# The SQLite amalgamation, compiled once a target. tools/setup puts the npm package into build/deps.
set(SQLITE_DIR "${PROJECT_SOURCE_DIR}/build/deps/node_modules/better-sqlite3/deps/sqlite3")
if(NOT EXISTS "${SQLITE_DIR}/sqlite3.c")
  message(FATAL_ERROR "SQLite is missing: run tools/setup first")
endif()
add_library(sqlite3 STATIC "${SQLITE_DIR}/sqlite3.c")
target_include_directories(sqlite3 SYSTEM PUBLIC "${SQLITE_DIR}")
target_compile_definitions(sqlite3 PRIVATE
  SQLITE_THREADSAFE=2 SQLITE_DQS=0 SQLITE_DEFAULT_MEMSTATUS=0 SQLITE_OMIT_DEPRECATED
  SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_SHARED_CACHE SQLITE_TEMP_STORE=2)
target_compile_options(sqlite3 PRIVATE -w -O2)
