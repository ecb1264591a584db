// Module tw_C as Python code meets it in a running server (the real plugin, started with Python on and the
// real package): its 176 names and doc texts, the direct methods on key pointers, server variables, the
// command buffer, players and the engine's command, with their null cases and bad arguments.
#include <Python.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "convar.h"
#include "host/engine_surface.h"
#include "icvar.h"
#include "keygroups/KeyValues.h"
#include "keygroups/keygroups.h"
#include "output_capture.h"
#include "python/methodtable.h"
#include "test_server.h"

namespace {

const char* const kBinders[] = {
    "doblock", "set", "setinfo", "_foreachval", "_foreachkey", "getargv", "getargc", "getargs", "fire", "trick",
    "give", "entcreate", "prop_dynamic_create", "prop_physics_create", "keygetvalue", "delayed", "keysetvalue",
    "exists", "dbgmsg", "dbgmsgv", "log", "msg", "tell", "logv", "commandv", "formatv", "format", "gettime",
    "gettimestamp", "getmoney", "copy", "scriptpacklist", "getuserid", "keygroupcreate", "keygroupdelete",
    "keygrouprename", "keylist", "keygroupcopy", "keygroupload", "keygroupsave", "keycreate", "keydelete",
    "keygroupfilter", "keyrename", "getclientvar", "foreachval", "foreachkey", "getplayercount",
    "getlivingplayercount", "getmaxplayercount", "gettimestring", "toptext", "getplayermovement",
    "createvectorfrompoints", "createvectorstring", "splitvectorstring", "getgravityvector", "voicechat", "physics",
    "getplayerlocation", "isbot", "cexec_all", "cexec", "forcevalue", "flags", "sexec", "sexec_all", "loadevents",
    "getplayername", "getplayersteamid", "getplayerteam", "createplayerlist", "getentityindex", "mexec",
    "createscriptlist", "load", "_unload", "reload", "unload", "_disable", "disable", "enable", "_findoffset",
    "getplayerprop", "getindexprop", "emitsound", "playsound", "precachedecal", "precachemodel", "precachesound",
    "getplayerhandle", "setplayerprop", "entsetname", "remove", "setpos", "setang", "setindexprop", "strcmp",
    "strlen", "makepublic", "menu", "createentitylist", "soon", "createbot", "fadevolume", "lightstyle",
    "botsetvalue", "stringtable", "dumpstringtable", "usermsg", "stopsound", "getgame", "changeteam", "setview",
    "regcmd", "regex", "mathparse", "unregsaycmd", "unregclientcmd", "regsaycmd", "regclientcmd", "effect",
    "queryclientvar", "event", "centermsg", "centertell", "sql", "dosql", "formatqv", "escmenu", "keygroupmsg",
    "esctextbox", "escinputbox",
};

struct DirectMethod {
  const char* name;
  const char* doc;
};

const DirectMethod kDirectMethods[] = {
    {"keygroupgetpointer", "Returns the native pointer to a keygroup."},
    {"keypcreate", "Returns the native pointer to a new keyvalues object."},
    {"keypdelete", "Deletes a key by pointer (not recommended)"},
    {"keypgetname", "Gets a key name by pointer"},
    {"keypsetname", "Sets a key name by pointer"},
    {"keypcreatesubkey", "Creates a subkey as an integer."},
    {"keypfindsubkey", "Finds or creates a subkey by a particular name."},
    {"keypdetachsubkey", "Detaches a subkey by pointer."},
    {"keypgetfirstsubkey", "Retrieves the first subkey underneath this pointer"},
    {"keypgetnextkey", "Retrieves the next key (peer) to this pointer."},
    {"keypgetfirsttruesubkey", "Retrieves the first true subkey for this pointer."},
    {"keypgetnexttruesubkey", "Retrieves the next true subkey to this pointer (ignores 'values')"},
    {"keypgetfirstvaluekey", "Retrieves the first value in this pointer."},
    {"keypgetnextvaluekey", "Retrieves the next value in this pointer."},
    {"keypgetint", "Retrieves the int value in this pointer by name."},
    {"keypgetfloat", "Retrieves the float value in this pointer by name."},
    {"keypgetstring", "Retrieves the string value in this pointer by name."},
    {"keypgetdatatype", "Returns the data type id of the value in the key."},
    {"keypsetstring", "Sets the string value in this pointer by name."},
    {"keypsetint", "Sets the int value in this pointer by name."},
    {"keypsetfloat", "Sets the float value in this pointer by name."},
    {"keypisempty", "Check if the keyvalue pointer is empty."},
    {"keypsavetofile", "Saves the keyvalue pointer to filepath with all subkeys and values"},
    {"keyploadfromfile", "Saves the keyvalue pointer to filepath with all subkeys and values"},
    {"keyprecursivekeycopy", "Recursively copies a key into another key"},
    {"sendkeypmsg", "Sends a client message based on a KeyValues pointer. sendkeypmsg(userid,type,keyid)"},
    {"ServerCommand", "Adds a command to the end of the server queue."},
    {"InsertServerCommand", "Inserts a command to the server queue at the beginning."},
    {"ForceServerCommand", "Inserts a command to the server queue at the beginning and forces execution."},
    {"printmsg", "Outputs a message to the console."},
    {"getInt", "Gets the string value for a server variable"},
    {"getFloat", "Gets the string value for a server variable"},
    {"getString", "Gets the string value for a server variable"},
    {"setInt", "Sets the server variable to the given integer value. Creating it if necessary."},
    {"setFloat", "Sets the server variable to the given float value. Creating it if necessary."},
    {"setString", "Sets the server variable to the given string  value. Creating it if necessary."},
    {"setNumRegistered", "Internal command."},
    {"getUseridList", "Returns a list of the userids of all players on the server."},
    {"getEventInfo", "Gets the value of a particular event variable."},
    {"cmdargv", "Gets the command parameter passed to the current Valve console command."},
    {"cmdargc", "Gets the command parameter count passed to the current Valve console command."},
    {"cmdargs", "Gets the commandstring passed to the current Valve console command."},
    {"getcmduserid", "Gets the commandstring passed to the current Valve console command."},
};

class TwCTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    TestServer::Shared();
    ASSERT_TRUE(Py_IsInitialized());
    s_globals = PyDict_New();
    PyDict_SetItemString(s_globals, "__builtins__", PyEval_GetBuiltins());
    PyObject* module = PyImport_ImportModule("tw_C");
    ASSERT_NE(module, nullptr);
    PyDict_SetItemString(s_globals, "tw_C", module);
    Py_DECREF(module);
  }

  static std::string Run(const std::string& lines) { return TestServer::Shared().Run(lines); }

  // The repr of a Python expression's value, or "ExceptionName: message" when it raises.
  static std::string Eval(const std::string& expression) { return Python(expression, Py_eval_input); }
  // Runs statements in the same namespace: "" or "ExceptionName: message".
  static std::string Exec(const std::string& statements) { return Python(statements, Py_file_input); }

  static const ConCommandBase* FindCommand(const std::string& name) {
    for (const ConCommandBase* c = cvar->GetCommands(); c; c = c->GetNext())
      if (c->IsCommand() && name == c->GetName()) return c;
    return nullptr;
  }

  static std::string Var(const char* name) {
    ConVar* var = cvar->FindVar(name);
    return var ? var->GetString() : "<none>";
  }

