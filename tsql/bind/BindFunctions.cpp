#include "tsql/bind/Binder.h"

#include "tsql/values/Collation.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

#include <algorithm>
#include <numbers>

namespace tsql {
namespace {

constexpr int32_t kMaxVarChar = 8000;
constexpr int32_t kMaxQuoted = 258;
constexpr int32_t kNameLength = 128;

BoundExprPtr MakeInteger(int64_t value) {
  return MakeConstant(Datum::OfInteger(value), MakeType(TypeId::BigInt));
}

BoundExprPtr MakeGlobal(GlobalValue value, const Type& type) {
  auto node = std::make_unique<BoundExpr>();
  node->kind = BoundExpr::Kind::Global;
  node->type = type;
  node->index = static_cast<int>(value);
  return node;
}

template <typename... Args>
BoundExprPtr Call(std::string name, const Type& type, Args... args) {
  std::vector<BoundExprPtr> list;
  (list.push_back(std::move(args)), ...);
  return MakeFunction(std::move(name), type, std::move(list));
}

// varchar or nvarchar as the argument is, of another length.
Type TextLike(const Type& type, int32_t length) {
  return MakeType(IsUnicode(type.id) ? TypeId::NVarChar : TypeId::VarChar, type.length < 0 ? -1 : length);
}

int32_t ConstantLength(const BoundExpr& expr, int32_t otherwise) {
  if (expr.kind != BoundExpr::Kind::Constant || expr.constant.kind != Datum::Kind::Integer) return otherwise;
  const auto length = static_cast<int32_t>(std::clamp<int64_t>(expr.constant.integer, 1, kMaxVarChar));
  return otherwise < 0 ? length : std::min(length, otherwise);
}

// SQLite's substr agrees where positions and lengths cannot be out of range.
bool IsConstantFrom(const BoundExpr& expr, int64_t least) {
  return expr.kind == BoundExpr::Kind::Constant && expr.constant.kind == Datum::Kind::Integer &&
         expr.constant.integer >= least;
}

bool IsAggregateName(const std::string& name) {
  return name == "count" || name == "count_big" || name == "sum" || name == "avg" || name == "min" ||
         name == "max";
}

} // namespace

std::vector<BoundExprPtr> Binder::BindArguments(const Expr& expr, size_t least, size_t most) {
  if (expr.args.size() < least || expr.args.size() > most) {
    const std::string wanted =
        least == most ? std::to_string(least) : std::to_string(least) + " to " + std::to_string(most);
    Fail(least == most ? 174 : 189, {expr.text, wanted});
  }
  std::vector<BoundExprPtr> args;
  for (const ExprPtr& arg : expr.args) args.push_back(Bind(*arg));
  return args;
}

BoundExprPtr Binder::BindCall(const Expr& expr) {
  if (IsAggregateName(expr.text)) return BindAggregate(expr);
  using Rule = BoundExprPtr (Binder::*)(const Expr&);
  constexpr Rule kRules[] = {&Binder::BindNullFunction, &Binder::BindTextFunction, &Binder::BindDateFunction,
                             &Binder::BindNumberFunction};
  for (const Rule rule : kRules)
    if (BoundExprPtr bound = (this->*rule)(expr)) return bound;
  if (BoundExprPtr bound = BindMetaFunction(expr)) return bound;
  Fail(195, {expr.text});
}

BoundExprPtr Binder::BindAggregate(const Expr& expr) {
  if (scope_ == nullptr || !scope_->aggregatesAllowed) Fail(147, {});
  auto node = std::make_unique<BoundExpr>();
  node->kind = BoundExpr::Kind::Aggregate;
  node->name = expr.text;
  node->distinct = expr.distinct;
  scope_->hasAggregate = true;
  const bool isCount = expr.text == "count" || expr.text == "count_big";
  if (!expr.star && expr.args.size() != 1) Fail(174, {expr.text, "1"});
  if (isCount) {
    node->type = MakeType(expr.text == "count" ? TypeId::Int : TypeId::BigInt);
    node->nullable = false;
  }
  if (expr.star) {
    if (!isCount) Fail(102, {"*"}, expr.line);
    return node;
  }
  scope_->aggregatesAllowed = false;
  BoundExprPtr arg = Bind(*expr.args[0]);
  scope_->aggregatesAllowed = true;
  const bool isNumeric = IsNumeric(arg->type) && arg->type.id != TypeId::Bit;
  if ((expr.text == "sum" || expr.text == "avg") && !isNumeric)
    Fail(8117, {TypeName(arg->type.id), expr.text});
  if (!isCount && (IsLob(arg->type.id) || arg->type.id == TypeId::Bit))
    Fail(8117, {TypeName(arg->type.id), expr.text});
  if (!isCount) {
    node->type = arg->type;
    if (FamilyOf(node->type.id) == Family::Integer) node->type.precision = 0;
  }
  node->args.push_back(std::move(arg));
  if (expr.text == "avg") return BindAverage(std::move(node));
  if (expr.text != "sum") return node;
  // Sums widen: small integers to int, decimals to 38 digits, real to float.
  if (node->type.id == TypeId::TinyInt || node->type.id == TypeId::SmallInt)
    node->type = MakeType(TypeId::Int);
  if (node->type.id == TypeId::Decimal) node->type = MakeDecimal(kMaxPrecision, node->type.scale);
  if (node->type.id == TypeId::SmallMoney) node->type = MakeType(TypeId::Money);
  if (node->type.id == TypeId::Real) node->type = MakeType(TypeId::Float);
  return node;
}

BoundExprPtr Binder::BindAverage(BoundExprPtr aggregate) const {
  Type& type = aggregate->type;
  if (type.id == TypeId::TinyInt || type.id == TypeId::SmallInt) type = MakeType(TypeId::Int);
  if (type.id == TypeId::Decimal) type = MakeDecimal(kMaxPrecision, std::max<int>(type.scale, 6));
  if (type.id == TypeId::SmallMoney) type = MakeType(TypeId::Money);
  if (type.id == TypeId::Real) type = MakeType(TypeId::Float);
  return aggregate;
}

BoundExprPtr Binder::BindNullFunction(const Expr& expr) {
  if (expr.text == "isnull") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
    const Type type = IsNullConstant(*args[0]) ? args[1]->type : args[0]->type;
    Type plain = type;
    if (FamilyOf(type.id) == Family::Integer) plain.precision = 0;
    args[0] = Convert(std::move(args[0]), plain);
    args[1] = Convert(std::move(args[1]), plain);
    const bool nullable = args[0]->nullable && args[1]->nullable;
    BoundExprPtr node = MakeFunction("ifnull", plain, std::move(args));
    node->nullable = nullable;
    return node;
  }
  if (expr.text == "coalesce") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 2, 100);
    std::vector<const BoundExpr*> operands;
    operands.reserve(args.size());
    for (const BoundExprPtr& arg : args) operands.push_back(arg.get());
    const Type type = CommonTypeOf(operands);
    for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), type);
    return MakeFunction("coalesce", type, std::move(args));
  }
  if (expr.text == "nullif") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
    const Type type = args[0]->type;
    const Type common = CommonTypeOf({args[0].get(), args[1].get()});
    if (common != type && !IsText(common)) {
      // CASE WHEN a = b THEN NULL ELSE a END: the comparison converts, the result does not.
      auto compare = std::make_unique<BoundExpr>();
      compare->kind = BoundExpr::Kind::Compare;
      compare->args.push_back(Convert(std::move(args[0]), common));
      compare->args.push_back(Convert(std::move(args[1]), common));
      auto node = std::make_unique<BoundExpr>();
      node->kind = BoundExpr::Kind::Case;
      node->type = type;
      node->hasElse = true;
      node->args.push_back(std::move(compare));
      node->args.push_back(MakeConstant({}, type));
      node->args.push_back(Bind(*expr.args[0]));
      return node;
    }
    return MakeFunction("nullif", type, std::move(args));
  }
  return nullptr;
}

