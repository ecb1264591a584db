// The method table of module tw_C: a fixed array of interpreter method records, the direct methods and one
// binder for each command row with a Python door, ended by an all-null record. Reading it binds the rows
// first.
#pragma once

#include <Python.h>

#include <cstddef>

enum { MAX_TW_METHODS = 300 };

// False (and nothing added) when the table is full.
bool AddTwMethod(const char* name, PyCFunction function, const char* doc);
PyMethodDef* TwMethods();
int TwMethodCount();
// The record of that name, or null.
const PyMethodDef* FindTwMethod(const char* name);

// A method of tw_C with no command row behind it: it parses its own arguments.
struct DirectMethodRow {
  const char* name;
  PyCFunction function;
  const char* doc;
};

// Adds a table of direct methods at static initialisation: `static const DirectMethods s_methods(kRows);`.
class DirectMethods {
public:
  template <size_t N>
  explicit DirectMethods(const DirectMethodRow (&rows)[N]) {
    for (const DirectMethodRow& row : rows) Add(row);
  }

private:
  static void Add(const DirectMethodRow& row);
};
