#include "tsql/run/Interpreter.h"

#include "tsql/values/Errors.h"

#include <utility>

namespace tsql {

Interpreter::Flow Interpreter::RunTryCatch(const TryCatchStatement& statement) {
  Frame* frame = frame_;
  ++tryDepth_;
  try {
    const Flow flow = RunList(statement.tryBody);
    --tryDepth_;
    return flow;
  } catch (const Caught& caught) {
    --tryDepth_;
    frame_ = frame;
    const std::optional<Error> outer = std::exchange(caught_, caught.error);
    lastError_ = caught.error.number;
    const Flow flow = RunList(statement.catchBody);
    caught_ = outer;
    return flow;
  } catch (...) {
    --tryDepth_;
    throw;
  }
}

void Interpreter::RunRaiserror(const RaiserrorStatement& statement) {
  Type type;
  const Datum message = Evaluate(*statement.arguments[0], type);
  if (!IsText(type)) FailUnsupported("RAISERROR with a message number");
  std::string text;
  size_t argument = 3;
  for (size_t i = 0; i < message.text.size(); ++i) {
    const char next = i + 1 < message.text.size() ? message.text[i + 1] : '\0';
    if (message.text[i] != '%' || (next != 's' && next != 'd' && next != 'i' && next != '%')) {
      text += message.text[i];
      continue;
    }
    ++i;
    if (next == '%') {
      text += '%';
    } else if (argument < statement.arguments.size()) {
      text += EvaluateText(*statement.arguments[argument++]);
    } else {
      text += "(null)";
    }
  }
  constexpr int kUserError = 50000;
  const Error error(kUserError, static_cast<int>(EvaluateInteger(*statement.arguments[1])),
                    static_cast<int>(EvaluateInteger(*statement.arguments[2])), statement.line, text);
  if (error.severity > 10) throw Error(error);
  sink_->Message(error);
  rowCount_ = 0;
}

Interpreter::Flow Interpreter::RunThrow(const ThrowStatement& statement) {
  std::optional<Error> error = caught_;
  if (!statement.arguments.empty()) {
    const auto number = static_cast<int>(EvaluateInteger(*statement.arguments[0]));
    error.emplace(number, 16, static_cast<int>(EvaluateInteger(*statement.arguments[2])), statement.line,
                  EvaluateText(*statement.arguments[1]));
  }
  if (!error) FailUnsupported("THROW without arguments outside a CATCH block");
  if (tryDepth_ > 0) throw Caught{*error};
  Report(*error, *sink_);
  abortsAll_ = true;
  return Flow::Abort;
}

} // namespace tsql