BoundExprPtr Binder::BindTextFunction(const Expr& expr) {
  const std::string& name = expr.text;
  const Type intType = MakeType(TypeId::Int);
  const auto textArg = [&](size_t least, size_t most) {
    std::vector<BoundExprPtr> args = BindArguments(expr, least, most);
    args[0] = ConvertText(std::move(args[0]));
    return args;
  };
  if (name == "len" || name == "ascii" || name == "unicode")
    return MakeFunction("t_" + name, intType, textArg(1, 1));
  if (name == "patindex") {
    std::vector<BoundExprPtr> args = textArg(2, 2);
    args[1] = ConvertText(std::move(args[1]));
    return MakeFunction("t_patindex", intType, std::move(args));
  }
  if (name == "quotename") {
    std::vector<BoundExprPtr> args = textArg(1, 2);
    if (args.size() == 2) args[1] = ConvertText(std::move(args[1]));
    return MakeFunction("t_quotename", MakeType(TypeId::NVarChar, kMaxQuoted), std::move(args));
  }
  if (name == "datalength") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
    const int64_t code = EncodeType(args[0]->type);
    return Call("t_datalength", intType, std::move(args[0]), MakeInteger(code));
  }
  if (name == "ltrim" || name == "rtrim" || name == "trim" || name == "upper" || name == "lower" ||
      name == "reverse") {
    std::vector<BoundExprPtr> args = textArg(1, 1);
    const Type type = TextLike(args[0]->type, args[0]->type.length);
    // Native trimming cuts exactly blanks, as the server's.
    const bool native = name == "ltrim" || name == "rtrim" || name == "trim";
    return MakeFunction(native ? name : "t_" + name, type, std::move(args));
  }
  if (name == "left" || name == "right") {
    std::vector<BoundExprPtr> args = textArg(2, 2);
    args[1] = Convert(std::move(args[1]), intType);
    const Type type = TextLike(args[0]->type, ConstantLength(*args[1], args[0]->type.length));
    if (name == "left" && IsConstantFrom(*args[1], 0))
      return Call("substr", type, std::move(args[0]), MakeInteger(1), std::move(args[1]));
    return MakeFunction("t_" + name, type, std::move(args));
  }
  if (name == "substring") {
    std::vector<BoundExprPtr> args = textArg(3, 3);
    args[1] = Convert(std::move(args[1]), intType);
    args[2] = Convert(std::move(args[2]), intType);
    const Type type = TextLike(args[0]->type, ConstantLength(*args[2], args[0]->type.length));
    const bool native = IsConstantFrom(*args[1], 1) && IsConstantFrom(*args[2], 0);
    return MakeFunction(native ? "substr" : "t_substring", type, std::move(args));
  }
  if (name == "replace") {
    std::vector<BoundExprPtr> args = textArg(3, 3);
    args[1] = ConvertText(std::move(args[1]));
    args[2] = ConvertText(std::move(args[2]));
    const Type type = TextLike(args[0]->type, kMaxVarChar);
    return MakeFunction("t_replace", type, std::move(args));
  }
  if (name == "charindex") {
    std::vector<BoundExprPtr> args = textArg(2, 3);
    args[1] = ConvertText(std::move(args[1]));
    if (args.size() == 3) args[2] = Convert(std::move(args[2]), intType);
    return MakeFunction("t_charindex", intType, std::move(args));
  }
  if (name == "replicate") {
    std::vector<BoundExprPtr> args = textArg(2, 2);
    args[1] = Convert(std::move(args[1]), intType);
    const Type type = TextLike(args[0]->type, kMaxVarChar);
    return MakeFunction("t_replicate", type, std::move(args));
  }
  if (name == "stuff") {
    std::vector<BoundExprPtr> args = textArg(4, 4);
    args[1] = Convert(std::move(args[1]), intType);
    args[2] = Convert(std::move(args[2]), intType);
    args[3] = ConvertText(std::move(args[3]));
    return MakeFunction("t_stuff", MakeType(TypeId::VarChar, kMaxVarChar), std::move(args));
  }
  if (name == "space" || name == "char" || name == "nchar") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
    args[0] = Convert(std::move(args[0]), intType);
    const Type type = name == "space"  ? MakeType(TypeId::VarChar, kMaxVarChar)
                      : name == "char" ? MakeType(TypeId::Char, 1)
                                       : MakeType(TypeId::NChar, 1);
    return MakeFunction(name == "space" ? "t_space" : "t_char", type, std::move(args));
  }
  if (name == "str") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 1, 3);
    args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
    for (size_t i = 1; i < args.size(); ++i) args[i] = Convert(std::move(args[i]), intType);
    const int32_t length = args.size() > 1 ? ConstantLength(*args[1], -1) : 10;
    return MakeFunction("t_str", MakeType(TypeId::VarChar, length), std::move(args));
  }
  if (name == "isnumeric" || name == "isdate") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
    if (name == "isnumeric" && IsNumeric(args[0]->type)) args[0] = ConvertText(std::move(args[0]));
    args[0] = ConvertText(std::move(args[0]));
    return MakeFunction("t_" + name, intType, std::move(args));
  }
  return nullptr;
}

