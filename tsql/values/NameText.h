// Names of objects that stand in a text, as arguments of OBJECT_ID, PARSENAME and procedures of the server
// have them: 'dbo.[a table]'.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

// The parts of a name with points between them; nothing where it is no such name. A part may stand in
// brackets or quotation marks, of which the closing one within it is doubled. A part may be empty.
std::optional<std::vector<std::string>> NameParts(std::string_view name);

} // namespace tsql
