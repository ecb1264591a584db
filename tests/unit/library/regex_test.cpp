// The regex syntax word, the group table read from a match's registers, and the format that fills it in.
// The operations themselves run in the library/regex_match and library/regex_format scenarios.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "library/regex.h"

namespace {

TEST(RegexSyntax, IsTheWordOfTheNamedBitsAndNoOther) {
  EXPECT_EQ(kRegexSyntax, reg_syntax_t(0x13b04d));
  // Counted repetition stays off (braces are characters), and so do the backslash forms of groups and bars.
  EXPECT_EQ(kRegexSyntax & RE_INTERVALS, 0u);
  EXPECT_EQ(kRegexSyntax & RE_ICASE, 0u);
  EXPECT_EQ(kRegexSyntax & RE_NO_SUB, 0u);
  EXPECT_EQ(kRegexSyntax & RE_NO_GNU_OPS, 0u);
}

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

  HandRegisters more({{0, 12}, {0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}, {6, 7}, {7, 8}, {8, 9}, {9, 10},
                      {10, 11}, {11, 12}, {-1, -1}});
  Regex_FillGroups(table, more.registers, subject);
  EXPECT_EQ(Entry(table, 0), "abcdefghijkl");
  EXPECT_EQ(Entry(table, 9), "i");  // the last entry; registers 10 and on are not read
}

TEST(RegexGroups, GlibcGivesOneRegisterMoreThanTheGroupsAndTheWholeMatch) {
  re_pattern_buffer buffer = {};
  buffer.regs_allocated = REGS_UNALLOCATED;
  re_syntax_options = kRegexSyntax;
  const char pattern[] = "(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)";
  ASSERT_EQ(re_compile_pattern(pattern, sizeof pattern - 1, &buffer), nullptr);
  re_registers registers = {};
  ASSERT_EQ(re_match(&buffer, "abcdefghij", 10, 0, &registers), 10);
  // 10 groups give 12 registers: copying every register into 10 entries would allow only 8 groups.
  EXPECT_EQ(registers.num_regs, 12u);
  RegexGroupTable table;
  Regex_FillGroups(table, registers, "abcdefghij");
  EXPECT_EQ(Entry(table, 9), "i");
  free(registers.start);
  free(registers.end);
  regfree(&buffer);
}

TEST(RegexFormat, FillsReferences) {
  HandRegisters hand({{0, 5}, {0, 2}, {3, 5}, {-1, -1}});
  RegexGroupTable table;
  Regex_FillGroups(table, hand.registers, "ab cd");
  const struct {
    const char* format;
    const char* result;
  } cases[] = {
      {"%2%1%%", "cdab%"},
      {"<%1>", "<ab>"},
      {"%0|%x|%-", "0|x|-"},  // group 0 can't be named; a percent sign and another character is that character
      {"%3%9.", "."},         // a group that took no part, and one the pattern lacks
      {"end%", "end"},        // a lone percent sign ends the format
      {"%%%", "%"},
      {"", ""},
      {"plain", "plain"},
  };
  for (const auto& c : cases) {
    char out[REGEX_FORMAT_SIZE];
    EXPECT_EQ(Regex_Format(c.format, table, out), strlen(c.result)) << c.format;
    EXPECT_STREQ(out, c.result) << c.format;
  }
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
