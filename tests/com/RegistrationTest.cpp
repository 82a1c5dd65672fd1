#include "com/Registration.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include <array>

#include "com/Module.h"
#include "tests/com/Probe.h"

namespace com::test {
namespace {

constexpr wchar_t kClassKey[] = L"Software\\Classes\\CLSID\\{11111111-2222-3333-0102-030405060708}";
const std::array kRegistered{ClassEntry{kProbeId, L"Kit.Probe", L"a probe", &CreateDispatchObject<Probe>}};

std::wstring Value(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
  std::array<wchar_t, 512> text{};
  DWORD size = sizeof text;
  const LSTATUS status = RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
  return status == ERROR_SUCCESS ? text.data() : L"(missing)";
}

// Gives the process a machine's and a user's registry of its own, so that the tests touch no real
// registration, and may take the right to write away.
class RegistrationTest : public testing::Test {
 protected:
  static constexpr wchar_t kScratch[] = L"Software\\RegistrationTest";

  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);
    machine_ = Create(L"\\Machine");
    user_ = Create(L"\\User");
    ASSERT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine_), ERROR_SUCCESS);
    ASSERT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, user_), ERROR_SUCCESS);
  }
  void TearDown() override {
    for (HKEY root : {machine_, user_}) SetWritable(root, true);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    for (HKEY root : {machine_, user_}) RegCloseKey(root);
    RegDeleteTreeW(HKEY_CURRENT_USER, kScratch);
  }

  static HKEY Create(const wchar_t* name) {
    HKEY key = nullptr;
    RegCreateKeyW(HKEY_CURRENT_USER, (std::wstring(kScratch) + name).c_str(), &key);
    return key;
  }

  // Grants or denies everybody the right to write the class's key.
  static void SetWritable(HKEY root, bool writable) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        writable ? L"D:(A;;KA;;;WD)" : L"D:(D;;KW;;;WD)(A;;KRWDSD;;;WD)", SDDL_REVISION_1, &descriptor,
        nullptr));
    HKEY key = nullptr;
    const REGSAM access = WRITE_DAC;
    if (!writable) {
      ASSERT_EQ(RegCreateKeyExW(root, kClassKey, 0, nullptr, 0, access, nullptr, &key, nullptr),
                ERROR_SUCCESS);
    } else if (RegOpenKeyExW(root, kClassKey, 0, access, &key) != ERROR_SUCCESS) {
      LocalFree(descriptor);
      return;
    }
    EXPECT_EQ(RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor), ERROR_SUCCESS);
    RegCloseKey(key);
    LocalFree(descriptor);
  }

  const RegistrationInfo info_{L"C:\\kit\\probe.dll", kRegistered, false};
  HKEY machine_ = nullptr;
  HKEY user_ = nullptr;
};

