// Tokenizing the current console command with the engine's shared tokenizer.
#include "cmdargs.h"

#include <algorithm>

#include "tier1/tokenize.h"

namespace {

inline bool IsBlank(char c) { return (unsigned char)c <= ' ' && c != '\0'; }

}  // namespace

void ConsoleCommand::Tokenize(const char* text) {
  m_text.assign(text ? text : "");
  size_t end = m_text.size();
  while (end > 0 && IsBlank(m_text[end - 1])) --end;
  // Most commands end without white space, and their text serves as the line as it is.
  if (end < m_text.size()) m_line.assign(m_text, 0, end);
  m_lineText = end < m_text.size() ? m_line.c_str() : m_text.c_str();
  m_argc = 0;
  m_argsStart = end;
  // Each token is at most as long as the text it came from, so the token store never reallocates below;
  // it only grows, so a store that is large enough already isn't cleared again.
  const size_t need = end + CMD_MAX_ARGS + 1;
  if (m_tokens.size() < need) m_tokens.resize(need);

  const char* p = m_lineText;
  size_t used = 0;
  while (m_argc < CMD_MAX_ARGS) {
    int length = 0;
    char* token = &m_tokens[used];
    const char* next = ParseToken(p, token, int(std::min<size_t>(MAX_TOKEN_CHARS, m_tokens.size() - used)), length);
    if (!next) break;
    m_argv[m_argc++] = token;
    used += size_t(length) + 1;
    p = next;
    if (m_argc == 1) {
      while (IsBlank(*p)) ++p;
      m_argsStart = size_t(p - m_lineText);
    }
  }
}
