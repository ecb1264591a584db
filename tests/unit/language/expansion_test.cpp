// Expansion: the value rules, quoting of values and literals, escape characters, protected variables,
// nested forms, event variables, malformed forms and the buffer limit. The commands tw, twnq and tw_xnq
// run in the language_doors scenario.
#include <gtest/gtest.h>

#include <string>

#include "gameevents.h"
#include "language_fixture.h"

namespace {

class ExpansionTest : public LanguageTest {};

TEST_F(ExpansionTest, ValuesAndLiterals) {
  Set("ev_target", "42");
  Set("ev target", "42");
  const struct {
    const char* value;  // of ev_v
    const char* text;
    const char* expanded;
  } cases[] = {
      // Numbers take their integer form when whole; a missing or empty variable is 0.
      {"1.5", "server_var(ev_v)", "1.5"}, {"5.000", "server_var(ev_v)", "5"}, {"007", "server_var(ev_v)", "7"},
      {"-3", "server_var(ev_v)", "-3"}, {"abc", "server_var(ev_v)", "abc"}, {"1e3", "server_var(ev_v)", "1"},
      {"0x10", "server_var(ev_v)", "0x10"}, {"", "server_var(ev_v)", "0"}, {"x", "server_var(ev_nowhere)", "0"},
      // A value with a blank or "//" is quoted; double quotes become backticks.
      {"a b", "server_var(ev_v)", "\"a b\""}, {"say \"hi\"", "server_var(ev_v)", "\"say `hi`\""},
      {"\"hi\"", "server_var(ev_v)", "`hi`"}, {"\"", "server_var(ev_v)", "`"}, {"a//b", "server_var(ev_v)", "\"a//b\""},
      // The keyword ignores case, the name follows the lookup; nothing inside quotes expands.
      {"7", "SERVER_VAR(EV_V)", "7"}, {"1", "\"server_var(ev_v)\"", "\"server_var(ev_v)\""},
      // Literals: only a semicolon or escaped words stay quoted; no token stands between the blanks of "".
      {"x", "\";\"", "\";\""}, {"x", "a:b ( x", "a : b ( x"}, {"x", "\"two words\"", "\"two words\""},
      {"x", "a \"\" b", "a  b"},
      // Nested forms look up by value; a quoted inner value fails the outer lookup.
      {"ev_target", "server_var(server_var(ev_v))", "42"}, {"ev target", "server_var(server_var(ev_v))", "0"},
  };
  for (const auto& c : cases) {
    Set("ev_v", c.value);
    EXPECT_EQ(Expand(c.text), std::string(c.expanded) + "\n") << c.value << " in " << c.text;
  }
}

TEST_F(ExpansionTest, EscapeCharactersAndProtectedVariables) {
  Set("ev_secret", "hunter2");
  FindServerVar("ev_secret")->AddFlags(FCVAR_PROTECTED);
  EXPECT_EQ(Expand("server_var(ev_secret)"), "\"(protected)\"\n");
  // Without escape characters a value splits, but "//" is quoted still.
  Set("ev_words", "a b");
  Set("ev_slashes", "a//b");
  tidewright_escapechars.SetValue("");
  EXPECT_EQ(Expand("server_var(ev_words)"), "a b\n");
  EXPECT_EQ(Expand("server_var(ev_slashes)"), "\"a//b\"\n");
}

TEST_F(ExpansionTest, OnlyAMissingVariableWarns) {
  Set("ev_empty", "");
  tidewright_debug.SetValue(1);
  std::string out = Run("tw echo server_var(ev_nowhere) server_var(ev_empty)");
  EXPECT_NE(out.find("WARNING: Couldn't find server variable: ev_nowhere\n"), std::string::npos) << out;
  EXPECT_EQ(out.find("ev_empty"), std::string::npos) << out;
}

TEST_F(ExpansionTest, EventVariablesComeFromTheCurrentEvent) {
  EXPECT_EQ(Expand("event_var(userid)"), "0\n");
  EventDescriptor death;
  death.name = "player_death";
  CGameEvent event(&death);
  for (auto [key, value] : {std::pair{"userid", "12"}, {"weapon", ""}, {"name", "Big \"Bob\""}, {"attacker", "3"}})
    event.SetString(key, value);
  g_currentEvent = &event;
  Set("ev_key", "attacker");
  const char* cases[][2] = {{"event_var(userid)", "12\n"},
                            {"event_var(weapon)", "0\n"},
                            {"event_var(missing)", "0\n"},
                            {"event_var(name)", "\"Big `Bob`\"\n"},
                            {"event_var(server_var(ev_key))", "3\n"}};
  for (auto& c : cases) EXPECT_EQ(Expand(c[0]), c[1]) << c[0];
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

TEST_F(ExpansionTest, NothingThatWouldPassTheBufferRuns) {
  Set("ev_long", (std::string(2046, 'v') + " ").c_str());
  std::string out = Run("tw echo server_var(ev_long)");
  EXPECT_NE(out.find("ParseCommand: Error in string format.\n"), std::string::npos);
  EXPECT_EQ(out.find("vvvv"), std::string::npos);
  const std::string kilo(1000, 'k');
  Set("ev_kilo", kilo.c_str());
  out = Run("tw echo server_var(ev_kilo) server_var(ev_kilo) server_var(ev_kilo)");
  EXPECT_NE(out.find("Error in string format."), std::string::npos);
  EXPECT_EQ(out.find("kkkk"), std::string::npos);
  EXPECT_EQ(Expand("server_var(ev_kilo) server_var(ev_kilo)"), kilo + " " + kilo + "\n");
}

}  // namespace
