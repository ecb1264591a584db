// Reading the server's command line. Every option is one row of kOptions: the row reads its value and
// describes itself for the synopsis and for --help, so what the server accepts and what it says it
// accepts can't part.
#include "options.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

// Where the synopsis wraps, and where the meanings of --help start.
constexpr size_t kUsageWidth = 100;
constexpr size_t kHelpColumn = 24;
constexpr const char* kUsageStart = "Usage: tidewright-server";

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

// One option. `apply` takes the value (null for a switch) and gives false for a bad one; `shown`, where
// present, renders the option's setting for --help's "default".
struct OptionRow {
  const char* name;
  const char* alias;  // another spelling, or null
  const char* value;  // the value's name in the synopsis, or null for a switch
  const char* meaning;
  bool (*apply)(const char* value, ServerOptions& o);
  std::string (*shown)(const ServerOptions& o);
};

bool SetInt(const char* text, long long min, long long max, auto& field) {
  long long n = 0;
  if (!ParseInt(text, min, max, n)) return false;
  field = static_cast<std::remove_reference_t<decltype(field)>>(n);
  return true;
}

const OptionRow kOptions[] = {
    {"--game", nullptr, "DIR",
     "The mod directory. Its parent is the server root: files are read and written under it only.",
     [](const char* v, ServerOptions& o) { return o.config.gameDir = Absolute(v), true; },
     [](const ServerOptions& o) { return o.config.gameDir; }},
    {"--plugin", nullptr, "PATH", "The plugin to load.",
     [](const char* v, ServerOptions& o) { return o.pluginPath = v, true; },
     [](const ServerOptions&) { return std::string("libtidewright.so next to the binary"); }},
    {"--map", nullptr, "NAME", "The first level.", [](const char* v, ServerOptions& o) { return o.config.map = v, true; },
     [](const ServerOptions& o) { return o.config.map; }},
    {"--maxplayers", nullptr, "N", "Player slots.",
     [](const char* v, ServerOptions& o) {
       return SetInt(v, STANDIN_MIN_MAXPLAYERS, STANDIN_MAX_MAXPLAYERS, o.config.maxPlayers);
     },
     [](const ServerOptions& o) {
       return std::to_string(o.config.maxPlayers) + " (" + std::to_string(STANDIN_MIN_MAXPLAYERS) + " to " +
              std::to_string(STANDIN_MAX_MAXPLAYERS) + ")";
     }},
    {"--tickrate", nullptr, "N", "Ticks per second of the simulated clock.",
     [](const char* v, ServerOptions& o) { return SetInt(v, CLOCK_MIN_TICKRATE, CLOCK_MAX_TICKRATE, o.config.tickrate); },
     [](const ServerOptions& o) {
       return std::to_string(o.config.tickrate) + " (" + std::to_string(CLOCK_MIN_TICKRATE) + " to " +
              std::to_string(CLOCK_MAX_TICKRATE) + ")";
     }},
    {"--without", nullptr, "NAME,...", "Withholds the named interfaces from both factories.",
     [](const char* v, ServerOptions& o) { return SplitNames(v, o.config.without), true; }, nullptr},
    {"--listen", nullptr, nullptr, "IsDedicatedServer answers false.",
     [](const char*, ServerOptions& o) { return o.config.listen = true; }, nullptr},
    {"--no-plugin", nullptr, nullptr, "Runs the server alone.",
     [](const char*, ServerOptions& o) { return o.noPlugin = true; }, nullptr},
    {"--cbuf-size", nullptr, "BYTES", "Capacity of the command buffer.",
     [](const char* v, ServerOptions& o) { return SetInt(v, 1, 1LL << 31, o.config.cbufCapacity); },
     [](const ServerOptions& o) { return std::to_string(o.config.cbufCapacity); }},
    {"--init", nullptr, "DIR",
     "Makes a new server root in DIR (DIR/game, DIR/hl2) to start with --game DIR/game, then ends.",
     [](const char* v, ServerOptions& o) {
       o.initRoot = Absolute(v);
       return o.action = ServerAction::Init, true;
     },
     nullptr},
    {"--help", "-h", nullptr, "Prints this text and ends.",
     [](const char*, ServerOptions& o) { return o.action = ServerAction::Help, true; }, nullptr},
    {"--version", nullptr, nullptr, "Prints the version and ends.",
     [](const char*, ServerOptions& o) { return o.action = ServerAction::Version, true; }, nullptr},
};

