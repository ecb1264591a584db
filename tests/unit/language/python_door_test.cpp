// The Python door: Cmd_TokenizePython, a binder's value and record, and re-entry
// (a binder inside another keeps the outer call's record and never hands its result to the outer call).
#include <Python.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "language/doors.h"
#include "language/results.h"
#include "language_fixture.h"
#include "python/binder.h"
#include "python_call.h"

namespace {

// Owns one new reference for the length of a test.
struct Ref {
  PyObject* object;
  explicit Ref(PyObject* o) : object(o) {}
  ~Ref() { Py_XDECREF(object); }
  Ref(const Ref&) = delete;
  Ref& operator=(const Ref&) = delete;
  operator PyObject*() const { return object; }
};

std::unique_ptr<CommandArgs> Tokenize(PyObject* tuple) {
  return std::unique_ptr<CommandArgs>(Cmd_TokenizePython("tw_test", tuple));
}

// ---- rows whose handlers call another binder from inside ----

std::string s_innerSawArgv1;
std::string s_outerSawArgv1;

void Inner_h(bool expand, bool fromConsole) {
  s_innerSawArgv1 = ArgView(expand).Argv(1);
  SetResultText("inner value");
}

void CallInner() { EXPECT_EQ(CallTwRepr("twtest_inner", {"inner argument"}), "'inner value'"); }

void OuterReturnsOwnArgument_h(bool expand, bool fromConsole) {
  CallInner();
  s_outerSawArgv1 = ArgView(expand).Argv(1);
  SetResultText(ArgView(expand).Argv(1));
}

void OuterWithoutValue_h(bool, bool) { CallInner(); }

void OuterFillsFirst_h(bool, bool) {
  SetResultText("outer first");
  CallInner();
}

const CommandRow kTestRows[] = {
    {"twtest_inner", Inner_h, 0, "", "Test: gives a value.", DOOR_PYTHON},
    {"twtest_outer", OuterReturnsOwnArgument_h, 0, "", "Test: calls the inner binder.", DOOR_PYTHON},
    {"twtest_outer_none", OuterWithoutValue_h, 0, "", "Test: calls the inner binder.", DOOR_PYTHON},
    {"twtest_outer_first", OuterFillsFirst_h, 0, "", "Test: calls the inner binder.", DOOR_PYTHON},
};
const CommandTable s_testRows(kTestRows);

class PythonDoorTest : public LanguageTest {
protected:
  static void SetUpTestSuite() { StartTestPython(); }
};

TEST_F(PythonDoorTest, TokenizingKeepsItemsWholeAndJoinsThem) {
  Ref items(Py_BuildValue("(sis)", "a b", 5, ""));
  auto args = Tokenize(items);
  ASSERT_EQ(args->Argc(), 4);
  EXPECT_EQ(std::string(args->Argv(0)) + "|" + args->Argv(1) + "|" + args->Argv(2) + "|" + args->Argv(3),
            "tw_test|a b|5|");
  EXPECT_STREQ(args->Args(), "a b 5 ");

  Ref none(PyTuple_New(0));
  auto empty = Tokenize(none);
  EXPECT_EQ(empty->Argc(), 1);
  ASSERT_NE(empty->Args(), nullptr);  // empty text, not null
  EXPECT_STREQ(empty->Args(), "");

  // Items beyond the token limit still join the text; the text stops at its own limit.
  Ref many(PyTuple_New(85));
  for (int i = 0; i < 85; ++i) PyTuple_SET_ITEM(many.object, i, PyLong_FromLong(i));
  auto limited = Tokenize(many);
  EXPECT_EQ(limited->Argc(), MAX_COMMAND_TOKENS);
  EXPECT_STREQ(limited->Argv(79), "78");
  EXPECT_NE(std::string(limited->Args()).find(" 84"), std::string::npos);
  std::string big(5000, 'p');
  Ref large(Py_BuildValue("(ss)", big.c_str(), big.c_str()));
  auto cut = Tokenize(large);
  EXPECT_EQ(strlen(cut->Args()), size_t(MAX_PYTHON_ARGS_TEXT - 1));
  EXPECT_EQ(strlen(cut->Argv(2)), big.size());
}

TEST_F(PythonDoorTest, ItemsWithoutTextAreSkipped) {
  PyObject* main = PyModule_GetDict(PyImport_AddModule("__main__"));
  Ref tuple(PyRun_String("(type('Bad', (), {'__str__': lambda self: 1 / 0})(), 'kept', '\\udc80')", Py_eval_input,
                         main, main));
  ASSERT_NE(tuple.object, nullptr);
  OutputCapture capture;
  auto args = Tokenize(tuple);
  EXPECT_EQ(args->Argc(), 2);
  EXPECT_STREQ(args->Argv(1), "kept");
  EXPECT_EQ(capture.Text(), "Cmd_TokenizePython: ERROR with parsing tw_test on arg 2");
  EXPECT_FALSE(PyErr_Occurred());
}

// A value comes back instead of being stored under the first argument; the outermost call's record stays
// until the next call.
TEST_F(PythonDoorTest, BindersReturnValuesInsteadOfStoringThem) {
  EXPECT_EQ(CallTwRepr("createvectorstring", {"1", "2", "3"}), "'1.000000,2.000000,3.000000'");
  EXPECT_EQ(FindServerVar("1"), nullptr);
  EXPECT_EQ(CallTwRepr("set", {"py_target", "server_var(py_source)"}), "None");
  ASSERT_NE(g_currentArgs, nullptr);
  EXPECT_STREQ(g_currentArgs->Argv(0), "tw_set");
  EXPECT_STREQ(g_currentArgs->Argv(1), "py_target");
}

TEST_F(PythonDoorTest, NestedBinderKeepsTheOuterRecordAndResult) {
  EXPECT_EQ(CallTwRepr("twtest_outer", {"outer argument"}), "'outer argument'");
  EXPECT_EQ(s_innerSawArgv1, "inner argument");
  EXPECT_EQ(s_outerSawArgv1, "outer argument");
  EXPECT_EQ(CallTwRepr("twtest_outer_none", {}), "None");
  EXPECT_EQ(CallTwRepr("twtest_outer_first", {}), "'outer first'");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(TakeResult()));
}

}  // namespace
