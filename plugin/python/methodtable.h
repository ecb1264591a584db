// The method table of module tw_C: a fixed array of interpreter method records, one binder for each command
// row with a Python door, ended by an all-null record. Reading it binds the rows first.
#pragma once

#include <Python.h>

enum { MAX_TW_METHODS = 300 };

// False (and nothing added) when the table is full.
bool AddTwMethod(const char* name, PyCFunction function, const char* doc);
PyMethodDef* TwMethods();
int TwMethodCount();
// The record of that name, or null.
const PyMethodDef* FindTwMethod(const char* name);
