// The plugin's calls into Python against a fake package tw whose answers the tests choose: Python switched off
// at Load and started late, each call point with an answer, a raised exception and a result that isn't an
// integer, the tick rules, and the collection at a level start. The real package's own behaviour is tested
// by tests/pylib and the scenarios; here only the native side's rules are.
#include <Python.h>
#include <gtest/gtest.h>

#include <string>

#include "host/console.h"
#include "host/diagnostics.h"
#include "test_server.h"

namespace {

// The fake package: every call is recorded in `calls` as a line; `mode[name]` picks the answer of a callable:
// a value, "raise", or "text" (a result that isn't an integer). Its printing goes through tw_C.printmsg.
const char kFakePackage[] = R"(import sys
import tw_C

class _Console:
    def __init__(self): self.pending = ''
    def write(self, text):
        lines = (self.pending + text).split('\n')
        self.pending = lines.pop()
        for line in lines: tw_C.printmsg(line)
        return len(text)
    def flush(self): pass

sys.stdout = sys.stderr = _Console()
calls = []
mode = {}

def _answer(name, default, *args):
    calls.append(name + repr(args))
    answer = mode.get(name, default)
    if answer == 'raise': raise RuntimeError(name + ' raised on purpose')
    if answer == 'text': return 'not a number'
    if callable(answer): return answer(*args)
    return answer

class _Addons:
    def hasEvent(self, name): return _answer('hasEvent', 0, name)
    def triggerEvent(self, name): return _answer('triggerEvent', None, name)
    def callBlock(self, name): return _answer('callBlock', None, name)
    def tick(self): return _answer('tick', None) if 'tick' in mode else None
    def sayFilter(self, userid, text, teamonly): return _answer('sayFilter', 1, userid, text, teamonly)
    def clientCommand(self, userid): return _answer('clientCommand', 1, userid)

addons = _Addons()

def loadModuleAddon(name): return _answer('loadModuleAddon', 0, name)
def unloadModuleAddon(name): calls.append('unloadModuleAddon' + repr((name,)))
def printScriptList(): print('[Tidewright]   [  python] fake')
)";

const char kScript[] = R"(event player_death
{
  tw echo script section of event_var(tw_event)
}
block load
{
}
)";

class PythonCallsTest : public ::testing::Test {
protected:
  // One server for the binary: the interpreter lives once per process. Python is off when Load runs.
  static TestServer& Server() {
    static TestServer* server = [] {
      brannock_python.SetValue(0);
      TestServer::Options o;
      o.plugin = TestServer::RealPlugin();
      o.files = {{"addons/tidewright/_libs/python/tw/__init__.py", kFakePackage},
                 {"addons/tidewright/scripted/tw_scripted.txt", kScript}};
      return new TestServer(o);
    }();
    return *server;
  }

  static std::string Run(const std::string& lines) { return Server().Run(lines); }

  // Python on and started: turning it on starts nothing until the next event query.
  static void StartPython() {
    Run("brannock_python 1\nsim_event round_start");
    ASSERT_TRUE(Py_IsInitialized());
    Python("calls.clear()");
  }

  void SetUp() override {
    Server();
    if (Py_IsInitialized()) {
      Python("calls.clear()\nmode.clear()");
      Run("brannock_python 1\nbrannock_tidewright 1\ntidewright_debug 0");
    }
  }

  // Runs statements in the fake package's namespace.
  static void Python(const std::string& source) {
    PyObject* tw = PyImport_ImportModule("tw");
    ASSERT_NE(tw, nullptr);
    PyObject* result = PyRun_String(source.c_str(), Py_file_input, PyModule_GetDict(tw), PyModule_GetDict(tw));
    if (!result) PyErr_Print();
    ASSERT_NE(result, nullptr);
    Py_DECREF(result);
    Py_DECREF(tw);
  }

  // The fake's calls since the test began, one per line.
  static std::string Calls() {
    PyObject* tw = PyImport_ImportModule("tw");
    PyObject* calls = PyObject_GetAttrString(tw, "calls");
    std::string text;
    for (Py_ssize_t i = 0; i < PyList_Size(calls); ++i) text += PyUnicode_AsUTF8(PyList_GetItem(calls, i)) + std::string("\n");
    Py_DECREF(calls);
    Py_DECREF(tw);
    return text;
  }

