// Module tw_C as Python code meets it in a running server (the real plugin, started with Python on and the
// real package): what the scenarios can't show of its direct methods. Key handles that name no live key or
// a key Python mustn't change, server variables missing or not made, the console line's limit, and addons
// loaded and unloaded many times. Its names and doc texts are the scenario python/tw_c_names.
#include <Python.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "convar.h"
#include "host/engine_surface.h"
#include "icvar.h"
#include "keygroups/KeyValues.h"
#include "keygroups/keygroups.h"
#include "output_capture.h"
#include "test_server.h"

namespace {

class TwCTest : public ::testing::Test {
protected:
  // One namespace for the binary's Python code, with tw_C and a runner that turns an exception into text.
  static void SetUpTestSuite() {
    TestServer::Shared();
    ASSERT_TRUE(Py_IsInitialized());
    s_globals = PyDict_New();
    PyDict_SetItemString(s_globals, "__builtins__", PyEval_GetBuiltins());
    PyObject* done = PyRun_String("import tw_C\n"
                                  "def _run(source, mode):\n"
                                  "    try:\n"
                                  "        value = (eval if mode == 'eval' else exec)(source, globals())\n"
                                  "        return repr(value) if mode == 'eval' else ''\n"
                                  "    except Exception as error:\n"
                                  "        return type(error).__name__ + ': ' + str(error)\n",
                                  Py_file_input, s_globals, s_globals);
    ASSERT_NE(done, nullptr);
    Py_DECREF(done);
  }

  static std::string Run(const std::string& lines) { return TestServer::Shared().Run(lines); }

  // The repr of a Python expression's value, or "ExceptionName: message" when it raises.
  static std::string Eval(const std::string& expression) { return Python(expression, "eval"); }
  // Runs statements in the same namespace: "" or "ExceptionName: message".
  static std::string Exec(const std::string& statements) { return Python(statements, "exec"); }

  static std::string Var(const char* name) {
    ConVar* var = cvar->FindVar(name);
    return var ? var->GetString() : "<none>";
  }

private:
  static std::string Python(const std::string& source, const char* mode) {
    PyObject* result = PyObject_CallFunction(PyDict_GetItemString(s_globals, "_run"), "ss", source.c_str(), mode);
    std::string text = result ? PyUnicode_AsUTF8(result) : "<null>";
    Py_XDECREF(result);
    return text;
  }

