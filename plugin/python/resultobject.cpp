// Turning the slot's value into a Python object: texts to str, ints to int, floats to float, three floats to
// a tuple, a list to a dictionary of dictionaries (row name to field name to value), rows in their order.
#include "python/resultobject.h"

namespace {

PyObject* TextObject(const std::string& text) { return Py_BuildValue("s", text.c_str()); }
PyObject* IntObject(int value) { return Py_BuildValue("i", value); }
PyObject* FloatObject(float value) { return Py_BuildValue("f", double(value)); }

PyObject* FieldObject(const FieldValue& value) {
  if (const std::string* text = std::get_if<std::string>(&value)) return TextObject(*text);
  if (const int* number = std::get_if<int>(&value)) return IntObject(*number);
  return FloatObject(std::get<float>(value));
}

// Sets dict[name] = value and gives up the reference; a null value is left out.
void SetItem(PyObject* dict, const std::string& name, PyObject* value) {
  if (!value) return;
  PyDict_SetItemString(dict, name.c_str(), value);
  Py_DECREF(value);
}

PyObject* RowObject(const ListResult::Row& row) {
  PyObject* entry = PyDict_New();
  if (!entry) return nullptr;
  for (const ListResult::Field& field : row.fields) SetItem(entry, field.name, FieldObject(field.value));
  return entry;
}

// A numbered row's key is the int; a later row of the same name takes the place of an earlier one.
void SetRow(PyObject* dict, const ListResult::Row& row) {
  if (!row.numbered) {
    SetItem(dict, row.name, RowObject(row));
    return;
  }
  PyObject* key = PyLong_FromString(row.name.c_str(), nullptr, 10);
  PyObject* value = key ? RowObject(row) : nullptr;
  if (value) PyDict_SetItem(dict, key, value);
  Py_XDECREF(value);
  Py_XDECREF(key);
}

PyObject* ListObject(const ListResult& list) {
  PyObject* dict = PyDict_New();
  if (!dict) return nullptr;
  for (const ListResult::Row& row : list.Rows()) SetRow(dict, row);
  return dict;
}

}  // namespace

PyObject* ResultObject(const ResultValue& value) {
  if (const std::string* text = std::get_if<std::string>(&value)) return TextObject(*text);
  if (const int* number = std::get_if<int>(&value)) return IntObject(*number);
  if (const float* real = std::get_if<float>(&value)) return FloatObject(*real);
  if (const auto* v = std::get_if<std::array<float, 3>>(&value))
    return Py_BuildValue("fff", double((*v)[0]), double((*v)[1]), double((*v)[2]));
  if (const ListResult* list = std::get_if<ListResult>(&value)) return ListObject(*list);
  return nullptr;
}
