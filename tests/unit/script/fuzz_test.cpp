// Random texts against the script reader and the tokenizer, checking what the fuzz targets don't: every
// block ends in its shared end lines, the registry stays consistent, and records keep their limits. The
// expansion is left to the expansion fuzz target.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "script_fixture.h"
#include "tier1/tokenize.h"

namespace {

// A text of up to `maxPieces` pieces that the parsers treat specially; a fixed seed makes a failure repeat.
std::string Make(std::mt19937& random, const std::vector<std::string>& pieces, size_t maxPieces) {
  std::string text;
  for (size_t count = random() % maxPieces; count; --count) text += pieces[random() % pieces.size()];
  return text;
}

const std::vector<std::string> kScriptPieces = {
    "block ", "event ", "{", "}", "\n", "\r\n", "\r", " ", "\t", "//", "/*", "*/", "\"", "x", "name", "tw_xset a 1",
    "tw__sb", std::string(1, '\0'), "\xff", "{\n", "}\n", "block a\n{\n", "event e\n{\n"};
const std::vector<std::string> kLinePieces = {" ", "\t", "\"", "(", ")", "{", "}", "'", ":", "//", "/*", "*/", "a",
                                              "word", "\n", "\xc3\xa9", "\"\"", "x y"};

class FuzzTest : public ScriptTest {};

TEST_F(FuzzTest, ScriptReaderTakesAnyText) {
  std::mt19937 random(20240611);
  CScriptRegistry& registry = g_scriptMachine.registry;
  for (int i = 0; i < 400; ++i) {
    std::string text = Make(random, kScriptPieces, 120);
    if (i % 50 == 0) text += "block long\n{\n" + std::string(random() % 4000, 'y') + "\n}\n";
    std::string name = "fuzz" + std::to_string(i % 7);
    CScript* script = new CScript(name.c_str());
    script->ParseBuffer(text.data(), text.size());
    for (CBlock* b = script->firstBlock; b; b = b->next) {
      const CScriptLine* last = b->FirstLine();
      for (uint32_t i = 0; i < b->lineCount + 2; ++i) last = last->Next();
      ASSERT_EQ(last->Next(), nullptr);
      ASSERT_STREQ(last->text, "\n");
    }
    if (!registry.AddScript(script)) {
      delete script;
      registry.RemoveScript(name.c_str());
    }
  }
}

TEST_F(FuzzTest, TokenizerTakesAnyLine) {
  std::mt19937 random(7);
  for (int i = 0; i < 2000; ++i) {
    std::string line = Make(random, kLinePieces, 200);
    CommandArgs* args = Cmd_Tokenize(line.c_str());
    ASSERT_LE(args->Argc(), MAX_COMMAND_TOKENS);
    for (int t = 0; t < args->Argc(); ++t) ASSERT_LT(strlen(args->Argv(t)), size_t(MAX_TOKEN_CHARS));
    delete args;
  }
}

}  // namespace