  static inline PyObject* s_globals = nullptr;
};

// ---- key pointers ----

TEST_F(TwCTest, AKeyIsBuiltReadAndWalked) {
  ASSERT_EQ(Exec("k = tw_C.keypcreate()\ntw_C.keypsetname(k, 'root')\ntw_C.keypsetint(k, 'count', 7)\n"
                 "tw_C.keypsetfloat(k, 'ratio', 0.5)\ntw_C.keypsetstring(k, 'label', 'seven')\n"
                 "sub = tw_C.keypcreatesubkey(k)\nsub2 = tw_C.keypcreatesubkey(k)\n"
                 "named = tw_C.keypfindsubkey(k, 'named', 1)\nfirst = tw_C.keypgetfirstvaluekey(k)\n"),
            "");
  EXPECT_EQ(Eval("tw_C.keypgetint(k, 'count'), tw_C.keypgetfloat(k, 'ratio'), tw_C.keypgetstring(k, 'missing')"),
            "(7, 0.5, '')");
  EXPECT_EQ(Eval("[tw_C.keypgetdatatype(tw_C.keypfindsubkey(k, n, 0)) for n in ('label', 'count', 'ratio', '1')]"),
            "[1, 2, 3, 0]");
  EXPECT_EQ(Eval("tw_C.keypgetname(sub), tw_C.keypgetname(sub2), tw_C.keypfindsubkey(k, 'absent', 0)"),
            "('1', '2', None)");
  EXPECT_EQ(Eval("tw_C.keypgetfirstsubkey(sub), tw_C.keypisempty(sub), tw_C.keypisempty(k)"), "(0, 1, 0)");
  EXPECT_EQ(Eval("tw_C.keypgetname(first), tw_C.keypgetname(tw_C.keypgetnextvaluekey(first))"), "('count', 'ratio')");
  EXPECT_EQ(Eval("tw_C.keypgetfirsttruesubkey(k) == sub, tw_C.keypgetnexttruesubkey(sub) == sub2, "
                 "tw_C.keypgetnexttruesubkey(named)"),
            "(True, True, 0)");
  EXPECT_EQ(Eval("tw_C.keypfindsubkey(k, '', 1)"), "None");  // an empty name names no subkey
}

// Key 0, a deleted key, its child, and numbers no key ever had: every method acts as on no key.
TEST_F(TwCTest, KeyHandlesOfNoLiveKeyAreRefused) {
  ASSERT_EQ(Exec("k = tw_C.keypcreate()\nsub = tw_C.keypcreatesubkey(k)\ntw_C.keypdelete(k)\n"), "");
  for (const char* handle : {"0", "k", "sub", "12345678901", "-1", "2**64 - 1", "2**70"}) {
    SCOPED_TRACE(handle);
    EXPECT_EQ(Eval("tw_C.keypgetname(" + std::string(handle) + ")"), "''");
    for (std::string call : {"keypgetfirstsubkey(H)", "keypgetnextkey(H)", "keypcreatesubkey(H)",
                             "keypfindsubkey(H, 'a', 1)", "keypgetint(H, 'a')", "keypgetstring(H, '')",
                             "keypgetdatatype(H)", "keypisempty(H)", "keypsetint(H, 'a', 1)",
                             "keypsetstring(H, 'a', 'b')", "keypdelete(H)"}) {
      call.replace(call.find('H'), 1, handle);
      EXPECT_EQ(Eval("tw_C." + call), "None") << call;
    }
  }
}

TEST_F(TwCTest, WrongArgumentTuplesRaiseTypeError) {
  for (const char* call : {"keypgetname('1')", "keypgetname()", "keypsetname(1)", "keypfindsubkey(1, 'a')",
                           "keypsetfloat(1, 'a', 'b')", "getInt(5)", "setInt('a', 'b')", "printmsg()",
                           "ServerCommand(None)", "cmdargv('x')", "getUseridList(1)", "sendkeypmsg(1, 2)"})
    EXPECT_EQ(Eval(std::string("tw_C.") + call).rfind("TypeError: ", 0), 0u) << call;
}

TEST_F(TwCTest, DeleteAndDetachKeepTheRestOfTheList) {
  Run("tw_keygroupcreate pykeys\ntw_keycreate pykeys a\ntw_keycreate pykeys b\ntw_keycreate pykeys c");
  ASSERT_EQ(Exec("g = tw_C.keygroupgetpointer('pykeys')\n"
                 "b = tw_C.keypfindsubkey(g, 'b', 0)\n"
                 "c = tw_C.keypfindsubkey(g, 'c', 0)\n"
                 "tw_C.keypdelete(b)\n"
                 "tw_C.keypdetachsubkey(g, c)\n"),
            "");
  EXPECT_EQ(Eval("tw_C.keypgetname(b), tw_C.keypgetname(c)"), "('', 'c')");  // c lives on, Python's own now
  EXPECT_EQ(Eval("[tw_C.keypgetname(tw_C.keypgetfirstsubkey(g)), tw_C.keypgetnextkey(tw_C.keypgetfirstsubkey(g))]"),
            "['a', 0]");
  EXPECT_EQ(Exec("tw_C.keypdelete(c)"), "");
  EXPECT_EQ(Eval("tw_C.keypgetname(c)"), "''");
}

TEST_F(TwCTest, DetachingAKeyOfAnotherParentChangesNothing) {
  Run("tw_keygroupcreate pyother\ntw_keycreate pyother x\ntw_keycreate pyother y");
  ASSERT_EQ(Exec("o = tw_C.keygroupgetpointer('pyother')\nx = tw_C.keypfindsubkey(o, 'x', 0)\n"
                 "y = tw_C.keypfindsubkey(o, 'y', 0)\n"),
            "");
  OutputCapture capture;
  EXPECT_EQ(Exec("tw_C.keypdetachsubkey(x, y)"), "");
  EXPECT_TRUE(capture.Contains("keypdetachsubkey: key ")) << capture.Text();
  EXPECT_EQ(Eval("tw_C.keypgetnextkey(x) == y"), "True");
}

// Handles of the tree's own keys, and of a key in no tree Python reaches, as a forger would type them.
TEST_F(TwCTest, TheTreesOwnKeysAndKeysBeyondPythonStay) {
  KeyValues* stray = new KeyValues("stray");
  ASSERT_EQ(Exec("root = " + std::to_string(g_userTree->GetHandle()) + "\n" +
                 "groups = " + std::to_string(g_userTree->FindKey("UserGroups")->GetHandle()) + "\n" +
                 "stray = " + std::to_string(stray->GetHandle()) + "\n" + "other = tw_C.keypcreate()\n"),
            "");
  OutputCapture capture;
  for (const char* call : {"keypsetname(groups, 'x')", "keypdelete(groups)", "keypdelete(root)",
                           "keypdetachsubkey(root, groups)", "keyprecursivekeycopy(groups, other)",
                           "keyploadfromfile(root, 'cfg/server.cfg')"}) {
    EXPECT_EQ(Eval(std::string("tw_C.") + call), "None") << call;
    EXPECT_TRUE(capture.Contains("the key tree's own keys (UserKeys, UserGroups, Ungrouped) can't be changed"))
        << call;
    capture.Take();
  }
  EXPECT_EQ(Eval("tw_C.keypgetname(root), tw_C.keypgetname(groups)"), "('UserKeys', 'UserGroups')");
  EXPECT_EQ(Eval("tw_C.keypdelete(stray)"), "None");
  EXPECT_TRUE(capture.Contains("is in no tree that Python reaches; nothing deleted.")) << capture.Text();
  EXPECT_EQ(Eval("tw_C.keypgetname(stray)"), "'stray'");
  stray->deleteThis();
}

TEST_F(TwCTest, CopyingAKeyIntoItsOwnChildCopiesWhatItWas) {
  ASSERT_EQ(Exec("top = tw_C.keypcreate()\ntw_C.keypsetname(top, 'top')\n"
                 "child = tw_C.keypfindsubkey(top, 'child', 1)\ntw_C.keypsetint(child, 'v', 3)\n"
                 "tw_C.keyprecursivekeycopy(child, top)\n"),
            "");
  EXPECT_EQ(Eval("tw_C.keypgetname(child), tw_C.keypgetint(tw_C.keypfindsubkey(child, 'child', 0), 'v')"),
            "('top', 3)");
  // A key copied onto itself keeps what it had; its old children give way to copies.
  ASSERT_EQ(Exec("tw_C.keyprecursivekeycopy(top, top)"), "");
  EXPECT_EQ(Eval("tw_C.keypgetname(child)"), "''");
  EXPECT_EQ(Eval("tw_C.keypgetname(top), tw_C.keypgetname(tw_C.keypgetfirstsubkey(top))"), "('top', 'top')");
}

TEST_F(TwCTest, KeysGoToFilesAndBack) {
  ASSERT_EQ(Exec("s = tw_C.keypcreate()\ntw_C.keypsetname(s, 'saved')\ntw_C.keypsetstring(s, 'word', 'hello')\n"
                 "tw_C.keypsavetofile(s, 'cfg/py_keys.txt')\n"
                 "l = tw_C.keypcreate()\ntw_C.keyploadfromfile(l, 'cfg/py_keys.txt')\n"),
            "");
  EXPECT_EQ(Eval("tw_C.keypgetname(l), tw_C.keypgetstring(l, 'word')"), "('saved', 'hello')");
}

TEST_F(TwCTest, SendKeypMsgReportsAUseridWithoutPlayer) {
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.sendkeypmsg(999, 0, tw_C.keypcreate())"), "None");
  EXPECT_TRUE(capture.Contains("Error: \"999\" is an invalid userid.")) << capture.Text();
}

// ---- variables ----

TEST_F(TwCTest, GettersReadAndRaiseSystemErrorForAMissingVariable) {
  Run("tw_xset pyvar 12.5\ntw_xset pyhidden secret\ntw_xflags add neverstring pyhidden");
  EXPECT_EQ(Eval("tw_C.getInt('pyvar'), tw_C.getFloat('pyvar'), tw_C.getString('pyhidden')"),
            "(12, 12.5, 'FCVAR_NEVER_AS_STRING')");
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.getInt('py_no_such_var')"), "SystemError: The var \"py_no_such_var\" could not be found");
  EXPECT_EQ(capture.Text(), "The var \"py_no_such_var\" could not be found\n");
}

