// KeyValues nodes, their lookups and typed values, copying, and the text format's reader and writer.
// The reader keeps one static token buffer and one error stack, so it isn't re-entrant inside a token;
// an #include runs a nested load between tokens, which is safe.
#include "KeyValues.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "filesystem.h"
#include "tier0.h"
#include "tier1/handletable.h"
#include "vstdlib.h"

namespace {

constexpr int kTokenSize = 1024;       // a token keeps at most 1023 bytes
constexpr int kPathPartMax = 255;      // longest path component before a '/' in FindKey
constexpr int kErrorStackSize = 64;
constexpr int kMaxNesting = 256;       // deeper braces are refused rather than recursed into
constexpr int kMaxIncludeDepth = 8;    // bounds #include chains
constexpr int kMaxIncludesPerFile = 64;
// One top-level load (a keygroup file, an event file) reads at most this much through #include, however
// the files include each other; past it the load stops and keeps what it read.
constexpr int kMaxIncludedFiles = 256;
constexpr size_t kMaxIncludedBytes = size_t(16) << 20;

// The engine's key name table and node memory, asked for once: every node and name goes through it.
IKeyValuesSystem* System() {
  static IKeyValuesSystem* system = nullptr;
  if (!system) system = KeyValuesSystem();
  return system;
}

char s_token[kTokenSize];  // a token with its terminating zero, where a library call needs one

// Where a parse error happened: the names of the keys being read, outermost first.
struct ErrorStack {
  int entries[kErrorStackSize];
  int depth = 0;
  int deepest = 0;
  const char* fileName = "";

  int Push(int symbol) {
    if (depth < kErrorStackSize) entries[depth] = symbol;
    ++depth;
    deepest = std::max(deepest, std::min(depth, kErrorStackSize));
    return depth - 1;
  }
  void Pop() {
    if (depth > 0) --depth;
  }
  void Reset(int index, int symbol) {
    if (index >= 0 && index < kErrorStackSize) entries[index] = symbol;
  }
  __attribute__((noinline, cold)) void Report(const char* message) const {
    DevMsg(1, "KeyValues Error: %s in file %s\n", message, fileName);
    for (int i = 0; i < deepest; ++i) {
      if (entries[i] == -1) continue;
      const char* name = System()->GetStringForSymbol(entries[i]);
      if (i < depth)
        DevMsg(1, "%s, ", name);
      else
        DevMsg(1, "(*%s*), ", name);
    }
    DevMsg(1, "\n");
  }
} s_errors;

// The top-level load in progress and what its #include files have taken so far.
struct IncludeBudget {
  int depth = 0;          // 0 while no included file is being read
  int files = 0;
  size_t bytes = 0;
  bool exhausted = false;  // the load stops: no file of it reads a further section or include
  const char* topName = "";
} s_includes;

// Ends the top-level load at its include budget, with one message for the whole load.
void StopIncludes() {
  if (s_includes.exhausted) return;
  s_includes.exhausted = true;
  Warning("KeyValues: loading %s stopped: its #include files pass %d files or %d MB. What was read before "
          "is kept.\n",
          s_includes.topName, kMaxIncludedFiles, int(kMaxIncludedBytes >> 20));
}

HandleTable<KeyValues>& Handles() {
  static auto* table = new HandleTable<KeyValues>;  // never destroyed: nodes may outlive static destruction
  return *table;
}

// The nodes' value texts. Short texts take a block of a size class, reused through a free list and never
// given back; blocks are cut in order from large pieces of the engine's node memory, so that a tree's texts
// lie side by side with few pages to fault in. Longer texts come from the heap. The byte before a text names
// its class (0: the heap). The sanitizer build takes every text from the heap, so that a text used after it
// is freed is still caught.
class TextPool {
public:
  char* Copy(const char* text, size_t length) {
    char* copy = Allocate(length + 1);
    memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
  }

  void Free(char* text) {
    if (!text) return;
    unsigned char sizeClass = static_cast<unsigned char>(text[-1]);
    char* block = text - 1;
    if (sizeClass == 0) {
      free(block);
      return;
    }
    auto* slot = reinterpret_cast<FreeBlock*>(block);
    slot->next = m_free[sizeClass];
    m_free[sizeClass] = slot;
  }

private:
  static constexpr size_t kClassBytes = 16;  // class c holds blocks of c * 16 bytes, header included
  static constexpr int kClasses = 4;
  // A piece and the engine's header fill a 2 MB huge page.
  static constexpr size_t kPieceBytes = (size_t(2) << 20) - 8;
  struct FreeBlock {
    FreeBlock* next;
  };

  char* Allocate(size_t bytes) {
#if !defined(TW_SANITIZE)
    const size_t sizeClass = (bytes + 1 + kClassBytes - 1) / kClassBytes;
    if (sizeClass <= size_t(kClasses)) {
      char* block = reinterpret_cast<char*>(m_free[sizeClass]);
      if (block)
        m_free[sizeClass] = m_free[sizeClass]->next;
      else
        block = Cut(sizeClass * kClassBytes);
      if (block) {
        block[0] = char(sizeClass);
        return block + 1;
      }
    }
#endif
    char* block = static_cast<char*>(malloc(bytes + 1));
    if (!block) abort();
    block[0] = 0;
    return block + 1;
  }

