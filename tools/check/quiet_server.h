// A stand-in server started in-process for the checker and the reference, printing nothing (what the
// console prints, and what the interpreter writes to the standard streams, is kept aside): on a temporary
// copy of what start-up reads from a game tree (the mod's cfg/, resource/ and addons/, the engine's
// ../hl2/resource/), so that whatever start-up writes never lands in the tree. It ends, and its copy goes,
// with the object. One at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "standin.h"

class QuietServer {
public:
  // What of the tree to copy: all that start-up reads, or only the plugin's own files, its event files and
  // its Python package (for a plugin as it comes, with no script loaded and no configuration run).
  enum class Copy { StartUp, PluginOnly };

  // `extraFiles` are further paths under the mod directory to copy (event files that scripts load).
  QuietServer(const std::string& gameDir, bool withPlugin, Copy copy = Copy::StartUp,
              const std::vector<std::string>& extraFiles = {});
  ~QuietServer();
  QuietServer(const QuietServer&) = delete;
  QuietServer& operator=(const QuietServer&) = delete;

  // False when the tree isn't there or the plugin didn't load; Output() then tells why.
  bool Started() const { return m_started; }
  const std::string& Output() const { return m_output; }
  CStandIn& Server() { return *m_server; }
  // The mod directory of the copy.
  std::string GameDir() const { return m_root + "/game"; }

private:
  std::string m_root;
  std::string m_output;
  std::unique_ptr<CStandIn> m_server;
  bool m_started = false;
};
