// Captures everything printed through Msg, Warning and DevMsg while an OutputCapture lives, so that tests
// can assert on console output. Captures nest: an inner one sees only what was printed during its life.
#pragma once

#include <string>

#include "tier0.h"

class OutputCapture {
public:
  OutputCapture() : m_previous(s_current) {
    s_current = this;
    m_previousSpew = SpewOutputFunc(&OutputCapture::Spew);
  }
  ~OutputCapture() {
    SpewOutputFunc(m_previousSpew);
    s_current = m_previous;
  }
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  const std::string& Text() const { return m_text; }
  // The text so far, and empties the capture.
  std::string Take() {
    std::string t;
    t.swap(m_text);
    return t;
  }
  bool Contains(const std::string& needle) const { return m_text.find(needle) != std::string::npos; }

private:
  static void Spew(SpewType_t, const char* text) {
    if (s_current) s_current->m_text += text;
  }
  static inline OutputCapture* s_current = nullptr;
  OutputCapture* m_previous;
  SpewOutputFunc_t m_previousSpew;
  std::string m_text;
};
