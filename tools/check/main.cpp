// tidewright-check: reads script files without running them and reports their mistakes as
// `file:line: error|warning: text`; with --reference, writes the command and event reference instead.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "checks.h"
#include "reference.h"

namespace fs = std::filesystem;

namespace {

const char kUsage[] =
    "Usage: tidewright-check [--game DIR] [--strict] FILE|FOLDER...\n"
    "       tidewright-check [--game DIR] --reference FOLDER\n"
    "Reads script files (a folder: every NAME/tw_NAME.txt below it) without running them and reports their\n"
    "mistakes as FILE:LINE: error|warning: TEXT. The names it knows are those of the plugin and the stand-in\n"
    "server started on the game tree (default: the demo tree as built), and the events its resource files\n"
    "declare.\n"
    "Exit status 1 on any error (with --strict, on any warning too), 0 otherwise.\n"
    "--reference FOLDER writes FOLDER/commands.md and FOLDER/events.md from the command tables and the\n"
    "game tree's event files.\n";

struct Options {
  std::string gameDir = TW_DEMO_TREE "/game";
  std::string reference;
  bool strict = false;
  std::vector<std::string> paths;
};

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if ((arg == "--game" || arg == "--reference") && i + 1 < argc) {
      (arg == "--game" ? options.gameDir : options.reference) = argv[++i];
    } else if (arg == "--strict") {
      options.strict = true;
    } else if (arg == "--help" || arg == "-h" || (arg.size() > 1 && arg[0] == '-')) {
      return false;
    } else {
      options.paths.push_back(arg);
    }
  }
  return options.reference.empty() != options.paths.empty();
}

// A script's file in a game tree: tw_NAME.txt in a folder NAME (keygroup files beside it, tw_NAME_db.txt,
// are no scripts).
bool IsScriptFile(const fs::path& path) {
  return path.filename().string() == "tw_" + path.parent_path().filename().string() + ".txt";
}

// The files as given; a folder gives every script file below it, in name order.
std::vector<std::string> ScriptFiles(const std::vector<std::string>& paths) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code ec;
    if (!fs::is_directory(path, ec)) {
      files.push_back(path);
      continue;
    }
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(path, ec)) {
      if (entry.is_regular_file(ec) && IsScriptFile(entry.path())) found.push_back(entry.path().string());
    }
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

int Check(const Options& options) {
  Findings findings;
  std::vector<ScannedScript> scripts;
  bool unreadable = false;
  for (const std::string& file : ScriptFiles(options.paths)) {
    std::ifstream in(file, std::ios::binary);
    if (!in || fs::is_directory(file)) {
      fprintf(stdout, "%s: error: can't be read\n", file.c_str());
      unreadable = true;
      continue;
    }
    std::stringstream text;
    text << in.rdbuf();
    scripts.push_back(ScanScript(int(scripts.size()), file, text.str(), findings));
  }
  const ScriptFacts facts = GatherFacts(scripts);
  ServerKnowledge known;
  std::string error;
  if (!known.Learn(options.gameDir, facts.eventFiles, error)) {
    fprintf(stderr, "tidewright-check: %s", error.c_str());
    return 2;
  }
  CheckScripts(scripts, facts, known, findings);
  fputs(findings.Text().c_str(), stdout);
  fprintf(stderr, "%zu %s checked: %d %s, %d %s\n", scripts.size(), scripts.size() == 1 ? "file" : "files",
          findings.Errors(), findings.Errors() == 1 ? "error" : "errors", findings.Warnings(),
          findings.Warnings() == 1 ? "warning" : "warnings");
  return unreadable || findings.Errors() || (options.strict && findings.Warnings()) ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    fputs(kUsage, argc > 1 && (!strcmp(argv[1], "--help") || !strcmp(argv[1], "-h")) ? stdout : stderr);
    return 2;
  }
  if (!options.reference.empty()) return WriteReference(options.gameDir, options.reference) ? 0 : 2;
  return Check(options);
}
