// Making a new server root for --init: copies of the demo tree's event files and Python package, and a few
// short texts.
#include "init_tree.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "tier0.h"

namespace {

namespace fs = std::filesystem;

// The event declarations, copied from the demo tree as built: path in the new root = path in the demo tree.
constexpr const char* kCopied[] = {"hl2/resource/gameevents.res", "hl2/resource/serverevents.res",
                                   "game/resource/modevents.res", "game/addons/brannock_tidewright.res"};

// The Python package tw, copied whole from the demo tree as built, so addons run in the new root.
constexpr const char* kPackage = "game/addons/tidewright/_libs/python/tw";

struct Written {
  const char* path;
  const char* text;
};

const Written kWritten[] = {
    {"game/cfg/autoexec.cfg",
     "// autoexec.cfg: runs once when the server starts, after the plugin has loaded and before the first\n"
     "// level. One console command per line; lines starting with // are comments.\n"
     "\n"
     "hostname \"My Tidewright Server\"\n"
     "tw_load example\n"},
    {"game/cfg/server.cfg",
     "// server.cfg: runs each time the server has started its first level. Settings for the game go here.\n"
     "\n"
     "sv_cheats 0\n"},
    {"game/addons/tidewright/corelib/tw_corelib.txt",
     "// corelib: loaded with the plugin, before any other script. Blocks that every script may call go here.\n"},
    {"game/addons/tidewright/example/tw_example.txt",
     "// example: a first script, loaded by cfg/autoexec.cfg. Change it, then type tw_reload example.\n"
     "\n"
     "block load\n"
     "{\n"
     "  echo example is loaded - try tw_doblock example/hello, or sim_connect Ann then sim_kill 0 2\n"
     "}\n"
     "\n"
     "block hello\n"
     "{\n"
     "  tw_xset greeting \"hello there\"\n"
     "  if (server_var(greeting) = \"hello there\") do\n"
     "  {\n"
     "    tw echo server_var(greeting)\n"
     "  }\n"
     "}\n"
     "\n"
     "event player_death\n"
     "{\n"
     "  tw echo event_var(userid) was killed by event_var(attacker) with event_var(weapon)\n"
     "}\n"},
};

bool Refuse(const std::string& what) {
  Warning("tidewright-server: --init: %s; nothing was made\n", what.c_str());
  return false;
}

}  // namespace

bool InitServerRoot(const std::string& rootDir, const std::string& program) {
  const fs::path demo = TW_DEMO_TREE;
  const fs::path root = rootDir;
  std::vector<fs::path> made;
  for (const char* path : kCopied) {
    if (!fs::is_regular_file(demo / path)) return Refuse((demo / path).string() + " is missing (make builds it)");
    made.push_back(path);
  }
  if (!fs::is_directory(demo / kPackage)) return Refuse((demo / kPackage).string() + " is missing (make builds it)");
  made.push_back(kPackage);
  for (const Written& w : kWritten) made.push_back(w.path);
  for (const fs::path& path : made)
    if (fs::exists(root / path)) return Refuse((root / path).string() + " exists already");

  std::error_code error;
  for (const fs::path& path : made) fs::create_directories((root / path).parent_path(), error);
  for (const char* path : kCopied)
    if (!error) fs::copy_file(demo / path, root / path, error);
  if (!error) fs::copy(demo / kPackage, root / kPackage, fs::copy_options::recursive, error);
  for (const Written& w : kWritten) {
    if (error) break;
    std::ofstream out(root / w.path, std::ios::binary);
    if (!(out << w.text)) error = std::make_error_code(std::errc::io_error);
  }
  if (error) return Refuse("couldn't write under " + rootDir + ": " + error.message());

  std::string game = (root / "game").string();
  Msg("Made a server root in %s:\n"
      "  hl2/resource/              the engine's game events\n"
      "  game/                      the mod: cfg/autoexec.cfg, cfg/server.cfg, resource/modevents.res,\n"
      "                             addons/brannock_tidewright.res (the plugin's events)\n"
      "  game/addons/tidewright/    scripts: corelib (empty) and example; _libs/python/tw (the package tw)\n"
      "Start it with:\n"
      "  %s --game %s\n",
      rootDir.c_str(), program.c_str(), game.c_str());
  return true;
}
