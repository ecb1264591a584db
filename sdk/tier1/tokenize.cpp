// The console tokenizer shared by the engine and plugins: break characters, quotes and comments.
#include "tier1/tokenize.h"

#include <cstring>
#include <initializer_list>

namespace {

// One flag per byte value; bytes with the high bit set are ordinary characters. `endsWord` also marks the
// bytes that end a plain token: white space, the end of the text and the break characters.
struct BreakSet {
  bool flags[256] = {};
  bool endsWord[256] = {};
  constexpr BreakSet() {
    for (unsigned char c : {'{', '}', '(', ')', '\'', ':'}) flags[c] = endsWord[c] = true;
    for (int c = 0; c <= 32; ++c) endsWord[c] = true;
  }
};
constexpr BreakSet kBreaks;

inline bool IsSpace(unsigned char c) { return c >= 1 && c <= 32; }

// Copies [begin, end) into out while room remains and ends it; a cut token still consumes its characters.
int WriteToken(const unsigned char* begin, const unsigned char* end, char* out, int room) {
  int n = int(end - begin) < room ? int(end - begin) : room;
  memcpy(out, begin, size_t(n));
  out[n] = '\0';
  return n;
}

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

  const unsigned char* begin = p;
  if (*p == '"') {
    begin = ++p;
    while (*p && *p != '"') ++p;
    length = WriteToken(begin, p, out, outSize - 1);
    if (*p == '"') ++p;
    return reinterpret_cast<const char*>(p);
  }
  if (breaks.flags[*p])
    ++p;
  else
    while (!breaks.endsWord[*p]) ++p;
  length = WriteToken(begin, p, out, outSize - 1);
  return reinterpret_cast<const char*>(p);
}
