// t_compute runs a small program over its operands, so that an expression of several decimal operations is
// one call: on 64-bit integers as long as they suffice, from the start again on 38 digits when they do not.
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <memory>
#include <vector>

#include "tsql/functions/ComputeProgram.h"
#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

struct Step {
  int64_t code = 0; // kComputeOperand, kComputeCast or an ArithmeticOp
  Type left;        // or of the operand, of what is cast
  Type right;
  Type result;
  // For 64 bits: the factors of both sides, the divisor of a cast, and the limit of the result, 0 for none.
  int64_t leftFactor = 1;
  int64_t rightFactor = 1;
  int64_t divisor = 1;
  int64_t limit = 0;
};

struct Program {
  std::vector<Step> steps;
  bool isSmall = true; // whether it may be tried on 64 bits
};

// The factor between two scales; 0 when it is too large for 64 bits.
int64_t Factor(int from, int to) {
  return to < from || to - from > kMaxPowerOfTen ? 0 : PowerOfTen(to - from);
}

void Prepare(Step& step, Program& program) {
  const bool isOperand = step.code == kComputeOperand;
  if (!isOperand && step.result.precision <= kMaxPowerOfTen) step.limit = PowerOfTen(step.result.precision);
  const int scale = step.result.scale;
  if (step.code == kComputeCast) {
    step.leftFactor = scale >= step.left.scale ? Factor(step.left.scale, scale) : 1;
    step.divisor = scale < step.left.scale ? Factor(scale, step.left.scale) : 1;
    program.isSmall = program.isSmall && step.leftFactor != 0 && step.divisor != 0;
  } else if (!isOperand) {
    const auto op = static_cast<ArithmeticOp>(step.code);
    if (op == ArithmeticOp::Multiply) {
      program.isSmall = program.isSmall && scale == step.left.scale + step.right.scale;
    } else {
      step.leftFactor = Factor(step.left.scale, scale);
      step.rightFactor = Factor(step.right.scale, scale);
      const bool isAdditive = op == ArithmeticOp::Add || op == ArithmeticOp::Subtract;
      program.isSmall = program.isSmall && isAdditive && step.leftFactor != 0 && step.rightFactor != 0;
    }
  }
}

std::unique_ptr<Program> Parse(std::string_view text) {
  auto program = std::make_unique<Program>();
  const char* at = text.data();
  const char* end = at + text.size();
  const auto next = [&] {
    int64_t number = 0;
    at = std::from_chars(at, end, number).ptr;
    if (at != end) ++at;
    return number;
  };
  while (at != end) {
    Step step;
    step.code = next();
    step.left = DecodeType(next());
    if (step.code >= 0) step.right = DecodeType(next());
    step.result = step.code == kComputeOperand ? step.left : DecodeType(next());
    // Integers count as decimals without a fraction.
    if (FamilyOf(step.left.id) == Family::Integer) step.left.scale = 0;
    Prepare(step, *program);
    program->steps.push_back(step);
  }
  return program;
}

constexpr uint64_t kSign = uint64_t{1} << 63U;

uint64_t ReadBigEndian(const char* bytes) {
  uint64_t number = 0;
  std::memcpy(&number, bytes, sizeof number);
  return std::endian::native == std::endian::little ? __builtin_bswap64(number) : number;
}

void WriteBigEndian(char* bytes, uint64_t number) {
  if (std::endian::native == std::endian::little) number = __builtin_bswap64(number);
  std::memcpy(bytes, &number, sizeof number);
}

// What 64 bits made of an operand or a program.
enum class Small : uint8_t { Done, Null, TooFew };

Small ReadSmall(sqlite3_value* value, int64_t& number) {
  switch (sqlite3_value_type(value)) {
  case SQLITE_NULL: return Small::Null;
  case SQLITE_BLOB: break;
  default: number = sqlite3_value_int64(value); return Small::Done;
  }
  const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
  const uint64_t high = ReadBigEndian(bytes) ^ kSign;
  number = static_cast<int64_t>(ReadBigEndian(bytes + 8));
  return high == (number < 0 ? ~uint64_t{0} : 0) ? Small::Done : Small::TooFew;
}

// Rounds halves away from zero.
int64_t DivideRounded(int64_t value, int64_t divisor) {
  const int64_t rest = value % divisor;
  const int64_t half = divisor / 2;
  return value / divisor + (rest >= half ? 1 : rest <= -half ? -1 : 0);
}

