// The plugin's calls into Python against a fake package tw whose answers the tests choose: Python switched off
// at Load and started late, each call point with an answer, a raised exception and a result that isn't an
// integer, and the tick rules. The real package's own behaviour is tested by tests/pylib and the scenarios;
// here only the native side's rules are.
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

const char kScript[] = "block load\n{\n}\n";

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
    PyObject* text = PyRun_String("''.join(c + '\\n' for c in calls)", Py_eval_input, PyModule_GetDict(tw),
                                  PyModule_GetDict(tw));
    std::string calls = text ? PyUnicode_AsUTF8(text) : "<failed>";
    Py_XDECREF(text);
    Py_DECREF(tw);
    return calls;
  }

  static int Connect(const char* name) {
    int userid = 0;
    std::string joined = Run(std::string("sim_connect ") + name);
    EXPECT_EQ(sscanf(joined.c_str(), "Client \"%*[^\"]\" connected as userid %d", &userid), 1) << joined;
    return userid;
  }

  static bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(PythonCallsTest, WithPythonOffAtLoadNothingOfItRuns) {
  if (Py_IsInitialized()) GTEST_SKIP() << "the start was tested before";
  EXPECT_FALSE(Contains(Server().StartupOutput(), "Python"));
  EXPECT_EQ(Run("tw_doblock nobody/nothing"), "");
  // Turned on, it starts at the next event query, not at the change, nor for a block.
  EXPECT_EQ(Run("brannock_python 1\ntw_doblock nobody/nothing"), "");
  EXPECT_FALSE(Py_IsInitialized());
  std::string out = Run("sim_event round_start");
  EXPECT_TRUE(Contains(out, "Initializing Python...\n")) << out;
  EXPECT_TRUE(Py_IsInitialized());
  EXPECT_EQ(Calls(), "hasEvent('round_start',)\n");
  // A second query starts nothing again.
  EXPECT_FALSE(Contains(Run("sim_event round_start"), "Initializing"));
}

// Each call point with each kind of answer: a value, an exception (printed with its traceback, and the next
// line runs), and a result that isn't an integer.
TEST_F(PythonCallsTest, EachCallPointWithEachAnswer) {
  StartPython();
  const std::string id = std::to_string(Connect("Talker"));
  Run("tw_regclientcmd pyclient py/client \"\"");
  const std::string event = "sim_event round_start", load = "tw_load scripted\ntw__unload scripted",
                    say = "sim_say " + id + " hello there", client = "sim_client " + id + " pyclient now";
  const struct {
    const char* answers;  // set in the fake's `mode`
    std::string line;
    const char* goesOn;  // printed when the plugin went on; null: not looked for
    bool wentOn;
    const char* error;  // printed as well, or ""
  } cases[] = {
      {"hasEvent = 1", event, "delivered", true, ""},
      {"hasEvent = 0", event, "delivered", false, ""},
      {"hasEvent = None", event, "delivered", true, ""},
      {"hasEvent = 'text'", event, "delivered", true, ""},
      {"hasEvent = 'raise'", event, "delivered", false, "RuntimeError: hasEvent raised on purpose\n"},
      {"hasEvent = 1, triggerEvent = 'raise'", event, nullptr, true, "RuntimeError: triggerEvent raised on purpose\n"},
      {"callBlock = 'raise'", "tw_doblock py/block", nullptr, true, "RuntimeError: callBlock raised on purpose\n"},
      {"tick = 'raise'", "sim_frames 1", nullptr, true, "RuntimeError: tick raised on purpose\n"},
      // Python has the first claim on a name tw_load is given.
      {"loadModuleAddon = 0", load, "[Tidewright] Loaded scripted\n", true, ""},
      {"loadModuleAddon = 1", load, "[Tidewright] Loaded scripted\n", false, ""},
      {"loadModuleAddon = 'text'", load, "[Tidewright] Loaded scripted\n", false, ""},
      {"loadModuleAddon = 'raise'", load, "[Tidewright] Loaded scripted\n", true,
       "RuntimeError: loadModuleAddon raised on purpose\n"},
      // The say filter sees the line before the chat.
      {"sayFilter = 1", say, "Talker: hello there", true, ""},
      {"sayFilter = 0", say, "Talker: hello there", false, ""},
      {"sayFilter = 'text'", say, "Talker: hello there", true, ""},
      {"sayFilter = 'raise'", say, "Talker: hello there", true, "RuntimeError: sayFilter raised on purpose\n"},
      // The client command filter can stop a registered client command.
      {"clientCommand = 1", client, "block py/client", true, ""},
      {"clientCommand = 0", client, "block py/client", false, ""},
      {"clientCommand = 'text'", client, "block py/client", true, "error happened.\n"},
      {"clientCommand = 'raise'", client, "block py/client", true, "error happened.\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answers);
    Python("calls.clear()\nmode.clear()\nmode['triggerEvent'] = lambda name: print('delivered')\n"
           "mode['callBlock'] = lambda name: print('block', name)\nmode.update(dict(" + std::string(c.answers) + "))");
    std::string out = Run(c.line + "\necho still here");
    EXPECT_TRUE(!c.goesOn || Contains(out, c.goesOn) == c.wentOn) << out;
    EXPECT_TRUE(Contains(out, c.error)) << out;
    EXPECT_TRUE(*c.error || !(Contains(out, "Traceback") || Contains(out, "error happened"))) << out;
    EXPECT_TRUE(Contains(out, "still here\n")) << out;
    EXPECT_FALSE(PyErr_Occurred());
  }
  EXPECT_TRUE(Contains(Calls(), "clientCommand(" + id + ",)\n"));
  Python("calls.clear()\nmode.clear()");
  Run(say);
  EXPECT_TRUE(Contains(Calls(), "sayFilter(" + id + ", '\"hello there\"', 0)\n")) << Calls();
}

TEST_F(PythonCallsTest, PythonOffSkipsEveryPath) {
  StartPython();
  Python("mode['hasEvent'] = 1\nmode['loadModuleAddon'] = 1");
  Run("brannock_python 0");
  Run("sim_event round_start\ntw_doblock nobody/block\ntw_load anything\ntw_xunload nothing\nsim_frames 2\n"
      "tw_load\nsim_connect Off\nsim_say 2 hi\nsim_client 2 jointeam 2");
  EXPECT_EQ(Calls(), "");
}

TEST_F(PythonCallsTest, AnUnknownBlockReachesCallBlockTrimmed) {
  StartPython();
  Python("mode['callBlock'] = lambda name: print('block', repr(name), tw_C.getargs(), tw_C.getargc())");
  EXPECT_EQ(Run("tw_xdoblock   py/block  "), "block 'py/block' None 0\n");
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

// ---- frames ----

// The scenario python/tick shows the switches at 0 and 2; here a value no switch names, and the events that
// still reach Python at 2.
TEST_F(PythonCallsTest, TickRunsOnlyWithBrannockPythonAt1) {
  StartPython();
  Python("mode['tick'] = lambda: print('tick')\nmode['hasEvent'] = 1");
  EXPECT_EQ(Run("brannock_python -1\nsim_frames 2"), "");
  Run("brannock_python 2\nsim_event round_start");
  EXPECT_TRUE(Contains(Calls(), "triggerEvent('round_start',)"));
  EXPECT_TRUE(Contains(Run("brannock_python 1\nsim_frames 1"), "tick\n"));
}

}  // namespace
