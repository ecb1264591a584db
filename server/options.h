// The server's command line: one table of options that both reads the command line and prints `--help`,
// and + commands into start-up lines.
#pragma once

#include <string>

#include "standin.h"

// What the command line asks for besides running a server.
enum class ServerAction { Run, Help, Version, Init };

struct ServerOptions {
  StandInConfig config;
  std::string pluginPath;  // empty: libtidewright.so next to the binary
  bool noPlugin = false;   // --no-plugin: run without any plugin
  ServerAction action = ServerAction::Run;
  std::string initRoot;    // --init: the server root to make
};

// False with a message in `error` for an unknown option or a bad value.
bool ParseServerOptions(int argc, char** argv, ServerOptions& out, std::string& error);
// The synopsis, printed after a bad command line.
std::string ServerUsage();
// The synopsis and one line for each option: what --help prints.
std::string ServerHelp();
// What --version prints.
std::string ServerVersion();