// Runs one step on 64 bits with its operands at `stack`; false when they are too few or the result is out of
// range.
bool StepSmall(const Step& step, int64_t* stack) {
  int64_t value = stack[0];
  if (step.leftFactor != 1 && __builtin_mul_overflow(value, step.leftFactor, &value)) return false;
  if (step.code == kComputeCast) {
    if (step.divisor != 1) value = DivideRounded(value, step.divisor);
  } else {
    int64_t right = stack[1];
    if (step.rightFactor != 1 && __builtin_mul_overflow(right, step.rightFactor, &right)) return false;
    const auto op = static_cast<ArithmeticOp>(step.code);
    const bool overflows = op == ArithmeticOp::Add        ? __builtin_add_overflow(value, right, &value)
                           : op == ArithmeticOp::Subtract ? __builtin_sub_overflow(value, right, &value)
                                                          : __builtin_mul_overflow(value, right, &value);
    if (overflows) return false;
  }
  stack[0] = value;
  return step.limit == 0 || (value < step.limit && value > -step.limit);
}

Small ComputeSmall(const FunctionCall& call, const Program& program, int64_t& result) {
  std::array<int64_t, kMaxComputeOperands> stack{};
  size_t size = 0;
  int operand = 1;
  for (const Step& step : program.steps) {
    if (step.code == kComputeOperand) {
      const Small read = ReadSmall(call.Raw(operand++), stack[size++]);
      if (read != Small::Done) return read;
      continue;
    }
    if (step.code != kComputeCast) --size;
    if (!StepSmall(step, &stack[size - 1])) return Small::TooFew;
  }
  result = stack[0];
  return Small::Done;
}

Decimal ComputeExact(const FunctionCall& call, const Program& program) {
  std::array<Decimal, kMaxComputeOperands> stack{};
  size_t size = 0;
  int operand = 1;
  for (const Step& step : program.steps) {
    if (step.code == kComputeOperand) {
      stack[size++] = call.DecimalAt(operand++, step.left);
    } else if (step.code == kComputeCast) {
      const bool isInt = step.left.id == TypeId::Int;
      stack[size - 1] = CheckDecimal(Rescale(stack[size - 1], step.result.scale), step.result,
                                     isInt ? "expression" : TypeName(step.left.id));
    } else {
      --size;
      stack[size - 1] =
          OperateDecimals(static_cast<ArithmeticOp>(step.code), stack[size - 1], stack[size], step.result);
    }
  }
  return stack[0];
}

// t_compute(program, operands...)
void Compute(const FunctionCall& call) {
  auto* program = static_cast<Program*>(sqlite3_get_auxdata(call.Handle(), 0));
  std::unique_ptr<Program> own;
  if (program == nullptr) {
    // SQLite keeps it with the constant text and deletes it.
    sqlite3_set_auxdata(call.Handle(), 0, Parse(call.Text(0)).release(),
                        [](void* pointer) { delete static_cast<Program*>(pointer); });
    program = static_cast<Program*>(sqlite3_get_auxdata(call.Handle(), 0));
    // Without memory SQLite does not keep it.
    if (program == nullptr) {
      own = Parse(call.Text(0));
      program = own.get();
    }
  }
  const Type& type = program->steps.back().result;
  int64_t small = 0;
  switch (program->isSmall ? ComputeSmall(call, *program, small) : Small::TooFew) {
  case Small::Null: return call.ReturnNull();
  case Small::TooFew:
    if (call.AnyNull()) return call.ReturnNull();
    return call.ReturnDecimal(ComputeExact(call, *program), type);
  case Small::Done: break;
  }
  if (!IsWide(type)) return call.ReturnInteger(small);
  std::array<char, kWideSize> bytes{};
  WriteBigEndian(bytes.data(), (small < 0 ? ~uint64_t{0} : 0) ^ kSign);
  WriteBigEndian(bytes.data() + 8, static_cast<uint64_t>(small));
  sqlite3_result_blob64(call.Handle(), bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

} // namespace

void RegisterComputeFunction(sqlite3* connection, FunctionContext& context) {
  Register<Compute>(connection, context, names::kCompute, -1);
}

} // namespace tsql
