// What a DLL's file says about how it may be loaded, for the tests of what protects a host from its memory
// errors.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace com::test {

using Image = std::vector<char>;

inline Image ReadImage(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The headers of an image of this program's width; they can be changed.
inline IMAGE_NT_HEADERS& HeadersOf(Image& image) {
  IMAGE_DOS_HEADER dos;
  std::memcpy(&dos, image.data(), sizeof dos);
  return *reinterpret_cast<IMAGE_NT_HEADERS*>(image.data() + dos.e_lfanew);
}

// What is missing of what a server DLL owes its host; nothing when all is there.
inline std::vector<std::string> WeaknessesOf(Image image) {
  std::vector<std::string> weaknesses;
  const IMAGE_NT_HEADERS& headers = HeadersOf(image);
  const WORD flags = headers.OptionalHeader.DllCharacteristics;
  const auto demand = [&](bool there, const std::string& weakness) {
    if (!there) weaknesses.push_back(weakness);
  };
  demand((flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE) != 0, "no address space layout randomisation");
  demand((headers.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) == 0 &&
             headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size > 0,
         "it cannot be loaded at another address");
  demand((flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT) != 0, "data can be executed");
  if constexpr (sizeof(void*) == 8) {
    constexpr WORD kHighEntropy = 0x0020;
    demand((flags & kHighEntropy) != 0, "only low addresses are taken at random");
  }
  // The file keeps the names of its functions: the one that ends the process when a stack was overwritten is
  // there only where others call it.
  constexpr std::string_view kStackCheck = "__stack_chk_fail";
  demand(std::search(image.begin(), image.end(), kStackCheck.begin(), kStackCheck.end()) != image.end(),
         "no stack protector");
  const IMAGE_SECTION_HEADER* const sections = IMAGE_FIRST_SECTION(&headers);
  constexpr DWORD kWritableCode = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
  for (const IMAGE_SECTION_HEADER* section = sections;
       section != sections + headers.FileHeader.NumberOfSections; ++section)
    demand((section->Characteristics & kWritableCode) != kWritableCode,
           "writable code: " + std::string(reinterpret_cast<const char*>(section->Name), 5));
  return weaknesses;
}

} // namespace com::test
