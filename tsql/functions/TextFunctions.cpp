#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "tsql/functions/FunctionCall.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/CodePage.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Currency.h"
#include "tsql/values/DateText.h"
#include "tsql/values/Errors.h"
#include "tsql/values/NameText.h"

namespace tsql {
namespace {

constexpr int64_t kMaxText = 8000;

// The character of ESCAPE, which may be the argument number `at`; 0 without it.
char32_t EscapeAt(const FunctionCall& call, int at) {
  if (call.Count() <= at) return 0;
  if (CharCount(call.Text(at)) != 1) Fail(506, {call.Text(at)});
  size_t start = 0;
  return NextChar(call.Text(at), start);
}

template <TrailingBlanks Blanks>
void Like(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const char32_t escape = EscapeAt(call, 2);
  call.ReturnInteger(MatchLike(call.Text(0), call.Text(1), escape, Blanks) ? 1 : 0);
}

// t_like_collated(collation, whether trailing blanks are ignored, text, pattern[, escape])
void LikeCollated(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const auto collation = static_cast<CollationId>(call.Integer(0));
  const TrailingBlanks blanks = call.Integer(1) != 0 ? TrailingBlanks::Ignored : TrailingBlanks::Kept;
  const char32_t escape = EscapeAt(call, 4);
  call.ReturnInteger(MatchLike(call.Text(2), call.Text(3), escape, blanks, collation) ? 1 : 0);
}

void Len(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  call.ReturnInteger(static_cast<int64_t>(CharCount(TrimTrailingBlanks(call.Text(0)))));
}

void DataLength(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  if (IsText(type) && !IsUnicode(type.id))
    return call.ReturnInteger(static_cast<int64_t>(PageSize(call.Text(0))));
  if (IsText(type)) {
    const std::string_view text = call.Text(0);
    // A character beyond 16 bits, which has four bytes in UTF-8, is two units of UTF-16.
    const auto isLong = [](char byte) { return static_cast<unsigned char>(byte) >= 0xF0; };
    const auto units =
        static_cast<int64_t>(CharCount(text)) + std::count_if(text.begin(), text.end(), isLong);
    return call.ReturnInteger(units * 2);
  }
  if (FamilyOf(type.id) == Family::Binary)
    return call.ReturnInteger(static_cast<int64_t>(call.Text(0).size()));
  call.ReturnInteger(StorageBytes(type));
}

// t_upper(text[, type]) and t_lower: a text in the code page keeps a letter whose other case the page lacks.
template <char32_t (*Map)(char32_t)>
void MapCase(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const bool inPage = call.Count() > 1 && !IsUnicode(call.TypeAt(1).id);
  const std::string_view text = call.Text(0);
  std::string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const char32_t character = NextChar(text, at);
    const char32_t mapped = Map(character);
    AppendChar(result, inPage && !IsInPage(mapped) ? character : mapped);
  }
  call.ReturnText(result);
}

void Reverse(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const std::string_view text = call.Text(0);
  std::vector<char32_t> characters;
  for (size_t at = 0; at < text.size();) characters.push_back(NextChar(text, at));
  std::reverse(characters.begin(), characters.end());
  std::string result;
  for (const char32_t character : characters) AppendChar(result, character);
  call.ReturnText(result);
}

void Left(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Integer(1) < 0) Fail(536, {"left"});
  const std::string_view text = call.Text(0);
  call.ReturnText(text.substr(0, CharOffset(text, static_cast<size_t>(call.Integer(1)))));
}

void Right(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Integer(1) < 0) Fail(536, {"right"});
  const std::string_view text = call.Text(0);
  const size_t count = CharCount(text);
  const size_t wanted = std::min(static_cast<size_t>(call.Integer(1)), count);
  call.ReturnText(text.substr(CharOffset(text, count - wanted)));
}

