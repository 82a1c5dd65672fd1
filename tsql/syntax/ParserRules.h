// The recursive-descent parser behind Parser.h, shared by its source files: one method a grammar rule.
#pragma once

#include <initializer_list>

#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/syntax/StatementTree.h"

namespace tsql {

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), tokens_(Tokenize(text, lexicalError_)) {}

  void SetOptions(const ParseOptions& options);

  // What is parsed is a module of this schema and name, whatever its text says.
  void SetModule(const std::string& schema, const std::string& name) {
    schema_ = schema;
    moduleName_ = name;
  }
  void ParseAll(Batch& batch);
  std::vector<ProcedureParameter> ParseParameterList();
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
  // What stands between double quotation marks is a name from here on if it is on, else a text.
  void SetQuotedIdentifier(bool on);
  bool IsOwnDatabase(const std::string& name) const;
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
  ExprPtr ParseDateEscape();
  ExprPtr ParseLiteral();
  ExprPtr ParseCase();
  ExprPtr ParseIif();
  ExprPtr ParseCast();
  ExprPtr ParseConvert();
  ExprPtr ParseCall();
  std::unique_ptr<Window> ParseOver();
  std::vector<OrderItem> ParseWithinGroup();
  Frame ParseFrame();
  FrameEdge ParseFrameEdge(int64_t& rows);
  ExprPtr ParseColumn();
  std::vector<ExprPtr> ParseFunctionArguments();
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
  // GROUP BY (ParseGrouping.cpp)
  using GroupingSets = std::vector<std::vector<size_t>>;
  void ParseGroupBy(Select& select);
  GroupingSets ParseGroupingItem(Select& select);
  GroupingSets ParseGroupingSets(Select& select);
  GroupingSets ParseGroupingSet(Select& select);
  std::vector<size_t> ParseGroupingElement(Select& select);
  size_t ParseGroupingExpression(Select& select);
  bool StartsGroupingConstruct() const;
  ExprPtr ParseTopCount();
  ExprPtr ParseChangeTop(bool& isPercent);
  void ParseTop(Select& select);
  void ParseOffset(Query& query);
  SelectItem ParseSelectItem();
  std::optional<SelectItem> ParseStar();
  std::vector<OrderItem> ParseOrderBy();
  TableSourcePtr ParseFrom();
  TableSourcePtr ParseJoins();
  TableSourcePtr ParseTablePrimary();
  // (ParsePivot.cpp)
  TableSourcePtr ParsePivoted();
  std::unique_ptr<Select> ParsePivot(TableSourcePtr source);
  std::unique_ptr<Select> ParseUnpivot(TableSourcePtr source);
  ExprPtr MakeColumn(std::vector<std::string> parts);
  ExprPtr MakeText(const std::string& text);
  TableSourcePtr ParseParenthesizedSource();
  TableSourcePtr ParseValuesSource();
  std::vector<std::vector<ExprPtr>> ParseRows();
  void RefuseAfterSource() const;
  void RefuseAfterQuery() const;
  void ParseQueryHints(int& maxRecursion);
  void ParseQueryHint(int& maxRecursion);
  std::optional<JoinKind> TakeJoin();
  void ParseTableHints(TableSource& source);
  void ParseTableHint(TableSource& source);
  void ParseTableAlias(TableSource& source);
  ObjectName ParseTarget();
  ObjectName ParseObjectName();
  ObjectName ParseDefinedName();
  ObjectName ParseModuleName(const char* kind);
  std::vector<std::string> ParseNameList();
  // With `endsHere` it counts only if the parentheses around it hold nothing else.
  bool StartsQuery(bool endsHere = false) const;
  size_t AfterParenthesis(size_t ahead) const;
  bool ContinuesQuery(size_t ahead) const;

  // changes (ParseChanges.cpp)
  StatementPtr ParseWith();
  StatementPtr ParseInsert();
  StatementPtr ParseInsertExecute(std::unique_ptr<InsertStatement> insert);
  StatementPtr ParseUpdate();
  std::vector<Assignment> ParseAssignments();
  StatementPtr ParseDelete();
  ExprPtr ParseChangeCondition(CursorName& currentOf, int& maxRecursion);
  OutputPtr ParseOutput();
  // Whether = or a compound such as += is there.
  bool IsAssignmentAt(size_t ahead) const;
  bool StartsColumnAssignment(size_t ahead) const;
  Assignment ParseAssignment();
  ExprPtr CompoundValue(ExprPtr target);

  // statements (ParseStatements.cpp)
  StatementPtr ParseUnterminated();
  StatementPtr ParseControl();
  StatementPtr ParseQueryStatement();
  StatementPtr ParseDeclare();
  StatementPtr ParseSet();
  StatementPtr ParseSetOption();
  StatementPtr ParseSwitches();
  void ParseOptionValue(SetOptionStatement& statement, const Token& name);
  bool ParseFixedOption(SetOptionStatement& statement);
  StatementPtr ParseCheckIdentity();
  StatementPtr ParseUse();
  StatementPtr ParsePermission();
  void ParsePermissionName(AdministrationStatement& statement);
  StatementPtr ParseUpdateStatistics();
  StatementPtr ParseCheckpoint();
  void ParseIsolationLevel(SetOptionStatement& statement);
  void ParseDurability();
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
  TableVariable ParseTableVariable(std::string name, int line);
  // cursors (ParseCursors.cpp)
  CursorName ParseCursorName();
  StatementPtr ParseDeclareCursor(size_t start, CursorName cursor);
  void ParseCursorOptions(DeclareCursorStatement& cursor);
  StatementPtr ParseCursor();
  StatementPtr ParseFetch();
  StatementPtr ParseLabel();
  StatementPtr ParseGoto();
  StatementPtr ParseWaitFor();
  // Finds the labels of the GOTO statements of the batch or procedure that ends here: 133, 1026.
  void ResolveLabels();
  ExecuteArgument ParseExecuteArgument();
  void ParseExecuteOption();
  StatementList ParseStatementsUntilEnd();
  // MERGE (ParseMerge.cpp)
  StatementPtr ParseMerge();
  TableSourcePtr ParseMergeTarget();
  TableSourcePtr ParseMergeSource();
  void ParseMergeAction(MergeStatement& statement);
  MergeMatch ParseMergeMatch();
  StatementPtr ParseMergeChange(const MergeStatement& statement, MergeMatch match);
  StatementPtr ParseMergeInsert(const MergeStatement& statement);

  template <typename Node>
  std::unique_ptr<Node> MakeStatement(size_t token);

  // definitions (ParseDefinitions.cpp)
  StatementPtr ParseCreate();
  StatementPtr ParseCreateTable(size_t start);
  StatementPtr ParseCreateIndex(size_t start);
  StatementPtr ParseModuleDefinition(size_t start, DefinitionForm form);
  StatementPtr ParseCreateView(size_t start, DefinitionForm form);
  StatementPtr ParseCreateProcedure(size_t start, DefinitionForm form);
  ProcedureParameter ParseProcedureParameter();
  StatementPtr ParseCreateFunction(size_t start, DefinitionForm form);
  void ParseFunctionOptions(CreateFunctionStatement& function);
  void ParseFunctionBody(CreateFunctionStatement& function);
  StatementPtr ParseAlter();
  StatementList ParseModuleBody();
  // triggers (ParseTriggers.cpp)
  StatementPtr ParseCreateTrigger(size_t start, DefinitionForm form);
  void ParseTriggerEvents(CreateTriggerStatement& trigger);
  void RefuseTriggerOfServer() const;
  StatementPtr ParseSwitchTriggers();
  std::unique_ptr<SwitchTriggersStatement> ParseTriggerSwitch(size_t start);
  ExprPtr ParseUpdatedColumn();
  // ALTER TABLE (ParseAlterTable.cpp)
  StatementPtr ParseAlterTable(size_t start);
  void ParseAlterAdd(AlterTableStatement& statement);
  void ParseDefaultFor(AlterTableStatement& statement);
  void ParseAlterColumn(AlterTableStatement& statement);
  void ParseAlterDrop(AlterTableStatement& statement);
  void ParseConstraintSwitch(AlterTableStatement& statement);
  StatementPtr ParseDrop();
  void ParseDroppedIndex(DropStatement& statement);
  StatementPtr ParseTruncate();
  // schemas (ParseSchemas.cpp)
  StatementPtr ParseCreateSchema(size_t start);
  StatementPtr ParseDropSchema(std::unique_ptr<DropStatement> statement);
  StatementPtr ParseAlterSchema(size_t start);
  void ParseTableElement(std::vector<ColumnDefinition>& columns,
                         std::vector<ConstraintDefinition>& constraints);
  ColumnDefinition ParseColumn(std::vector<ConstraintDefinition>& constraints);
  void ParseComputedColumn(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints);
  bool ParseColumnProperty(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints);
  void ParseIdentity(ColumnDefinition& column);
  // The two numbers of an identity column, which messages call by its name.
  IdentityDefinition ParseIdentityNumbers(const std::string& column);
  bool IsIdentityItem() const { return isQueryStatement_ && IsWord("identity") && IsSymbolAt(1, "("); }
  void ParseIdentityItem(SelectItem& item);
  void ParseDefaultClause(ColumnDefinition& column);
  // With this error, where one stands between the token and here.
  void RefuseSubqueries(size_t firstToken, int error) const;
  ConstraintDefinition ParseConstraint(std::string name);
  void ParseReferentialActions(ConstraintDefinition& constraint);
  std::vector<std::string> ParseKeyColumns(std::vector<bool>* descending);
  void SkipStorageOptions();
  bool StartsOldOption(size_t ahead) const;
  void SkipOldOptions();
  void SkipOptionList();
  void SkipOption();
  [[noreturn]] void UnknownObject() const;
  // 128 where it names a column; queries within it may.
  static void RefuseColumns(const Expr& expr);
  void SkipNotForReplication();
  void RefuseColumnProperty() const;
  NamedCollation ParseCollation();

  std::string_view text_;
  std::optional<std::string> schema_; // of the module that is parsed, where its text does not count
  std::string moduleName_;            // the same
  std::string home_;                  // of the names in it; empty for dbo
  std::optional<Error> lexicalError_; // behind the last token
  std::vector<Token> tokens_;
  std::optional<bool> quotedIdentifier_;     // what the batch has set
  std::optional<std::string_view> database_; // as in ParseOptions
  size_t at_ = 0;
  uint32_t nodes_ = 0; // expressions and statements so far
  int markers_ = 0;
  int loops_ = 0;   // open WHILE bodies
  int catches_ = 0; // open CATCH blocks
  int levels_ = 0;
  int deepest_ = 0;                   // depth of the deepest expression in the query that is parsed
  int sources_ = 0;                   // number of tables in the statement
  bool startsQueryStatement_ = false; // the next query is a statement
  bool isQueryStatement_ = false;     // the query that is parsed is a statement
  bool inProcedure_ = false;
  bool inModule_ = false;    // a procedure or trigger
  bool schemaBound_ = false; // a view or function WITH SCHEMABINDING
  bool inExists_ = false;
  bool inTableVariable_ = false;
  std::optional<FunctionKind> function_; // that is parsed
  // Labels and the jumps to them, each with the TRY and CATCH blocks that it stands in.
  struct Place {
    std::vector<int> blocks;
    int line = 1;
  };
  std::vector<std::pair<const LabelStatement*, Place>> labels_;
  std::vector<std::pair<GotoStatement*, Place>> gotos_;
  std::vector<int> tryBlocks_; // open ones, by number
  int lastTryBlock_ = 0;
};

template <typename Node>
std::unique_ptr<Node> Parser::MakeStatement(size_t token) {
  auto node = std::make_unique<Node>();
  node->line = tokens_[token].line;
  node->number = nodes_++;
  return node;
}

} // namespace tsql
