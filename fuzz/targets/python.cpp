// The tw_C module's binders, called as Python code would with any tuple of arguments: the input's first
// byte picks the method, the rest is cut at byte 0x01 into arguments whose first byte picks their kind
// (text, int, float, None, bytes, a tuple of the text).
#include <Python.h>

#include <cstdlib>

#include "fuzz_server.h"
#include "fuzz_target.h"
#include "output_capture.h"
#include "python/methodtable.h"
#include "python_call.h"

namespace {

PyObject* Text(const std::string& text) {
  return PyUnicode_DecodeUTF8(text.data(), Py_ssize_t(text.size()), "replace");
}

PyObject* Argument(const std::string& item) {
  std::string text = item.empty() ? std::string() : item.substr(1);
  switch (item.empty() ? 0 : uint8_t(item[0]) % 6) {
    case 1: return PyLong_FromLongLong(strtoll(text.c_str(), nullptr, 0));
    case 2: return PyFloat_FromDouble(strtod(text.c_str(), nullptr));
    case 3: Py_RETURN_NONE;
    case 4: return PyBytes_FromStringAndSize(text.data(), Py_ssize_t(text.size()));
    case 5: {
      PyObject* inner = Text(text);
      PyObject* tuple = PyTuple_Pack(1, inner);
      Py_DECREF(inner);
      return tuple;
    }
    default: return Text(text);
  }
}

}  // namespace

TW_FUZZ_TARGET(python) {
  FuzzServer();
  StartTestPython();
  if (size == 0 || TwMethodCount() == 0) return;
  PyMethodDef* method = &TwMethods()[data[0] % TwMethodCount()];
  std::vector<std::string> items = size > 1 ? FuzzSplit(data + 1, size - 1, '\x01', 8) : std::vector<std::string>();
  PyObject* args = PyTuple_New(Py_ssize_t(items.size()));
  for (size_t i = 0; i < items.size(); ++i) {
    PyObject* item = Argument(items[i]);
    if (!item) {
      PyErr_Clear();
      item = Py_NewRef(Py_None);
    }
    PyTuple_SET_ITEM(args, Py_ssize_t(i), item);
  }
  PyObject* function = PyCFunction_New(method, nullptr);
  {
    OutputCapture quiet;
    PyObject* result = PyObject_Call(function, args, nullptr);
    Py_XDECREF(result);
  }
  PyErr_Clear();
  Py_DECREF(function);
  Py_DECREF(args);
  FuzzRunLines(" ");
}
