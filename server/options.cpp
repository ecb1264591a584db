// Reading the server's command line.
#include "options.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

bool ParseInt(const char* text, long long min, long long max, long long& out) {
  char* end = nullptr;
  errno = 0;
  long long v = strtoll(text, &end, 10);
  if (errno || end == text || *end || v < min || v > max) return false;
  out = v;
  return true;
}

std::string Absolute(const std::string& path) {
  if (path.empty() || path[0] == '/') return path;
  char cwd[4096];
  return getcwd(cwd, sizeof cwd) ? std::string(cwd) + "/" + path : path;
}

void SplitNames(const char* text, std::vector<std::string>& out) {
  std::string name;
  for (const char* p = text;; ++p) {
    if (*p == ',' || *p == '\0') {
      if (!name.empty()) out.push_back(name);
      name.clear();
      if (!*p) return;
    } else {
      name += *p;
    }
  }
}

// A + command runs up to the next argument that starts with + or --.
int TakeStartupCommand(int argc, char** argv, int i, std::vector<std::string>& out) {
  std::string line = argv[i] + 1;
  for (++i; i < argc && argv[i][0] != '+' && strncmp(argv[i], "--", 2) != 0; ++i) {
    line += ' ';
    bool quote = strpbrk(argv[i], " \t;") != nullptr || argv[i][0] == '\0';
    line += quote ? "\"" + std::string(argv[i]) + "\"" : std::string(argv[i]);
  }
  out.push_back(line);
  return i;
}

}  // namespace

const char* ServerUsage() {
  return "Usage: tidewright-server [--game DIR] [--plugin PATH] [--map NAME] [--maxplayers N] [--tickrate N]\n"
         "                        [--without NAME,...] [--listen] [--no-plugin] [--cbuf-size BYTES]\n"
         "                        [+command args ...]\n";
}

bool ParseServerOptions(int argc, char** argv, ServerOptions& out, std::string& error) {
  StandInConfig& c = out.config;
  c.gameDir = TW_DEFAULT_GAME_DIR;
  int i = 1;
  while (i < argc) {
    std::string opt = argv[i];
    if (opt[0] == '+') {
      i = TakeStartupCommand(argc, argv, i, c.startupCommands);
      continue;
    }
    if (opt == "--help" || opt == "-h") {
      out.showHelp = true;
      ++i;
      continue;
    }
    if (opt == "--listen" || opt == "--no-plugin") {
      (opt == "--listen" ? c.listen : out.noPlugin) = true;
      ++i;
      continue;
    }
    if (i + 1 >= argc) {
      error = "missing value for " + opt;
      return false;
    }
    const char* value = argv[i + 1];
    long long n = 0;
    if (opt == "--game") {
      c.gameDir = Absolute(value);
    } else if (opt == "--plugin") {
      out.pluginPath = value;
    } else if (opt == "--map") {
      c.map = value;
    } else if (opt == "--maxplayers" && ParseInt(value, STANDIN_MIN_MAXPLAYERS, STANDIN_MAX_MAXPLAYERS, n)) {
      c.maxPlayers = int(n);
    } else if (opt == "--tickrate" && ParseInt(value, CLOCK_MIN_TICKRATE, CLOCK_MAX_TICKRATE, n)) {
      c.tickrate = int(n);
    } else if (opt == "--cbuf-size" && ParseInt(value, 1, 1LL << 31, n)) {
      c.cbufCapacity = size_t(n);
    } else if (opt == "--without") {
      SplitNames(value, c.without);
    } else {
      error = "bad option or value: " + opt + " " + value;
      return false;
    }
    i += 2;
  }
  while (c.gameDir.size() > 1 && c.gameDir.back() == '/') c.gameDir.pop_back();
  return true;
}
