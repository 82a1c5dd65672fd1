// The calls whose statements stand in the folder statements/, as a list of examples: what is called with
// what, and the files that hold what it sends, in order.
#pragma once

#include <string>
#include <vector>

#include "com/Variant.h"

namespace mbom::test {

// What a call finds beside the factory's data.
struct Circumstances {
  const wchar_t* user = L"16401";
  const wchar_t* language = L"chs";
  const wchar_t* subsystem = L"";
  // A batch that changes the data before the call.
  const wchar_t* data = L"";
  // Whether the descriptor is the first argument.
  bool descriptor = true;
  // Whether the object has been called before on the same database, and so is bound to it.
  bool bound = false;
};

struct StatementCase {
  const wchar_t* className;
  const wchar_t* method;
  // What is special about the case; empty for the plain one.
  const char* name;
  // Behind the descriptor.
  std::vector<com::Variant> arguments;
  // The files without ".sql". Behind the file of a command stand the command's parameters, each after a tab,
  // as the trace shows them.
  std::vector<std::string> statements;
  Circumstances given = {};
};

using StatementCases = std::vector<StatementCase>;

// Each makes the collections that its cases pass, so COM must be there.
StatementCases BomCases();
StatementCases ViewCases();
StatementCases EcnAndImportCases();
StatementCases CustBomCases();

// All of them.
StatementCases AllCases();

// "Class.Method".
std::string MethodOf(const StatementCase& example);

// `text` with the table that the lists for looking up share between their statements under its plain name:
// each call gives it a number of its own.
std::string WithoutTableNumber(std::string text);

inline constexpr wchar_t kShortNumbers[] =
    L"UPDATE t_SystemProfile SET FValue='1' WHERE FCategory='IC' AND FKey='UseShortNumber'";

// The statement that the cases pass to the methods that run the caller's own.
inline constexpr wchar_t kCallersStatement[] =
    L"SELECT FInterID, FBOMNumber FROM ICBOM WHERE FItemID=101 ORDER BY FInterID";

} // namespace mbom::test
