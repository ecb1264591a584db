// An in-memory file system for KeyValues tests: files are strings by path.
#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "filesystem.h"

class MemoryFileSystem : public IBaseFileSystem {
public:
  std::map<std::string, std::string> files;
  bool failWrites = false;

  int Read(void* output, int size, FileHandle_t file) override {
    Open_* f = static_cast<Open_*>(file);
    int n = std::min<int>(size, int(f->data.size() - f->pos));
    memcpy(output, f->data.data() + f->pos, size_t(n));
    f->pos += size_t(n);
    return n;
  }
  int Write(const void* input, int size, FileHandle_t file) override {
    Open_* f = static_cast<Open_*>(file);
    f->data.append(static_cast<const char*>(input), size_t(size));
    return size;
  }
  FileHandle_t Open(const char* name, const char* options, const char*) override {
    bool write = strchr(options, 'w') != nullptr;
    if (write && failWrites) return nullptr;
    if (!write && !files.count(name)) return nullptr;
    auto* f = new Open_{name, write, write ? std::string() : files[name], 0};
    return f;
  }
  void Close(FileHandle_t file) override {
    Open_* f = static_cast<Open_*>(file);
    if (f->write) files[f->name] = f->data;
    delete f;
  }
  unsigned int Size(FileHandle_t file) override { return unsigned(static_cast<Open_*>(file)->data.size()); }
  bool FileExists(const char* name, const char*) override { return files.count(name) != 0; }

private:
  struct Open_ {
    std::string name;
    bool write;
    std::string data;
    size_t pos;
  };
};

// Owns a tree for the length of a test.
struct TreeGuard {
  KeyValues* kv;
  explicit TreeGuard(KeyValues* k) : kv(k) {}
  ~TreeGuard() {
    if (kv) kv->deleteThis();
  }
  KeyValues* operator->() const { return kv; }
};
