// Expansion: the value rules, quoting of values and literals, escape characters, protected variables,
// nested forms, malformed forms, the buffer limit, and the commands tw, twnq and tw_xnq.
#include <gtest/gtest.h>

#include <string>

#include "language_fixture.h"

namespace {

class ExpansionTest : public LanguageTest {};

TEST_F(ExpansionTest, NumbersTakeTheirIntegerFormWhenWhole) {
  const char* cases[][2] = {{"1.5", "1.5"}, {"5.000", "5"}, {"007", "7"},   {"-3", "-3"},
                            {"abc", "abc"}, {"1e3", "1"},   {"0x10", "0x10"}, {"", "0"}};
  for (auto& c : cases) {
    Set("ev_value", c[0]);
    EXPECT_EQ(Expand("server_var(ev_value)"), std::string(c[1]) + "\n") << c[0];
  }
}

TEST_F(ExpansionTest, MissingVariableIsZeroWithAWarning) {
  EXPECT_EQ(Expand("server_var(ev_nowhere)"), "0\n");
  tidewright_debug.SetValue(1);
  EXPECT_NE(Run("tw echo server_var(ev_nowhere)").find("WARNING: Couldn't find server variable: ev_nowhere\n"),
            std::string::npos);
}

TEST_F(ExpansionTest, EmptyVariableIsZeroWithoutAWarning) {
  Set("ev_empty", "");
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Expand("server_var(ev_empty)"), "0\n");
}

TEST_F(ExpansionTest, ValueWithABlankIsQuoted) {
  Set("ev_words", "a b");
  EXPECT_EQ(Expand("server_var(ev_words)"), "\"a b\"\n");
  Run("tw tw_xset ev_copy server_var(ev_words)");
  EXPECT_EQ(Var("ev_copy"), "a b");
}

TEST_F(ExpansionTest, WithoutEscapeCharactersAValueSplits) {
  Set("ev_words", "a b");
  tidewright_escapechars.SetValue("");
  EXPECT_EQ(Expand("server_var(ev_words)"), "a b\n");
}

TEST_F(ExpansionTest, DoubleQuotesInValuesBecomeBackticks) {
  Set("ev_say", "say \"hi\"");
  EXPECT_EQ(Expand("server_var(ev_say)"), "\"say `hi`\"\n");
  Set("ev_hi", "\"hi\"");
  EXPECT_EQ(Expand("server_var(ev_hi)"), "`hi`\n");
}

TEST_F(ExpansionTest, QuoteVariableExpandsToABacktick) {
  Set("ev_quote", "\"");
  EXPECT_EQ(Expand("server_var(ev_quote)"), "`\n");
}

TEST_F(ExpansionTest, DoubleSlashIsQuotedWhateverTheEscapeCharacters) {
  Set("ev_slashes", "a//b");
  EXPECT_EQ(Expand("server_var(ev_slashes)"), "\"a//b\"\n");
  tidewright_escapechars.SetValue("");
  EXPECT_EQ(Expand("server_var(ev_slashes)"), "\"a//b\"\n");
}

TEST_F(ExpansionTest, ProtectedVariableShowsNoValue) {
  Set("ev_secret", "hunter2");
  FindServerVar("ev_secret")->AddFlags(FCVAR_PROTECTED);
  EXPECT_EQ(Expand("server_var(ev_secret)"), "\"(protected)\"\n");
}

TEST_F(ExpansionTest, KeywordIgnoresCaseAndNameFollowsTheLookup) {
  Set("ev_case", "7");
  EXPECT_EQ(Expand("SERVER_VAR(EV_CASE)"), "7\n");
}

TEST_F(ExpansionTest, NothingInsideQuotesExpands) {
  Set("ev_x", "1");
  EXPECT_EQ(Expand("\"server_var(ev_x)\""), "\"server_var(ev_x)\"\n");
}

TEST_F(ExpansionTest, LiteralRuleQuotesSemicolonAndEscapedWordsOnly) {
  EXPECT_EQ(Expand("\";\""), "\";\"\n");
  EXPECT_EQ(Expand("a:b ( x"), "a : b ( x\n");
  EXPECT_EQ(Expand("\"two words\""), "\"two words\"\n");
}

TEST_F(ExpansionTest, EmptyQuotedArgumentVanishes) {
  std::string out = Run("tw_set ev_y \"\"");
  EXPECT_EQ(out, "Syntax: tw_set <key> <value> [description]\n");
  EXPECT_EQ(Expand("a \"\" b"), "a  b\n");  // no token stands between the blanks
}

TEST_F(ExpansionTest, NestedFormsLookUpByValue) {
  Set("ev_inner", "ev_target");
  Set("ev_target", "42");
  EXPECT_EQ(Expand("server_var(server_var(ev_inner))"), "42\n");
}

