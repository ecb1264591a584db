// The Python door: Cmd_TokenizePython, binders run from the method table, the result slot, and re-entry
// (a binder inside another keeps the outer call's record and never hands its result to the outer call).
#include <Python.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "language/doors.h"
#include "language/results.h"
#include "language_fixture.h"
#include "python/binder.h"
#include "python/methodtable.h"
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

void CallInner() {
  Ref tuple(Py_BuildValue("(s)", "inner argument"));
  EXPECT_EQ(CallTwRepr("twtest_inner", tuple), "'inner value'");
}

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
  EXPECT_EQ(args->Argc(), 4);
  EXPECT_STREQ(args->Argv(0), "tw_test");
  EXPECT_STREQ(args->Argv(1), "a b");
  EXPECT_STREQ(args->Argv(2), "5");
  EXPECT_STREQ(args->Argv(3), "");
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
  Ref code(Py_CompileString("class Bad:\n  def __str__(self): raise ValueError()\nbad = Bad()\nsurrogate = '\\udc80'\n",
                            "<test>", Py_file_input));
  Ref module(PyImport_ExecCodeModule("twtest_items", code));
  ASSERT_NE(module.object, nullptr);
  PyObject* bad = PyObject_GetAttrString(module, "bad");
  PyObject* surrogate = PyObject_GetAttrString(module, "surrogate");
  Ref tuple(Py_BuildValue("(NsN)", bad, "kept", surrogate));
  OutputCapture capture;
  auto args = Tokenize(tuple);
  EXPECT_EQ(args->Argc(), 2);
  EXPECT_STREQ(args->Argv(1), "kept");
  EXPECT_EQ(capture.Text(), "Cmd_TokenizePython: ERROR with parsing tw_test on arg 2");
  EXPECT_FALSE(PyErr_Occurred());
}

TEST_F(PythonDoorTest, MethodTableHoldsBindersWithTheXTwinsHelp) {
  const PyMethodDef* set = FindTwMethod("set");
  ASSERT_NE(set, nullptr);
  EXPECT_STREQ(set->ml_doc, "Adds/sets a new server/global variable.");
  EXPECT_EQ(set->ml_flags, METH_VARARGS);
  EXPECT_NE(FindTwMethod("_unload"), nullptr);
  // getcmduserid has no binder: the name is the direct method's.
  const PyMethodDef* cmdUserid = FindTwMethod("getcmduserid");
  ASSERT_NE(cmdUserid, nullptr);
  EXPECT_STREQ(cmdUserid->ml_doc, "Gets the commandstring passed to the current Valve console command.");
  EXPECT_EQ(TwMethods()[TwMethodCount()].ml_name, nullptr);
}

TEST_F(PythonDoorTest, BindersReturnValuesInsteadOfStoringThem) {
  Set("py_source", "5");
  OutputCapture capture;
  Ref nameOnly(Py_BuildValue("(s)", "py_set_only_name"));
  EXPECT_EQ(CallTwRepr("set", nameOnly), "None");  // no usage line either
  EXPECT_EQ(Var("py_set_only_name"), "");
  Ref unexpanded(Py_BuildValue("(ss)", "py_target", "server_var(py_source)"));
  EXPECT_EQ(CallTwRepr("set", unexpanded), "None");
  EXPECT_EQ(Var("py_target"), "server_var(py_source)");
  // The outermost record stays until the next call.
  ASSERT_NE(g_currentArgs, nullptr);
  EXPECT_STREQ(g_currentArgs->Argv(0), "tw_set");
  EXPECT_STREQ(g_currentArgs->Argv(1), "py_target");
  Ref numbers(Py_BuildValue("(iii)", 1, 2, 3));
  EXPECT_EQ(CallTwRepr("createvectorstring", numbers), "'1.000000,2.000000,3.000000'");
  EXPECT_EQ(FindServerVar("1"), nullptr);
  Ref vector(Py_BuildValue("(s)", "1,2,3"));
  EXPECT_EQ(CallTwRepr("splitvectorstring", vector), "(1.0, 2.0, 3.0)");
  EXPECT_EQ(capture.Text(), "");
}

TEST_F(PythonDoorTest, BlockArgumentsFromPython) {
  Ref empty(PyTuple_New(0));
  EXPECT_EQ(CallTwRepr("getargs", empty), "None");  // the initial record holds no tokens
  EXPECT_EQ(CallTwRepr("getargc", empty), "0");
  g_scriptMachine.PushArgs("first \"second item\"");
  Ref index(Py_BuildValue("(i)", 1));
  EXPECT_EQ(CallTwRepr("getargv", index), "'second item'");
  EXPECT_EQ(CallTwRepr("getargc", empty), "2");
  g_scriptMachine.argsPending = 0;
  g_scriptMachine.EndBlock();
}

TEST_F(PythonDoorTest, NestedBinderKeepsTheOuterRecordAndResult) {
  Ref tuple(Py_BuildValue("(s)", "outer argument"));
  EXPECT_EQ(CallTwRepr("twtest_outer", tuple), "'outer argument'");
  EXPECT_EQ(s_innerSawArgv1, "inner argument");
  EXPECT_EQ(s_outerSawArgv1, "outer argument");
  Ref none(PyTuple_New(0));
  EXPECT_EQ(CallTwRepr("twtest_outer_none", none), "None");
  EXPECT_EQ(CallTwRepr("twtest_outer_first", none), "'outer first'");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(TakeResult()));
}

}  // namespace
