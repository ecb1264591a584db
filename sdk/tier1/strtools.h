// Text helpers of the shared tier that the plugin, KeyValues and the engine all use.
#pragma once

#include <cstdlib>
#include <cstring>

// A heap copy of `text` (a null text copies as ""), to be released with free().
inline char* CopyText(const char* text) {
  const char* from = text ? text : "";
  size_t n = strlen(from) + 1;
  char* copy = static_cast<char*>(malloc(n));
  memcpy(copy, from, n);
  return copy;
}
