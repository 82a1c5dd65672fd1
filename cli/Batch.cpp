#include "cli/Batch.h"

#include <map>
#include <set>

#include "cli/Arguments.h"
#include "cli/Connections.h"
#include "cli/Json.h"
#include "cli/Kinds.h"
#include "cli/Show.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::ComError;
using com::Object;
using com::Variant;

constexpr wchar_t kReference[] = L"$result";

struct BatchText {
  size_t number;
  std::string json;
};

struct BatchCall {
  const ClassInfo* info = nullptr;
  const MethodInfo* method = nullptr;
  std::vector<GivenArgument> given;
  std::map<size_t, std::wstring> references; // of given arguments by place: to the result of that name
  std::wstring as;                           // what its result is called, or empty
};

std::vector<BatchText> LinesOf(const std::string& text) {
  std::vector<BatchText> lines;
  size_t number = 0;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    std::string line = text.substr(at, end - at);
    at = end + 1;
    ++number;
    if (line.find_first_not_of(" \t\r") != std::string::npos) lines.push_back({number, std::move(line)});
  }
  return lines;
}

Object DictionaryOf(const Variant& value, const wchar_t* what) {
  if (!value.IsObject() || KindOf(value.AsObject()) != Kind::Dictionary)
    throw UsageError(std::wstring(what) + L" is an object {…}");
  return value.AsObject();
}

std::wstring TextOf(const Object& dictionary, const wchar_t* key) {
  const Variant value = dictionary.Get(L"Value", key);
  if (value.IsEmpty()) return {};
  if (value.type() != VT_BSTR) throw UsageError(L"\"" + std::wstring(key) + L"\" is a text");
  return value.AsText();
}

// The name in {"$result": "name"}; empty for any other value.
std::wstring ReferenceIn(const Variant& value) {
  if (!value.IsObject() || KindOf(value.AsObject()) != Kind::Dictionary) return {};
  const Object dictionary = value.AsObject();
  const std::vector<std::wstring> keys = KeysOf(dictionary);
  return keys.size() == 1 && keys[0] == kReference ? TextOf(dictionary, kReference) : std::wstring();
}

BatchCall ReadCall(const ClassDescriptions& classes, const std::string& json) {
  Variant value;
  try {
    value = ReadJson(json);
  } catch (const JsonError& error) {
    // A line of the batch is one line: of the place only the column says something.
    const std::string text = error.what();
    throw UsageError(text.substr(text.find("column")));
  }
  const Object dictionary = DictionaryOf(value, L"a line");
  for (const std::wstring& key : KeysOf(dictionary))
    if (key != L"call" && key != L"arguments" && key != L"as")
      throw UsageError(L"there is no \"" + key + L"\"; a line has \"call\", \"arguments\" and \"as\"");

  BatchCall call;
  const std::wstring target = TextOf(dictionary, L"call");
  const size_t dot = target.find(L'.');
  if (dot == std::wstring::npos) throw UsageError(L"\"call\" is not \"CLASS.METHOD\"");
  call.method = &FindMethod(classes, target.substr(0, dot), target.substr(dot + 1), call.info);
  call.as = TextOf(dictionary, L"as");
  const Variant arguments = dictionary.Get(L"Value", L"arguments");
  if (arguments.IsEmpty()) return call;
  const Object named = DictionaryOf(arguments, L"\"arguments\"");
  for (const std::wstring& name : KeysOf(named)) {
    const Variant argument = named.Get(L"Value", name);
    const std::wstring reference = ReferenceIn(argument);
    if (!reference.empty()) call.references[call.given.size()] = reference;
    call.given.push_back({name, {}, argument});
  }
  return call;
}

// What a reference stands for is not known before the call that it refers to: any value of the type will do.
std::vector<GivenArgument> WithStandIns(const BatchCall& call) {
  std::vector<GivenArgument> given = call.given;
  for (const auto& [place, name] : call.references)
    for (const ParameterInfo& parameter : call.method->parameters)
      if (com::EqualsNoCase(parameter.name, given[place].name))
        given[place].value = parameter.type == VT_DISPATCH ? Variant(Object()) : Variant(L"0");
  return given;
}

class Batch {
 public:
  Batch(const ClassDescriptions& classes, const CommandLine& line, const BatchListener& listener)
      : classes_(classes), line_(line), listener_(listener),
        caller_(line.host, line.trace), source_{[&line] { return DescriptorOf(line); }, line.encoding},
        lines_(LinesOf(ReadSourceText(line.batchFile, line.encoding))) {
    if (!line.keepGoing && !caller_.host())
      throw UsageError("without --keep-going a batch is one unit of work, which needs the host "
                       "(ErpStandIn.Host), and there is none here");
  }

  // What is wrong is to be found before anything is called. The values are made again for the calls, so that
  // a long file needs the place of its text only.
  void Check() const {
    std::set<std::wstring> known;
    for (const BatchText& text : lines_) {
      try {
        const BatchCall call = ReadCall(classes_, text.json);
        for (const auto& [place, name] : call.references)
          if (!known.contains(name)) throw UsageError(L"no line before has a result called " + name);
        ArgumentsFor(*call.method, WithStandIns(call), source_);
        if (!call.as.empty()) known.insert(call.as);
      } catch (const UsageError& error) {
        throw UsageError(com::ToUtf8(line_.batchFile) + ", line " + std::to_string(text.number) + ": " +
                         error.what());
      }
    }
  }

  BatchCounts Run() {
    if (!line_.keepGoing) caller_.host().Call(L"BeginUnit");
    for (const BatchText& text : lines_) {
      const bool succeeded = Make(text);
      ++counts_.calls;
      if (!succeeded) ++counts_.failed;
      listener_.onProgress(counts_.calls, lines_.size());
      if (!succeeded && !line_.keepGoing) break;
    }
    counts_.left = lines_.size() - counts_.calls;
    counts_.kept = line_.keepGoing || counts_.failed == 0;
    if (!line_.keepGoing) caller_.host().Call(L"EndUnit", counts_.kept);
    return counts_;
  }

 private:
  bool Make(const BatchText& text) {
    BatchCall call = ReadCall(classes_, text.json);
    for (const auto& [place, name] : call.references) call.given[place].value = results_[name];
    const Outcome outcome =
        caller_.Call(*call.info, *call.method, ArgumentsFor(*call.method, call.given, source_));
    listener_.onOutcome(text.number, call.info->name + L"." + call.method->name, outcome);
    if (!call.as.empty()) results_[call.as] = outcome.result;
    if (outcome.error || FirstHolding(line_.failIf, outcome)) return false;
    return line_.keepGoing || !caller_.host().Get(L"IsAborting").AsBool();
  }

  const ClassDescriptions& classes_;
  const CommandLine& line_;
  const BatchListener& listener_;
  Caller caller_;
  ArgumentSource source_;
  std::vector<BatchText> lines_;
  std::map<std::wstring, Variant> results_;
  BatchCounts counts_;
};

} // namespace

BatchCounts RunBatch(const ClassDescriptions& classes, const CommandLine& line,
                     const BatchListener& listener) {
  Batch batch(classes, line, listener);
  batch.Check();
  return batch.Run();
}

} // namespace bomcall
