// KeyValues nodes, their lookups and typed values, copying, and the text format's reader and writer.
// The reader keeps one static token buffer and one error stack, so it isn't re-entrant inside a token;
// an #include runs a nested load between tokens, which is safe.
#include "KeyValues.h"

#include <algorithm>
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
#include "tier1/strtools.h"
#include "vstdlib.h"

namespace {

constexpr int kTokenSize = 1024;       // a token keeps at most 1023 bytes
constexpr int kPathPartMax = 255;      // longest path component before a '/' in FindKey
constexpr int kErrorStackSize = 64;
constexpr int kMaxNesting = 256;       // deeper braces are refused rather than recursed into
constexpr int kMaxIncludeDepth = 8;    // bounds #include cycles

char s_token[kTokenSize];

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
  void Report(const char* message) const {
    DevMsg(1, "KeyValues Error: %s in file %s\n", message, fileName);
    for (int i = 0; i < deepest; ++i) {
      if (entries[i] == -1) continue;
      const char* name = KeyValuesSystem()->GetStringForSymbol(entries[i]);
      if (i < depth)
        DevMsg(1, "%s, ", name);
      else
        DevMsg(1, "(*%s*), ", name);
    }
    DevMsg(1, "\n");
  }
} s_errors;

int s_includeDepth = 0;

HandleTable<KeyValues>& Handles() {
  static auto* table = new HandleTable<KeyValues>;  // never destroyed: nodes may outlive static destruction
  return *table;
}

inline bool IsSpace(unsigned char c) { return c >= 1 && c <= 32; }

// The lexer. Null at the end of the text; otherwise a token in s_token, valid until the next call.
const char* ReadToken(const char*& position, bool& wasQuoted, bool escapes) {
  wasQuoted = false;
  if (!position || !*position) return nullptr;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(position);

  // White space and comments. Right at the start of a read a single '/' opens a comment; behind white
  // space it takes two. A comment ends at a line feed or at a byte of 0x80 and above.
  for (bool atStart = true;; atStart = false) {
    const unsigned char* before = p;
    while (IsSpace(*p)) ++p;
    if (!*p) {
      position = reinterpret_cast<const char*>(p);
      return nullptr;
    }
    bool skipped = p != before;
    if (*p == '/' && ((atStart && !skipped) || p[1] == '/')) {
      while (*p && *p != '\n' && *p < 0x80) ++p;
      if (!*p) {
        position = reinterpret_cast<const char*>(p);
        return nullptr;
      }
      continue;
    }
    break;
  }

  int count = 0;
  auto put = [&count](unsigned char c) {
    if (count < kTokenSize - 1)
      s_token[count++] = char(c);
    else
      s_errors.Report(" ReadToken overflow");
  };

  if (*p == '"') {
    wasQuoted = true;
    ++p;
    for (;;) {
      unsigned char c = *p;
      if (!c) {
        s_errors.Report("ReadToken unexpected EOF in quoted string");
        position = reinterpret_cast<const char*>(p);
        return nullptr;
      }
      if (c == '\r' || c == '\n') {
        s_errors.Report("unexpected CR/LF in string");
        break;
      }
      ++p;
      if (c == '"') break;
      if (c == '\\' && escapes) {
        unsigned char e = *p;
        if (!e) {
          s_errors.Report("ReadToken unexpected EOF after \\");
          position = reinterpret_cast<const char*>(p);
          return nullptr;
        }
        ++p;
        switch (e) {
          case '"': case '\\': c = e; break;
          case 'n': c = '\n'; break;
          case 't': c = '\t'; break;
          default: s_errors.Report("ReadToken illegal character after \\"); c = e; break;
        }
      }
      put(c);
    }
  } else if (*p == '{' || *p == '}') {
    put(*p++);
  } else {
    while (*p && *p != '"' && *p != '{' && *p != '}' && *p > 32 && *p < 0x80) put(*p++);
  }
  s_token[count] = '\0';
  position = reinterpret_cast<const char*>(p);
  return s_token;
}

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

