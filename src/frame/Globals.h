// The component's global module: services that all classes share.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "com/Object.h"
#include "com/Variant.h"
#include "src/frame/Ado.h"
#include "src/frame/Frame.h"

namespace mbom {

// The value of `key` in the connection descriptor `sDsn` (key=value pairs separated by ";"). The key is
// searched as a plain text without case, so XLanguage=en answers for Language. An absent key, or a value that
// is all blanks, gives "cht"; any other value comes untrimmed. Never fails.
std::wstring GetDsnValue(const std::wstring& sDsn, const std::wstring& key);

// Blanks that LoadResText supplies around an English text where there are none.
enum class Spacing : int16_t { None = 0, Leading = 1, Trailing = 2, Both = 3 };

// The text for the Chinese source text `text` in `language` ("chs", "cht", "en"), from the resource loader.
// Blanks around the source text are kept. A compound text is made of pieces separated by "^|^"; those that
// begin with "~$~" are translated, the others stand as they are. A failing loader gives an empty text; the
// error that is pending on the thread stays as it was.
std::wstring LoadResText(const std::wstring& text, const std::wstring& language,
                         Spacing spacing = Spacing::None);

// As LoadResText, with the markers %1, %2 … filled by `values` in their order (the foundation library's
// formatting). A failure of the formatting throws.
std::wstring LoadResTextFormat(const std::wstring& text, const std::wstring& language,
                               std::initializer_list<com::Variant> values);

// An object of the system's, from the base library's object factory. Failures throw.
com::Object CreateServerObject(const wchar_t* progId);

// The id of the user who called (QorvaneWoskBase.SecurityInfo, asked afresh each time). Failures throw.
int32_t GetCurrentUserId(const Frame& frame);

// FValue of the setting `key` of `category` in t_SystemProfile, as it comes; `fallback` when there is no such
// setting. Failures throw.
com::Variant ReadSystemProfile(const Frame& frame, const std::wstring& key, const std::wstring& category,
                               const com::Variant& fallback = com::Variant(L""));

// The current row as a Dictionary, field name -> value in field order; empty when the recordset has no
// fields. At the end of the recordset every name is there, with Empty as its value.
com::Object RowToDictionary(const Recordset& recordset);

// All remaining rows as a Vector of Dictionary. The recordset is left at its end.
com::Object RecordsetToVector(const Recordset& recordset);

} // namespace mbom