private:
  static std::string Python(const std::string& source, int start) {
    PyObject* result = PyRun_String(source.c_str(), start, s_globals, s_globals);
    if (!result) return ErrorText();
    std::string text;
    if (start == Py_eval_input) {
      PyObject* repr = PyObject_Repr(result);
      text = PyUnicode_AsUTF8(repr);
      Py_DECREF(repr);
    }
    Py_DECREF(result);
    return text;
  }

  static std::string ErrorText() {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    PyObject* message = value ? PyObject_Str(value) : nullptr;
    std::string text = std::string(reinterpret_cast<PyTypeObject*>(type)->tp_name) + ": " +
                       (message ? PyUnicode_AsUTF8(message) : "");
    Py_XDECREF(message);
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
    return text;
  }

  static inline PyObject* s_globals = nullptr;
};

// ---- the names ----

TEST_F(TwCTest, HoldsTheBindersAndTheDirectMethodsAndNothingElse) {
  std::set<std::string> expected(std::begin(kBinders), std::end(kBinders));
  for (const DirectMethod& m : kDirectMethods) expected.insert(m.name);
  ASSERT_EQ(expected.size(), 176u);
  std::set<std::string> actual;
  for (const PyMethodDef* def = TwMethods(); def->ml_name; ++def) {
    actual.insert(def->ml_name);
    EXPECT_EQ(def->ml_flags, METH_VARARGS) << def->ml_name;
  }
  EXPECT_EQ(TwMethodCount(), 176);
  EXPECT_EQ(actual, expected);
  EXPECT_EQ(Eval("len([n for n in dir(tw_C) if not n.startswith('__')])"), "176");
}

