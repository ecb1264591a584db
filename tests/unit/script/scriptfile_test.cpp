// The script reader: section headers, braces, comments, limits, nested block names and counters, and
// LoadAddonFile with its messages.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "script_fixture.h"
#include "script/scriptfile.h"

namespace {

using Lines = std::vector<std::string>;

std::unique_ptr<CScript> Compile(const std::string& name, const std::string& text) {
  auto script = std::make_unique<CScript>(name.c_str());
  script->ParseBuffer(text.c_str(), text.size() + 1);
  return script;
}

std::vector<std::string> BlockNames(const CScript& script) {
  std::vector<std::string> names;
  for (CBlock* b = script.firstBlock; b; b = b->next) names.push_back(b->name);
  return names;
}

Lines LinesOf(const CBlock* block) {
  Lines lines;
  for (CScriptLine* l = block->firstLine; l; l = l->next) lines.push_back(l->text);
  return lines;
}

const CBlock* Find(const CScript& script, const std::string& name) {
  for (CBlock* b = script.firstBlock; b; b = b->next)
    if (name == b->name) return b;
  return nullptr;
}

TEST(ScriptReader, CompilesTheWorkedExample) {
  auto script = Compile("foo",
                        "block hello\n{\n  tw_xset x 1\n  tw_xif (1 equalto 1) do\n  {\n    tw_msg yes\n  }\n}\n");
  EXPECT_EQ(BlockNames(*script), (std::vector<std::string>{"foo.b2", "foo/hello"}));
  EXPECT_EQ(LinesOf(Find(*script, "foo/hello")),
            (Lines{"tw__sb foo/hello\n", "tw_xset x 1\n", "tw_xif (1 equalto 1) do\n", "tw__db foo.b2\n",
                   "tw__eb\n\n", "\n"}));
  EXPECT_EQ(LinesOf(Find(*script, "foo.b2")), (Lines{"tw__sb foo.b2\n", "tw_msg yes\n", "tw__eb\n\n", "\n"}));
}

TEST(ScriptReader, IndentedAndFlatFilesCompileAlike) {
  auto indented = Compile("s", "block a\n{\n\t  tw_msg 1\n    {\n\t\ttw_msg 2\n    }\n}\n");
  auto flat = Compile("s", "block a\n{\ntw_msg 1\n{\ntw_msg 2\n}\n}\n");
  EXPECT_EQ(LinesOf(Find(*indented, "s/a")), LinesOf(Find(*flat, "s/a")));
  EXPECT_EQ(LinesOf(Find(*indented, "s.b2")), LinesOf(Find(*flat, "s.b2")));
}

TEST(ScriptReader, HeaderWithBraceOnItsLineSwallowsTheFirstBodyLine) {
  auto script = Compile("x", "block foo {\n  tw_msg swallowed\n  tw_msg kept\n}\n");
  ASSERT_NE(Find(*script, "x/foo {"), nullptr);
  EXPECT_EQ(Find(*script, "x/foo"), nullptr);
  EXPECT_EQ(LinesOf(Find(*script, "x/foo {"))[1], "tw_msg kept\n");
}

TEST(ScriptReader, OnlyExactLowerCaseHeadersWithOneBlankOpenSections) {
  auto script = Compile("s", "Block a\n{\n}\nblock\tb\n{\n}\nevent  c\n{\n}\n");
  std::vector<std::string> names = BlockNames(*script);
  ASSERT_EQ(names.size(), 1u);
  EXPECT_EQ(names[0], "s/c");  // "event " then white space skipped before the name
}

TEST(ScriptReader, HeaderAtTheEndMakesAnEmptyBlock) {
  auto script = Compile("s", "free text\nblock last");
  const CBlock* block = Find(*script, "s/last");
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(LinesOf(block), (Lines{"tw__sb s/last\n", "tw__eb\n\n", "\n"}));
}

TEST(ScriptReader, EmptySectionNameGivesScriptNameAndSlash) {
  auto script = Compile("s", "block \n{\n}\n");
  EXPECT_NE(Find(*script, "s/"), nullptr);
}

TEST(ScriptReader, NestedBlockInEventIsNoEvent) {
  auto script = Compile("s", "event player_death\n{\n{\ntw_msg x\n}\n}\n");
  const CBlock* event = Find(*script, "s/player_death");
  const CBlock* nested = Find(*script, "s.b2");
  ASSERT_TRUE(event && nested);
  EXPECT_TRUE(event->isEvent);
  EXPECT_STREQ(event->baseName, "player_death");
  EXPECT_FALSE(nested->isEvent);
}

TEST(ScriptReader, CountersDependOnEverythingBefore) {
  auto script = Compile("s", "block a\n{\n{\n{\n}\n}\n}\nblock b\n{\n{\n}\n}\n");
  EXPECT_EQ(BlockNames(*script), (std::vector<std::string>{"s.b3", "s.b2", "s/a", "s.b5", "s/b"}));
  EXPECT_EQ(LinesOf(Find(*script, "s.b2"))[1], "tw__db s.b3\n");
}

TEST(ScriptReader, BlankAndCommentLinesAddNothing) {
  auto script = Compile("s", "block a\n{\n   \n// note\n  // indented note\ntw_msg x // kept\n\n}\n");
  const CBlock* block = Find(*script, "s/a");
  EXPECT_EQ(block->lineCount, 3);  // the source line and the two end lines
  EXPECT_EQ(LinesOf(block)[1], "tw_msg x // kept\n");
}

TEST(ScriptReader, LineEndingsCrLfAndCrAllWork) {
  auto lf = Compile("s", "block a\n{\ntw_msg 1\ntw_msg 2\n}\n");
  auto crlf = Compile("s", "block a\r\n{\r\ntw_msg 1\r\ntw_msg 2\r\n}\r\n");
  auto cr = Compile("s", "block a\r{\rtw_msg 1\rtw_msg 2\r}\r");
  EXPECT_EQ(LinesOf(Find(*lf, "s/a")), LinesOf(Find(*crlf, "s/a")));
  EXPECT_EQ(LinesOf(Find(*lf, "s/a")), LinesOf(Find(*cr, "s/a")));
}

TEST(ScriptReader, TrailingBlanksStay) {
  auto script = Compile("s", "block a\n{\ntw_msg x  \n}\n");
  EXPECT_EQ(LinesOf(Find(*script, "s/a"))[1], "tw_msg x  \n");
}

TEST(ScriptReader, NulByteEndsTheFile) {
  std::string text = "block a\n{\ntw_msg 1\n";
  text += '\0';
  text += "tw_msg 2\n}\nblock b\n{\n}\n";
  auto script = std::make_unique<CScript>("s");
  script->ParseBuffer(text.data(), text.size());
  EXPECT_EQ(BlockNames(*script), (std::vector<std::string>{"s/a"}));
  EXPECT_EQ(LinesOf(Find(*script, "s/a")).size(), 4u);
}

TEST(ScriptReader, LongLineIsCutAndItsRestDropped) {
  std::string line = "tw_msg " + std::string(3500 - 7, 'y');
  auto script = Compile("s", "block a\n{\n" + line + "\ntw_msg after\n}\n");
  Lines lines = LinesOf(Find(*script, "s/a"));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[1], line.substr(0, MAX_SCRIPT_LINE - 1) + "\n");
  EXPECT_EQ(lines[2], "tw_msg after\n");
}