void ExpectRegistered(HKEY root) {
  const std::wstring key = kClassKey;
  EXPECT_EQ(Value(root, key), L"a probe");
  EXPECT_EQ(Value(root, key + L"\\InprocServer32"), L"C:\\kit\\probe.dll");
  EXPECT_EQ(Value(root, key + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
  EXPECT_EQ(Value(root, key + L"\\ProgID"), L"Kit.Probe");
  EXPECT_EQ(Value(root, key + L"\\VersionIndependentProgID"), L"Kit.Probe");
  EXPECT_EQ(Value(root, L"Software\\Classes\\Kit.Probe\\CLSID"), L"{11111111-2222-3333-0102-030405060708}");
}

TEST_F(RegistrationTest, RegistersForTheMachine) {
  ASSERT_EQ(Register(info_), S_OK);
  ExpectRegistered(machine_);
  EXPECT_EQ(Value(user_, kClassKey), L"(missing)");
}

TEST_F(RegistrationTest, RegistersForTheUserWithoutRightsOnTheMachine) {
  SetWritable(machine_, false);
  ASSERT_EQ(Register(info_), S_OK);
  ExpectRegistered(user_);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
}

TEST_F(RegistrationTest, FailsWithoutAnyRights) {
  SetWritable(machine_, false);
  SetWritable(user_, false);
  EXPECT_EQ(Register(info_), E_ACCESSDENIED);
}

TEST_F(RegistrationTest, RemovesBothRegistrationsAndMissesNone) {
  ASSERT_EQ(Register(info_), S_OK);
  EXPECT_EQ(Unregister(info_), S_OK);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
  EXPECT_EQ(Value(machine_, L"Software\\Classes\\Kit.Probe\\CLSID"), L"(missing)");
  EXPECT_EQ(Unregister(info_), S_OK);
}

constexpr wchar_t kServer[] =
    L"Software\\Classes\\CLSID\\{11111111-2222-3333-0102-030405060708}\\InprocServer32";
constexpr wchar_t kProgIdClass[] = L"Software\\Classes\\Kit.Probe\\CLSID";

TEST_F(RegistrationTest, RemovesNothingThatNamesAnotherFile) {
  const RegistrationInfo other{L"C:\\kit of old\\probe.dll", kRegistered, false};
  ASSERT_EQ(Register(other), S_OK);
  ASSERT_EQ(Register(info_), S_OK);
  EXPECT_EQ(Unregister(other), S_OK);
  ExpectRegistered(machine_);
  EXPECT_EQ(Unregister(info_), S_OK);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
  EXPECT_EQ(Value(machine_, kProgIdClass), L"(missing)");
}

TEST_F(RegistrationTest, LeavesAProgIdThatMeansAnotherClass) {
  ASSERT_EQ(Register(info_), S_OK);
  RegSetKeyValueW(machine_, kProgIdClass, nullptr, REG_SZ, L"{other}", sizeof L"{other}");
  EXPECT_EQ(Unregister(info_), S_OK);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
  EXPECT_EQ(Value(machine_, kProgIdClass), L"{other}");
}

TEST_F(RegistrationTest, KnowsItsFileByItsPathInAnyCase) {
  ASSERT_EQ(Register(info_), S_OK);
  EXPECT_EQ(Unregister({L"c:\\KIT\\Probe.DLL", kRegistered, false}), S_OK);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
}

TEST_F(RegistrationTest, AnOlderFilesRegistrationIsBackWhenAnotherOneFails) {
  ASSERT_EQ(Register(info_), S_OK);
  // No key has a name of more than 255 characters.
  const std::wstring tooLong(300, L'x');
  const std::array classes{kRegistered[0], ClassEntry{CLSID_NULL, tooLong.c_str(), L"", nullptr}};
  EXPECT_NE(Register({L"C:\\kit\\newer.dll", classes, false}), S_OK);
  ExpectRegistered(machine_);
  EXPECT_EQ(Value(user_, kServer), L"(missing)");
  EXPECT_EQ(Value(machine_, L"Software\\Classes\\CLSID\\{00000000-0000-0000-0000-000000000000}\\ProgID"),
            L"(missing)");
}

TEST_F(RegistrationTest, TakesPathsOfAnyKind) {
  for (const std::wstring& path : {std::wstring(L"C:\\a kit\\pro be.dll"),
                                   std::wstring(L"C:\\\u7269\u6599\u6e05\u5355\\\u6210\u54c1.dll"),
                                   L"C:\\" + std::wstring(200, L'k') + L"\\probe.dll"}) {
    const RegistrationInfo info{path, kRegistered, false};
    ASSERT_EQ(Register(info), S_OK);
    EXPECT_EQ(Value(machine_, kServer), path);
    EXPECT_EQ(Unregister(info), S_OK);
    EXPECT_EQ(Value(machine_, kServer), L"(missing)");
  }
}

TEST_F(RegistrationTest, FailsWithoutTheTypeLibraryAndWritesNothing) {
  RegistrationInfo withLibrary = info_;
  withLibrary.typeLibrary = true;
  EXPECT_EQ(Register(withLibrary), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(Value(machine_, kClassKey), L"(missing)");
}

} // namespace
} // namespace com::test