BoundExprPtr Binder::BindDateFunction(const Expr& expr) {
  const std::string& name = expr.text;
  const Type intType = MakeType(TypeId::Int);
  const Type moment = MakeType(TypeId::DateTime);
  if (name == "getdate" || name == "sysdatetime") {
    BindArguments(expr, 0, 0);
    BoundExprPtr node = MakeFunction("t_getdate", moment, {});
    node->nullable = false;
    return node;
  }
  if (name == "year" || name == "month" || name == "day") {
    std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
    const auto part = static_cast<int64_t>(*FindDatePart(name));
    return Call("t_datepart", intType, MakeInteger(part), Convert(std::move(args[0]), moment));
  }
  const bool isAdd = name == "dateadd";
  const bool isDifference = name == "datediff";
  const bool isName = name == "datename";
  if (!isAdd && !isDifference && !isName && name != "datepart") return nullptr;
  const size_t count = isAdd || isDifference ? 3 : 2;
  if (expr.args.size() != count) Fail(174, {name, std::to_string(count)});
  const Expr& partName = *expr.args[0];
  const bool named = partName.kind == ExprKind::Column && partName.parts.size() == 1;
  const std::optional<DatePart> part = named ? FindDatePart(partName.parts[0]) : std::nullopt;
  if (!part) Fail(195, {named ? partName.parts[0] : partName.text});
  BoundExprPtr partCode = MakeInteger(static_cast<int64_t>(*part));
  BoundExprPtr first = Bind(*expr.args[1]);
  if (isAdd) {
    BoundExprPtr date = Bind(*expr.args[2]);
    const bool isMoment = FamilyOf(date->type.id) == Family::DateTime;
    const Type type = isMoment ? date->type : moment;
    // The number's fraction is cut off.
    const bool isWhole = FamilyOf(first->type.id) == Family::Integer;
    BoundExprPtr number = isWhole ? std::move(first) : Convert(std::move(first), MakeType(TypeId::BigInt));
    return Call("t_dateadd", type, std::move(partCode), std::move(number), Convert(std::move(date), type),
                MakeInteger(EncodeType(type)));
  }
  if (isDifference)
    return Call("t_datediff", intType, std::move(partCode), Convert(std::move(first), moment),
                Convert(Bind(*expr.args[2]), moment));
  const Type type = isName ? MakeType(TypeId::NVarChar, 30) : intType;
  return Call(isName ? "t_datename" : "t_datepart", type, std::move(partCode),
              Convert(std::move(first), moment));
}

