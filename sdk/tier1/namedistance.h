// How far apart two names are, for "did you mean" hints: the console's unknown command and the script
// checker rank their suggestions by it, each with its own idea of close enough.
#pragma once

#include <climits>
#include <string_view>

// Edits (insert, delete, replace, swap of two neighbours) that turn A into B, ignoring ASCII case. Past
// LIMIT the count stops: anything above it comes back as LIMIT + 1.
int NameDistance(std::string_view a, std::string_view b, int limit = INT_MAX - 1);
