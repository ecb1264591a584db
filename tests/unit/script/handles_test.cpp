// A script whose lines or blocks find no handles left is refused with a message: loaded, it would run
// nothing and say nothing.
#include <gtest/gtest.h>

#include <string>

#include "script_fixture.h"
#include "script/scriptfile.h"

namespace {

class ScriptHandles : public ScriptTest {
protected:
  void TearDown() override {
    g_lineHandles.LimitSlots(HandleTable<CScriptLine>::kMaxSlots);
    g_blockHandles.LimitSlots(HandleTable<CBlock>::kMaxSlots);
    ScriptTest::TearDown();
  }
};

const char* const kThreeBlocks = "block a\n{\necho a\n}\nblock b\n{\necho b\n}\nblock c\n{\necho c\n}\n";

}  // namespace

TEST_F(ScriptHandles, LinesPastTheLimitRefuseTheScript) {
  Load("first", "block a\n{\n}\n");  // the end lines that every block shares have their handles now
  g_lineHandles.LimitSlots(g_lineHandles.LiveCount() + 5);  // three blocks need six lines
  EXPECT_EQ(Load("three", kThreeBlocks),
            "[Tidewright] Load script failed: more lines or blocks are loaded than handles can name (16777216 of "
            "each). three\n");
  EXPECT_EQ(g_scriptMachine.registry.FindScript("three"), nullptr);
  g_lineHandles.LimitSlots(g_lineHandles.LiveCount() + 6);
  EXPECT_EQ(Load("three", kThreeBlocks), "[Tidewright] Loaded three\n");
  EXPECT_EQ(Run("tw_xdoblock three/c"), "c\n");
}

TEST_F(ScriptHandles, BlocksPastTheLimitRefuseTheScript) {
  g_blockHandles.LimitSlots(g_blockHandles.LiveCount() + 2);
  EXPECT_NE(Load("three", kThreeBlocks).find("Load script failed"), std::string::npos);
  EXPECT_EQ(g_scriptMachine.registry.FindScript("three"), nullptr);
  Load("two", "block a\n{\necho a\n}\nblock b\n{\necho b\n}\n");
  EXPECT_EQ(Run("tw_xdoblock two/b"), "b\n");
}