  // A new block from the current piece; null when no piece can be had.
  char* Cut(size_t blockBytes) {
    if (m_pieceLeft < blockBytes) {
      m_pieceNext = static_cast<char*>(System()->AllocKeyValuesMemory(int(kPieceBytes)));
      m_pieceLeft = m_pieceNext ? kPieceBytes : 0;
      if (!m_pieceNext) return nullptr;
    }
    char* block = m_pieceNext;
    m_pieceNext += blockBytes;
    m_pieceLeft -= blockBytes;
    return block;
  }

  FreeBlock* m_free[kClasses + 1] = {};
  char* m_pieceNext = nullptr;
  size_t m_pieceLeft = 0;
};

// Constant-initialised and never destroyed: nodes may be made before any constructor runs and outlive
// static destruction.
TextPool s_texts;

// A node's value text: from the pool, back to it through ClearValue.
char* NewValueText(const char* text, size_t length) { return s_texts.Copy(text, length); }

char* NewValueText(const char* text) { return NewValueText(text, strlen(text)); }

// ---- the lexer ----

// Byte classes, one table lookup per byte: white space, and the bytes that end a plain or a quoted token.
enum : unsigned char { kSpace = 1, kEndsPlain = 2, kEndsQuoted = 4 };
constexpr std::array<unsigned char, 256> kClasses = [] {
  std::array<unsigned char, 256> t{};
  for (int c = 0; c < 256; ++c) {
    if (c >= 1 && c <= 32) t[c] |= kSpace;
    if (c <= 32 || c >= 0x80 || c == '"' || c == '{' || c == '}') t[c] |= kEndsPlain;
    if (c == 0 || c == '"' || c == '\n' || c == '\r') t[c] |= kEndsQuoted;
  }
  return t;
}();

// The end of a comment: a line feed, a byte of 0x80 and above, or the end of the text. The line's end is
// found by the C library's fast search, the bytes before it are checked a word at a time.
const unsigned char* CommentEnd(const unsigned char* p) {
  const auto* lineEnd = reinterpret_cast<const unsigned char*>(strchrnul(reinterpret_cast<const char*>(p), '\n'));
  for (uint64_t word; p + 8 <= lineEnd; p += 8) {
    memcpy(&word, p, 8);
    if (word & 0x8080808080808080ull) break;
  }
  while (p < lineEnd && *p < 0x80) ++p;
  return p;
}

// White space and comments. Right at the start of a read a single '/' opens a comment; behind white space
// it takes two.
const unsigned char* SkipSpaceAndCommentsFrom(const unsigned char* p) {
  for (bool atStart = true;; atStart = false) {
    const unsigned char* before = p;
    while (kClasses[*p] & kSpace) ++p;
    if (*p != '/' || !((atStart && p == before) || p[1] == '/')) return p;
    p = CommentEnd(p);
  }
}

// The same, with the common case (white space, then no '/') kept in line.
inline const unsigned char* SkipSpaceAndComments(const unsigned char* start) {
  const unsigned char* p = start;
  while (kClasses[*p] & kSpace) ++p;
  return *p == '/' ? SkipSpaceAndCommentsFrom(start) : p;
}

// ---- word scans: eight bytes at a time, where the text surely holds them ----

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the word scans read the first byte as the lowest");
constexpr uint64_t kOnes = 0x0101010101010101ull;
constexpr uint64_t kHighs = 0x8080808080808080ull;

// The high bit of every byte of `w` that equals `c`, and no other bit.
inline uint64_t BytesEqual(uint64_t w, unsigned char c) {
  const uint64_t t = w ^ (kOnes * c);
  return ~(((t & ~kHighs) + ~kHighs) | t) & kHighs;
}

// Bytes that end a plain token: below 33, 0x80 and above, a double quote, a brace.
inline uint64_t PlainStops(uint64_t w) {
  const uint64_t below33 = ~((w & ~kHighs) + kOnes * (0x80 - 33)) & kHighs;
  return below33 | (w & kHighs) | BytesEqual(w, '"') | BytesEqual(w, '{') | BytesEqual(w, '}');
}

// Bytes that may end a quoted token: all below 14 (the end of the text and the line ends among them) and
// double quotes. The others below 14, a tab say, are passed over by the caller.
inline uint64_t QuotedStops(uint64_t w) {
  const uint64_t below14 = ~((w & ~kHighs) + kOnes * (0x80 - 14)) & ~w & kHighs;
  return below14 | BytesEqual(w, '"');
}

// Where a word of eight bytes may be read in a text that ends in a zero byte, at a place before that zero.
// A word that stays in the page of its first byte is readable, as that page holds text: a large text is
// read once, not first measured. The sanitizer build measures the text instead, as it rightly reports a
// word read past the end of an allocation.
class TextEnd {
public:
#if defined(TW_SANITIZE)
  explicit TextEnd(const unsigned char* text) : m_limit(text + strlen(reinterpret_cast<const char*>(text)) + 1) {}
  bool WordFits(const unsigned char* p) const { return m_limit - p >= 8; }

private:
  const unsigned char* m_limit;  // one past the terminating zero
#else
  explicit TextEnd(const unsigned char*) {}
  bool WordFits(const unsigned char* p) const {
    return reinterpret_cast<uintptr_t>(p) % kPageBytes <= kPageBytes - 8;
  }

private:
  static constexpr uintptr_t kPageBytes = 4096;
#endif
};

// The first stop byte of a token: `Stops` marks the bytes of a word that may end it; the class decides.
template <uint64_t (*Stops)(uint64_t), unsigned char kStopClass>
const unsigned char* TokenEnd(const unsigned char* p, TextEnd end) {
  for (;;) {
    if (end.WordFits(p)) {
      uint64_t word;
      memcpy(&word, p, 8);
      if (uint64_t stops = Stops(word)) {
        p += __builtin_ctzll(stops) / 8;
        if (kClasses[*p] & kStopClass) return p;
        ++p;
        continue;
      }
      p += 8;
      continue;
    }
    if (kClasses[*p] & kStopClass) return p;
    ++p;
  }
}

__attribute__((noinline, cold)) void ReportOverflow(size_t lostBytes) {
  while (lostBytes-- > 0) s_errors.Report(" ReadToken overflow");
}

// The bytes of a token that are kept: the first 1023; every byte beyond is reported and dropped.
inline size_t KeptLength(const unsigned char* begin, const unsigned char* end) {
  const size_t n = size_t(end - begin);
  if (n < size_t(kTokenSize)) return n;
  ReportOverflow(n - size_t(kTokenSize - 1));
  return size_t(kTokenSize - 1);
}

// A token's bytes with a terminating zero, in the token buffer (which they may already be in).
const char* TokenText(const unsigned char* begin, size_t length) {
  memmove(s_token, begin, length);
  s_token[length] = '\0';
  return s_token;
}

// Names met lately, by their exact bytes. A data file names the same keys in every record, and code sets the
// same keys on every event; they find their symbols here without a call into the engine's table. A symbol
// never changes its text, so an entry stays right for the life of the process.
class RecentNames {
public:
  // The symbol of the `length` bytes at `source` (at most 1023 bytes, followed somewhere by a zero byte that
  // `end` bounds). Up to 24 bytes, the three words that cover a name are the name. Two names share a set;
  // the one found last stands first.
  int SymbolOf(const unsigned char* source, size_t length, TextEnd end) {
    if (length > kLongest) return System()->GetSymbolForString(TokenText(source, length));
    Entry key{{0, 0, 0}, uint32_t(length), -1};
    if (length >= 8) {
      memcpy(&key.words[0], source, 8);
      memcpy(&key.words[1], source + std::min<size_t>(8, length - 8), 8);
      memcpy(&key.words[2], source + length - 8, 8);
    } else if (end.WordFits(source)) {
      memcpy(&key.words[0], source, 8);
      key.words[0] &= (uint64_t(1) << (8 * length)) - 1;
    } else {
      for (size_t i = 0; i < length; ++i) key.words[0] |= uint64_t(source[i]) << (8 * i);
    }
    const uint64_t mix = key.words[0] ^ (key.words[1] >> 1) ^ (key.words[2] >> 2) ^ length;
    Entry* set = m_sets[(mix * 0x9E3779B97F4A7C15ull) >> (64 - kSetBits)];
    if (set[0].Names(key)) return set[0].symbol;
    if (set[1].Names(key)) {
      std::swap(set[0], set[1]);
    } else {
      set[1] = set[0];
      key.symbol = System()->GetSymbolForString(TokenText(source, length));
      set[0] = key;
    }
    return set[0].symbol;
  }

