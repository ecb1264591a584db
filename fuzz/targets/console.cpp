// Whole console lines into the stand-in with the plugin, as an operator types them: every command of the
// server and the plugin, with whatever state earlier inputs left.
#include "fuzz_server.h"
#include "fuzz_target.h"

TW_FUZZ_TARGET(console) { FuzzRunLines(std::string(reinterpret_cast<const char*>(data), size)); }
