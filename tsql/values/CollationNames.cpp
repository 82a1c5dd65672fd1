#include "tsql/values/CollationNames.h"

#include <algorithm>
#include <span>
#include <vector>

namespace tsql {
namespace {

// Of the collations of Windows. No list says here which of them have which version.
constexpr std::string_view kDesignators[] = {
    "Albanian",
    "Arabic",
    "Assamese",
    "Azeri_Cyrillic",
    "Azeri_Latin",
    "Bashkir",
    "Bengali",
    "Bosnian_Cyrillic",
    "Bosnian_Latin",
    "Breton",
    "Chinese_Hong_Kong_Stroke",
    "Chinese_PRC",
    "Chinese_PRC_Stroke",
    "Chinese_Simplified_Pinyin",
    "Chinese_Simplified_Stroke_Order",
    "Chinese_Taiwan_Bopomofo",
    "Chinese_Taiwan_Stroke",
    "Chinese_Traditional_Bopomofo",
    "Chinese_Traditional_Pinyin",
    "Chinese_Traditional_Stroke_Count",
    "Chinese_Traditional_Stroke_Order",
    "Corsican",
    "Croatian",
    "Cyrillic_General",
    "Czech",
    "Danish_Greenlandic",
    "Danish_Norwegian",
    "Dari",
    "Divehi",
    "Estonian",
    "Finnish_Swedish",
    "French",
    "Frisian",
    "Georgian_Modern_Sort",
    "German_PhoneBook",
    "Greek",
    "Hebrew",
    "Hindi",
    "Hungarian",
    "Hungarian_Technical",
    "Icelandic",
    "Indic_General",
    "Japanese",
    "Japanese_Bushu_Kakusu",
    "Japanese_Unicode",
    "Japanese_XJIS",
    "Kazakh",
    "Khmer",
    "Korean",
    "Korean_Wansung",
    "Lao",
    "Latin1_General",
    "Latvian",
    "Lithuanian",
    "Macedonian_FYROM",
    "Maltese",
    "Maori",
    "Mapudungan",
    "Modern_Spanish",
    "Mohawk",
    "Nepali",
    "Norwegian",
    "Pashto",
    "Persian",
    "Polish",
    "Romanian",
    "Romansh",
    "Sami_Norway",
    "Sami_Sweden_Finland",
    "Serbian_Cyrillic",
    "Serbian_Latin",
    "Slovak",
    "Slovenian",
    "Syriac",
    "Tamazight",
    "Tatar",
    "Thai",
    "Tibetan",
    "Traditional_Spanish",
    "Turkish",
    "Turkmen",
    "Uighur",
    "Ukrainian",
    "Upper_Sorbian",
    "Urdu",
    "Uzbek_Latin",
    "Vietnamese",
    "Welsh",
    "Yakut",
};

// Of those that begin with SQL_.
constexpr std::string_view kSqlDesignators[] = {
    "1xCompat",
    "AltDiction",
    "AltDiction_Pref",
    "Croatian",
    "Czech",
    "Danish_Pref",
    "EBCDIC037",
    "EBCDIC273",
    "EBCDIC277",
    "EBCDIC278",
    "EBCDIC280",
    "EBCDIC284",
    "EBCDIC285",
    "EBCDIC297",
    "Estonian",
    "Hungarian",
    "Icelandic_Pref",
    "Latin1_General",
    "Latin1_General_Pref",
    "Latvian",
    "Lithuanian",
    "MixDiction",
    "Polish",
    "Romanian",
    "Scandinavian",
    "Scandinavian_Pref",
    "Slovak",
    "Slovenian",
    "SwedishPhone_Pref",
    "SwedishStd_Pref",
    "Ukrainian",
};

using Words = std::vector<std::string_view>;

Words SplitWords(std::string_view text) {
  Words words;
  while (true) {
    const size_t end = text.find('_');
    words.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return words;
    text.remove_prefix(end + 1);
  }
}

// The longest of the designators that the name begins with, and a "_" behind it; empty for none.
std::string_view FindDesignator(std::span<const std::string_view> designators, std::string_view name) {
  std::string_view longest;
  for (const std::string_view designator : designators) {
    const bool isStart = name.size() > designator.size() && name[designator.size()] == '_' &&
                         EqualNames(name.substr(0, designator.size()), designator);
    if (isStart && designator.size() > longest.size()) longest = designator;
  }
  return longest;
}

// A collation's name in its parts.
struct ParsedName {
  std::string name; // in the server's spelling
  CollationId id = CollationId::Default;
  bool ignoresAccents = false;
};

// Takes the word from the front of the others, if it is there.
bool TakeWord(Words& words, std::string_view word) {
  if (words.empty() || !EqualNames(words.front(), word)) return false;
  words.erase(words.begin());
  return true;
}

bool IsCodePage(std::string_view word) {
  return word.size() > 2 && EqualNames(word.substr(0, 2), "CP") &&
         std::ranges::all_of(word.substr(2), [](char digit) { return digit >= '0' && digit <= '9'; });
}

// Whether a collation tells widths and kinds of kana apart makes no difference here, and neither do versions.
bool ParseSuffix(Words words, bool isOfSql, ParsedName& parsed) {
  if (isOfSql) {
    if (words.empty() || !IsCodePage(words.front())) return false;
    words.erase(words.begin());
  } else {
    TakeWord(words, "90") || TakeWord(words, "100") || TakeWord(words, "140");
  }
  if (TakeWord(words, "BIN") || TakeWord(words, "BIN2")) {
    parsed.id = CollationId::Binary;
  } else {
    const bool isCased = TakeWord(words, "CS");
    if (!isCased && !TakeWord(words, "CI")) return false;
    if (isCased) parsed.id = CollationId::CaseSensitive;
    parsed.ignoresAccents = TakeWord(words, "AI");
    if (!parsed.ignoresAccents && !TakeWord(words, "AS")) return false;
    for (const std::string_view each : {"KS", "WS", "VSS", "SC"}) TakeWord(words, each);
  }
  if (!isOfSql) TakeWord(words, "UTF8");
  return words.empty();
}

std::optional<ParsedName> ParseName(std::string_view name) {
  constexpr std::string_view kSql = "SQL_";
  const bool isOfSql = EqualNames(name.substr(0, kSql.size()), kSql);
  if (isOfSql) name.remove_prefix(kSql.size());
  const std::string_view designator =
      isOfSql ? FindDesignator(kSqlDesignators, name) : FindDesignator(kDesignators, name);
  if (designator.empty()) return std::nullopt;
  const std::string_view suffix = name.substr(designator.size());
  ParsedName parsed;
  if (!ParseSuffix(SplitWords(suffix.substr(1)), isOfSql, parsed)) return std::nullopt;
  parsed.name = std::string(isOfSql ? kSql : "").append(designator).append(ToUpper(suffix));
  return parsed;
}

} // namespace

std::optional<NamedCollation> FindCollation(std::string_view name) {
  if (EqualNames(name, "database_default") || EqualNames(name, kDatabaseCollation)) return NamedCollation();
  std::optional<ParsedName> parsed = ParseName(name);
  if (!parsed || parsed->ignoresAccents) return std::nullopt;
  return NamedCollation{parsed->id, std::move(parsed->name)};
}

bool IgnoresAccents(std::string_view name) {
  const std::optional<ParsedName> parsed = ParseName(name);
  return parsed && parsed->ignoresAccents;
}

} // namespace tsql