void Substring(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Integer(2) < 0) Fail(537, {});
  // Positions before the first character count, but no character stands there.
  const int64_t end = call.Integer(1) + call.Integer(2);
  const int64_t begin = std::max<int64_t>(call.Integer(1), 1);
  if (call.IsBlob(0)) {
    const std::string_view bytes = call.Text(0);
    const auto first = std::min(static_cast<size_t>(begin - 1), bytes.size());
    return call.ReturnBytes(end <= begin ? "" : bytes.substr(first, static_cast<size_t>(end - begin)));
  }
  if (end <= begin) return call.ReturnText("");
  const std::string_view text = call.Text(0);
  const std::string_view rest = text.substr(CharOffset(text, static_cast<size_t>(begin - 1)));
  call.ReturnText(rest.substr(0, CharOffset(rest, static_cast<size_t>(end - begin))));
}

// What does not fit into the type of the result, which is the last argument, is cut off.
void ReturnFitting(const FunctionCall& call, std::string text) {
  const Type type = call.TypeAt(call.Count() - 1);
  constexpr size_t kLimit = kMaxText;
  if (type.length >= 0 && text.size() > kLimit / 2)
    text.resize(IsUnicode(type.id) ? CharOffset(text, kLimit / 2) : PageOffset(text, kLimit));
  call.ReturnText(text);
}

// t_concat(text, text, ..., type)
void Concat(const FunctionCall& call) {
  std::string result;
  for (int i = 0; i + 1 < call.Count(); ++i)
    if (!call.IsNull(i)) result += call.Text(i);
  ReturnFitting(call, std::move(result));
}

// t_concat_ws(separator, text, text, ..., type): a null leaves no place between two separators.
void ConcatWithSeparator(const FunctionCall& call) {
  std::string result;
  bool isFirst = true;
  for (int i = 1; i + 1 < call.Count(); ++i) {
    if (call.IsNull(i)) continue;
    if (!isFirst && !call.IsNull(0)) result += call.Text(0);
    result += call.Text(i);
    isFirst = false;
  }
  ReturnFitting(call, std::move(result));
}

std::vector<char32_t> CharactersOf(std::string_view text) {
  std::vector<char32_t> characters;
  for (size_t at = 0; at < text.size();) characters.push_back(NextChar(text, at));
  return characters;
}

// All collations that tell cases apart take the same characters for equal.
template <CollationId Collation>
char32_t Comparable(char32_t character) {
  return Collation == CollationId::Default ? FoldChar(character) : character;
}

// t_trim(text, characters): without these at either end.
template <CollationId Collation = CollationId::Default>
void TrimCharacters(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  std::vector<char32_t> cut = CharactersOf(call.Text(1));
  std::transform(cut.begin(), cut.end(), cut.begin(), Comparable<Collation>);
  const std::vector<char32_t> text = CharactersOf(call.Text(0));
  const auto stays = [&cut](char32_t each) {
    return std::find(cut.begin(), cut.end(), Comparable<Collation>(each)) == cut.end();
  };
  const auto begin = std::find_if(text.begin(), text.end(), stays);
  const auto end = std::find_if(text.rbegin(), std::make_reverse_iterator(begin), stays).base();
  std::string result;
  std::for_each(begin, end, [&result](char32_t each) { AppendChar(result, each); });
  call.ReturnText(result);
}

// t_translate(text, from, to): each character of the second text becomes the one at its place in the third.
template <CollationId Collation = CollationId::Default>
void Translate(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  std::vector<char32_t> from = CharactersOf(call.Text(1));
  const std::vector<char32_t> to = CharactersOf(call.Text(2));
  if (from.size() != to.size()) Fail(9828, {});
  std::transform(from.begin(), from.end(), from.begin(), Comparable<Collation>);
  std::string result;
  for (const char32_t character : CharactersOf(call.Text(0))) {
    const auto found = std::find(from.begin(), from.end(), Comparable<Collation>(character));
    AppendChar(result, found == from.end() ? character : to[static_cast<size_t>(found - from.begin())]);
  }
  call.ReturnText(result);
}

