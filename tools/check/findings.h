// What the checker found: one finding per mistake, `file:line: error|warning: text`, kept per file in the
// order the files were given and printed by line, the way an editor's error list reads them.
#pragma once

#include <string>
#include <vector>

enum class Severity { Warning, Error };

struct Finding {
  int fileIndex;  // the order of the files as given
  std::string file;
  int line;
  Severity severity;
  std::string text;
};

class Findings {
public:
  void Add(int fileIndex, const std::string& file, int line, Severity severity, std::string text);
  void Error(int fileIndex, const std::string& file, int line, std::string text) {
    Add(fileIndex, file, line, Severity::Error, std::move(text));
  }
  void Warning(int fileIndex, const std::string& file, int line, std::string text) {
    Add(fileIndex, file, line, Severity::Warning, std::move(text));
  }

  int Errors() const { return m_errors; }
  int Warnings() const { return m_warnings; }
  // Every finding as one line each, by file as given and then by line; findings of one line keep the
  // order they were found in.
  std::string Text() const;
  const std::vector<Finding>& All() const { return m_findings; }

private:
  std::vector<Finding> m_findings;
  int m_errors = 0;
  int m_warnings = 0;
};
