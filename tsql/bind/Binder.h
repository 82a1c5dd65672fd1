// Resolves names against the catalog, gives every expression its T-SQL type by the server's precedence rules
// and makes every conversion explicit. Binding errors (207, 208, 209, 4104, 137 ...) are thrown without a
// line; whoever runs the statement adds its line.
#pragma once

#include <span>

#include "tsql/bind/BoundTree.h"
#include "tsql/syntax/StatementTree.h"

namespace tsql {

struct VariableInfo {
  std::string name;
  Type type;
};
int FindVariable(const std::vector<VariableInfo>& variables, std::string_view name); // -1 when absent

// The parts of a name with points between them, for messages.
std::string JoinParts(const std::vector<std::string>& parts);

// A table or view that a statement was bound to. The binding holds as long as the catalog gives the same
// definition for the name.
struct Dependency {
  ObjectName name;
  TablePtr table;
  ModulePtr view;
  ModulePtr function = nullptr;
};

// The SET options that decide what an expression means.
struct BindOptions {
  bool ansiNulls = true;
  bool concatNull = true; // CONCAT_NULL_YIELDS_NULL
  bool operator==(const BindOptions& other) const = default;
};

// Binds one statement or expression.
class Binder {
 public:
  Binder(const Catalog& catalog, const std::vector<VariableInfo>& variables, const std::vector<Type>& markers)
      : catalog_(catalog), variables_(variables), markers_(markers) {}

  BoundQueryPtr BindStatementQuery(const Query& query);
  BoundQueryPtr BindViewQuery(const Query& query);
  BoundExprPtr BindScalar(const Expr& expr);
  // The value converted as for a variable of the type.
  BoundExprPtr BindValueFor(const Expr& expr, const Type& type);
  BoundExprPtr BindCondition(const Expr& expr);
  // A CHECK condition and the expression of a computed column, which name only columns of the table.
  BoundExprPtr BindCheck(const Expr& expr, const TableInfo& table);
  BoundExprPtr BindComputed(const Expr& expr, const TableInfo& table);
  // The value of a column as it goes into a column of the type.
  BoundExprPtr BindConversion(const ColumnInfo& column, const Type& to) const;
  BoundInsert BindInsert(const InsertStatement& statement, bool identityInsert);
  BoundUpdate BindUpdate(const UpdateStatement& statement);
  BoundDelete BindDelete(const DeleteStatement& statement);
  // The rows that a MERGE joins, for its actions (SetMerged). Its target becomes `target`.
  BoundQueryPtr BindMerge(const MergeStatement& statement, TablePtr& target);
  // The query of a cursor. Behind its columns it has the number in SQLite of the row of each of `tables`,
  // which can be changed through the cursor.
  BoundQueryPtr BindCursorQuery(const Query& query, std::vector<TablePtr>& tables);
  // 208 or 1087 when there is no such table to be changed.
  void CheckTarget(const ObjectName& name) { RequireTable(name); }
  // The insert of one row of markers, which have the types of the binder's.
  BoundInsert BindInsertMarkers(const InsertExecuteStatement& statement, bool identityInsert);
  BoundExprPtr Assign(BoundExprPtr expr, const Type& to) const;

  // The names of all functions, in lower case.
  static std::vector<std::string_view> FunctionNames();

  // Names of tables that the batch itself will create: what has such a name now is not what the statement
  // will find, so they count as missing.
  void SetPending(const std::vector<ObjectName>& tables) { pending_ = &tables; }

