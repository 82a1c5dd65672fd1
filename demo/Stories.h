// The stories that the demo tells.
#pragma once

#include "demo/Stage.h"

namespace demo {

// Saving BOMs: an ordinary one whose use status changed, a customer BOM, a refusal, a failure that is rolled
// back.
void TellSaveStory(Stage& stage);

// Auditing BOMs: the maker's and the auditor's rights, what documents that use a BOM prevent; a BOM number
// and a copy.
void TellAuditStory(Stage& stage);

// A customer's bicycle: features, options and rules, the screen, a copy, its audit, disabling.
void TellCustBomStory(Stage& stage);

// An engineering change: refused and accepted when it is saved, started, the new version beside the old one,
// and cancelled.
void TellEcnStory(Stage& stage);

// Browsing BOMs: the tree of groups, lists, column titles and ledgers with user-defined fields.
void TellBrowseStory(Stage& stage);

// Importing a group, a BOM and a production order from the files in demo/import.
void TellImportStory(Stage& stage);

} // namespace demo
