// The current command's tokens as handlers read them: Argc, Argv, Args, with their limits.
#include <gtest/gtest.h>

#include <string>

#include "cmdargs.h"

namespace {

std::string Tokens(const ConsoleCommand& c) {
  std::string out;
  for (int i = 0; i < c.Argc(); ++i) out += std::string(i ? "|" : "") + c.Argv(i);
  return out;
}

TEST(CurrentCommand, TokensAndRawArguments) {
  const struct {
    const char *line, *tokens, *args;
  } cases[] = {
      {"tw_xset x \"a b\" foo:bar", "tw_xset|x|a b|foo|:|bar", "x \"a b\" foo:bar"},
      {"  say   \"hello there\"  x  \n", "say|hello there|x", "\"hello there\"  x"},
      {"cmd \"\"", "cmd|", "\"\""},
      {"tw_msg hi // note", "tw_msg|hi", "hi // note"},
      {"// only a comment", "", ""},
      {"", "", ""},
  };
  ConsoleCommand c;  // one record refilled, as the server does
  for (const auto& t : cases) {
    c.Tokenize(t.line);
    EXPECT_EQ(Tokens(c), t.tokens) << t.line;
    EXPECT_STREQ(c.Args(), t.args) << t.line;
    EXPECT_STREQ(c.Line(), t.line);
  }
  EXPECT_STREQ(c.Argv(-1), "");
  EXPECT_STREQ(c.Argv(CMD_MAX_ARGS), "");
}

TEST(CurrentCommand, LimitsCutTokensAndKeepTheRest) {
  std::string line = "cmd";
  for (int i = 1; i < 85; ++i) line += " t" + std::to_string(i);
  ConsoleCommand c;
  c.Tokenize(line.c_str());
  EXPECT_EQ(c.Argc(), CMD_MAX_ARGS);
  EXPECT_STREQ(c.Argv(79), "t79");
  EXPECT_EQ(std::string(c.Args()), line.substr(4));
  // Break characters are a token each: the record holds eighty of them.
  c.Tokenize(("x " + std::string(300, '(')).c_str());
  EXPECT_STREQ(c.Argv(79), "(");
  c.Tokenize(("cmd " + std::string(3000, 'x') + " next").c_str());
  ASSERT_EQ(c.Argc(), 3);
  EXPECT_EQ(std::string(c.Argv(1)).size(), size_t(1023));
  EXPECT_STREQ(c.Argv(2), "next");
}

}  // namespace