  // The table variables that the unit declares. Before a unit runs they have a definition and no table. Those
  // of a batch or procedure are in the catalog while it runs; a function's unit has its own tables.
  enum class Variables : uint8_t { Declared, InCatalog, OfUnit };
  void SetTableVariables(const std::vector<TablePtr>& declared, Variables state) {
    tableVariables_ = &declared;
    variablesAre_ = state;
  }
  // What is bound belongs to a function, in which nothing outside may be changed.
  void SetInFunction(bool inFunction) { inFunction_ = inFunction; }
  // What is bound belongs to a trigger of the table or view, whose changed rows it sees as inserted and
  // deleted.
  void SetTrigger(const CreateTriggerStatement& trigger) { trigger_ = &trigger; }
  // What is bound belongs to a view or function (`kind`) of the name WITH SCHEMABINDING, which is made now.
  void SetSchemaBound(const char* kind, const std::string& name) {
    boundKind_ = kind;
    boundName_ = name;
  }
  // What is bound is an action of a MERGE; these are the columns of the rows that it joins.
  void SetMerged(const std::vector<Column>& columns) { merged_ = &columns; }
  // The query of an inline function.
  BoundQueryPtr BindFunctionQuery(const CreateFunctionStatement& function);
  void SetOptions(const BindOptions& options) { options_ = options; }
  // Changes are limited to the rows of SET ROWCOUNT.
  void SetLimited(bool isLimited) { isLimited_ = isLimited; }
  // Whether something was bound to a table variable that is not there yet.
  bool IsAhead() const { return isAhead_; }

  const std::vector<Dependency>& Dependencies() const { return dependencies_; }
  bool WantsUpdateLock() const { return wantsUpdateLock_; }

 private:
  struct ScopeColumn {
    std::string name;
    std::string sqlName;
    Type type;
    bool nullable = true;
    NamedCollation collation = {};
  };
  struct ScopeSource {
    int id = 0;
    std::string exposed;
    std::string schema; // of what is exposed under its own name; empty for dbo
    bool isAlias = false;
    bool isTable = false;
    bool needsPrefix = false; // as the columns of inserted and deleted do
    bool isFired = false;     // what a trigger sees
    const SystemView* system = nullptr;
    TablePtr table;
    std::vector<ScopeColumn> columns;
  };
  // What a query with grouping sets takes from its groups: they are made in a query of their own, whose
  // columns stand in place of the expressions of GROUP BY and of the aggregates.
  struct Grouping {
    std::vector<ExprKind> kinds; // of the expressions of GROUP BY
    std::vector<uint32_t> sets;
    int rows = 0;                  // the source that is grouped
    int groups = 0;                // the source that is made of it
    int error = 8120;              // where a column is not grouped
    std::vector<BoundItem> taken;  // what the aggregates compute with
    std::vector<BoundItem> result; // aggregates, as columns of the groups behind the expressions
  };
  struct Scope {
    Scope* outer = nullptr;
    const std::vector<BoundExprPtr>* groupBy = nullptr;
    Grouping* grouping = nullptr; // while what is bound sees groups
    std::vector<ScopeSource> sources;
    bool aggregatesAllowed = false;
    bool inAggregate = false;
    bool hasAggregate = false;
    bool windowsAllowed = false;
    bool inWindow = false;
    bool hasWindow = false;
    bool inOutput = false;
    bool isUsed = false; // a column of its sources is used
  };
  struct CommonInfo {
    std::string name;
    int id = 0;
    std::vector<ScopeColumn> columns;
    int uses = 0;
    // While its own query is bound, where a use of the name is an error: which one.
    int misuse = 0;
  };
  struct Resolved {
    const ScopeSource* source = nullptr;
    const ScopeColumn* column = nullptr;
  };

  // names and conversions (Binder.cpp)
  Resolved Resolve(const std::vector<std::string>& parts) const;
  Resolved ResolveIn(const Scope& scope, const std::vector<std::string>& parts, bool& prefixFound) const;
  static void RefuseSystemColumn(const Scope& scope, const std::vector<std::string>& parts);
  static bool MatchesSource(const ScopeSource& source, const std::vector<std::string>& parts);
  BoundExprPtr MakeColumn(const ScopeSource& source, const ScopeColumn& column) const;
  BoundExprPtr Convert(BoundExprPtr expr, const Type& to) const; // implicit
  BoundExprPtr ConvertText(BoundExprPtr expr) const;             // to varchar when it is no text
  static Type CommonTypeOf(const std::vector<const BoundExpr*>& exprs);

