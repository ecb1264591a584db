// Links that lead out of the server root are refused where a file is opened, whatever reaches the file
// system: the server's exec, the plugin's script loader and keygroup files. What the operator sees is what
// a path that climbs out with ".." gives; a link that stays inside the root is followed.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "test_server.h"

namespace {

namespace fs = std::filesystem;

class Links : public ::testing::Test {
protected:
  void SetUp() override {
    outside = fs::path(server.Root()).parent_path() / (fs::path(server.Root()).filename().string() + "-outside");
    fs::create_directories(outside);
    WriteTestFile(outside / "evil.cfg", "echo an outside file ran\n");
    WriteTestFile(outside / "x/tw_x.txt", "block load\n{\n  echo an outside script loaded\n}\n");
    WriteTestFile(outside / "tw_kept_db.txt", "\"kept\"\n{\n  \"k\" \"outside\"\n}\n");
    fs::path game = server.GameDir();
    fs::create_directory_symlink(outside, game / "cfg/inlink");
    fs::create_directory_symlink(outside, game / "addons/tidewright/inlink");
    // Leads out and back in: every component counts, not only where the path ends.
    fs::create_directory_symlink("../../../" + fs::path(server.Root()).filename().string() + "/game/cfg",
                                 game / "cfg/roundabout");
    fs::create_directory_symlink("../addons", game / "cfg/inside");
  }
  void TearDown() override {
    fs::path game = server.GameDir();
    for (const char* link : {"cfg/inlink", "addons/tidewright/inlink", "cfg/roundabout", "cfg/inside"})
      fs::remove(game / link);
    fs::remove_all(outside);
  }

  TestServer& server = TestServer::Shared();
  fs::path outside;
};

TEST_F(Links, LeadingOutIsRefusedAsDotDotIs) {
  const std::string out = outside.filename().string();
  const std::string back = fs::path(server.Root()).filename().string() + "/game/cfg";
  // Each line once through a link and once climbing to the same place by its text; the outputs match
  // with the two path parts put aside.
  const struct {
    std::string line, viaLink, viaDotDot;
  } cases[] = {
      {"exec @/evil", "inlink", "../../../" + out},
      {"exec @/autoexec", "roundabout", "../../../" + back},
      {"tw_load @/x", "inlink", "../../../../" + out},
      {"tw_keygroupload kept |@", "inlink", "../../../../" + out},
      {"tw_keygroupsave made |@", "inlink", "../../../../" + out},
  };
  server.Run("tw_keygroupcreate made");
  for (const auto& c : cases) {
    std::string linked = Replaced(server.Run(Replaced(c.line, "@", c.viaLink)), c.viaLink, "@");
    std::string climbed = Replaced(server.Run(Replaced(c.line, "@", c.viaDotDot)), c.viaDotDot, "@");
    EXPECT_NE(climbed, "") << c.line;
    EXPECT_EQ(linked, climbed) << c.line;
    EXPECT_EQ(linked.find("outside"), std::string::npos) << linked;
  }
  EXPECT_FALSE(fs::exists(outside / "tw_made_db.txt"));
  server.Run("tw_keygroupdelete made");
}

TEST_F(Links, StayingInsideIsFollowed) {
  WriteTestFile(fs::path(server.GameDir()) / "addons/inner.cfg", "echo an inner file ran\n");
  EXPECT_EQ(server.Run("exec inside/inner"), "an inner file ran\n");
}

}  // namespace