TEST(ScriptReader, MissingClosingBracesCloseAtTheEnd) {
  auto script = Compile("s", "block a\n{\ntw_msg 1\n{\ntw_msg 2\n");
  EXPECT_EQ(BlockNames(*script), (std::vector<std::string>{"s.b2", "s/a"}));
  EXPECT_EQ(LinesOf(Find(*script, "s/a")), (Lines{"tw__sb s/a\n", "tw_msg 1\n", "tw__db s.b2\n", "tw__eb\n\n", "\n"}));
}

TEST(ScriptReader, SurplusBraceClosesTheSectionEarly) {
  auto script = Compile("s", "block a\n{\ntw_msg 1\n}\ntw_msg ignored\n}\nblock b\n{\n}\n");
  EXPECT_EQ(BlockNames(*script), (std::vector<std::string>{"s/a", "s/b"}));
  EXPECT_EQ(LinesOf(Find(*script, "s/a")).size(), 4u);
}

TEST(ScriptReader, DeepNestingNeedsNoRecursion) {
  std::string text = "block deep\n{\n";
  for (int i = 0; i < 20000; ++i) text += "{\n";
  auto script = Compile("s", text);
  EXPECT_EQ(script->blockCount, 20001);
}

TEST(ScriptReader, OverlongSectionNameIsCutWithAMessage) {
  OutputCapture capture;
  auto script = Compile("s", "block " + std::string(150, 'n') + "\n{\n}\n");
  EXPECT_NE(Find(*script, "s/" + std::string(MAX_SECTION_NAME - 1, 'n')), nullptr);
  EXPECT_TRUE(capture.Contains("Section name too long"));
}

