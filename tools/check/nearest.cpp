// NearestName: the distance to each candidate, skipping those whose length alone puts them out of reach.
#include "nearest.h"

#include <algorithm>
#include <cctype>

namespace {

int AllowedEdits(size_t length) { return length <= 5 ? 1 : length <= 8 ? 2 : 3; }

bool Internal(const std::string& name) { return name.find("__") != std::string::npos; }

}  // namespace

std::string NearestName(const std::string& name, const std::vector<std::string>& candidates) {
  const int allowed = AllowedEdits(name.size());
  const bool internalAllowed = Internal(name);
  std::string best;
  int bestDistance = allowed + 1;
  for (const std::string& candidate : candidates) {
    if (Internal(candidate) && !internalAllowed) continue;
    const int lengthGap = std::abs(int(candidate.size()) - int(name.size()));
    if (lengthGap > std::min(bestDistance, allowed)) continue;
    const int d = NameDistance(name, candidate);
    if (d < bestDistance || (d == bestDistance && candidate < best)) {
      bestDistance = d;
      best = candidate;
    }
  }
  return bestDistance <= allowed ? best : std::string();
}
