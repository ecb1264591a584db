// The tokenizer: ParseToken's rules for comments, quotes and break characters, and CommandArgs records
// filled by Cmd_Tokenize, with their limits.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "script/commandargs.h"
#include "tier1/tokenize.h"

namespace {

std::vector<std::string> Tokens(const char* text) {
  std::vector<std::string> out;
  char token[MAX_TOKEN_CHARS];
  for (const char* p = text; (p = ParseToken(p, token, sizeof token));) out.push_back(token);
  return out;
}

std::unique_ptr<CommandArgs> Tokenize(const char* line) { return std::unique_ptr<CommandArgs>(Cmd_Tokenize(line)); }

using V = std::vector<std::string>;

TEST(ParseToken, BreakCharactersAreTokensOfTheirOwn) {
  EXPECT_EQ(Tokens("foo:bar"), (V{"foo", ":", "bar"}));
  EXPECT_EQ(Tokens("(1 equalto 2)"), (V{"(", "1", "equalto", "2", ")"}));
  EXPECT_EQ(Tokens("a'b"), (V{"a", "'", "b"}));
  EXPECT_EQ(Tokens("{x}"), (V{"{", "x", "}"}));
}

TEST(ParseToken, QuotedTokenKeepsBlanksBreaksAndNewlines) {
  EXPECT_EQ(Tokens("tw_xset x \"a b\""), (V{"tw_xset", "x", "a b"}));
  EXPECT_EQ(Tokens("\"(a:b)\""), (V{"(a:b)"}));
  EXPECT_EQ(Tokens("\"one\ntwo\""), (V{"one\ntwo"}));
}

TEST(ParseToken, QuotedTokenEndsAtItsClosingQuote) {
  EXPECT_EQ(Tokens("\"a\"b"), (V{"a", "b"}));
  EXPECT_EQ(Tokens("\"\""), (V{""}));
}

TEST(ParseToken, UnterminatedQuoteTakesTheRest) { EXPECT_EQ(Tokens("x \"a b c"), (V{"x", "a b c"})); }

TEST(ParseToken, QuotesAndSlashesInsideOrdinaryTokensAreOrdinary) {
  EXPECT_EQ(Tokens("a//b ab\"cd"), (V{"a//b", "ab\"cd"}));
  EXPECT_EQ(Tokens("/x"), (V{"/x"}));
}

TEST(ParseToken, CommentsAreSkippedAndDontEndAMultiLineText) {
  EXPECT_EQ(Tokens("tw_msg hi // note"), (V{"tw_msg", "hi"}));
  EXPECT_EQ(Tokens("a // c\nb"), (V{"a", "b"}));
  EXPECT_EQ(Tokens("a /* c */ b /* open"), (V{"a", "b"}));
}

TEST(ParseToken, NullAndBlankTextGiveNoToken) {
  char token[8] = "x";
  EXPECT_EQ(ParseToken(nullptr, token, sizeof token), nullptr);
  EXPECT_STREQ(token, "");
  EXPECT_EQ(ParseToken(" \t\n ", token, sizeof token), nullptr);
}

TEST(ParseToken, HighBitCharactersAreOrdinary) {
  EXPECT_EQ(Tokens("\xc3\xa9t\xc3\xa9 x"), (V{"\xc3\xa9t\xc3\xa9", "x"}));
}

TEST(CmdTokenize, EmptyAndBlankLinesHoldNoToken) {
  for (const char* line : {"", "   \t "}) {
    auto args = Tokenize(line);
    EXPECT_EQ(args->Argc(), 0);
    EXPECT_STREQ(args->Argv(0), "");
    EXPECT_EQ(args->Args(), nullptr);
  }
}

TEST(CmdTokenize, OneTokenHasNoArgs) {
  auto args = Tokenize("tw_xset");
  EXPECT_EQ(args->Argc(), 1);
  EXPECT_EQ(args->Args(), nullptr);
}

TEST(CmdTokenize, ArgvOutOfRangeIsEmptyText) {
  auto args = Tokenize("a b");
  EXPECT_STREQ(args->Argv(80), "");
  EXPECT_STREQ(args->Argv(-1), "");
  EXPECT_STREQ(args->Argv(2), "");
}

TEST(CmdTokenize, ArgsIsTheRawTextBehindTheName) {
  auto args = Tokenize("tw_xset   x \"a b\" // c");
  EXPECT_EQ(args->Argc(), 3);
  EXPECT_STREQ(args->Args(), "x \"a b\" // c");
}

TEST(CmdTokenize, EmptyQuotedArgumentCounts) {
  auto args = Tokenize("cmd \"\"");
  EXPECT_EQ(args->Argc(), 2);
  EXPECT_STREQ(args->Argv(1), "");
  EXPECT_STREQ(args->Args(), "\"\"");
}

TEST(CmdTokenize, EightyTokensKeptAndTheRestDropped) {
  std::string line = "cmd";
  for (int i = 1; i < 85; ++i) line += " t" + std::to_string(i);
  auto args = Tokenize(line.c_str());
  EXPECT_EQ(args->Argc(), 80);
  EXPECT_STREQ(args->Argv(79), "t79");
  EXPECT_STREQ(args->Argv(80), "");
  EXPECT_EQ(std::string(args->Args()), line.substr(4));
}

TEST(CmdTokenize, FirstNewlineBetweenTokensEndsTheLine) {
  auto args = Tokenize("a b\nc d");
  EXPECT_EQ(args->Argc(), 2);
  auto quoted = Tokenize("a \"b\nc\" d");
  EXPECT_EQ(quoted->Argc(), 3);
  EXPECT_STREQ(quoted->Argv(1), "b\nc");
}

TEST(CmdTokenize, CommentOnlyLineHoldsItsName) {
  auto args = Tokenize("tw_msg hi // note");
  EXPECT_EQ(args->Argc(), 2);
  EXPECT_STREQ(args->Argv(1), "hi");
}

TEST(CmdTokenize, TokenOverTheLimitIsCutAndItsRestConsumed) {
  std::string line = "cmd " + std::string(1500, 'a') + " next";
  auto args = Tokenize(line.c_str());
  ASSERT_EQ(args->Argc(), 3);
  EXPECT_EQ(std::string(args->Argv(1)), std::string(MAX_TOKEN_CHARS - 1, 'a'));
  EXPECT_STREQ(args->Argv(2), "next");
}

TEST(CmdTokenize, ManyBreakCharactersFitTheRecord) {
  std::string line = "x " + std::string(300, '(');
  auto args = Tokenize(line.c_str());
  EXPECT_EQ(args->Argc(), 80);
  EXPECT_STREQ(args->Argv(79), "(");
}

}  // namespace
