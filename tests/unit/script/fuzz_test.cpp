// Random texts against the parsers: the script reader, the tokenizer and the expansion. Nothing may crash,
// read outside its buffers or leave the registry inconsistent; the sanitizer build checks the memory.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "script_fixture.h"
#include "tier1/tokenize.h"

namespace {

// Texts made of the pieces that the parsers treat specially, with a fixed seed so that a failure repeats.
class TextSource {
public:
  explicit TextSource(unsigned seed) : m_random(seed) {}

  std::string Make(const std::vector<std::string>& pieces, size_t maxPieces) {
    std::string text;
    size_t count = m_random() % maxPieces;
    for (size_t i = 0; i < count; ++i) text += pieces[m_random() % pieces.size()];
    return text;
  }
  std::string Long(char c) { return std::string(m_random() % 4000, c); }

private:
  std::mt19937 m_random;
};

const std::vector<std::string> kScriptPieces = {
    "block ", "event ", "{", "}", "\n", "\r\n", "\r", " ", "\t", "//", "/*", "*/", "\"", "x", "name", "tw_xset a 1",
    "tw__sb", std::string(1, '\0'), "\xff", "{\n", "}\n", "block a\n{\n", "event e\n{\n"};
const std::vector<std::string> kLinePieces = {" ", "\t", "\"", "(", ")", "{", "}", "'", ":", "//", "/*", "*/", "a",
                                              "word", "\n", "\xc3\xa9", "\"\"", "x y"};
const std::vector<std::string> kExpansionPieces = {" ",  "server_var", "event_var", "SERVER_VAR", "(", ")",
                                                   "'",  ":",          "\"",        "fz_var",     "fz_ref", "a",
                                                   "//", "{",          "}",         "0x10"};

class FuzzTest : public ScriptTest {};

TEST_F(FuzzTest, ScriptReaderTakesAnyText) {
  TextSource source(20240611);
  CScriptRegistry& registry = g_scriptMachine.registry;
  for (int i = 0; i < 400; ++i) {
    std::string text = source.Make(kScriptPieces, 120);
    if (i % 50 == 0) text += "block long\n{\n" + source.Long('y') + "\n}\n";
    std::string name = "fuzz" + std::to_string(i % 7);
    CScript* script = new CScript(name.c_str());
    script->ParseBuffer(text.data(), text.size());
    for (CBlock* b = script->firstBlock; b; b = b->next) {
      ASSERT_TRUE(b->closed);
      ASSERT_EQ(b->lastLine->next, nullptr);
      ASSERT_STREQ(b->lastLine->text, "\n");
    }
    if (!registry.AddScript(script)) {
      delete script;
      registry.RemoveScript(name.c_str());
    }
  }
}

TEST_F(FuzzTest, TokenizerTakesAnyLine) {
  TextSource source(7);
  for (int i = 0; i < 2000; ++i) {
    std::string line = source.Make(kLinePieces, 200);
    CommandArgs* args = Cmd_Tokenize(line.c_str());
    ASSERT_LE(args->Argc(), MAX_COMMAND_TOKENS);
    for (int t = 0; t < args->Argc(); ++t) ASSERT_LT(strlen(args->Argv(t)), size_t(MAX_TOKEN_CHARS));
    delete args;
  }
}

TEST_F(FuzzTest, ExpansionTakesAnyTokens) {
  TextSource source(99);
  SetVarText("fz_var", "value with blanks", true);
  SetVarText("fz_ref", "fz_var", true);
  for (int i = 0; i < 300; ++i) {
    std::string text = source.Make(kExpansionPieces, 40);
    Run("tw tw_xlogq " + text);
    Run("tw_set fz_out " + text);
  }
  EXPECT_EQ(Standin().Cbuf().PendingBytes(), 0u);
}

}  // namespace
