// The group table read from fewer registers than it has entries, and the format's cut at its buffer. The
// syntax, the nine named groups of a longer match and the format's references run in the
// library/regex_match and library/regex_format scenarios.
#include <gtest/gtest.h>

#include <string>

#include "library/regex.h"

namespace {

// Registers written by hand: `pairs` are start and end offsets, -1 for a group that took no part.
struct HandRegisters {
  regoff_t start[16];
  regoff_t end[16];
  re_registers registers;
  HandRegisters(std::initializer_list<std::pair<int, int>> pairs) {
    int i = 0;
    for (auto [s, e] : pairs) {
      start[i] = s;
      end[i] = e;
      ++i;
    }
    registers = {__re_size_t(i), start, end};
  }
};

std::string Entry(const RegexGroupTable& table, int i) { return std::string(table.text[i], table.length[i]); }

TEST(RegexGroups, TableReadsOnlyRegistersThatExistAndFit) {
  const char* subject = "abcdefghijkl";
  RegexGroupTable table;

  HandRegisters fewer({{0, 3}, {0, 1}, {-1, -1}, {2, 3}});
  Regex_FillGroups(table, fewer.registers, subject);
  EXPECT_EQ(Entry(table, 0), "abc");
  EXPECT_EQ(Entry(table, 1), "a");
  EXPECT_EQ(Entry(table, 2), "");  // took no part
  EXPECT_EQ(Entry(table, 3), "c");
  for (int i = 4; i < REGEX_GROUP_ENTRIES; ++i) EXPECT_EQ(Entry(table, i), "") << i;  // not in the registers
}

TEST(RegexFormat, ResultIsCutAtTheBuffer) {
  const std::string subject(3000, 's');
  HandRegisters hand({{0, 3000}, {0, 3000}});
  RegexGroupTable table;
  Regex_FillGroups(table, hand.registers, subject.c_str());
  char out[REGEX_FORMAT_SIZE];
  EXPECT_EQ(Regex_Format("x%1%1%1", table, out), size_t(REGEX_FORMAT_SIZE - 1));
  EXPECT_EQ(std::string(out), "x" + std::string(REGEX_FORMAT_SIZE - 2, 's'));
  const std::string literal(6000, 'l');
  EXPECT_EQ(Regex_Format(literal.c_str(), table, out), size_t(REGEX_FORMAT_SIZE - 1));
}

}  // namespace