const OptionRow* FindOption(const char* text) {
  for (const OptionRow& row : kOptions)
    if (strcmp(text, row.name) == 0 || (row.alias && strcmp(text, row.alias) == 0)) return &row;
  return nullptr;
}

std::string Spelled(const OptionRow& row) { return std::string(row.name) + (row.value ? std::string(" ") + row.value : ""); }

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t blank = text.find(' ', pos);
    if (blank == std::string::npos) blank = text.size();
    if (blank > pos) words.push_back(text.substr(pos, blank - pos));
    pos = blank + 1;
  }
  return words;
}

// `start`, then the items each after a blank, wrapped before kUsageWidth with `indent` blanks in front
// of each further line; an item is never split.
std::string Wrapped(const std::string& start, const std::vector<std::string>& items, size_t indent) {
  std::string text = start;
  size_t lineStart = 0;
  for (const std::string& item : items) {
    if (text.size() - lineStart + 1 + item.size() > kUsageWidth) {
      text += '\n';
      lineStart = text.size();
      text.append(indent - 1, ' ');
    }
    text += ' ' + item;
  }
  return text + "\n";
}

void StartDefaults(ServerOptions& out) { out.config.gameDir = TW_DEFAULT_GAME_DIR; }

}  // namespace

std::string ServerUsage() {
  std::vector<std::string> items;
  for (const OptionRow& row : kOptions) items.push_back("[" + Spelled(row) + "]");
  items.push_back("[+command args ...]");
  return Wrapped(kUsageStart, items, strlen(kUsageStart));
}

std::string ServerHelp() {
  ServerOptions defaults;
  StartDefaults(defaults);
  std::string text = ServerUsage() + "\nOptions:\n";
  auto entry = [&](const std::string& left, std::string meaning) {
    std::string start = "  " + left;
    start.append(start.size() < kHelpColumn ? kHelpColumn - start.size() : 1, ' ');
    start.pop_back();  // Wrapped puts a blank before the first word
    text += Wrapped(start, Words(meaning), kHelpColumn);
  };
  for (const OptionRow& row : kOptions) {
    std::string meaning = row.meaning;
    if (row.shown) meaning += " Default: " + row.shown(defaults) + ".";
    entry(Spelled(row) + (row.alias ? std::string(", ") + row.alias : ""), meaning);
  }
  entry("+command args", "Runs a command at start-up, after cfg/autoexec.cfg; its arguments reach up to the next + "
                         "or --.");
  return text;
}

std::string ServerVersion() { return std::string("tidewright-server ") + TW_VERSION + "\n"; }

bool ParseServerOptions(int argc, char** argv, ServerOptions& out, std::string& error) {
  StartDefaults(out);
  StandInConfig& c = out.config;
  int i = 1;
  while (i < argc) {
    if (argv[i][0] == '+') {
      i = TakeStartupCommand(argc, argv, i, c.startupCommands);
      continue;
    }
    const OptionRow* row = FindOption(argv[i]);
    if (row && !row->value) {
      row->apply(nullptr, out);
      ++i;
      continue;
    }
    if (!row) {
      error = std::string("bad option or value: ") + argv[i];
      return false;
    }
    if (i + 1 >= argc) {
      error = std::string("missing value for ") + argv[i];
      return false;
    }
    if (!row->apply(argv[i + 1], out)) {
      error = std::string("bad option or value: ") + argv[i] + " " + argv[i + 1];
      return false;
    }
    i += 2;
  }
  while (c.gameDir.size() > 1 && c.gameDir.back() == '/') c.gameDir.pop_back();
  return true;
}
