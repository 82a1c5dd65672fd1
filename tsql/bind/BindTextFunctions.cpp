#include <algorithm>

#include "tsql/bind/Binder.h"
#include "tsql/values/ConversionRules.h"
#include "tsql/values/Errors.h"

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

// The length of a result that a constant argument limits, or that of the argument before it.
int32_t ConstantLength(const BoundExpr& expr, int32_t otherwise) {
  if (expr.kind != BoundExpr::Kind::Constant || expr.constant.kind != Datum::Kind::Integer) return otherwise;
  const auto length = static_cast<int32_t>(std::clamp<int64_t>(expr.constant.integer, 1, kMaxVarChar));
  return otherwise < 0 ? length : std::min(length, otherwise);
}

// A text of so many characters of another one as the argument says. A character has two bytes of the code
// page at most.
Type PartOf(const Type& text, const BoundExpr& count) {
  if (IsUnicode(text.id)) return TextLike(text, ConstantLength(count, text.length));
  const int32_t characters = ConstantLength(count, kMaxVarChar);
  return TextLike(text, std::min(2 * characters, text.length));
}

// The longest text that can be made of the arguments: of Unicode if one of them is.
Type LongestOf(const std::vector<BoundExprPtr>& args) {
  const bool isMax = args[0]->type.length < 0;
  const bool isUnicode =
      std::any_of(args.begin(), args.end(), [](const BoundExprPtr& arg) { return IsUnicode(arg->type.id); });
  if (isUnicode) return MakeType(TypeId::NVarChar, isMax ? -1 : kMaxVarChar / 2);
  return MakeType(TypeId::VarChar, isMax ? -1 : kMaxVarChar);
}

[[noreturn]] void FailArgument(const std::string& type, size_t number, const Expr& call) {
  Fail(8116, {type, std::to_string(number), call.text});
}

} // namespace

std::vector<BoundExprPtr> Binder::BindTextArguments(const Expr& expr, size_t least, size_t most) {
  std::vector<BoundExprPtr> args = BindArguments(expr, least, most);
  args[0] = ConvertText(std::move(args[0]));
  return args;
}

// SOUNDEX, DIFFERENCE
BoundExprPtr Binder::BindSoundex(const Expr& expr, FunctionId function) {
  constexpr int32_t kCodeLength = 4;
  const bool isOne = function == FunctionId::Soundex;
  std::vector<BoundExprPtr> args = BindArguments(expr, isOne ? 1 : 2, isOne ? 1 : 2);
  for (BoundExprPtr& arg : args) arg = ConvertText(std::move(arg));
  return MakeFunction(function, isOne ? MakeType(TypeId::VarChar, kCodeLength) : IntType(), std::move(args));
}

// HASHBYTES: of a text the bytes count that the server keeps for it.
BoundExprPtr Binder::BindHashBytes(const Expr& expr, FunctionId function) {
  constexpr int32_t kMaxBinary = 8000;
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  const Type given = args[1]->type;
  const bool isBinary = FamilyOf(given.id) == Family::Binary;
  if (IsNullConstant(*args[1])) {
    args[1]->type = MakeType(TypeId::VarBinary, 1);
  } else if (IsLob(given.id) || (!isBinary && !IsText(given))) {
    FailArgument(std::string(TypeName(given.id)), 2, expr);
  } else if (!isBinary) {
    BoundExprPtr bytes = MakeNode(BoundExpr::Kind::Cast, MakeType(TypeId::VarBinary, -1));
    bytes->nullable = args[1]->nullable;
    bytes->args.push_back(std::move(args[1]));
    args[1] = std::move(bytes);
  }
  return MakeFunction(function, MakeType(TypeId::VarBinary, kMaxBinary), std::move(args));
}

