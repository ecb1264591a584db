// The server's command line: options into a configuration, and + commands into start-up lines.
#pragma once

#include <string>

#include "standin.h"

struct ServerOptions {
  StandInConfig config;
  std::string pluginPath;  // empty: libtidewright.so next to the binary
  bool noPlugin = false;   // --no-plugin: run without any plugin
  bool showHelp = false;
};

// False with a message in `error` for an unknown option or a bad value.
bool ParseServerOptions(int argc, char** argv, ServerOptions& out, std::string& error);
const char* ServerUsage();
