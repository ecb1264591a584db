// Console output and scratch memory: what the engine's tier0 exports to plugins. All output goes through one
// spew function, stdout by default, so that the engine's and every plugin's lines stay in one order.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tier0.h"

namespace {

void DefaultSpew(SpewType_t, const char* text) { fputs(text, stdout); }

SpewOutputFunc_t g_spew = DefaultSpew;
int g_developer = 0;
std::vector<void*> g_scratch;

void Spew(SpewType_t type, const char* format, va_list args) {
  char small[2048];
  va_list copy;
  va_copy(copy, args);
  int n = vsnprintf(small, sizeof small, format, args);
  if (n < 0) {
    va_end(copy);
    return;
  }
  if (size_t(n) < sizeof small) {
    g_spew(type, small);
  } else {
    std::string big(size_t(n) + 1, '\0');
    vsnprintf(big.data(), big.size(), format, copy);
    g_spew(type, big.c_str());
  }
  va_end(copy);
}

}  // namespace

void Msg(const char* format, ...) {
  va_list args;
  va_start(args, format);
  Spew(SPEW_MESSAGE, format, args);
  va_end(args);
}

void Warning(const char* format, ...) {
  va_list args;
  va_start(args, format);
  Spew(SPEW_WARNING, format, args);
  va_end(args);
}

void DevMsg(int level, const char* format, ...) {
  if (g_developer < level) return;
  va_list args;
  va_start(args, format);
  Spew(SPEW_DEV, format, args);
  va_end(args);
}

SpewOutputFunc_t SpewOutputFunc(SpewOutputFunc_t func) {
  SpewOutputFunc_t previous = g_spew;
  g_spew = func ? func : DefaultSpew;
  return previous;
}

void SetDeveloperLevel(int level) { g_developer = level; }
int GetDeveloperLevel() { return g_developer; }

void* MemAllocScratch(int size) {
  void* block = malloc(size > 0 ? size_t(size) : 1);
  g_scratch.push_back(block);
  return block;
}

void MemFreeScratch() {
  if (g_scratch.empty()) return;
  free(g_scratch.back());
  g_scratch.pop_back();
}
