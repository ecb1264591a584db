// The plugin's version and the description the engine shows for it; tidewright_ver holds the same version.
#pragma once

#define TIDEWRIGHT_VERSION "2.0.0.248"

inline constexpr const char* kPluginDescription = "Brannock's Tidewright, Version:" TIDEWRIGHT_VERSION;