  static constexpr size_t kLongest = 24;

private:
  static constexpr int kSetBits = 9;
  struct Entry {
    uint64_t words[3] = {0, 0, 0};
    uint32_t length = ~0u;  // no name yet
    int symbol = -1;
    bool Names(const Entry& key) const {
      return length == key.length && words[0] == key.words[0] && words[1] == key.words[1] &&
             words[2] == key.words[2];
    }
  };
  Entry m_sets[1 << kSetBits][2];
} s_recentNames;

int SymbolOf(const char* name) {
  const size_t length = strlen(name);
  if (length > RecentNames::kLongest) return System()->GetSymbolForString(name);
  const auto* bytes = reinterpret_cast<const unsigned char*>(name);
  return s_recentNames.SymbolOf(bytes, length, TextEnd(bytes));
}

}  // namespace

// A token as the lexer gives it: its bytes in the text, not followed by a zero byte.
struct KeyValuesToken {
  const char* text = nullptr;  // null: no token (the end of the text, or a fault)
  size_t length = 0;
  bool quoted = false;

  bool IsBrace(char brace) const { return !quoted && length == 1 && text[0] == brace; }
  // The bytes with a terminating zero, in the token buffer: valid until the next call.
  const char* Terminated() const { return TokenText(reinterpret_cast<const unsigned char*>(text), length); }
};

class KeyValuesLexer {
public:
  explicit KeyValuesLexer(const char* text)
      : m_p(reinterpret_cast<const unsigned char*>(text)), m_end(m_p) {}
  bool Stopped() const { return !m_p; }
  void Stop() { m_p = nullptr; }

  int Symbol(const KeyValuesToken& token) const {
    return s_recentNames.SymbolOf(reinterpret_cast<const unsigned char*>(token.text), token.length, m_end);
  }

