// A database file of a test's own, removed with the test.
#pragma once

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "tests/tsql/EngineFixture.h"

namespace tsql::test {

// The error of opening a database, 0 when it opens.
inline int OpenError(const std::string& path, OpenMode mode) {
  try {
    Database::Open(path, mode);
  } catch (const Error& error) {
    return error.number;
  }
  return 0;
}

class FileTest : public ::testing::Test {
 protected:
  FileTest()
      : path_((std::filesystem::temp_directory_path() /
               ("tsql_test_" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
                ".db"))
                  .string()) {}
  ~FileTest() override {
    for (const char* suffix : {"", "-wal", "-shm"}) std::remove((path_ + suffix).c_str());
  }
  static Output RunOn(Session& session, std::string_view batch) {
    Output output;
    session.Execute(batch, {}, output);
    return output;
  }
  std::string path_;
};

} // namespace tsql::test
