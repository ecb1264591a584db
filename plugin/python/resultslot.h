// The result slot: the process-wide object through which a handler called from Python gives its value to
// the binder. Filled only by handlers called with fromConsole false, taken out only by binders.
#pragma once

#include <Python.h>

// Replaces the slot's object (the old one is released); the slot owns `object` from here on.
void SetResult(PyObject* object);
void SetResultText(const char* value);
void SetResultInt(int value);
void SetResultFloat(float value);
void SetResultFloats(float a, float b, float c);
// Gives the slot's object (the caller owns it) and leaves the slot empty; null when there is none.
PyObject* TakeResult();
