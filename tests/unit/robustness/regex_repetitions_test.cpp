// Patterns whose repeated "+" would take the regular expression engine minutes or hours to compile are
// refused at once with a message; patterns of any ordinary shape, long ones included, still compile.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "library/regex.h"
#include "test_server.h"

namespace {

TEST(RegexRepetitions, ShapeCountsPiecesAndNestingOfRepetitions) {
  const struct {
    std::string pattern;
    size_t pieces;
    int depth;
  } cases[] = {
      {"", 0, 0},          {"abc", 3, 0},          {"a+", 2, 1},           {"a*b?c", 3, 1},
      {"a++", 4, 2},       {"a+*", 2, 2},          {"(ab)+", 4, 1},        {"((a+)+)+", 8, 3},
      {"((a+)*)?b*", 3, 3}, {"[+(]+", 2, 1},       {"[]+]x", 2, 0},        {"[[:alpha:]+]+", 2, 1},
      {"\\++", 2, 1},      {"a|b+", 3, 1},         {"|+", 1, 0},           {"(++)", 2, 1},
      {"*a", 2, 0},        {"(+)", 1, 0},          {"a)+", 3, 1},          {"(a+", 2, 1},
      {std::string(3000, 'x'), 3000, 0},
      {"x" + std::string(40, '+'), size_t(1) << 40, 40},
  };
  for (const auto& c : cases) {
    RegexShape shape = Regex_Shape(c.pattern.c_str());
    EXPECT_EQ(shape.pieces, c.pieces) << c.pattern;
    EXPECT_EQ(shape.depth, c.depth) << c.pattern;
  }
}

TEST(RegexRepetitions, AnExplodingPatternIsRefusedAtOnceAndOrdinaryOnesStillMatch) {
  TestServer& server = TestServer::Shared();
  server.Run("tw_set rx_out none");
  const auto start = std::chrono::steady_clock::now();
  std::string refused = server.Run("tw_regex match rx_out x" + std::string(25, '+') + " xxx\n"
                                   "tw_regex match rx_out w+*+++++++++++++ www\n"
                                   "tw_regex match rx_out \"^(+++++++++++++++++++.*)$\" +\n"
                                   "tw_regex search rx_out \"((((((((((((((((((((x+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+\" xx\n"
                                   "tw echo server_var(rx_out)");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  const std::string message =
      "Regular expression too complex: its repetitions nest deeper than 8 or would compile to more than 65536 "
      "copies.\n";
  EXPECT_EQ(refused, message + message + message + message + "none\n");
  EXPECT_EQ(server.Run("tw_regex match rx_out x*+++++++ xxx\ntw echo server_var(rx_out)\n"
                       "tw_regex match rx_out " + std::string(1000, 'y') + "+ " + std::string(1000, 'y') +
                       "\ntw echo server_var(rx_out)"),
            "3\n1000\n");
}

}  // namespace
