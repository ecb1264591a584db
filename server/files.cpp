// The file system of the stand-in: path rules and file operations on real files.
#include "files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tier0.h"

namespace {

// fopen modes the engine accepts: r, w or a, then b and + in either order.
bool ValidMode(const char* mode) {
  if (!mode || !strchr("rwa", mode[0])) return false;
  for (const char* p = mode + 1; *p; ++p)
    if (*p != 'b' && *p != '+' && *p != 't') return false;
  return strlen(mode) <= 3;
}

FileHandle_t ToFileHandle(uint64_t handle) { return reinterpret_cast<FileHandle_t>(uintptr_t(handle)); }

bool IsSlash(char c) { return c == '/' || c == '\\'; }

// open flags of an fopen mode that ValidMode accepted.
int OpenFlags(const char* mode) {
  bool update = strchr(mode, '+') != nullptr;
  int access = update ? O_RDWR : mode[0] == 'r' ? O_RDONLY : O_WRONLY;
  if (mode[0] == 'w') return access | O_CREAT | O_TRUNC;
  if (mode[0] == 'a') return access | O_CREAT | O_APPEND;
  return access;
}

}  // namespace

bool NormalisePath(const char* path, char* out, size_t size) {
  if (size == 0) return false;
  size_t n = 0;
  if (IsSlash(path[0])) {
    if (size < 2) return false;
    out[n++] = '/';
  }
  const size_t base = n;  // parts start here
  for (const char* p = path; *p;) {
    while (IsSlash(*p)) ++p;
    const char* part = p;
    while (*p && !IsSlash(*p)) ++p;
    size_t length = size_t(p - part);
    if (length == 0 || (length == 1 && part[0] == '.')) continue;
    if (length == 2 && part[0] == '.' && part[1] == '.') {
      if (n == base) return false;
      while (n > base && out[n - 1] != '/') --n;
      if (n > base) --n;
      continue;
    }
    size_t separator = n > base ? 1 : 0;
    if (n + separator + length >= size) return false;
    if (separator) out[n++] = '/';
    memcpy(out + n, part, length);
    n += length;
  }
  out[n] = '\0';
  return true;
}

