// The engine's file system over real files. Paths are relative to the mod directory and may reach its
// siblings (../hl2/...), but a path is normalised by its text alone and refused when it would leave the
// server root (the mod directory's parent). Open files are handles of a table, so a forged or closed
// handle is refused, never used.
#pragma once

#include <cstdio>
#include <string>
#include <unordered_set>

#include "filesystem.h"
#include "tier1/handletable.h"

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

  // The full path of `fileName`, or false when it is empty or would leave the server root. Backslashes
  // count as slashes; an absolute path counts only when it lies under the root.
  bool ResolvePath(const char* fileName, std::string& out) const;

  const std::string& ModDir() const { return m_modDir; }
  size_t OpenCount() const { return m_files.LiveCount(); }

private:
  FILE* FileOf(FileHandle_t file) const;

  std::string m_modDir;   // normalised, no trailing slash
  std::string m_rootDir;  // its parent
  HandleTable<FILE> m_files;
  std::unordered_set<FILE*> m_open;
};

// Lexical normalisation of a '/'-separated path: empty parts and "." go, ".." takes the part before it
// away. False when a ".." would climb above the start of the path.
bool NormalisePath(const std::string& path, std::string& out);
