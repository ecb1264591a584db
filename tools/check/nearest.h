// The nearest known name to a mistyped one, for "did you mean" hints.
#pragma once

#include <string>
#include <vector>

#include "tier1/namedistance.h"

// The candidate fewest edits away, if it is close enough to be what was meant: at most one edit for a
// name of up to five characters, two up to eight, three beyond. Internal names (with "__") are offered
// only for a name that has "__" itself. Ties go to the alphabetically first. Empty when none is close.
std::string NearestName(const std::string& name, const std::vector<std::string>& candidates);
