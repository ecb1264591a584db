// Tokenizing the current console command with the engine's shared tokenizer.
#include "cmdargs.h"

#include <cstring>

#include "tier1/tokenize.h"

namespace {

inline bool IsBlank(char c) { return (unsigned char)c <= ' ' && c != '\0'; }

}  // namespace

void ConsoleCommand::Tokenize(const char* text) {
  m_text.assign(text ? text : "");
  m_line.assign(m_text);
  while (!m_line.empty() && IsBlank(m_line.back())) m_line.pop_back();
  m_argc = 0;
  m_argsStart = m_line.size();
  // Each token is at most as long as the text it came from, so the token store never reallocates below.
  m_tokens.resize(m_line.size() + CMD_MAX_ARGS + 1);

  char token[MAX_TOKEN_CHARS];
  const char* p = m_line.c_str();
  size_t used = 0;
  while (m_argc < CMD_MAX_ARGS) {
    const char* next = ParseToken(p, token, sizeof token);
    if (!next) break;
    size_t n = strlen(token);
    memcpy(&m_tokens[used], token, n + 1);
    m_argv[m_argc++] = &m_tokens[used];
    used += n + 1;
    p = next;
    if (m_argc == 1) {
      while (IsBlank(*p)) ++p;
      m_argsStart = size_t(p - m_line.c_str());
    }
  }
}
