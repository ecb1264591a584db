// SQL: the table of named connections that tw_sql opens (kept across levels; Unload closes none), its
// operations open, close, query and queryvalue, and the one-shot dosql. Rows go to a keygroup, a variable or
// Python's result. Which files may be opened is sqlpaths.cpp's.
#include <sqlite3.h>
#include <strings.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "KeyValues.h"
#include "eiface.h"
#include "host/console.h"
#include "host/diagnostics.h"
#include "host/engine_surface.h"
#include "host/nametable.h"
#include "keygroups/keygroups.h"
#include "language/doors.h"
#include "language/textbuf.h"
#include "library/sqlpaths.h"
#include "tier0.h"

namespace {

// Names are kept in lower case and found ignoring case.
NameTable<sqlite3*>& Databases() {
  static NameTable<sqlite3*>& table = *new NameTable<sqlite3*>(true);  // connections outlive the plugin's use
  return table;
}

std::string LowerName(const char* name) {
  std::string lower(name);
  for (char& c : lower) c = char(tolower(static_cast<unsigned char>(c)));
  return lower;
}

sqlite3* FindDatabase(const char* name) {
  sqlite3** found = Databases().FindValue(LowerName(name).c_str());
  if (found) return *found;
  ReportScriptError(0, "Specified database does not exist. Use tw_sql open to open a database.\n");
  SetLastErrorText("Invalid database");
  return nullptr;
}

// Opens a resolved path (or ":memory:") with the authorizer in place; null with SQLite's message in `error`
// when it can't. Extension loading stays off.
sqlite3* Connect(const std::string& path, std::string& error) {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK) {
    error = sqlite3_errmsg(db);
    sqlite3_close(db);
    return nullptr;
  }
  sqlite3_set_authorizer(db, Sql_Authorize, nullptr);
  return db;
}

// ---- rows ----

const char* TextOrNull(const char* value) { return value ? value : "NULL"; }

// A query's keygroup: each row a new key named by the next free number, behind the keys already there.
struct RowTarget {
  KeyValues* group;
  KeyValues* last = nullptr;  // the row added last, so that a row is linked without walking the group
  int next = 0;
};

KeyValues* NewRow(RowTarget& target) {
  TW_ASSERT(target.group, "a query has a keygroup target only once the group is found");
  if (!target.last) {
    target.last = target.group->CreateNewKey();
    target.next = atoi(target.last->GetName()) + 1;
    return target.last;
  }
  char name[16];
  snprintf(name, sizeof name, "%d", target.next++);
  KeyValues* row = new KeyValues(name);
  target.last->SetNextKey(row);
  target.last = row;
  return row;
}

// Every column is traced; with a target it is stored under its name, NULL as the empty text.
int AddRow(void* data, int columns, char** values, char** names) {
  KeyValues* row = data ? NewRow(*static_cast<RowTarget*>(data)) : nullptr;
  for (int i = 0; i < columns; ++i) {
    if (row) row->SetString(names[i], values[i] ? values[i] : "");
    DbgMsg(1, "SQL query returned: %s = %s\n", names[i], TextOrNull(values[i]));
  }
  return 0;
}

// The last row's first column wins; NULL is the empty text.
int KeepFirstColumn(void* data, int columns, char** values, char** names) {
  static_cast<std::optional<std::string>*>(data)->emplace(values[0] ? values[0] : "");
  DbgMsg(1, "SQL query returned: %s = %s\n", names[0], TextOrNull(values[0]));
  return 0;
}

// Runs the statements; false after the report ("SQL error").
bool Run(sqlite3* db, const char* sql, int (*callback)(void*, int, char**, char**), void* data) {
  char* message = nullptr;
  if (sqlite3_exec(db, sql, callback, data, &message) == SQLITE_OK) return true;
  ReportScriptError(0, "SQL error: %s\nYour query was: %s\n\t", message ? message : "", sql);
  SetLastErrorText("SQL error");
  sqlite3_free(message);
  return false;
}

// ---- tw_sql open ----

// The file that `open` names, as shown to the user, and the trace of the form that chose it.
struct OpenTarget {
  std::string shown;
  bool memory = false;
  const char* trace = "tw_sql open1 %s\n";
};

// "%s/%s/%s/tw_%s.sqldb" by the form of the command; the game directory is taken whole.
OpenTarget ComposePath(const ArgView& args) {
  OpenTarget target;
  const char* where = args.Argv(3);
  std::string first = tidewright_datadirectory.GetString();
  std::string second = *tidewright_subdirectory.GetString() ? tidewright_subdirectory.GetString() : ".";
  if (args.Argc() >= 4 && where[0] == '|') {
    first = "addons/tidewright";
    second = where + 1;
    target.trace = "tw_sql open2 %s\n";
  } else if (args.Argc() >= 4 && strcasecmp(where, ":memory:") == 0) {
    target.shown = where;
    target.memory = true;
    target.trace = "tw_sql open3 %s\n";
    return target;
  } else if (args.Argc() >= 4) {
    second = where;
    target.trace = "tw_sql open4 %s\n";
  }
  char gameDir[TEXT_BUFFER_SIZE] = "";
  engine->GetGameDir(gameDir, sizeof gameDir);
  target.shown = std::string(gameDir) + "/" + first + "/" + second + "/tw_" + args.Argv(2) + ".sqldb";
  return target;
}

