// The console tokenizer shared by the engine and plugins: break characters, quotes and comments.
#include "tier1/tokenize.h"

#include <initializer_list>

namespace {

// One flag per byte value; bytes with the high bit set are ordinary characters.
struct BreakSet {
  bool flags[256] = {};
  constexpr BreakSet() {
    for (unsigned char c : {'{', '}', '(', ')', '\'', ':'}) flags[c] = true;
  }
};
constexpr BreakSet kBreaks;

inline bool IsSpace(unsigned char c) { return c >= 1 && c <= 32; }

// Appends c while room remains; a cut token still consumes its characters.
struct TokenWriter {
  char* out;
  int room;
  int len = 0;
  void Put(char c) {
    if (len < room) out[len++] = c;
  }
  void End() { out[len] = '\0'; }
};

}  // namespace

bool IsBreakChar(unsigned char c) { return kBreaks.flags[c]; }

const char* ParseToken(const char* text, char* out, int outSize) {
  int length;
  return ParseToken(text, out, outSize, length);
}

const char* ParseToken(const char* text, char* out, int outSize, int& length) {
  out[0] = '\0';
  length = 0;
  if (!text) return nullptr;
  const BreakSet& breaks = kBreaks;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);

  for (;;) {
    while (IsSpace(*p)) ++p;
    if (*p == 0) return nullptr;
    if (p[0] == '/' && p[1] == '/') {
      while (*p && *p != '\n') ++p;
      continue;
    }
    if (p[0] == '/' && p[1] == '*') {
      p += 2;
      while (*p && !(p[0] == '*' && p[1] == '/')) ++p;
      if (*p) p += 2;
      continue;
    }
    break;
  }

  TokenWriter w{out, outSize - 1};
  if (*p == '"') {
    ++p;
    while (*p && *p != '"') w.Put(char(*p++));
    if (*p == '"') ++p;
  } else if (breaks.flags[*p]) {
    w.Put(char(*p++));
  } else {
    while (*p && !IsSpace(*p) && !breaks.flags[*p]) w.Put(char(*p++));
  }
  w.End();
  length = w.len;
  return reinterpret_cast<const char*>(p);
}