  __attribute__((always_inline)) KeyValuesToken Next() {
    KeyValuesToken token;
    if (!m_p || !*m_p) return token;
    const unsigned char* p = SkipSpaceAndComments(m_p);
    if (!*p) {
      m_p = p;
      return token;
    }
    if (*p == '"') {
      m_p = ReadQuoted(p + 1, token);
      return token;
    }
    token.text = reinterpret_cast<const char*>(p);
    if (*p == '{' || *p == '}') {
      token.length = 1;
      m_p = p + 1;
      return token;
    }
    const unsigned char* end = TokenEnd<PlainStops, kEndsPlain>(p, m_end);
    token.length = KeptLength(p, end);
    m_p = end;
    return token;
  }

private:
  // A line end inside the quotes ends the token there and stays unread; the end of the text gives none.
  const unsigned char* ReadQuoted(const unsigned char* begin, KeyValuesToken& token) {
    const unsigned char* end = TokenEnd<QuotedStops, kEndsQuoted>(begin, m_end);
    token.length = KeptLength(begin, end);
    token.quoted = true;
    if (*end == '"') {
      token.text = reinterpret_cast<const char*>(begin);
      return end + 1;
    }
    if (*end) {
      s_errors.Report("unexpected CR/LF in string");
      token.text = reinterpret_cast<const char*>(begin);
      return end;
    }
    s_errors.Report("ReadToken unexpected EOF in quoted string");
    return end;
  }

  const unsigned char* m_p;
  TextEnd m_end;
};

namespace {

// ---- value types ----

// A number in plain decimal notation: sign, digits, fraction, exponent. Hex, "inf" and "nan" stay text.
bool IsDecimalNumber(const char* t) {
  if (*t == '+' || *t == '-') ++t;
  bool digits = false;
  while (isdigit(static_cast<unsigned char>(*t))) ++t, digits = true;
  if (*t == '.') {
    ++t;
    while (isdigit(static_cast<unsigned char>(*t))) ++t, digits = true;
  }
  if (!digits) return false;
  if (*t == 'e' || *t == 'E') {
    ++t;
    if (*t == '+' || *t == '-') ++t;
    if (!isdigit(static_cast<unsigned char>(*t))) return false;
    while (isdigit(static_cast<unsigned char>(*t))) ++t;
  }
  return *t == '\0';
}

enum class ValueKind { kText, kInt, kFloat, kUnsure };

// White space as strtol skips it.
inline bool IsCSpace(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The type rule: an integer when strtol takes the whole token and it fits in 32 bits, a float when it is a
// decimal number that strtol doesn't take whole (its value strtof's), else text.
// Only a token that starts so can be a number, leading white space included.
inline bool MayBeNumber(unsigned char first) {
  return (first >= '0' && first <= '9') || first == '-' || first == '+' || first == '.' || IsCSpace(first);
}

// The rule applied by the library's readers, on a terminated token.
ValueKind ClassifyValue(const char* token, int& asInt, float& asFloat) {
  char* intEnd = nullptr;
  errno = 0;
  const long asLong = strtol(token, &intEnd, 10);
  if (*intEnd == '\0') {
    if (errno != 0 || asLong < INT_MIN || asLong > INT_MAX) return ValueKind::kText;
    asInt = int(asLong);
    return ValueKind::kInt;
  }
  if (!IsDecimalNumber(token)) return ValueKind::kText;
  asFloat = strtof(token, nullptr);
  return ValueKind::kFloat;
}

// The same rule read straight from the token's bytes for the common numbers: a sign, digits and a point,
// no white space or exponent. A decimal whose digits (trailing zeros of the fraction dropped) are at most
// 2^24 with at most ten of them behind the point is one division of two exact floats, which rounds as
// strtof does. kUnsure leaves every other token to ClassifyValue.
ValueKind ReadNumber(const char* token, size_t length, int& asInt, float& asFloat) {
  constexpr float kPowersOfTen[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
  constexpr int kMaxDigits = 18;  // what a uint64_t holds whatever the digits
  const char* p = token;
  const char* end = token + length;
  if (IsCSpace(static_cast<unsigned char>(*p))) return ValueKind::kUnsure;
  const bool negative = *p == '-';
  if (*p == '+' || *p == '-') ++p;
  uint64_t mantissa = 0;  // wraps past kMaxDigits digits, where it is not used
  const char* run = p;
  for (; p < end && unsigned(*p - '0') < 10; ++p) mantissa = mantissa * 10 + unsigned(*p - '0');
  int digits = int(p - run);
  int fraction = -1;
  if (p < end && *p == '.') {
    run = ++p;
    while (p < end && unsigned(*p - '0') < 10) ++p;
    digits += int(p - run);
    const char* last = p;
    while (last > run && last[-1] == '0') --last;  // trailing zeros of the fraction change nothing
    fraction = int(last - run);
    for (; run < last; ++run) mantissa = mantissa * 10 + unsigned(*run - '0');
  }
  if (digits == 0) return ValueKind::kText;
  if (digits > kMaxDigits || p != end) return ValueKind::kUnsure;
  if (fraction < 0) {
    if (mantissa > (negative ? uint64_t(INT_MAX) + 1 : uint64_t(INT_MAX))) return ValueKind::kText;
    asInt = negative ? int(-int64_t(mantissa)) : int(mantissa);
    return ValueKind::kInt;
  }
  if (mantissa > (uint64_t(1) << 24) || fraction > 10) return ValueKind::kUnsure;
  const float value = float(mantissa) / kPowersOfTen[fraction];
  asFloat = negative ? -value : value;
  return ValueKind::kFloat;
}

// ---- the writer ----

// Text of a name or value as the writer puts it between quotes.
void AppendConverted(std::string& out, const char* text, bool escapes) {
  for (const char* p = text; *p; ++p) {
    if (*p == '"' || (escapes && *p == '\\')) out += '\\';
    out += *p;
  }
}

void AppendTabs(std::string& out, int n) { out.append(size_t(n), '\t'); }

// One line `"name"\t\t"value"` at the given indent; texts are converted, numbers written as they are.
void AppendPair(std::string& out, int indent, const char* name, const char* value, bool text, bool escapes) {
  AppendTabs(out, indent);
  out += '"';
  if (text)
    AppendConverted(out, name, escapes);
  else
    out += name;
  out += "\"\t\t\"";
  if (text)
    AppendConverted(out, value, escapes);
  else
    out += value;
  out += "\"\n";
}

}  // namespace

// ---- memory and life ----

void* KeyValues::operator new(size_t size) { return System()->AllocKeyValuesMemory(int(size)); }
void KeyValues::operator delete(void* memory) { System()->FreeKeyValuesMemory(memory); }

KeyValues::KeyValues(const char* name) : m_pValue(nullptr) { SetName(name); }

KeyValues::~KeyValues() {
  if (m_pSub) DestroyChain(m_pSub);
  if (m_pPeer) DestroyChain(m_pPeer);
  if (m_sValue) ClearValue();
  if (m_handle) Handles().Remove(m_handle);
}

void KeyValues::deleteThis() { delete this; }

// Each node of the chain goes before its children, in the order the reader made them, so that the node
// memory is handed back (and out again to the next tree) in one sweep. A node's value and handle are let go
// here, which leaves its destructor nothing to do, so that only its memory is handed back. Recursion follows
// the depth only.
void KeyValues::DestroyChain(KeyValues* node) {
  IKeyValuesSystem* system = System();
  while (node) {
    KeyValues* sub = node->m_pSub;
    KeyValues* next = node->m_pPeer;
    s_texts.Free(node->m_sValue);
    if (node->m_handle) Handles().Remove(node->m_handle);
    system->FreeKeyValuesMemory(node);
    if (sub) DestroyChain(sub);
    node = next;
  }
}

void KeyValues::ClearValue() {
  s_texts.Free(m_sValue);
  m_sValue = nullptr;
}

uint64_t KeyValues::GetHandle() {
  if (!m_handle) m_handle = Handles().Add(this);
  return m_handle;
}

KeyValues* KeyValues::FromHandle(uint64_t handle) { return Handles().Get(handle); }

// ---- names and lists ----

const char* KeyValues::GetName() const {
  return m_iKeyName == -1 ? "" : System()->GetStringForSymbol(m_iKeyName);
}

void KeyValues::SetName(const char* name) {
  m_iKeyName = name ? SymbolOf(name) : -1;
}

KeyValues* KeyValues::FindKey(int symbol) const {
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer)
    if (sub->m_iKeyName == symbol) return sub;
  return nullptr;
}

KeyValues* KeyValues::FindKey(const char* name, bool create) {
  if (!name || !name[0]) return this;

  const char* rest = strchr(name, '/');
  char part[kPathPartMax + 1];
  const char* lookup = name;
  if (rest) {
    size_t n = size_t(rest - name);
    if (n > kPathPartMax) return nullptr;
    memcpy(part, name, n);
    part[n] = '\0';
    lookup = part;
    ++rest;
  }

  int symbol = SymbolOf(lookup);
  KeyValues* last = nullptr;
  KeyValues* found = nullptr;
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer) {
    last = sub;
    if (sub->m_iKeyName == symbol) {
      found = sub;
      break;
    }
  }

