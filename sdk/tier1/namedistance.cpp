// NameDistance: optimal string alignment over three rows of the table, cut off once no cell is within the
// limit.
#include "namedistance.h"

#include <algorithm>
#include <vector>

namespace {

char FoldCase(char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; }

}  // namespace

int NameDistance(std::string_view a, std::string_view b, int limit) {
  const int n = int(a.size()), m = int(b.size());
  if (std::abs(n - m) > limit) return limit + 1;
  std::vector<int> back2(m + 1), back1(m + 1), row(m + 1);
  for (int j = 0; j <= m; ++j) back1[j] = j;
  for (int i = 1; i <= n; ++i) {
    row[0] = i;
    int best = row[0];
    for (int j = 1; j <= m; ++j) {
      const int cost = FoldCase(a[i - 1]) == FoldCase(b[j - 1]) ? 0 : 1;
      row[j] = std::min({back1[j] + 1, row[j - 1] + 1, back1[j - 1] + cost});
      if (i > 1 && j > 1 && FoldCase(a[i - 1]) == FoldCase(b[j - 2]) && FoldCase(a[i - 2]) == FoldCase(b[j - 1]))
        row[j] = std::min(row[j], back2[j - 2] + 1);
      best = std::min(best, row[j]);
    }
    if (best > limit) return limit + 1;
    std::swap(back2, back1);
    std::swap(back1, row);
  }
  return std::min(back1[m], limit + 1);
}
