// What the checker knows of a game tree before it reads a script: the commands, aliases and variables of
// the plugin and the server, the blocks of the scripts start-up loaded, and the declared game events.
// Learned once from a QuietServer with the plugin, which ends before any script is checked.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

class ServerKnowledge {
public:
  // `eventFiles`: paths under the mod directory that the checked scripts load with tw_loadevents; their
  // events count as declared. False with the reason when the stand-in can't start on the tree.
  bool Learn(const std::string& gameDir, const std::vector<std::string>& eventFiles, std::string& error);

  // A command, variable or alias, ignoring case.
  bool IsName(const std::string& name) const;
  // A block of a script loaded at start-up, by its exact full name.
  bool IsBlock(const std::string& fullName) const { return m_blocks.count(fullName) != 0; }
  const std::vector<std::string>& BlockNames() const { return m_blockNames; }
  // A Python addon of that script name in the game tree (addons/tidewright/NAME/LAST.py): its blocks are
  // made when it is imported, so the checker can't know them.
  bool IsPythonAddon(const std::string& scriptName) const;
  // A declared game event, ignoring case.
  bool IsEvent(const std::string& name) const;
  // Every command, variable and alias name as registered.
  const std::vector<std::string>& Names() const { return m_names; }
  const std::vector<std::string>& EventNames() const { return m_eventNames; }

  // For tests: names, blocks and events learned some other way.
  void AddName(const std::string& name);
  void AddBlock(const std::string& fullName);
  void AddEvent(const std::string& name);

private:
  std::string m_gameDir;
  std::vector<std::string> m_names;
  std::unordered_set<std::string> m_folded;  // names, lower case
  std::unordered_set<std::string> m_blocks;
  std::vector<std::string> m_blockNames;
  std::unordered_set<std::string> m_events;  // lower case
  std::vector<std::string> m_eventNames;
};

// ASCII lower case: names on the console and event names compare that way.
std::string Folded(const std::string& text);
