// The unit tests' way into tw_C; see python_call.h.
#include "python_call.h"

#include "python/interpreter.h"
#include "python/methodtable.h"

#ifdef TW_SANITIZE
// The interpreter is never finalised, as in the plugin: what it holds at exit is not ours to report.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libpython3\n";
}
#endif

void StartTestPython() { InitializeInterpreter(); }

std::string CallTwRepr(const char* method, PyObject* args) {
  const PyMethodDef* def = FindTwMethod(method);
  if (!def) return "<no method>";
  PyObject* result = def->ml_meth(nullptr, args);
  PyObject* repr = result ? PyObject_Repr(result) : nullptr;
  std::string text = repr ? PyUnicode_AsUTF8(repr) : "<null>";
  Py_XDECREF(repr);
  Py_XDECREF(result);
  return text;
}

std::string CallTwRepr(const char* method, std::initializer_list<const char*> items) {
  PyObject* tuple = PyTuple_New(Py_ssize_t(items.size()));
  Py_ssize_t i = 0;
  for (const char* item : items) PyTuple_SET_ITEM(tuple, i++, PyUnicode_FromString(item));
  std::string text = CallTwRepr(method, tuple);
  Py_DECREF(tuple);
  return text;
}
