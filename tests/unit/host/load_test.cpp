// Load and the interfaces it acquires: order and factory, the required ones, version probing, and what Load
// leaves behind (the queued command line, the user tree, rcon_password, a clean instruction).
#include <cstring>
#include <string>
#include <vector>

#include "KeyValues.h"
#include "host_fixture.h"
#include "vstdlib.h"

namespace {

using Names = std::vector<std::string>;

class LoadTest : public HostTest {
protected:
  void TearDown() override {
    ASSERT_TRUE(Reload());
    Standin().Cbuf().Clear();
  }
  static const Names& Asked() { return FilteredFactories::asked; }
};

TEST_F(LoadTest, InterfacesAreAskedInOrderEachOfItsOwnFactory) {
  VarRestorer restore(tidewright_debug);
  tidewright_debug.SetValue(1);
  std::string printed;
  ASSERT_TRUE(Reload({}, &printed));
  EXPECT_EQ(Asked(), (Names{"game:PlayerInfoManager002", "engine:VoiceServer001", "engine:VEngineServer021",
                            "engine:GAMEEVENTSMANAGER002", "engine:VFileSystem012",
                            "engine:ISERVERPLUGINHELPERS001", "engine:EngineTraceServer003",
                            "engine:IEngineSoundServer003", "game:IEffects001",
                            "engine:VEngineServerStringTable001", "engine:VEngineRandom001", "engine:VPhysics030",
                            "game:ServerGameEnts001", "game:ServerGameDLL003", "game:ServerGameDLL004",
                            "game:ServerGameDLL005", "game:ServerGameClients003", "engine:VEngineCvar002"}));
  EXPECT_NE(printed.find("[Tidewright] Using ServerGameDLL005 for game.\n"), std::string::npos);
  EXPECT_NE(printed.find("[Tidewright] Using ServerGameClients003 for game clients.\n"), std::string::npos);
}

TEST_F(LoadTest, MissingRequiredInterfaceStopsLoadWithTheWarning) {
  for (const char* name : {"VEngineServer021", "GAMEEVENTSMANAGER002", "VFileSystem012", "ISERVERPLUGINHELPERS001",
                           "EngineTraceServer003", "IEngineSoundServer003", "IEffects001",
                           "VEngineServerStringTable001", "VEngineRandom001"}) {
    SCOPED_TRACE(name);
    std::string printed;
    EXPECT_FALSE(Reload({name}, &printed));
    EXPECT_NE(printed.find("[Tidewright] Failure in getting the interfaces we need.\n"), std::string::npos);
    EXPECT_EQ(printed.find("plugin loaded"), std::string::npos);
    EXPECT_TRUE(Asked().back().ends_with(std::string(":") + name));  // nothing after it was asked
  }
  OutputCapture out;
  EXPECT_FALSE(g_TidewrightPlugin.Load(nullptr, nullptr));
  EXPECT_TRUE(out.Contains("[Tidewright] Failure in getting the interfaces we need.\n"));
}

Names g_probed;

void* Versions7And8(const char* name, int*) {
  static char v2, v7, v8;
  g_probed.push_back(name);
  if (strcmp(name, "ServerGameDLL002") == 0) return &v2;
  if (strcmp(name, "ServerGameDLL007") == 0) return &v7;
  return strcmp(name, "ServerGameDLL008") == 0 ? &v8 : nullptr;
}

TEST_F(LoadTest, ProbingTakesTheFirstVersionFromThreeOnAndStopsThere) {
  char name[64] = "";
  void* found = ProbeInterfaceVersion(&Versions7And8, "ServerGameDLL", name, sizeof name);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(name, "ServerGameDLL007");
  EXPECT_EQ(g_probed, (Names{"ServerGameDLL003", "ServerGameDLL004", "ServerGameDLL005", "ServerGameDLL006",
                             "ServerGameDLL007"}));

  g_probed.clear();
  EXPECT_EQ(ProbeInterfaceVersion(&Versions7And8, "Nothing", nullptr, 0), nullptr);
  ASSERT_EQ(g_probed.size(), 996u);
  EXPECT_EQ(g_probed.back(), "Nothing998");
}

TEST_F(LoadTest, CommandLineIsQueuedAsOneQuotedArgument) {
  const std::string overlong(5000, 'c');
  const std::string cut = "tw_xsetinfo tidewright_cmdline \"" + std::string(2046 - 33, 'c') + "\"";
  struct Row {
    std::string line, queued;
  };
  for (const Row& row : {Row{"srcds -game \"my game\"", "tw_xsetinfo tidewright_cmdline \"srcds -game 'my game'\""},
                         Row{overlong, cut}}) {
    CommandLine()->CreateCmdLine(row.line.c_str());
    Standin().Cbuf().Clear();
    ASSERT_TRUE(Reload());
    std::string queued;
    ASSERT_TRUE(Standin().Cbuf().NextCommand(queued));
    EXPECT_EQ(queued, row.queued);
    EXPECT_TRUE(Standin().Cbuf().IsEmpty());  // the closing quote and the line end survive a cut
  }
  CommandLine()->CreateCmdLine("");
}

TEST_F(LoadTest, LoadStartsCleanAndKeepsWhatIsMadeOnce) {
  ip.cmd = "stale\n";
  ip.line = "stale.txt";
  VarRestorer restore(tidewright_eiface);
  tidewright_eiface.m_nValue = 4;  // written behind the callback's back
  KeyValues* tree = g_userTree;
  ASSERT_TRUE(Reload());
  EXPECT_STREQ(ip.cmd, "(no script)\n");
  EXPECT_STREQ(ip.line, "(console)");
  EXPECT_EQ(g_cached.eiface, 4);
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(g_userTree, tree);
  EXPECT_STREQ(tree->GetName(), "UserKeys");
  EXPECT_NE(tree->FindKey("UserGroups"), nullptr);
  EXPECT_NE(tree->FindKey("Ungrouped"), nullptr);
}

TEST_F(LoadTest, RconPasswordIsProtectedWhenAsked) {
  VarRestorer restore(tidewright_protectrcon);
  ConVar* rcon = FindServerVar("rcon_password");
  ASSERT_NE(rcon, nullptr);
  rcon->SetFlagsRaw(rcon->GetFlagsRaw() & ~FCVAR_PROTECTED);
  tidewright_protectrcon.SetValue(0);
  ASSERT_TRUE(Reload());
  EXPECT_FALSE(rcon->IsBitSet(FCVAR_PROTECTED));
  tidewright_protectrcon.SetValue(1);
  ASSERT_TRUE(Reload());
  EXPECT_TRUE(rcon->IsBitSet(FCVAR_PROTECTED));
}

}  // namespace
