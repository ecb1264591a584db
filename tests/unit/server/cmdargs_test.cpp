// The current command's tokens as handlers read them: Argc, Argv, Args.
#include <gtest/gtest.h>

#include <string>

#include "cmdargs.h"

namespace {

TEST(CurrentCommand, TokensFollowTheEngineTokenizer) {
  ConsoleCommand c;
  c.Tokenize("tw_xset x \"a b\" foo:bar");
  ASSERT_EQ(c.Argc(), 6);
  EXPECT_STREQ(c.Argv(0), "tw_xset");
  EXPECT_STREQ(c.Argv(2), "a b");
  EXPECT_STREQ(c.Argv(3), "foo");
  EXPECT_STREQ(c.Argv(4), ":");
  EXPECT_STREQ(c.Argv(5), "bar");
}

TEST(CurrentCommand, ArgsIsTheRawRestWithQuotes) {
  ConsoleCommand c;
  c.Tokenize("  say   \"hello there\"  x  \n");
  EXPECT_STREQ(c.Args(), "\"hello there\"  x");
  c.Tokenize("name_only   ");
  EXPECT_STREQ(c.Args(), "");
  c.Tokenize("cmd \"\"");
  EXPECT_EQ(c.Argc(), 2);
  EXPECT_STREQ(c.Argv(1), "");
  EXPECT_STREQ(c.Args(), "\"\"");
}

TEST(CurrentCommand, OutOfRangeGivesEmptyText) {
  ConsoleCommand c;
  c.Tokenize("");
  EXPECT_EQ(c.Argc(), 0);
  EXPECT_STREQ(c.Argv(0), "");
  EXPECT_STREQ(c.Argv(-1), "");
  EXPECT_STREQ(c.Args(), "");
  c.Tokenize("a b");
  EXPECT_STREQ(c.Argv(80), "");
}

TEST(CurrentCommand, KeepsEightyTokens) {
  std::string line = "cmd";
  for (int i = 1; i < 85; ++i) line += " t" + std::to_string(i);
  ConsoleCommand c;
  c.Tokenize(line.c_str());
  EXPECT_EQ(c.Argc(), CMD_MAX_ARGS);
  EXPECT_STREQ(c.Argv(79), "t79");
  EXPECT_NE(std::string(c.Args()).find("t84"), std::string::npos);
}

TEST(CurrentCommand, CommentsAreNotTokens) {
  ConsoleCommand c;
  c.Tokenize("tw_msg hi // note");
  EXPECT_EQ(c.Argc(), 2);
  c.Tokenize("// only a comment");
  EXPECT_EQ(c.Argc(), 0);
}

TEST(CurrentCommand, RefillingReusesTheRecord) {
  ConsoleCommand c;
  c.Tokenize("first a very long command line with many words in it");
  c.Tokenize("b c");
  EXPECT_EQ(c.Argc(), 2);
  EXPECT_STREQ(c.Argv(1), "c");
  EXPECT_STREQ(c.Line(), "b c");
}

TEST(CurrentCommand, OverlongTokenIsCutNotSplit) {
  std::string line = "cmd " + std::string(3000, 'x') + " next";
  ConsoleCommand c;
  c.Tokenize(line.c_str());
  ASSERT_EQ(c.Argc(), 3);
  EXPECT_EQ(std::string(c.Argv(1)).size(), size_t(1023));
  EXPECT_STREQ(c.Argv(2), "next");
}

}  // namespace