  if (!found) {
    if (!create) return nullptr;
    found = new KeyValues(lookup);
    found->m_bHasEscapeSequences = m_bHasEscapeSequences;
    if (last)
      last->m_pPeer = found;
    else
      m_pSub = found;
    m_iDataType = TYPE_NONE;
    m_pValue = nullptr;
  }
  return rest ? found->FindKey(rest, create) : found;
}

KeyValues* KeyValues::CreateKey(const char* name) {
  KeyValues* key = new KeyValues(name);
  key->m_bHasEscapeSequences = m_bHasEscapeSequences;
  AddSubKey(key);
  return key;
}

// Names are read as 64-bit numbers, so that one above a child named 2147483647 is 2147483648; past the
// 64-bit range a name reads as its largest value and the next number stays there.
KeyValues* KeyValues::CreateNewKey() {
  long long next = 1;
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer) {
    long long value = strtoll(sub->GetName(), nullptr, 10);
    if (next <= value) next = value == LLONG_MAX ? value : value + 1;
  }
  char name[24];
  snprintf(name, sizeof name, "%lld", next);
  return CreateKey(name);
}

void KeyValues::AddSubKey(KeyValues* sub) {
  if (!m_pSub) {
    m_pSub = sub;
    return;
  }
  KeyValues* last = m_pSub;
  while (last->m_pPeer) last = last->m_pPeer;
  last->m_pPeer = sub;
}

void KeyValues::RemoveSubKey(KeyValues* sub) {
  if (!sub) return;
  if (m_pSub == sub) {
    m_pSub = sub->m_pPeer;
  } else {
    for (KeyValues* p = m_pSub; p; p = p->m_pPeer) {
      if (p->m_pPeer == sub) {
        p->m_pPeer = sub->m_pPeer;
        break;
      }
    }
  }
  sub->m_pPeer = nullptr;
}

KeyValues* KeyValues::GetFirstTrueSubKey() const {
  KeyValues* k = m_pSub;
  while (k && k->m_iDataType != TYPE_NONE) k = k->m_pPeer;
  return k;
}

KeyValues* KeyValues::GetNextTrueSubKey() const {
  KeyValues* k = m_pPeer;
  while (k && k->m_iDataType != TYPE_NONE) k = k->m_pPeer;
  return k;
}

