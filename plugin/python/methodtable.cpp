// tw_C's method table. Records are written at static initialisation; the array and its count are
// constant-initialised, so every initialiser may add to them whatever the order of files.
#include "python/methodtable.h"

#include <cstring>

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

PyMethodDef* TwMethods() { return s_methods; }

int TwMethodCount() { return s_count; }

const PyMethodDef* FindTwMethod(const char* name) {
  for (int i = 0; i < s_count; ++i)
    if (strcmp(s_methods[i].ml_name, name) == 0) return &s_methods[i];
  return nullptr;
}