void ReportOpenFailure(const std::string& shown, const char* reason) {
  DbgMsg(0, "Can't open database %s: %s\n", shown.c_str(), reason);
  SetLastErrorText("Open failed");
}

// A name opened twice keeps its first connection; the new one is closed again.
void Keep(const char* name, sqlite3* db) {
  const std::string key = LowerName(name);
  if (Databases().Find(key.c_str()) != NameTable<sqlite3*>::kNotFound) {
    DbgMsg(1, "tw_sql open: %s is open already and keeps its first connection.\n", name);
    sqlite3_close(db);
    return;
  }
  Databases().Insert(key.c_str(), db);
}

void Open(const ArgView& args) {
  const OpenTarget target = ComposePath(args);
  DbgMsg(1, target.trace, target.shown.c_str());
  std::string path = ":memory:";
  if (!target.memory) {
    const SqlPathCheck check = Sql_ConfinePath(Sql_ServerRoot(), target.shown);
    if (!check.allowed) return ReportOpenFailure(target.shown, check.reason);
    path = check.path;
  }
  std::string error;
  sqlite3* db = Connect(path, error);
  if (!db) return ReportOpenFailure(target.shown, error.c_str());
  DbgMsg(0, "tw_sql open: %s database opened as %s.\n", target.shown.c_str(), args.Argv(2));
  Keep(args.Argv(2), db);
}

// ---- close, query, queryvalue ----

void Close(const ArgView& args) {
  const std::string key = LowerName(args.Argv(2));
  const auto handle = Databases().Find(key.c_str());
  if (handle == NameTable<sqlite3*>::kNotFound) return;
  sqlite3_close(*Databases().Get(handle));
  Databases().Remove(handle);
  DbgMsg(0, "tw_sql close: %s database closed.\n", args.Argv(2));
}

// query <db> [keygroup] "<SQL>": with a keygroup (created when missing) the rows are added to it.
void Query(const ArgView& args) {
  if (args.Argc() < 3) return;
  const char* sql = args.Argc() <= 4 ? args.Argv(3) : args.Argv(4);
  sqlite3* db = FindDatabase(args.Argv(2));
  if (!db) return;
  if (args.Argc() <= 4) {
    Run(db, sql, AddRow, nullptr);
    return;
  }
  RowTarget target{FindGroup(args.Argv(3), true)};
  if (target.group) Run(db, sql, AddRow, &target);
}

// queryvalue <db> <var> "<SQL>"; from Python the variable is left out and the value returned. A failed
// statement stores nothing.
void QueryValue(const ArgView& args, bool fromConsole) {
  const int count = fromConsole ? args.Argc() : args.Argc() + 1;
  if (count < 5) return;
  sqlite3* db = FindDatabase(args.Argv(2));
  if (!db) return;
  std::optional<std::string> value;
  if (!Run(db, args.Argv(fromConsole ? 4 : 3), KeepFirstColumn, &value)) return;
  ReturnText(fromConsole, args.Argv(3), value ? value->c_str() : nullptr);
}

void Sql_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const char* operation = args.Argv(1);
  if (strcasecmp(operation, "open") == 0)
    Open(args);
  else if (strcasecmp(operation, "close") == 0)
    Close(args);
  else if (strcasecmp(operation, "query") == 0)
    Query(args);
  else if (strcasecmp(operation, "queryvalue") == 0)
    QueryValue(args, fromConsole);
}

// ---- dosql ----

// Opens the file, runs the statements with their rows traced, closes it again. Sets no last error.
void DoSql_h(bool expand, bool fromConsole) {
  ArgView args(expand);
  const SqlPathCheck check = Sql_ConfineRelative(Sql_ServerRoot(), args.Argv(1));
  if (!check.allowed) {
    ReportScriptError(0, "Can't open database: %s: %s\n", args.Argv(1), check.reason);
    return;
  }
  std::string error;
  sqlite3* db = Connect(check.path, error);
  if (!db) {
    ReportScriptError(0, "Can't open database: %s\n", error.c_str());
    return;
  }
  char* message = nullptr;
  if (sqlite3_exec(db, args.Argv(2), AddRow, nullptr, &message) != SQLITE_OK) {
    ReportScriptError(0, "SQL error: %s\n", message ? message : "");
    sqlite3_free(message);
  }
  sqlite3_close(db);
}

const CommandRow kSqlCommands[] = {
    {"sql", Sql_h, 3,
     "Syntax: %s tw_xsql open <db> [dbdir]\ntw_xsql close <db>\n\ntw_xsql queryvalue <db> <single-result-var> "
     "\"<SQL-string>\"\ntw_xsql query <db> [result-keygroup] \"<SQL-string>\"\n\n",
     "Keeps named SQLite databases: open, close, query (rows into a keygroup), queryvalue (one value into a "
     "variable).",
     DOORS_ALL},
    {"dosql", DoSql_h, 3, "Syntax: %s <db> <query>\n",
     "Opens a database file (relative to the server's folder), runs one query and closes it.", DOORS_ALL},
};
const CommandTable s_sqlCommands(kSqlCommands);

}  // namespace
