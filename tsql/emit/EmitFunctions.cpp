#include <array>

#include "tsql/emit/Emitter.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Which numbers of types a function of the engine takes beside the arguments, and where.
enum class TypeCodes : uint8_t {
  None,
  Argument,          // that of the first argument, behind it
  ArgumentAndResult, // those of the first argument and of the result, behind the first argument
  Result,            // that of the result, at the end
};

// What SQLite is asked for: its own function where that means the same, otherwise one of the engine.
struct Form {
  FunctionId function;
  const char* name;
  TypeCodes codes = TypeCodes::None;
};

// In the order of FunctionId.
constexpr std::array<Form, kFunctionCount> kForms = {{
    {FunctionId::IsNull, "ifnull"},
    {FunctionId::Coalesce, "coalesce"},
    {FunctionId::NullIf, "nullif"},
    {FunctionId::Len, names::kLen},
    {FunctionId::DataLength, names::kDataLength, TypeCodes::Argument},
    {FunctionId::Ascii, names::kAscii},
    {FunctionId::Unicode, names::kUnicode},
    {FunctionId::PatIndex, names::kPatIndex},
    {FunctionId::CharIndex, names::kCharIndex},
    {FunctionId::QuoteName, names::kQuoteName},
    // SQLite cuts only blanks, as the server does.
    {FunctionId::LTrim, "ltrim"},
    {FunctionId::RTrim, "rtrim"},
    {FunctionId::Trim, "trim"},
    {FunctionId::Upper, names::kUpper, TypeCodes::Argument},
    {FunctionId::Lower, names::kLower, TypeCodes::Argument},
    {FunctionId::Reverse, names::kReverse},
    {FunctionId::Left, names::kLeft},
    {FunctionId::Right, names::kRight},
    {FunctionId::Substring, names::kSubstring},
    {FunctionId::Replace, names::kReplace},
    {FunctionId::Replicate, names::kReplicate, TypeCodes::Result},
    {FunctionId::Stuff, names::kStuff},
    {FunctionId::Space, names::kSpace},
    {FunctionId::Char, names::kChar, TypeCodes::Result},
    {FunctionId::NChar, names::kChar},
    {FunctionId::Str, names::kStr},
    {FunctionId::IsNumeric, names::kIsNumeric},
    {FunctionId::IsDate, names::kIsDate},
    {FunctionId::GetDate, names::kGetDate},
    {FunctionId::DateAdd, names::kDateAdd, TypeCodes::Result},
    {FunctionId::DateDiff, names::kDateDiff},
    {FunctionId::DatePart, names::kDatePart},
    {FunctionId::DateName, names::kDateName},
    {FunctionId::Sqrt, names::kSqrt},
    {FunctionId::Square, names::kSquare},
    {FunctionId::Power, names::kPower},
    {FunctionId::Exp, names::kExp},
    {FunctionId::Log, names::kLog},
    {FunctionId::Log10, names::kLog10},
    {FunctionId::Abs, names::kAbs, TypeCodes::ArgumentAndResult},
    {FunctionId::Sign, names::kSign, TypeCodes::ArgumentAndResult},
    {FunctionId::Floor, names::kFloor, TypeCodes::ArgumentAndResult},
    {FunctionId::Ceiling, names::kCeiling, TypeCodes::ArgumentAndResult},
    {FunctionId::Round, names::kRound, TypeCodes::ArgumentAndResult},
    {FunctionId::NewId, names::kNewId},
    {FunctionId::ObjectId, names::kObjectId},
    {FunctionId::ObjectName, names::kObjectName},
    {FunctionId::ColLength, names::kColLength},
    {FunctionId::NotNull, names::kNotNull},
    {FunctionId::RowLimit, names::kRowLimit},
}};

constexpr bool IsInOrder() {
  for (size_t i = 0; i < kForms.size(); ++i)
    if (kForms[i].function != static_cast<FunctionId>(i)) return false;
  return true;
}
static_assert(IsInOrder());

bool IsConstantFrom(const BoundExpr& expr, int64_t least) {
  return expr.kind == BoundExpr::Kind::Constant && expr.constant.kind == Datum::Kind::Integer &&
         expr.constant.integer >= least;
}

} // namespace

// SQLite's substr agrees with LEFT and SUBSTRING where positions and lengths cannot be out of range.
bool Emitter::EmitSubstring(const BoundExpr& expr) {
  const bool isLeft = expr.function == FunctionId::Left && IsConstantFrom(*expr.args[1], 0);
  const bool isSubstring = expr.function == FunctionId::Substring && IsConstantFrom(*expr.args[1], 1) &&
                           IsConstantFrom(*expr.args[2], 0);
  if (!isLeft && !isSubstring) return false;
  Open("substr");
  EmitCollated(*expr.args[0]);
  if (isLeft) Text(", 1");
  for (size_t i = 1; i < expr.args.size(); ++i) {
    Text(", ");
    Emit(*expr.args[i]);
  }
  Text(")");
  return true;
}

void Emitter::EmitFunction(const BoundExpr& expr) {
  if (EmitSubstring(expr)) return;
  const Form& form = kForms[static_cast<size_t>(expr.function)];
  Open(form.name);
  const auto code = [this](const Type& type) {
    Text(", ");
    TypeCode(type);
  };
  for (size_t i = 0; i < expr.args.size(); ++i) {
    if (i > 0) {
      Text(", ");
      Emit(*expr.args[i]);
      continue;
    }
    EmitCollated(*expr.args[i]); // NULLIF compares under the collation of its first argument
    if (form.codes == TypeCodes::Argument || form.codes == TypeCodes::ArgumentAndResult)
      code(expr.args[i]->type);
    if (form.codes == TypeCodes::ArgumentAndResult) code(expr.type);
  }
  if (form.codes == TypeCodes::Result) code(expr.type);
  Text(")");
}

void Emitter::EmitNativeAggregate(std::string_view name, const BoundExpr& expr) {
  Open(name);
  if (expr.distinct) Text("DISTINCT ");
  EmitCollated(*expr.args[0]);
  Text(")");
}

void Emitter::EmitAggregate(const BoundExpr& expr) {
  if (expr.args.empty()) {
    Text("count(*)");
    return;
  }
  switch (expr.aggregate) {
  case AggregateId::Count:
  case AggregateId::CountBig: return EmitNativeAggregate("count", expr);
  case AggregateId::Min: return EmitNativeAggregate("min", expr);
  case AggregateId::Max: return EmitNativeAggregate("max", expr);
  case AggregateId::Sum:
  case AggregateId::Average: break;
  }
  const bool isAverage = expr.aggregate == AggregateId::Average;
  switch (FamilyOf(expr.type.id)) {
  case Family::Float:
    Open(names::kFinite);
    EmitNativeAggregate(isAverage ? "avg" : "sum", expr);
    Text(")");
    break;
  case Family::Integer:
    // The sum must fit into the type, even if only the average is wanted.
    if (isAverage) Text("(");
    Open(names::kRange);
    EmitNativeAggregate("sum", expr);
    Text(", ");
    Number(static_cast<int64_t>(expr.type.id));
    Text(")");
    if (isAverage) {
      Text(" / ");
      EmitNativeAggregate("count", expr);
      Text(")");
    }
    break;
  default:
    if (expr.distinct) Refuse("SUM or AVG with DISTINCT of a decimal");
    Open(isAverage ? names::kAverage : names::kSum);
    Emit(*expr.args[0]);
    Text(", ");
    TypeCode(expr.args[0]->type);
    Text(", ");
    TypeCode(expr.type);
    Text(")");
  }
}

} // namespace tsql
