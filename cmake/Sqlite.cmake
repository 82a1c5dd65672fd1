# The SQLite amalgamation; tools/setup puts the npm package into build/deps. It takes longer to compile than anything
# of ours, so the builds for one kind of machine share one object, without sanitizers, and only the build whose speed is
# measured has a native one of its own.
set(SQLITE_DIR "${PROJECT_SOURCE_DIR}/build/deps/node_modules/better-sqlite3/deps/sqlite3")
if(NOT EXISTS "${SQLITE_DIR}/sqlite3.c")
  message(FATAL_ERROR "SQLite is missing: run tools/setup first")
endif()
set(SQLITE_OPTIONS
  -DSQLITE_THREADSAFE=2 -DSQLITE_DQS=0 -DSQLITE_DEFAULT_MEMSTATUS=0 -DSQLITE_OMIT_DEPRECATED
  -DSQLITE_OMIT_LOAD_EXTENSION -DSQLITE_OMIT_SHARED_CACHE -DSQLITE_TEMP_STORE=2
  # The server has 1,024 columns a table, 4,096 in a list, and SQLite takes all columns of some joins together.
  -DSQLITE_MAX_COLUMN=32767
  # Counting pages takes a lock of the whole process for each.
  -DSQLITE_DISABLE_PAGECACHE_OVERFLOW_STATS -w)
if(WIN32)
  # SQLite would say with each read and write where in the file it is (OVERLAPPED), and Wine then tells its server that it
  # is done, which takes longer than the read itself. Moving the file pointer first needs no server; each connection has a
  # pointer of its own.
  list(APPEND SQLITE_OPTIONS -fstack-protector-strong -DSQLITE_WIN32_NO_OVERLAPPED)
endif()
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(SQLITE_OBJECT x64)
elseif(WIN32)
  set(SQLITE_OBJECT x86)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  set(SQLITE_OBJECT native-release)
else()
  set(SQLITE_OBJECT native)
endif()
# The engine's speed is measured in native-release. Elsewhere it works for demo and tests, which wait for this compilation:
# it takes half the time like this.
if(SQLITE_OBJECT STREQUAL "native-release")
  list(APPEND SQLITE_OPTIONS -O2)
else()
  list(APPEND SQLITE_OPTIONS -O1)
endif()
set(SQLITE_OBJECT "${PROJECT_SOURCE_DIR}/build/shared/sqlite3-${SQLITE_OBJECT}.o")
# GCC and clang make the same of C, so whichever comes first compiles it.
add_custom_command(
  OUTPUT "${SQLITE_OBJECT}"
  COMMAND "${PROJECT_SOURCE_DIR}/tools/compile-once" "${SQLITE_DIR}/sqlite3.c" "${SQLITE_OBJECT}"
          ${CMAKE_C_COMPILER_LAUNCHER} "${CMAKE_C_COMPILER}" ${SQLITE_OPTIONS}
  DEPENDS "${SQLITE_DIR}/sqlite3.c" "${PROJECT_SOURCE_DIR}/tools/compile-once"
  COMMENT "SQLite"
  VERBATIM)
add_library(sqlite3 STATIC "${SQLITE_OBJECT}")
set_target_properties(sqlite3 PROPERTIES LINKER_LANGUAGE C)
target_include_directories(sqlite3 SYSTEM PUBLIC "${SQLITE_DIR}")
