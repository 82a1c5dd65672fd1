// The database's code page, kCodePage: simplified Chinese, as the server's collation Chinese_PRC has it. A
// char or varchar holds only characters of the page and counts its length in the page's bytes, one for a
// character of ASCII and two for a Chinese one. In storage such a text is UTF-8 like any other.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tsql {

// Such a text is the same in the page as in UTF-8.
bool IsAscii(std::string_view text);
bool IsInPage(char32_t character);

// How many bytes the text has in the page. What the page lacks counts as the question mark that it becomes.
size_t PageSize(std::string_view text);
// The byte position in UTF-8 behind the last character that fits into so many bytes of the page. A character
// is never cut in two.
size_t PageOffset(std::string_view text, size_t size);
// The text with a question mark for each unit of UTF-16 that the page lacks.
std::string KeepPage(std::string text);

// The bytes that the server would store for a text: those of the page, or UTF-16 with the low byte first.
std::string BytesOfText(std::string_view text, bool isUnicode);
// Bytes that are no character of the page become question marks.
std::string TextOfBytes(std::string_view bytes, bool isUnicode);

} // namespace tsql
