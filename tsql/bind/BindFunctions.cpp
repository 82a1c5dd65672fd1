#include <algorithm>
#include <numbers>
#include <optional>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr int32_t kNameLength = 128;
constexpr size_t kMostChoices = 254;

constexpr std::pair<std::string_view, AggregateId> kAggregates[] = {
    {"count", AggregateId::Count},
    {"count_big", AggregateId::CountBig},
    {"sum", AggregateId::Sum},
    {"avg", AggregateId::Average},
    {"min", AggregateId::Min},
    {"max", AggregateId::Max},
    {"stdev", AggregateId::Deviation},
    {"stdevp", AggregateId::PopulationDeviation},
    {"var", AggregateId::Variance},
    {"varp", AggregateId::PopulationVariance},
    {"string_agg", AggregateId::StringAggregate}};

// Functions that read what the session knows.
struct GlobalFunction {
  std::string_view name;
  GlobalValue value;
  Type type;
};

std::span<const GlobalFunction> GlobalFunctions() {
  static const GlobalFunction kFunctions[] = {
      {"scope_identity", GlobalValue::ScopeIdentity, MakeDecimal(38, 0)},
      {"rowcount_big", GlobalValue::RowCount, MakeType(TypeId::BigInt)},
      {"xact_state", GlobalValue::TransactionState, MakeType(TypeId::SmallInt)},
      {"trigger_nestlevel", GlobalValue::TriggerNesting, MakeType(TypeId::Int)},
      {"error_number", GlobalValue::ErrorNumber, MakeType(TypeId::Int)},
      {"error_message", GlobalValue::ErrorMessage, MakeType(TypeId::NVarChar, 2048)},
      {"error_severity", GlobalValue::ErrorSeverity, MakeType(TypeId::Int)},
      {"error_state", GlobalValue::ErrorState, MakeType(TypeId::Int)},
      {"error_line", GlobalValue::ErrorLine, MakeType(TypeId::Int)},
      {"error_procedure", GlobalValue::ErrorProcedure, MakeType(TypeId::NVarChar, kNameLength)}};
  return kFunctions;
}

// Functions whose value is a name. The engine knows no logins and no network: who asks and where is always
// the same. The name of the database is put in where there is none.
struct NameFunction {
  std::string_view name;
  std::string_view value;
  std::optional<FunctionId> ofArgument; // what it is with an argument
};
constexpr NameFunction kNameFunctions[] = {{"db_name", {}, FunctionId::DatabaseName},
                                           {"user_name", "dbo", FunctionId::UserName},
                                           {"suser_sname", "sa", FunctionId::LoginName},
                                           {"suser_name", "sa", FunctionId::LoginName},
                                           {"original_login", "sa", std::nullopt},
                                           {"host_name", "localhost", std::nullopt},
                                           {"app_name", "tsql", std::nullopt}};

constexpr std::string_view kPi = "pi";

} // namespace

std::optional<AggregateId> Binder::FindAggregate(std::string_view name) {
  for (const auto& [text, id] : kAggregates)
    if (text == name) return id;
  return std::nullopt;
}

