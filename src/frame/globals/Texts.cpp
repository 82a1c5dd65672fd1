#include "src/frame/globals/Texts.h"

#include "com/ComError.h"
#include "com/PendingError.h"
#include "src/frame/Convert.h"
#include "src/frame/OutsideNames.h"
#include "src/frame/ThreadState.h"

namespace mbom {
namespace {

using com::Object;
using com::Variant;

constexpr wchar_t kPieceSeparator[] = L"^|^";
constexpr wchar_t kTranslatedPiece[] = L"~$~";
constexpr size_t kMarkLength = 3;

const Object& LoaderFor(const std::wstring& language) {
  namespace names = outside::loader;
  const Object& loader = ResourceLoader();
  if (loader.Get(names::kResFileBaseName).AsText() != names::kBaseName)
    loader.Put(names::kResFileBaseName, names::kBaseName);
  if (loader.Get(names::kLanguageID).AsText() != language) loader.Put(names::kLanguageID, language);
  return loader;
}

std::wstring TranslateCompound(const std::wstring& text, const std::wstring& language) {
  std::wstring result;
  for (size_t start = 0;;) {
    const size_t end = text.find(kPieceSeparator, start);
    const std::wstring piece = text.substr(start, end == std::wstring::npos ? end : end - start);
    result += piece.starts_with(kTranslatedPiece) ? LoadResText(piece.substr(kMarkLength), language) : piece;
    if (end == std::wstring::npos) return result;
    start = end + kMarkLength;
  }
}

std::wstring Translate(const std::wstring& text, const std::wstring& language, Spacing spacing) {
  const Object& loader = LoaderFor(language);
  if (text.find(kPieceSeparator) != std::wstring::npos) return TranslateCompound(text, language);

  const std::wstring core = Trim(text);
  const size_t coreAt = text.find(core);
  std::wstring leading = text.substr(0, coreAt);
  std::wstring trailing = text.substr(coreAt + core.size());
  if (language == L"en") {
    const bool lead = spacing == Spacing::Leading || spacing == Spacing::Both;
    const bool trail = spacing == Spacing::Trailing || spacing == Spacing::Both;
    if (lead && leading.empty()) leading = L" ";
    if (trail && trailing.empty()) trailing = L" ";
  }
  return leading + loader.Call(outside::loader::kLoadString, core).AsText() + trailing;
}

} // namespace

std::wstring LoadResText(const std::wstring& text, const std::wstring& language, Spacing spacing) {
  const com::PendingError pending;
  try {
    return Translate(text, language, spacing);
  } catch (const com::ComError&) {
    return {};
  }
}

std::wstring LoadResTextFormat(const std::wstring& text, const std::wstring& language,
                               std::initializer_list<Variant> values) {
  const std::wstring translated = LoadResText(text, language);
  return FoundationGlobal()
      .Call(outside::foundation::kFormatText, translated, Variant::Array(values.begin(), values.size()))
      .AsText();
}

} // namespace mbom