TEST_F(TwCTest, ABindersDocIsItsXTwinsHelp) {
  for (const char* name : kBinders) {
    const PyMethodDef* def = FindTwMethod(name);
    ASSERT_NE(def, nullptr) << name;
    const ConCommandBase* twin = FindCommand(("tw_x" + std::string(name)).c_str());
    ASSERT_NE(twin, nullptr) << name;
    EXPECT_STREQ(def->ml_doc, twin->GetHelpText()) << name;
  }
  EXPECT_EQ(Eval("tw_C.set.__doc__"), "'Adds/sets a new server/global variable.'");
}

TEST_F(TwCTest, DirectMethodsCarryTheirDocTexts) {
  for (const DirectMethod& m : kDirectMethods) {
    const PyMethodDef* def = FindTwMethod(m.name);
    ASSERT_NE(def, nullptr) << m.name;
    EXPECT_STREQ(def->ml_doc, m.doc) << m.name;
  }
}

// ---- key pointers ----

TEST_F(TwCTest, KeyZeroIsNoKey) {
  EXPECT_EQ(Eval("tw_C.keypgetname(0)"), "''");
  for (const char* call : {"keypgetfirstsubkey(0)", "keypgetnextkey(0)", "keypcreatesubkey(0)",
                           "keypfindsubkey(0, 'a', 1)", "keypgetint(0, 'a')", "keypgetstring(0, '')",
                           "keypgetdatatype(0)", "keypisempty(0)", "keypsetint(0, 'a', 1)", "keypdelete(0)"})
    EXPECT_EQ(Eval(std::string("tw_C.") + call), "None") << call;
}

