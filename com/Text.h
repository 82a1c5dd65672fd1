// Conversions between BSTR, UTF-16 and UTF-8 strings, and comparison without case.
#pragma once

#include <oaidl.h>

#include <string>
#include <string_view>

namespace com {

// A copy of `text` (null is the empty string).
std::wstring FromBstr(BSTR text);
// As FromBstr, and frees `text`.
std::wstring TakeBstr(BSTR text);
// Throws std::bad_alloc. The caller owns the result.
BSTR NewBstr(std::wstring_view text);

// Ill-formed input becomes U+FFFD.
std::wstring FromUtf8(std::string_view text);
std::string ToUtf8(std::wstring_view text);

std::wstring Lower(std::wstring_view text);
bool EqualsNoCase(std::wstring_view a, std::wstring_view b);

} // namespace com