// t_parsename(name, number): the parts are counted from the right.
void ParseNamePart(const FunctionCall& call) {
  constexpr size_t kMostParts = 4;
  if (call.AnyNull()) return call.ReturnNull();
  const std::optional<std::vector<std::string>> parts = NameParts(call.Text(0));
  const int64_t number = call.Integer(1);
  if (!parts || parts->size() > kMostParts || number < 1 || number > static_cast<int64_t>(parts->size()))
    return call.ReturnNull();
  const std::string& part = (*parts)[parts->size() - static_cast<size_t>(number)];
  if (part.empty()) return call.ReturnNull();
  call.ReturnText(part);
}

template <CollationId Collation = CollationId::Default>
void Replace(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const std::string_view text = call.Text(0);
  const std::string_view pattern = call.Text(1);
  if (pattern.empty()) return call.ReturnValue(0);
  std::string result;
  size_t start = 0;
  while (true) {
    size_t length = 0;
    const size_t found = FindText(text, pattern, start, length, Collation);
    if (found == std::string_view::npos) break;
    result += text.substr(start, found - start);
    result += call.Text(2);
    start = found + length;
  }
  result += text.substr(start);
  call.ReturnText(result);
}

template <CollationId Collation = CollationId::Default>
void CharIndex(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const std::string_view text = call.Text(1);
  const int64_t start = call.Count() > 2 ? std::max<int64_t>(call.Integer(2), 1) : 1;
  size_t length = 0;
  const size_t begin = CharOffset(text, static_cast<size_t>(start - 1));
  const size_t found = FindText(text, call.Text(0), begin, length, Collation);
  if (found == std::string_view::npos) return call.ReturnInteger(0);
  call.ReturnInteger(static_cast<int64_t>(CharCount(text.substr(0, found))) + 1);
}

// t_replicate(text, count[, type])
void Replicate(const FunctionCall& call) {
  if (call.AnyNull() || call.Integer(1) < 0) return call.ReturnNull();
  const std::string_view text = call.Text(0);
  const bool isUnicode = call.Count() > 2 && IsUnicode(call.TypeAt(2).id);
  const auto size = static_cast<int64_t>(isUnicode ? CharCount(text) * 2 : PageSize(text));
  std::string result;
  const int64_t most = size == 0 ? 0 : kMaxText / size;
  for (int64_t i = 0; i < std::min(call.Integer(1), most); ++i) result += text;
  call.ReturnText(result);
}

void Space(const FunctionCall& call) {
  if (call.IsNull(0) || call.Integer(0) < 0) return call.ReturnNull();
  call.ReturnText(std::string(static_cast<size_t>(std::min(call.Integer(0), kMaxText)), ' '));
}

void Stuff(const FunctionCall& call) {
  if (call.IsNull(0) || call.IsNull(1) || call.IsNull(2)) return call.ReturnNull();
  const std::string_view text = call.Text(0);
  const int64_t start = call.Integer(1);
  const int64_t length = call.Integer(2);
  if (start < 1 || length < 0 || start > static_cast<int64_t>(CharCount(text))) return call.ReturnNull();
  const size_t begin = CharOffset(text, static_cast<size_t>(start - 1));
  const size_t end = begin + CharOffset(text.substr(begin), static_cast<size_t>(length));
  std::string result(text.substr(0, begin));
  if (!call.IsNull(3)) result += call.Text(3);
  result += text.substr(end);
  call.ReturnText(result);
}

// t_char(number[, type]): a character of the code page that has one byte, or any of Unicode.
void Char(const FunctionCall& call) {
  const bool inPage = call.Count() > 1 && !IsUnicode(call.TypeAt(1).id);
  const int64_t last = inPage ? 0xFF : 0xFFFF;
  if (call.IsNull(0) || call.Integer(0) < 0 || call.Integer(0) > last) return call.ReturnNull();
  if (inPage && call.Integer(0) >= 0x80) Refuse("CHAR of a part of a character of the code page");
  std::string text;
  AppendChar(text, static_cast<char32_t>(call.Integer(0)));
  call.ReturnText(text);
}

void Unicode(const FunctionCall& call) {
  if (call.IsNull(0) || call.Text(0).empty()) return call.ReturnNull();
  size_t at = 0;
  call.ReturnInteger(static_cast<int64_t>(NextChar(call.Text(0), at)));
}