// Text of a name or value as the writer puts it between quotes.
void AppendConverted(std::string& out, const char* text, bool escapes) {
  for (const char* p = text; *p; ++p) {
    if (*p == '"' || (escapes && *p == '\\')) out += '\\';
    out += *p;
  }
}

}  // namespace

// ---- memory and life ----

void* KeyValues::operator new(size_t size) { return KeyValuesSystem()->AllocKeyValuesMemory(int(size)); }
void KeyValues::operator delete(void* memory) { KeyValuesSystem()->FreeKeyValuesMemory(memory); }

KeyValues::KeyValues(const char* name) : m_pValue(nullptr) { SetName(name); }

KeyValues::~KeyValues() {
  RemoveEverything();
  if (m_handle) Handles().Remove(m_handle);
}

void KeyValues::deleteThis() { delete this; }

void KeyValues::RemoveEverything() {
  for (KeyValues* sub = m_pSub; sub;) {
    KeyValues* next = sub->m_pPeer;
    sub->m_pPeer = nullptr;
    delete sub;
    sub = next;
  }
  m_pSub = nullptr;
  for (KeyValues* peer = m_pPeer; peer;) {
    KeyValues* next = peer->m_pPeer;
    peer->m_pPeer = nullptr;
    delete peer;
    peer = next;
  }
  m_pPeer = nullptr;
  ClearValue();
}

void KeyValues::ClearValue() {
  free(m_sValue);
  m_sValue = nullptr;
  delete[] m_wsValue;
  m_wsValue = nullptr;
}

uint64_t KeyValues::GetHandle() {
  if (!m_handle) m_handle = Handles().Add(this);
  return m_handle;
}

KeyValues* KeyValues::FromHandle(uint64_t handle) { return Handles().Get(handle); }

// ---- names and lists ----

const char* KeyValues::GetName() const {
  return m_iKeyName == -1 ? "" : KeyValuesSystem()->GetStringForSymbol(m_iKeyName);
}

