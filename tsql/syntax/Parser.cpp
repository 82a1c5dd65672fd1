#include "tsql/syntax/Parser.h"

#include <algorithm>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {

const Token& Parser::Next(size_t ahead) const {
  const size_t index = at_ + ahead;
  return index < tokens_.size() ? tokens_[index] : tokens_.back();
}

bool Parser::IsWordAt(size_t ahead, std::string_view word) const {
  const Token& token = Next(ahead);
  return token.kind == TokenKind::Word && token.text.size() == word.size() && EqualNames(token.text, word);
}

bool Parser::IsWord(std::string_view word) const {
  return IsWordAt(0, word);
}

bool Parser::IsSymbolAt(size_t ahead, std::string_view symbol) const {
  const Token& token = Next(ahead);
  return token.kind == TokenKind::Symbol && token.text == symbol;
}

bool Parser::IsSymbol(std::string_view symbol) const {
  return IsSymbolAt(0, symbol);
}

bool Parser::IsNameAt(size_t ahead) const {
  const Token& token = Next(ahead);
  return token.kind == TokenKind::QuotedName || (token.kind == TokenKind::Word && !IsReserved(token.text));
}

bool Parser::IsName() const {
  return IsNameAt(0);
}

bool Parser::TakeWord(std::string_view word) {
  if (!IsWord(word)) return false;
  ++at_;
  return true;
}

bool Parser::TakeSymbol(std::string_view symbol) {
  if (!IsSymbol(symbol)) return false;
  ++at_;
  return true;
}

void Parser::ExpectWord(std::string_view word) {
  if (!TakeWord(word)) SyntaxError();
}

void Parser::ExpectSymbol(std::string_view symbol) {
  if (!TakeSymbol(symbol)) SyntaxError();
}

std::string Parser::TakeName() {
  if (!IsName()) SyntaxError();
  return tokens_[at_++].text;
}

std::string Parser::TakeVariable() {
  if (Current().kind != TokenKind::Variable) SyntaxError();
  return tokens_[at_++].text;
}

std::string Parser::TakeAlias() {
  if (Current().kind == TokenKind::Text) return tokens_[at_++].text;
  return TakeName();
}

void Parser::SetOptions(const ParseOptions& options) {
  database_ = options.database;
  if (!options.quotedIdentifier) SetQuotedIdentifier(false);
}

bool Parser::IsOwnDatabase(const std::string& name) const {
  return !database_ || EqualNames(*database_, name);
}

void Parser::SetQuotedIdentifier(bool on) {
  for (size_t i = at_; i < tokens_.size(); ++i)
    if (tokens_[i].source.starts_with('"')) tokens_[i].kind = on ? TokenKind::QuotedName : TokenKind::Text;
}

// The catalog keeps a source without the options that it was read with, so texts come between single marks.
std::string Parser::SourceFrom(size_t firstToken) const {
  std::string source;
  const char* written = tokens_[firstToken].source.data();
  for (size_t i = firstToken; i < at_; ++i) {
    const Token& token = tokens_[i];
    source.append(written, token.source.data());
    const bool isText = token.kind == TokenKind::Text && token.source.starts_with('"');
    source += isText ? QuoteText(token.text) : std::string(token.source);
    written = token.source.data() + token.source.size();
  }
  return source;
}

void Parser::SyntaxError() const {
  SyntaxErrorAt(at_);
}

void Parser::SyntaxErrorAt(size_t token) const {
  if (tokens_[token].kind == TokenKind::End && lexicalError_) throw Error(*lexicalError_);
  // At the end of the batch the server names the last word it saw.
  const bool atEnd = tokens_[token].kind == TokenKind::End && token > 0;
  const Token& near = tokens_[atEnd ? token - 1 : token];
  const bool isText = near.kind == TokenKind::Text || near.kind == TokenKind::UnicodeText;
  const std::string text =
      isText || near.kind == TokenKind::QuotedName ? near.text : std::string(near.source);
  if (!atEnd && near.kind == TokenKind::Word && IsReserved(near.text)) Fail(156, {text}, near.line);
  Fail(102, {text}, near.line);
}

bool Parser::AreWordsAt(size_t ahead, std::string_view words) const {
  while (!words.empty()) {
    const size_t end = std::min(words.find(' '), words.size());
    if (!IsWordAt(ahead++, words.substr(0, end))) return false;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return true;
}

void Parser::RefuseWords(RefusedKind kind) const {
  for (const std::string_view name : RefusedNames(kind))
    if (AreWordsAt(0, name)) RefuseName(kind, name, Current().line);
}

Parser::Level::Level(Parser& parser) : parser_(parser) {
  constexpr int kMaxLevels = 400; // a pair of parentheses takes two
  if (++parser_.levels_ <= kMaxLevels) return;
  --parser_.levels_;
  Fail(191, {}, parser_.Current().line);
}

ExprPtr Parser::Measured(ExprPtr expr) {
  constexpr int kMaxDepth = 400;
  for (const ExprPtr& arg : expr->args) expr->depth = std::max(expr->depth, arg->depth + 1);
  deepest_ = std::max(deepest_, expr->depth);
  if (expr->depth > kMaxDepth) Fail(191, {}, Current().line);
  return expr;
}

void Parser::CountSources() {
  constexpr int kMaxSources = 256;
  if (++sources_ > kMaxSources) Fail(106, {std::to_string(kMaxSources)}, Current().line);
}

void Parser::ParseAll(Batch& batch) {
  while (true) {
    while (TakeSymbol(";")) {
    }
    if (IsAtEnd()) break;
    batch.statements.push_back(ParseStatement());
  }
  if (lexicalError_) throw Error(*lexicalError_);
  ResolveLabels();
  batch.markers = markers_;
  batch.quotedIdentifier = quotedIdentifier_;
}

std::unique_ptr<Batch> ParseBatch(std::string text, const ParseOptions& options) {
  auto batch = std::make_unique<Batch>();
  batch->text = std::move(text);
  Parser parser(batch->text);
  parser.SetOptions(options);
  parser.ParseAll(*batch);
  return batch;
}

std::unique_ptr<Batch> ParseModule(std::string text, const std::string& schema, const std::string& name,
                                   const ParseOptions& options) {
  auto batch = std::make_unique<Batch>();
  batch->text = std::move(text);
  Parser parser(batch->text);
  parser.SetOptions(options);
  parser.SetModule(schema, name);
  parser.ParseAll(*batch);
  return batch;
}

ExprPtr ParseDefault(const std::string& text) {
  return Parser(text).ParseExpression();
}

ExprPtr ParseCheck(const std::string& text) {
  return Parser(text).ParseCondition();
}

std::vector<ProcedureParameter> ParseParameters(const std::string& text) {
  return Parser(text).ParseParameterList();
}

QueryPtr ParseView(const std::string& text, const std::string& schema, const std::string& name,
                   const ParseOptions& options, std::vector<std::string>& columns) {
  const std::unique_ptr<Batch> batch = ParseModule(text, schema, name, options);
  auto& view = static_cast<CreateViewStatement&>(*batch->statements.front());
  columns = std::move(view.columns);
  return std::move(view.query);
}

} // namespace tsql
