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
    {FunctionId::Concat, names::kConcat, TypeCodes::Result},
    {FunctionId::ConcatWithSeparator, names::kConcatWithSeparator, TypeCodes::Result},
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
    {FunctionId::TrimCharacters, names::kTrimCharacters},
    {FunctionId::Translate, names::kTranslate},
    {FunctionId::ParseName, names::kParseName},
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
    {FunctionId::Soundex, names::kSoundex},
    {FunctionId::Difference, names::kDifference},
    {FunctionId::HashBytes, names::kHashBytes},
    {FunctionId::IsNumeric, names::kIsNumeric},
    {FunctionId::IsDate, names::kIsDate},
    {FunctionId::GetDate, names::kGetDate},
    {FunctionId::GetUtcDate, names::kGetUtcDate},
    {FunctionId::SysDateTime, names::kSysDateTime},
    {FunctionId::SysUtcDateTime, names::kSysUtcDateTime},
    {FunctionId::DateAdd, names::kDateAdd, TypeCodes::Result},
    {FunctionId::DateDiff, names::kDateDiff},
    {FunctionId::DateDiffBig, names::kDateDiffBig},
    {FunctionId::DatePart, names::kDatePart},
    {FunctionId::DateName, names::kDateName},
    {FunctionId::DateFromParts, names::kDateFromParts, TypeCodes::Result},
    {FunctionId::EndOfMonth, names::kEndOfMonth},
    {FunctionId::Random, names::kRandom},
    {FunctionId::Acos, names::kAcos},
    {FunctionId::Asin, names::kAsin},
    {FunctionId::Atan, names::kAtan},
    {FunctionId::Atan2, names::kAtan2},
    {FunctionId::Cos, names::kCos},
    {FunctionId::Cot, names::kCot},
    {FunctionId::Sin, names::kSin},
    {FunctionId::Tan, names::kTan},
    {FunctionId::Degrees, names::kDegrees},
    {FunctionId::Radians, names::kRadians},
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
    {FunctionId::ObjectSchemaName, names::kObjectSchemaName},
    {FunctionId::ObjectProperty, names::kObjectProperty},
    {FunctionId::ColumnProperty, names::kColumnProperty},
    {FunctionId::ColumnName, names::kColumnName},
    {FunctionId::ObjectDefinition, names::kObjectDefinition},
    {FunctionId::SchemaName, names::kSchemaName},
    {FunctionId::SchemaId, names::kSchemaId},
    {FunctionId::ColLength, names::kColLength},
    {FunctionId::IdentitySeed, names::kIdentitySeed},
    {FunctionId::IdentityIncrement, names::kIdentityIncrement},
    {FunctionId::CurrentIdentity, names::kCurrentIdentity},
    {FunctionId::DatabaseId, names::kDatabaseId},
    {FunctionId::DatabaseName, names::kDatabaseName},
    {FunctionId::UserName, names::kUserName},
    {FunctionId::LoginName, names::kLoginName},
    {FunctionId::TypeId, names::kServerTypeId},
    {FunctionId::TypeName, names::kServerTypeName},
    {FunctionId::IsMember, names::kIsMember},
    {FunctionId::CursorStatus, names::kCursorStatus},
    {FunctionId::Updated, names::kUpdated},
    {FunctionId::NotNull, names::kNotNull},
    {FunctionId::RowLimit, names::kRowLimit},
    {FunctionId::AtLeast, names::kAtLeast},
    {FunctionId::AssignVariable, names::kAssignVariable},
    {FunctionId::GivenIdentity, names::kGivenIdentity},
    {FunctionId::Then, names::kThen},
}};

constexpr bool IsInOrder() {
  for (size_t i = 0; i < kForms.size(); ++i)
    if (kForms[i].function != static_cast<FunctionId>(i)) return false;
  return true;
}
static_assert(IsInOrder());

// What is asked for under a collation that tells cases apart.
const char* NameOf(const Form& form, CollationId collation) {
  if (collation == CollationId::Default) return form.name;
  switch (form.function) {
  case FunctionId::PatIndex:
    return collation == CollationId::Binary ? names::kPatIndexBinary : names::kPatIndexCased;
  case FunctionId::CharIndex: return names::kCharIndexExactly;
  case FunctionId::Replace: return names::kReplaceExactly;
  case FunctionId::TrimCharacters: return names::kTrimExactly;
  case FunctionId::Translate: return names::kTranslateExactly;
  default: return form.name;
  }
}

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
  Open(expr.args.empty() ? form.name : NameOf(form, expr.args[0]->collation));
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
  EmitOver(expr);
}

