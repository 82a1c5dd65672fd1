#include "standin/platform/Translations.h"

#include <windows.h>

#include <cstring>

extern "C" IMAGE_DOS_HEADER __ImageBase; // NOLINT(bugprone-reserved-identifier): the linker's name

namespace standin {
namespace {

// The header of a compiled catalogue: where its numbers lie.
constexpr uint32_t kMagic = 0x950412DE;
constexpr size_t kCountAt = 8;
constexpr size_t kSourcesAt = 12;
constexpr size_t kTranslationsAt = 16;
constexpr size_t kHeaderSize = 28;

} // namespace

Translations::Translations(int resource) {
  auto* module = reinterpret_cast<HMODULE>(&__ImageBase);
  HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(resource), MAKEINTRESOURCEW(10) /* RT_RCDATA */);
  HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
  if (!loaded) return;
  data_ = {static_cast<const char*>(LockResource(loaded)), SizeofResource(module, found)};
  if (data_.size() < kHeaderSize || Number(0) != kMagic) data_ = {};
}

uint32_t Translations::Number(size_t offset) const {
  uint32_t number = 0;
  std::memcpy(&number, data_.data() + offset, sizeof number);
  return number;
}

std::string_view Translations::Text(size_t table, uint32_t index) const {
  const size_t entry = Number(table) + size_t{8} * index;
  return data_.substr(Number(entry + 4), Number(entry));
}

std::string_view Translations::Find(const std::string& source) const {
  if (data_.empty() || source.empty()) return {}; // the empty text's entry is the catalogue's header
  // The sources are sorted by their bytes.
  uint32_t first = 0;
  uint32_t last = Number(kCountAt);
  while (first < last) {
    const uint32_t middle = first + (last - first) / 2;
    const int order = Text(kSourcesAt, middle).compare(source);
    if (order == 0) return Text(kTranslationsAt, middle);
    if (order < 0)
      first = middle + 1;
    else
      last = middle;
  }
  return {};
}

} // namespace standin
