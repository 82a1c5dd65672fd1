#include "tsql/values/CodePage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

constexpr unsigned kFirstLead = 0x81;
constexpr unsigned kLastLead = 0xFE;
constexpr unsigned kFirstTrail = 0x40;
constexpr unsigned kTrails = 0xFE - kFirstTrail + 1;
constexpr unsigned kEuroByte = 0x80; // the page's only single byte beyond ASCII
constexpr char32_t kEuro = 0x20AC;

// The characters of all pairs of bytes, 0 where there is none; the build makes the file with
// CodePageTable.sh.
constexpr std::array<uint16_t, (kLastLead - kFirstLead + 1)* kTrails> kCharacters = {
#include "tsql/values/CodePageTable.inc"
};

// The pairs of bytes by character, 0 for none. It is made when the first text beyond ASCII asks for it.
const std::vector<uint16_t>& PairsByCharacter() {
  static const std::vector<uint16_t> pairs = [] {
    std::vector<uint16_t> table(0x10000);
    for (unsigned i = 0; i < kCharacters.size(); ++i) {
      const unsigned pair = (kFirstLead + i / kTrails) << 8U | (kFirstTrail + i % kTrails);
      if (kCharacters[i] != 0) table[kCharacters[i]] = static_cast<uint16_t>(pair);
    }
    return table;
  }();
  return pairs;
}

// The page's bytes for a character: one, two as a number, or 0 for none.
unsigned PageCode(char32_t character) {
  if (character < 0x80) return character;
  if (character == kEuro) return kEuroByte;
  return character < 0x10000 ? PairsByCharacter()[character] : 0;
}

// How many bytes the page has for the character or for the question marks in its place: a character beyond
// 16 bits is two units of UTF-16.
size_t PageSizeOf(char32_t character) {
  return PageCode(character) > 0xFF || character > 0xFFFF ? 2 : 1;
}

void AppendByte(std::string& bytes, unsigned byte) {
  bytes.push_back(static_cast<char>(byte));
}

void AppendUnit(std::string& bytes, unsigned unit) {
  AppendByte(bytes, unit & 0xFFU);
  AppendByte(bytes, unit >> 8U);
}

std::string PageBytes(std::string_view text) {
  std::string bytes;
  for (size_t at = 0; at < text.size();) {
    const char32_t character = NextChar(text, at);
    const unsigned code = PageCode(character);
    if (code > 0xFF) AppendByte(bytes, code >> 8U);
    if (code != 0 || character == 0) {
      AppendByte(bytes, code & 0xFFU);
    } else {
      bytes.append(PageSizeOf(character), '?');
    }
  }
  return bytes;
}

std::string UnicodeBytes(std::string_view text) {
  std::string bytes;
  for (size_t at = 0; at < text.size();) {
    const char32_t character = NextChar(text, at);
    if (character < 0x10000) {
      AppendUnit(bytes, character);
    } else {
      AppendUnit(bytes, 0xD800U + ((character - 0x10000) >> 10U));
      AppendUnit(bytes, 0xDC00U + ((character - 0x10000) & 0x3FFU));
    }
  }
  return bytes;
}

std::string TextOfPage(std::string_view bytes) {
  std::string text;
  for (size_t at = 0; at < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[at++]);
    if (lead < kFirstLead || lead > kLastLead) {
      AppendChar(text, lead < 0x80 ? lead : lead == kEuroByte ? kEuro : U'?');
      continue;
    }
    const unsigned trail = at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
    const bool isPair = trail >= kFirstTrail && trail < kFirstTrail + kTrails;
    const char32_t character = isPair ? kCharacters[(lead - kFirstLead) * kTrails + trail - kFirstTrail] : 0;
    if (character != 0) ++at;
    AppendChar(text, character != 0 ? character : U'?');
  }
  return text;
}

// An odd byte at the end is no unit and falls away.
std::string TextOfUnicode(std::string_view bytes) {
  const auto unitAt = [bytes](size_t at) {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[at]) |
                                 static_cast<unsigned char>(bytes[at + 1]) << 8U);
  };
  std::string text;
  for (size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t character = unitAt(at);
    const bool isHigh = character >= 0xD800 && character < 0xDC00 && at + 3 < bytes.size();
    if (isHigh && unitAt(at + 2) >= 0xDC00 && unitAt(at + 2) < 0xE000) {
      character = 0x10000 + ((character - 0xD800) << 10U) + (unitAt(at + 2) - 0xDC00);
      at += 2;
    }
    AppendChar(text, character);
  }
  return text;
}

} // namespace

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool IsInPage(char32_t character) {
  return character < 0x80 || PageCode(character) != 0;
}

size_t PageSize(std::string_view text) {
  size_t size = 0;
  for (size_t at = 0; at < text.size();) size += PageSizeOf(NextChar(text, at));
  return size;
}

size_t PageOffset(std::string_view text, size_t size) {
  size_t at = 0;
  while (at < text.size()) {
    size_t next = at;
    const size_t needed = PageSizeOf(NextChar(text, next));
    if (needed > size) break;
    size -= needed;
    at = next;
  }
  return at;
}

std::string KeepPage(std::string text) {
  if (IsAscii(text)) return text;
  std::string kept;
  kept.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const char32_t character = NextChar(text, at);
    if (IsInPage(character)) {
      AppendChar(kept, character);
    } else {
      kept.append(PageSizeOf(character), '?');
    }
  }
  return kept;
}

std::string BytesOfText(std::string_view text, bool isUnicode) {
  return isUnicode ? UnicodeBytes(text) : PageBytes(text);
}

std::string TextOfBytes(std::string_view bytes, bool isUnicode) {
  return isUnicode ? TextOfUnicode(bytes) : TextOfPage(bytes);
}

} // namespace tsql