TEST_F(TwCTest, SettersMakeTheVariableAndReturnTheValue) {
  EXPECT_EQ(Eval("tw_C.setFloat('py_float', 0.25)"), "0.25");
  EXPECT_EQ(Var("py_float"), "0.250000");
  // 0 is stored as text without force: a missing variable isn't made while autocreate is off.
  Run("tidewright_autocreate 0");
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.setInt('py_zero', 0)"), "SystemError: Couldn't create \"py_zero\" and could not be found");
  EXPECT_TRUE(capture.Contains("Couldn't create \"py_zero\" and could not be found\n"));
  EXPECT_EQ(Var("py_zero"), "<none>");
  Run("tidewright_autocreate 1");
}

// ---- the console ----

TEST_F(TwCTest, PrintmsgPrintsTheTextAsItStands) {
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.printmsg('100% %s %d')"), "1");
  EXPECT_EQ(capture.Take(), "100% %s %d\n");
  EXPECT_EQ(Eval("tw_C.printmsg('x' * 2046)"), "1");
  EXPECT_EQ(capture.Take().size(), 2047u);
  for (const char* method : {"printmsg", "ServerCommand", "InsertServerCommand", "ForceServerCommand"})
    EXPECT_EQ(Eval(std::string("tw_C.") + method + "('x' * 2100)").rfind("ValueError: ", 0), 0u) << method;
  EXPECT_EQ(capture.Text(), "");
}

