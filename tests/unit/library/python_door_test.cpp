// The library's Python doors, one per shape of value: regex gives an integer, a text, or None (no match, a
// pattern that doesn't compile, another operation); the clock binders store into the named variable and
// give None; mexec gives None and queues the file's lines. Indices behind the command name are one lower
// than at the console, and nothing is stored but what the command stores.
#include <Python.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "../script/script_fixture.h"
#include "python_call.h"

namespace {

class LibraryPythonTest : public ScriptTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
  void TearDown() override {
    tidewright_timeformat.SetValue("%Y-%m-%d %H:%M:%S (%Z)");
    ScriptTest::TearDown();
  }
  // The repr of tw_C.<method>(*tuple), with tuple built by Py_BuildValue.
  template <class... Items>
  static std::string Call(const char* method, const char* format, Items... items) {
    PyObject* tuple = Py_BuildValue(format, items...);
    std::string repr = CallTwRepr(method, tuple);
    Py_XDECREF(tuple);
    return repr;
  }
};

TEST_F(LibraryPythonTest, RegexReturnsIntegers) {
  OutputCapture capture;
  EXPECT_EQ(Call("regex", "(sss)", "match", "abc", "abcdef"), "3");
  EXPECT_EQ(Call("regex", "(sss)", "MATCH", "bc", "abcdef"), "-1");
  EXPECT_EQ(Call("regex", "(sss)", "search", "x", "0123456789012x"), "-1");
  EXPECT_EQ(Call("regex", "(sssii)", "search", "x", "0123456789012x", 0, 20), "13");
  EXPECT_EQ(Call("regex", "(sssi)", "search", "a", "aaaa", 2), "0");  // a start alone is ignored
  EXPECT_EQ(Call("regex", "(s)", "match"), "0");                      // no check: "" against ""
  // Only Python can pass a line feed: the dot matches it, and ^ and $ anchor next to it.
  EXPECT_EQ(Call("regex", "(sss)", "match", "a.b", "a\nb"), "3");
  EXPECT_EQ(Call("regex", "(sss)", "search", "^b", "a\nb"), "2");
  EXPECT_EQ(Call("regex", "(sss)", "search", "a$", "a\nb"), "0");
  EXPECT_EQ(capture.Text(), "");
  EXPECT_EQ(FindServerVar("abc"), nullptr);
}

TEST_F(LibraryPythonTest, RegexReturnsTextOrNone) {
  OutputCapture capture;
  EXPECT_EQ(Call("regex", "(ssss)", "matchformat", "(a)(b)", "ab", "%2%1%%"), "'ba%'");
  EXPECT_EQ(Call("regex", "(ssss)", "matchformat", "(b)", "ab", "%1"), "None");
  EXPECT_EQ(Call("regex", "(sss)", "replace", "a", "a"), "None");
  EXPECT_EQ(capture.Text(), "");
  EXPECT_EQ(Call("regex", "(sss)", "match", "(a", "a"), "None");
  EXPECT_EQ(capture.Take(), "Could not compile regular expression.\n");
  EXPECT_EQ(FindServerVar("(a)(b)"), nullptr);
}

TEST_F(LibraryPythonTest, ClockBindersStoreIntoTheNamedVariableAndReturnNone) {
  const long before = long(time(nullptr));
  EXPECT_EQ(Call("gettime", "(s)", "py_time"), "None");
  EXPECT_EQ(Call("gettimestamp", "(s)", "py_stamp"), "None");
  const long after = long(time(nullptr));
  const long stored = atol(Var("py_time").c_str()), stamp = atol(Var("py_stamp").c_str());
  EXPECT_GE(stored, before);
  EXPECT_LE(stored, after);
  EXPECT_GE(stamp, before - 1136049334);
  EXPECT_LE(stamp, after - 1136049334);

  MakeVars({"py_text"});
  tidewright_timeformat.SetValue("at %%H");
  EXPECT_EQ(Call("gettimestring", "(s)", "py_text"), "None");
  EXPECT_EQ(Var("py_text"), "at %H");

  OutputCapture capture;
  EXPECT_EQ(Call("gettime", "()"), "None");
  EXPECT_EQ(capture.Take(), "Specify a variable!\n");
}

TEST_F(LibraryPythonTest, MexecReturnsNoneAndQueuesTheFile) {
  WriteGameFile("cfg/py_mexec.cfg", "echo from python\n");
  EXPECT_EQ(Call("mexec", "(s)", "py_mexec.cfg"), "None");
  EXPECT_EQ(Settle(), "from python\n");
  EXPECT_EQ(Call("mexec", "()"), "None");
  EXPECT_EQ(Settle(), "");
}

}  // namespace
