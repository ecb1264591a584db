// The Python door: Cmd_TokenizePython, binders run from the method table, the result slot, and re-entry
// (a binder inside another keeps the outer call's record and never hands its result to the outer call).
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "language/doors.h"
#include "language_fixture.h"
#include "python/binder.h"
#include "python/methodtable.h"
#include "python/resultslot.h"

#ifdef TW_SANITIZE
// The interpreter is never finalised, as in the plugin: what it holds at exit is not ours to report.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libpython3\n";
}
#endif

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

PyObject* Call(const char* method, PyObject* tuple) {
  const PyMethodDef* def = FindTwMethod(method);
  EXPECT_NE(def, nullptr) << method;
  return def ? def->ml_meth(nullptr, tuple) : nullptr;
}

std::string Text(PyObject* object) {
  if (!object || !PyUnicode_Check(object)) return "<not text>";
  return PyUnicode_AsUTF8(object);
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
  Ref inner(Call("twtest_inner", tuple));
  EXPECT_EQ(Text(inner), "inner value");
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
  static void SetUpTestSuite() {
    if (!Py_IsInitialized()) Py_Initialize();
  }
};

TEST_F(PythonDoorTest, TokenizingKeepsItemsWholeAndJoinsThem) {
  Ref tuple(Py_BuildValue("(sis)", "a b", 5, ""));
  CommandArgs* args = Cmd_TokenizePython("tw_test", tuple);
  EXPECT_EQ(args->Argc(), 4);
  EXPECT_STREQ(args->Argv(0), "tw_test");
  EXPECT_STREQ(args->Argv(1), "a b");
  EXPECT_STREQ(args->Argv(2), "5");
  EXPECT_STREQ(args->Argv(3), "");
  EXPECT_STREQ(args->Args(), "a b 5 ");
  delete args;
}

TEST_F(PythonDoorTest, EmptyTupleGivesEmptyArgsNotNull) {
  Ref tuple(PyTuple_New(0));
  CommandArgs* args = Cmd_TokenizePython("tw_test", tuple);
  EXPECT_EQ(args->Argc(), 1);
  ASSERT_NE(args->Args(), nullptr);
  EXPECT_STREQ(args->Args(), "");
  delete args;
}

TEST_F(PythonDoorTest, ItemsBeyondTheLimitStillJoinTheText) {
  Ref tuple(PyTuple_New(85));
  for (int i = 0; i < 85; ++i) PyTuple_SET_ITEM(tuple.object, i, PyLong_FromLong(i));
  CommandArgs* args = Cmd_TokenizePython("tw_test", tuple);
  EXPECT_EQ(args->Argc(), MAX_COMMAND_TOKENS);
  EXPECT_STREQ(args->Argv(79), "78");
  EXPECT_NE(std::string(args->Args()).find(" 84"), std::string::npos);
  delete args;
}

TEST_F(PythonDoorTest, JoinedTextStopsAtItsLimit) {
  std::string big(5000, 'p');
  Ref tuple(Py_BuildValue("(ss)", big.c_str(), big.c_str()));
  CommandArgs* args = Cmd_TokenizePython("tw_test", tuple);
  EXPECT_EQ(strlen(args->Args()), size_t(MAX_PYTHON_ARGS_TEXT - 1));
  EXPECT_EQ(strlen(args->Argv(2)), big.size());
  delete args;
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
  CommandArgs* args = Cmd_TokenizePython("tw_test", tuple);
  EXPECT_EQ(args->Argc(), 2);
  EXPECT_STREQ(args->Argv(1), "kept");
  EXPECT_EQ(capture.Text(), "Cmd_TokenizePython: ERROR with parsing tw_test on arg 2");
  EXPECT_FALSE(PyErr_Occurred());
  delete args;
}

TEST_F(PythonDoorTest, MethodTableHoldsBindersWithTheXTwinsHelp) {
  const PyMethodDef* set = FindTwMethod("set");
  ASSERT_NE(set, nullptr);
  EXPECT_STREQ(set->ml_doc, "Adds/sets a new server/global variable.");
  EXPECT_EQ(set->ml_flags, METH_VARARGS);
  EXPECT_NE(FindTwMethod("_unload"), nullptr);
  EXPECT_EQ(FindTwMethod("getcmduserid"), nullptr);
  EXPECT_EQ(TwMethods()[TwMethodCount()].ml_name, nullptr);
}

