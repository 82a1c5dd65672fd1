// Turns the text of a batch into tokens. Comments and blanks disappear; texts and bracketed names come out
// without their delimiters and doublings. The last token is always End.
#pragma once

#include "tsql/tsql.h"

namespace tsql {

enum class TokenKind : uint8_t {
  Word,       // a keyword or a plain name
  QuotedName, // [name] or "name": never a keyword
  Variable,   // @name, @@name
  Text,
  UnicodeText,
  Integer,
  Decimal,
  Float,
  Money,
  Binary, // 0x...; the text holds the bytes
  Symbol,
  End,
};

struct Token {
  TokenKind kind = TokenKind::End;
  std::string text;
  std::string_view source; // as written
  int line = 1;
};

// The tokens hold views of `batch`. Before a text or comment that does not end, the tokens end, and `error`
// becomes 105 or 113; a syntax error in the tokens is reported instead of it.
std::vector<Token> Tokenize(std::string_view batch, std::optional<Error>& error);

// Whether a word is a keyword that cannot be a name. A syntax error at one is 156 instead of 102.
bool IsReserved(std::string_view word);

} // namespace tsql
