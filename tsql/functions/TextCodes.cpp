// Functions that give a text a shorter form by which texts are told apart: how it sounds, and its digest.
#include "tsql/functions/FunctionCall.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Digests.h"

namespace tsql {
namespace {

constexpr size_t kSoundexLength = 4;

// The digit of a letter: 0 of a vowel, a blank of H and W, which do not part letters of one digit.
char SoundexDigit(char letter) {
  constexpr std::string_view kDigits = "0123012 02245501262301 202";
  return kDigits[static_cast<size_t>(letter - 'A')];
}

// The first letter and the digits of those behind it. What is no letter ends the word.
std::string SoundexOf(std::string_view text) {
  std::string code;
  char last = 0;
  for (const char character : text) {
    const bool isSmall = character >= 'a' && character <= 'z';
    const char letter = isSmall ? static_cast<char>(character - 'a' + 'A') : character;
    if (letter < 'A' || letter > 'Z' || code.size() == kSoundexLength) break;
    const char digit = SoundexDigit(letter);
    if (code.empty()) {
      code += letter;
      last = digit;
    } else if (digit != ' ') {
      if (digit != '0' && digit != last) code += digit;
      last = digit;
    }
  }
  code.resize(kSoundexLength, '0');
  return code;
}

void Soundex(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnText(SoundexOf(call.Text(0)));
}

// How many characters the codes of two texts have in common.
void Difference(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const std::string left = SoundexOf(call.Text(0));
  const std::string right = SoundexOf(call.Text(1));
  int64_t same = 0;
  for (size_t i = 0; i < kSoundexLength; ++i) same += left[i] == right[i] ? 1 : 0;
  call.ReturnInteger(same);
}

void HashBytes(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const std::string_view name = TrimTrailingBlanks(call.Text(0));
  const std::string_view bytes = call.Text(1);
  if (EqualNames(name, "md5")) return call.ReturnBytes(Md5(bytes));
  if (EqualNames(name, "sha") || EqualNames(name, "sha1")) return call.ReturnBytes(Sha1(bytes));
  if (EqualNames(name, "sha2_256")) return call.ReturnBytes(Sha256(bytes));
  if (EqualNames(name, "sha2_512")) return call.ReturnBytes(Sha512(bytes));
  if (EqualNames(name, "md2") || EqualNames(name, "md4")) Refuse("HASHBYTES with MD2 or MD4");
  call.ReturnNull();
}

} // namespace

void RegisterTextCodes(sqlite3* connection, FunctionContext& context) {
  Register<Soundex>(connection, context, names::kSoundex, 1);
  Register<Difference>(connection, context, names::kDifference, 2);
  Register<HashBytes>(connection, context, names::kHashBytes, 2);
}

} // namespace tsql