TEST_F(PythonDoorTest, CommandWithoutValueReturnsNoneAndSetsNoUsage) {
  OutputCapture capture;
  Ref tuple(Py_BuildValue("(s)", "py_set_only_name"));
  Ref result(Call("set", tuple));
  EXPECT_EQ(result.object, Py_None);
  EXPECT_EQ(Var("py_set_only_name"), "");
  EXPECT_EQ(capture.Text(), "");
}

TEST_F(PythonDoorTest, ValueCommandReturnsTheValueAndLeavesVariablesAlone) {
  Ref tuple(Py_BuildValue("(iii)", 1, 2, 3));
  Ref result(Call("createvectorstring", tuple));
  EXPECT_EQ(Text(result), "1.000000,2.000000,3.000000");
  EXPECT_EQ(FindServerVar("1"), nullptr);
}

TEST_F(PythonDoorTest, SplitReturnsThreeFloats) {
  Ref tuple(Py_BuildValue("(s)", "1,2,3"));
  Ref result(Call("splitvectorstring", tuple));
  ASSERT_TRUE(result.object && PyTuple_Check(result.object));
  EXPECT_EQ(PyTuple_GET_SIZE(result.object), 3);
  EXPECT_DOUBLE_EQ(PyFloat_AsDouble(PyTuple_GET_ITEM(result.object, 2)), 3.0);
}

TEST_F(PythonDoorTest, BlockArgumentsFromPython) {
  Ref empty(PyTuple_New(0));
  {
    Ref none(Call("getargs", empty));
    EXPECT_EQ(none.object, Py_None);  // the initial record holds no tokens
    Ref count(Call("getargc", empty));
    EXPECT_EQ(PyLong_AsLong(count), 0);
  }
  g_scriptMachine.PushArgs("first \"second item\"");
  Ref index(Py_BuildValue("(i)", 1));
  Ref second(Call("getargv", index));
  EXPECT_EQ(Text(second), "second item");
  Ref count(Call("getargc", empty));
  EXPECT_EQ(PyLong_AsLong(count), 2);
  g_scriptMachine.argsPending = 0;
  g_scriptMachine.EndBlock();
}

TEST_F(PythonDoorTest, NestedBinderKeepsTheOuterRecord) {
  Ref tuple(Py_BuildValue("(s)", "outer argument"));
  Ref result(Call("twtest_outer", tuple));
  EXPECT_EQ(s_innerSawArgv1, "inner argument");
  EXPECT_EQ(s_outerSawArgv1, "outer argument");
  EXPECT_EQ(Text(result), "outer argument");
}

TEST_F(PythonDoorTest, OuterBinderNeverReturnsTheInnerResult) {
  Ref none(PyTuple_New(0));
  Ref result(Call("twtest_outer_none", none));
  EXPECT_EQ(result.object, Py_None);
  Ref first(Call("twtest_outer_first", none));
  EXPECT_EQ(Text(first), "outer first");
  EXPECT_EQ(TakeResult(), nullptr);
}

TEST_F(PythonDoorTest, OutermostRecordStaysUntilTheNextCall) {
  Ref tuple(Py_BuildValue("(ss)", "py_left", "value"));
  Ref result(Call("set", tuple));
  ASSERT_NE(g_currentArgs, nullptr);
  EXPECT_STREQ(g_currentArgs->Argv(0), "tw_set");
  EXPECT_STREQ(g_currentArgs->Argv(1), "py_left");
}

TEST_F(PythonDoorTest, BinderDoesNotExpand) {
  Set("py_source", "5");
  Ref tuple(Py_BuildValue("(ss)", "py_target", "server_var(py_source)"));
  Ref result(Call("set", tuple));
  EXPECT_EQ(Var("py_target"), "server_var(py_source)");
}

}  // namespace
