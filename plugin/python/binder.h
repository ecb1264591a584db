// The Python door: Cmd_TokenizePython and the binder that runs a command row from a call of module tw_C.
#pragma once

#include <Python.h>

#include "script/commandargs.h"

struct CommandRow;

// Limit of the joined argument text of a Python call.
enum { MAX_PYTHON_ARGS_TEXT = 8000 };

// A new record: `name` as Argv(0), then the str() of each item of `tuple`; Args is the items joined by
// blanks (never null). Items are not tokenized.
CommandArgs* Cmd_TokenizePython(const char* name, PyObject* tuple);

// Adds to the method table of tw_C, under the row's base name, a binder for each row with a Python door that
// has none yet. The method table's readers call it, so every row of every table is bound before any is used.
void BindPythonRows();
// Runs a row for a Python call: new current record, empty slot, handler(true, false), the slot's object
// or None. A binder nested in another door keeps the outer call's record and slot content.
PyObject* RunBinder(const CommandRow& row, PyObject* args);
