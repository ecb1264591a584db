// The benchmarks' stand-in server: a silent process, a copy of demo/ in a temporary folder that goes at exit,
// script files written into that copy, and the server started there with the real plugin.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "standin.h"
#include "tier0.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace bench {

namespace fs = std::filesystem;

inline void Quiet(SpewType_t, const char*) {}

// Silences the console and copies the demo tree as built to a fresh temporary folder; gives the game folder
// in it.
inline fs::path CopyDemo() {
  SpewOutputFunc(Quiet);
  const char* tmp = getenv("TMPDIR");
  std::string pattern = std::string(tmp && tmp[0] ? tmp : "/tmp") + "/tw-bench-XXXXXX";
  if (!mkdtemp(pattern.data())) abort();
  // The server lives until the process ends, as the plugin's globals point into it; its folder goes at exit.
  static fs::path root = pattern;
  atexit([] {
    std::error_code ignored;
    fs::remove_all(root, ignored);
  });
  fs::copy(fs::path(TW_DEMO_TREE), root, fs::copy_options::recursive);
  return root / "game";
}

// A script file where tw_load finds the script `name`.
inline void WriteScript(const fs::path& game, const std::string& name, const std::string& text) {
  fs::path path = game / "addons/tidewright" / name / ("tw_" + name + ".txt");
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

// Starts a stand-in server on `game` with the real plugin; it is never deleted.
inline CStandIn* StartServer(const fs::path& game) {
  StandInConfig config;
  config.gameDir = game.string();
  CStandIn* server = new CStandIn(config);
  server->Start(&CreateInterface, "tidewright");
  return server;
}

}  // namespace bench
