// The script reader: section headers, braces, comments, limits, nested block names and counters, and the
// handles of released lines. What nested and indented blocks do when they run, and the path a script's name
// gives, run in the script/worked_example, script/nested_blocks and script/load_rules scenarios.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "script_fixture.h"
#include "script/scriptfile.h"

namespace {

using Names = std::vector<std::string>;

std::unique_ptr<CScript> Compile(const std::string& text, size_t size = std::string::npos) {
  auto script = std::make_unique<CScript>("s");
  script->ParseBuffer(text.data(), size == std::string::npos ? text.size() + 1 : size);
  return script;
}

// The names in the script's list; an event section's with " event " and the base name it is heard by.
Names BlockNames(const CScript& script) {
  Names names;
  for (CBlock* b = script.firstBlock; b; b = b->next)
    names.push_back(b->isEvent ? std::string(b->name) + " event " + b->baseName : b->name);
  return names;
}

const CBlock* Find(const CScript& script, const std::string& name) {
  for (CBlock* b = script.firstBlock; b; b = b->next)
    if (name == b->name) return b;
  return nullptr;
}

Names LinesOf(const CBlock* block) {
  Names lines;
  for (const CScriptLine* l = block ? const_cast<CBlock*>(block)->FirstLine() : nullptr; l; l = l->Next())
    lines.push_back(l->text);
  return lines;
}

TEST(ScriptReader, CompiledBlocksAndLines) {
  const struct {
    const char* why;
    std::string text;
    Names blocks;  // in the script's list
    const char* block;
    Names lines;  // of `block`
  } cases[] = {
      {"brace on the header line swallows the first body line", "block foo {\n  tw_msg swallowed\n  tw_msg kept\n}\n",
       {"s/foo {"}, "s/foo {", {"tw__sb s/foo {\n", "tw_msg kept\n", "tw__eb\n\n", "\n"}},
      {"only exact lower-case headers with one blank", "Block a\n{\n}\nblock\tb\n{\n}\nevent  c\n{\n}\n",
       {"s/c event c"}, "s/c", {"tw__sb s/c\n", "tw__eb\n\n", "\n"}},
      {"a block nested in an event is no event", "event player_death\n{\n{\ntw_msg x\n}\n}\n",
       {"s.b2", "s/player_death event player_death"}, "s.b2", {"tw__sb s.b2\n", "tw_msg x\n", "tw__eb\n\n", "\n"}},
      {"header at the end", "free text\nblock last", {"s/last"}, "s/last", {"tw__sb s/last\n", "tw__eb\n\n", "\n"}},
      {"empty section name", "block \n{\n}\n", {"s/"}, "s/", {"tw__sb s/\n", "tw__eb\n\n", "\n"}},
      {"counters depend on everything before", "block a\n{\n{\n{\n}\n}\n}\nblock b\n{\n{\n}\n}\n",
       {"s.b3", "s.b2", "s/a", "s.b5", "s/b"}, "s.b2", {"tw__sb s.b2\n", "tw__db s.b3\n", "tw__eb\n\n", "\n"}},
      {"blank and comment lines add nothing, trailing blanks stay",
       "block a\n{\n   \n// note\n  // indented note\ntw_msg x // kept  \n\n}\n", {"s/a"}, "s/a",
       {"tw__sb s/a\n", "tw_msg x // kept  \n", "tw__eb\n\n", "\n"}},
      {"CR LF", "block a\r\n{\r\ntw_msg 1\r\n}\r\n", {"s/a"}, "s/a",
       {"tw__sb s/a\n", "tw_msg 1\n", "tw__eb\n\n", "\n"}},
      {"CR", "block a\r{\rtw_msg 1\r}\r", {"s/a"}, "s/a", {"tw__sb s/a\n", "tw_msg 1\n", "tw__eb\n\n", "\n"}},
      {"missing braces close at the end", "block a\n{\ntw_msg 1\n{\ntw_msg 2\n", {"s.b2", "s/a"}, "s/a",
       {"tw__sb s/a\n", "tw_msg 1\n", "tw__db s.b2\n", "tw__eb\n\n", "\n"}},
      {"surplus brace closes the section early", "block a\n{\ntw_msg 1\n}\ntw_msg ignored\n}\nblock b\n{\n}\n",
       {"s/a", "s/b"}, "s/a", {"tw__sb s/a\n", "tw_msg 1\n", "tw__eb\n\n", "\n"}},
  };
  for (const auto& c : cases) {
    auto script = Compile(c.text);
    EXPECT_EQ(BlockNames(*script), c.blocks) << c.why;
    const CBlock* block = Find(*script, c.block);
    ASSERT_NE(block, nullptr) << c.why;
    EXPECT_EQ(LinesOf(block), c.lines) << c.why;
    EXPECT_EQ(size_t(block->lineCount), c.lines.size() - 3) << c.why;  // without tw__sb and the end lines
    LineHandle handle = const_cast<CBlock*>(block)->FirstLine()->handle;
    script.reset();
    EXPECT_EQ(g_lineHandles.Get(handle), nullptr) << c.why;  // released lines give their handles up
  }
}

TEST(ScriptReader, LimitsOfTheText) {
  std::string text = "block a\n{\ntw_msg 1\n";
  text += '\0';
  text += "tw_msg 2\n}\nblock b\n{\n}\n";
  auto cutAtNul = Compile(text, text.size());
  EXPECT_EQ(BlockNames(*cutAtNul), (Names{"s/a"}));
  EXPECT_EQ(LinesOf(Find(*cutAtNul, "s/a")).size(), 4u);

  std::string line = "tw_msg " + std::string(3500 - 7, 'y');
  Names lines = LinesOf(Find(*Compile("block a\n{\n" + line + "\ntw_msg after\n}\n"), "s/a"));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[1], line.substr(0, MAX_SCRIPT_LINE - 1) + "\n");
  EXPECT_EQ(lines[2], "tw_msg after\n");