TEST_F(ExpansionTest, QuotedInnerValueMakesTheOuterLookupFail) {
  Set("ev_inner", "ev target");
  Set("ev target", "42");
  EXPECT_EQ(Expand("server_var(server_var(ev_inner))"), "0\n");
}

TEST_F(ExpansionTest, EventVariablesComeFromTheCurrentEvent) {
  EXPECT_EQ(Expand("event_var(userid)"), "0\n");
  FakeEvent event("player_death");
  event.keys["userid"] = "12";
  event.keys["weapon"] = "";
  event.keys["name"] = "Big \"Bob\"";
  g_currentEvent = &event;
  EXPECT_EQ(Expand("event_var(userid)"), "12\n");
  EXPECT_EQ(Expand("event_var(weapon)"), "0\n");
  EXPECT_EQ(Expand("event_var(missing)"), "0\n");
  EXPECT_EQ(Expand("event_var(name)"), "\"Big `Bob`\"\n");
}

TEST_F(ExpansionTest, EventVariableNamedByAServerVariable) {
  FakeEvent event("e");
  event.keys["attacker"] = "3";
  g_currentEvent = &event;
  Set("ev_key", "attacker");
  EXPECT_EQ(Expand("event_var(server_var(ev_key))"), "3\n");
}

TEST_F(ExpansionTest, MalformedFormsFailTheWholeLine) {
  for (const char* line : {"x server_var", "server_var x", "server_var(", "server_var(x", "server_var(x y)",
                           "\"server_var\" hello"}) {
    tidewright_lasterror.SetValue("");
    std::string out = Run(std::string("tw echo ") + line);
    EXPECT_NE(out.find("ParseCommand: Error in string format.\n"), std::string::npos) << line << out;
    EXPECT_NE(out.find("tw: Error parsing command string: echo "), std::string::npos) << line;
    EXPECT_EQ(Var("tidewright_lasterror"), "Error while parsing command string.") << line;
  }
}

TEST_F(ExpansionTest, ValueThatWouldPassTheBufferFailsTheLine) {
  Set("ev_long", (std::string(2046, 'v') + " ").c_str());
  std::string out = Run("tw echo server_var(ev_long)");
  EXPECT_NE(out.find("ParseCommand: Error in string format.\n"), std::string::npos);
  EXPECT_EQ(out.find("vvvv"), std::string::npos);
}

TEST_F(ExpansionTest, LineThatWouldPassTheBufferFails) {
  Set("ev_kilo", std::string(1000, 'k').c_str());
  std::string out = Run("tw echo server_var(ev_kilo) server_var(ev_kilo) server_var(ev_kilo)");
  EXPECT_NE(out.find("Error in string format."), std::string::npos);
  EXPECT_EQ(out.find("kkkk"), std::string::npos);
  const std::string kilo(1000, 'k');
  EXPECT_EQ(Expand("server_var(ev_kilo) server_var(ev_kilo)"), kilo + " " + kilo + "\n");
}

TEST_F(ExpansionTest, TwNeedsACommandString) {
  EXPECT_EQ(Run("tw"), "tw: Please provide a command string.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "No arguments provided.");
  EXPECT_EQ(Run("twnq"), "twnq: Please provide a command string.\n");
  EXPECT_EQ(Run("tw_xnq"), "tw_xnq: Please provide a command string.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "No command string provided.");
}

TEST_F(ExpansionTest, TwnqRemovesQuotesUnlessASemicolonStands) {
  Set("ev_words", "a b");
  EXPECT_EQ(LogOf(Run("twnq tw_xlogq server_var(ev_words)")), "a b\n");
  std::string out = Run("twnq tw_xlogq \"a;b\"");
  EXPECT_NE(out.find("WARNING: twnq: Quotes not stripped because command-line contained a semicolon.\n"),
            std::string::npos);
  EXPECT_EQ(LogOf(out), "\"a;b\"\n");
}

TEST_F(ExpansionTest, XnqSplitsAtASemicolonInQuotes) { EXPECT_EQ(Run("tw_xnq echo \"a;echo b\""), "a\nb\n"); }

TEST_F(ExpansionTest, NestedTwRuns) {
  Set("ev_x", "5");
  EXPECT_EQ(Run("tw tw echo server_var(ev_x)"), "5\n");
}

TEST_F(ExpansionTest, ExpansionInsideAScriptLine) {
  Set("ev_name", "world");
  Load("exp", "block a\n{\ntw echo hello server_var(ev_name)\n}\n");
  EXPECT_EQ(Run("tw_xdoblock exp/a"), "hello world\n");
}

}  // namespace
