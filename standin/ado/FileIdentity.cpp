#include "standin/ado/FileIdentity.h"

#include <array>
#include <cstddef>

namespace standin::ado {
namespace {

// Two functions of ntdll, which Windows documents but has in no header of its SDK: unlike those of kernel32
// the one tells when a file's entry was changed last, and the other a file's number by its name; neither
// opens the file. Under Wine, whoever opens and closes a file that others keep locked leaves a descriptor
// behind.
using QueryAttributes = LONG(NTAPI*)(const OBJECT_ATTRIBUTES* object,
                                     FILE_NETWORK_OPEN_INFORMATION* attributes);
using QueryDirectory = LONG(NTAPI*)(HANDLE folder, HANDLE event, void* routine, void* context,
                                    IO_STATUS_BLOCK* status, void* buffer, ULONG size, ULONG informationClass,
                                    BOOLEAN onlyOne, UNICODE_STRING* name, BOOLEAN restart);
constexpr ULONG kFileIdBothDirectoryInformation = 37;

template <class Function>
Function FindInNtdll(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

// Borrows the text.
UNICODE_STRING Borrowed(std::wstring& text) {
  UNICODE_STRING string{};
  string.Buffer = text.data();
  string.Length = string.MaximumLength = static_cast<USHORT>(text.size() * sizeof(wchar_t));
  return string;
}

// The name that ntdll has for a full path, which begins with a drive or with two backslashes.
std::wstring NativeName(const std::wstring& fullPath) {
  return fullPath.starts_with(L"\\\\") ? L"\\??\\UNC" + fullPath.substr(1) : L"\\??\\" + fullPath;
}

} // namespace

FileIdentity::FileIdentity(const std::wstring& fullPath)
    : path_(fullPath), look_(LookAt(fullPath)), number_(NumberOf(fullPath)) {}

bool FileIdentity::Holds() {
  if (number_ == 0) return false;
  const Look now = LookAt(path_);
  if (now == look_) return true;
  if (NumberOf(path_) != number_) return false;
  look_ = now;
  return true;
}

bool FileIdentity::Look::operator==(const Look& other) const {
  return isThere && other.isThere && seen.CreationTime.QuadPart == other.seen.CreationTime.QuadPart &&
         seen.LastWriteTime.QuadPart == other.seen.LastWriteTime.QuadPart &&
         seen.ChangeTime.QuadPart == other.seen.ChangeTime.QuadPart &&
         seen.EndOfFile.QuadPart == other.seen.EndOfFile.QuadPart;
}

FileIdentity::Look FileIdentity::LookAt(const std::wstring& fullPath) {
  static const auto query = FindInNtdll<QueryAttributes>("NtQueryFullAttributesFile");
  std::wstring name = NativeName(fullPath);
  UNICODE_STRING string = Borrowed(name);
  OBJECT_ATTRIBUTES object{};
  InitializeObjectAttributes(&object, &string, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
  Look look;
  look.isThere = query(&object, &look.seen) >= 0;
  return look;
}

uint64_t FileIdentity::NumberOf(const std::wstring& fullPath) {
  static const auto query = FindInNtdll<QueryDirectory>("NtQueryDirectoryFile");
  const size_t slash = fullPath.find_last_of(L'\\');
  std::wstring name = fullPath.substr(slash + 1);
  HANDLE folder = CreateFileW(fullPath.substr(0, slash + 1).c_str(), FILE_LIST_DIRECTORY | SYNCHRONIZE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (folder == INVALID_HANDLE_VALUE) return 0;
  UNICODE_STRING mask = Borrowed(name);
  IO_STATUS_BLOCK status{};
  // Room for one entry with the longest name, and its short one.
  alignas(FILE_ID_BOTH_DIR_INFO)
      std::array<std::byte, sizeof(FILE_ID_BOTH_DIR_INFO) + MAX_PATH * sizeof(wchar_t)>
          buffer;
  const LONG result = query(folder, nullptr, nullptr, nullptr, &status, buffer.data(), buffer.size(),
                            kFileIdBothDirectoryInformation, TRUE, &mask, TRUE);
  CloseHandle(folder);
  if (result < 0) return 0;
  return static_cast<uint64_t>(
      reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(buffer.data())->FileId.QuadPart);
}

} // namespace standin::ado
