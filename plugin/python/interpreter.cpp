// Interpreter start-up: bringing the system's Python 3 up inside the server, publishing tw_C, importing the
// package tw and keeping its callables; pycmd_register and the one command it makes; the collection at each
// level start. The interpreter is linked, not loaded, but nothing of it runs before StartPython, so with
// brannock_python 0 at Load the server never starts it. It is never finalised. Calls into the package
// are calls.cpp's.
#include "python/interpreter.h"

#include <cstdio>
#include <string>

#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/server_state.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "python/methodtable.h"
#include "python/steps.h"

PythonPackage g_pythonPackage;

namespace {

bool s_started = false;
bool s_ready = false;

// ---- the module tw_C ----

PyModuleDef s_twModule = {PyModuleDef_HEAD_INIT, "tw_C", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};

PyObject* InitTwModule() {
  s_twModule.m_methods = TwMethods();
  return PyModule_Create(&s_twModule);
}

// ---- the interpreter ----

bool Failed(PyStatus status, const char* step) {
  if (!PyStatus_Exception(status)) return false;
  DbgMsg(0, "[Tidewright] Python could not start (%s): %s\n", step, status.err_msg ? status.err_msg : "no reason given");
  return true;
}

// UTF-8 for every text the interpreter exchanges with the system, whatever the server's locale.
bool PreInitialize() {
  PyPreConfig preconfig;
  PyPreConfig_InitIsolatedConfig(&preconfig);
  preconfig.utf8_mode = 1;
#ifdef TW_SANITIZE
  // Every object on the C heap, where the sanitizers see its misuse and the leak checker its owner.
  preconfig.allocator = PYMEM_ALLOCATOR_MALLOC;
#endif
  return !Failed(Py_PreInitialize(&preconfig), "pre-initialisation");
}

// The system's own Python under its prefix, whatever python3 comes first on PATH. The three words are
// sys.argv, not options. The game tree stays as the operator left it: no bytecode files are written.
bool InitializeFromConfig() {
  PyConfig config;
  PyConfig_InitIsolatedConfig(&config);
  config.install_signal_handlers = 0;
  config.use_environment = 0;
  config.user_site_directory = 0;
  config.site_import = 1;
  config.write_bytecode = 0;
  config.buffered_stdio = 0;
  config.parse_argv = 0;
  wchar_t* argv[] = {const_cast<wchar_t*>(L"-E"), const_cast<wchar_t*>(L"-i"), const_cast<wchar_t*>(L"-tt")};
  bool ok = !Failed(PyConfig_SetString(&config, &config.home, TW_PYTHON_HOME), "home") &&
            !Failed(PyConfig_SetArgv(&config, 3, argv), "sys.argv") &&
            !Failed(Py_InitializeFromConfig(&config), "initialisation");
  PyConfig_Clear(&config);
  return ok;
}

// ---- the package ----

// Takes a new reference from `tw` or from the addons object; false, after the message, when it is missing.
bool Fetch(PyObject* from, const char* name, PyObject*& into) {
  into = PyObject_GetAttrString(from, name);
  if (into) return true;
  PyErr_Clear();
  DbgMsg(0, "[Tidewright] Python is off: the package tw has no %s.\n", name);
  return false;
}

bool FetchPackage() {
  PythonPackage& p = g_pythonPackage;
  p.tw = PyImport_ImportModule("tw");
  if (!p.tw) {
    PyErr_Clear();
    DbgMsg(0, "[Tidewright] Python is off: the package tw couldn't be imported.\n");
    return false;
  }
  return Fetch(p.tw, "addons", p.addons) && Fetch(p.tw, "loadModuleAddon", p.loadModuleAddon) &&
         Fetch(p.addons, "triggerEvent", p.triggerEvent) && Fetch(p.addons, "callBlock", p.callBlock) &&
         Fetch(p.addons, "tick", p.tick) && Fetch(p.addons, "hasEvent", p.hasEvent) &&
         Fetch(p.addons, "sayFilter", p.sayFilter) && Fetch(p.addons, "clientCommand", p.clientCommand);
}

// The statements of start-up, in their order. Those that the plugin formats carry the addon folder; the
// "%s" of the others is Python's own, filled from tw_C, which must answer before the package is imported.
void RunStartupStatements(const char* addonDir) {
  char statement[TEXT_BUFFER_SIZE];
  RunPythonSource("import sys");
  snprintf(statement, sizeof statement, "tidewright_addondir = r\"%s\"", addonDir);
  RunPythonSource(statement);
  RunPythonSource("sys.path.append(tidewright_addondir)");
  snprintf(statement, sizeof statement, "sys.path.insert(1,r'%s/_libs/python')", addonDir);
  RunPythonSource(statement);
  RunPythonSource("import tw_C");
  RunPythonSource("sys.path.append('%s/addons/tidewright/_engines/python/Lib' % tw_C.getString('tidewright_gamedir'))");
  RunPythonSource(
      "sys.path.append('%s/addons/tidewright/_engines/python/Lib/plat-win' % tw_C.getString('tidewright_gamedir'))");
  RunPythonSource(
      "sys.path.append('%s/addons/tidewright/_engines/python/Lib/site-packages' % "
      "tw_C.getString('tidewright_gamedir'))");
  RunPythonSource("sys.path.append('%s/addons/tidewright/_libs/python' % tw_C.getString('tidewright_gamedir'))");
  RunPythonSource("import tw");
  RunPythonSource("from tw import addons");
  RunPythonSource("print('Python sys.path=',sys.path)");
}

// A failed start leaves Python off where the operator can see it; the started flag keeps it from retrying.
void GiveUp() { brannock_python.SetValue(0); }

// ---- pycmd_register ----

bool s_commandRegistered = false;

// The command pycmd_register makes: the raw rest of its line runs in __main__.
void PythonCommand_f() {
  if (g_cached.python == 0 || !s_ready) return;
  RunPythonSource(engine->Cmd_Args());
}

// Owns its name: the engine's argument doesn't outlive the command that gave it.
class CPythonCommand : public ConCommand {
public:
  explicit CPythonCommand(const char* name) : m_name(name) { Create(m_name.c_str(), PythonCommand_f, "", 0); }

private:
  std::string m_name;
};

void PyCmdRegister_f() {
  DbgMsg(2, "pycmd_register: starting...\n");
  if (engine->Cmd_Argc() != 2) {
    DbgMsg(0, "Tidewright\n\nsyntax:\npycmd_register <obscure-name-for-python-command>\n");
    return;
  }
  DbgMsg(2, "pycmd_register: proper arguments found.\n");
  if (s_commandRegistered || g_levelFlag) {
    DbgMsg(0,
           "Sorry! You can only register the Python console command before a server loads (e.g. in "
           "autoexec.cfg).\n");
    return;
  }
  DbgMsg(2, "pycmd_register: duplicating command name string\n");
  DbgMsg(2, "system_register: creating console command\n");
  KeepCommand(new CPythonCommand(engine->Cmd_Argv(1)));
  s_commandRegistered = true;
  DbgMsg(0, "Python command registered.\n");
}

const PlainCommandRow kInterpreterCommands[] = {
    {"pycmd_register", PyCmdRegister_f,
     "Registers a Python interpreter access command. Please use a name no hacker would guess."},
};
const CommandTable s_interpreterCommands(kInterpreterCommands);

}  // namespace