  static bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

// ---- the start ----

TEST_F(PythonCallsTest, WithPythonOffAtLoadNothingOfItRuns) {
  if (Py_IsInitialized()) GTEST_SKIP() << "the start was tested before";
  EXPECT_FALSE(Contains(Server().StartupOutput(), "Python"));
  EXPECT_EQ(Run("tw_doblock nobody/nothing"), "");
  EXPECT_EQ(Run("tw_load"), "\n[Tidewright] Loaded:\n[Tidewright]   [ enabled] corelib\n"
                            "[Tidewright]------------------------\n\n");
  // Turned on, it starts at the next event query, not at the change, nor for a block.
  EXPECT_EQ(Run("brannock_python 1\ntw_doblock nobody/nothing"), "");
  EXPECT_FALSE(Py_IsInitialized());
  std::string out = Run("sim_event round_start");
  EXPECT_TRUE(Contains(out, "Initializing Python...\n")) << out;
  EXPECT_TRUE(Contains(out, "Python initialized.\n")) << out;
  EXPECT_TRUE(Py_IsInitialized());
  EXPECT_EQ(Calls(), "hasEvent('round_start',)\n");
  // A second query starts nothing again.
  EXPECT_FALSE(Contains(Run("sim_event round_start"), "Initializing"));
}

TEST_F(PythonCallsTest, TheMainNamespaceHasWhatStartUpPutThere) {
  StartPython();
  Python("import __main__\n"
         "calls.append(repr([n for n in ('sys', 'tw_C', 'tw', 'addons', 'tidewright_addondir') "
         "if hasattr(__main__, n)]))\n"
         "calls.append(repr((__main__.sys.argv, __main__.sys.path[1].endswith('/_libs/python'))))\n"
         "calls.append(repr([p.rsplit('/addons/', 1)[-1] for p in __main__.sys.path[-5:]]))");
  EXPECT_EQ(Calls(),
            "['sys', 'tw_C', 'tw', 'addons', 'tidewright_addondir']\n"
            "(['-E', '-i', '-tt'], True)\n"
            "['tidewright', 'tidewright/_engines/python/Lib', 'tidewright/_engines/python/Lib/plat-win', "
            "'tidewright/_engines/python/Lib/site-packages', 'tidewright/_libs/python']\n");
}

TEST_F(PythonCallsTest, PyCmdRegisterAfterTheFirstMapIsRefused) {
  EXPECT_EQ(Run("pycmd_register late_python"),
            "Sorry! You can only register the Python console command before a server loads (e.g. in "
            "autoexec.cfg).\n");
  EXPECT_EQ(Run("pycmd_register"), "Tidewright\n\nsyntax:\npycmd_register <obscure-name-for-python-command>\n");
  EXPECT_EQ(Run("late_python print(1)"), "Unknown command \"late_python\"\n");
}

// ---- events ----

TEST_F(PythonCallsTest, AnEventWantedByPythonIsQueuedLastWithItsVariables) {
  StartPython();
  Run("tw_load scripted");
  Python("mode['hasEvent'] = lambda name: name == 'player_death'\n"
         "mode['triggerEvent'] = lambda name: print('python sees', name, tw_C.getEventInfo('tw_event'))");
  std::string out = Run("sim_event player_death userid 2 attacker 0");
  EXPECT_TRUE(Contains(out, "script section of player_death\npython sees player_death player_death\n")) << out;
  // Wanted by Python alone, an event still gets tw_event.
  Run("tw_unload scripted");
  out = Run("sim_event player_death userid 2 attacker 0");
  EXPECT_TRUE(Contains(out, "python sees player_death player_death\n")) << out;
  EXPECT_FALSE(Contains(out, "script section")) << out;
}

TEST_F(PythonCallsTest, HasEventAnswers) {
  StartPython();
  struct Case {
    const char* answer;
    bool delivered;
    bool printed;
  } cases[] = {{"1", true, false}, {"0", false, false}, {"'raise'", false, true}, {"'text'", true, false},
               {"None", true, false}};
  for (const Case& c : cases) {
    Python(std::string("calls.clear()\nmode['hasEvent'] = ") + c.answer);
    std::string out = Run("sim_event round_start");
    EXPECT_EQ(Contains(Calls(), "triggerEvent"), c.delivered) << c.answer;
    EXPECT_EQ(Contains(out, "RuntimeError: hasEvent raised on purpose"), c.printed) << c.answer << out;
    EXPECT_FALSE(PyErr_Occurred());
  }
}

TEST_F(PythonCallsTest, ARaisingEventHandlerLeavesTheServerGoingOn) {
  StartPython();
  Python("mode['hasEvent'] = 1\nmode['triggerEvent'] = 'raise'");
  std::string out = Run("sim_event round_start\necho still here");
  EXPECT_TRUE(Contains(out, "Traceback (most recent call last):\n")) << out;
  EXPECT_TRUE(Contains(out, "RuntimeError: triggerEvent raised on purpose\nstill here\n")) << out;
}

TEST_F(PythonCallsTest, PythonOffSkipsEveryPath) {
  StartPython();
  Python("mode['hasEvent'] = 1\nmode['loadModuleAddon'] = 1");
  Run("brannock_python 0");
  Run("sim_event round_start\ntw_doblock nobody/block\ntw_load anything\ntw_xunload nothing\nsim_frames 2\n"
      "tw_load\nsim_connect Off\nsim_say 2 hi\nsim_client 2 jointeam 2");
  EXPECT_EQ(Calls(), "");
}

// ---- blocks ----

TEST_F(PythonCallsTest, AnUnknownBlockReachesCallBlockTrimmedWithItsArguments) {
  StartPython();
  Python("mode['callBlock'] = lambda name: print('block', repr(name), tw_C.getargs(), tw_C.getargc())");
  EXPECT_EQ(Run("tw_xdoblock   py/block  "), "block 'py/block' None 0\n");
  Run("tw_regcmd pyword py/word \"a Python block\"");
  // The command's name is argument 0: getargs is the text behind it.
  EXPECT_EQ(Run("pyword one \"two three\""), "block 'py/word' one \"two three\" 3\n");
  Python("mode['callBlock'] = 'raise'");
  std::string out = Run("tw_doblock py/block\necho after");
  EXPECT_TRUE(Contains(out, "RuntimeError: callBlock raised on purpose\nafter\n")) << out;
}

// ---- load, unload, the list ----

TEST_F(PythonCallsTest, LoadModuleAddonHasTheFirstClaim) {
  StartPython();
  struct Case {
    const char* answer;
    bool textLoaded;
  } cases[] = {{"0", true}, {"1", false}, {"'raise'", true}, {"'text'", false}};
  for (const Case& c : cases) {
    Python(std::string("mode['loadModuleAddon'] = ") + c.answer);
    std::string out = Run("tw_load scripted");
    EXPECT_EQ(Contains(out, "[Tidewright] Loaded scripted\n"), c.textLoaded) << c.answer << out;
    EXPECT_EQ(Contains(out, "RuntimeError: loadModuleAddon raised on purpose"), std::string(c.answer) == "'raise'");
    Run("tw__unload scripted");
  }
  EXPECT_TRUE(Contains(Calls(), "loadModuleAddon('scripted',)"));
}

TEST_F(PythonCallsTest, OnlyANameNoScriptHasReachesUnloadModuleAddon) {
  StartPython();
  Run("tw_load scripted");
  EXPECT_EQ(Run("tw__unload scripted"), "Script removed: scripted\n");
  EXPECT_EQ(Calls(), "loadModuleAddon('scripted',)\n");
  Python("calls.clear()");
  Run("tw_x_unload it's \"odd\"\\n");
  EXPECT_EQ(Calls(), "unloadModuleAddon('it\\'s \"odd\"\\\\n',)\n");
}

TEST_F(PythonCallsTest, TheScriptListHasPythonsLinesBeforeItsFooter) {
  StartPython();
  EXPECT_EQ(Run("tw_load"), "\n[Tidewright] Loaded:\n[Tidewright]   [ enabled] corelib\n"
                            "[Tidewright]   [  python] fake\n[Tidewright]------------------------\n\n");
}

// ---- chat and client commands ----

TEST_F(PythonCallsTest, TheSayFilterSeesTheLineFirst) {
  StartPython();
  int userid = 0;
  std::string joined = Run("sim_connect Talker");
  ASSERT_EQ(sscanf(joined.c_str(), "Client \"Talker\" connected as userid %d", &userid), 1) << joined;
  std::string say = "sim_say " + std::to_string(userid) + " hello there";
  struct Case {
    const char* answer;
    bool passes;
  } cases[] = {{"1", true}, {"0", false}, {"'raise'", true}, {"'text'", true}};
  for (const Case& c : cases) {
    Python(std::string("calls.clear()\nmode['sayFilter'] = ") + c.answer);
    std::string out = Run("sim_watch tw_player_chat\n" + say + "\nsim_watch off");
    EXPECT_EQ(Contains(out, "Talker: hello there"), c.passes) << c.answer << out;
    EXPECT_EQ(Contains(out, "event tw_player_chat"), c.passes) << c.answer << out;
    EXPECT_TRUE(Contains(Calls(), "sayFilter(" + std::to_string(userid) + ", '\"hello there\"', 0)\n")) << c.answer;
  }
}

TEST_F(PythonCallsTest, TheClientCommandFilterCanStopARegisteredCommand) {
  StartPython();
  int userid = 0;
  std::string joined = Run("sim_connect Typist");
  ASSERT_EQ(sscanf(joined.c_str(), "Client \"Typist\" connected as userid %d", &userid), 1) << joined;
  Run("tw_regclientcmd pyclient py/client \"\"");
  Python("mode['callBlock'] = lambda name: print('registered block', name)");
  std::string type = "sim_client " + std::to_string(userid) + " pyclient now";
  struct Case {
    const char* answer;
    bool runs;
    bool error;
  } cases[] = {{"1", true, false}, {"0", false, false}, {"'raise'", true, true}, {"'text'", true, true}};
  for (const Case& c : cases) {
    Python(std::string("mode['clientCommand'] = ") + c.answer);
    std::string out = Run(type);
    EXPECT_EQ(Contains(out, "registered block py/client"), c.runs) << c.answer << out;
    EXPECT_EQ(Contains(out, "error happened.\n"), c.error) << c.answer << out;
  }
}

// ---- frames and levels ----

TEST_F(PythonCallsTest, TickRunsEachFrameAfterTheDelayedCommandsOnlyWithBothSwitchesAt1) {
  StartPython();
  Python("mode['tick'] = lambda: print('tick')");
  std::string out = Run("tw_delayed 0 echo delayed\nsim_frames 1");
  EXPECT_TRUE(Contains(out, "delayed\ntick\n")) << out;
  struct Case {
    const char* switches;
    bool ticks;
  } cases[] = {{"brannock_python 2", false}, {"brannock_python -1", false}, {"brannock_tidewright 2", false},
               {"brannock_tidewright 0", false}, {"brannock_python 1", true}};
  for (const Case& c : cases) {
    Run(std::string(c.switches));
    std::string frames = Run("sim_frames 2");
    EXPECT_EQ(Contains(frames, "tick\ntick\n"), c.ticks) << c.switches;
    if (!c.ticks) {
      EXPECT_EQ(frames, "") << c.switches;
    }
    Run("brannock_python 1\nbrannock_tidewright 1");
  }
  // At 2, events still reach Python.
  Python("mode['hasEvent'] = 1\nmode['tick'] = None");
  Run("brannock_python 2\nsim_event round_start");
  EXPECT_TRUE(Contains(Calls(), "triggerEvent('round_start',)"));
  Python("mode['tick'] = 'raise'");
  out = Run("brannock_python 1\nsim_frames 1\necho next");
  EXPECT_TRUE(Contains(out, "RuntimeError: tick raised on purpose\nnext\n")) << out;
}

TEST_F(PythonCallsTest, ALevelStartRunsTheCollection) {
  StartPython();
  std::string out = Run("map pycollect");
  EXPECT_TRUE(Contains(out, "Python|Objects to be freed: (")) << out;
  EXPECT_TRUE(Contains(out, "Python|Freed: ")) << out;
  EXPECT_LT(out.find("Python|Freed: "), out.find("[Tidewright] Loaded successfully.")) << out;
}

}  // namespace
