// The tokenizer: ParseToken's rules for comments, quotes and break characters, and CommandArgs records
// filled by Cmd_Tokenize, with their limits. The plainest rules are the server's record's too
// (tests/unit/server/cmdargs_test.cpp).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "script/commandargs.h"
#include "tier1/tokenize.h"

namespace {

using V = std::vector<std::string>;

V Tokens(const char* text) {
  V out;
  char token[MAX_TOKEN_CHARS];
  for (const char* p = text; (p = ParseToken(p, token, sizeof token));) out.push_back(token);
  return out;
}

std::unique_ptr<CommandArgs> Tokenize(const std::string& line) {
  return std::unique_ptr<CommandArgs>(Cmd_Tokenize(line.c_str()));
}

TEST(ParseToken, Rules) {
  const struct {
    const char* text;
    V tokens;
  } cases[] = {
      {"(1 equalto 2)", {"(", "1", "equalto", "2", ")"}},
      {"a'b{x}", {"a", "'", "b", "{", "x", "}"}},
      {"\"(a:b)\"", {"(a:b)"}},  // quotes keep blanks, breaks and newlines
      {"\"one\ntwo\"", {"one\ntwo"}},
      {"\"a\"b", {"a", "b"}},  // a quoted token ends at its closing quote
      {"\"\"", {""}},
      {"x \"a b c", {"x", "a b c"}},  // an unterminated quote takes the rest
      {"a//b ab\"cd /x", {"a//b", "ab\"cd", "/x"}},
      {"a // c\nb", {"a", "b"}},
      {"a /* c */ b /* open", {"a", "b"}},
      {" \t\n ", {}},
      {"\xc3\xa9t\xc3\xa9 x", {"\xc3\xa9t\xc3\xa9", "x"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Tokens(c.text), c.tokens) << c.text;
  char token[8] = "x";
  EXPECT_EQ(ParseToken(nullptr, token, sizeof token), nullptr);
  EXPECT_STREQ(token, "");
}

TEST(CmdTokenize, CountsAndRawArgs) {
  const struct {
    const char* line;
    int argc;
    const char* args;  // "<null>" where Args() must be null
    const char* argv1;
  } cases[] = {
      {"", 0, "<null>", ""},
      {"   \t ", 0, "<null>", ""},
      {"tw_xset", 1, "<null>", ""},
      {"tw_xset   x \"a b\" // c", 3, "x \"a b\" // c", "x"},
      {"cmd \"\"", 2, "\"\"", ""},
      {"tw_msg hi // note", 2, "hi // note", "hi"},
      {"a b\nc d", 2, "b\nc d", "b"},  // the first newline between tokens ends the tokens
      {"a \"b\nc\" d", 3, "\"b\nc\" d", "b\nc"},
  };
  for (const auto& c : cases) {
    auto args = Tokenize(c.line);
    EXPECT_EQ(args->Argc(), c.argc) << c.line;
    EXPECT_STREQ(args->Args() ? args->Args() : "<null>", c.args) << c.line;
    EXPECT_STREQ(args->Argv(1), c.argv1) << c.line;
    EXPECT_STREQ(args->Argv(-1), "") << c.line;
    EXPECT_STREQ(args->Argv(80), "") << c.line;
  }
}

TEST(CmdTokenize, Limits) {
  std::string line = "cmd";
  for (int i = 1; i < 85; ++i) line += " t" + std::to_string(i);
  auto many = Tokenize(line);
  EXPECT_EQ(many->Argc(), MAX_COMMAND_TOKENS);
  EXPECT_STREQ(many->Argv(79), "t79");
  EXPECT_EQ(std::string(many->Args()), line.substr(4));

  auto breaks = Tokenize("x " + std::string(300, '('));
  EXPECT_EQ(breaks->Argc(), MAX_COMMAND_TOKENS);
  EXPECT_STREQ(breaks->Argv(79), "(");

  // A token over the limit is cut and its rest consumed.
  auto cut = Tokenize("cmd " + std::string(1500, 'a') + " next");
  ASSERT_EQ(cut->Argc(), 3);
  EXPECT_EQ(std::string(cut->Argv(1)), std::string(MAX_TOKEN_CHARS - 1, 'a'));
  EXPECT_STREQ(cut->Argv(2), "next");
}

}  // namespace
