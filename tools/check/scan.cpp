// The checker's reader of script text: the plugin's rules (script/scriptfile.cpp) over editor lines.
#include "scan.h"

#include <cctype>
#include <cstring>

#include "script/scriptfile.h"

namespace {

bool IsSpace(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }

std::string Trim(const std::string& text) {
  size_t begin = 0, end = text.size();
  while (begin < end && IsSpace(text[begin])) ++begin;
  while (end > begin && IsSpace(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

bool StartsWith(const std::string& text, const char* prefix) { return text.compare(0, strlen(prefix), prefix) == 0; }

// Text behind a brace that the reader drops: anything but white space and a comment.
bool HasTextBehindBrace(const std::string& text) {
  std::string rest = Trim(text.substr(1));
  return !rest.empty() && !StartsWith(rest, "//");
}

std::string FirstWord(const std::string& text) {
  size_t end = 0;
  while (end < text.size() && !IsSpace(text[end])) ++end;
  return text.substr(0, end);
}

bool EqualsIgnoringCase(const std::string& a, const char* b) { return strcasecmp(a.c_str(), b) == 0; }

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

class Scanner {
public:
  Scanner(ScannedScript& script, Findings& out) : m_script(script), m_out(out) {}

  void Run(const std::string& text) {
    const size_t size = strlen(text.c_str());  // a NUL byte ends the text
    int number = 0;
    for (size_t pos = 0; pos < size;) {
      size_t end = pos;
      while (end < size && text[end] != '\n' && text[end] != '\r') ++end;
      Line(++number, text.substr(pos, end - pos));
      pos = end;
      if (pos < size && text[pos] == '\r' && pos + 1 < size && text[pos + 1] == '\n') ++pos;  // CR LF is one end
      ++pos;
    }
    Finish();
  }

private:
  enum class State { TopLevel, ExpectBrace, InSection };
  // The last top-level line that wasn't blank, to tell a header with an unknown keyword by the "{" behind it.
  struct Last {
    enum Kind { None, Text, Comment, BadKeyword } kind = None;
    int line = 0;
  };

  void Error(int line, std::string text) { m_out.Error(m_script.fileIndex, m_script.path, line, std::move(text)); }

  void Line(int number, const std::string& raw) {
    size_t start = 0;
    while (start < raw.size() && IsSpace(raw[start])) ++start;
    if (start == raw.size()) return;  // blank lines are passed over
    const std::string text = raw.substr(start);
    switch (m_state) {
      case State::TopLevel:
        TopLevel(number, text);
        break;
      case State::ExpectBrace:
        OpeningBrace(number, text);
        break;
      case State::InSection:
        InSection(number, text);
        break;
    }
  }

  // ---- outside sections ----

  void TopLevel(int number, const std::string& text) {
    const Last last = m_last;
    m_last = {Last::Text, number};
    if (StartsWith(text, "event ") || StartsWith(text, "block ")) return Header(number, text);
    if (StartsWith(text, "//")) {
      m_last.kind = Last::Comment;
      return;
    }
    const std::string word = FirstWord(text);
    if (EqualsIgnoringCase(word, "block") || EqualsIgnoringCase(word, "event")) return BadKeyword(number, text, word);
    if (text[0] == '}')
      return Error(number, "\"}\" outside any section: a section was closed earlier than meant, or this \"}\" is one "
                           "too many");
    if (text[0] == '{') return StrayBody(number, last);
    m_script.topLevel.push_back({number, text});
  }

  // A "{" at the top level opens nothing; behind a line that meant to be a header, that line is the mistake.
  void StrayBody(int number, const Last& last) {
    if (last.kind == Last::Text && !m_script.topLevel.empty() && last.line == m_script.topLevel.back().line) {
      Error(last.line, "unknown section keyword " + Quoted(FirstWord(m_script.topLevel.back().text)) +
                           ": a section starts with \"block NAME\" or \"event NAME\"");
      m_script.topLevel.pop_back();
    } else if (last.kind != Last::BadKeyword) {
      Error(number, "\"{\" outside any section: the lines up to its \"}\" are ignored");
    }
    m_dead = true;
    m_openLines.assign(1, number);
    m_state = State::InSection;
  }

  void BadKeyword(int number, const std::string& text, const std::string& word) {
    m_last.kind = Last::BadKeyword;
    std::string lower;
    for (char c : word) lower += char(tolower(static_cast<unsigned char>(c)));
    if (Trim(text.substr(word.size())).empty())
      Error(number, "section without a name: write \"" + lower + " NAME\"");
    else if (word == lower)
      Error(number, Quoted(word) + " must be followed by a blank, not a tab, before the name");
    else
      Error(number, "section keyword " + Quoted(word) + " is not recognised: a section starts with \"" + lower +
                        " NAME\" in lower case");
  }

  void Header(int number, const std::string& text) {
    ScannedSection section;
    section.isEvent = text[0] == 'e';
    section.line = number;
    std::string name = Trim(text.substr(6, MAX_TOPLEVEL_LINE - 1 - 6));  // the reader cuts the line first
    const char* kind = section.isEvent ? "event" : "block";
    if (name.empty()) Error(number, std::string("section without a name: write \"") + kind + " NAME\"");
    if (!name.empty() && name.back() == '{')
      Error(number, "\"{\" must stand on a line of its own: this " + std::string(kind) + " is named " + Quoted(name) +
                        " and its first line is taken for the opening brace");
    if (name.size() >= MAX_SECTION_NAME) {
      Error(number, "section name longer than " + std::to_string(MAX_SECTION_NAME - 1) + " characters: it is cut");
      name.resize(MAX_SECTION_NAME - 1);
    }
    section.name = name;
    section.fullName = m_script.scriptName + "/" + name;
    if (section.fullName.size() >= MAX_BLOCK_NAME) {
      Error(number, "block name " + Quoted(section.fullName.substr(0, 40) + "...") + " longer than " +
                        std::to_string(MAX_BLOCK_NAME - 1) + " characters: it is cut");
      section.fullName.resize(MAX_BLOCK_NAME - 1);
    }
    m_header = section;
    m_state = State::ExpectBrace;
  }

  // The line behind a header is always taken for the opening brace, whatever it holds.
  void OpeningBrace(int number, const std::string& text) {
    const std::string what = std::string(m_header.isEvent ? "event " : "block ") + Quoted(m_header.name);
    if (text[0] != '{')
      Error(number, "expected \"{\" on the line after the header of " + what +
                        ": this line is taken for the opening brace and ignored");
    else if (HasTextBehindBrace(text))
      Error(number, "text behind \"{\" is ignored");
    m_script.sections.push_back(m_header);
    m_openLines.assign(1, m_header.line);
    m_state = State::InSection;
  }

  // ---- inside sections ----

  void InSection(int number, std::string text) {
    if (text.size() > MAX_SCRIPT_LINE - 1) {
      Error(number, "line longer than " + std::to_string(MAX_SCRIPT_LINE - 1) + " characters: the rest is dropped");
      text.resize(MAX_SCRIPT_LINE - 1);
    }
    if (StartsWith(text, "//")) return;
    if (text[0] == '}' || text[0] == '{') {
      if (HasTextBehindBrace(text)) Error(number, std::string("text behind \"") + text[0] + "\" is ignored");
      if (text[0] == '{') {
        m_openLines.push_back(number);
        Record(ScannedLine::Open, number, "");
      } else {
        m_openLines.pop_back();
        Record(ScannedLine::Close, number, "");
        if (m_openLines.empty()) EndSection();
      }
      return;
    }
    if (m_dead) return;
    if (StartsWith(text, "block ") || StartsWith(text, "event ")) {
      Error(number, "section header inside " + Current() + ": a \"}\" is missing before it");
      return;
    }
    Record(ScannedLine::Text, number, text);
  }

  std::string Current() const {
    const ScannedSection& s = m_script.sections.back();
    return std::string(s.isEvent ? "event " : "block ") + Quoted(s.name);
  }

  void Record(ScannedLine::Kind kind, int number, const std::string& text) {
    if (m_dead) return;
    m_script.lines.push_back({kind, number, text, int(m_script.sections.size()) - 1});
  }

  void EndSection() {
    m_dead = false;
    m_state = State::TopLevel;
  }

  void Finish() {
    if (m_state == State::ExpectBrace) {
      Error(m_header.line, std::string("no \"{\" follows the header of ") + (m_header.isEvent ? "event " : "block ") +
                               Quoted(m_header.name) + " before the end of the file");
      m_script.sections.push_back(m_header);
    } else if (m_state == State::InSection && !m_dead) {
      const size_t missing = m_openLines.size();
      Error(m_script.sections.back().line,
            Current() + " is not closed: " + (missing == 1 ? std::string("a \"}\" is") : std::to_string(missing) + " \"}\" are") +
                " missing before the end of the file");
    }
  }

  ScannedScript& m_script;
  Findings& m_out;
  State m_state = State::TopLevel;
  ScannedSection m_header;
  std::vector<int> m_openLines;  // the lines of the section's header and of each open nested "{"
  bool m_dead = false;           // inside the braces of something that isn't a section: nothing is kept
  Last m_last;
};

}  // namespace

std::string ScriptNameOfPath(const std::string& path) {
  std::string normal = path;
  for (char& c : normal)
    if (c == '\\') c = '/';
  const std::string marker = "addons/tidewright/";
  const size_t at = normal.rfind(marker);
  const size_t slash = normal.rfind('/');
  if (at != std::string::npos && slash != std::string::npos && slash > at + marker.size())
    return normal.substr(at + marker.size(), slash - at - marker.size());
  std::string base = slash == std::string::npos ? normal : normal.substr(slash + 1);
  if (StartsWith(base, "tw_")) base = base.substr(3);
  if (base.size() > 4 && base.compare(base.size() - 4, 4, ".txt") == 0) base.resize(base.size() - 4);
  return base;
}

ScannedScript ScanScript(int fileIndex, const std::string& path, const std::string& text, Findings& out) {
  ScannedScript script;
  script.fileIndex = fileIndex;
  script.path = path;
  script.scriptName = ScriptNameOfPath(path);
  Scanner(script, out).Run(text);
  return script;
}