// The table of all functions: its name, what it is in the bound tree, and the rule for its arguments and
// type.
std::span<const Binder::FunctionEntry> Binder::FunctionTable() {
  static constexpr FunctionEntry kFunctions[] = {
      {"isnull", FunctionId::IsNull, &Binder::BindIsNull},
      {"coalesce", FunctionId::Coalesce, &Binder::BindCoalesce},
      {"nullif", FunctionId::NullIf, &Binder::BindNullIf},
      {"choose", FunctionId::NullIf, &Binder::BindChoose},
      {"concat", FunctionId::Concat, &Binder::BindConcat},
      {"concat_ws", FunctionId::ConcatWithSeparator, &Binder::BindConcat},
      {"len", FunctionId::Len, &Binder::BindTextMeasure},
      {"ascii", FunctionId::Ascii, &Binder::BindTextMeasure},
      {"unicode", FunctionId::Unicode, &Binder::BindTextMeasure},
      {"datalength", FunctionId::DataLength, &Binder::BindDataLength},
      {"patindex", FunctionId::PatIndex, &Binder::BindPatIndex},
      {"charindex", FunctionId::CharIndex, &Binder::BindCharIndex},
      {"quotename", FunctionId::QuoteName, &Binder::BindQuoteName},
      {"ltrim", FunctionId::LTrim, &Binder::BindTextMap},
      {"rtrim", FunctionId::RTrim, &Binder::BindTextMap},
      {"trim", FunctionId::Trim, &Binder::BindTrim},
      {"translate", FunctionId::Translate, &Binder::BindTranslate},
      {"parsename", FunctionId::ParseName, &Binder::BindParseName},
      {"upper", FunctionId::Upper, &Binder::BindTextMap},
      {"lower", FunctionId::Lower, &Binder::BindTextMap},
      {"reverse", FunctionId::Reverse, &Binder::BindTextMap},
      {"left", FunctionId::Left, &Binder::BindTextEnd},
      {"right", FunctionId::Right, &Binder::BindTextEnd},
      {"substring", FunctionId::Substring, &Binder::BindSubstring},
      {"replace", FunctionId::Replace, &Binder::BindReplace},
      {"replicate", FunctionId::Replicate, &Binder::BindReplicate},
      {"stuff", FunctionId::Stuff, &Binder::BindStuff},
      {"space", FunctionId::Space, &Binder::BindCharacter},
      {"char", FunctionId::Char, &Binder::BindCharacter},
      {"nchar", FunctionId::NChar, &Binder::BindCharacter},
      {"str", FunctionId::Str, &Binder::BindStr},
      {"soundex", FunctionId::Soundex, &Binder::BindSoundex},
      {"difference", FunctionId::Difference, &Binder::BindSoundex},
      {"hashbytes", FunctionId::HashBytes, &Binder::BindHashBytes},
      {"isnumeric", FunctionId::IsNumeric, &Binder::BindTextTest},
      {"isdate", FunctionId::IsDate, &Binder::BindTextTest},
      {"getdate", FunctionId::GetDate, &Binder::BindGetDate},
      {"sysdatetime", FunctionId::SysDateTime, &Binder::BindGetDate},
      {"getutcdate", FunctionId::GetUtcDate, &Binder::BindGetDate},
      {"sysutcdatetime", FunctionId::SysUtcDateTime, &Binder::BindGetDate},
      {"year", FunctionId::DatePart, &Binder::BindCalendarPart},
      {"month", FunctionId::DatePart, &Binder::BindCalendarPart},
      {"day", FunctionId::DatePart, &Binder::BindCalendarPart},
      {"dateadd", FunctionId::DateAdd, &Binder::BindDateAdd},
      {"datediff", FunctionId::DateDiff, &Binder::BindDateDiff},
      {"datediff_big", FunctionId::DateDiffBig, &Binder::BindDateDiff},
      {"datefromparts", FunctionId::DateFromParts, &Binder::BindDateFromParts},
      {"datetimefromparts", FunctionId::DateFromParts, &Binder::BindDateFromParts},
      {"smalldatetimefromparts", FunctionId::DateFromParts, &Binder::BindDateFromParts},
      {"datetime2fromparts", FunctionId::DateFromParts, &Binder::BindDateFromParts},
      {"timefromparts", FunctionId::DateFromParts, &Binder::BindDateFromParts},
      {"eomonth", FunctionId::EndOfMonth, &Binder::BindEndOfMonth},
      {"datepart", FunctionId::DatePart, &Binder::BindDatePart},
      {"datename", FunctionId::DateName, &Binder::BindDatePart},
      {"sqrt", FunctionId::Sqrt, &Binder::BindFloatFunction},
      {"square", FunctionId::Square, &Binder::BindFloatFunction},
      {"power", FunctionId::Power, &Binder::BindFloatFunction},
      {"exp", FunctionId::Exp, &Binder::BindFloatFunction},
      {"log", FunctionId::Log, &Binder::BindFloatFunction},
      {"log10", FunctionId::Log10, &Binder::BindFloatFunction},
      {"acos", FunctionId::Acos, &Binder::BindFloatFunction},
      {"asin", FunctionId::Asin, &Binder::BindFloatFunction},
      {"atan", FunctionId::Atan, &Binder::BindFloatFunction},
      {"atn2", FunctionId::Atan2, &Binder::BindFloatFunction},
      {"cos", FunctionId::Cos, &Binder::BindFloatFunction},
      {"cot", FunctionId::Cot, &Binder::BindFloatFunction},
      {"sin", FunctionId::Sin, &Binder::BindFloatFunction},
      {"tan", FunctionId::Tan, &Binder::BindFloatFunction},
      {"degrees", FunctionId::Degrees, &Binder::BindAngle},
      {"radians", FunctionId::Radians, &Binder::BindAngle},
      {"rand", FunctionId::Random, &Binder::BindRandom},
      {"abs", FunctionId::Abs, &Binder::BindRounding},
      {"sign", FunctionId::Sign, &Binder::BindRounding},
      {"floor", FunctionId::Floor, &Binder::BindRounding},
      {"ceiling", FunctionId::Ceiling, &Binder::BindRounding},
      {"round", FunctionId::Round, &Binder::BindRounding},
      {"newid", FunctionId::NewId, &Binder::BindNewId},
      {"object_id", FunctionId::ObjectId, &Binder::BindObjectSize},
      {"ident_seed", FunctionId::IdentitySeed, &Binder::BindIdentityNumber},
      {"ident_incr", FunctionId::IdentityIncrement, &Binder::BindIdentityNumber},
      {"ident_current", FunctionId::CurrentIdentity, &Binder::BindIdentityNumber},
      {"cursor_status", FunctionId::CursorStatus, &Binder::BindCursorStatus},
      {"update", FunctionId::Updated, &Binder::BindUpdated},
      {"col_length", FunctionId::ColLength, &Binder::BindObjectSize},
      {"object_name", FunctionId::ObjectName, &Binder::BindObjectName},
      {"object_schema_name", FunctionId::ObjectSchemaName, &Binder::BindObjectName},
      {"objectproperty", FunctionId::ObjectProperty, &Binder::BindProperty},
      {"columnproperty", FunctionId::ColumnProperty, &Binder::BindProperty},
      {"col_name", FunctionId::ColumnName, &Binder::BindColumnName},
      {"object_definition", FunctionId::ObjectDefinition, &Binder::BindObjectName},
      {"db_id", FunctionId::DatabaseId, &Binder::BindServerNumber},
      {"type_id", FunctionId::TypeId, &Binder::BindServerNumber},
      {"type_name", FunctionId::TypeName, &Binder::BindServerName},
      {"is_member", FunctionId::IsMember, &Binder::BindMembership},
      {"is_srvrolemember", FunctionId::IsMember, &Binder::BindMembership},
      {"schema_name", FunctionId::SchemaName, &Binder::BindSchemaName},
      {"schema_id", FunctionId::SchemaId, &Binder::BindSchemaName},
  };
  return kFunctions;
}