  std::string deep = "block deep\n{\n";
  for (int i = 0; i < 20000; ++i) deep += "{\n";
  EXPECT_EQ(Compile(deep)->blockCount, 20001);  // no recursion

  OutputCapture capture;
  auto longName = Compile("block " + std::string(150, 'n') + "\n{\n}\n");
  EXPECT_NE(Find(*longName, "s/" + std::string(MAX_SECTION_NAME - 1, 'n')), nullptr);
  EXPECT_TRUE(capture.Contains("Section name too long"));
}

// The place of each line of a block, as DescribeLine writes it: editor line numbers over blank lines,
// comments and every kind of line end. Lines of nested bodies naming their section run in the
// script/error_location scenario.
TEST(ScriptReader, LinesKnowTheirPlace) {
  const struct {
    const char* why;
    std::string text;
    const char* block;
    Names places;  // of the block's lines, tw__sb first
  } cases[] = {
      {"blank and comment lines count", "// note\n\nblock a\n{\n\n  // inside\n  echo 1\n\n  echo 2\n}\n", "s/a",
       {"path:3 (block s/a)", "path:7 (block s/a)", "path:9 (block s/a)"}},
      {"CR LF and lone CR end one line each", "block a\r\n{\r\necho 1\r\recho 2\r\n}\r\n", "s/a",
       {"path:1 (block s/a)", "path:3 (block s/a)", "path:5 (block s/a)"}},
      {"tw__db stands at the closing brace of the nested body",
       "block a\n{\n  if (1 = 1) do\n  {\n    echo in\n  }\n  echo after\n}\n", "s/a",
       {"path:1 (block s/a)", "path:3 (block s/a)", "path:6 (block s/a)", "path:7 (block s/a)"}},
      {"the section's header line even with blank lines before its brace", "\n\nevent x\n\n{\necho 1\n}\n", "s/x",
       {"path:3 (block s/x)", "path:6 (block s/x)"}},
  };
  for (const auto& c : cases) {
    auto script = std::make_unique<CScript>("s", "path");
    script->ParseBuffer(c.text.data(), c.text.size() + 1);
    CBlock* block = const_cast<CBlock*>(Find(*script, c.block));
    ASSERT_NE(block, nullptr) << c.why;
    Names places;
    char where[256];
    for (const CScriptLine* l = block->FirstLine(); l && DescribeLine(l, where, sizeof where); l = l->Next())
      places.push_back(where);
    EXPECT_EQ(places, c.places) << c.why;
  }
  EXPECT_FALSE(DescribeLine(nullptr, nullptr, 0));
}

}  // namespace
