#include "cli/Call.h"

#include "cli/Arguments.h"
#include "cli/Connections.h"
#include "cli/Objects.h"
#include "com/Passwords.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::ComError;
using com::Object;
using com::Variant;

constexpr wchar_t kHost[] = L"ErpStandIn.Host";
constexpr wchar_t kTrace[] = L"ErpStandIn.Trace";

// Records the outside calls while it lives.
class TraceRecording {
 public:
  TraceRecording() : trace_(CreateIfRegistered(kTrace)) {
    if (!trace_)
      throw UsageError(L"--trace needs the stand-in, but no " + std::wstring(kTrace) + L" is registered");
    trace_.Call(L"Clear");
    trace_.Call(L"Start");
  }
  ~TraceRecording() {
    try {
      trace_.Call(L"Stop");
    } catch (const ComError&) {
      // The trace is the process's own; it ends with it.
    }
  }
  TraceRecording(const TraceRecording&) = delete;
  TraceRecording& operator=(const TraceRecording&) = delete;

  std::vector<std::wstring> Events() const {
    std::vector<std::wstring> events;
    const int32_t count = trace_.Get(L"Count").AsLong();
    for (int32_t i = 1; i <= count; ++i) {
      const std::wstring event = trace_.Get(L"Item", i).AsText();
      const size_t detail = event.find(L'\t') + 1;
      events.push_back(event.substr(0, detail) + com::Masked(event.substr(detail)));
    }
    return events;
  }

 private:
  Object trace_;
};

ComError Explained(const ComError& error, const std::wstring& inFront, const std::wstring& descriptor) {
  return {error.code(), error.source(), inFront + com::WithoutPasswordsOf(descriptor, error.description()),
          error.helpFile(), error.helpContext()};
}

std::wstring DescriptorAmong(const MethodInfo& method, const std::vector<Variant>& values) {
  for (size_t i = 0; i < values.size(); ++i)
    if (IsDescriptor(method.parameters[i]) && values[i].type() == VT_BSTR) return values[i].AsText();
  return {};
}

// A condition on what the call does not give back would never hold.
void CheckConditions(const MethodInfo& method, const std::vector<NamedText>& conditions) {
  for (const NamedText& condition : conditions) {
    bool known = com::EqualsNoCase(condition.name, L"Result") && method.result != VT_EMPTY;
    for (const ParameterInfo& parameter : method.parameters)
      known = known || (parameter.inOut && com::EqualsNoCase(parameter.name, condition.name));
    if (!known) throw UsageError(L"--fail-if: " + method.name + L" gives back no " + condition.name);
  }
}

} // namespace

Caller::Caller(bool host, bool trace) : trace_(trace) {
  if (host) host_ = CreateIfRegistered(kHost);
}

const Object& Caller::ObjectOf(const std::wstring& className) {
  Object& object = objects_[className];
  const std::wstring progId = L"QorvaneMBomBill." + className;
  if (!object) object = host_ ? host_.Call(L"CreateObject", progId).AsObject() : CreateObject(progId);
  return object;
}

Outcome Caller::Call(const ClassInfo& info, const MethodInfo& method, std::vector<Variant> values) {
  Outcome outcome;
  std::optional<TraceRecording> trace;
  if (trace_) trace.emplace();
  const std::wstring descriptor = DescriptorAmong(method, values);
  try {
    const Object& object = ObjectOf(info.name);
    std::vector<Variant> arguments;
    for (size_t i = 0; i < values.size(); ++i)
      arguments.push_back(method.parameters[i].inOut ? Variant::Reference(values[i]) : values[i]);
    outcome.result = CallMember(object, method.name, arguments);
    outcome.hasResult = method.result != VT_EMPTY;
  } catch (const BadArgument& error) {
    outcome.error = Explained(error,
                              L"argument " + std::to_wstring(error.position + 1) + L", " +
                                  method.parameters[error.position].name + L": ",
                              descriptor);
  } catch (const ComError& error) {
    outcome.error = Explained(error, {}, descriptor);
  }
  if (trace) outcome.trace = trace->Events();
  for (size_t i = 0; i < values.size(); ++i) {
    const ParameterInfo& parameter = method.parameters[i];
    if (!parameter.inOut) continue;
    const bool isDescriptor = IsDescriptor(parameter) && values[i].type() == VT_BSTR;
    outcome.changed.push_back(
        {parameter.name, isDescriptor ? Variant(com::Masked(values[i].AsText())) : std::move(values[i])});
  }
  return outcome;
}

const MethodInfo& FindMethod(const ClassDescriptions& classes, const std::wstring& className,
                             const std::wstring& methodName, const ClassInfo*& info) {
  info = FindClass(classes, className);
  if (!info) throw UsageError(L"there is no class " + className + L"; --list shows the classes");
  const MethodInfo* method = info->Find(methodName);
  if (!method)
    throw UsageError(info->name + L" has no method " + methodName + L"; --list " + info->name +
                     L" shows them");
  return *method;
}

Outcome MakeCall(const ClassDescriptions& classes, const CommandLine& line) {
  const ClassInfo* info = nullptr;
  const MethodInfo& method = FindMethod(classes, line.className, line.methodName, info);
  CheckConditions(method, line.failIf);
  std::vector<GivenArgument> given;
  for (const NamedText& value : line.values) given.push_back({value.name, value.value, std::nullopt});
  const ArgumentSource source{[&] { return DescriptorOf(line); }, line.encoding};
  return Caller(line.host, line.trace).Call(*info, method, ArgumentsFor(method, given, source));
}

} // namespace bomcall