KeyValues* KeyValues::GetFirstValue() const {
  KeyValues* k = m_pSub;
  while (k && k->m_iDataType == TYPE_NONE) k = k->m_pPeer;
  return k;
}

KeyValues* KeyValues::GetNextValue() const {
  KeyValues* k = m_pPeer;
  while (k && k->m_iDataType == TYPE_NONE) k = k->m_pPeer;
  return k;
}

// ---- values ----

const char* KeyValues::GetString(const char* name, const char* defaultValue) {
  KeyValues* key = FindKey(name, false);
  if (!key) return defaultValue;
  char buf[64];
  switch (key->m_iDataType) {
    case TYPE_STRING:
      return key->m_sValue ? key->m_sValue : "";
    case TYPE_INT:
      snprintf(buf, sizeof buf, "%d", key->m_iValue);
      break;
    case TYPE_PTR:
      snprintf(buf, sizeof buf, "%d", int(reinterpret_cast<intptr_t>(key->m_pValue)));
      break;
    case TYPE_FLOAT:
      snprintf(buf, sizeof buf, "%f", double(key->m_flValue));
      break;
    default:
      return defaultValue;
  }
  key->SetString(nullptr, buf);
  return key->m_sValue;
}

int KeyValues::GetInt(const char* name, int defaultValue) {
  KeyValues* key = FindKey(name, false);
  if (!key) return defaultValue;
  switch (key->m_iDataType) {
    case TYPE_STRING:
      return atoi(key->m_sValue ? key->m_sValue : "");
    case TYPE_FLOAT: {
      float f = key->m_flValue;
      if (!(f > -2147483648.0f && f < 2147483648.0f)) return f > 0 ? INT_MAX : (f < 0 ? INT_MIN : 0);
      return int(f);
    }
    case TYPE_PTR:
      return int(reinterpret_cast<intptr_t>(key->m_pValue));
    default:
      return key->m_iValue;
  }
}

float KeyValues::GetFloat(const char* name, float defaultValue) {
  KeyValues* key = FindKey(name, false);
  if (!key) return defaultValue;
  switch (key->m_iDataType) {
    case TYPE_STRING:
      return float(atof(key->m_sValue ? key->m_sValue : ""));
    case TYPE_INT:
      return float(key->m_iValue);
    case TYPE_FLOAT:
      return key->m_flValue;
    default:
      return 0.0f;
  }
}

Color KeyValues::GetColor(const char* name) {
  KeyValues* key = FindKey(name, false);
  if (!key || key->m_iDataType != TYPE_COLOR) return Color();
  return Color(key->m_Color[0], key->m_Color[1], key->m_Color[2], key->m_Color[3]);
}

KeyValues::types_t KeyValues::GetDataType(const char* name) {
  KeyValues* key = FindKey(name, false);
  return key ? types_t(key->m_iDataType) : TYPE_NONE;
}

bool KeyValues::IsEmpty(const char* name) {
  KeyValues* key = FindKey(name, false);
  return !key || (key->m_iDataType == TYPE_NONE && !key->m_pSub);
}

void KeyValues::SetString(const char* name, const char* value) {
  KeyValues* key = FindKey(name, true);
  if (!key) return;
  char* copy = NewValueText(value ? value : "");  // copied first: value may be this key's own text
  key->ClearValue();
  key->m_sValue = copy;
  key->m_iDataType = TYPE_STRING;
}

void KeyValues::SetInt(const char* name, int value) {
  KeyValues* key = FindKey(name, true);
  if (!key) return;
  key->m_iValue = value;
  key->m_iDataType = TYPE_INT;
}

void KeyValues::SetFloat(const char* name, float value) {
  KeyValues* key = FindKey(name, true);
  if (!key) return;
  key->m_flValue = value;
  key->m_iDataType = TYPE_FLOAT;
}

void KeyValues::SetColor(const char* name, Color value) {
  KeyValues* key = FindKey(name, true);
  if (!key) return;
  key->m_Color[0] = value.r;
  key->m_Color[1] = value.g;
  key->m_Color[2] = value.b;
  key->m_Color[3] = value.a;
  key->m_iDataType = TYPE_COLOR;
}

// ---- copying ----

KeyValues* KeyValues::MakeCopy() const {
  KeyValues* copy = new KeyValues(nullptr);
  copy->m_iKeyName = m_iKeyName;
  copy->m_iDataType = m_iDataType;
  copy->m_bHasEscapeSequences = m_bHasEscapeSequences;
  copy->m_pValue = m_pValue;
  if (m_sValue) copy->m_sValue = NewValueText(m_sValue);
  KeyValues* last = nullptr;
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer) {
    KeyValues* subCopy = sub->MakeCopy();
    if (last)
      last->m_pPeer = subCopy;
    else
      copy->m_pSub = subCopy;
    last = subCopy;
  }
  return copy;
}