TEST(ScriptReader, ReleasedLinesGiveTheirHandlesUp) {
  LineHandle handle;
  {
    auto script = Compile("s", "block a\n{\ntw_msg 1\n}\n");
    handle = script->firstBlock->firstLine->handle;
  }
  EXPECT_EQ(g_lineHandles.Get(handle), nullptr);
}

class LoadAddonFileTest : public ScriptTest {};

TEST_F(LoadAddonFileTest, LoadsAndQueuesTheLoadBlock) {
  std::string out = Load("loader", "block load\n{\ntw_xset loaded_var yes\n}\n");
  EXPECT_NE(out.find("[Tidewright] Loaded loader\n"), std::string::npos);
  EXPECT_EQ(Var("loaded_var"), "yes");
}

TEST_F(LoadAddonFileTest, BackslashesBecomeSlashes) {
  WriteGameFile("addons/tidewright/foo/bar/tw_bar.txt", "block a\n{\n}\n");
  std::string out = Run("tw_xload foo\\bar");
  EXPECT_NE(out.find("[Tidewright] Loaded foo/bar"), std::string::npos) << out;
  EXPECT_NE(g_scriptMachine.registry.GetBlock("foo/bar/a"), nullptr);
}

TEST_F(LoadAddonFileTest, MissingFileIsReportedAndNothingChanges) {
  tidewright_lasterror.SetValue("before");
  std::string out = Run("tw_xload nosuchscript");
  EXPECT_NE(out.find("Could not open script for addons/tidewright/nosuchscript/tw_nosuchscript.txt\n"),
            std::string::npos)
      << out;
  EXPECT_EQ(g_scriptMachine.registry.FirstScript(), nullptr);
  EXPECT_EQ(Var("tidewright_lasterror"), "before");
}

TEST_F(LoadAddonFileTest, SecondLoadIsRefusedAndTheFirstStaysAsItWas) {
  Load("twice", "block a\n{\ntw_xset which first\n}\n");
  g_scriptMachine.registry.FindScript("twice")->enabled = false;
  WriteScript("TWICE", "block a\n{\ntw_xset which second\n}\n");
  std::string out = Run("tw_xload TWICE");
  EXPECT_NE(out.find("[Tidewright] Load script failed. It might already be loaded, try to tw_unload it first. TWICE\n"),
            std::string::npos)
      << out;
  EXPECT_FALSE(g_scriptMachine.registry.FindScript("twice")->enabled);
  Run("tw_xdoblock twice/a");
  EXPECT_EQ(Var("which"), "first");
}

TEST_F(LoadAddonFileTest, FileWithoutSectionsLoadsWithoutBlocks) {
  std::string out = Load("empty", "just words\n");
  EXPECT_NE(out.find("[Tidewright] Loaded empty"), std::string::npos);
  EXPECT_EQ(g_scriptMachine.registry.FindScript("empty")->firstBlock, nullptr);
}

TEST_F(LoadAddonFileTest, OverlongNameIsRefused) {
  std::string out = Run("tw_xload " + std::string(1100, 'z'));
  EXPECT_NE(out.find("too long"), std::string::npos);
  EXPECT_EQ(g_scriptMachine.registry.FirstScript(), nullptr);
}

}  // namespace