// LEN, ASCII, UNICODE
BoundExprPtr Binder::BindTextMeasure(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  // The length of a binary value is the number of its bytes.
  if (function == FunctionId::Len && FamilyOf(args[0]->type.id) == Family::Binary)
    return MakeFunction(FunctionId::DataLength, IntType(), std::move(args));
  args[0] = ConvertText(std::move(args[0]));
  return MakeFunction(function, IntType(), std::move(args));
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

// CONCAT, CONCAT_WS: every value becomes a text, as CONVERT makes it, and nulls are empty.
BoundExprPtr Binder::BindConcat(const Expr& expr, FunctionId function) {
  constexpr size_t kMost = 254;
  constexpr int32_t kLongestNumber = 50;
  std::vector<BoundExprPtr> args = BindArguments(expr, function == FunctionId::Concat ? 2 : 3, kMost);
  int64_t length = 0;
  bool isUnicode = false;
  bool isMax = false;
  for (BoundExprPtr& arg : args) {
    if (!IsText(arg->type)) {
      if (IsNullConstant(*arg)) arg->type = MakeType(TypeId::VarChar, 1);
      const bool isBinary = FamilyOf(arg->type.id) == Family::Binary;
      const Type text = MakeType(TypeId::VarChar, isBinary ? arg->type.length : kLongestNumber);
      if (FindConversion(arg->type.id, text.id) == Conversion::Impossible)
        Fail(206, {TypeName(arg->type.id), TypeName(text.id)});
      if (!IsText(arg->type)) {
        BoundExprPtr cast = MakeNode(BoundExpr::Kind::Cast, text);
        cast->nullable = arg->nullable;
        cast->args.push_back(std::move(arg));
        arg = std::move(cast);
      }
    }
    isUnicode = isUnicode || IsUnicode(arg->type.id);
    isMax = isMax || arg->type.length < 0;
    length += arg->type.length;
  }
  // Between each two of the other texts stands the first one.
  if (function == FunctionId::ConcatWithSeparator)
    length += args[0]->type.length * static_cast<int64_t>(args.size() - 3);
  const auto limit = isUnicode ? kMaxVarChar / 2 : kMaxVarChar;
  const auto bounded = static_cast<int32_t>(std::clamp<int64_t>(length, 1, limit));
  const Type type = MakeType(isUnicode ? TypeId::NVarChar : TypeId::VarChar, isMax ? -1 : bounded);
  BoundExprPtr node = MakeFunction(function, type, std::move(args));
  node->nullable = false;
  return node;
}

// TRIM(text), TRIM(characters FROM text)
BoundExprPtr Binder::BindTrim(const Expr& expr, FunctionId function) {
  if (expr.args.size() < 2) return BindTextMap(expr, function);
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = ConvertText(std::move(args[1]));
  const Type type = TextLike(args[0]->type, args[0]->type.length);
  return MakeFunction(FunctionId::TrimCharacters, type, std::move(args));
}

BoundExprPtr Binder::BindTranslate(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 3, 3);
  bool isUnicode = false;
  for (BoundExprPtr& arg : args) {
    arg = ConvertText(std::move(arg));
    isUnicode = isUnicode || IsUnicode(arg->type.id);
  }
  // A character of one byte may become one of two.
  const int32_t limit = isUnicode ? kMaxVarChar / 2 : kMaxVarChar;
  const int32_t given = args[0]->type.length;
  const int32_t length = given < 0 ? -1 : std::min(isUnicode ? given : 2 * given, limit);
  const Type type = MakeType(isUnicode ? TypeId::NVarChar : TypeId::VarChar, length);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindParseName(const Expr& expr, FunctionId function) {
  constexpr int32_t kNameLength = 128;
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = Convert(std::move(args[1]), IntType());
  return MakeFunction(function, MakeType(TypeId::NVarChar, kNameLength), std::move(args));
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
  const Type type = PartOf(args[0]->type, *args[1]);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindSubstring(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 3, 3);
  const bool isBinary = FamilyOf(args[0]->type.id) == Family::Binary;
  if (IsNullConstant(*args[0])) FailArgument("NULL", 1, expr);
  if (!isBinary && !IsText(args[0]->type)) FailArgument(TypeName(args[0]->type.id), 1, expr);
  args[1] = Convert(std::move(args[1]), IntType());
  args[2] = Convert(std::move(args[2]), IntType());
  const Type type =
      isBinary ? MakeType(TypeId::VarBinary, args[0]->type.length) : PartOf(args[0]->type, *args[2]);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindReplace(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 3, 3);
  for (size_t i = 0; i < args.size(); ++i) {
    if (FamilyOf(args[i]->type.id) == Family::DateTime) FailArgument(TypeName(args[i]->type.id), i + 1, expr);
    args[i] = ConvertText(std::move(args[i]));
  }
  const Type type = LongestOf(args);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindReplicate(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 2, 2);
  args[1] = Convert(std::move(args[1]), IntType());
  const Type type = LongestOf(args);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindStuff(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindTextArguments(expr, 4, 4);
  args[1] = Convert(std::move(args[1]), IntType());
  args[2] = Convert(std::move(args[2]), IntType());
  args[3] = ConvertText(std::move(args[3]));
  const Type type = LongestOf(args);
  return MakeFunction(function, type, std::move(args));
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
  // The types that came with later versions of the server are no arguments of ISDATE.
  const TypeId given = args[0]->type.id;
  if (function == FunctionId::IsDate && (given == TypeId::Date || IsFine(given)))
    FailArgument(TypeName(given), 1, expr);
  args[0] = ConvertText(std::move(args[0]));
  return MakeFunction(function, IntType(), std::move(args));
}

} // namespace tsql
