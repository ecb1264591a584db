// The checker's reader: the same sections and lines as the plugin's reader, real editor line numbers,
// and the script name of a path.
#include <gtest/gtest.h>

#include "scan.h"
#include "script/scriptfile.h"

namespace {

ScannedScript Scan(const std::string& text, Findings& findings, const std::string& path = "tw_s.txt") {
  return ScanScript(0, path, text, findings);
}

int TextLines(const ScannedScript& script) {
  int n = 0;
  for (const ScannedLine& line : script.lines) n += line.kind == ScannedLine::Text;
  return n;
}

using NumberedLines = std::vector<std::pair<int, std::string>>;

// The plugin's reader on the same text: section names (nested blocks left out) and the source lines it
// keeps, with the editor line numbers it gives them, in line order.
void PluginReader(const std::string& text, std::vector<std::string>& sections, NumberedLines& lines) {
  CScript script("s");
  script.ParseBuffer(text.c_str(), text.size() + 1);
  for (CBlock* block = script.firstBlock; block; block = block->next) {
    if (!strstr(block->name, ".b")) sections.push_back(block->name);
    for (CScriptLine* line = block->FirstLine()->Next(); line; line = line->Next())
      if (line->number != 0 && strncmp(line->text, "tw__", 4) != 0) lines.push_back({int(line->number), line->text});
  }
  std::sort(lines.begin(), lines.end());
}

TEST(CheckScan, SameSectionsAndLinesAsThePluginsReader) {
  const char* texts[] = {
      "block a\n{\n  echo 1\n}\n",
      "free text\nblock a\n{\n  echo 1\n  {\n    echo 2\n  }\n  // note\n\n  echo 3\n}\nevent player_death\n{\n}\n",
      "block a\n{\n  echo 1\n}\n}\necho outside\nblock b\n{\n  echo 2\n",
      "block foo {\n  echo swallowed\n  echo kept\n}\n",
      "Block a\n{\n  echo 1\n}\nblock\tb\n{\n}\n",
      "block   spaced name  \r\n{\r\n\techo crlf\r\n}\r\n",
      "\n\nblock a\n{\n  {\n    {\n\n      echo deep\n    }\n  }\n  block inner\n}\n",
  };
  for (const char* text : texts) {
    Findings findings;
    const ScannedScript scanned = Scan(text, findings);
    std::vector<std::string> sections, ours;
    NumberedLines lines, ourLines;
    PluginReader(text, sections, lines);
    for (const ScannedSection& s : scanned.sections) ours.push_back(s.fullName);
    for (const ScannedLine& line : scanned.lines)
      if (line.kind == ScannedLine::Text) ourLines.push_back({line.line, line.text + "\n"});
    // A section header inside a section is a line the plugin keeps; the checker reports it instead.
    if (strstr(text, "  block inner")) ourLines.push_back({11, "block inner\n"});
    std::sort(sections.begin(), sections.end());
    std::sort(ours.begin(), ours.end());
    std::sort(ourLines.begin(), ourLines.end());
    EXPECT_EQ(ours, sections) << text;
    EXPECT_EQ(ourLines, lines) << text;
  }
}

TEST(CheckScan, LineNumbersCountBlankLinesCommentsAndEveryLineEnd) {
  struct Case {
    const char* text;
    int line;
  } cases[] = {
      {"\n\n// c\n\nBlock a\n", 5},
      {"\r\n\r\n// c\r\n\r\nBlock a\r\n", 5},
      {"\r\r// c\r\rBlock a\r", 5},
      {"block a\n{\n\n  // c\n\n  echo\n", 1},  // an unclosed section is reported at its header
  };
  for (const Case& c : cases) {
    Findings findings;
    Scan(c.text, findings);
    ASSERT_EQ(findings.All().size(), 1u) << c.text;
    EXPECT_EQ(findings.All()[0].line, c.line) << c.text;
  }
  Findings findings;
  const ScannedScript script = Scan("block a\n{\n\n  // c\n  echo one\n\n\n  echo two\n}\n", findings);
  ASSERT_EQ(TextLines(script), 2);
  EXPECT_EQ(script.lines[0].line, 5);
  EXPECT_EQ(script.lines[1].line, 8);
}

TEST(CheckScan, NulEndsTheText) {
  Findings findings;
  const std::string text = std::string("block a\n{\n  echo\n}\n") + '\0' + "Block b\n";
  const ScannedScript script = Scan(text, findings);
  EXPECT_EQ(findings.All().size(), 0u);
  EXPECT_EQ(script.sections.size(), 1u);
}

TEST(CheckScan, ScriptNameOfPath) {
  const std::pair<const char*, const char*> cases[] = {
      {"demo/game/addons/tidewright/foo/tw_foo.txt", "foo"},
      {"addons/tidewright/foo/bar/tw_bar.txt", "foo/bar"},
      {"C:\\server\\addons\\tidewright\\foo\\tw_foo.txt", "foo"},
      {"tw_loose.txt", "loose"},
      {"somewhere/tw_else.txt", "else"},
      {"notes.txt", "notes"},
  };
  for (const auto& [path, name] : cases) EXPECT_EQ(ScriptNameOfPath(path), name) << path;
}

}  // namespace
