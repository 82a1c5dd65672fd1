#include <algorithm>
#include <cstdio>
#include <utility>

#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// A value that RAISERROR puts into its text.
struct Substitute {
  Datum value;
  Type type;
};

// One "%..." of the text of RAISERROR, as the C library's printf has it.
struct Directive {
  std::string flags;
  int width = 0;
  int precision = -1;
  char type = 0; // 0 where it is none
};

bool IsPlainInteger(const Type& type) {
  return FamilyOf(type.id) == Family::Integer && type.id != TypeId::Bit;
}

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

constexpr int kLargestWidth = 10000;

// At `at` is the percent sign; it is left behind the directive. A width or precision that is an asterisk is
// asked of `takeNumber`.
template <typename TakeNumber>
Directive ReadDirective(const std::string& text, size_t& at, TakeNumber takeNumber) {
  Directive directive;
  const size_t start = at;
  const auto peek = [&] { return at < text.size() ? text[at] : '\0'; };
  const auto readNumber = [&] {
    if (peek() == '*') {
      ++at;
      return takeNumber();
    }
    int number = 0;
    for (; IsDigit(peek()); ++at) number = std::min(number * 10 + (peek() - '0'), kLargestWidth);
    return number;
  };
  ++at;
  constexpr std::string_view kFlags = "-+0# ";
  while (peek() != '\0' && kFlags.find(peek()) != std::string_view::npos) directive.flags += text[at++];
  directive.width = readNumber();
  if (directive.width < 0) {
    directive.flags += '-';
    directive.width = -directive.width;
  }
  if (peek() == '.') {
    ++at;
    directive.precision = readNumber();
  }
  if (text.compare(at, 3, "I64") == 0) {
    at += 3;
  } else if (peek() == 'h' || peek() == 'l') {
    ++at;
  }
  constexpr std::string_view kTypes = "diosuxX%";
  if (peek() == '\0' || kTypes.find(peek()) == std::string_view::npos)
    Fail(2787, {std::string_view(text).substr(start, at + 1 - start)});
  directive.type = text[at++];
  return directive;
}

std::string Pad(std::string text, const Directive& directive, size_t length) {
  const auto width = static_cast<size_t>(directive.width);
  if (length >= width) return text;
  const bool isLeft = directive.flags.find('-') != std::string::npos;
  text.insert(isLeft ? text.size() : 0, width - length, ' ');
  return text;
}

std::string FormatInteger(int64_t value, const Directive& directive) {
  const bool isSigned = directive.type == 'd' || directive.type == 'i';
  std::string format = "%" + directive.flags + "*.*ll" + directive.type;
  // A negative number of 32 bits is shown by its 32 bits.
  if (!isSigned && value >= INT32_MIN && value < 0) value = static_cast<uint32_t>(value);
  const int size = std::snprintf(nullptr, 0, format.c_str(), directive.width, directive.precision, value);
  std::string text(static_cast<size_t>(size) + 1, '\0');
  std::snprintf(text.data(), text.size(), format.c_str(), directive.width, directive.precision, value);
  text.pop_back();
  return text;
}

std::string FormatText(const std::string& value, const Directive& directive) {
  size_t end = 0;
  size_t length = 0; // in characters
  const auto isWanted = [&] {
    return end < value.size() &&
           (directive.precision < 0 || length < static_cast<size_t>(directive.precision));
  };
  for (; isWanted(); ++length) {
    ++end;
    while (end < value.size() && (static_cast<unsigned char>(value[end]) & 0xC0) == 0x80) ++end;
  }
  return Pad(value.substr(0, end), directive, length);
}

std::string FormatMessage(const std::string& text, const std::vector<Substitute>& values) {
  std::string result;
  size_t next = 0;
  const auto takeNumber = [&] {
    const Substitute* const value = next < values.size() ? &values[next] : nullptr;
    ++next;
    if (value == nullptr || !IsPlainInteger(value->type) || value->value.IsNull())
      Fail(2786, {std::to_string(next)});
    return static_cast<int>(std::clamp<int64_t>(value->value.integer, -kLargestWidth, kLargestWidth));
  };
  for (size_t at = 0; at < text.size();) {
    if (text[at] != '%') {
      result += text[at++];
      continue;
    }
    const Directive directive = ReadDirective(text, at, takeNumber);
    if (directive.type == '%') {
      result += '%';
      continue;
    }
    if (next >= values.size() || values[next].value.IsNull()) {
      result += Pad("(null)", directive, 6);
      ++next;
      continue;
    }
    const Substitute& value = values[next++];
    if (IsText(value.type) != (directive.type == 's')) Fail(2786, {std::to_string(next)});
    result += directive.type == 's' ? FormatText(value.value.text, directive)
                                    : FormatInteger(value.value.integer, directive);
  }
  return result;
}

