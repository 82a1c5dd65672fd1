// Texts that users hand over in files: UTF-8, UTF-16 with or without a byte-order mark, or GBK if they say
// so.
#pragma once

#include <cstdint>
#include <string>

namespace bomcall {

enum class Encoding : uint8_t {
  Unicode, // UTF-8 or UTF-16, whichever it is
  Gbk,     // code page 936
};

// The content of the file, or of the standard input if the name is "-", as UTF-8 without a byte-order mark.
// Throws UsageError where it cannot be read, or is not in the encoding.
std::string ReadSourceText(const std::wstring& name, Encoding encoding);

// The same for bytes that are there already; `name` stands in errors.
std::string DecodeSourceText(const std::string& bytes, const std::wstring& name, Encoding encoding);

} // namespace bomcall
