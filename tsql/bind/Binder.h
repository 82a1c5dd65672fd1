// Resolves names against the catalog, gives every expression its T-SQL type by the server's precedence rules
// and makes every conversion explicit. Binding errors (207, 208, 209, 4104, 137 ...) are thrown without a
// line; the interpreter adds the statement's.
#pragma once

#include "tsql/bind/BoundTree.h"

namespace tsql {

struct VariableInfo {
  std::string name;
  Type type;
};
int FindVariable(const std::vector<VariableInfo>& variables, std::string_view name); // -1 when absent

// The server's global values that a batch may read, as BoundExpr::Kind::Global numbers them in `index`.
enum class GlobalValue : uint8_t {
  RowCount,
  Identity,
  ScopeIdentity,
  Error,
  TransactionCount,
  ErrorNumber,
  ErrorMessage,
  ErrorSeverity,
  ErrorState,
  ErrorLine,
  ErrorProcedure,
  ProcedureNesting,
};

// What a plan was bound to: it holds as long as the catalog answers the same.
struct Dependency {
  ObjectName name;
  TablePtr table;
  ModulePtr view;
};

class Binder {
 public:
  Binder(const Catalog& catalog, const std::vector<VariableInfo>& variables, const std::vector<Type>& markers)
      : catalog_(catalog), variables_(variables), markers_(markers) {}

  BoundQueryPtr BindStatementQuery(const Query& query);
  BoundExprPtr BindScalar(const Expr& expr);
  // Converted as for storing into a variable of the type.
  BoundExprPtr BindValueFor(const Expr& expr, const Type& type);
  BoundExprPtr BindCondition(const Expr& expr);
  // A CHECK condition: over the columns of the table alone, unqualified.
  BoundExprPtr BindCheck(const Expr& expr, const TableInfo& table);
  BoundInsert BindInsert(const InsertStatement& statement, bool identityInsert);
  BoundUpdate BindUpdate(const UpdateStatement& statement);
  BoundDelete BindDelete(const DeleteStatement& statement);
  BoundExprPtr Assign(BoundExprPtr expr, const Type& to) const;

  // Tables that the batch will have created by then: as good as missing before it runs.
  void SetPending(const std::vector<std::string>& tables) { pending_ = &tables; }

  const std::vector<Dependency>& Dependencies() const { return dependencies_; }
  bool WantsUpdateLock() const { return wantsUpdateLock_; }

 private:
  struct ScopeColumn {
    std::string name;
    std::string sqlName;
    Type type;
    bool nullable = true;
  };
  struct ScopeSource {
    int id = 0;
    std::string exposed;
    bool isAlias = false;
    bool isTable = false;
    TablePtr table;
    std::vector<ScopeColumn> columns;
  };
  struct Scope {
    Scope* outer = nullptr;
    std::vector<ScopeSource> sources;
    bool aggregatesAllowed = false;
    bool hasAggregate = false;
  };
  struct CommonInfo {
    std::string name;
    int id = 0;
    std::vector<ScopeColumn> columns;
    bool used = false;
  };
  struct Resolved {
    const ScopeSource* source = nullptr;
    const ScopeColumn* column = nullptr;
  };

  // expressions (binder.cpp)
  BoundExprPtr Bind(const Expr& expr);
  BoundExprPtr BindLiteral(const Expr& expr) const;
  BoundExprPtr BindColumn(const Expr& expr);
  BoundExprPtr BindVariable(const Expr& expr) const;
  BoundExprPtr BindMarker(const Expr& expr) const;
  BoundExprPtr BindArithmetic(const Expr& expr);
  BoundExprPtr BindDateArithmetic(ArithmeticOp op, BoundExprPtr left, BoundExprPtr right) const;
  BoundExprPtr BindNegation(const Expr& expr);
  BoundExprPtr BindComparison(const Expr& expr);
  BoundExprPtr BindLogical(const Expr& expr, BoundExpr::Kind kind);
  BoundExprPtr BindLike(const Expr& expr);
  BoundExprPtr BindBetween(const Expr& expr);
  BoundExprPtr BindInList(const Expr& expr);
  BoundExprPtr BindInQuery(const Expr& expr);
  BoundExprPtr BindSubquery(const Expr& expr);
  BoundExprPtr BindCase(const Expr& expr);
  BoundExprPtr BindCast(const Expr& expr);
  Resolved Resolve(const std::vector<std::string>& parts) const;
  Resolved ResolveIn(const Scope& scope, const std::vector<std::string>& parts, bool& prefixFound) const;
  static bool MatchesSource(const ScopeSource& source, const std::vector<std::string>& parts);
  BoundExprPtr MakeColumn(const ScopeSource& source, const ScopeColumn& column) const;
  BoundExprPtr Convert(BoundExprPtr expr, const Type& to) const; // implicit
  BoundExprPtr ConvertText(BoundExprPtr expr) const;             // to varchar when it is no text
  static Type CommonTypeOf(const std::vector<const BoundExpr*>& exprs);
  void CheckComparable(const BoundExpr& expr, const BoundExpr& other, const char* op) const;

