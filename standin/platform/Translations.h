// Translations: the translations of one language, a compiled gettext catalogue among the module's resources.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace standin {

// The catalogues' resource numbers, as in Catalogues.rc.
constexpr int kTraditionalChinese = 101;
constexpr int kEnglish = 102;

class Translations {
 public:
  // An empty catalogue when the module has no such resource.
  explicit Translations(int resource);

  // The translation of the UTF-8 text, valid as long as the module; empty when there is none.
  std::string_view Find(const std::string& source) const;

 private:
  uint32_t Number(size_t offset) const;
  std::string_view Text(size_t table, uint32_t index) const;

  std::string_view data_;
};

} // namespace standin