  // expressions (BindExpressions.cpp)
  BoundExprPtr Bind(const Expr& expr);
  BoundExprPtr BindKind(const Expr& expr);
  BoundExprPtr BindOverTable(const Expr& expr, const TableInfo& table);
  BoundExprPtr BindCollate(const Expr& expr);
  // The collation that the operands are compared under goes to the first of them; 468 where there are two.
  static void UnifyCollations(const std::vector<BoundExpr*>& operands, std::string_view operation);
  // The collation of what the operation makes of the first and the other goes to the first.
  static void CombineCollations(BoundExpr& expr, const BoundExpr& other, std::string_view operation);
  static void InheritCollation(BoundExpr& expr);
  static std::string_view OperationOf(const BoundExpr& expr);
  // The error for a text without a collation where one is needed: by an operation, for a value of another
  // type, in a column of a clause.
  static void RequireCollation(const BoundExpr& expr, std::string_view operation);
  static void RequireCollation(const BoundExpr& expr, const Type& to);
  static void RequireCollation(const BoundExpr& expr, const char* clause, size_t position);
  BoundExprPtr BindLiteral(const Expr& expr) const;
  BoundExprPtr BindColumn(const Expr& expr);
  BoundExprPtr BindVariable(const Expr& expr);
  static BoundExprPtr BindConstantVariable(std::string_view name);
  BoundExprPtr BindMarker(const Expr& expr) const;
  BoundExprPtr BindArithmetic(const Expr& expr);
  static BoundExprPtr BindConcatenation(BoundExprPtr left, BoundExprPtr right); // of binary values
  BoundExprPtr BindDateArithmetic(ArithmeticOp op, BoundExprPtr left, BoundExprPtr right) const;
  BoundExprPtr BindNegation(const Expr& expr);
  BoundExprPtr BindComparison(const Expr& expr);
  BoundExprPtr Compare(BoundExprPtr left, BoundExprPtr right, CompareOp op);
  bool MeetsNulls(const Expr& expr) const;
  BoundExprPtr BindEquality(const Expr& left, const Expr& right);
  BoundExprPtr BindNullableList(const Expr& expr);
  BoundExprPtr TextOrEmpty(BoundExprPtr text) const;
  BoundExprPtr BindLogical(const Expr& expr, BoundExpr::Kind kind);
  BoundExprPtr BindLike(const Expr& expr);
  BoundExprPtr BindBetween(const Expr& expr);
  BoundExprPtr BindInList(const Expr& expr);
  BoundExprPtr BindInQuery(const Expr& expr);
  BoundExprPtr BindQuantified(const Expr& expr);
  BoundExprPtr BindSubquery(const Expr& expr);
  BoundExprPtr BindCase(const Expr& expr);
  BoundExprPtr BindCast(const Expr& expr);
  void CheckComparable(const BoundExpr& expr, const BoundExpr& other, const char* op) const;

