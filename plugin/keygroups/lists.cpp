// List results at the console doors: the keygroup a list command names, and the rows written into it, one
// key per row with the row's fields as values. From Python the list goes to the result slot instead, and
// the Python door makes a dictionary of it.
#include <utility>

#include "KeyValues.h"
#include "host/diagnostics.h"
#include "keygroups/keygroups.h"
#include "language/results.h"

namespace {

void SetField(KeyValues* key, const ListResult::Field& field) {
  const char* name = field.name.c_str();
  if (const std::string* text = std::get_if<std::string>(&field.value))
    key->SetString(name, text->c_str());
  else if (const int* number = std::get_if<int>(&field.value))
    key->SetInt(name, *number);
  else
    key->SetFloat(name, std::get<float>(field.value));
}

// A row's name with '/' is a key path, so that the key commands read the row back by its name.
void WriteRows(KeyValues* group, const ListResult& list, ListRows rows) {
  for (const ListResult::Row& row : list.Rows()) {
    KeyValues* key = rows == ListRows::Append ? group->CreateKey(row.name.c_str())
                                              : FindChildKey(group, row.name.c_str(), true);
    if (!key) continue;
    for (const ListResult::Field& field : row.fields) SetField(key, field);
  }
}

}  // namespace

KeyValues* OpenListGroup(const char* name) {
  KeyValues* group = FindGroup(name, true);
  if (!group) ReportScriptError(0, "ERROR: Tidewright couldn't create the user group.\n");
  return group;
}

void ReturnList(bool fromConsole, KeyValues* group, ListResult list, ListRows rows) {
  if (fromConsole)
    WriteRows(group, list, rows);
  else
    SetResultList(std::move(list));
}
