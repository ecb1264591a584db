// Calling tw_C's methods from the unit tests as Python code would: the interpreter started once for the
// process and never finalised (as in the plugin), a method taken from the method table and called with a
// tuple of arguments.
#pragma once

#include <Python.h>

#include <initializer_list>
#include <string>

// Starts the interpreter unless it runs, as the plugin does: tw_C is among its modules.
void StartTestPython();
// The repr of what tw_C.<method>(*args) gives: "<no method>" for a method the table lacks, "<null>" when the
// call gives nothing. `args` stays the caller's.
std::string CallTwRepr(const char* method, PyObject* args);
// The same with text arguments.
std::string CallTwRepr(const char* method, std::initializer_list<const char*> items);
