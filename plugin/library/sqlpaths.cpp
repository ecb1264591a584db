// The SQL commands' confinement to the server root: resolving a path the way SQLite would, the tests for
// tw_sql's composed paths and tw_dosql's relative ones, and the authorizer that keeps ATTACH inside too.
// Opening and running statements is sql.cpp's.
#include "library/sqlpaths.h"

#include <limits.h>
#include <sqlite3.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <deque>

#include "eiface.h"
#include "host/engine_surface.h"
#include "language/textbuf.h"
#include "tier0.h"

namespace {

// Symbolic links one path may pass through, as the kernel allows, and the longest resolved path.
constexpr int kMaxLinks = 40;
constexpr size_t kMaxResolved = PATH_MAX;

const char kOutside[] = "the path leads out of the server's folder";
const char kTooManyLinks[] = "the path passes too many symbolic links";
const char kTooLong[] = "the path is too long";
const char kNoRoot[] = "the server's folder can't be found";
const char kNotRelative[] = "the path must be relative to the server's folder";
const char kUri[] = "URIs are not accepted";

SqlPathCheck Refused(const char* reason) {
  SqlPathCheck check;
  check.reason = reason;
  return check;
}

SqlPathCheck Allowed(std::string path) {
  SqlPathCheck check;
  check.allowed = true;
  check.path = std::move(path);
  return check;
}

// Puts the components of `path` in front of what remains to be walked, in their order.
void PushFront(std::deque<std::string>& rest, const char* path) {
  std::deque<std::string> parts;
  for (const char* p = path; *p;) {
    const char* slash = strchr(p, '/');
    const size_t n = slash ? size_t(slash - p) : strlen(p);
    if (n > 0) parts.emplace_back(p, n);
    p += slash ? n + 1 : n;
  }
  rest.insert(rest.begin(), parts.begin(), parts.end());
}

std::string Join(const std::string& folder, const std::string& name) {
  return folder == "/" ? "/" + name : folder + "/" + name;
}

void DropLast(std::string& path) {
  const size_t slash = path.rfind('/');
  path.erase(slash == 0 ? 1 : slash);
}

bool Inside(const std::string& root, const std::string& path) {
  if (root == "/") return true;
  if (path.compare(0, root.size(), root) != 0) return false;
  return path.size() == root.size() || path[root.size()] == '/';
}

}  // namespace

std::string Sql_ServerRoot() {
  if (!engine) return "";
  char gameDir[TEXT_BUFFER_SIZE] = "";
  engine->GetGameDir(gameDir, sizeof gameDir);
  const std::string parent = std::string(gameDir) + "/..";
  char* real = realpath(parent.c_str(), nullptr);
  if (!real) return "";
  std::string root(real);
  free(real);
  return root;
}

// Walks the path from "/": a link is replaced by its target, ".." drops the last part resolved so far, and a
// part that doesn't exist is kept as written.
SqlPathCheck Sql_ConfinePath(const std::string& root, const std::string& path) {
  if (root.empty()) return Refused(kNoRoot);
  if (path.empty() || path[0] != '/') return Refused(kNotRelative);
  std::deque<std::string> rest;
  PushFront(rest, path.c_str());
  std::string resolved = "/";
  int links = 0;
  while (!rest.empty()) {
    const std::string part = std::move(rest.front());
    rest.pop_front();
    if (part == ".") continue;
    if (part == "..") {
      DropLast(resolved);
      continue;
    }
    std::string next = Join(resolved, part);
    if (next.size() >= kMaxResolved) return Refused(kTooLong);
    struct stat info;
    if (lstat(next.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
      resolved = std::move(next);
      continue;
    }
    char target[kMaxResolved];
    const ssize_t n = readlink(next.c_str(), target, sizeof target - 1);
    if (++links > kMaxLinks) return Refused(kTooManyLinks);
    if (n <= 0) return Refused(kOutside);
    target[n] = '\0';
    if (target[0] == '/') resolved.assign(1, '/');
    PushFront(rest, target);
  }
  TW_ASSERT(resolved[0] == '/', "the walk starts at / and never leaves it");
  return Inside(root, resolved) ? Allowed(std::move(resolved)) : Refused(kOutside);
}

SqlPathCheck Sql_ConfineRelative(const std::string& root, const char* path) {
  if (strcasecmp(path, ":memory:") == 0) return Allowed(":memory:");
  if (strncasecmp(path, "file:", 5) == 0) return Refused(kUri);
  if (path[0] == '/') return Refused(kNotRelative);
  return Sql_ConfinePath(root, root + "/" + path);
}

int Sql_Authorize(void*, int action, const char* file, const char*, const char*, const char*) {
  if (action != SQLITE_ATTACH) return SQLITE_OK;
  if (!file) return SQLITE_DENY;  // a name computed by the statement can't be checked
  if (!*file || strcmp(file, ":memory:") == 0) return SQLITE_OK;
  if (strncasecmp(file, "file:", 5) == 0) return SQLITE_DENY;
  std::string path(file);
  if (path[0] != '/') {
    char folder[kMaxResolved];
    if (!getcwd(folder, sizeof folder)) return SQLITE_DENY;
    path = std::string(folder) + "/" + path;
  }
  return Sql_ConfinePath(Sql_ServerRoot(), path).allowed ? SQLITE_OK : SQLITE_DENY;
}
