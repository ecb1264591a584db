// NearestName: optimal string alignment distance over the candidates, cut off once a candidate can't win.
#include "nearest.h"

#include <algorithm>
#include <cctype>

namespace {

char Lower(char c) { return char(tolower(static_cast<unsigned char>(c))); }

int AllowedEdits(size_t length) { return length <= 5 ? 1 : length <= 8 ? 2 : 3; }

bool Internal(const std::string& name) { return name.find("__") != std::string::npos; }

}  // namespace

int NameDistance(const std::string& a, const std::string& b) {
  const size_t n = a.size(), m = b.size();
  // Three rows of the table: two back, one back, this one.
  std::vector<int> back2(m + 1), back1(m + 1), row(m + 1);
  for (size_t j = 0; j <= m; ++j) back1[j] = int(j);
  for (size_t i = 1; i <= n; ++i) {
    row[0] = int(i);
    for (size_t j = 1; j <= m; ++j) {
      const int cost = Lower(a[i - 1]) == Lower(b[j - 1]) ? 0 : 1;
      row[j] = std::min({back1[j] + 1, row[j - 1] + 1, back1[j - 1] + cost});
      if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]))
        row[j] = std::min(row[j], back2[j - 2] + 1);
    }
    std::swap(back2, back1);
    std::swap(back1, row);
  }
  return back1[m];
}

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
