// String commands: the format passes on their own, then tw_xtoken's splitting, tw_xstring's edits and the
// measures through the console, each as a table of inputs and the text or message a user gets.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../script/script_fixture.h"
#include "library/strings.h"

namespace {

// ---- format passes ----

struct FormatCase {
  const char* format;
  std::vector<const char*> values;  // value i fills %i
  const char* expected;
};

TEST(FormatPasses, FillEveryPlaceholderInAscendingOrderThenThePercentPass) {
  const FormatCase cases[] = {
      {"%1 and %%1", {"x"}, "x and %x"},  // the value pass runs first and finds the %1 inside %%1 too
      {"100%%", {}, "100%"},
      {"%2 %1", {"a", "b"}, "b a"},
      {"%1 %10", {"a"}, "a a0"},             // %1 is the start of %10
      {"%1", {"%2", "b"}, "b"},              // a value holding %2 is filled by the next pass
      {"%1 %3", {"a"}, "a %3"},              // placeholders beyond the values stay
      {"%1%1", {"ab"}, "abab"},
      {"%%%1", {"5"}, "%5"},
      {"", {"a"}, ""},
      {"no placeholders", {"a", "b"}, "no placeholders"},
  };
  for (const FormatCase& c : cases) {
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

// ---- tw_xtoken ----

TEST_F(StringCommandTest, TokensAreCutAtTheWholeSeparatorWithoutEmptyPieces) {
  struct Case {
    const char* line;
    const char* stored;
  };
  const Case cases[] = {
      {"tw_xtoken tok \"a  b\" 2", "b"},
      {"tw_xtoken tok \"a b c\" 0", "3"},
      {"tw_xtoken tok \"a,,b,c\" 3 ,", "c"},
      {"tw_xtoken tok \"xAByabz\" 2 ab", "y"},  // the separator is one string, compared ignoring case
      {"tw_xtoken tok \"a-b\" 2 ab", "<unchanged>"},
      {"tw_xtoken tok \"\" 0", "0"},
      {"tw_xtoken tok \"one\" 1", "one"},
  };
  for (const Case& c : cases) {
    Set("tok", "<unchanged>");
    Run(c.line);
    EXPECT_EQ(Var("tok"), c.stored) << c.line;
  }
}

TEST_F(StringCommandTest, TokenFailuresReportAndStoreNothing) {
  struct Case {
    const char* line;
    const char* output;
    const char* lastError;
  };
  const Case cases[] = {
      {"tw_xtoken tok \"a b\" 5", "The specified token number 5 doesn't exist\n", "Specified token doesn't exist."},
      {"tw_xtoken tok \"a b\"", "The specified token number 0 doesn't exist\n", "Specified token doesn't exist."},
      {"tw_xtoken tok \"a b\" -1", "The specified token number -1 doesn't exist\n", "Specified token doesn't exist."},
      {"tw_xtoken tok", "Incorrect number of parameters\n    Syntax: tw_xtoken <variable> <string> <token#> [tokenchars]\n",
       "Not enough arguments."},
      {"tw_xtoken tok a 1 b c", "Incorrect number of parameters\n    Syntax: tw_xtoken <variable> <string> <token#> [tokenchars]\n",
       "Not enough arguments."},
      {"tw_xtoken \"\" a 1", "Specify a var !\n", "Not enough arguments."},
  };
  for (const Case& c : cases) {
    Set("tok", "kept");
    Set("tidewright_lasterror", "");
    EXPECT_EQ(Run(c.line), c.output) << c.line;
    EXPECT_EQ(Var("tok"), "kept") << c.line;
    EXPECT_EQ(Var("tidewright_lasterror"), c.lastError) << c.line;
  }
}

// ---- tw_xstring ----

TEST_F(StringCommandTest, StringEditsInPlace) {
  struct Case {
    const char* before;
    const char* line;
    const char* after;
  };
  const Case cases[] = {
      {"axbXc", "tw_xstring s replace x", "abc"},
      {"axbXc", "tw_xstring s REPLACE x yy", "ayybyyc"},
      {"abcdef", "tw_xstring s section 0 3", "abc"},
      {"abcdef", "tw_xstring s section 1 -1", "bcde"},
      {"abcdef", "tw_xstring s section 4 2", ""},
      {"abcabc", "tw_xstring s replacev match", "acac"},
      {"abcabc", "tw_xstring s replacev match with", "a-ca-c"},
      {"abc", "tw_xstring s replacev nosuch", "abc"},
      {"abc", "tw_xstring s frob x", "abc"},
  };
  Set("match", "b");
  Set("with", "-");
  for (const Case& c : cases) {
    Set("s", c.before);
    Run(c.line);
    EXPECT_EQ(Var("s"), c.after) << c.line;
  }
}

TEST_F(StringCommandTest, AReplaceThatOverflowsStoresTheCutText) {
  Set("s", std::string(600, 'x').c_str());
  EXPECT_EQ(Run("tw_xstring s replace x yy"),
            "ERROR: resulting replaced string too long. Copied as much as we could.\n"
            "  Error source (console): (no script)\n");
  EXPECT_EQ(Var("s"), std::string(STRING_BUFFER_SIZE - 1, 'y'));
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
}

// ---- strcmp and strlen ----

TEST_F(StringCommandTest, MeasuresAreExactlyMinusOneZeroOrOne) {
  struct Case {
    const char* line;
    const char* stored;
  };
  const Case cases[] = {
      {"tw_xstrcmp m a z", "-1"},  {"tw_xstrcmp m z a", "1"},      {"tw_xstrcmp m abc abc", "0"},
      {"tw_xstrcmp m a A", "1"},   {"tw_xstrcmp m \xc3\xa9 z", "1"},  // bytes compare unsigned
      {"tw_xstrlen m hello", "5"}, {"tw_xstrlen m \"\"", "0"},     {"tw_xstrlen m \xc3\xa9", "2"},
  };
  for (const Case& c : cases) {
    Set("m", "x");
    Run(c.line);
    EXPECT_EQ(Var("m"), c.stored) << c.line;
  }
  // 0 is never forced: into a missing variable it fails, any other value makes it.
  EXPECT_EQ(Run("tw_xstrcmp m_missing a a"),
            "ERROR: Variable does not exist.\n  Error source (console): (no script)\n"
            "The var \"m_missing\" could not be set.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Variable could not be set.");
  Run("tw_xstrlen m_made abc");
  EXPECT_EQ(Var("m_made"), "3");
}

}  // namespace
