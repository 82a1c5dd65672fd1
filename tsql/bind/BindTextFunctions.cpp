#include "tsql/bind/Binder.h"

#include <algorithm>

namespace tsql {
namespace {

constexpr int32_t kMaxVarChar = 8000;
constexpr int32_t kMaxQuoted = 258;

Type IntType() {
  return MakeType(TypeId::Int);
}

// varchar or nvarchar as the argument is, of another length.
Type TextLike(const Type& type, int32_t length) {
  return MakeType(IsUnicode(type.id) ? TypeId::NVarChar : TypeId::VarChar, type.length < 0 ? -1 : length);
}

// The length of a result that a constant argument limits.
int32_t ConstantLength(const BoundExpr& expr, int32_t otherwise) {
  if (expr.kind != BoundExpr::Kind::Constant || expr.constant.kind != Datum::Kind::Integer) return otherwise;
  const auto length = static_cast<int32_t>(std::clamp<int64_t>(expr.constant.integer, 1, kMaxVarChar));
  return otherwise < 0 ? length : std::min(length, otherwise);
}

} // namespace

std::vector<BoundExprPtr> Binder::BindTextArguments(const Expr& expr, size_t least, size_t most) {
  std::vector<BoundExprPtr> args = BindArguments(expr, least, most);
  args[0] = ConvertText(std::move(args[0]));
  return args;
}

// LEN, ASCII, UNICODE
BoundExprPtr Binder::BindTextMeasure(const Expr& expr, FunctionId function) {
  return MakeFunction(function, IntType(), BindTextArguments(expr, 1, 1));
}

BoundExprPtr Binder::BindDataLength(const Expr& expr, FunctionId function) {
  return MakeFunction(function, IntType(), BindArguments(expr, 1, 1));
}

BoundExprPtr Binder::BindPatIndex(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = ConvertText(std::move(args[1]));
  return MakeFunction(function, IntType(), std::move(args));
}

BoundExprPtr Binder::BindCharIndex(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 3);
  args[1] = ConvertText(std::move(args[1]));
  if (args.size() == 3) args[2] = Convert(std::move(args[2]), IntType());
  return MakeFunction(function, IntType(), std::move(args));
}

BoundExprPtr Binder::BindQuoteName(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 1, 2);
  if (args.size() == 2) args[1] = ConvertText(std::move(args[1]));
  return MakeFunction(function, MakeType(TypeId::NVarChar, kMaxQuoted), std::move(args));
}

// LTRIM, RTRIM, TRIM, UPPER, LOWER, REVERSE
BoundExprPtr Binder::BindTextMap(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 1, 1);
  const Type type = TextLike(args[0]->type, args[0]->type.length);
  return MakeFunction(function, type, std::move(args));
}

// LEFT, RIGHT
BoundExprPtr Binder::BindTextEnd(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = Convert(std::move(args[1]), IntType());
  const Type type = TextLike(args[0]->type, ConstantLength(*args[1], args[0]->type.length));
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindSubstring(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 3, 3);
  args[1] = Convert(std::move(args[1]), IntType());
  args[2] = Convert(std::move(args[2]), IntType());
  const Type type = TextLike(args[0]->type, ConstantLength(*args[2], args[0]->type.length));
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindReplace(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 3, 3);
  args[1] = ConvertText(std::move(args[1]));
  args[2] = ConvertText(std::move(args[2]));
  const Type type = TextLike(args[0]->type, kMaxVarChar);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindReplicate(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = Convert(std::move(args[1]), IntType());
  const Type type = TextLike(args[0]->type, kMaxVarChar);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindStuff(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 4, 4);
  args[1] = Convert(std::move(args[1]), IntType());
  args[2] = Convert(std::move(args[2]), IntType());
  args[3] = ConvertText(std::move(args[3]));
  return MakeFunction(function, MakeType(TypeId::VarChar, kMaxVarChar), std::move(args));
}

// SPACE, CHAR, NCHAR
BoundExprPtr Binder::BindCharacter(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  args[0] = Convert(std::move(args[0]), IntType());
  const Type type = function == FunctionId::Space  ? MakeType(TypeId::VarChar, kMaxVarChar)
                    : function == FunctionId::Char ? MakeType(TypeId::Char, 1)
                                                   : MakeType(TypeId::NChar, 1);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindStr(const Expr& expr, FunctionId function) {
  constexpr int32_t kDefaultLength = 10;
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 3);
  args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
  for (size_t i = 1; i < args.size(); ++i) args[i] = Convert(std::move(args[i]), IntType());
  const int32_t length = args.size() > 1 ? ConstantLength(*args[1], -1) : kDefaultLength;
  return MakeFunction(function, MakeType(TypeId::VarChar, length), std::move(args));
}

// ISNUMERIC, ISDATE
BoundExprPtr Binder::BindTextTest(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  // Money is a number, but becomes no text by itself.
  if (function == FunctionId::IsNumeric && IsMoney(args[0]->type.id))
    args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
  args[0] = ConvertText(std::move(args[0]));
  return MakeFunction(function, IntType(), std::move(args));
}

} // namespace tsql
