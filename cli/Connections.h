// Which connection descriptor a call gets: the command line's, the environment's, or one by its name in the
// user's profile file.
//
// The profile file has a line a connection, "name = descriptor"; names compare without case, empty lines and
// those that begin with "#" do not count. It is the file that BOMCALL_PROFILE names, else
// %APPDATA%\bomcall\connections.txt.
#pragma once

#include <string>
#include <vector>

#include "cli/CommandLine.h"

namespace bomcall {

// Of --dsn, --connection, the variable BOMCALL_DSN and the profile's connection "default" the first that
// there is; the language in front, where the component finds it first. Throws UsageError when there is none.
std::wstring DescriptorOf(const CommandLine& line);

// The connections of a profile file's text. Throws UsageError for a line that is none; `file` stands in it.
std::vector<NamedText> ParseProfile(const std::string& utf8, const std::wstring& file);

} // namespace bomcall
