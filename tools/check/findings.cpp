// Findings: collected while the files are read, sorted into editor order when printed.
#include "findings.h"

#include <algorithm>

void Findings::Add(int fileIndex, const std::string& file, int line, Severity severity, std::string text) {
  m_findings.push_back({fileIndex, file, line, severity, std::move(text)});
  ++(severity == Severity::Error ? m_errors : m_warnings);
}

std::string Findings::Text() const {
  std::vector<const Finding*> sorted;
  for (const Finding& f : m_findings) sorted.push_back(&f);
  std::stable_sort(sorted.begin(), sorted.end(), [](const Finding* a, const Finding* b) {
    return a->fileIndex != b->fileIndex ? a->fileIndex < b->fileIndex : a->line < b->line;
  });
  std::string out;
  for (const Finding* f : sorted) {
    out += f->file + ":" + std::to_string(f->line) + (f->severity == Severity::Error ? ": error: " : ": warning: ");
    out += f->text + "\n";
  }
  return out;
}
