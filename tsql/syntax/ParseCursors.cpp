#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {

CursorName Parser::ParseCursorName() {
  CursorName cursor;
  cursor.isGlobal =
      IsWord("global") && (IsNameAt(1) || Next().kind == TokenKind::Variable) && TakeWord("global");
  cursor.name = Current().kind == TokenKind::Variable ? TakeVariable() : TakeName();
  return cursor;
}

// From the words before CURSOR on.
StatementPtr Parser::ParseDeclareCursor(size_t start, CursorName cursor) {
  auto statement = MakeStatement<DeclareCursorStatement>(start);
  statement->cursor = std::move(cursor);
  // Words of the standard's form stand in front, those of the server's own behind.
  const bool isInsensitive = TakeWord("insensitive");
  const bool scrolls = TakeWord("scroll");
  ExpectWord("cursor");
  statement->isReadOnly = isInsensitive;
  statement->isCounted = isInsensitive;
  statement->scrolls = scrolls;
  if (!isInsensitive && !scrolls) ParseCursorOptions(*statement);
  ExpectWord("for");
  statement->query = ParseQuery();
  if (!TakeWord("for")) return statement;
  if (TakeWord("read")) {
    ExpectWord("only");
    statement->isReadOnly = true;
    return statement;
  }
  const int line = Current().line;
  ExpectWord("update");
  if (TakeWord("of")) {
    do TakeName();
    while (TakeSymbol(","));
  }
  if (statement->isReadOnly) Fail(1048, {"READ_ONLY", "FOR UPDATE"}, line);
  return statement;
}

void Parser::ParseCursorOptions(DeclareCursorStatement& cursor) {
  std::string_view forwards; // the word that says so
  std::string_view type;
  while (!IsWord("for")) {
    const Token& token = Current();
    if (token.kind != TokenKind::Word) SyntaxError();
    const auto set = [&](std::string_view& kind, std::string_view word) {
      if (!kind.empty() && kind != word) Fail(1048, {kind, word}, token.line);
      kind = word;
    };
    if (TakeWord("local")) {
      cursor.isLocal = true;
    } else if (TakeWord("global")) {
      cursor.isLocal = false;
    } else if (TakeWord("forward_only")) {
      set(forwards, "FORWARD_ONLY");
    } else if (TakeWord("scroll")) {
      set(forwards, "SCROLL");
    } else if (TakeWord("static")) {
      set(type, "STATIC");
    } else if (TakeWord("keyset")) {
      set(type, "KEYSET");
    } else if (TakeWord("dynamic")) {
      set(type, "DYNAMIC");
    } else if (TakeWord("fast_forward")) {
      set(type, "FAST_FORWARD");
    } else if (TakeWord("read_only")) {
      cursor.isReadOnly = true;
    } else if (!TakeWord("scroll_locks") && !TakeWord("optimistic") && !TakeWord("type_warning")) {
      SyntaxError();
    }
    if (type == "FAST_FORWARD" && forwards == "SCROLL") Fail(1048, {"FAST_FORWARD", "SCROLL"}, token.line);
  }
  const bool isFast = type == "FAST_FORWARD";
  cursor.isCounted = type == "STATIC" || type == "KEYSET";
  cursor.isDynamic = type == "DYNAMIC";
  cursor.isReadOnly = cursor.isReadOnly || isFast || type == "STATIC";
  // One whose kind is named scrolls, unless it is said not to.
  cursor.scrolls = forwards == "SCROLL" || (forwards.empty() && !type.empty() && !isFast);
}

StatementPtr Parser::ParseCursor() {
  auto statement = MakeStatement<CursorStatement>(at_);
  statement->action = IsWord("open")    ? CursorAction::Open
                      : IsWord("close") ? CursorAction::Close
                                        : CursorAction::Deallocate;
  ++at_;
  statement->cursor = ParseCursorName();
  return statement;
}

StatementPtr Parser::ParseFetch() {
  struct Entry {
    const char* word;
    FetchKind kind;
  };
  constexpr Entry kKinds[] = {{"next", FetchKind::Next},         {"prior", FetchKind::Prior},
                              {"first", FetchKind::First},       {"last", FetchKind::Last},
                              {"absolute", FetchKind::Absolute}, {"relative", FetchKind::Relative}};
  auto statement = MakeStatement<FetchStatement>(at_);
  ExpectWord("fetch");
  // A cursor may have such a name too.
  const bool isKind = !IsWordAt(1, "into") && Next().kind != TokenKind::End && !IsSymbolAt(1, ";");
  bool hasKind = false;
  for (const Entry& entry : kKinds) {
    if (hasKind || !isKind || !TakeWord(entry.word)) continue;
    statement->fetch = entry.kind;
    hasKind = true;
  }
  if (statement->fetch == FetchKind::Absolute || statement->fetch == FetchKind::Relative)
    statement->row = ParseExpression();
  if (!TakeWord("from") && hasKind) ExpectWord("from");
  statement->cursor = ParseCursorName();
  if (TakeWord("into")) {
    do statement->into.push_back(TakeVariable());
    while (TakeSymbol(","));
  }
  return statement;
}

} // namespace tsql
