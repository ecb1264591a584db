// The corelib script that comes with the plugin: it loads, and its helpers do what their comments say when
// called with block arguments as a registered command passes them (the command's name first).
#include <gtest/gtest.h>

#include <string>

#include "script_fixture.h"

namespace {

class CorelibTest : public ScriptTest {
protected:
  void SetUp() override {
    ScriptTest::SetUp();
    std::string out = Run("tw_xload corelib");
    ASSERT_NE(out.find("[Tidewright] Loaded corelib\n"), std::string::npos) << out;
  }
  static std::string Call(const char* block, const char* args) {
    DoBlock(block, args);
    return Settle();
  }
};

TEST_F(CorelibTest, LoadSetsTheVersion) { EXPECT_EQ(Var("corelib_version"), "1"); }

TEST_F(CorelibTest, VersionPrintsBoth) {
  std::string out = Run("tw_xdoblock corelib/version");
  EXPECT_NE(out.find("Version:2.0.0.248\n"), std::string::npos) << out;
  EXPECT_NE(out.find("corelib version 1\n"), std::string::npos) << out;
}

TEST_F(CorelibTest, SwapExchangesValues) {
  Set("cl_x", "left value");
  Set("cl_y", "right");
  Call("corelib/swap", "swap cl_x cl_y");
  EXPECT_EQ(Var("cl_x"), "right");
  EXPECT_EQ(Var("cl_y"), "left value");
}

TEST_F(CorelibTest, ClearEmpties) {
  Set("cl_x", "something");
  Call("corelib/clear", "clear cl_x");
  EXPECT_EQ(Var("cl_x"), "");
}

TEST_F(CorelibTest, PrintAndRun) {
  Set("cl_x", "printed text");
  EXPECT_EQ(Call("corelib/print", "print cl_x"), "printed text\n");
  Set("cl_cmd", "echo ran from a variable");
  EXPECT_EQ(Call("corelib/run", "run cl_cmd"), "ran from a variable\n");
}

TEST_F(CorelibTest, LogWritesTheArguments) {
  EXPECT_EQ(LogOf(Call("corelib/log", "log player joined")), "player joined\n");
}

}  // namespace
