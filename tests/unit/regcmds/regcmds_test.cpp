// Registered commands: the outer-quote rule of the chat event at its edges, a proxy line past the buffer, and
// a client command that comes from no client.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "language/regcmds.h"
#include "regcmds_fixture.h"

namespace {

class RegisteredCommandsTest : public RegCmdsTest {};

TEST_F(RegisteredCommandsTest, OuterQuotesAreCutWithAtMostOneQuoteInside) {
  const std::pair<const char*, const char*> cases[] = {
      {"\"hello you\"", "hello you"},
      {"\"say \"hi\"", "say \"hi"},
      {"\"hello \"there\" you\"", "\"hello \"there\" you\""},
      {"\"\"", ""},
      {"\"", "\""},
      {"\"open", "\"open"},
      {"plain", "plain"},
  };
  for (const auto& [text, cut] : cases) {
    char buffer[64];
    snprintf(buffer, sizeof buffer, "%s", text);
    CutOuterQuotes(buffer);
    EXPECT_STREQ(buffer, cut) << text;
  }
}

TEST_F(RegisteredCommandsTest, AProxyLineTooLongForTheBufferRunsNothing) {
  Load("rc", "block args\n{\necho the block ran\n}\n");
  Run("tw_xregcmd rc_long rc/args x");
  EXPECT_EQ(Run("rc_long " + std::string(2100, 'y')), "CmdProxy: The command line of rc_long is too long.\n");
}

TEST_F(RegisteredCommandsTest, ACommandFromNoClientPasses) {
  OutputCapture out;
  EXPECT_EQ(g_TidewrightPlugin.ClientCommand(nullptr), PLUGIN_CONTINUE);
  EXPECT_EQ(out.Text(), "");
}

}  // namespace
