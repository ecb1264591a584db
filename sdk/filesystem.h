// The engine's file system. Paths are relative to the mod directory; they may reach sibling folders of the
// mod (../hl2/...) but never leave the server root. Path ids are accepted and ignored.
#pragma once

typedef void* FileHandle_t;
#define FILESYSTEM_INVALID_HANDLE (FileHandle_t)0

#define FILESYSTEM_INTERFACE_VERSION "VFileSystem012"

class IBaseFileSystem {
public:
  virtual int Read(void* output, int size, FileHandle_t file) = 0;
  virtual int Write(const void* input, int size, FileHandle_t file) = 0;
  // Modes as fopen takes them: "r", "rb", "w", "wb", "a", "ab", and "+" forms. Writing into a folder
  // that doesn't exist fails.
  virtual FileHandle_t Open(const char* fileName, const char* options, const char* pathID = nullptr) = 0;
  virtual void Close(FileHandle_t file) = 0;
  virtual unsigned int Size(FileHandle_t file) = 0;
  virtual bool FileExists(const char* fileName, const char* pathID = nullptr) = 0;

protected:
  virtual ~IBaseFileSystem() = default;
};

class IFileSystem : public IBaseFileSystem {
public:
  virtual long GetFileTime(const char* fileName, const char* pathID = nullptr) = 0;  // seconds since the epoch
  virtual bool EndOfFile(FileHandle_t file) = 0;
  // One line with its line feed, at most maxChars - 1 characters; null at the end of the file.
  virtual char* ReadLine(char* output, int maxChars, FileHandle_t file) = 0;
};
