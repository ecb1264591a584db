// A bounded text buffer for the command language's 2047-character limit. Appending never passes the
// buffer: an append that doesn't fit leaves the text as it was, answers false and marks the buffer.
#pragma once

#include <cstddef>
#include <cstring>

// The longest console line: every line, token, name, value and message of the command language.
inline constexpr int kMaxConsoleLine = 2047;
// Bytes of every line, token, name and value buffer of the command language, terminator included.
enum { TEXT_BUFFER_SIZE = kMaxConsoleLine + 1 };

class TextBuf {
public:
  TextBuf() { m_text[0] = '\0'; }
  explicit TextBuf(const char* text) {
    m_text[0] = '\0';
    Append(text);
  }

  bool Append(const char* text) { return Append(text, strlen(text)); }
  bool Append(const char* text, size_t n) {
    if (m_length + n >= TEXT_BUFFER_SIZE) {
      m_overflow = true;
      return false;
    }
    memcpy(m_text + m_length, text, n);
    m_length += n;
    m_text[m_length] = '\0';
    return true;
  }
  bool Append(char c) { return Append(&c, 1); }
  bool Assign(const char* text) {
    Clear();
    return Append(text);
  }
  void Clear() {
    m_length = 0;
    m_text[0] = '\0';
    m_overflow = false;
  }
  // Overwrites the last character (or sets the only one of an empty text).
  void SetLast(char c) {
    if (m_length == 0) {
      Append(c);
      return;
    }
    m_text[m_length - 1] = c;
    if (c == '\0') --m_length;
  }
  void Replace(char from, char to) {
    for (size_t i = 0; i < m_length; ++i)
      if (m_text[i] == from) m_text[i] = to;
  }
  // Removes every occurrence of `c`.
  void Remove(char c) {
    size_t out = 0;
    for (size_t i = 0; i < m_length; ++i)
      if (m_text[i] != c) m_text[out++] = m_text[i];
    m_length = out;
    m_text[out] = '\0';
  }

  const char* c_str() const { return m_text; }
  size_t Length() const { return m_length; }
  bool Overflowed() const { return m_overflow; }

private:
  char m_text[TEXT_BUFFER_SIZE];
  size_t m_length = 0;
  bool m_overflow = false;
};
