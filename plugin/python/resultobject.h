// The Python door's side of the result slot: the plain value a handler gave back, as the Python object the
// binder returns.
#pragma once

#include <Python.h>

#include "language/results.h"

// A new reference, or null for an empty value. A text that isn't valid UTF-8 gives null with the
// interpreter's error set, as building the text did; a list's field that can't be built is left out so.
PyObject* ResultObject(const ResultValue& value);