constexpr int kUserError = 50000;

// RAISERROR takes numbers of messages that the server lets others use.
void CheckMessageNumber(int64_t number) {
  constexpr int64_t kLeast = 13000;
  if (number < kLeast || number == kUserError) Fail(2732, {std::to_string(number)});
}

// There are no messages of users here, and none of the server's own.
[[noreturn]] void FailMessageNumber(const Datum& message, int64_t severity, int64_t state) {
  const int64_t number = message.integer;
  CheckMessageNumber(number);
  if (number < kUserError) Refuse("RAISERROR with the number of a message of the server");
  Fail(18054, {std::to_string(number), std::to_string(severity), std::to_string(state)});
}

// The error of a CATCH block while the block runs, also when it ends with an error of its own.
class CaughtUse {
 public:
  CaughtUse(std::optional<Error>& place, const Error& error)
      : place_(place), outer_(std::exchange(place, error)) {}
  ~CaughtUse() { place_.swap(outer_); }
  CaughtUse(const CaughtUse&) = delete;
  CaughtUse& operator=(const CaughtUse&) = delete;

 private:
  std::optional<Error>& place_;
  std::optional<Error> outer_;
};

} // namespace

Interpreter::Flow Interpreter::RunTryCatch(const TryCatchStatement& statement) {
  RunningUnit* running = running_;
  ++tryDepth_;
  try {
    const Flow flow = RunList(statement.tryBody);
    --tryDepth_;
    return flow;
  } catch (const Caught& caught) {
    --tryDepth_;
    running_ = running;
    const CaughtUse use(caught_, caught.error);
    lastError_ = caught.error.number;
    return RunList(statement.catchBody);
  } catch (...) {
    --tryDepth_;
    throw;
  }
}

void Interpreter::RunRaiserror(const RaiserrorStatement& statement) {
  if (statement.errorNumber != 0) {
    CheckMessageNumber(statement.errorNumber);
    throw Error(statement.errorNumber, 16, 1, statement.line, EvaluateText(*statement.arguments[0]));
  }
  constexpr size_t kFirstValue = 3;
  constexpr size_t kMaxValues = 20;
  if (statement.arguments.size() > kFirstValue + kMaxValues) Fail(2747, {});
  Type type;
  const Datum message = Evaluate(*statement.arguments[0], type);
  std::vector<Substitute> values;
  for (size_t i = kFirstValue; i < statement.arguments.size(); ++i) {
    Substitute value;
    value.value = Evaluate(*statement.arguments[i], value.type);
    const bool isAllowed = IsText(value.type) || IsPlainInteger(value.type) || value.value.IsNull();
    if (!isAllowed) Fail(2748, {TypeName(value.type.id), std::to_string(i + 1)});
    values.push_back(std::move(value));
  }
  constexpr int64_t kLargestSeverity = 18; // without the log
  constexpr int64_t kFatalSeverity = 20;
  const int64_t severity = EvaluateInteger(*statement.arguments[1]);
  const int64_t state = EvaluateInteger(*statement.arguments[2]);
  if (severity > kLargestSeverity && !statement.isLogged) Fail(2754, {});
  if (severity >= kFatalSeverity) Refuse("RAISERROR of a severity that ends the connection");
  if (!IsText(type)) FailMessageNumber(message, severity, state);
  const Error error(kUserError, severity < 0 ? 0 : static_cast<int>(severity),
                    state < 0 ? 1 : static_cast<int>(state), statement.line,
                    FormatMessage(message.text, values));
  if (error.severity > 10) throw Error(error);
  sink_->Message(error);
  rowCount_ = 0;
  lastError_ = statement.setsError ? kUserError : 0;
}

Interpreter::Flow Interpreter::RunThrow(const ThrowStatement& statement) {
  std::optional<Error> error = caught_;
  if (!statement.arguments.empty()) {
    constexpr int64_t kLeastNumber = 50000;
    const int64_t number = EvaluateInteger(*statement.arguments[0]);
    if (number < kLeastNumber) Fail(35100, {std::to_string(number)});
    error.emplace(static_cast<int>(number), 16, static_cast<int>(EvaluateInteger(*statement.arguments[2])),
                  statement.line, EvaluateText(*statement.arguments[1]));
  }
  if (tryDepth_ > 0) {
    if (xactAbort_) transaction_.Doom();
    throw Caught{*error};
  }
  Report(*error, *sink_);
  abortsAll_ = true;
  return Flow::Abort;
}

} // namespace tsql
