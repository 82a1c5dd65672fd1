// Loader (TarnelResLoader.Loader): translates the system's Chinese source texts. What has no translation (the
// text, the resource file or the language) comes back as it is.
#pragma once

#include <string>

namespace standin {

class Loader {
 public:
  std::wstring ResFileBaseName() const { return baseName_; }
  void PutResFileBaseName(const std::wstring& value) { baseName_ = value; }
  std::wstring LanguageID() const { return language_; }
  void PutLanguageID(const std::wstring& value) { language_ = value; }
  std::wstring Translate(const std::wstring& text) const; // LoadString, which Windows has made a macro

 private:
  std::wstring baseName_;
  std::wstring language_;
};

} // namespace standin
