#include "cli/SourceText.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "cli/CommandLine.h"
#include "com/Text.h"

namespace bomcall {
namespace {

constexpr UINT kGbk = 936;

// Whether the bytes are text of the code page.
bool Fits(std::string_view bytes, UINT codePage) {
  return bytes.empty() || MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(),
                                              static_cast<int>(bytes.size()), nullptr, 0) > 0;
}

std::wstring Decoded(std::string_view bytes, UINT codePage) {
  const int size = static_cast<int>(bytes.size());
  std::wstring result(
      static_cast<size_t>(size ? MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0) : 0),
      L'\0');
  if (!result.empty())
    MultiByteToWideChar(codePage, 0, bytes.data(), size, result.data(), static_cast<int>(result.size()));
  return result;
}

// The number of the first line that is not text of the code page.
size_t FirstBadLine(std::string_view bytes, UINT codePage) {
  size_t line = 1;
  while (true) {
    const size_t end = bytes.find('\n');
    if (end == std::string_view::npos || !Fits(bytes.substr(0, end), codePage)) return line;
    bytes.remove_prefix(end + 1);
    ++line;
  }
}

// UTF-16 without its mark.
std::string FromUtf16(std::string_view bytes, bool bigEndian, const std::wstring& name) {
  if (bytes.size() % 2 != 0) throw UsageError(name + L" is UTF-16, but ends amid a character");
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    text += static_cast<wchar_t>(bigEndian ? first << 8 | second : second << 8 | first);
  }
  return com::ToUtf8(text);
}

} // namespace

std::string DecodeSourceText(const std::string& bytes, const std::wstring& name, Encoding encoding) {
  const std::string_view text = bytes;
  if (text.starts_with("\xEF\xBB\xBF")) return DecodeSourceText(bytes.substr(3), name, Encoding::Unicode);
  if (text.starts_with(std::string_view("\xFF\xFE\0\0", 4)))
    throw UsageError(name + L" is UTF-32: save it as UTF-8");
  if (text.starts_with("\xFF\xFE")) return FromUtf16(text.substr(2), false, name);
  if (text.starts_with("\xFE\xFF")) return FromUtf16(text.substr(2), true, name);
  // JSON begins with a character of ASCII, so one of its first two bytes is zero in UTF-16.
  if (text.size() >= 2 && (text[0] == '\0') != (text[1] == '\0'))
    return FromUtf16(text, text[0] == '\0', name);
  if (encoding == Encoding::Gbk) {
    if (!IsValidCodePage(kGbk)) throw UsageError(L"this machine does not know GBK (code page 936)");
    if (!Fits(text, kGbk))
      throw UsageError(name + L", line " + std::to_wstring(FirstBadLine(text, kGbk)) + L", is not GBK");
    return com::ToUtf8(Decoded(text, kGbk));
  }
  if (!Fits(text, CP_UTF8))
    throw UsageError(name + L", line " + std::to_wstring(FirstBadLine(text, CP_UTF8)) +
                     L", is not UTF-8: save it as UTF-8, or add --encoding gbk if it is GBK");
  return bytes;
}

std::string ReadSourceText(const std::wstring& name, Encoding encoding) {
  if (name == L"-")
    return DecodeSourceText({std::istreambuf_iterator<char>(std::cin), {}}, L"the standard input", encoding);
  std::ifstream file(std::filesystem::path(name), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad()) throw UsageError(L"cannot read " + name);
  return DecodeSourceText(bytes, name, encoding);
}

} // namespace bomcall