// The first byte that the text has in the code page.
void Ascii(const FunctionCall& call) {
  if (call.IsNull(0) || call.Text(0).empty()) return call.ReturnNull();
  const std::string_view text = call.Text(0);
  const std::string bytes = BytesOfText(text.substr(0, CharOffset(text, 1)), false);
  call.ReturnInteger(static_cast<unsigned char>(bytes[0]));
}

// t_binary_key(bytes): without the zeros at the end, which do not count in comparisons.
void BinaryKey(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const std::string_view bytes = call.Text(0);
  const size_t last = bytes.find_last_not_of('\0');
  call.ReturnBytes(bytes.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

// t_patindex(pattern, text): where a LIKE pattern matches first.
template <CollationId Collation = CollationId::Default>
void PatIndex(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  std::string_view pattern = call.Text(0);
  const std::string_view text = call.Text(1);
  const auto matches = [&pattern](std::string_view rest) {
    return MatchLike(rest, pattern, 0, TrailingBlanks::Kept, Collation);
  };
  if (!pattern.starts_with('%')) return call.ReturnInteger(matches(text) ? 1 : 0);
  while (pattern.starts_with('%')) pattern.remove_prefix(1);
  int64_t position = 1;
  for (size_t at = 0; at < text.size() || position == 1; ++position) {
    if (matches(text.substr(at))) return call.ReturnInteger(position);
    if (at < text.size()) NextChar(text, at);
  }
  call.ReturnInteger(0);
}

// t_quotename(name[, mark]): the name between two marks, of which the first or the second may be given. The
// second one within the name is doubled.
void QuoteNameText(const FunctionCall& call) {
  constexpr size_t kMaxName = 128;
  constexpr std::string_view kPairs[] = {"[]", "()", "<>", "{}", "''", "\"\"", "``"};
  if (call.AnyNull() || CharCount(call.Text(0)) > kMaxName) return call.ReturnNull();
  const std::string_view mark = call.Count() > 1 ? call.Text(1).substr(0, 1) : "[";
  const auto* pair = std::find_if(std::begin(kPairs), std::end(kPairs), [mark](std::string_view each) {
    return !mark.empty() && each.find(mark) != std::string_view::npos;
  });
  if (pair == std::end(kPairs)) return call.ReturnNull();
  const char close = (*pair)[1];
  std::string result(1, (*pair)[0]);
  for (const char character : call.Text(0)) {
    if (character == close) result += close;
    result += character;
  }
  call.ReturnText(result + close);
}

void Str(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  constexpr int64_t kMaxDecimals = 16;
  const int64_t length = call.Count() > 1 ? call.Integer(1) : 10;
  const int64_t decimals = call.Count() > 2 ? call.Integer(2) : 0;
  if (length < 0 || length > kMaxText || decimals < 0) return call.ReturnNull();
  std::array<char, 400> buffer{};
  const auto print = [&](int64_t digits) {
    // Halves round away from zero, which printf would round to even.
    const double power = std::pow(10.0, static_cast<double>(digits));
    const double rounded = std::round(call.Real(0) * power) / power;
    const int size = std::snprintf(buffer.data(), buffer.size(), "%.*f", static_cast<int>(digits),
                                   std::isfinite(rounded) ? rounded : call.Real(0));
    return std::string(buffer.data(), static_cast<size_t>(size));
  };
  std::string text = print(std::min(decimals, kMaxDecimals));
  const auto width = static_cast<size_t>(length);
  // Decimals are left out until the number fits. Its whole part is never shortened.
  for (int64_t digits = std::min(decimals, kMaxDecimals); text.size() > width && digits > 0;)
    text = print(--digits);
  if (text.size() > width) return call.ReturnText(std::string(width, '*'));
  call.ReturnText(std::string(width - text.size(), ' ') + text);
}

bool TakeSign(std::string_view& text) {
  if (!text.starts_with('+') && !text.starts_with('-')) return false;
  text.remove_prefix(1);
  return true;
}

// Whether the text can become some number. The server says so of signs and points without digits too.
void IsNumericText(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnInteger(0);
  std::string_view text = TrimTrailingBlanks(call.Text(0));
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  if (text.empty()) return call.ReturnInteger(0);
  const bool isSigned = TakeSign(text);
  const bool isMoney = TakeCurrency(text);
  if (isMoney && !isSigned) TakeSign(text);
  const bool isAmount = text.find_first_not_of("0123456789.,") == std::string_view::npos &&
                        std::count(text.begin(), text.end(), '.') <= 1;
  if (isAmount || isMoney) return call.ReturnInteger(isAmount ? 1 : 0);
  // What is left to be is a float; the names of infinity and the like are none.
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool startsWell = text.front() == '.' || (text.front() >= '0' && text.front() <= '9');
  call.ReturnInteger(startsWell && error == std::errc() && end == text.data() + text.size() ? 1 : 0);
}

void IsDateText(const FunctionCall& call) {
  int64_t ticks = 0;
  const bool isDate = !call.IsNull(0) &&
                      ParseDateTime(call.Text(0), TypeId::DateTime, 0, ticks) == DateParse::Ok &&
                      IsInRange(TypeId::DateTime, ticks) && !TrimTrailingBlanks(call.Text(0)).empty();
  call.ReturnInteger(isDate ? 1 : 0);
}

} // namespace

void RegisterTextFunctions(sqlite3* connection, FunctionContext& context) {
  Register<Like<TrailingBlanks::Kept>>(connection, context, names::kLike, -1);
  Register<Like<TrailingBlanks::Ignored>>(connection, context, names::kLikePadded, -1);
  Register<LikeCollated>(connection, context, names::kLikeCollated, -1);
  Register<Len>(connection, context, names::kLen, 1);
  Register<DataLength>(connection, context, names::kDataLength, 2);
  Register<MapCase<UpperChar>>(connection, context, names::kUpper, -1);
  Register<MapCase<FoldChar>>(connection, context, names::kLower, -1);
  Register<Reverse>(connection, context, names::kReverse, 1);
  Register<Left>(connection, context, names::kLeft, 2);
  Register<Right>(connection, context, names::kRight, 2);
  Register<Substring>(connection, context, names::kSubstring, 3);
  Register<Concat>(connection, context, names::kConcat, -1);
  Register<ConcatWithSeparator>(connection, context, names::kConcatWithSeparator, -1);
  constexpr CollationId kExact = CollationId::Binary;
  Register<TrimCharacters<>>(connection, context, names::kTrimCharacters, 2);
  Register<TrimCharacters<kExact>>(connection, context, names::kTrimExactly, 2);
  Register<Translate<>>(connection, context, names::kTranslate, 3);
  Register<Translate<kExact>>(connection, context, names::kTranslateExactly, 3);
  Register<ParseNamePart>(connection, context, names::kParseName, 2);
  Register<Replace<>>(connection, context, names::kReplace, 3);
  Register<Replace<kExact>>(connection, context, names::kReplaceExactly, 3);
  Register<CharIndex<>>(connection, context, names::kCharIndex, -1);
  Register<CharIndex<kExact>>(connection, context, names::kCharIndexExactly, -1);
  Register<Replicate>(connection, context, names::kReplicate, -1);
  Register<Space>(connection, context, names::kSpace, 1);
  Register<Stuff>(connection, context, names::kStuff, 4);
  Register<Char>(connection, context, names::kChar, -1);
  Register<BinaryKey>(connection, context, names::kBinaryKey, 1);
  Register<Ascii>(connection, context, names::kAscii, 1);
  Register<Unicode>(connection, context, names::kUnicode, 1);
  Register<PatIndex<>>(connection, context, names::kPatIndex, 2);
  Register<PatIndex<CollationId::CaseSensitive>>(connection, context, names::kPatIndexCased, 2);
  Register<PatIndex<CollationId::Binary>>(connection, context, names::kPatIndexBinary, 2);
  Register<QuoteNameText>(connection, context, names::kQuoteName, -1);
  Register<Str>(connection, context, names::kStr, -1);
  Register<IsNumericText>(connection, context, names::kIsNumeric, 1);
  Register<IsDateText>(connection, context, names::kIsDate, 1);
}

} // namespace tsql