CFileSystem::CFileSystem(const std::string& modDir) {
  char real[PATH_MAX];
  char normal[FILES_MAX_PATH];
  const char* dir = realpath(modDir.c_str(), real) ? real : modDir.c_str();
  m_modDir = NormalisePath(dir, normal, sizeof normal) ? normal : dir;
  size_t slash = m_modDir.rfind('/');
  m_rootDir = slash == 0 || slash == std::string::npos ? "/" : m_modDir.substr(0, slash);
  m_modName = slash == std::string::npos ? m_modDir : m_modDir.substr(slash + 1);
  m_rootFd = open(m_rootDir.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
}

CFileSystem::~CFileSystem() {
  // Files that a plugin left open are closed with the file system.
  for (FILE* f : m_open) fclose(f);
  if (m_rootFd >= 0) close(m_rootFd);
}

bool CFileSystem::RootRelative(const char* fileName, char* out) const {
  if (!fileName || !fileName[0]) return false;
  char joined[FILES_MAX_PATH];
  if (!IsSlash(fileName[0])) {
    int length = snprintf(joined, sizeof joined, "%s/%s", m_modName.c_str(), fileName);
    return length > 0 && size_t(length) < sizeof joined && NormalisePath(joined, out, FILES_MAX_PATH);
  }
  if (!NormalisePath(fileName, joined, sizeof joined)) return false;
  size_t rootLength = m_rootDir == "/" ? 0 : m_rootDir.size();
  if (strncmp(joined, m_rootDir.c_str(), rootLength) != 0) return false;
  const char* rest = joined + rootLength;
  if (*rest && *rest != '/') return false;
  if (*rest == '/') ++rest;
  memmove(out, rest, strlen(rest) + 1);
  return true;
}

bool CFileSystem::ResolvePath(const char* fileName, std::string& out) const {
  char relative[FILES_MAX_PATH];
  if (!RootRelative(fileName, relative)) return false;
  out = m_rootDir;
  if (relative[0]) out.append(m_rootDir == "/" ? "" : "/").append(relative);
  return true;
}

int CFileSystem::OpenBeneath(const char* relative, int flags, int mode) const {
  open_how how{};
  how.flags = uint64_t(flags | O_CLOEXEC);
  how.mode = (flags & O_CREAT) ? uint64_t(mode) : 0;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  return int(syscall(SYS_openat2, m_rootFd, relative[0] ? relative : ".", &how, sizeof how));
}

bool CFileSystem::SetFileTime(const char* fileName, long long seconds) {
  char relative[FILES_MAX_PATH];
  if (!RootRelative(fileName, relative)) return false;
  int fd = OpenBeneath(relative, O_RDONLY | O_NONBLOCK);
  if (fd < 0) return false;
  const timespec times[2] = {{time_t(seconds), 0}, {time_t(seconds), 0}};
  bool set = futimens(fd, times) == 0;
  close(fd);
  return set;
}

bool CFileSystem::MakeFolder(const char* fileName) {
  char relative[FILES_MAX_PATH];
  if (!RootRelative(fileName, relative)) return false;
  char* slash = strrchr(relative, '/');
  if (!slash) return false;
  *slash = '\0';
  int parent = OpenBeneath(relative, O_PATH | O_DIRECTORY);
  if (parent < 0) return false;
  bool made = mkdirat(parent, slash + 1, 0755) == 0 || errno == EEXIST;
  close(parent);
  return made;
}

bool CFileSystem::StatBeneath(const char* fileName, struct stat& st) const {
  char relative[FILES_MAX_PATH];
  if (!RootRelative(fileName, relative)) return false;
  // Most tests are for files that don't exist: one status call answers those. What exists is opened below
  // the root to see that no link led it out.
  if (fstatat(m_rootFd, relative[0] ? relative : ".", &st, 0) != 0) return false;
  int fd = OpenBeneath(relative, O_PATH);
  if (fd < 0) return false;
  bool ok = fstat(fd, &st) == 0;
  close(fd);
  return ok;
}

FILE* CFileSystem::FileOf(FileHandle_t file) const {
  return m_files.Get(uint64_t(reinterpret_cast<uintptr_t>(file)));
}

FileHandle_t CFileSystem::Open(const char* fileName, const char* options, const char* pathID) {
  char relative[FILES_MAX_PATH];
  if (!ValidMode(options) || !RootRelative(fileName, relative)) return FILESYSTEM_INVALID_HANDLE;
  // Without blocking, so that a reader never waits on a pipe; only regular files are opened.
  int fd = OpenBeneath(relative, OpenFlags(options) | O_NONBLOCK, 0666);
  struct stat st;
  if (fd >= 0 && (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))) {
    close(fd);
    fd = -1;
  }
  if (fd < 0) return FILESYSTEM_INVALID_HANDLE;
  fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  FILE* f = fdopen(fd, options);
  if (!f) {
    close(fd);
    return FILESYSTEM_INVALID_HANDLE;
  }
  m_open.insert(f);
  return ToFileHandle(m_files.Add(f));
}

void CFileSystem::Close(FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f) {
    DevMsg(1, "FileSystem: Close of a handle that isn't open\n");
    return;
  }
  m_files.Remove(uint64_t(reinterpret_cast<uintptr_t>(file)));
  m_open.erase(f);
  fclose(f);
}

int CFileSystem::Read(void* output, int size, FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f || !output || size <= 0) return 0;
  return int(fread(output, 1, size_t(size), f));
}

int CFileSystem::Write(const void* input, int size, FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f || !input || size <= 0) return 0;
  return int(fwrite(input, 1, size_t(size), f));
}

unsigned int CFileSystem::Size(FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f) return 0;
  fflush(f);
  struct stat st;
  return fstat(fileno(f), &st) == 0 ? (unsigned int)st.st_size : 0;
}

bool CFileSystem::FileExists(const char* fileName, const char* pathID) {
  struct stat st;
  return StatBeneath(fileName, st) && S_ISREG(st.st_mode);
}

long CFileSystem::GetFileTime(const char* fileName, const char* pathID) {
  struct stat st;
  return StatBeneath(fileName, st) ? long(st.st_mtime) : 0;
}

bool CFileSystem::EndOfFile(FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f) return true;
  int c = fgetc(f);
  if (c == EOF) return true;
  ungetc(c, f);
  return false;
}

char* CFileSystem::ReadLine(char* output, int maxChars, FileHandle_t file) {
  FILE* f = FileOf(file);
  if (!f || !output || maxChars <= 0) return nullptr;
  return fgets(output, maxChars, f);
}
