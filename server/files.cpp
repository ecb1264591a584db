// The file system of the stand-in: path rules and file operations on real files.
#include "files.h"

#include <sys/stat.h>

#include <cstring>
#include <vector>

#include "tier0.h"

namespace {

// fopen modes the engine accepts: r, w or a, then b and + in either order.
bool ValidMode(const char* mode) {
  if (!mode || !strchr("rwa", mode[0])) return false;
  for (const char* p = mode + 1; *p; ++p)
    if (*p != 'b' && *p != '+' && *p != 't') return false;
  return strlen(mode) <= 3;
}

bool IsRegularFile(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

FileHandle_t ToFileHandle(uint64_t handle) { return reinterpret_cast<FileHandle_t>(uintptr_t(handle)); }

}  // namespace

bool NormalisePath(const std::string& path, std::string& out) {
  std::vector<std::string> parts;
  size_t pos = 0;
  while (pos <= path.size()) {
    size_t slash = path.find('/', pos);
    if (slash == std::string::npos) slash = path.size();
    std::string part = path.substr(pos, slash - pos);
    pos = slash + 1;
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      if (parts.empty()) return false;
      parts.pop_back();
      continue;
    }
    parts.push_back(std::move(part));
  }
  out.clear();
  if (!path.empty() && path[0] == '/') out.push_back('/');
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) out += '/';
    out += parts[i];
  }
  return true;
}

CFileSystem::CFileSystem(const std::string& modDir) {
  NormalisePath(modDir, m_modDir);
  size_t slash = m_modDir.rfind('/');
  m_rootDir = slash == 0 || slash == std::string::npos ? "/" : m_modDir.substr(0, slash);
}

CFileSystem::~CFileSystem() {
  // Files that a plugin left open are closed with the file system.
  for (FILE* f : m_open) fclose(f);
}

bool CFileSystem::ResolvePath(const char* fileName, std::string& out) const {
  if (!fileName || !fileName[0]) return false;
  std::string path(fileName);
  for (char& c : path)
    if (c == '\\') c = '/';
  std::string joined = path[0] == '/' ? path : m_modDir + "/" + path;
  if (!NormalisePath(joined, out)) return false;
  if (out == m_rootDir) return true;
  const std::string prefix = m_rootDir == "/" ? "/" : m_rootDir + "/";
  return out.compare(0, prefix.size(), prefix) == 0;
}

FILE* CFileSystem::FileOf(FileHandle_t file) const {
  return m_files.Get(uint64_t(reinterpret_cast<uintptr_t>(file)));
}

FileHandle_t CFileSystem::Open(const char* fileName, const char* options, const char* pathID) {
  std::string path;
  if (!ValidMode(options) || !ResolvePath(fileName, path)) return FILESYSTEM_INVALID_HANDLE;
  if (options[0] == 'r' && !IsRegularFile(path)) return FILESYSTEM_INVALID_HANDLE;
  FILE* f = fopen(path.c_str(), options);
  if (!f) return FILESYSTEM_INVALID_HANDLE;
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
  std::string path;
  return ResolvePath(fileName, path) && IsRegularFile(path);
}

long CFileSystem::GetFileTime(const char* fileName, const char* pathID) {
  std::string path;
  struct stat st;
  if (!ResolvePath(fileName, path) || stat(path.c_str(), &st) != 0) return 0;
  return long(st.st_mtime);
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