std::vector<std::string_view> Binder::FunctionNames() {
  std::vector<std::string_view> names{kPi};
  for (const auto& [name, aggregate] : kAggregates) names.push_back(name);
  for (const FunctionEntry& entry : FunctionTable()) names.push_back(entry.name);
  for (const WindowEntry& entry : WindowTable()) names.push_back(entry.name);
  for (const std::string_view name : GroupingFunctions()) names.push_back(name);
  for (const GlobalFunction& function : GlobalFunctions()) names.push_back(function.name);
  for (const NameFunction& function : kNameFunctions) names.push_back(function.name);
  return names;
}

BoundExprPtr Binder::BindCall(const Expr& expr) {
  const std::optional<AggregateId> aggregate = FindAggregate(expr.text);
  if (aggregate == AggregateId::StringAggregate) return BindStringAggregate(expr);
  if (!expr.within.empty()) Fail(10757, {expr.text});
  if (aggregate) return BindAggregate(expr, *aggregate);
  if (std::ranges::find(GroupingFunctions(), expr.text) != GroupingFunctions().end())
    return BindGrouping(expr);
  for (const FunctionEntry& entry : FunctionTable())
    if (entry.name == expr.text) return (this->*entry.rule)(expr, entry.function);
  if (BoundExprPtr bound = BindConstantFunction(expr)) return bound;
  if (FindWindowFunction(expr.text) != nullptr) Fail(10753, {expr.text});
  Fail(195, {expr.text});
}

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

// ---- nulls

