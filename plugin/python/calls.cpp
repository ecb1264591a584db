// Calls into Python: the hooks that the script lifecycle, the execution engine, the event side and the chat
// and client command paths use, tw__pyevent, and the frame's tick. Every call follows one pattern: build the
// arguments, call, and when an exception is pending print it with its traceback and count the call as the
// point says. Nothing is kept about the addons; the package is asked every time.
#include <cstdio>
#include <cstring>

#include "eiface.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "python/hooks.h"
#include "python/interpreter.h"
#include "python/steps.h"

namespace {

// Engine text for Python: bytes that aren't UTF-8 arrive as U+FFFD, so a call is never lost to them.
PyObject* TextObject(const char* text) { return PyUnicode_DecodeUTF8(text, Py_ssize_t(strlen(text)), "replace"); }

// Calls with the arguments of `args` (a new reference, released here; null when building it failed) and
// gives the new reference of the result, or null after printing the exception.
PyObject* Call(PyObject* callable, PyObject* args) {
  PyObject* result = args ? PyObject_Call(callable, args, nullptr) : nullptr;
  if (!result) PrintPythonError();
  Py_XDECREF(args);
  return result;
}

// A call whose exception counts as `onError`. A result that isn't an integer converts to -1, which counts as
// non-zero; the conversion's own exception is cleared.
bool CallForAnswer(PyObject* callable, PyObject* args, bool onError) {
  PyObject* result = Call(callable, args);
  if (!result) return onError;
  long value = PyLong_AsLong(result);
  if (value == -1 && PyErr_Occurred()) PyErr_Clear();
  Py_DECREF(result);
  return value != 0;
}

// A call whose result isn't read.
void CallForEffect(PyObject* callable, PyObject* args) { Py_XDECREF(Call(callable, args)); }

PyObject* OneText(const char* text) {
  PyObject* object = TextObject(text);
  if (!object) return nullptr;
  PyObject* args = PyTuple_Pack(1, object);
  Py_DECREF(object);
  return args;
}

// tw__pyevent <name>: the whole argument text is the event's name.
void PyEvent_f() {
  if (g_cached.python == 0) return;
  DbgMsg(4, "tw__pyevent\n");
  if (PythonReady()) CallForEffect(g_pythonPackage.triggerEvent, OneText(engine->Cmd_Args()));
}

const PlainCommandRow kCallCommands[] = {
    {"tw__pyevent", PyEvent_f, "Executes a python line of code."},
};
const CommandTable s_callCommands(kCallCommands);

}  // namespace

bool Python_IsUp() { return g_cached.python != 0 && PythonReady(); }

// ---- script load and unload, the script list ----

bool LoadModuleAddon(const char* name) {
  if (!Python_IsUp()) return false;
  return CallForAnswer(g_pythonPackage.loadModuleAddon, OneText(name), false);
}

// The name goes into the source text as a Python string literal, so any name is safe to pass.
void UnloadModuleAddon(const char* name) {
  if (!Python_IsUp()) return;
  DbgMsg(1, "Attempting to remove Python: %s\n", name);
  PyObject* text = TextObject(name);
  PyObject* literal = text ? PyObject_Repr(text) : nullptr;
  Py_XDECREF(text);
  const char* quoted = literal ? PyUnicode_AsUTF8(literal) : nullptr;
  TextBuf source("tw.unloadModuleAddon(");
  if (quoted && source.Append(quoted) && source.Append(")"))
    RunPythonSource(source.c_str());
  else if (PyErr_Occurred())
    PrintPythonError();
  else
    DbgMsg(0, "The name is too long for Python: %.64s...\n", name);
  Py_XDECREF(literal);
}

void Python_PrintScriptList() {
  if (Python_IsUp()) RunPythonSource("tw.printScriptList()");
}

// ---- blocks and events ----

void Python_CallBlock(const char* name) {
  if (!Python_IsUp()) return;
  DbgMsg(4, "Trying a python block...\n");
  CallForEffect(g_pythonPackage.callBlock, OneText(name));
}

bool AnyPythonRegistered(const char* name) {
  if (g_cached.python == 0) return false;
  DbgMsg(5, "AnyPythonRegistered: %s\n", name);
  StartPython();
  if (!PythonReady()) return false;
  return CallForAnswer(g_pythonPackage.hasEvent, OneText(name), false);
}

void BeginAllPythonEvents(const char* name) {
  DbgMsg(5, "BeginAllPythonEvents: %s\n", name);
  if (AnyPythonRegistered(name)) {
    TextBuf command("tw__pyevent ");
    if (command.Append(name) && command.Append("\n"))
      engine->ServerCommand(command.c_str());
    else
      DbgMsg(0, "[Tidewright] The name of event %.64s... is too long for Python.\n", name);
  }
  DbgMsg(5, "BeginAllPythonEvents: %s\n (END)", name);
}

// ---- chat and client commands ----

bool Python_SayFilter(int userid, const char* text, bool teamOnly) {
  if (!Python_IsUp() || !text || !*text) return true;
  PyObject* line = TextObject(text);
  PyObject* args = line ? Py_BuildValue("(iOi)", userid, line, teamOnly ? 1 : 0) : nullptr;
  Py_XDECREF(line);
  return CallForAnswer(g_pythonPackage.sayFilter, args, true);
}

// The exception test follows the conversion here, so a result that isn't an integer is an error too.
bool Python_ClientCommand(int userid) {
  if (g_cached.python <= 0 || userid <= 0 || !PythonReady()) return true;
  PyObject* args = Py_BuildValue("(i)", userid);
  PyObject* result = args ? PyObject_Call(g_pythonPackage.clientCommand, args, nullptr) : nullptr;
  Py_XDECREF(args);
  long value = result ? PyLong_AsLong(result) : -1;
  Py_XDECREF(result);
  if (PyErr_Occurred()) {
    DbgMsg(0, "error happened.\n");
    PrintPythonError();
    return true;
  }
  return value != 0;
}

// ---- the frame ----

void Python_OnFrame() {
  if (g_cached.python == 1 && PythonReady()) CallForEffect(g_pythonPackage.tick, PyTuple_New(0));
}
