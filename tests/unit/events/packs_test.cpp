// Script packs: registering, unregistering and listing, the pack files that answer an event in registration
// order, the pseudo event "server" at each map, and the registry's own events.
#include <gtest/gtest.h>

#include <string>

#include "events_fixture.h"

namespace {

class PackTest : public EventTest {};

constexpr const char* kHeader = "\nTidewright Script packs:\n------------------------------------------\n";
constexpr const char* kFooter = "------------------------------------------\n";
constexpr const char* kLevelBanners =
    "[Tidewright] Map Loading Brannock's Tidewright plugin...\n[Tidewright] Loaded successfully.\n";

// ---- the console commands ----

TEST_F(PackTest, ListBeforeAnyPackSaysSoAtLevelOne) {
  EXPECT_EQ(Run("tidewright_register"), std::string(kHeader) + kFooter);
  tidewright_debug.SetValue(1);
  EXPECT_EQ(Run("tw_xscriptpacklist"),
            std::string(kHeader) +
                "[Tidewright] Error: No registration system available because you've never loaded a script pack. "
                "(Script pack subsystem is deactivated until you register the first script pack with "
                "tidewright_register.)\n" +
                kFooter);
}

TEST_F(PackTest, UnregisterBeforeAnyPackIsRefused) {
  EXPECT_EQ(Run("tidewright_unregister foo"),
            "[Tidewright] Internal Error: Couldn't unregister-- registration system is unavailable until you load "
            "your first script pack with tidewright_register.\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal error: registration system is unavailable.");
  EXPECT_EQ(Run("tw_scriptpacklist"), std::string(kHeader) + kFooter);
}

TEST_F(PackTest, RegisterSetsTheDirectoryVariableAndLists) {
  EXPECT_EQ(Run("tidewright_register alpha"), "[Tidewright] Registered script pack: alpha\n");
  EXPECT_EQ(Var("alpha_dir"), "/alpha/");
  tidewright_subdirectory.SetValue("packs");
  Run("tidewright_register beta");
  EXPECT_EQ(Var("beta_dir"), "packs/beta/");
  EXPECT_EQ(Run("tw_scriptpacklist"),
            std::string(kHeader) + "00:   [on]    \"alpha\"\n01:   [on]    \"beta\"\n" + kFooter);
}

TEST_F(PackTest, RegisteringTwiceKeepsOneEntryAndFiresTwice) {
  Load("hears", "event tw_scriptpack_register\n{\ntw_dbgmsg 0 registered event_var(scriptpack)\n}\n");
  EXPECT_EQ(Run("tidewright_register twice"), "[Tidewright] Registered script pack: twice\nregistered twice\n");
  EXPECT_EQ(Run("tidewright_register twice"), "[Tidewright] Registered script pack: twice\nregistered twice\n");
  EXPECT_EQ(Run("tw_xscriptpacklist"), std::string(kHeader) + "00:   [on]    \"twice\"\n" + kFooter);
}

TEST_F(PackTest, UnregisteredPackIsListedOffInPlaceAndComesBackOn) {
  Run("tidewright_register one\ntidewright_register two");
  EXPECT_EQ(Run("tidewright_unregister one"), "[Tidewright] Unregistered script pack: one\n");
  EXPECT_EQ(Run("tidewright_register"),
            std::string(kHeader) + "00:   [off]   \"one\"\n01:   [on]    \"two\"\n" + kFooter);
  Run("tidewright_register one");
  EXPECT_EQ(Run("tidewright_unregister"),
            std::string(kHeader) + "00:   [on]    \"one\"\n01:   [on]    \"two\"\n" + kFooter);
}

TEST_F(PackTest, UnregisterTakesTheWholeArgumentText) {
  Run("tidewright_register first");
  Run("tidewright_unregister never registered");
  EXPECT_EQ(Run("tw_scriptpacklist"),
            std::string(kHeader) + "00:   [on]    \"first\"\n01:   [off]   \"never registered\"\n" + kFooter);
}

TEST_F(PackTest, PackNameWithASlashStaysOneEntry) {
  Run("tidewright_register outer/inner");
  EXPECT_EQ(Run("tw_scriptpacklist"), std::string(kHeader) + "00:   [on]    \"outer/inner\"\n" + kFooter);
  WriteTestFile("cfg/outer/inner/player_spawn.cfg", "echo nested pack file\n");
  Fire("player_spawn");
  EXPECT_EQ(Settle(), "nested pack file\n");
}

TEST_F(PackTest, OverlongPackNameIsRefused) {
  // Each name stands twice in the directory variable's command, which then passes the line limit.
  std::string name(1020, 'p');
  EXPECT_EQ(Run("tidewright_register " + name), "[Tidewright] Script pack name too long: " + name + "\n");
  EXPECT_EQ(Var("tidewright_lasterror"), "Resulting string too long.");
  EXPECT_EQ(Run("tidewright_unregister x").rfind("[Tidewright] Internal Error", 0), 0u);
}

TEST_F(PackTest, ListForAPlayerPrintsNothing) {
  Run("tidewright_register quiet");
  EXPECT_EQ(Run("tw_scriptpacklist 7"), "");
  EXPECT_EQ(Run("tw_xscriptpacklist 0"), std::string(kHeader) + "00:   [on]    \"quiet\"\n" + kFooter);
}

// ---- packs answering events ----

TEST_F(PackTest, PackFilesRunInRegistrationOrderBeforeTheScripts) {
  WriteTestFile("cfg/player_death.cfg", "echo event cfg\n");
  WriteTestFile("cfg/second/player_death.cfg", "tw_dbgmsg 0 second pack event_var(userid)\n");
  WriteTestFile("cfg/first/player_death.cfg", "echo first pack\n");
  Load("script", "event player_death\n{\necho script\n}\n");
  Run("tidewright_register first\ntidewright_register second\ntidewright_register empty");
  Fire("player_death", {{"userid", "3"}});
  EXPECT_EQ(Settle(), "event cfg\nfirst pack\nsecond pack 3\nscript\n");
}

TEST_F(PackTest, PackFileAloneMakesTheEventWanted) {
  WriteTestFile("cfg/solo/player_spawn.cfg", "tw_dbgmsg 0 solo sees event_var(tw_event)\n");
  Run("tidewright_register solo");
  Fire("player_spawn");
  EXPECT_EQ(QueuedEventCount(), 1u);
  EXPECT_EQ(Settle(), "solo sees player_spawn\n");
}

TEST_F(PackTest, PackTurnedOffNoLongerAnswers) {
  WriteTestFile("cfg/fickle/player_spawn.cfg", "echo fickle\n");
  Run("tidewright_register fickle\ntidewright_unregister fickle");
  Fire("player_spawn");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
  EXPECT_EQ(QueuedEventCount(), 0u);
}

TEST_F(PackTest, PackHearsItsOwnUnregistering) {
  WriteTestFile("cfg/leaving/tw_scriptpack_unregister.cfg", "tw_dbgmsg 0 goodbye from event_var(scriptpack)\n");
  Run("tidewright_register leaving");
  EXPECT_EQ(Run("tidewright_unregister leaving"),
            "[Tidewright] Unregistered script pack: leaving\ngoodbye from leaving\n");
}

TEST_F(PackTest, PackFilesFollowTheSubdirectoryAndExecCommand) {
  tidewright_subdirectory.SetValue("packs");
  WriteTestFile("cfg/packs/sub/player_spawn.cfg", "echo sub pack\n");
  Run("tidewright_register sub");
  Standin().SetAlias("packexec", "echo packexec ran");
  tidewright_exec_cmd.SetValue("packexec");
  tidewright_debug.SetValue(2);
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_TRUE(out.Contains("Sending packexec command for packs/sub/player_spawn.\n")) << out.Text();
  std::vector<std::string> commands = TakeCommands();
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[1], "packexec packs/sub/player_spawn.cfg");
}