  // functions (binder_functions.cpp)
  BoundExprPtr BindCall(const Expr& expr);
  BoundExprPtr BindAggregate(const Expr& expr);
  BoundExprPtr BindAverage(BoundExprPtr aggregate) const;
  BoundExprPtr BindNullFunction(const Expr& expr);
  BoundExprPtr BindTextFunction(const Expr& expr);
  BoundExprPtr BindDateFunction(const Expr& expr);
  BoundExprPtr BindNumberFunction(const Expr& expr);
  BoundExprPtr BindMetaFunction(const Expr& expr) const;
  std::vector<BoundExprPtr> BindArguments(const Expr& expr, size_t least, size_t most);

  // queries (binder_query.cpp)
  BoundQueryPtr BindQuery(const Query& query, bool isInner);
  BoundQueryPtr BindSetOperation(const Query& query);
  std::unique_ptr<BoundSelect> BindSelect(const Select& select, const std::vector<OrderItem>& orderBy,
                                          std::vector<BoundOrder>& order);
  void BindItems(const Select& select, BoundSelect& bound);
  void ExpandStar(const SelectItem& item, BoundSelect& bound);
  void BindAssignmentItem(const SelectItem& item, BoundSelect& bound);
  void BindOrder(const std::vector<OrderItem>& orderBy, const BoundSelect& select,
                 std::vector<BoundOrder>& order);
  BoundOrder BindOrderItem(const OrderItem& item, const BoundSelect& select);
  static int FindOutput(const std::vector<BoundItem>& items, const std::string& name);
  static void BindCompoundOrder(const std::vector<OrderItem>& orderBy, BoundQuery& query);
  void CheckGrouping(const BoundSelect& select, const std::vector<BoundOrder>& order) const;
  void CheckGrouped(const BoundExpr& expr, const BoundSelect& select, int error) const;
  BoundSourcePtr BindSource(const TableSource& source, Scope& scope);
  BoundSourcePtr BindJoin(const TableSource& source, Scope& scope);
  BoundSourcePtr BindNamed(const TableSource& source, Scope& scope);
  BoundSourcePtr BindDerived(const TableSource& source, Scope& scope);
  BoundSourcePtr BindView(const ModuleInfo& view, const TableSource& source, Scope& scope);
  void AddSource(Scope& scope, ScopeSource source) const;
  static std::vector<ScopeColumn> ColumnsOf(const BoundQuery& query, const std::vector<std::string>& aliases,
                                            const std::string& name, bool needNames);
  static std::vector<ScopeColumn> ColumnsOf(const TableInfo& table);
  void BindCommonTables(const std::vector<CommonTable>& tables, std::vector<BoundCommon>& bound);
  BoundCommon BindCommonTable(const CommonTable& table);
  bool BindRecursive(const CommonTable& table, BoundCommon& bound);
  void ConvertColumns(BoundQuery& query, const std::vector<Type>& types) const;
  static void RefreshColumns(BoundQuery& query);
  CommonInfo* FindCommon(const ObjectName& name);

  // statements (binder_statements.cpp)
  TablePtr FindTable(const ObjectName& name) const;
  TablePtr RequireTable(const ObjectName& name);
  std::vector<int> InsertColumns(const InsertStatement& statement, const TableInfo& table,
                                 bool identityInsert) const;
  void BindInsertRows(const InsertStatement& statement, BoundInsert& bound);
  void BindInsertQuery(const InsertStatement& statement, BoundInsert& bound);
  void AddDefaults(BoundInsert& bound);
  BoundExprPtr BindDefault(const TableInfo& table, int column);
  BoundExprPtr AssignColumn(BoundExprPtr expr, const TableInfo& table, int column) const;
  TablePtr BindTarget(const ObjectName& name, const TableSource* from, Scope& scope, BoundSourcePtr& source,
                      int& target);
  void BindAssignments(const UpdateStatement& statement, BoundUpdate& bound);

  const Catalog& catalog_;
  const std::vector<VariableInfo>& variables_;
  const std::vector<Type>& markers_;
  const std::vector<std::string>* pending_ = nullptr;
  Scope* scope_ = nullptr;
  std::vector<CommonInfo> commons_;
  std::vector<Dependency> dependencies_;
  int nextSource_ = 0;
  int nextCommon_ = 0;
  int viewDepth_ = 0;
  bool wantsUpdateLock_ = false;
};

BoundExprPtr MakeConstant(Datum value, const Type& type);
BoundExprPtr MakeFunction(std::string name, const Type& type, std::vector<BoundExprPtr> args);
bool IsNullConstant(const BoundExpr& expr);

} // namespace tsql
