// Loading the plugin library.
#include "plugin_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

std::string DefaultPluginPath() {
  char self[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
  if (n <= 0) return "libtidewright.so";
  std::string dir(self, size_t(n));
  return dir.substr(0, dir.rfind('/') + 1) + "libtidewright.so";
}

CreateInterfaceFn LoadPluginLibrary(const std::string& path, std::string& error) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) {
    const char* why = dlerror();
    error = why ? why : "dlopen failed";
    return nullptr;
  }
  void* symbol = dlsym(library, "CreateInterface");
  if (!symbol) {
    error = "no CreateInterface in " + path;
    return nullptr;
  }
  return reinterpret_cast<CreateInterfaceFn>(symbol);
}
