// The engine's file system over real files. Paths are relative to the mod directory and may reach its
// siblings (../hl2/...), never beyond the server root (the mod directory's parent): a path is first
// normalised by its text, and refused when it would climb out; then it is opened below an open handle of
// the root with every component's link resolved by the kernel at open time (openat2, RESOLVE_BENEATH),
// so a link that leads out of the root is refused as `..` is. Paths are handled in fixed buffers on the
// stack: a file test allocates nothing. Open files are handles of a table, so a forged or closed handle
// is refused, never used.
#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <unordered_set>

#include "filesystem.h"
#include "tier1/handletable.h"

// Longest path, its terminating zero included, that the file system takes or makes.
constexpr size_t FILES_MAX_PATH = 4096;

class CFileSystem final : public IFileSystem {
public:
  // `modDir` is an absolute path; its parent is the server root.
  explicit CFileSystem(const std::string& modDir);
  ~CFileSystem() override;
  CFileSystem(const CFileSystem&) = delete;
  CFileSystem& operator=(const CFileSystem&) = delete;

  int Read(void* output, int size, FileHandle_t file) override;
  int Write(const void* input, int size, FileHandle_t file) override;
  FileHandle_t Open(const char* fileName, const char* options, const char* pathID = nullptr) override;
  void Close(FileHandle_t file) override;
  unsigned int Size(FileHandle_t file) override;
  bool FileExists(const char* fileName, const char* pathID = nullptr) override;
  long GetFileTime(const char* fileName, const char* pathID = nullptr) override;
  bool EndOfFile(FileHandle_t file) override;
  char* ReadLine(char* output, int maxChars, FileHandle_t file) override;

  // The path of `fileName` relative to the server root ("" for the root itself), or false when it is
  // empty, too long or would leave the root by its text. Backslashes count as slashes; an absolute path
  // counts only when it lies under the root. `out` holds FILES_MAX_PATH bytes.
  bool RootRelative(const char* fileName, char* out) const;
  // Sets the modification time of the file `fileName`, in seconds since 1970.
  bool SetFileTime(const char* fileName, long long seconds);
  // Makes the folder `fileName` (its parent must exist) below the root; true when it exists afterwards.
  bool MakeFolder(const char* fileName);
  // The same as a full path: the root, a slash and the relative path.
  bool ResolvePath(const char* fileName, std::string& out) const;

  const std::string& ModDir() const { return m_modDir; }
  size_t OpenCount() const { return m_files.LiveCount(); }

private:
  FILE* FileOf(FileHandle_t file) const;
  // A descriptor of `relative` opened below the root; -1 when it is missing or its resolution leaves the root.
  int OpenBeneath(const char* relative, int flags, int mode = 0) const;
  // The status of `fileName` below the root; false when it is refused or missing.
  bool StatBeneath(const char* fileName, struct stat& st) const;

  std::string m_modDir;   // normalised, links in it resolved when it exists, no trailing slash
  std::string m_rootDir;  // its parent
  std::string m_modName;  // its last part: the first part of a path relative to the root
  int m_rootFd = -1;
  HandleTable<FILE> m_files;
  std::unordered_set<FILE*> m_open;
};

// Lexical normalisation of a path with '/' or '\\' between its parts into `out` (`size` bytes): empty
// parts and "." go, ".." takes the part before it away, a leading slash stays. False when a ".." would
// climb above the start of the path or the result doesn't fit.
bool NormalisePath(const char* path, char* out, size_t size);