BoundExprPtr Binder::BindNumberFunction(const Expr& expr) {
  const std::string& name = expr.text;
  if (name == "pi") {
    BindArguments(expr, 0, 0);
    return MakeConstant(Datum::OfReal(std::numbers::pi), MakeType(TypeId::Float));
  }
  if (name == "sqrt" || name == "square" || name == "power" || name == "exp" || name == "log" ||
      name == "log10") {
    const size_t count = name == "power" ? 2 : 1;
    std::vector<BoundExprPtr> args = BindArguments(expr, count, count);
    const Type given = args[0]->type;
    for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), MakeType(TypeId::Float));
    BoundExprPtr node = MakeFunction("t_" + name, MakeType(TypeId::Float), std::move(args));
    // POWER answers in the type of its first argument.
    return name == "power" && IsNumeric(given) ? Convert(std::move(node), given) : std::move(node);
  }
  const bool isRound = name == "round";
  if (name != "abs" && name != "floor" && name != "ceiling" && name != "sign" && !isRound) return nullptr;
  std::vector<BoundExprPtr> args = BindArguments(expr, isRound ? 2 : 1, isRound ? 3 : 1);
  if (IsText(args[0]->type)) args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
  if (!IsNumeric(args[0]->type)) Fail(8117, {TypeName(args[0]->type.id), name});
  if (args[0]->type.id == TypeId::TinyInt || args[0]->type.id == TypeId::SmallInt ||
      args[0]->type.id == TypeId::Bit)
    args[0] = Convert(std::move(args[0]), MakeType(TypeId::Int));
  Type type = args[0]->type;
  if (type.id == TypeId::Real) type = MakeType(TypeId::Float);
  if (FamilyOf(type.id) == Family::Integer) type.precision = 0;
  args[0] = Convert(std::move(args[0]), type);
  const Type operand = type;
  if (type.id == TypeId::Decimal && (name == "floor" || name == "ceiling"))
    type = MakeDecimal(type.precision, 0);
  for (size_t i = 1; i < args.size(); ++i) args[i] = Convert(std::move(args[i]), MakeType(TypeId::Int));
  args.insert(args.begin() + 1, MakeInteger(EncodeType(operand)));
  args.insert(args.begin() + 2, MakeInteger(EncodeType(type)));
  return MakeFunction("t_" + name, type, std::move(args));
}

