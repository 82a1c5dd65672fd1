#include "tsql/syntax/Lexer.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// The server's own list, in order. The formatter would give each word a line.
// clang-format off
constexpr std::string_view kReserved[] = {
    "add", "all", "alter", "and", "any", "as", "asc", "authorization", "backup", "begin", "between",
    "break", "browse", "bulk", "by", "cascade", "case", "check", "checkpoint", "close", "clustered",
    "coalesce", "collate", "column", "commit", "compute", "constraint", "contains", "containstable",
    "continue", "convert", "create", "cross", "current", "current_date", "current_time",
    "current_timestamp", "current_user", "cursor", "database", "dbcc", "deallocate", "declare", "default",
    "delete", "deny", "desc", "disk", "distinct", "distributed", "double", "drop", "dump", "else", "end",
    "errlvl", "escape", "except", "exec", "execute", "exists", "exit", "external", "fetch", "file",
    "fillfactor", "for", "foreign", "freetext", "freetexttable", "from", "full", "function", "goto",
    "grant", "group", "having", "holdlock", "identity", "identity_insert", "identitycol", "if", "in",
    "index", "inner", "insert", "intersect", "into", "is", "join", "key", "kill", "left", "like", "lineno",
    "load", "merge", "national", "nocheck", "nonclustered", "not", "null", "nullif", "of", "off", "offsets",
    "on", "open", "opendatasource", "openquery", "openrowset", "openxml", "option", "or", "order", "outer",
    "over", "percent", "pivot", "plan", "primary", "print", "proc", "procedure", "public",
    "raiserror", "read", "readtext", "reconfigure", "references", "replication", "restore", "restrict",
    "return", "revert", "revoke", "right", "rollback", "rowcount", "rowguidcol", "rule", "save", "schema",
    "securityaudit", "select", "semantickeyphrasetable", "semanticsimilaritydetailstable",
    "semanticsimilaritytable", "session_user", "set", "setuser", "shutdown", "some", "statistics",
    "system_user", "table", "tablesample", "textsize", "then", "to", "top", "tran", "transaction",
    "trigger", "truncate", "try_convert", "tsequal", "union", "unique", "unpivot", "update", "updatetext",
    "use", "user", "values", "varying", "view", "waitfor", "when", "where", "while", "with", "writetext",
};
// clang-format on
static_assert(std::is_sorted(std::begin(kReserved), std::end(kReserved)));

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '#' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool IsNamePart(char c) {
  return IsNameStart(c) || IsDigit(c) || c == '@' || c == '$';
}

int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  return (c | 0x20) - 'a' + 10;
}

class Lexer {
 public:
  explicit Lexer(std::string_view batch) : batch_(batch) {}

  std::vector<Token> Run(std::optional<Error>& error) {
    try {
      while (SkipSpace()) ReadToken();
    } catch (const Error& caught) {
      error = caught;
    }
    tokens_.push_back({TokenKind::End, {}, {}, line_});
    return std::move(tokens_);
  }

 private:
  char Peek(size_t ahead = 0) const { return at_ + ahead < batch_.size() ? batch_[at_ + ahead] : '\0'; }

  void Advance() {
    if (batch_[at_++] == '\n') ++line_;
  }

  bool SkipSpace() {
    while (at_ < batch_.size()) {
      if (Peek() == '-' && Peek(1) == '-') {
        while (at_ < batch_.size() && Peek() != '\n') ++at_;
      } else if (Peek() == '/' && Peek(1) == '*') {
        SkipBlockComment();
      } else if (static_cast<unsigned char>(Peek()) <= ' ') {
        Advance();
      } else if (batch_.substr(at_, 2) == "\xC2\xA0") {
        at_ += 2; // a no-break space, as word processors leave it
      } else {
        return true;
      }
    }
    return false;
  }

  void SkipBlockComment() {
    const int startLine = line_;
    int depth = 0; // block comments nest
    do {
      if (at_ >= batch_.size()) Fail(113, {}, startLine);
      if (Peek() == '/' && Peek(1) == '*') {
        ++depth;
        at_ += 2;
      } else if (Peek() == '*' && Peek(1) == '/') {
        --depth;
        at_ += 2;
      } else {
        Advance();
      }
    } while (depth > 0);
  }

