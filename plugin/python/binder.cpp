// The Python door of every command row: the record from a call's tuple, and one binder function per row.
// Each binder is a trampoline bound to its row's place in a table, so a call finds its row without a lookup.
#include "python/binder.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/diagnostics.h"
#include "language/doors.h"
#include "python/methodtable.h"
#include "python/resultobject.h"

namespace {

const CommandRow* s_binderRows[MAX_TW_METHODS];
int s_binderCount = 0;
// Rows of the doors' list looked at so far, bound or left out.
int s_rowsSeen = 0;

template <int N>
PyObject* BinderAt(PyObject*, PyObject* args) {
  TW_ASSERT(N < s_binderCount, "the method table holds only bound binders");
  return RunBinder(*s_binderRows[N], args);
}

template <int... N>
constexpr std::array<PyCFunction, sizeof...(N)> MakeBinders(std::integer_sequence<int, N...>) {
  return {&BinderAt<N>...};
}

constexpr std::array<PyCFunction, MAX_TW_METHODS> kBinders =
    MakeBinders(std::make_integer_sequence<int, MAX_TW_METHODS>());

// Appends an item to the joined argument text, a blank between items, within the limit.
void AppendJoined(char* joined, size_t& length, const char* text, size_t n, bool first) {
  const size_t room = MAX_PYTHON_ARGS_TEXT - 1;
  if (!first && length < room) joined[length++] = ' ';
  size_t take = length + n <= room ? n : room - length;
  memcpy(joined + length, text, take);
  length += take;
  joined[length] = '\0';
}

}  // namespace

CommandArgs* Cmd_TokenizePython(const char* name, PyObject* tuple) {
  CommandArgs* record = new CommandArgs;
  record->AddToken(name, strlen(name));
  char joined[MAX_PYTHON_ARGS_TEXT];
  size_t length = 0;
  joined[0] = '\0';
  Py_ssize_t count = tuple && PyTuple_Check(tuple) ? PyTuple_GET_SIZE(tuple) : 0;
  bool first = true;
  for (Py_ssize_t i = 0; i < count; ++i) {
    PyObject* text = PyObject_Str(PyTuple_GET_ITEM(tuple, i));
    if (!text) {
      PyErr_Clear();
      continue;
    }
    Py_ssize_t n = 0;
    const char* utf8 = PyUnicode_AsUTF8AndSize(text, &n);
    if (!utf8) {
      PyErr_Clear();
      DbgMsg(0, "Cmd_TokenizePython: ERROR with parsing %s on arg %d", name, int(i));
    } else {
      record->AddToken(utf8, size_t(n));
      AppendJoined(joined, length, utf8, size_t(n), first);
      first = false;
    }
    Py_DECREF(text);
  }
  record->SetArgs(joined, length);
  return record;
}

void BindPythonRows() {
  for (; s_rowsSeen < PythonRowCount(); ++s_rowsSeen) {
    const CommandRow& row = PythonRow(s_rowsSeen);
    if (s_binderCount < MAX_TW_METHODS && AddTwMethod(row.base, kBinders[s_binderCount], row.help)) {
      s_binderRows[s_binderCount++] = &row;
      continue;
    }
    Warning("[Tidewright] The method table of tw_C is full (%d methods): %s left out.\n", MAX_TW_METHODS, row.base);
  }
}

PyObject* RunBinder(const CommandRow& row, PyObject* args) {
  char name[96];
  snprintf(name, sizeof name, "tw_%s", row.base);
  CommandArgs* record = Cmd_TokenizePython(name, args);
  // The slot holds something only while an outer binder's handler runs: that is the outer call's value.
  ResultValue outerResult = TakeResult();
  {
    CurrentArgsScope scope(record);
    RunHandler(row, true, false);
  }
  PyObject* result = ResultObject(TakeResult());
  RestoreResult(std::move(outerResult));
  if (!result) Py_RETURN_NONE;
  return result;
}
