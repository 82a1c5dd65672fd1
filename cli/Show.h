// How the outcome of a call, and the classes, are shown. UTF-16 text, its lines ending with LF.
#pragma once

#include <optional>
#include <string>

#include "cli/Call.h"
#include "cli/CommandLine.h"
#include "cli/Grid.h"

namespace bomcall {

struct Style {
  size_t width = 0; // of the terminal; 0 does not cut
  bool coloured = false;
};

// In the form that the command line asks for. Throws UsageError for a column that there is not.
std::wstring ShowOutcome(const Outcome& outcome, const CommandLine& line, const Style& style);
std::wstring ShowAsText(const Outcome& outcome, const Style& style = {});
std::wstring ShowAsJson(const Outcome& outcome);
// The same on one line, with the number of the batch's line and what was called in front.
std::wstring ShowAsJsonLine(const Outcome& outcome, size_t line, const std::wstring& call);

// A grid in that form.
std::wstring ShowGrid(const Grid& grid, Format format, const Style& style);

// The first of the conditions of --fail-if that the outcome meets; texts compare without case.
std::optional<NamedText> FirstHolding(const std::vector<NamedText>& conditions, const Outcome& outcome);

// "Error 0x…" with source and text.
std::wstring ShowError(const com::ComError& error, bool coloured = false);

// All classes, or the one that is named, with their methods; throws UsageError when it does not exist.
std::wstring ShowClasses(const ClassDescriptions& classes, const std::wstring& className);
// A class, or CLASS.METHOD with its parameters, one a line.
std::wstring ShowHelp(const ClassDescriptions& classes, const std::wstring& topic);

} // namespace bomcall