void KeyValues::SetName(const char* name) {
  m_iKeyName = name ? KeyValuesSystem()->GetSymbolForString(name) : -1;
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

  int symbol = KeyValuesSystem()->GetSymbolForString(lookup);
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

KeyValues* KeyValues::CreateNewKey() {
  int next = 1;
  for (KeyValues* sub = m_pSub; sub; sub = sub->m_pPeer) {
    int value = atoi(sub->GetName());
    if (next <= value) next = value + 1;
  }
  char name[16];
  snprintf(name, sizeof name, "%d", next);
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
  char* copy = CopyText(value ? value : "");  // copied first: value may be this key's own text
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
  if (m_sValue) copy->m_sValue = CopyText(m_sValue);
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
          dest->m_sValue = CopyText(src->m_sValue ? src->m_sValue : "");
          break;
        case TYPE_INT:
          snprintf(buf, sizeof buf, "%d", src->m_iValue);
          dest->m_sValue = CopyText(buf);
          break;
        case TYPE_FLOAT:
          snprintf(buf, sizeof buf, "%f", double(src->m_flValue));
          dest->m_sValue = CopyText(buf);
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
  char* text = static_cast<char*>(MemAllocScratch(size + 1));
  int read = filesystem->Read(text, size, file);
  text[std::max(0, std::min(read, size))] = '\0';
  filesystem->Close(file);
  bool ok = LoadFromBuffer(resourceName, text, filesystem, nullptr);
  MemFreeScratch();
  return ok;
}

namespace {

void ParseIncludedKeys(const char* resourceName, const char* includeName, IBaseFileSystem* filesystem,
                       const char* pathID, bool escapes, KeyValues** list, int& listCount, int listMax) {
  if (!filesystem) return;
  char path[512];
  Q_strncpy(path, resourceName ? resourceName : "", sizeof path);
  char* slash = std::max(strrchr(path, '/'), strrchr(path, '\\'));
  if (slash)
    slash[1] = '\0';
  else
    path[0] = '\0';
  size_t used = strlen(path);
  Q_strncpy(path + used, includeName, int(sizeof path - used));

  if (s_includeDepth >= kMaxIncludeDepth || listCount >= listMax) {
    DevMsg(1, "KeyValues::ParseIncludedKeys: Couldn't load included keyvalue file %s\n", path);
    return;
  }
  KeyValues* included = new KeyValues(path);
  ++s_includeDepth;
  bool ok = included->LoadFromFile(filesystem, path, pathID);
  --s_includeDepth;
  (void)escapes;
  if (ok) {
    list[listCount++] = included;
  } else {
    DevMsg(1, "KeyValues::ParseIncludedKeys: Couldn't load included keyvalue file %s\n", path);
    included->deleteThis();
  }
}

}  // namespace

bool KeyValues::LoadFromBuffer(const char* resourceName, const char* buffer, IBaseFileSystem* filesystem,
                               const char* pathID) {
  constexpr int kMaxIncludes = 64;
  KeyValues* includes[kMaxIncludes];
  int includeCount = 0;

  s_errors.fileName = resourceName ? resourceName : "";
  s_errors.deepest = 0;

  KeyValues* current = this;
  KeyValues* previous = nullptr;
  const char* position = buffer;
  while (position) {
    bool quoted;
    const char* token = ReadToken(position, quoted, m_bHasEscapeSequences);
    if (!position || !token || !token[0]) break;

    if (Q_strcasecmp(token, "#include") == 0) {
      token = ReadToken(position, quoted, m_bHasEscapeSequences);
      if (token && token[0]) {
        char name[kTokenSize];
        Q_strncpy(name, token, sizeof name);
        ParseIncludedKeys(resourceName, name, filesystem, pathID, m_bHasEscapeSequences, includes, includeCount,
                          kMaxIncludes);
        s_errors.fileName = resourceName ? resourceName : "";
      } else {
        s_errors.Report("#include is NULL ");
      }
      continue;
    }

    KeyValues* node = current;
    if (node) {
      node->SetName(token);
    } else {
      node = new KeyValues(token);
      node->m_bHasEscapeSequences = m_bHasEscapeSequences;
      if (previous) previous->SetNextKey(node);
    }
    token = ReadToken(position, quoted, m_bHasEscapeSequences);
    if (token && token[0] == '{' && !token[1] && !quoted)
      node->RecursiveLoadFromBuffer(resourceName, position, 0);
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

void KeyValues::RecursiveLoadFromBuffer(const char* resourceName, const char*& position, int depth) {
  s_errors.Push(m_iKeyName);
  int keyEntry = s_errors.Push(-1);
  KeyValues* last = m_pSub;
  while (last && last->m_pPeer) last = last->m_pPeer;

  for (;;) {
    bool quoted;
    const char* token = ReadToken(position, quoted, m_bHasEscapeSequences);
    if (!token) {
      s_errors.Report("RecursiveLoadFromBuffer:  got EOF instead of keyname");
      position = nullptr;
      break;
    }
    if (!token[0]) {
      s_errors.Report("RecursiveLoadFromBuffer:  got empty keyname");
      position = nullptr;
      break;
    }
    if (token[0] == '}' && !token[1] && !quoted) break;

    KeyValues* key = new KeyValues(token);
    key->m_bHasEscapeSequences = m_bHasEscapeSequences;
    if (last)
      last->m_pPeer = key;
    else
      m_pSub = key;
    last = key;
    s_errors.Reset(keyEntry, key->m_iKeyName);

    token = ReadToken(position, quoted, m_bHasEscapeSequences);
    if (!token) {
      s_errors.Report("RecursiveLoadFromBuffer:  got NULL key");
      break;
    }
    if (token[0] == '}' && !token[1] && !quoted) {
      s_errors.Report("RecursiveLoadFromBuffer:  got } in key");
      break;
    }
    if (token[0] == '{' && !token[1] && !quoted) {
      if (depth + 1 >= kMaxNesting) {
        s_errors.Report("RecursiveLoadFromBuffer:  nesting too deep");
        position = nullptr;
        break;
      }
      key->RecursiveLoadFromBuffer(resourceName, position, depth + 1);
      if (!position) break;
      continue;
    }

    // The value's type: an integer if the whole token is one, a float if it is a decimal number, else text.
    char* intEnd = nullptr;
    errno = 0;
    long asLong = token[0] ? strtol(token, &intEnd, 10) : 0;
    bool isInt = token[0] && *intEnd == '\0' && errno == 0 && asLong >= INT_MIN && asLong <= INT_MAX;
    bool wholeInt = token[0] && *intEnd == '\0';
    if (isInt) {
      key->m_iValue = int(asLong);
      key->m_iDataType = TYPE_INT;
    } else if (!wholeInt && token[0] && IsDecimalNumber(token)) {
      key->m_flValue = strtof(token, nullptr);
      key->m_iDataType = TYPE_FLOAT;
    } else {
      key->m_sValue = CopyText(token);
      key->m_iDataType = TYPE_STRING;
    }
  }
  s_errors.Pop();
  s_errors.Pop();
}

// ---- the text format: writing ----

bool KeyValues::SaveToFile(IBaseFileSystem* filesystem, const char* resourceName, const char* pathID) {
  FileHandle_t file = filesystem && resourceName ? filesystem->Open(resourceName, "wb", pathID) : nullptr;
  if (!file) {
    DevMsg(1, "KeyValues::SaveToFile: couldn't open file \"%s\" in path \"%s\".\n",
           resourceName ? resourceName : "NULL", pathID ? pathID : "NULL");
    return false;
  }
  std::string text;
  text.reserve(4096);
  // The writer builds the whole text first, so that a large group costs one write.
  struct Writer {
    static void Tabs(std::string& out, int n) { out.append(size_t(n), '\t'); }
    static void Node(std::string& out, KeyValues* node, int indent) {
      bool escapes = node->m_bHasEscapeSequences;
      Tabs(out, indent);
      out += '"';
      AppendConverted(out, node->GetName(), escapes);
      out += "\"\n";
      Tabs(out, indent);
      out += "{\n";
      for (KeyValues* sub = node->m_pSub; sub; sub = sub->m_pPeer) {
        if (sub->m_pSub) {
          Node(out, sub, indent + 1);
          continue;
        }
        char number[64];
        switch (sub->m_iDataType) {
          case TYPE_STRING:
            if (sub->m_sValue && sub->m_sValue[0]) {
              Tabs(out, indent + 1);
              out += '"';
              AppendConverted(out, sub->GetName(), escapes);
              out += "\"\t\t\"";
              AppendConverted(out, sub->m_sValue, escapes);
              out += "\"\n";
            }
            break;
          case TYPE_INT:
          case TYPE_FLOAT:
            if (sub->m_iDataType == TYPE_INT)
              snprintf(number, sizeof number, "%d", sub->m_iValue);
            else
              snprintf(number, sizeof number, "%f", double(sub->m_flValue));
            Tabs(out, indent + 1);
            out += '"';
            out += sub->GetName();
            out += "\"\t\t\"";
            out += number;
            out += "\"\n";
            break;
          case TYPE_COLOR:
            DevMsg(1, "KeyValues::RecursiveSaveToFile: TODO, missing code for TYPE_COLOR.\n");
            break;
          default:
            break;
        }
      }
      Tabs(out, indent);
      out += "}\n";
    }
  };
  Writer::Node(text, this, 0);
  filesystem->Write(text.data(), int(text.size()), file);
  filesystem->Close(file);
  return true;
}