TEST_F(PackTest, OverlongPackFileNameIsReportedAndCountsAsAbsent) {
  Run("tidewright_register wide");
  tidewright_subdirectory.SetValue(std::string(2100, 'w').c_str());
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_TRUE(out.Contains("[Tidewright] The file name of script pack wide for event player_spawn is too long.\n"))
      << out.Text();
  EXPECT_EQ(QueuedEventCount(), 0u);
}

TEST_F(PackTest, MissingPackFileIsToldAtLevelOne) {
  Load("listener", "event player_spawn\n{\n}\n");
  Run("tidewright_register hollow");
  tidewright_debug.SetValue(1);
  OutputCapture out;
  Fire("player_spawn");
  EXPECT_EQ(out.Text(), "File doesn't exist: cfg//hollow/player_spawn.cfg\n");
}

TEST_F(PackTest, EmptyEventNameIsAnInternalError) {
  const std::string error = "[Tidewright] Error, event string nonexistent.\n";
  OutputCapture out;
  EXPECT_FALSE(RegisteredScriptExists(""));
  EXPECT_FALSE(RegisteredScriptExists(nullptr));
  EXPECT_EQ(out.Take(), error + error);
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal Error");
  Load("blank", "event player_spawn\n{\n}\n");
  ExecAllRegistered("");
  EXPECT_EQ(out.Take(), error);
  EXPECT_EQ(Var("tidewright_lasterror"), "Internal error");
  EXPECT_TRUE(Standin().Cbuf().IsEmpty());
}

// ---- the map's server event ----

TEST_F(PackTest, EachMapRunsThePacksServerFilesAndTheScriptsServerSections) {
  WriteTestFile("cfg/host/server.cfg", "echo host pack server.cfg\n");
  Load("greeter",
       "event server\n{\necho script server section\n}\n"
       "event tw_map_start\n{\ntw_dbgmsg 0 map event_var(mapname)\n}\n");
  Run("tidewright_register host");
  for (std::string map : {"first_map", "second_map"})
    EXPECT_EQ(Run("map " + map), std::string(kLevelBanners) + "Level \"" + map +
                                     "\" started\nhost pack server.cfg\nscript server section\nmap " + map + "\n");
}

TEST_F(PackTest, MasterSwitchOffSkipsTheServerEvent) {
  WriteTestFile("cfg/host/server.cfg", "echo host pack server.cfg\n");
  Run("tidewright_register host");
  brannock_tidewright.SetValue(0);
  EXPECT_EQ(Run("map quiet_map"), std::string(kLevelBanners) + "Level \"quiet_map\" started\n");
}

}  // namespace
