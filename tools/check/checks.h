// The checks of what scripts say: every command's name, the blocks that tw_doblock and the registering
// commands name, the events of event sections, the conditions of tw_xif/if and ifx lines, and sections of
// one name. What the checked scripts make themselves (aliases, registered commands, variables, blocks,
// event files) is gathered from all of them first, so a script may use what another one makes.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "findings.h"
#include "knowledge.h"
#include "scan.h"

struct ScriptFacts {
  std::unordered_set<std::string> names;  // lower case
  std::vector<std::string> nameList;      // as written, for suggestions
  struct Place {
    std::string file;
    int line;
  };
  std::unordered_map<std::string, Place> blocks;  // the sections' full names, first place of each
  std::vector<std::string> eventFiles;            // the literal paths of tw_loadevents lines
};

ScriptFacts GatherFacts(const std::vector<ScannedScript>& scripts);
void CheckScripts(const std::vector<ScannedScript>& scripts, const ScriptFacts& facts, const ServerKnowledge& known,
                  Findings& out);