  // functions: one method a rule that one or several functions follow
  // (BindFunctions.cpp)
  struct FunctionEntry {
    std::string_view name;
    FunctionId function;
    BoundExprPtr (Binder::*rule)(const Expr&, FunctionId);
  };
  static std::span<const FunctionEntry> FunctionTable();
  static std::optional<AggregateId> FindAggregate(std::string_view name);
  struct WindowEntry {
    std::string_view name;
    WindowId window;
    size_t least; // number of arguments
    size_t most;
    bool framed; // whether it may have a frame
  };
  static std::span<const WindowEntry> WindowTable();
  static const WindowEntry* FindWindowFunction(std::string_view name);
  BoundExprPtr BindCall(const Expr& expr);
  std::vector<BoundExprPtr> BindArguments(const Expr& expr, size_t least, size_t most);
  BoundExprPtr BindIsNull(const Expr& expr, FunctionId function);
  BoundExprPtr BindCoalesce(const Expr& expr, FunctionId function);
  BoundExprPtr BindNullIf(const Expr& expr, FunctionId function);
  BoundExprPtr BindChoose(const Expr& expr, FunctionId function);
  BoundExprPtr BindNewId(const Expr& expr, FunctionId function);
  BoundExprPtr BindObjectName(const Expr& expr, FunctionId function);
  BoundExprPtr BindProperty(const Expr& expr, FunctionId function);
  BoundExprPtr BindColumnName(const Expr& expr, FunctionId function);
  BoundExprPtr BindServerNumber(const Expr& expr, FunctionId function);
  BoundExprPtr BindServerName(const Expr& expr, FunctionId function);
  BoundExprPtr BindMembership(const Expr& expr, FunctionId function);
  BoundExprPtr BindSchemaName(const Expr& expr, FunctionId function);
  BoundExprPtr BindObjectSize(const Expr& expr, FunctionId function);
  BoundExprPtr BindIdentityNumber(const Expr& expr, FunctionId function);
  BoundExprPtr BindCursorStatus(const Expr& expr, FunctionId function);
  BoundExprPtr BindUpdated(const Expr& expr, FunctionId function);
  BoundExprPtr BindConstantFunction(const Expr& expr);
  // (BindAggregates.cpp)
  BoundExprPtr BindAggregate(const Expr& expr, AggregateId aggregate);
  BoundExprPtr BindAggregated(const Expr& argument);
  void EnterAggregate();
  BoundExprPtr BindStringAggregate(const Expr& expr);
  void CountColumns(const BoundExpr& expr, int& own, int& outer) const;
  BoundExprPtr MakeAggregate(const Expr& expr, AggregateId aggregate, BoundExprPtr arg) const;
  // (BindGroupingSets.cpp)
  static std::span<const std::string_view> GroupingFunctions();
  BoundExprPtr BindGrouping(const Expr& expr);
  void BindGroupBy(const Select& select, BoundSelect& bound, Grouping& grouping);
  // (BindPivot.cpp)
  void GroupByStar(const Select& select, BoundSelect& bound) const;
  void CheckUnpivoted(const SelectItem& star) const;
  // The column that stands for an expression of GROUP BY; null where it is none.
  BoundExprPtr FindKey(const Expr& expr);
  BoundExprPtr FindKey(const BoundExpr& expr, const Scope& scope) const;
  BoundExprPtr TakeGrouped(BoundExprPtr node);
  BoundExprPtr TakeResult(BoundExprPtr node) const;
  void SplitGroups(BoundSelect& bound, Grouping& grouping);
  // (BindWindows.cpp)
  BoundExprPtr BindWindow(const Expr& expr);
  BoundExprPtr BindWindowFunction(const Expr& expr);
  void BindOver(const Expr& expr, BoundExpr& node);
  BoundExprPtr AtLeast(BoundExprPtr count, int64_t least, int error, int nullError) const;
  // (BindTextFunctions.cpp)
  std::vector<BoundExprPtr> BindTextArguments(const Expr& expr, size_t least, size_t most);
  BoundExprPtr BindTextMeasure(const Expr& expr, FunctionId function);
  BoundExprPtr BindDataLength(const Expr& expr, FunctionId function);
  BoundExprPtr BindPatIndex(const Expr& expr, FunctionId function);
  BoundExprPtr BindCharIndex(const Expr& expr, FunctionId function);
  BoundExprPtr BindQuoteName(const Expr& expr, FunctionId function);
  BoundExprPtr BindConcat(const Expr& expr, FunctionId function);
  BoundExprPtr BindTextMap(const Expr& expr, FunctionId function);
  BoundExprPtr BindTrim(const Expr& expr, FunctionId function);
  BoundExprPtr BindTranslate(const Expr& expr, FunctionId function);
  BoundExprPtr BindSoundex(const Expr& expr, FunctionId function);
  BoundExprPtr BindHashBytes(const Expr& expr, FunctionId function);
  BoundExprPtr BindParseName(const Expr& expr, FunctionId function);
  BoundExprPtr BindTextEnd(const Expr& expr, FunctionId function);
  BoundExprPtr BindSubstring(const Expr& expr, FunctionId function);
  BoundExprPtr BindReplace(const Expr& expr, FunctionId function);
  BoundExprPtr BindReplicate(const Expr& expr, FunctionId function);
  BoundExprPtr BindStuff(const Expr& expr, FunctionId function);
  BoundExprPtr BindCharacter(const Expr& expr, FunctionId function);
  BoundExprPtr BindStr(const Expr& expr, FunctionId function);
  BoundExprPtr BindTextTest(const Expr& expr, FunctionId function);
  // (BindNumberFunctions.cpp)
  BoundExprPtr BindFloatFunction(const Expr& expr, FunctionId function);
  BoundExprPtr BindAngle(const Expr& expr, FunctionId function);
  BoundExprPtr BindRandom(const Expr& expr, FunctionId function);
  BoundExprPtr BindRounding(const Expr& expr, FunctionId function);
  // (BindDateFunctions.cpp)
  BoundExprPtr BindGetDate(const Expr& expr, FunctionId function);
  BoundExprPtr BindCalendarPart(const Expr& expr, FunctionId function);
  BoundExprPtr BindDateFromParts(const Expr& expr, FunctionId function);
  BoundExprPtr BindEndOfMonth(const Expr& expr, FunctionId function);
  BoundExprPtr BindDateAdd(const Expr& expr, FunctionId function);
  BoundExprPtr BindDateDiff(const Expr& expr, FunctionId function);
  BoundExprPtr BindDatePart(const Expr& expr, FunctionId function);

