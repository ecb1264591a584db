// tidewright-server: reads its command line, loads the plugin, starts the level and runs console lines
// from standard input (a readline prompt on a terminal) until end of input or quit.
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "init_tree.h"
#include "interactive.h"
#include "options.h"
#include "plugin_loader.h"
#include "standin.h"
#include "tier0.h"
#include "vstdlib.h"

namespace {

void RunBatch(CStandIn& server) {
  std::string line;
  while (!server.QuitRequested() && std::getline(std::cin, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    server.RunLine(line.c_str());
    fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  ServerOptions options;
  std::string error;
  if (!ParseServerOptions(argc, argv, options, error)) {
    Warning("tidewright-server: %s\n%s", error.c_str(), ServerUsage().c_str());
    return 2;
  }
  if (options.action == ServerAction::Init) return InitServerRoot(options.initRoot, argv[0]) ? 0 : 1;
  if (options.action != ServerAction::Run) {
    Msg("%s", (options.action == ServerAction::Help ? ServerHelp() : ServerVersion()).c_str());
    return 0;
  }
  CommandLine()->CreateCmdLine(argc, argv);

  std::string pluginPath = options.pluginPath.empty() ? DefaultPluginPath() : options.pluginPath;
  CreateInterfaceFn factory = options.noPlugin ? nullptr : LoadPluginLibrary(pluginPath, error);
  if (!factory && !options.noPlugin) Warning("Couldn't load plugin %s: %s; running without it\n", pluginPath.c_str(), error.c_str());

  CStandIn server(options.config);
  server.Start(factory, pluginPath.c_str());
  fflush(stdout);
  if (isatty(STDIN_FILENO)) RunInteractive(server);
  else RunBatch(server);
  server.Shutdown();
  fflush(stdout);
  return 0;
}
