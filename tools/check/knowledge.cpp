// ServerKnowledge: one start of the stand-in with the plugin, and what it registered.
#include "knowledge.h"

#include <cctype>
#include <filesystem>

#include "quiet_server.h"
#include "script/machine.h"

std::string Folded(const std::string& text) {
  std::string out = text;
  for (char& c : out) c = char(tolower(static_cast<unsigned char>(c)));
  return out;
}

bool ServerKnowledge::Learn(const std::string& gameDir, const std::vector<std::string>& eventFiles,
                            std::string& error) {
  QuietServer quiet(gameDir, true, QuietServer::Copy::StartUp, eventFiles);
  if (!quiet.Started()) {
    error = "the stand-in didn't start with the plugin on " + gameDir + ":\n" + quiet.Output();
    return false;
  }
  m_gameDir = gameDir;
  CStandIn& server = quiet.Server();
  for (const std::string& file : eventFiles) server.Events().LoadEventsFromFile(file.c_str());
  for (ConCommandBase* c = server.Console().GetCommands(); c; c = c->GetNext()) AddName(c->GetName());
  for (const std::string& alias : server.AliasNames()) AddName(alias);
  for (const EventDescriptor* event : server.Events().DeclaredEvents()) AddEvent(event->name);
  for (CScript* script = g_scriptMachine.registry.FirstScript(); script; script = script->next)
    for (CBlock* block = script->firstBlock; block; block = block->next) AddBlock(block->name);
  return true;
}

bool ServerKnowledge::IsPythonAddon(const std::string& scriptName) const {
  if (m_gameDir.empty() || scriptName.empty()) return false;
  const size_t slash = scriptName.rfind('/');
  const std::string last = slash == std::string::npos ? scriptName : scriptName.substr(slash + 1);
  std::error_code ec;
  return std::filesystem::is_regular_file(m_gameDir + "/addons/tidewright/" + scriptName + "/" + last + ".py", ec);
}

bool ServerKnowledge::IsName(const std::string& name) const { return m_folded.count(Folded(name)) != 0; }

bool ServerKnowledge::IsEvent(const std::string& name) const { return m_events.count(Folded(name)) != 0; }

void ServerKnowledge::AddName(const std::string& name) {
  if (m_folded.insert(Folded(name)).second) m_names.push_back(name);
}

void ServerKnowledge::AddBlock(const std::string& fullName) {
  if (m_blocks.insert(fullName).second) m_blockNames.push_back(fullName);
}

void ServerKnowledge::AddEvent(const std::string& name) {
  if (m_events.insert(Folded(name)).second) m_eventNames.push_back(name);
}
