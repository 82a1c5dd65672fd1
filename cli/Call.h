// Calls of methods, and what they come to.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/ClassDescriptions.h"
#include "cli/CommandLine.h"
#include "com/ComError.h"
#include "com/Object.h"
#include "com/Variant.h"

namespace bomcall {

struct NamedValue {
  std::wstring name;
  com::Variant value;
};

struct Outcome {
  com::Variant result;
  bool hasResult = false;
  std::vector<NamedValue> changed;    // the in/out arguments after the call
  std::vector<std::wstring> trace;    // an event each: kind, TAB, detail; passwords masked
  std::optional<com::ComError> error; // what the call raised
};

// Makes calls on one object a class. The objects are the host's, which makes every call a unit of work, if
// they are to be and a host is there; else they are created directly.
class Caller {
 public:
  Caller(bool host, bool trace);

  // `values` are one a parameter. A ComError that is raised is the outcome's; passwords in descriptors are
  // masked in it and in what was changed. Throws UsageError if a trace is wanted where there is none.
  Outcome Call(const ClassInfo& info, const MethodInfo& method, std::vector<com::Variant> values);

  // The host, null where there is none.
  const com::Object& host() const { return host_; }

 private:
  const com::Object& ObjectOf(const std::wstring& className);

  bool trace_;
  com::Object host_;
  std::map<std::wstring, com::Object> objects_; // by class
};

// The method that is named; throws UsageError when there is none. `info` gets its class.
const MethodInfo& FindMethod(const ClassDescriptions& classes, const std::wstring& className,
                             const std::wstring& methodName, const ClassInfo*& info);

// Makes the call of a command line. What the command line got wrong (an unknown name, a value that does not
// fit, JSON that does not parse, a file that cannot be read) throws UsageError before anything is called.
Outcome MakeCall(const ClassDescriptions& classes, const CommandLine& line);

} // namespace bomcall
