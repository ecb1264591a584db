// The clock commands at the console: values from the system's clock, and the default format; cbench prints
// one line per loop and changes nothing. The variable rules and messages run in the library/time and
// library/profile scenarios.
#include <ctime>
#include <regex>
#include <sstream>
#include <string>

#include "../script/script_fixture.h"

namespace {

class TimingTest : public ScriptTest {};

TEST_F(TimingTest, ClockValuesComeFromTheSystemsClock) {
  const long before = long(time(nullptr));
  Run("tw_xgettime unit_now\ntw_gettimestamp unit_stamp");
  const long after = long(time(nullptr));
  const long now = atol(Var("unit_now").c_str()), stamp = atol(Var("unit_stamp").c_str());
  EXPECT_GE(now, before);
  EXPECT_LE(now, after);
  EXPECT_GE(stamp, before - 1136049334);
  EXPECT_LE(stamp, after - 1136049334);
  MakeVars({"unit_text"});
  Run("tw_xgettimestring unit_text");
  EXPECT_TRUE(std::regex_match(Var("unit_text"), std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \(.+\))")))
      << Var("unit_text");
}

TEST_F(TimingTest, CBenchPrintsALinePerLoopAndChangesNothing) {
  Set("tidewright_lasterror", "before");
  const std::string output = Run("cbench server_var(tidewright_debug) word");
  std::istringstream lines(output);
  std::string line;
  int count = 0;
  const std::regex shape(R"(cbench: [a-z ]+ 100000 runs in \d+\.\d{3} ms, \d+ per second)");
  while (std::getline(lines, line)) {
    EXPECT_TRUE(std::regex_match(line, shape)) << line;
    ++count;
  }
  EXPECT_EQ(count, 3);
  EXPECT_EQ(Var("tidewright_lasterror"), "before");
  EXPECT_EQ(FindServerVar("bench_value"), nullptr);
}

}  // namespace
