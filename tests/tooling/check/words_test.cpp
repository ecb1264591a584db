// The pieces under the checks: the name distance behind "did you mean", the walk over a line's commands and
// the variable forms. What the checks report is in cases/.
#include <gtest/gtest.h>

#include "commandwalk.h"
#include "nearest.h"

namespace {

TEST(CheckWords, NameDistance) {
  const struct {
    const char *a, *b;
    int distance;
  } cases[] = {
      {"echo", "echo", 0}, {"echo", "ECHO", 0}, {"ech", "echo", 1},     {"ecoh", "echo", 1},
      {"tw_xsett", "tw_xset", 1}, {"", "abc", 3}, {"kitten", "sitting", 3}, {"tw_xdbgmsg", "tw_dbgmsg", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(NameDistance(c.a, c.b), c.distance) << c.a << " " << c.b;
}

struct Walked {
  std::string name;
  bool expanded;
  int depth;
  bool operator==(const Walked&) const = default;
};

std::vector<Walked> Walk(const std::string& line) {
  std::vector<Walked> out;
  WalkCommands(line, [&](const WalkedCommand& c) { out.push_back({c.name, c.expanded, c.depth}); });
  return out;
}

TEST(CheckWords, WalkFollowsTheConsolesSplitAndThePrefixes) {
  using W = std::vector<Walked>;
  EXPECT_EQ(Walk("echo a; Echo b"), (W{{"echo", false, 0}, {"echo", false, 0}}));
  EXPECT_EQ(Walk("echo \"a; b\"; x"), (W{{"echo", false, 0}, {"x", false, 0}}));
  EXPECT_EQ(Walk("echo a // b; c"), (W{{"echo", false, 0}}));
  EXPECT_EQ(Walk("tw tw_xif (1 = 1) then echo x"),
            (W{{"tw", false, 0}, {"tw_xif", true, 1}, {"echo", true, 2}}));
  EXPECT_EQ(Walk("tw_xif (1 = 1) then echo x"), (W{{"tw_xif", false, 0}, {"echo", false, 1}}));
  EXPECT_EQ(Walk("if (1 = 1) do"), (W{{"if", false, 0}}));
  EXPECT_EQ(Walk("else echo x"), (W{{"else", false, 0}, {"echo", true, 1}}));
  EXPECT_EQ(Walk("tw_xelse do"), (W{{"tw_xelse", false, 0}}));
  EXPECT_EQ(Walk("tw server_var(x) y"), (W{{"tw", false, 0}, {"server_var", true, 1}}));
  EXPECT_EQ(Walk("alias greet \"echo a; say b\""),
            (W{{"alias", false, 0}, {"echo", false, 1}, {"say", false, 1}}));
  EXPECT_EQ(Walk("alias greet"), (W{{"alias", false, 0}}));
  EXPECT_EQ(Walk("  "), W{});
}

TEST(CheckWords, ReplaceVariableForms) {
  EXPECT_EQ(ReplaceVariableForms("if (server_var(x) = 1) do", "V"), "if (V = 1) do");
  EXPECT_EQ(ReplaceVariableForms("if (EVENT_VAR (userid) in server_var(list)) do", "V"), "if (V in V) do");
  EXPECT_EQ(ReplaceVariableForms("server_var without parentheses", "V"), "server_var without parentheses");
}

}  // namespace