  // (BindAssignedRows.cpp)
  BoundQueryPtr SortBeforeAssigning(BoundQueryPtr query);

  // queries (BindQueries.cpp)
  BoundQueryPtr BindQuery(const Query& query, bool isInner);
  BoundQueryPtr BindSetOperation(const Query& query);
  BoundQueryPtr LimitRows(BoundQueryPtr query);
  std::unique_ptr<BoundSelect> BindSelect(const Select& select, const std::vector<OrderItem>& orderBy,
                                          std::vector<BoundOrder>& order);
  BoundExprPtr BindTop(const Expr& expr);
  BoundExprPtr BindTopPercent(const Expr& expr);
  BoundExprPtr BindRowCount(const Expr& expr, int64_t least, int error, int typeError);
  BoundExprPtr BindWithoutRows(const Expr& expr);
  void BindItems(const Select& select, BoundSelect& bound);
  void ExpandStar(const SelectItem& item, BoundSelect& bound);
  void BindIdentityItem(const SelectItem& item, const Select& select, const BoundSelect& bound);
  // The identity column that the table of SELECT ... INTO has from the one of its source.
  void InheritIdentity(const Select& select, const BoundSelect& bound);
  void BindAssignmentItem(const SelectItem& item, BoundSelect& bound);
  void BindOrder(const std::vector<OrderItem>& orderBy, const BoundSelect& select,
                 std::vector<BoundOrder>& order);
  BoundOrder BindOrderItem(const OrderItem& item, size_t position, const BoundSelect& select);
  static int FindOutput(const std::vector<BoundItem>& items, const std::string& name);
  static void BindCompoundOrder(const std::vector<OrderItem>& orderBy, BoundQuery& query);
  void CheckGrouping(const BoundSelect& select, const std::vector<BoundOrder>& order) const;
  void CheckGrouped(const BoundExpr& expr, const BoundSelect& select, int error) const;
  void ConvertColumns(BoundQuery& query, const std::vector<Type>& types) const;
  static void UnifyColumns(BoundQuery& left, BoundQuery& right, SetOp op);
  static void RefreshColumns(BoundQuery& query);

  // functions of users (BindUserFunctions.cpp)
  struct Inlined;
  const CreateFunctionStatement& ParsedFunction(const ModulePtr& module, const ObjectName& name);
  static void CheckArgumentCount(const CreateFunctionStatement& function, size_t count);
  std::vector<BoundExprPtr> BindFunctionArguments(const CreateFunctionStatement& function,
                                                  const std::vector<ExprPtr>& args);
  BoundExprPtr BindUserCall(const Expr& expr);
  // Whether the source has used what an APPLY makes visible.
  static void MarkApplied(BoundSource& source, size_t columns, const Scope& scope, const Scope* visible);
  BoundSourcePtr BindFunctionSource(const TableSource& source, Scope& scope, Scope* visible);
  BoundSourcePtr BindSplit(const TableSource& source, Scope& scope, Scope* visible);
  BoundQueryPtr BindInlined(const CreateFunctionStatement& function, const TableSource& source, Scope* outer);
  BoundExprPtr BindInlinedParameter(const Expr& expr);