BoundExprPtr Binder::BindMetaFunction(const Expr& expr) const {
  struct Entry {
    const char* name;
    GlobalValue value;
    Type type;
  };
  static const Entry kGlobals[] = {
      {"scope_identity", GlobalValue::ScopeIdentity, MakeDecimal(38, 0)},
      {"error_number", GlobalValue::ErrorNumber, MakeType(TypeId::Int)},
      {"error_message", GlobalValue::ErrorMessage, MakeType(TypeId::NVarChar, 2048)},
      {"error_severity", GlobalValue::ErrorSeverity, MakeType(TypeId::Int)},
      {"error_state", GlobalValue::ErrorState, MakeType(TypeId::Int)},
      {"error_line", GlobalValue::ErrorLine, MakeType(TypeId::Int)},
      {"error_procedure", GlobalValue::ErrorProcedure, MakeType(TypeId::NVarChar, 128)}};
  for (const Entry& entry : kGlobals)
    if (expr.text == entry.name) return MakeGlobal(entry.value, entry.type);
  if (expr.text == "newid") return MakeFunction("t_newid", MakeType(TypeId::UniqueIdentifier), {});
  // Who and where: the engine knows no logins and no network.
  const std::pair<const char*, std::string> kNames[] = {
      {"db_name", catalog_.DatabaseName()}, {"user_name", "dbo"}, {"suser_sname", "sa"}, {"suser_name", "sa"},
      {"host_name", "localhost"},           {"app_name", "tsql"}};
  for (const auto& [name, value] : kNames) {
    if (expr.text != name) continue;
    if (!expr.args.empty()) FailUnsupported(ToUpper(name) + " with an argument");
    return MakeConstant(Datum::OfText(value), MakeType(TypeId::NVarChar, kNameLength));
  }
  if (expr.text == "object_name") {
    if (expr.args.size() != 1) Fail(174, {expr.text, "1"});
    Binder arguments(catalog_, variables_, markers_);
    return Call("t_object_name", MakeType(TypeId::NVarChar, kNameLength),
                Convert(arguments.BindScalar(*expr.args[0]), MakeType(TypeId::Int)));
  }
  const bool isObjectId = expr.text == "object_id";
  if (!isObjectId && expr.text != "col_length") return nullptr;
  if (expr.args.empty() || expr.args.size() > 2 || (!isObjectId && expr.args.size() != 2))
    Fail(174, {expr.text, isObjectId ? "1" : "2"});
  std::vector<BoundExprPtr> args;
  Binder arguments(catalog_, variables_, markers_);
  for (const ExprPtr& arg : expr.args) args.push_back(ConvertText(arguments.BindScalar(*arg)));
  return MakeFunction(isObjectId ? "t_object_id" : "t_col_length",
                      MakeType(isObjectId ? TypeId::Int : TypeId::SmallInt), std::move(args));
}

} // namespace tsql
