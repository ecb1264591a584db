// The library's commands through the Python door where the scenario python/binders_library doesn't reach:
// regex on texts only Python can pass, its limits and failures; sql's queryvalue where Python's answer
// differs from the console's; what delayed refuses. Values come back instead of being stored.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "../script/script_fixture.h"
#include "library/delayed.h"
#include "python_call.h"

namespace {

class LibraryPythonTest : public ScriptTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  void TearDown() override {
    Delayed_OnLevelInit();
    ScriptTest::TearDown();
  }
};

TEST_F(LibraryPythonTest, RegexValuesAndFailures) {
  OutputCapture capture;
  EXPECT_EQ(CallTwRepr("regex", {"match", "abc", "abcdef"}), "3");
  EXPECT_EQ(FindServerVar("abc"), nullptr);
  EXPECT_EQ(CallTwRepr("regex", {"MATCH", "bc", "abcdef"}), "-1");
  EXPECT_EQ(CallTwRepr("regex", {"search", "x", "0123456789012x"}), "-1");
  EXPECT_EQ(CallTwRepr("regex", {"search", "x", "0123456789012x", "0", "20"}), "13");
  EXPECT_EQ(CallTwRepr("regex", {"search", "a", "aaaa", "2"}), "0");  // a start alone is ignored
  EXPECT_EQ(CallTwRepr("regex", {"match"}), "0");                      // no check: "" against ""
  // Only Python can pass a line feed: the dot matches it, and ^ and $ anchor next to it.
  EXPECT_EQ(CallTwRepr("regex", {"match", "a.b", "a\nb"}), "3");
  EXPECT_EQ(CallTwRepr("regex", {"search", "^b", "a\nb"}), "2");
  EXPECT_EQ(CallTwRepr("regex", {"search", "a$", "a\nb"}), "0");
  EXPECT_EQ(CallTwRepr("regex", {"matchformat", "(a)(b)", "ab", "%2%1%%"}), "'ba%'");
  EXPECT_EQ(CallTwRepr("regex", {"matchformat", "(b)", "ab", "%1"}), "None");
  EXPECT_EQ(CallTwRepr("regex", {"replace", "a", "a"}), "None");
  EXPECT_EQ(capture.Text(), "");
  EXPECT_EQ(CallTwRepr("regex", {"match", "(a", "a"}), "None");
  EXPECT_EQ(capture.Take(), "Could not compile regular expression.\n");
}

TEST_F(LibraryPythonTest, QueryValueGivesTextOrNone) {
  OutputCapture capture;
  EXPECT_EQ(CallTwRepr("sql", {"open", "py_db", ":memory:"}), "None");
  EXPECT_EQ(CallTwRepr("sql", {"query", "py_db", "create table t(a); insert into t values('x'), (NULL)"}), "None");
  EXPECT_EQ(CallTwRepr("sql", {"queryvalue", "py_db", "select a from t"}), "''");  // the last row, NULL as ""
  EXPECT_EQ(CallTwRepr("sql", {"queryvalue", "py_db", "select 1 where 0"}), "None");  // at the console: ""
  EXPECT_EQ(CallTwRepr("sql", {"queryvalue", "py_db"}), "None");  // too few: nothing runs
  EXPECT_EQ(CallTwRepr("sql", {"close", "PY_DB"}), "None");
  EXPECT_EQ(CallTwRepr("sql", {"queryvalue", "py_db", "select 1"}), "None");
  EXPECT_NE(capture.Text().find("tw_sql close: PY_DB database closed.\n"), std::string::npos);
  EXPECT_NE(capture.Text().find("Specified database does not exist."), std::string::npos);
}

TEST_F(LibraryPythonTest, DelayedRefusesNoCommandAndOneTooLong) {
  EXPECT_EQ(CallTwRepr("delayed", {"0"}), "None");
  EXPECT_EQ(CallTwRepr("delayed", {"0", std::string(DELAYED_MAX_COMMAND + 1, 'c').c_str()}), "None");
  EXPECT_EQ(Delayed_PendingCount(), 0u);
  EXPECT_EQ(CallTwRepr("delayed", {"60", "echo later"}), "None");
  EXPECT_EQ(Delayed_PendingCount(), 1u);
}

}  // namespace
