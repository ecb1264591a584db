// CommandArgs and Cmd_Tokenize: the plugin's own record of a tokenized line, filled by the shared
// ParseToken rules. The Python door fills records item by item (python/binder.cpp).
#include "script/commandargs.h"

#include <cstdlib>
#include <cstring>

#include "host/diagnostics.h"
#include "tier1/tokenize.h"

CommandArgs::~CommandArgs() { free(m_store); }

void CommandArgs::Reserve(size_t bytes) {
  if (m_used + bytes <= m_capacity) return;
  size_t capacity = m_capacity ? m_capacity : 64;
  while (capacity < m_used + bytes) capacity *= 2;
  m_store = static_cast<char*>(realloc(m_store, capacity));
  m_capacity = capacity;
}

uint32_t CommandArgs::Store(const char* text, size_t length) {
  Reserve(length + 1);
  uint32_t offset = uint32_t(m_used);
  memcpy(m_store + m_used, text, length);
  m_store[m_used + length] = '\0';
  m_used += length + 1;
  return offset;
}

void CommandArgs::AddToken(const char* text, size_t length) {
  if (m_argc >= MAX_COMMAND_TOKENS) return;
  m_argv[m_argc++] = Store(text, length);
}

void CommandArgs::SetArgs(const char* text, size_t length) { m_args = Store(text, length); }

namespace {

inline bool IsBlank(unsigned char c) { return c >= 1 && c <= 32; }

}  // namespace

CommandArgs* Cmd_Tokenize(const char* line) {
  CommandArgs* record = new CommandArgs;
  if (!line) return record;
  size_t length = strlen(line);
  // The line's copy, then room for its tokens: each token with its terminator takes at most twice its span.
  record->Reserve(3 * length + 2);
  const uint32_t lineOffset = record->Store(line, length);

  // One byte more than a token may hold, so that a cut token can be told from a full one.
  char token[MAX_TOKEN_CHARS + 1];
  size_t pos = lineOffset;
  for (;;) {
    const char* p = record->m_store + pos;
    while (IsBlank(static_cast<unsigned char>(*p)) && *p != '\n') ++p;
    if (*p == '\0' || *p == '\n') break;
    if (record->m_argc == 1 && record->m_args < 0) record->m_args = p - record->m_store;
    const char* next = ParseToken(p, token, sizeof token);
    if (!next) break;
    size_t tokenLength = strlen(token);
    if (tokenLength >= MAX_TOKEN_CHARS) {
      tokenLength = MAX_TOKEN_CHARS - 1;
      DbgMsg(1, "Cmd_Tokenize: token cut to %d characters: %.40s...\n", MAX_TOKEN_CHARS - 1, token);
    }
    pos = size_t(next - record->m_store);
    // Storing may move the block; positions are offsets for that reason.
    record->AddToken(token, tokenLength);
  }
  return record;
}
