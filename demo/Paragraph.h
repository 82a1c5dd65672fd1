// Texts and commands, broken into lines of a terminal.
#pragma once

#include <string>
#include <vector>

namespace demo {

// The text with lines of at most `width` columns, the first one behind `first` and the others behind
// `further`; each ends with LF. A line is broken at a blank or between wide characters; one that nothing
// breaks stays too long.
std::wstring Paragraph(const std::wstring& text, size_t width, const std::wstring& first,
                       const std::wstring& further);

// A word as a shell takes it, quoted where it must be.
std::wstring Quoted(const std::wstring& word);

// The words as a command for a shell, after "  $ ", with a backslash where it goes on in the next line. A
// quoted word that is longer than a line is broken behind blanks and commas: it is JSON or T-SQL, which take
// the end of a line for a blank.
std::wstring Command(const std::vector<std::wstring>& words, size_t width);

} // namespace demo
