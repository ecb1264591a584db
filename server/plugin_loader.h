// Finding a plugin library and its CreateInterface.
#pragma once

#include <string>

#include "basetypes.h"

// libtidewright.so in the folder of the running binary.
std::string DefaultPluginPath();
// Opens the library and gives its CreateInterface, or null with the reason in `error`. The library stays
// loaded for the life of the process: its console objects may be in the engine's chain.
CreateInterfaceFn LoadPluginLibrary(const std::string& path, std::string& error);
