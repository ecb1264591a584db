// --init: a new server root that the stand-in and the real plugin start on without a complaint, and
// that a second --init leaves alone.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "init_tree.h"
#include "output_capture.h"
#include "standin.h"
#include "test_server.h"

namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

TEST(InitTree, MakesARootTheServerAndPluginStartOnAndLeavesAnExistingOneAlone) {
  std::string pattern = std::string(getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp") + "/tw-init-XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  const fs::path root = fs::path(pattern) / "myserver";
  {
    OutputCapture out;
    ASSERT_TRUE(InitServerRoot(root.string(), "tidewright-server"));
    EXPECT_NE(out.Text().find("Start it with:\n  tidewright-server --game " + (root / "game").string() + "\n"),
              std::string::npos)
        << out.Text();
  }

  StandInConfig config;
  config.gameDir = (root / "game").string();
  {
    OutputCapture out;
    CStandIn server(config);
    server.Start(TestServer::RealPlugin(), "tidewright");
    std::string startup = out.Take();
    EXPECT_EQ(startup.find("ERROR"), std::string::npos) << startup;
    EXPECT_EQ(startup.find("couldn't"), std::string::npos) << startup;
    EXPECT_NE(startup.find("[Tidewright] Loaded example\nexample is loaded"), std::string::npos) << startup;
    for (const char* line : {"tw_doblock example/hello", "sim_connect Ann", "sim_kill 0 2"}) server.RunLine(line);
    EXPECT_EQ(out.Take(), "hello there\nClient \"Ann\" connected as userid 2\n2 was killed by 0 with world\n");
  }

  // A second --init changes nothing of what is there, and says which file stopped it.
  const fs::path autoexec = root / "game/cfg/autoexec.cfg";
  std::ofstream(autoexec) << "echo mine\n";
  fs::remove(root / "game/cfg/server.cfg");
  {
    OutputCapture out;
    EXPECT_FALSE(InitServerRoot(root.string(), "tidewright-server"));
    EXPECT_NE(out.Text().find("gameevents.res exists already; nothing was made"), std::string::npos) << out.Text();
  }
  EXPECT_EQ(Read(autoexec), "echo mine\n");
  EXPECT_FALSE(fs::exists(root / "game/cfg/server.cfg"));
  fs::remove_all(pattern);
}

}  // namespace
