// Reading a script file as the plugin's reader does (sections, nested braces, comments, the limits of
// script/scriptfile.h), but keeping each line's real line number in an editor: blank lines and comments
// count. Mistakes of structure are reported on the way; what the lines say is the checks' business.
#pragma once

#include <string>
#include <vector>

#include "findings.h"

struct ScannedSection {
  bool isEvent;
  std::string name;      // behind "block " or "event ", trimmed and cut as the reader cuts it
  std::string fullName;  // "<script>/<name>", cut as the reader cuts it
  int line;              // of the header
};

// One line a section holds, in file order. Braces are kept so that a check can see what follows a line.
struct ScannedLine {
  enum Kind { Text, Open, Close } kind;
  int line;
  std::string text;  // a Text line as the reader keeps it: leading white space gone, cut to the limit
  int section;       // index into sections
};

// Top-level text that isn't a comment: the reader ignores it.
struct TopLevelText {
  int line;
  std::string text;
};

struct ScannedScript {
  int fileIndex = 0;
  std::string path;        // as given, shown in findings
  std::string scriptName;  // the name tw_load knows it by
  std::vector<ScannedSection> sections;
  std::vector<ScannedLine> lines;
  std::vector<TopLevelText> topLevel;
};

// The script name of a file: the folder behind "addons/tidewright/" for a file in a game tree
// (addons/tidewright/foo/bar/tw_bar.txt is foo/bar), else the file's name without "tw_" and ".txt".
std::string ScriptNameOfPath(const std::string& path);

// Reads a script's text (a NUL byte ends it) and reports its mistakes of structure.
ScannedScript ScanScript(int fileIndex, const std::string& path, const std::string& text, Findings& out);