void KeyValues::RecursiveCopyKeyValues(KeyValues& source) {
  KeyValues* formerPeers = m_pPeer;
  m_pPeer = nullptr;
  KeyValues* dest = this;
  for (KeyValues* src = &source; src; src = src->m_pPeer) {
    // The node itself: name, then value or a copy of the children.
    for (KeyValues* sub = dest->m_pSub; sub;) {
      KeyValues* next = sub->m_pPeer;
      sub->m_pPeer = nullptr;
      delete sub;
      sub = next;
    }
    dest->m_pSub = nullptr;
    dest->m_iKeyName = src->m_iKeyName;
    if (!src->m_pSub) {
      dest->ClearValue();
      dest->m_iDataType = src->m_iDataType;
      dest->m_pValue = src->m_pValue;
      char buf[64];
      switch (src->m_iDataType) {
        case TYPE_STRING:
          dest->m_sValue = NewValueText(src->m_sValue ? src->m_sValue : "");
          break;
        case TYPE_INT:
          snprintf(buf, sizeof buf, "%d", src->m_iValue);
          dest->m_sValue = NewValueText(buf);
          break;
        case TYPE_FLOAT:
          snprintf(buf, sizeof buf, "%f", double(src->m_flValue));
          dest->m_sValue = NewValueText(buf);
          break;
        default:
          break;
      }
    } else {
      dest->m_pSub = new KeyValues(nullptr);
      dest->m_pSub->RecursiveCopyKeyValues(*src->m_pSub);
    }
    if (src->m_pPeer) {
      dest->m_pPeer = new KeyValues(nullptr);
      dest = dest->m_pPeer;
    }
  }
  dest->m_pPeer = formerPeers;
}

// ---- the text format: reading ----

bool KeyValues::LoadFromFile(IBaseFileSystem* filesystem, const char* resourceName, const char* pathID) {
  if (!filesystem || !resourceName) return false;
  FileHandle_t file = filesystem->Open(resourceName, "rb", pathID);
  if (!file) return false;
  int size = int(filesystem->Size(file));
  if (s_includes.depth > 0) {
    s_includes.bytes += size_t(std::max(size, 0));
    if (s_includes.bytes > kMaxIncludedBytes) {
      filesystem->Close(file);
      StopIncludes();
      return false;
    }
  }
  char* text = static_cast<char*>(MemAllocScratch(size + 1));
  int read = filesystem->Read(text, size, file);
  text[std::max(0, std::min(read, size))] = '\0';
  filesystem->Close(file);
  bool ok = LoadFromBuffer(resourceName, text, filesystem, nullptr);
  MemFreeScratch();
  return ok;
}

// Reads the file `includeName` beside `resourceName` into a new tree; null when it can't be read.
KeyValues* KeyValues::ParseIncludedKeys(const char* resourceName, const char* includeName,
                                        IBaseFileSystem* filesystem, const char* pathID, int listCount) {
  if (!filesystem || s_includes.exhausted) return nullptr;
  char path[512];
  Q_strncpy(path, resourceName ? resourceName : "", sizeof path);
  char* slash = std::max(strrchr(path, '/'), strrchr(path, '\\'));
  if (slash)
    slash[1] = '\0';
  else
    path[0] = '\0';
  size_t used = strlen(path);
  Q_strncpy(path + used, includeName, int(sizeof path - used));

  if (s_includes.depth >= kMaxIncludeDepth || listCount >= kMaxIncludesPerFile) {
    DevMsg(1, "KeyValues::ParseIncludedKeys: Couldn't load included keyvalue file %s\n", path);
    return nullptr;
  }
  if (++s_includes.files > kMaxIncludedFiles) {
    StopIncludes();
    return nullptr;
  }
  KeyValues* included = new KeyValues(path);
  included->m_bHasEscapeSequences = m_bHasEscapeSequences;
  ++s_includes.depth;
  bool ok = included->LoadFromFile(filesystem, path, pathID);
  --s_includes.depth;
  if (ok) return included;
  if (!s_includes.exhausted)
    DevMsg(1, "KeyValues::ParseIncludedKeys: Couldn't load included keyvalue file %s\n", path);
  included->deleteThis();
  return nullptr;
}

bool KeyValues::LoadFromBuffer(const char* resourceName, const char* buffer, IBaseFileSystem* filesystem,
                               const char* pathID) {
  if (s_includes.depth == 0) s_includes = IncludeBudget{0, 0, 0, false, resourceName ? resourceName : ""};
  KeyValues* includes[kMaxIncludesPerFile];
  int includeCount = 0;

  s_errors.fileName = resourceName ? resourceName : "";
  s_errors.deepest = 0;

  KeyValues* current = this;
  KeyValues* previous = nullptr;
  KeyValuesLexer lexer(buffer);
  while (!lexer.Stopped() && !s_includes.exhausted) {
    KeyValuesToken token = lexer.Next();
    if (lexer.Stopped() || !token.text || !token.length) break;

    if (token.length == 8 && Q_strncasecmp(token.text, "#include", 8) == 0) {
      token = lexer.Next();
      if (token.text && token.length) {
        char name[kTokenSize];
        Q_strncpy(name, token.Terminated(), sizeof name);
        if (KeyValues* included = ParseIncludedKeys(resourceName, name, filesystem, pathID, includeCount))
          includes[includeCount++] = included;
        s_errors.fileName = resourceName ? resourceName : "";
      } else {
        s_errors.Report("#include is NULL ");
      }
      continue;
    }

    KeyValues* node = current;
    if (node) {
      node->m_iKeyName = lexer.Symbol(token);
    } else {
      node = new KeyValues(token.Terminated());
      node->m_bHasEscapeSequences = m_bHasEscapeSequences;
      if (previous) previous->SetNextKey(node);
    }
    token = lexer.Next();
    if (token.text && token.IsBrace('{'))
      node->RecursiveLoadFromBuffer(lexer, 0);
    else
      s_errors.Report("LoadFromBuffer: missing {");
    previous = node;
    current = nullptr;
  }

  KeyValues* tail = this;
  while (tail->m_pPeer) tail = tail->m_pPeer;
  for (int i = 0; i < includeCount; ++i) {
    tail->m_pPeer = includes[i];
    while (tail->m_pPeer) tail = tail->m_pPeer;
  }
  s_errors.fileName = "";
  s_errors.deepest = 0;
  return true;
}

