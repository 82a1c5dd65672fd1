// Turns a bound tree into one SQLite statement. Where SQLite's own operators and functions mean the same as
// the dialect's they are used; the functions that the engine registers (functions/Functions.h) serve the
// rest. It is the emitter that chooses between the two, so that the bound tree says only what is wanted.
// Variables, markers and global values become numbered parameters, which are listed beside the text.
#pragma once

#include <functional>

#include "tsql/bind/BoundTree.h"

namespace tsql {

struct ParameterRef {
  BoundExpr::Kind kind = BoundExpr::Kind::Variable; // Variable, Marker or Global
  int index = 0;
  bool operator==(const ParameterRef&) const = default;
};

struct EmittedSql {
  std::string sql;
  std::vector<ParameterRef> parameters;
};

// The table of the rows that a change has staged. In this schema no table of a user has such a name.
inline constexpr const char* kStagedRows = "temp.t_staged_rows";
inline constexpr const char* kMergedRows = "temp.t_merged";
// What a trigger sees of them.
inline constexpr const char* kInsertedRows = "temp.t_inserted";
inline constexpr const char* kDeletedRows = "temp.t_deleted";

// An UPDATE or DELETE in two steps: the query gives the rows to be staged, the statements change those.
struct EmittedChange {
  EmittedSql rows;
  std::string change;
  std::vector<std::string> replacements; // in place of it, where keys move from row to row
};

// Emits one statement.
class Emitter {
 public:
  EmittedSql EmitStatement(const BoundQuery& query);
  EmittedSql EmitValue(const BoundExpr& expr);
  EmittedSql EmitCondition(const BoundExpr& expr);
  EmittedSql EmitInsert(const BoundInsert& insert);
  EmittedSql EmitUpdate(const BoundUpdate& update);
  EmittedSql EmitDelete(const BoundDelete& statement);
  // What is staged of the rows of an INSERT that is not made.
  EmittedSql EmitRowsOf(const BoundInsert& insert);
  // An INSERT that returns what is staged of its rows.
  EmittedSql EmitReturningInsert(const BoundInsert& insert);
  static EmittedChange EmitStaged(const BoundUpdate& update);
  static EmittedChange EmitStaged(const BoundDelete& statement);
  // The change of rows that are staged by whoever asks for it: of the columns, or all of the row.
  static EmittedChange EmitStagedUpdate(const TableInfo& table, const std::vector<int>& columns);
  static EmittedChange EmitStagedDelete(const TableInfo& table);
  // What the clause gives, as a result or put into a table.
  EmittedSql EmitOutputRows(const BoundOutput& output);
  // An expression without parameters, as a part of a definition; a CHECK condition names bare columns.
  std::string EmitExpression(const BoundExpr& expr);

 private:
  // what all parts use (Emitter.cpp)
  EmittedSql Finish();
  void Text(std::string_view text) { sql_ += text; }
  void Open(std::string_view function) {
    sql_ += function;
    sql_ += '(';
  }
  void Number(int64_t number) { sql_ += std::to_string(number); }
  void TypeCode(const Type& type) { Number(EncodeType(type)); }

  void EmitCollated(const BoundExpr& expr);
  void EmitCollationOf(const BoundExpr& expr);
  void EmitCollationBeside(const BoundExpr& expr);
  void EmitCollation(CollationId collation);
  void EmitConstant(const Datum& value);
  void EmitParameter(const BoundExpr& expr);
  void EmitAlias(int source);
  static std::string AliasOf(int source);
  void EmitBinary(const BoundExpr& left, const char* op, const BoundExpr& right);
  void EmitCall(std::string_view name, const BoundExpr& left, const BoundExpr& right);

  // expressions (EmitExpressions.cpp)
  void Emit(const BoundExpr& expr);
  void EmitColumn(const BoundExpr& expr);
  void EmitComparison(const BoundExpr& expr);
  void EmitComparable(const BoundExpr& expr);
  void EmitLogical(const BoundExpr& expr, const char* op);
  void EmitLike(const BoundExpr& expr);
  void EmitIn(const BoundExpr& expr);
  void EmitQuantified(const BoundExpr& expr);
  void EmitSubquery(const BoundExpr& expr);
  void EmitCase(const BoundExpr& expr);

