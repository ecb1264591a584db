// String commands: the format passes on their own and their cut at the buffer, and the edges of tw_xtoken,
// tw_xstrcmp and tw_xstrlen that the library/strings and library/format scenarios don't reach.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../script/script_fixture.h"
#include "library/strings.h"

namespace {

TEST(FormatPasses, FillEveryPlaceholderInAscendingOrderThenThePercentPass) {
  const struct {
    const char* format;
    std::vector<const char*> values;  // value i fills %i
    const char* expected;
  } cases[] = {
      {"%1 %3", {"a"}, "a %3"},  // placeholders beyond the values stay
      {"%1%1", {"ab"}, "abab"},
      {"%%%1", {"5"}, "%5"},
      {"", {"a"}, ""},
  };
  for (const auto& c : cases) {
    FormatText text(c.format);
    for (size_t i = 0; i < c.values.size(); ++i) text.Fill(int(i) + 1, c.values[i]);
    EXPECT_STREQ(text.Finish(), c.expected) << c.format;
  }
}

TEST(FormatPasses, TextsAreCutAtTheBuffer) {
  const std::string longFormat(2000, 'f');
  FormatText cutFormat(longFormat.c_str());
  EXPECT_EQ(std::string(cutFormat.Finish()), std::string(STRING_BUFFER_SIZE - 1, 'f'));

  const std::string value(600, 'v');
  FormatText grown("%1%1");
  grown.Fill(1, value.c_str());
  EXPECT_EQ(std::string(grown.Finish()), std::string(STRING_BUFFER_SIZE - 1, 'v'));
}

class StringCommandTest : public ScriptTest {};

TEST_F(StringCommandTest, EdgesOfTokensAndMeasures) {
  const struct {
    const char* line;
    const char* stored;  // in t, which holds "kept" before
  } cases[] = {
      {"tw_xtoken t \"a-b\" 2 ab", "kept"},  // the separator is the whole string
      {"tw_xtoken t \"\" 0", "0"},
      {"tw_xtoken t \"a b\" -1", "kept"},
      {"tw_xtoken t a 1 b c", "kept"},
      {"tw_xstrcmp t \xc3\xa9 z", "1"},  // bytes compare unsigned
      {"tw_xstrlen t \xc3\xa9", "2"},
  };
  for (const auto& c : cases) {
    Set("t", "kept");
    Run(c.line);
    EXPECT_EQ(Var("t"), c.stored) << c.line;
  }
}

}  // namespace
