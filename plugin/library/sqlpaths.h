// Where the SQL commands may keep database files: inside the server root, the game directory's parent. A
// path is resolved the way SQLite resolves it (symbolic links followed, ".." taken from what is resolved so
// far, missing folders kept as written) and allowed only when the result lies inside the root. SQLite is then
// handed the resolved absolute path, never a relative one or a URI.
#pragma once

#include <string>

struct SqlPathCheck {
  bool allowed = false;
  std::string path;            // the resolved absolute path, when allowed
  const char* reason = nullptr;  // why not, when refused
};

// The real path of the game directory's parent; empty when it can't be resolved.
std::string Sql_ServerRoot();
// Checks an absolute path against a root that is itself a real path.
SqlPathCheck Sql_ConfinePath(const std::string& root, const std::string& path);
// tw_dosql's path: ":memory:" (any case), or a path relative to the root. Absolute paths and URIs are refused.
SqlPathCheck Sql_ConfineRelative(const std::string& root, const char* path);
// The authorizer of every connection: ATTACH (and VACUUM INTO) only of in-memory and temporary databases
// and of files inside the root; a relative name counts from the working directory, as SQLite opens it.
int Sql_Authorize(void* unused, int action, const char* file, const char*, const char*, const char*);
