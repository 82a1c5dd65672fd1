// The connection descriptor as all classes read it: key=value pairs separated by ";". MParse reads it in
// full.
#pragma once

#include <string>

namespace mbom {

// The value of `key` in the connection descriptor `sDsn` (key=value pairs separated by ";"). The key is
// searched as a plain text without case, so XLanguage=en answers for Language. An absent key, or a value that
// is all blanks, gives "cht"; any other value comes untrimmed. Never fails.
std::wstring GetDsnValue(const std::wstring& sDsn, const std::wstring& key);

} // namespace mbom
