// Texts in the caller's language, from the resource loader: the Chinese source texts are the keys.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "com/Variant.h"
#include "src/frame/globals/Descriptor.h"

namespace mbom {

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

// The texts that one call needs, in the language of its connection descriptor.
class Texts {
 public:
  explicit Texts(const std::wstring& sDsn) : language_(GetDsnValue(sDsn, L"Language")) {}

  // As LoadResText: never fails, a failing loader gives an empty text.
  std::wstring operator()(const std::wstring& source) const { return LoadResText(source, language_); }

  // As LoadResTextFormat: a template with the markers %1, %2 … filled. A failure of the formatting throws.
  std::wstring operator()(const std::wstring& source, std::initializer_list<com::Variant> values) const {
    return LoadResTextFormat(source, language_, values);
  }

 private:
  std::wstring language_;
};

} // namespace mbom
