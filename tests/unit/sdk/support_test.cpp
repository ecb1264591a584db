// The support library that the engine and plugins share: output routing, developer messages, the key name
// table, the command line, the Q_ text helpers, and TW_ASSERT.
#include <gtest/gtest.h>

#include "output_capture.h"
#include "tier0.h"
#include "vstdlib.h"

TEST(SupportOutput, MessagesReachTheSpewInOrderAndDevMessagesFollowTheLevel) {
  OutputCapture out;
  int previous = GetDeveloperLevel();
  Msg("one %d\n", 1);
  Warning("two %s\n", "2");
  SetDeveloperLevel(0);
  DevMsg(1, "hidden\n");
  SetDeveloperLevel(2);
  DevMsg(2, "shown\n");
  SetDeveloperLevel(previous);
  EXPECT_EQ(out.Text(), "one 1\ntwo 2\nshown\n");
}

TEST(SupportOutput, LongMessagesAreNotCut) {
  OutputCapture out;
  std::string big(5000, 'y');
  Msg("%s", big.c_str());
  EXPECT_EQ(out.Text(), big);
}

TEST(SupportKeyNames, SameNameIgnoringCaseIsOneSymbolSpelledAsFirstSeen) {
  IKeyValuesSystem* kvs = KeyValuesSystem();
  HKeySymbol a = kvs->GetSymbolForString("SupportTestName");
  EXPECT_EQ(kvs->GetSymbolForString("supporttestname"), a);
  EXPECT_STREQ(kvs->GetStringForSymbol(a), "SupportTestName");
  EXPECT_NE(kvs->GetSymbolForString("SupportTestOther"), a);
  EXPECT_STREQ(kvs->GetStringForSymbol(-1), "");
  EXPECT_STREQ(kvs->GetStringForSymbol(1 << 30), "");
}

TEST(SupportCommandLine, ParametersAndValues) {
  CommandLine()->CreateCmdLine("tidewright-server --game /tmp/x +map de_dust --flag");
  EXPECT_STREQ(CommandLine()->GetCmdLine(), "tidewright-server --game /tmp/x +map de_dust --flag");
  EXPECT_STREQ(CommandLine()->ParmValue("--game"), "/tmp/x");
  EXPECT_STREQ(CommandLine()->ParmValue("--flag", "none"), "none");
  EXPECT_EQ(CommandLine()->CheckParm("--gam"), nullptr);
  EXPECT_NE(CommandLine()->CheckParm("+map"), nullptr);
}

TEST(SupportText, AtoiReadsSignsHexAndGivesZeroForText) {
  EXPECT_EQ(Q_atoi("42"), 42);
  EXPECT_EQ(Q_atoi("-17abc"), -17);
  EXPECT_EQ(Q_atoi("0x1F"), 31);
  EXPECT_EQ(Q_atoi("abc"), 0);
  EXPECT_EQ(Q_atoi(""), 0);
  EXPECT_EQ(Q_atoi(nullptr), 0);
}

TEST(SupportText, CaseInsensitiveSearchAndCompare) {
  const char* hay = "Hello World";
  EXPECT_EQ(Q_stristr(hay, "WORLD"), hay + 6);
  EXPECT_EQ(Q_stristr(hay, "planet"), nullptr);
  EXPECT_EQ(Q_strcasecmp("STEAM_0", "steam_0"), 0);
  EXPECT_NE(Q_strcasecmp("a", "b"), 0);
}

TEST(SupportText, SubstituteReportsWhenTheResultDoesNotFit) {
  char out[16];
  EXPECT_TRUE(Q_StrSubst("#GREEN hi #green", "#green", "G", out, sizeof out));
  EXPECT_STREQ(out, "G hi G");
  EXPECT_TRUE(Q_StrSubst("aAa", "a", "b", out, sizeof out, true));
  EXPECT_STREQ(out, "bAb");
  EXPECT_FALSE(Q_StrSubst("xxxxxxxx", "x", "yy", out, sizeof out));
  EXPECT_EQ(strlen(out), 15u);
}

TEST(SupportText, SliceAndSplit) {
  char out[32];
  Q_StrSlice("abcdef", 1, 3, out, sizeof out);
  EXPECT_STREQ(out, "bc");
  Q_StrSlice("abcdef", -2, 6, out, sizeof out);
  EXPECT_STREQ(out, "ef");
  Q_StrSlice("abc", 2, 1, out, sizeof out);
  EXPECT_STREQ(out, "");
  std::vector<std::string> parts;
  Q_SplitString("a,,b,", ",", parts);
  EXPECT_EQ(parts, (std::vector<std::string>{"a", "", "b", ""}));
}

TEST(SupportText, SnprintfAlwaysEndsInsideTheBuffer) {
  char out[4];
  EXPECT_EQ(Q_snprintf(out, sizeof out, "%s", "abcdef"), 3);
  EXPECT_STREQ(out, "abc");
}

TEST(SupportRandom, SeededStreamsRepeatAndStayInRange) {
  RandomSeed(7);
  int a = RandomInt(1, 1000);
  RandomSeed(7);
  EXPECT_EQ(RandomInt(1, 1000), a);
  for (int i = 0; i < 1000; ++i) {
    int v = RandomInt(-3, 3);
    EXPECT_GE(v, -3);
    EXPECT_LE(v, 3);
  }
}

// TW_ASSERT checks in the sanitizer build and aborts with its message; in release it evaluates nothing.
TEST(SupportAssert, LiveOnlyInTheSanitizerBuild) {
  int evaluated = 0;
  auto holds = [&] {
    ++evaluated;
    return true;
  };
  TW_ASSERT(holds(), "never broken");
#ifdef TW_SANITIZE
  EXPECT_EQ(evaluated, 1);
  EXPECT_DEATH(TW_ASSERT(evaluated == 2, "one evaluation"), "invariant broken: one evaluation \\(evaluated == 2\\)");
#else
  EXPECT_EQ(evaluated, 0);
#endif
}