BoundExprPtr Binder::BindIsNull(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
  Type type = IsNullConstant(*args[0]) ? args[1]->type : args[0]->type;
  if (FamilyOf(type.id) == Family::Integer) type.precision = 0;
  args[0] = Convert(std::move(args[0]), type);
  args[1] = Convert(std::move(args[1]), type);
  const bool nullable = args[0]->nullable && args[1]->nullable;
  BoundExprPtr node = MakeFunction(function, type, std::move(args));
  node->nullable = nullable;
  return node;
}

BoundExprPtr Binder::BindCoalesce(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, 100);
  std::vector<const BoundExpr*> operands;
  operands.reserve(args.size());
  for (const BoundExprPtr& arg : args) operands.push_back(arg.get());
  if (std::all_of(operands.begin(), operands.end(),
                  [](const BoundExpr* arg) { return IsNullConstant(*arg); }))
    Fail(4127, {});
  const Type type = CommonTypeOf(operands);
  for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), type);
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindNullIf(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
  if (IsNullConstant(*args[0])) Fail(4151, {});
  const Type type = args[0]->type;
  const Type common = CommonTypeOf({args[0].get(), args[1].get()});
  const bool isBinary = FamilyOf(common.id) == Family::Binary;
  if ((common == type && !isBinary) || IsText(common)) return MakeFunction(function, type, std::move(args));
  // CASE WHEN a = b THEN NULL ELSE a END: the comparison converts, the result does not.
  BoundExprPtr compare = MakeNode(BoundExpr::Kind::Compare, {});
  compare->args.push_back(Convert(std::move(args[0]), common));
  compare->args.push_back(Convert(std::move(args[1]), common));
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Case, type);
  node->hasElse = true;
  node->args.push_back(std::move(compare));
  node->args.push_back(MakeConstant({}, type));
  node->args.push_back(Bind(*expr.args[0]));
  return node;
}

// CHOOSE(number, a, b, ...): CASE number WHEN 1 THEN a WHEN 2 THEN b ... END.
BoundExprPtr Binder::BindChoose(const Expr& expr, FunctionId /*function*/) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, kMostChoices);
  std::vector<const BoundExpr*> choices;
  for (size_t i = 1; i < args.size(); ++i) choices.push_back(args[i].get());
  const Type type = CommonTypeOf(choices);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Case, type);
  node->hasOperand = true;
  node->args.push_back(Convert(std::move(args[0]), MakeType(TypeId::Int)));
  for (size_t i = 1; i < args.size(); ++i) {
    node->args.push_back(MakeConstant(Datum::OfInteger(static_cast<int64_t>(i)), MakeType(TypeId::Int)));
    node->args.push_back(Convert(std::move(args[i]), type));
  }
  return node;
}

// ---- the catalog and the session

BoundExprPtr Binder::BindNewId(const Expr& /*expr*/, FunctionId function) {
  if (inFunction_) Fail(443, {"newid"});
  return MakeFunction(function, MakeType(TypeId::UniqueIdentifier), {});
}

BoundExprPtr Binder::BindObjectName(const Expr& expr, FunctionId function) {
  if (expr.args.size() != 1) Fail(174, {expr.text, "1"});
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  args[0] = Convert(std::move(args[0]), MakeType(TypeId::Int));
  const int32_t length = function == FunctionId::ObjectDefinition ? -1 : kNameLength;
  return MakeFunction(function, MakeType(TypeId::NVarChar, length), std::move(args));
}

// The number of an object, for a column's property its name, and the property.
BoundExprPtr Binder::BindProperty(const Expr& expr, FunctionId function) {
  const size_t count = function == FunctionId::ObjectProperty ? 2 : 3;
  std::vector<BoundExprPtr> args = BindArguments(expr, count, count);
  args[0] = Convert(std::move(args[0]), MakeType(TypeId::Int));
  for (size_t i = 1; i < count; ++i) args[i] = ConvertText(std::move(args[i]));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

BoundExprPtr Binder::BindColumnName(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
  for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), MakeType(TypeId::Int));
  return MakeFunction(function, MakeType(TypeId::NVarChar, kNameLength), std::move(args));
}

// DB_ID, which is the own database's without a name, and TYPE_ID.
BoundExprPtr Binder::BindServerNumber(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, function == FunctionId::DatabaseId ? 0 : 1, 1);
  if (!args.empty()) args[0] = ConvertText(std::move(args[0]));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

