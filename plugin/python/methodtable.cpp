// tw_C's method table. The array and its count are constant-initialised, so records may be added at any
// time; the readers first bind the command rows that have no binder yet.
#include "python/methodtable.h"

#include <cstring>

#include "python/binder.h"
#include "tier0.h"

namespace {
PyMethodDef s_methods[MAX_TW_METHODS + 1];
int s_count = 0;
}  // namespace

bool AddTwMethod(const char* name, PyCFunction function, const char* doc) {
  if (s_count >= MAX_TW_METHODS) return false;
  s_methods[s_count++] = PyMethodDef{name, function, METH_VARARGS, doc};
  s_methods[s_count] = PyMethodDef{nullptr, nullptr, 0, nullptr};
  return true;
}

void DirectMethods::Add(const DirectMethodRow& row) {
  if (!AddTwMethod(row.name, row.function, row.doc))
    Warning("[Tidewright] The method table of tw_C is full (%d methods): %s left out.\n", MAX_TW_METHODS, row.name);
}

PyMethodDef* TwMethods() {
  BindPythonRows();
  return s_methods;
}

int TwMethodCount() {
  BindPythonRows();
  return s_count;
}

const PyMethodDef* FindTwMethod(const char* name) {
  BindPythonRows();
  for (int i = 0; i < s_count; ++i)
    if (strcmp(s_methods[i].ml_name, name) == 0) return &s_methods[i];
  return nullptr;
}
