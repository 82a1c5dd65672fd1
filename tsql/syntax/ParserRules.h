// The recursive-descent parser behind Parser.h, shared by its source files: one method a grammar rule.
#pragma once

#include <initializer_list>

#include "tsql/syntax/Refusals.h"
#include "tsql/syntax/StatementTree.h"

namespace tsql {

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), tokens_(Tokenize(text, lexicalError_)) {}

  void ParseAll(Batch& batch);
  ExprPtr ParseExpression();
  ExprPtr ParseCondition();
  StatementPtr ParseStatement();

 private:
  friend ExprPtr ParseDefault(const std::string& text);
  friend ExprPtr ParseCheck(const std::string& text);

  // tokens (Parser.cpp)
  const Token& Current() const { return tokens_[at_]; }
  const Token& Next(size_t ahead = 1) const;
  bool IsWord(std::string_view word) const;
  bool IsWordAt(size_t ahead, std::string_view word) const;
  bool IsSymbol(std::string_view symbol) const;
  bool IsSymbolAt(size_t ahead, std::string_view symbol) const;
  bool IsName() const;
  bool IsNameAt(size_t ahead) const;
  bool IsAtEnd() const { return Current().kind == TokenKind::End; }
  bool TakeWord(std::string_view word);
  bool TakeSymbol(std::string_view symbol);
  void ExpectWord(std::string_view word);
  void ExpectSymbol(std::string_view symbol);
  std::string TakeName();
  std::string TakeVariable();
  std::string TakeAlias();
  std::string SourceFrom(size_t firstToken) const;
  [[noreturn]] void SyntaxError() const;
  [[noreturn]] void SyntaxErrorAt(size_t token) const;
  bool AreWordsAt(size_t ahead, std::string_view words) const; // in capitals, with blanks between them
  [[noreturn]] void RefuseHere(RefusedConstruct what) const { Refuse(what, Current().line); }
  void RefuseWords(RefusedKind kind) const; // where words of the list stand here

  // What is nested too deeply for the stack is refused with 191. A rule that calls itself counts its depth in
  // a Level. Chains of operators get deep without recursion, so expressions are measured as well.
  class Level {
   public:
    explicit Level(Parser& parser);
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --parser_.levels_; }

   private:
    Parser& parser_;
  };
  ExprPtr Measured(ExprPtr expr);
  void CountSources();

  // expressions (ParseExpressions.cpp)
  ExprPtr MakeExpr(ExprKind kind);
  ExprPtr ParseOr();
  ExprPtr ParseAnd();
  ExprPtr ParseNot();
  ExprPtr ParsePredicate();
  ExprPtr ParsePredicateTail(ExprPtr left);
  ExprPtr ParseComparison(ExprPtr left, CompareOp op);
  ExprPtr ParseIn(ExprPtr left, bool negated);
  ExprPtr ParseAdditive();
  ExprPtr ParseMultiplicative();
  ExprPtr ParseUnary();
  ExprPtr ParsePrimary();
  ExprPtr ParseOperand();
  void RefuseAfterOperand() const;
  std::unique_ptr<Query> ParseSubquery(Expr& owner);
  ExprPtr ParseParenthesis();
  ExprPtr ParseLiteral();
  ExprPtr ParseCase();
  ExprPtr ParseCast();
  ExprPtr ParseConvert();
  ExprPtr ParseCall();
  ExprPtr ParseColumn();
  ExprPtr RequirePredicate(ExprPtr expr);
  ExprPtr RequireScalar(ExprPtr expr);
  std::optional<CompareOp> TakeCompareOp();
  Type ParseType(int32_t defaultLength);
  std::pair<int, int> ParseTypeArguments(bool& given);

  // queries (ParseQueries.cpp)
  QueryPtr ParseQuery(); // with its CTEs and ORDER BY
  std::vector<CommonTable> ParseCommonTables();
  QueryPtr ParseSetOperations();
  QueryPtr ParseIntersections();
  QueryPtr ParseQueryTerm();
  std::unique_ptr<Select> ParseSelect();
  ExprPtr ParseTop();
  SelectItem ParseSelectItem();
  std::optional<SelectItem> ParseStar();
  std::vector<OrderItem> ParseOrderBy();
  TableSourcePtr ParseFrom();
  TableSourcePtr ParseJoins();
  TableSourcePtr ParseTablePrimary();
  TableSourcePtr ParseParenthesizedSource();
  void RefuseAfterSource() const;
  void RefuseAfterQuery() const;
  std::optional<JoinKind> TakeJoin();
  void ParseTableHints(TableSource& source);
  void ParseTableHint(TableSource& source);
  void ParseTableAlias(TableSource& source);
  ObjectName ParseTarget();
  ObjectName ParseObjectName();
  std::vector<std::string> ParseNameList();
  // With `endsHere` it counts only if the parentheses around it hold nothing else.
  bool StartsQuery(bool endsHere = false) const;
  size_t AfterParenthesis(size_t ahead) const;
  bool ContinuesQuery(size_t ahead) const;

  // changes (ParseChanges.cpp)
  StatementPtr ParseWith();
  StatementPtr ParseInsert();
  StatementPtr ParseUpdate();
  StatementPtr ParseDelete();
  ExprPtr ParseChangeCondition();
  Assignment ParseAssignment();
  ExprPtr CompoundValue(ExprPtr target);

  // statements (ParseStatements.cpp)
  StatementPtr ParseUnterminated();
  StatementPtr ParseControl();
  StatementPtr ParseQueryStatement();
  StatementPtr ParseDeclare();
  StatementPtr ParseSet();
  StatementPtr ParseSetOption();
  void ParseIsolationLevel();
  StatementPtr ParseIf();
  StatementPtr ParseWhile();
  StatementPtr ParseBegin();
  StatementPtr ParseTryCatch();
  StatementPtr ParseTransaction();
  StatementPtr ParseReturn();
  StatementPtr ParsePrint();
  StatementPtr ParseRaiserror();
  StatementPtr ParseThrow();
  StatementPtr ParseExecute();
  ExecuteArgument ParseExecuteArgument();
  void RefuseExecuteOption() const;
  StatementList ParseStatementsUntilEnd();
  template <typename Node>
  std::unique_ptr<Node> MakeStatement(size_t token);

  // definitions (ParseDefinitions.cpp)
  StatementPtr ParseCreate();
  StatementPtr ParseCreateTable(size_t start);
  StatementPtr ParseCreateIndex(size_t start);
  StatementPtr ParseCreateView(size_t start, bool alter);
  StatementPtr ParseCreateProcedure(size_t start, bool alter);
  ProcedureParameter ParseProcedureParameter();
  StatementPtr ParseAlter();
  StatementPtr ParseDrop();
  StatementPtr ParseTruncate();
  void ParseTableElement(std::vector<ColumnDefinition>& columns,
                         std::vector<ConstraintDefinition>& constraints);
  ColumnDefinition ParseColumn(std::vector<ConstraintDefinition>& constraints);
  bool ParseColumnProperty(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints);
  void ParseIdentity(ColumnDefinition& column);
  void ParseDefaultClause(ColumnDefinition& column);
  // With this error, where one stands between the token and here.
  void RefuseSubqueries(size_t firstToken, int error) const;
  ConstraintDefinition ParseConstraint(std::string name);
  std::vector<std::string> ParseKeyColumns(std::vector<bool>* descending);
  void SkipStorageOptions();
  void SkipOptionList();
  void SkipOption();
  [[noreturn]] void UnknownObject() const;
  void RefuseColumnProperty() const;
  void ParseCollation();

  std::string_view text_;
  std::optional<Error> lexicalError_; // behind the last token
  std::vector<Token> tokens_;
  size_t at_ = 0;
  uint32_t nodes_ = 0; // expressions and statements so far
  int markers_ = 0;
  int loops_ = 0; // open WHILE bodies
  int levels_ = 0;
  int deepest_ = 0;                   // depth of the deepest expression in the query that is parsed
  int sources_ = 0;                   // number of tables in the statement
  bool startsQueryStatement_ = false; // the next query is a statement
  bool isQueryStatement_ = false;     // the query that is parsed is a statement
  bool inProcedure_ = false;
};

template <typename Node>
std::unique_ptr<Node> Parser::MakeStatement(size_t token) {
  auto node = std::make_unique<Node>();
  node->line = tokens_[token].line;
  node->number = nodes_++;
  return node;
}

} // namespace tsql