TEST_F(TwCTest, AKeyIsBuiltReadAndWalked) {
  ASSERT_EQ(Exec("k = tw_C.keypcreate()\n"
                 "tw_C.keypsetname(k, 'root')\n"
                 "tw_C.keypsetint(k, 'count', 7)\n"
                 "tw_C.keypsetfloat(k, 'ratio', 0.5)\n"
                 "tw_C.keypsetstring(k, 'label', 'seven')\n"
                 "sub = tw_C.keypcreatesubkey(k)\n"
                 "sub2 = tw_C.keypcreatesubkey(k)\n"
                 "named = tw_C.keypfindsubkey(k, 'named', 1)\n"),
            "");
  EXPECT_EQ(Eval("type(k).__name__, k != 0, tw_C.keypgetname(k)"), "('int', True, 'root')");
  EXPECT_EQ(Eval("tw_C.keypgetint(k, 'count'), tw_C.keypgetfloat(k, 'ratio'), tw_C.keypgetstring(k, 'label')"),
            "(7, 0.5, 'seven')");
  EXPECT_EQ(Eval("tw_C.keypgetint(k, 'missing'), tw_C.keypgetfloat(k, 'missing'), tw_C.keypgetstring(k, 'missing')"),
            "(0, 0.0, '')");
  EXPECT_EQ(Eval("[tw_C.keypgetdatatype(tw_C.keypfindsubkey(k, n, 0)) for n in ('label', 'count', 'ratio', '1')]"),
            "[1, 2, 3, 0]");
  EXPECT_EQ(Eval("tw_C.keypgetname(sub), tw_C.keypgetname(sub2), tw_C.keypfindsubkey(k, 'absent', 0)"),
            "('1', '2', None)");
  EXPECT_EQ(Eval("tw_C.keypgetfirstsubkey(sub)"), "0");  // no children: 0, not None
  EXPECT_EQ(Eval("tw_C.keypisempty(sub), tw_C.keypisempty(k)"), "(1, 0)");
  EXPECT_EQ(Eval("tw_C.keypgetname(tw_C.keypgetfirstvaluekey(k)), tw_C.keypgetname(tw_C.keypgetnextvaluekey("
                 "tw_C.keypgetfirstvaluekey(k)))"),
            "('count', 'ratio')");
  EXPECT_EQ(Eval("tw_C.keypgetfirsttruesubkey(k) == sub, tw_C.keypgetnexttruesubkey(sub) == sub2, "
                 "tw_C.keypgetnexttruesubkey(named)"),
            "(True, True, 0)");
  EXPECT_EQ(Eval("tw_C.keypfindsubkey(k, '', 1)"), "None");  // an empty name names no subkey
}

TEST_F(TwCTest, StaleAndForgedHandlesActAsZero) {
  ASSERT_EQ(Exec("k = tw_C.keypcreate()\nsub = tw_C.keypcreatesubkey(k)\ntw_C.keypdelete(k)\n"), "");
  for (const char* handle : {"k", "sub", "12345678901", "-1", "2**64 - 1", "2**70"}) {
    std::string h = handle;
    EXPECT_EQ(Eval("tw_C.keypgetname(" + h + ")"), "''") << handle;
    EXPECT_EQ(Eval("tw_C.keypgetfirstsubkey(" + h + ")"), "None") << handle;
    EXPECT_EQ(Eval("tw_C.keypsetstring(" + h + ", 'a', 'b')"), "None") << handle;
    EXPECT_EQ(Eval("tw_C.keypdelete(" + h + ")"), "None") << handle;
  }
}

TEST_F(TwCTest, WrongArgumentTuplesRaiseTypeError) {
  for (const char* call : {"keypgetname('1')", "keypgetname()", "keypsetname(1)", "keypfindsubkey(1, 'a')",
                           "keypsetfloat(1, 'a', 'b')", "getInt(5)", "setInt('a', 'b')", "printmsg()",
                           "ServerCommand(None)", "cmdargv('x')", "getUseridList(1)", "sendkeypmsg(1, 2)"})
    EXPECT_EQ(Eval(std::string("tw_C.") + call).rfind("TypeError: ", 0), 0u) << call;
  // A binder takes anything as str() gives it.
  EXPECT_EQ(Eval("tw_C.set('py_num', 12345), tw_C.set('py_none', None)"), "(None, None)");
  EXPECT_EQ(Var("py_num"), "12345");
  EXPECT_EQ(Var("py_none"), "None");
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
  EXPECT_EQ(Eval("tw_C.keygroupgetpointer('nosuchgroup')"), "0");
  std::string out = Run("tw_keylist pykeys");
  EXPECT_NE(out.find("a"), std::string::npos);
  EXPECT_EQ(out.find("\"c\""), std::string::npos);
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
  Run("tw_keygroupcreate pytree");
  EXPECT_NE(Run("tw_keygrouplist").find("pytree"), std::string::npos);
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

TEST_F(TwCTest, SendKeypMsgReportsAUseridWithoutPlayerAndAMissingKey) {
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.sendkeypmsg(999, 0, tw_C.keypcreate())"), "None");
  EXPECT_TRUE(capture.Contains("Error: \"999\" is an invalid userid.")) << capture.Text();
}

// ---- variables ----

TEST_F(TwCTest, GettersReadAndRaiseSystemErrorForAMissingVariable) {
  Run("tw_xset pyvar 12.5");
  EXPECT_EQ(Eval("tw_C.getInt('pyvar'), tw_C.getFloat('pyvar'), tw_C.getString('pyvar')"), "(12, 12.5, '12.5')");
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.getInt('py_no_such_var')"), "SystemError: The var \"py_no_such_var\" could not be found");
  EXPECT_EQ(Eval("tw_C.getString('py_no_such_var')"), "SystemError: The var \"py_no_such_var\" could not be found");
  EXPECT_EQ(capture.Text(),
            "The var \"py_no_such_var\" could not be found\nThe var \"py_no_such_var\" could not be found\n");
  Run("tw_xset pyhidden secret\ntw_xflags add neverstring pyhidden");
  EXPECT_EQ(Eval("tw_C.getString('pyhidden')"), "'FCVAR_NEVER_AS_STRING'");
}