  // sources and common table expressions (BindSources.cpp)
  BoundSourcePtr BindSource(const TableSource& source, Scope& scope);
  BoundSourcePtr BindJoin(const TableSource& source, Scope& scope);
  BoundSourcePtr BindNamed(const TableSource& source, Scope& scope);
  // Whether the name means inserted or deleted here.
  bool IsFired(const ObjectName& name) const;
  void CheckSchemaBound(const ObjectName& name, const ModuleInfo* module) const;
  TablePtr TriggerTable();
  BoundSourcePtr BindFired(const TableSource& source, Scope& scope);
  BoundSourcePtr BindDerived(const TableSource& source, Scope& scope, Scope* visible);
  BoundSourcePtr BindValues(const TableSource& source, Scope& scope, Scope* visible);
  ScopeColumn UnifyValues(std::vector<std::vector<BoundExprPtr>>& rows, size_t column) const;
  BoundSourcePtr BindApplied(const TableSource& source, Scope& scope, size_t leftBegin);
  BoundSourcePtr BindView(const ModuleInfo& view, const TableSource& source, Scope& scope);
  void AddSource(Scope& scope, ScopeSource source) const;
  const TableSource* FindTargetSource(const TableSource& from, const ObjectName& name, bool byAlias) const;
  static std::vector<ScopeColumn> ColumnsOf(const BoundQuery& query, const std::vector<std::string>& aliases,
                                            const std::string& name, bool needNames);
  static std::vector<ScopeColumn> ColumnsOf(const TableInfo& table);
  void BindCommonTables(const std::vector<CommonTable>& tables, std::vector<BoundCommon>& bound);
  BoundCommon BindCommonTable(const CommonTable& table);
  bool BindRecursive(const CommonTable& table, BoundCommon& bound);
  static void CheckRecursive(const BoundQuery& member, const CommonInfo& common, BoundCommon& bound);
  const CommonInfo* FindCommon(const ObjectName& name) const;
  const CommonInfo* UseCommon(const ObjectName& name);