  // conversions (EmitConversions.cpp); false where SQLite cannot do it by itself
  void EmitCast(const BoundExpr& expr);
  void EmitTryCast(const BoundExpr& expr);
  void EmitCastCall(const char* function, const BoundExpr& expr);
  void EmitStore(const BoundExpr& expr);
  bool EmitNativeCast(const BoundExpr& operand, const Type& to);

  // arithmetic (EmitArithmetic.cpp)
  void EmitNegation(const BoundExpr& expr);
  void EmitArithmetic(const BoundExpr& expr);
  void EmitIntegerArithmetic(const BoundExpr& expr);
  void EmitDecimalArithmetic(const BoundExpr& expr);
  void EmitFloatArithmetic(const BoundExpr& expr);
  void EmitDoubleArithmetic(const BoundExpr& expr);
  void EmitBitwise(const BoundExpr& expr);
  void EmitConcatenation(const BoundExpr& expr);
  // An operation whose result is checked for its type's range.
  void EmitExpressioned(const BoundExpr& expr);
  // The condition under which an operation on two ints needs no check.
  void EmitStaysInRange(const BoundExpr& expr);
  // As one program for all decimal operations of the expression; false where it is none.
  bool EmitComputed(const BoundExpr& expr);
  bool EmitInline(const BoundExpr& expr, const std::function<void()>& emitProgram);
  void EmitUnits(const BoundExpr& expr, int scale);

  // functions (EmitFunctions.cpp)
  void EmitFunction(const BoundExpr& expr);
  void EmitUserCall(const char* call, const std::string& name, const std::vector<BoundExprPtr>& args);
  bool EmitSubstring(const BoundExpr& expr);
  void EmitFinite(const char* aggregate, const BoundExpr& expr);
  void EmitAggregate(const BoundExpr& expr);
  void EmitNativeAggregate(std::string_view name, const BoundExpr& expr);
  void EmitStringAggregate(const BoundExpr& expr);
  void EmitWindowFunction(const BoundExpr& expr);
  void EmitOver(const BoundExpr& expr);

  // queries (EmitQueries.cpp); `extra` are items to append to each branch
  void EmitQuery(const BoundQuery& query, const std::string& extra = {});
  void EmitBody(const BoundQuery& query, const std::string& extra);
  void EmitBranch(const BoundQuery& query, const std::string& extra, bool isRight);
  void EmitSelect(const BoundSelect& select, const std::vector<BoundOrder>& order, const std::string& extra);
  void EmitPlacedSelect(const BoundSelect& select, const std::vector<BoundOrder>& order,
                        const std::string& extra);
  void EmitRows(const BoundSelect& select, const std::string& extra);
  void EmitGroupingSets(const BoundSelect& select);
  void EmitGroupingSet(const BoundSelect& select, uint32_t set);
  void EmitOrder(const std::vector<BoundOrder>& order);
  void EmitOffset(const BoundQuery& query);
  void EmitCommons(const std::vector<BoundCommon>& commons);
  void EmitRecursive(const BoundCommon& common);
  void EmitSource(const BoundSource& source);
  void EmitLeaf(const BoundSource& source);
  void EmitPacked(const BoundSource& source);
  void EmitColumnsOf(const BoundSource& source); // as far as to what has them
  void EmitValues(const std::vector<std::vector<BoundExprPtr>>& rows);
  void EmitCommonName(int common);

  // changes (EmitChanges.cpp)
  std::string EmitExtras(const std::vector<BoundExprPtr>& extras);
  bool EmitUpdateDirect(const BoundUpdate& update);
  void EmitUpdateFromTree(const BoundUpdate& update);
  void EmitChangedRows(const BoundChange& change);
  void EmitChangeLimit(const BoundChange& change);
  void EmitTargetRows(const BoundChange& change);
  void EmitAssignments(const BoundUpdate& update);
  void EmitInsertion(const BoundInsert& insert);
  void EmitInsertedValues(const BoundInsert& insert);
  template <typename Change>
  EmittedSql EmitRowsOf(const Change& change, const BoundUpdate* update);

  std::string sql_;
  std::vector<ParameterRef> parameters_;
  // Variables that the statement itself assigns: each row reads what the row before assigned.
  std::vector<int> assigned_;
};

} // namespace tsql
