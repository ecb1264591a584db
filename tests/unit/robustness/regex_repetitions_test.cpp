// Patterns whose repeated "+" would take the regular expression engine minutes or hours to compile are
// refused at once with a message; patterns of any ordinary shape, long ones included, still compile.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "library/regex.h"
#include "test_server.h"

namespace {

TEST(RegexRepetitions, PiecesCountEveryPlusAsADoubling) {
  const struct {
    std::string pattern;
    size_t pieces;
  } cases[] = {
      {"", 0},
      {"abc", 3},
      {"a+", 2},
      {"a++", 4},
      {"(ab)+", 4},
      {"((a+)+)+", 8},
      {"a*b?c", 3},
      {"[+(]+", 2},
      {"[]+]x", 2},
      {"[[:alpha:]+]+", 2},
      {"\\++", 2},
      {"a|b+", 3},
      {"|+", 0},
      {"(+)", 1},
      {"a)+", 3},
      {"(a+", 2},
      {std::string(3000, 'x'), 3000},
      {"x" + std::string(40, '+'), size_t(1) << 40},
  };
  for (const auto& c : cases) EXPECT_EQ(Regex_CompiledPieces(c.pattern.c_str()), c.pieces) << c.pattern;
}

TEST(RegexRepetitions, AnExplodingPatternIsRefusedAtOnceAndOrdinaryOnesStillMatch) {
  TestServer& server = TestServer::Shared();
  server.Run("tw_set rx_out none");
  const auto start = std::chrono::steady_clock::now();
  std::string refused = server.Run("tw_regex match rx_out x" + std::string(25, '+') + " xxx\n"
                                   "tw_regex search rx_out \"((((((((((((((((((((x+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+)+\" xx\n"
                                   "tw echo server_var(rx_out)");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(refused,
            "Regular expression too complex: its repeated \"+\" would compile to more than 65536 copies.\n"
            "Regular expression too complex: its repeated \"+\" would compile to more than 65536 copies.\n"
            "none\n");
  EXPECT_EQ(server.Run("tw_regex match rx_out x++++++++ xxx\ntw echo server_var(rx_out)\n"
                       "tw_regex match rx_out " + std::string(1000, 'y') + "+ " + std::string(1000, 'y') +
                       "\ntw echo server_var(rx_out)"),
            "3\n1000\n");
}

}  // namespace
