// The script file reader and the machine behind it: the input is a script file that the running server
// loads as an operator's tw_load would; its first few blocks then run, and the script is unloaded.
#include <filesystem>
#include <fstream>

#include "fuzz_server.h"
#include "fuzz_target.h"
#include "script/machine.h"

namespace {
// Blocks run of each loaded script, besides its load and unload blocks.
constexpr int kBlocksRun = 4;
}  // namespace

TW_FUZZ_TARGET(scriptfile) {
  std::filesystem::path dir = std::filesystem::path(FuzzServer().GameDir()) / "addons/tidewright/fz";
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "tw_fz.txt", std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                             std::streamsize(size));
  FuzzRunLines("tw_load fz");
  std::string lines;
  if (CScript* script = g_scriptMachine.registry.FindScript("fz")) {
    int run = 0;
    for (CBlock* block = script->firstBlock; block && run < kBlocksRun; block = block->next)
      if (!block->isEvent) {
        lines += std::string("tw_doblock \"") + block->name + "\"\n";
        ++run;
      }
  }
  FuzzRunLines(lines + "tw_unload fz");
  if (g_scriptMachine.registry.FindScript("fz")) g_scriptMachine.registry.RemoveScript("fz");
}