TEST_F(TwCTest, SettersMakeTheVariableAndReturnTheValue) {
  EXPECT_EQ(Eval("tw_C.setString('py_made', 'made here')"), "'made here'");
  EXPECT_EQ(Var("py_made"), "made here");
  EXPECT_EQ(cvar->FindVar("py_made")->GetHelpText(), std::string("Custom server variable."));
  EXPECT_EQ(Eval("tw_C.setInt('py_int', 42), tw_C.setFloat('py_float', 0.25)"), "(42, 0.25)");
  EXPECT_EQ(Var("py_int"), "42");
  EXPECT_EQ(Var("py_float"), "0.250000");
  // 0 is stored as text without force: a missing variable isn't made while autocreate is off.
  Run("tidewright_autocreate 0");
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.setInt('py_zero', 0)"), "SystemError: Couldn't create \"py_zero\" and could not be found");
  EXPECT_TRUE(capture.Contains("Couldn't create \"py_zero\" and could not be found\n"));
  EXPECT_EQ(Var("py_zero"), "<none>");
  Run("tidewright_autocreate 1");
}

// ---- the command buffer and the console ----

TEST_F(TwCTest, TheThreeQueueMethodsPlaceTheirText) {
  OutputCapture capture;
  EXPECT_EQ(Eval("tw_C.ServerCommand('echo tail'), tw_C.InsertServerCommand('echo head')"), "(1, 1)");
  EXPECT_EQ(Run("echo -"), "head\ntail\n-\n");
  // ForceServerCommand runs the text now, inside the call.
  EXPECT_EQ(Exec("tw_C.ServerCommand('echo later')\ntw_C.ForceServerCommand('echo now')\ntw_C.printmsg('after')"),
            "");
  EXPECT_EQ(capture.Take(), "now\nafter\n");
  EXPECT_EQ(Run("echo -"), "later\n-\n");
}

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
  EXPECT_EQ(Eval("all(type(u) is int for u in tw_C.getUseridList())"), "True");
  Run("sim_disconnect " + std::to_string(first));
  EXPECT_EQ(Eval("set(tw_C.getUseridList()) & " + both), "{" + std::to_string(second) + "}");
}

TEST_F(TwCTest, OutsideAnEventGetEventInfoRaises) {
  Run("tw__ep 1");  // no queued event of that handle: no current event
  EXPECT_EQ(Eval("tw_C.getEventInfo('userid')"), "SystemError: getEventInfo: no game event is current");
}

TEST_F(TwCTest, SmallDirectMethods) {
  EXPECT_EQ(Eval("tw_C.setNumRegistered(3)"), "None");
  EXPECT_EQ(Eval("type(tw_C.getcmduserid()).__name__, type(tw_C.cmdargc()).__name__"), "('int', 'int')");
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
