// The queries about the rules of configurable BOMs and the options of their feature items.
#pragma once

#include <string>

#include "src/frame/Sql.h"

namespace mbom {

// The rule lines of a list of items, separated by commas. The kind "Rel", in any case, gives relations that
// lead out of the list, "Mut" exclusions, anything else both; a group restricts to its lines and those for
// all groups. A kind without items makes a statement that the server rejects.
Sql RuleQuery(const std::wstring& itemIds, const std::wstring& groupId, const std::wstring& kind);

// The components of all BOMs in use of a feature item; an id that is no number counts as 0.
Sql FeatureOptionsQuery(const std::wstring& featureItemId);

} // namespace mbom