// ---- players and the engine's command ----

TEST_F(TwCTest, TheUseridListFollowsTheSlots) {
  int first = 0, second = 0;
  ASSERT_EQ(sscanf(Run("sim_connect PyAlice").c_str(), "Client \"PyAlice\" connected as userid %d", &first), 1);
  ASSERT_EQ(sscanf(Run("sim_addbot PyBob").c_str(), "Bot \"PyBob\" connected as userid %d", &second), 1);
  std::string both = "{" + std::to_string(first) + ", " + std::to_string(second) + "}";
  EXPECT_EQ(Eval("set(tw_C.getUseridList()) & " + both), both);
  Run("sim_disconnect " + std::to_string(first));
  EXPECT_EQ(Eval("set(tw_C.getUseridList()) & " + both), "{" + std::to_string(second) + "}");
}

// No current event, and an index outside the engine's command.
TEST_F(TwCTest, NoCurrentEventAndNoSuchArgument) {
  Run("tw__ep 1");  // no queued event of that handle: no current event
  EXPECT_EQ(Eval("tw_C.getEventInfo('userid')"), "SystemError: getEventInfo: no game event is current");
  EXPECT_EQ(Eval("tw_C.cmdargv(-5), tw_C.cmdargv(500)"), "('', '')");
}

// ---- addons coming and going ----

// Load, use and unload an addon many times, its handlers raising: nothing of it stays, and the interpreter's
// memory doesn't grow with the cycles (under the sanitizers, nothing leaks or is used after its release).
TEST_F(TwCTest, LoadUnloadCyclesLeaveNothing) {
  std::filesystem::create_directories(TestServer::Shared().GameDir() + "/addons/tidewright/cycle");
  std::ofstream(TestServer::Shared().GameDir() + "/addons/tidewright/cycle/cycle.py") << R"(import tw
import tw_C

@tw.event("round_start")
def started(event):
    raise RuntimeError("raised by " + event["tw_event"])

@tw.block("work")
def work():
    tw_C.set("py_cycle", tw_C.getInt("py_cycle") + 1)
    raise KeyError(tw.block_args())

@tw.tick
def tick():
    pass
)";
  Run("tw_xset py_cycle 0\ntw_regcmd py_cycle_word cycle/work \"\"");
  auto cycles = [](int n) {
    for (int i = 0; i < n; ++i) {
      std::string out = Run("tw_load cycle\nsim_event round_start\npy_cycle_word a b\nsim_frames 1\ntw_unload cycle");
      ASSERT_NE(out.find("RuntimeError: raised by round_start"), std::string::npos) << out;
      ASSERT_NE(out.find("KeyError: ['py_cycle_word', 'a', 'b']"), std::string::npos) << out;
    }
  };
  cycles(10);
  ASSERT_EQ(Exec("import gc, sys\ngc.collect()\nbefore = (len(gc.get_objects()), sys.getallocatedblocks())"), "");
  cycles(50);
  EXPECT_EQ(Eval("[m for m in sys.modules if m.startswith('twaddon.cycle')]"), "[]");
  EXPECT_EQ(Var("py_cycle"), "60");
  ASSERT_EQ(Exec("gc.collect()\nafter = (len(gc.get_objects()), sys.getallocatedblocks())"), "");
  // A reference lost per call would leave hundreds behind; a few come and go with caches.
  EXPECT_EQ(Eval("after[0] - before[0] < 50 and after[1] - before[1] < 500"), "True") << Eval("before, after");
}

}  // namespace