bool PythonStarted() { return s_started; }
bool PythonReady() { return s_ready; }

bool InitializeInterpreter() {
  if (Py_IsInitialized()) return true;
  if (PyImport_AppendInittab("tw_C", InitTwModule) != 0) {
    DbgMsg(0, "[Tidewright] Python could not start: tw_C can't be added to its modules.\n");
    return false;
  }
  return PreInitialize() && InitializeFromConfig();
}

void StartPython() {
  if (g_cached.python == 0 || s_started) return;
  s_started = true;
  DbgMsg(0, "Initializing Python...\n");
  TextBuf addonDir(tidewright_addondir.GetString());
  if (addonDir.Overflowed() || addonDir.Length() + sizeof("sys.path.insert(1,r'/_libs/python')") > TEXT_BUFFER_SIZE) {
    DbgMsg(0, "[Tidewright] Python is off: the addon folder's path is too long.\n");
    GiveUp();
    return;
  }
  if (!InitializeInterpreter()) {
    GiveUp();
    return;
  }
  RunStartupStatements(addonDir.c_str());
  if (!FetchPackage()) {
    GiveUp();
    return;
  }
  s_ready = true;
  DbgMsg(0, "Python initialized.\n");
}

void RunPythonSource(const char* source) {
  // Anything the interpreter writes past the package's console writer goes straight to the process's
  // channels: what the server printed before must be out first.
  fflush(stdout);
  PyObject* main = PyImport_AddModule("__main__");
  PyObject* globals = main ? PyModule_GetDict(main) : nullptr;
  PyObject* result = globals ? PyRun_String(source, Py_file_input, globals, globals) : nullptr;
  if (result)
    Py_DECREF(result);
  else
    PrintPythonError();
}

void PrintPythonError() {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  if (!type) return;
  PyErr_NormalizeException(&type, &value, &traceback);
  if (traceback && value) PyException_SetTraceback(value, traceback);
  PyErr_Display(type, value, traceback);
  Py_XDECREF(type);
  Py_XDECREF(value);
  Py_XDECREF(traceback);
}

// ---- the plugin object's steps ----

void Python_OnLoad() { StartPython(); }

void Python_OnLevelInit() {
  if (!s_ready) return;
  RunPythonSource(
      "import gc\nprint('Python|Objects to be freed:', gc.get_count())\nprint('Python|Freed:',gc.collect())\n");
}
