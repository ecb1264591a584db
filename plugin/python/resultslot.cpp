// The result slot of the Python door.
#include "python/resultslot.h"

namespace {
PyObject* s_result = nullptr;
}  // namespace

void SetResult(PyObject* object) {
  PyObject* old = s_result;
  s_result = object;
  Py_XDECREF(old);
}

void SetResultText(const char* value) { SetResult(Py_BuildValue("s", value)); }
void SetResultInt(int value) { SetResult(Py_BuildValue("i", value)); }
void SetResultFloat(float value) { SetResult(Py_BuildValue("f", double(value))); }
void SetResultFloats(float a, float b, float c) { SetResult(Py_BuildValue("fff", double(a), double(b), double(c))); }

PyObject* TakeResult() {
  PyObject* object = s_result;
  s_result = nullptr;
  return object;
}
