// Bytes as hexadecimal digits.
#pragma once

#include <string>

namespace tsql {

inline constexpr const char* kHexDigits = "0123456789ABCDEF";

// Appends the two digits of a byte.
inline void AppendHex(std::string& text, char byte) {
  text += kHexDigits[static_cast<unsigned char>(byte) >> 4U];
  text += kHexDigits[static_cast<unsigned char>(byte) & 0xFU];
}

} // namespace tsql