  // changes (BindChanges.cpp)
  bool IsPending(const ObjectName& name) const;
  TablePtr FindTable(const ObjectName& name);
  TablePtr FindTableVariable(const ObjectName& name);
  TablePtr RequireTable(const ObjectName& name);
  // The table, or a view with a trigger that stands for the change.
  TablePtr RequireTarget(const ObjectName& name, TriggerEvent event);
  ModulePtr FindTarget(const ObjectName& name, TriggerEvent event) const; // such a view, or null
  TablePtr ViewTable(const ModuleInfo& view);
  static std::vector<int> InsertColumns(const std::vector<std::string>& names, const TableInfo& table,
                                        bool identityInsert);
  void BindInsertRows(const InsertStatement& statement, BoundInsert& bound);
  void BindInsertQuery(const InsertStatement& statement, BoundInsert& bound);
  void AddDefaults(BoundInsert& bound);
  BoundExprPtr BindDefault(const TableInfo& table, int column);
  BoundExprPtr AssignColumn(BoundExprPtr expr, const TableInfo& table, int column) const;
  TablePtr BindTarget(const ObjectName& name, TriggerEvent event, const TableSource* from, Scope& scope,
                      BoundSourcePtr& source, int& target);
  BoundExprPtr BindChangeTop(const ExprPtr& top);
  void BindChangeLimit(const ExprPtr& top, bool isPercent, BoundChange& bound);
  // What BindTarget gives null for: a derived table, a common table expression or a view without triggers.
  // Makes the table that it selects from the target, and returns it.
  TablePtr BindThroughQuery(TriggerEvent event, const Scope& scope, std::vector<BoundCommon>& commons,
                            BoundSourcePtr& source, int& target);
  // What an INSERT into a view comes into. `names` are the view's columns that get values, none for all of
  // them, and become the table's.
  TablePtr InsertThrough(const InsertStatement& statement, const ModuleInfo& view,
                         std::vector<std::string>& names);
  static TablePtr ChangedTable(const BoundQuery& query, const std::string& name, TriggerEvent event);
  // The column of that table which a column of the query is; -1 for none.
  static int ChangedColumn(const BoundQuery& query, size_t index);
  static const BoundSource* FindSource(const BoundSource& tree, int id); // null when it is not in the tree
  int FindAssigned(const std::string& name, const TableInfo& table) const;
  static BoundExprPtr RowNumberOf(int source);
  static BoundExprPtr BindCurrentOf(int target);
  void BindAssignments(const UpdateStatement& statement, BoundUpdate& bound);
  // The value that is assigned; column += value reads the target's column, whoever else has one of the name.
  BoundExprPtr BindAssigned(const Assignment& assignment, const BoundUpdate& bound);
  BoundExprPtr AssignVariable(const std::string& name, BoundExprPtr value, BoundUpdate& bound) const;
  void JoinAssignments(std::vector<BoundExprPtr> variables, BoundUpdate& bound);
  // (BindMerge.cpp)
  BoundSourcePtr BindMerged(const TableSource& source, Scope& scope);
  static BoundExprPtr BindAction(int rows, int action);
  static BoundExprPtr BindMergedRow(int target, const BoundSource& from, int action);
  // (BindOutput.cpp)
  // `from` are the sources of the change, with the target in it.
  std::unique_ptr<BoundOutput> BindOutput(const OutputClause* clause, StatementKind kind,
                                          const TablePtr& table, int target, const Scope& from);
  void BindOutputInto(const OutputClause& clause, BoundOutput& output);
  static void StageOthers(BoundExpr& expr, int staging, const TableInfo& table,
                          std::vector<BoundExprPtr>& others);

  const Catalog& catalog_;
  const std::vector<VariableInfo>& variables_;
  const std::vector<Type>& markers_;
  const std::vector<ObjectName>* pending_ = nullptr;
  Scope* scope_ = nullptr;
  std::vector<CommonInfo> commons_;
  std::vector<Dependency> dependencies_;
  int nextSource_ = 0;
  int nextCommon_ = 0;
  int viewDepth_ = 0;
  int groupings_ = 0;                // how many scopes have grouping sets whose groups are seen
  int maxRecursion_ = kMaxRecursion; // of the statement
  // The query that an UPDATE or DELETE changes the rows of its table through: its columns, each with the
  // column of the table that it is, -1 for none.
  struct Through {
    int source = -1;
    std::string name;
    std::vector<std::pair<std::string, int>> columns;
  };
  std::optional<Through> through_;
  const Expr* ownColumn_ = nullptr;          // of a compound assignment: the column itself
  int ownSource_ = -1;                       // and whose it is
  std::optional<IntoIdentity> intoIdentity_; // of the SELECT ... INTO that is being bound
  bool isUnionInto_ = false;                 // a SELECT ... INTO of a UNION is bound
  bool wantsUpdateLock_ = false;
  const std::vector<TablePtr>* tableVariables_ = nullptr;
  Variables variablesAre_ = Variables::Declared;
  bool isAhead_ = false;
  BindOptions options_;
  const char* boundKind_ = nullptr; // of what SetSchemaBound has told
  std::string boundName_;
  bool isLimited_ = false;
  bool inFunction_ = false;
  bool inCheck_ = false;
  const CreateTriggerStatement* trigger_ = nullptr;
  const std::vector<Column>* merged_ = nullptr;   // of the MERGE whose action is bound
  const Inlined* inlined_ = nullptr;              // the inline function whose query is bound
  std::vector<std::unique_ptr<Batch>> functions_; // the trees of those that were met
};

} // namespace tsql
