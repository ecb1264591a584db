// The memory exec cache: a file's key (its time, its lines without line ends, the end mark), long lines,
// the replacement of a key whose file's time rose, and positions that name no cached line. Runs from the
// console, in scripts and for events, a time that stays, empty files and names with blanks are shown by the
// library/mexec and library/mexec_events scenarios.
#include <sys/time.h>

#include <string>
#include <vector>

#include "../script/script_fixture.h"
#include "KeyValues.h"
#include "library/mexec.h"

namespace {

class MexecTest : public ScriptTest {
protected:
  // Writes cfg/<name> with the modification time `seconds`.
  static void WriteConfig(const std::string& name, const std::string& text, long seconds) {
    WriteGameFile("cfg/" + name, text);
    const std::string path = Shared().GameDir() + "/cfg/" + name;
    const struct timeval times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimes(path.c_str(), times), 0) << path;
  }
  // The key's values as "name=text".
  static std::vector<std::string> Layout(const std::string& name) {
    std::vector<std::string> layout;
    KeyValues* key = Mexec_FindKey(("cfg/" + name).c_str());
    for (KeyValues* value = key ? key->GetFirstSubKey() : nullptr; value; value = value->GetNextKey())
      layout.push_back(std::string(value->GetName()) + "=" + value->GetString());
    return layout;
  }
  static KeyValues* Line(const std::string& name, const char* number) {
    KeyValues* key = Mexec_FindKey(("cfg/" + name).c_str());
    return key ? key->FindKey(number) : nullptr;
  }
  static std::string Position(KeyValues* line) { return std::to_string(line->GetHandle()); }
};

using Lines = std::vector<std::string>;

TEST_F(MexecTest, KeyHoldsTheTimeTheLinesWithoutLineEndsAndTheEnd) {
  WriteConfig("unit_lines.cfg", "echo one\r\necho two\n\n// a comment\necho last, without a line end", 1000);
  EXPECT_EQ(Run("tw_mexec unit_lines.cfg"), "one\ntwo\nlast, without a line end\n");
  EXPECT_EQ(Layout("unit_lines.cfg"), (Lines{"filetime=1000", "1=echo one", "2=echo two", "3=", "4=// a comment",
                                             "5=echo last, without a line end", "eof=eof"}));
}

// A missing file leaves an empty key; a file that goes away keeps running from memory.
TEST_F(MexecTest, AFileThatGoesAwayRunsFromMemory) {
  EXPECT_EQ(Run("tw_mexec unit_late.cfg"), "");
  EXPECT_EQ(Layout("unit_late.cfg"), Lines{});
  WriteConfig("unit_late.cfg", "echo here now\n", 1000);
  EXPECT_EQ(Run("tw_mexec unit_late.cfg"), "here now\n");
  std::filesystem::remove(Shared().GameDir() + "/cfg/unit_late.cfg");
  EXPECT_EQ(Run("tw_mexec unit_late.cfg"), "here now\n");
}

TEST_F(MexecTest, LongLinesAreCutToTheLineBufferAndReadInPieces) {
  const std::string cut = "echo " + std::string(3000, 'c');
  const std::string exact = "echo " + std::string(MEXEC_READ_SIZE - 1 - 5, 'e');  // fills one read exactly
  const std::string pieces = "echo " + std::string(MEXEC_READ_SIZE + 1000, 'p');
  WriteConfig("unit_long.cfg", cut + "\n" + exact + "\n" + pieces + "\necho after\n", 1000);
  tidewright_debug.SetValue(1);
  const std::string output = Run("tw_mexec unit_long.cfg");
  tidewright_debug.SetValue(0);
  const std::string message = "mexec: cfg/unit_long.cfg has lines longer than 2046 characters; they run cut to that length.\n";
  EXPECT_EQ(output.find(message), output.rfind(message));  // once per reading
  EXPECT_NE(output.find(message), std::string::npos);
  const Lines layout = Layout("unit_long.cfg");
  ASSERT_EQ(layout.size(), 7u);  // time, the cut line, the exact line, two pieces, "echo after", the end
  EXPECT_EQ(layout[1], "1=" + cut.substr(0, MEXEC_MAX_LINE));
  EXPECT_EQ(layout[2], "2=" + exact.substr(0, MEXEC_MAX_LINE));
  EXPECT_EQ(layout[3], "3=" + pieces.substr(0, MEXEC_MAX_LINE));
  EXPECT_EQ(layout[4], "4=" + pieces.substr(MEXEC_READ_SIZE - 1));
  EXPECT_EQ(layout[5], "5=echo after");
}

TEST_F(MexecTest, RisenTimeReplacesTheKeysLinesAndTheirPositions) {
  WriteConfig("unit_replace.cfg", "echo old one\necho old two\n", 1000);
  Run("tw_mexec unit_replace.cfg");
  KeyValues* key = Mexec_FindKey("cfg/unit_replace.cfg");
  const std::string stale = Position(Line("unit_replace.cfg", "1"));
  EXPECT_EQ(Run("_mexecl " + stale), "old two\n");  // a live position runs the line after it

  WriteConfig("unit_replace.cfg", "echo new\n", 1001);
  EXPECT_EQ(Run("tw_mexec unit_replace.cfg"), "new\n");
  EXPECT_EQ(Mexec_FindKey("cfg/unit_replace.cfg"), key);  // the same key, new contents
  EXPECT_EQ(Layout("unit_replace.cfg"), (Lines{"filetime=1001", "1=echo new", "eof=eof"}));
  EXPECT_EQ(KeyValues::FromHandle(std::stoull(stale)), nullptr);
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("_mexecl " + stale), "_mexecl: the position " + stale + " names no cached line; nothing runs.\n");
}

TEST_F(MexecTest, AFileReplacedWhileItRunsStopsAtTheReplacement) {
  WriteConfig("unit_self.cfg",
              "echo first\n"
              "sim_writefile cfg/unit_self.cfg \"echo the new text\"\n"
              "sim_filetime cfg/unit_self.cfg 2000\n"
              "tw_mexec unit_self.cfg\n"
              "echo never runs\n",
              1000);
  EXPECT_EQ(Run("tw_mexec unit_self.cfg"), "first\nthe new text\n");
}

TEST_F(MexecTest, PositionsOfOtherNodesRunNothing) {
  KeyValues* group = new KeyValues("unit_group");
  group->SetString("1", "echo one");
  group->SetString("2", "echo forged");
  EXPECT_EQ(Run("_mexecl " + Position(group->FindKey("1"))), "");
  group->deleteThis();
  for (const char* typed : {"0", "-1", "18446744073709551615"})
    EXPECT_EQ(Run(std::string("_mexecl ") + typed), "") << typed;
}

}  // namespace
