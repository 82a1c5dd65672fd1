#include "standin/platform/Loader.h"

#include "com/DispatchObject.h"
#include "com/Text.h"
#include "standin/host/EventLog.h"
#include "standin/platform/Translations.h"

namespace standin {
namespace {

constexpr wchar_t kManufacture[] = L"TarnelManufacture";

} // namespace

std::wstring Loader::Translate(const std::wstring& text) const {
  Event(EventKind::LoadString, text);
  if (!com::EqualsNoCase(baseName_, kManufacture)) return text;
  int resource = 0;
  if (com::EqualsNoCase(language_, L"cht"))
    resource = kTraditionalChinese;
  else if (com::EqualsNoCase(language_, L"en"))
    resource = kEnglish;
  else
    return text;
  const std::string source = com::ToUtf8(text);
  const std::string_view translation = Translations(resource).Find(source);
  return translation.empty() ? text : com::FromUtf8(translation);
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Loader>() {
  using standin::Loader;
  static const DispatchTable table(
      IID_NULL, {
                    PropertyGet<&Loader::ResFileBaseName>(kNextId, L"ResFileBaseName"),
                    PropertyPut<&Loader::PutResFileBaseName>(kNextId, L"ResFileBaseName", {L"Value"}),
                    PropertyGet<&Loader::LanguageID>(kNextId, L"LanguageID"),
                    PropertyPut<&Loader::PutLanguageID>(kNextId, L"LanguageID", {L"Value"}),
                    Method<&Loader::Translate>(kNextId, L"LoadString", {L"Text"}),
                });
  return table;
}