void Emitter::EmitStringAggregate(const BoundExpr& expr) {
  Open(names::kStringAggregate);
  Emit(*expr.args[0]);
  Text(", ");
  Emit(*expr.args[1]);
  Text(", ");
  TypeCode(expr.type);
  const size_t first = expr.args.size() - expr.descending.size();
  for (size_t i = 0; i < expr.descending.size(); ++i) {
    Text(i == 0 ? " ORDER BY " : ", ");
    EmitCollated(*expr.args[first + i]);
    if (expr.descending[i]) Text(" DESC");
  }
  Text(")");
}

void Emitter::EmitWindowFunction(const BoundExpr& expr) {
  // In the order of WindowId.
  constexpr std::array<const char*, 10> kNames = {"row_number",  "rank",         "dense_rank", "ntile",
                                                  "cume_dist",   "percent_rank", "lag",        "lead",
                                                  "first_value", "last_value"};
  Open(kNames[static_cast<size_t>(expr.window)]);
  for (size_t i = 0; i < OwnArguments(expr); ++i) {
    if (i > 0) Text(", ");
    Emit(*expr.args[i]);
  }
  Text(")");
  EmitOver(expr);
}

namespace {

std::string EdgeSql(FrameEdge edge, int64_t rows) {
  switch (edge) {
  case FrameEdge::UnboundedPreceding: return "UNBOUNDED PRECEDING";
  case FrameEdge::Preceding: return std::to_string(rows) + " PRECEDING";
  case FrameEdge::CurrentRow: return "CURRENT ROW";
  case FrameEdge::Following: return std::to_string(rows) + " FOLLOWING";
  case FrameEdge::UnboundedFollowing: break;
  }
  return "UNBOUNDED FOLLOWING";
}

} // namespace

// The window of an aggregate or a window function; nothing behind an aggregate of a group.
void Emitter::EmitOver(const BoundExpr& expr) {
  if (!expr.over) return;
  const BoundWindow& window = *expr.over;
  Text(" OVER (");
  const size_t first = OwnArguments(expr);
  for (size_t i = 0; i < window.partitions; ++i) {
    Text(i == 0 ? "PARTITION BY " : ", ");
    EmitCollated(*expr.args[first + i]);
  }
  for (size_t i = 0; i < window.descending.size(); ++i) {
    Text(i == 0 ? " ORDER BY " : ", ");
    EmitCollated(*expr.args[first + window.partitions + i]);
    if (window.descending[i]) Text(" DESC");
  }
  if (window.frame.unit != FrameUnit::None) {
    Text(window.frame.unit == FrameUnit::Rows ? " ROWS BETWEEN " : " RANGE BETWEEN ");
    Text(EdgeSql(window.frame.start, window.frame.startRows) + " AND " +
         EdgeSql(window.frame.end, window.frame.endRows));
  }
  Text(")");
}

// An aggregate of type float, whose value must be one of that type.
void Emitter::EmitFinite(const char* aggregate, const BoundExpr& expr) {
  Open(names::kFinite);
  EmitNativeAggregate(aggregate, expr);
  Text(")");
}

void Emitter::EmitAggregate(const BoundExpr& expr) {
  if (OwnArguments(expr) == 0) {
    Text("count(*)");
    EmitOver(expr);
    return;
  }
  switch (expr.aggregate) {
  case AggregateId::Count:
  case AggregateId::CountBig: return EmitNativeAggregate("count", expr);
  case AggregateId::Min: return EmitNativeAggregate("min", expr);
  case AggregateId::Max: return EmitNativeAggregate("max", expr);
  case AggregateId::StringAggregate: return EmitStringAggregate(expr);
  case AggregateId::Deviation: return EmitFinite(names::kDeviation, expr);
  case AggregateId::PopulationDeviation: return EmitFinite(names::kPopulationDeviation, expr);
  case AggregateId::Variance: return EmitFinite(names::kVariance, expr);
  case AggregateId::PopulationVariance: return EmitFinite(names::kPopulationVariance, expr);
  case AggregateId::Sum:
  case AggregateId::Average: break;
  }
  const bool isAverage = expr.aggregate == AggregateId::Average;
  switch (FamilyOf(expr.type.id)) {
  case Family::Float: EmitFinite(isAverage ? "avg" : "sum", expr); break;
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
    EmitOver(expr);
  }
}

} // namespace tsql