  void ReadToken() {
    const size_t start = at_;
    Token token;
    token.line = line_;
    const char c = Peek();
    if (c == '\'') {
      token.kind = TokenKind::Text;
      token.text = ReadDelimited('\'');
    } else if ((c == 'N' || c == 'n') && Peek(1) == '\'') {
      ++at_;
      token.kind = TokenKind::UnicodeText;
      token.text = ReadDelimited('\'');
    } else if (c == '[' || c == '"') {
      token.kind = TokenKind::QuotedName;
      token.text = ReadDelimited(c == '[' ? ']' : '"');
    } else if (c == '@') {
      token.kind = TokenKind::Variable;
      token.text = ReadName();
    } else if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)))) {
      ReadNumber(token);
    } else if (c == '$' && (IsDigit(Peek(1)) || Peek(1) == '.')) {
      ++at_;
      ReadNumber(token);
      token.kind = TokenKind::Money;
    } else if (IsNameStart(c)) {
      token.kind = TokenKind::Word;
      token.text = ReadName();
    } else {
      token.kind = TokenKind::Symbol;
      token.text = ReadSymbol();
    }
    token.source = batch_.substr(start, at_ - start);
    if (token.text.size() > 128 && (token.kind == TokenKind::Word || token.kind == TokenKind::QuotedName))
      Fail(103, {token.text.substr(0, 128)}, token.line);
    tokens_.push_back(std::move(token));
  }

  std::string ReadName() {
    const size_t start = at_;
    while (at_ < batch_.size() && IsNamePart(batch_[at_])) ++at_;
    return std::string(batch_.substr(start, at_ - start));
  }

  // From the opening delimiter; a doubled closing delimiter stands for itself.
  std::string ReadDelimited(char close) {
    const int startLine = line_;
    ++at_;
    std::string text;
    while (true) {
      if (at_ >= batch_.size()) Fail(105, {text.substr(0, 128)}, startLine);
      if (Peek() == close) {
        if (Peek(1) != close) break;
        ++at_;
      }
      text.push_back(Peek());
      Advance();
    }
    ++at_;
    return text;
  }

  void ReadNumber(Token& token) {
    const size_t start = at_;
    if (Peek() == '0' && (Peek(1) == 'x' || Peek(1) == 'X')) {
      ReadBinary(token);
      return;
    }
    token.kind = TokenKind::Integer;
    while (IsDigit(Peek())) ++at_;
    if (Peek() == '.') {
      token.kind = TokenKind::Decimal;
      ++at_;
      while (IsDigit(Peek())) ++at_;
    }
    if (Peek() == 'e' || Peek() == 'E') {
      token.kind = TokenKind::Float;
      ++at_;
      if (Peek() == '+' || Peek() == '-') ++at_;
      while (IsDigit(Peek())) ++at_;
    }
    token.text = std::string(batch_.substr(start, at_ - start));
  }

  void ReadBinary(Token& token) {
    token.kind = TokenKind::Binary;
    at_ += 2;
    const size_t start = at_;
    while (IsHexDigit(Peek())) ++at_;
    std::string digits(batch_.substr(start, at_ - start));
    if (digits.size() % 2 != 0) digits.insert(0, 1, '0');
    for (size_t i = 0; i < digits.size(); i += 2)
      token.text.push_back(static_cast<char>(HexValue(digits[i]) * 16 + HexValue(digits[i + 1])));
  }

  std::string ReadSymbol() {
    constexpr std::array<std::string_view, 15> kPairs = {
        "<>", "!=", "<=", ">=", "!<", "!>", "+=", "-=", "*=", "/=", "%=", "::", "&=", "|=", "^="};
    const std::string_view pair = batch_.substr(at_, 2);
    const size_t length = std::find(kPairs.begin(), kPairs.end(), pair) != kPairs.end() ? 2 : 1;
    const std::string_view symbol = batch_.substr(at_, length);
    at_ += length;
    return std::string(symbol);
  }

  std::string_view batch_;
  size_t at_ = 0;
  int line_ = 1;
  std::vector<Token> tokens_;
};

} // namespace

std::vector<Token> Tokenize(std::string_view batch, std::optional<Error>& error) {
  return Lexer(batch).Run(error);
}

bool IsReserved(std::string_view word) {
  return std::binary_search(std::begin(kReserved), std::end(kReserved), ToLower(word));
}

} // namespace tsql
