#include "standin/ado/FileIdentity.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/DatabaseFolder.h"

namespace standin::test {
namespace {

using ado::FileIdentity;

class FileIdentityTest : public testing::Test {
 protected:
  std::wstring Write(const wchar_t* name, const std::string& text) const {
    std::wstring path = folder_.path() + L"\\" + name;
    std::ofstream(std::filesystem::path(path), std::ios::binary) << text;
    return path;
  }
  static void SetTimes(const std::wstring& path) {
    const FILETIME time{0, 0x01D00000};
    HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(SetFileTime(file, &time, &time, &time), FALSE);
    CloseHandle(file);
  }

  const com::test::DatabaseFolder folder_;
};

TEST_F(FileIdentityTest, HoldsWhileTheFileIsThere) {
  FileIdentity file(Write(L"a", "text"));
  EXPECT_TRUE(file.Holds());
  EXPECT_TRUE(file.Holds());
}

TEST_F(FileIdentityTest, HoldsThoughTheFileIsWritten) {
  FileIdentity file(Write(L"a", "text"));
  Write(L"a", "a longer text");
  EXPECT_TRUE(file.Holds());
  SetTimes(Write(L"a", "text"));
  EXPECT_TRUE(file.Holds());
}

TEST_F(FileIdentityTest, AnotherFileOfTheNameIsNotTheFile) {
  const std::wstring path = Write(L"a", "text");
  const std::wstring other = Write(L"b", "TEXT");
  SetTimes(path);
  FileIdentity file(path);
  Sleep(20); // a tick of the file system's clock, and more
  SetTimes(other);
  ASSERT_NE(MoveFileExW(other.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING), FALSE);
  EXPECT_FALSE(file.Holds()) << "though its size and the times that can be set are the same";
  EXPECT_FALSE(file.Holds());
  EXPECT_TRUE(FileIdentity(path).Holds());
}

TEST_F(FileIdentityTest, AFileThatHasComeBackIsTheFile) {
  const std::wstring path = Write(L"a", "text");
  const std::wstring away = folder_.path() + L"\\away";
  FileIdentity file(path);
  ASSERT_NE(MoveFileW(path.c_str(), away.c_str()), FALSE);
  EXPECT_FALSE(file.Holds());
  ASSERT_NE(MoveFileW(away.c_str(), path.c_str()), FALSE);
  EXPECT_TRUE(file.Holds());
}

TEST_F(FileIdentityTest, NoFileIsNoFile) {
  EXPECT_FALSE(FileIdentity().Holds());
  FileIdentity none(folder_.path() + L"\\none");
  EXPECT_FALSE(none.Holds());
  Write(L"none", "text");
  EXPECT_FALSE(none.Holds()) << "it was not there when the identity was made";
  EXPECT_FALSE(FileIdentity(L"C:\\no folder\\none").Holds());
}

} // namespace
} // namespace standin::test
