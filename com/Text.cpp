#include "com/Text.h"

#include <oleauto.h>

#include <new>

namespace com {

std::wstring FromBstr(BSTR text) {
  return text ? std::wstring(text, SysStringLen(text)) : std::wstring();
}

std::wstring TakeBstr(BSTR text) {
  struct Guard {
    BSTR text;
    ~Guard() { SysFreeString(text); }
  } const guard{text};
  return FromBstr(text);
}

BSTR NewBstr(std::wstring_view text) {
  BSTR result = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (!result) throw std::bad_alloc();
  return result;
}

std::wstring FromUtf8(std::string_view text) {
  // A character never takes more units in UTF-16 than bytes in UTF-8: the length need not be asked for.
  std::wstring result(text.size(), L'\0');
  const int size = static_cast<int>(text.size());
  if (size > 0)
    result.resize(
        static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), size)));
  return result;
}

std::string ToUtf8(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  std::string result(
      static_cast<size_t>(
          size ? WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr) : 0),
      '\0');
  if (!result.empty())
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), static_cast<int>(result.size()),
                        nullptr, nullptr);
  return result;
}

std::wstring Lower(std::wstring_view text) {
  std::wstring result(text);
  CharLowerBuffW(result.data(), static_cast<DWORD>(result.size()));
  return result;
}

bool EqualsNoCase(std::wstring_view a, std::wstring_view b) {
  // Letters of either case are of one length, and most names that are not the same differ in theirs.
  if (a.size() != b.size()) return false;
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

} // namespace com