// Reads the body of this node up to its closing brace. A fault stops the lexer, except a "}" in place of a
// value, after which the reader above goes on.
void KeyValues::RecursiveLoadFromBuffer(KeyValuesLexer& lexer, int depth) {
  s_errors.Push(m_iKeyName);
  int keyEntry = s_errors.Push(-1);
  KeyValues* last = m_pSub;
  while (last && last->m_pPeer) last = last->m_pPeer;

  for (;;) {
    KeyValuesToken token = lexer.Next();
    if (!token.text) {
      s_errors.Report("RecursiveLoadFromBuffer:  got EOF instead of keyname");
      lexer.Stop();
      break;
    }
    if (!token.length) {
      s_errors.Report("RecursiveLoadFromBuffer:  got empty keyname");
      lexer.Stop();
      break;
    }
    if (token.IsBrace('}')) break;

    KeyValues* key = new KeyValues(nullptr);
    key->m_iKeyName = lexer.Symbol(token);
    key->m_bHasEscapeSequences = m_bHasEscapeSequences;
    if (last)
      last->m_pPeer = key;
    else
      m_pSub = key;
    last = key;
    s_errors.Reset(keyEntry, key->m_iKeyName);

    token = lexer.Next();
    if (!token.text) {
      s_errors.Report("RecursiveLoadFromBuffer:  got NULL key");
      break;
    }
    if (token.IsBrace('}')) {
      s_errors.Report("RecursiveLoadFromBuffer:  got } in key");
      break;
    }
    if (token.IsBrace('{')) {
      if (depth + 1 >= kMaxNesting) {
        s_errors.Report("RecursiveLoadFromBuffer:  nesting too deep");
        lexer.Stop();
        break;
      }
      key->RecursiveLoadFromBuffer(lexer, depth + 1);
      if (lexer.Stopped()) break;
      continue;
    }
    key->SetValueFromToken(token.text, token.length);
  }
  s_errors.Pop();
  s_errors.Pop();
}

// Text values take their bytes straight from the text; a value that may be a number is read from its bytes,
// or, where that can't tell, classified on a terminated copy, as the library's number readers want one.
void KeyValues::SetValueFromToken(const char* token, size_t length) {
  int asInt = 0;
  float asFloat = 0.0f;
  ValueKind kind = ValueKind::kText;
  const char* text = token;
  if (length && MayBeNumber(static_cast<unsigned char>(token[0]))) {
    kind = ReadNumber(token, length, asInt, asFloat);
    if (kind == ValueKind::kUnsure) {
      text = TokenText(reinterpret_cast<const unsigned char*>(token), length);
      kind = ClassifyValue(text, asInt, asFloat);
    }
  }
  switch (kind) {
    case ValueKind::kInt:
      m_iValue = asInt;
      m_iDataType = TYPE_INT;
      break;
    case ValueKind::kFloat:
      m_flValue = asFloat;
      m_iDataType = TYPE_FLOAT;
      break;
    default:
      m_sValue = NewValueText(text, length);
      m_iDataType = TYPE_STRING;
      break;
  }
}

// ---- the text format: writing ----

bool KeyValues::SaveToFile(IBaseFileSystem* filesystem, const char* resourceName, const char* pathID) {
  FileHandle_t file = filesystem && resourceName ? filesystem->Open(resourceName, "wb", pathID) : nullptr;
  if (!file) {
    DevMsg(1, "KeyValues::SaveToFile: couldn't open file \"%s\" in path \"%s\".\n",
           resourceName ? resourceName : "NULL", pathID ? pathID : "NULL");
    return false;
  }
  // The whole text is built first, so that a large group costs one write.
  std::string text;
  text.reserve(4096);
  RecursiveSaveToFile(text, 0);
  filesystem->Write(text.data(), int(text.size()), file);
  filesystem->Close(file);
  return true;
}

void KeyValues::RecursiveSaveToFile(std::string& out, int indent) {
  const bool escapes = m_bHasEscapeSequences;
  AppendTabs(out, indent);
  out += '"';
  AppendConverted(out, GetName(), escapes);
  out += "\"\n";
  AppendTabs(out, indent);
  out += "{\n";
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer) {
    if (sub->m_pSub) {
      sub->RecursiveSaveToFile(out, indent + 1);
      continue;
    }
    char number[64];
    switch (sub->m_iDataType) {
      case TYPE_STRING:
        if (sub->m_sValue && sub->m_sValue[0]) AppendPair(out, indent + 1, sub->GetName(), sub->m_sValue, true, escapes);
        break;
      case TYPE_INT:
        snprintf(number, sizeof number, "%d", sub->m_iValue);
        AppendPair(out, indent + 1, sub->GetName(), number, false, escapes);
        break;
      case TYPE_FLOAT:
        snprintf(number, sizeof number, "%f", double(sub->m_flValue));
        AppendPair(out, indent + 1, sub->GetName(), number, false, escapes);
        break;
      case TYPE_COLOR:
        DevMsg(1, "KeyValues::RecursiveSaveToFile: TODO, missing code for TYPE_COLOR.\n");
        break;
      default:
        break;
    }
  }
  AppendTabs(out, indent);
  out += "}\n";
}
