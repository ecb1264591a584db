// The pieces under the checks: nearest names, the walk over a line's commands, the variable forms, and
// the shape test of a condition that the plugin's tw_xif shares.
#include <gtest/gtest.h>

#include "commandwalk.h"
#include "nearest.h"
#include "script/conditionals.h"

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

TEST(CheckWords, NearestNameOnlyWhenClose) {
  const std::vector<std::string> names = {"echo", "tw_xset", "tw_set", "tw__db", "sim_connect", "status"};
  EXPECT_EQ(NearestName("ech", names), "echo");
  EXPECT_EQ(NearestName("tw_xsett", names), "tw_xset");
  EXPECT_EQ(NearestName("sim_conect", names), "sim_connect");
  EXPECT_EQ(NearestName("frobnicate", names), "");
  EXPECT_EQ(NearestName("ab", names), "");
  EXPECT_EQ(NearestName("tw_db", names), "");      // internal names only for a name that has "__"
  EXPECT_EQ(NearestName("tw__dc", names), "tw__db");
  EXPECT_EQ(NearestName("tw_st", {"tw_set", "tw_sat"}), "tw_sat");  // ties: the alphabetically first
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

TEST(CheckWords, ConditionShape) {
  const struct {
    const char *open, *close, *word, *args;
    int error;
  } cases[] = {
      {"(", ")", "then", "(a = b) then echo", 0}, {"(", ")", "DO", "(a = b) DO", 5},
      {"(", ")", "do", "(a = b) do", 0},          {"a", ")", "then", "a = b) then echo", 2},
      {"(", "d", "then", "(a b c d) then x", 3},  {"(", ")", "than", "(a = b) than x", 4},
      {"(", ")", "then", "(a = b) then", 5},
  };
  for (const auto& c : cases) EXPECT_EQ(ConditionShapeError(c.open, c.close, c.word, c.args), c.error) << c.args;
}

}  // namespace