// The name of what has the number. A login may have its bytes instead.
BoundExprPtr Binder::BindServerName(const Expr& expr, FunctionId function) {
  constexpr int32_t kMostBytes = 85;
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  const bool hasBytes = expr.text == "suser_sname";
  args[0] =
      Convert(std::move(args[0]), hasBytes ? MakeType(TypeId::VarBinary, kMostBytes) : MakeType(TypeId::Int));
  return MakeFunction(function, MakeType(TypeId::NVarChar, kNameLength), std::move(args));
}

// IS_MEMBER, IS_SRVROLEMEMBER: a role, and whether it is one of the server.
BoundExprPtr Binder::BindMembership(const Expr& expr, FunctionId function) {
  const bool isOfServer = expr.text == "is_srvrolemember";
  if (isOfServer && expr.args.size() == 2) Refuse("IS_SRVROLEMEMBER of a login");
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  args[0] = ConvertText(std::move(args[0]));
  args.push_back(MakeConstant(Datum::OfInteger(isOfServer ? 1 : 0), MakeType(TypeId::Int)));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

// Without an argument they ask for dbo, the schema of everyone who asks.
BoundExprPtr Binder::BindSchemaName(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 0, 1);
  const Type name = MakeType(TypeId::NVarChar, kNameLength);
  const bool isName = function == FunctionId::SchemaName;
  if (!args.empty()) args[0] = Convert(std::move(args[0]), isName ? MakeType(TypeId::Int) : name);
  return MakeFunction(function, isName ? name : MakeType(TypeId::Int), std::move(args));
}

BoundExprPtr Binder::BindObjectSize(const Expr& expr, FunctionId function) {
  const bool isObjectId = function == FunctionId::ObjectId;
  if (expr.args.empty() || expr.args.size() > 2 || (!isObjectId && expr.args.size() != 2))
    Fail(174, {expr.text, isObjectId ? "1" : "2"});
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 2);
  for (BoundExprPtr& arg : args) arg = ConvertText(std::move(arg));
  return MakeFunction(function, MakeType(isObjectId ? TypeId::Int : TypeId::SmallInt), std::move(args));
}

// The name of a table.
BoundExprPtr Binder::BindIdentityNumber(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  args[0] = ConvertText(std::move(args[0]));
  return MakeFunction(function, MakeDecimal(kMaxPrecision, 0), std::move(args));
}

BoundExprPtr Binder::BindCursorStatus(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 2, 2);
  for (BoundExprPtr& arg : args) arg = ConvertText(std::move(arg));
  return MakeFunction(function, MakeType(TypeId::SmallInt), std::move(args));
}

// The parser gives it the name of a column.
BoundExprPtr Binder::BindUpdated(const Expr& expr, FunctionId function) {
  if (trigger_ == nullptr) Fail(140, {});
  const TablePtr table = TriggerTable();
  const std::string& name = expr.args.front()->parts.back();
  const int column = table->FindColumn(name);
  if (column < 0) Fail(207, {name});
  std::vector<BoundExprPtr> args;
  args.push_back(MakeConstant(Datum::OfInteger(column), MakeType(TypeId::Int)));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

// Functions whose value is known before the statement runs; null when it is none of them.
BoundExprPtr Binder::BindConstantFunction(const Expr& expr) {
  for (const GlobalFunction& function : GlobalFunctions()) {
    if (expr.text != function.name) continue;
    if (function.value == GlobalValue::TriggerNesting && !expr.args.empty())
      Refuse("TRIGGER_NESTLEVEL with an argument");
    return MakeGlobal(function.value, function.type);
  }
  if (expr.text == kPi) {
    BindArguments(expr, 0, 0);
    return MakeConstant(Datum::OfReal(std::numbers::pi), MakeType(TypeId::Float));
  }
  for (const auto& [name, value, ofArgument] : kNameFunctions) {
    if (expr.text != name) continue;
    if (!expr.args.empty() && !ofArgument) Fail(174, {expr.text, "0"});
    if (!expr.args.empty()) return BindServerName(expr, *ofArgument);
    return MakeConstant(Datum::OfText(value.empty() ? catalog_.DatabaseName() : std::string(value)),
                        MakeType(TypeId::NVarChar, kNameLength));
  }
  return nullptr;
}

} // namespace tsql
