// Turns a bound tree into one SQLite statement. Where SQLite's own operators mean the same as the dialect's
// they are used as they are; the t_ functions (functions/Functions.h) serve the rest. Variables, markers and globals
// become numbered parameters, listed beside the text.
#pragma once

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

class Emitter {
 public:
  EmittedSql EmitStatement(const BoundQuery& query);
  EmittedSql EmitValue(const BoundExpr& expr);
  EmittedSql EmitCondition(const BoundExpr& expr);
  EmittedSql EmitInsert(const BoundInsert& insert);
  EmittedSql EmitUpdate(const BoundUpdate& update);
  // Puts the rows that the update would make into a table: SQLite's number of the row, then all columns.
  EmittedSql EmitUpdatedRows(const BoundUpdate& update, std::string_view into, std::string_view number);
  EmittedSql EmitDelete(const BoundDelete& statement);
  // A CHECK condition over the bare columns of its table.
  std::string EmitCheck(const BoundExpr& expr);

 private:
  EmittedSql Finish();
  void Text(std::string_view text) { sql_ += text; }
  void Number(int64_t number) { sql_ += std::to_string(number); }
  void TypeCode(const Type& type) { Number(EncodeType(type)); }

  // expressions
  void Emit(const BoundExpr& expr);
  void EmitCollated(const BoundExpr& expr);
  void EmitConstant(const Datum& value);
  void EmitParameter(const BoundExpr& expr);
  void EmitColumn(const BoundExpr& expr);
  void EmitCast(const BoundExpr& expr);
  bool EmitNativeCast(const BoundExpr& operand, const Type& to);
  void EmitStore(const BoundExpr& expr);
  void EmitNegation(const BoundExpr& expr);
  void EmitArithmetic(const BoundExpr& expr);
  void EmitIntegerArithmetic(const BoundExpr& expr);
  void EmitDecimalArithmetic(const BoundExpr& expr);
  void EmitComputed(const BoundExpr& expr);
  void EmitFloatArithmetic(const BoundExpr& expr);
  void EmitBitwise(const BoundExpr& expr);
  void EmitChecked(TypeId type, const BoundExpr& left, const char* op, const BoundExpr& right);
  void EmitBinary(const BoundExpr& left, const char* op, const BoundExpr& right);
  void EmitCall(std::string_view name, const BoundExpr& left, const BoundExpr& right);
  void EmitComparison(const BoundExpr& expr);
  void EmitLogical(const BoundExpr& expr, const char* op);
  void EmitLike(const BoundExpr& expr);
  void EmitIn(const BoundExpr& expr);
  void EmitSubquery(const BoundExpr& expr);
  void EmitCase(const BoundExpr& expr);
  void EmitFunction(const BoundExpr& expr);
  void EmitAggregate(const BoundExpr& expr);

  // queries; `extra` are items to append to each branch
  void EmitQuery(const BoundQuery& query, const std::string& extra = {});
  void EmitBody(const BoundQuery& query, const std::string& extra);
  void EmitBranch(const BoundQuery& query, const std::string& extra, bool isRight);
  void EmitSelect(const BoundSelect& select, const std::vector<BoundOrder>& order, const std::string& extra);
  void EmitOrder(const std::vector<BoundOrder>& order);
  void EmitCommons(const std::vector<BoundCommon>& commons);
  void EmitRecursive(const BoundCommon& common);
  void EmitSource(const BoundSource& source);
  void EmitLeaf(const BoundSource& source);
  void EmitAlias(int source);
  void EmitUpdateFromTree(const BoundUpdate& update);
  bool EmitUpdateDirect(const BoundUpdate& update);
  void EmitTargetRows(int target, const BoundSource* from, const TableInfo& table, const BoundExpr* where,
                      const BoundExpr* top);
  void EmitAssignments(const BoundUpdate& update);

  std::string sql_;
  std::vector<ParameterRef> parameters_;
  // Variables that the statement itself assigns row by row: read as they are at that row.
  std::vector<int> assigned_;
  friend std::string EmitExtras(Emitter& emitter, const std::vector<BoundExprPtr>& extras);
};

} // namespace tsql
