// The embedded interpreter inside the python/ folder: its start-up, the module tw_C, and the package objects
// that start-up keeps for the calls into Python (calls.cpp). Other subsystems see none of this; they use
// python/hooks.h, and the plugin object python/steps.h.
#pragma once

#include <Python.h>

// What start-up keeps, strong references held for the life of the process: the package tw, its addons
// object and the seven callables, in the order they are fetched.
struct PythonPackage {
  PyObject* tw = nullptr;
  PyObject* addons = nullptr;
  PyObject* loadModuleAddon = nullptr;
  PyObject* triggerEvent = nullptr;
  PyObject* callBlock = nullptr;
  PyObject* tick = nullptr;
  PyObject* hasEvent = nullptr;
  PyObject* sayFilter = nullptr;
  PyObject* clientCommand = nullptr;
};
extern PythonPackage g_pythonPackage;

// Set at the very start of StartPython, so a second call never repeats it.
bool PythonStarted();
// StartPython ran to its end: the package and its callables are there. Never false again once true.
bool PythonReady();

// Brings the interpreter up with tw_C among its built-in modules, unless it runs already: the system's
// prefix, PYTHON* variables ignored, no signal handlers, sys.argv "-E" "-i" "-tt". False, after a message,
// when it can't start. StartPython's first part; the unit tests start the interpreter through it too.
bool InitializeInterpreter();

// Idempotent start of the interpreter, the module and the package. Does nothing while brannock_python is 0.
// A start whose package can't be imported, or lacks a callable, says so once and sets brannock_python to 0.
void StartPython();

// Runs a source text in __main__, as the start-up statements run: a raised exception prints its traceback.
void RunPythonSource(const char* source);
// Prints the pending exception with its traceback on sys.stderr and clears it. SystemExit is printed like
// any other exception (the interpreter's own printing would end the process), and sys.last_traceback isn't
// set: it would keep an unloaded addon's frames alive.
void PrintPythonError();
