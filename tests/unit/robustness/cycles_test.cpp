// A script loaded, used, reloaded, disabled, enabled and unloaded 300 times: memory in use after cycle 300
// is what it was after cycle 30, give or take a little. Its use touches what a script keeps or makes:
// variables, keygroups and their loops, a registered say command, an event, delayed commands, stacks, a
// database, expressions and texts. The sanitizer build checks for leaks at exit as well.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#ifdef TW_SANITIZE
// AddressSanitizer's own count of the bytes its allocator has handed out and not taken back (its runtime
// has it; gcc ships no header for it).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

#include "test_server.h"

namespace {

constexpr int kCycles = 300;
constexpr int kSettledCycle = 30;
// Growth allowed between the settled cycle and the last one: far below what keeping one cycle's objects
// would cost over 270 cycles, far above the allocator's own noise.
constexpr size_t kToleratedGrowth = 256 * 1024;

constexpr const char* kScript =
    "block load\n{\n"
    "  tw_set cy_count 0\n  tw_set cy_m 0\n  tw_set cy_q 0\n  tw_set cy_args 0\n  tw_set cy_top 0\n"
    "  tw_set cy_text 0\n  tw_set cy_last 0\n  tw_set cy_late 0\n  tw_set cy_heard 0\n"
    "  tw_regsaycmd !cycle cycle/said \"A cycle's say command\"\n"
    "  tw_keygroupcreate cygroup\n  stack create cystack\n}\n"
    "block use\n{\n"
    "  tw_math cy_count + 1\n"
    "  tw_keycreate cygroup key\n"
    "  tw_keysetvalue cygroup key value \"some text of a cycle\"\n"
    "  tw_foreachkey cy_k in cygroup \"tw_set cy_last server_var(cy_k)\"\n"
    "  tw_foreachval cy_v in cygroup key \"tw_set cy_last server_var(cy_v)\"\n"
    "  tw_keygroupsave cygroup\n"
    "  tw_keygroupdelete cygroup\n"
    "  tw_keygroupload cygroup\n"
    "  tw_format cy_text \"%1 of %2\" server_var(cy_count) many\n"
    "  tw_regex match cy_m \"c.*e\" \"a cycle\"\n"
    "  tw_mathparse cy_m \"cy_count * 2 + sin(1)\"\n"
    "  stack push cystack server_var(cy_text)\n"
    "  stack pop cy_top cystack\n"
    "  tw_sql open cydb\n"
    "  tw_sql queryvalue cydb cy_q \"select 40 + 2\"\n"
    "  tw_sql close cydb\n"
    "  tw_delayed 0 tw_set cy_late 1\n"
    "  tw_event initialize player_hurt\n  tw_event setint player_hurt userid 2\n  tw_event fire player_hurt\n"
    "}\n"
    "block said\n{\n  tw_getargs cy_args\n}\n"
    "event player_hurt\n{\n  tw_set cy_heard 1\n}\n"
    "block unload\n{\n  tw_unregsaycmd !cycle\n  tw_keygroupdelete cygroup\n  stack delete cystack\n}\n";

size_t BytesInUse() {
#ifdef TW_SANITIZE
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

TEST(Cycles, MemoryStaysFlatOverThreeHundredLoadUseReloadDisableEnableUnloadCycles) {
  TestServer& server = TestServer::Shared();
  std::filesystem::create_directories(server.GameDir() + "/addons/tidewright/cycle");
  std::ofstream(server.GameDir() + "/addons/tidewright/cycle/tw_cycle.txt") << kScript;
  server.Run("sim_connect Cyclist");
  size_t settled = 0;
  std::string output;
  for (int cycle = 1; cycle <= kCycles; ++cycle) {
    output = server.Run(
        "tw_load cycle\ntw_doblock cycle/use\ntw_reload cycle\ntw_doblock cycle/use\ntw_disable cycle\n"
        "tw_enable cycle\ntw_doblock cycle/use\nsim_say 2 \"!cycle a b\"\ntw_unload cycle\nwait\nwait");
    if (cycle == kSettledCycle) settled = BytesInUse();
  }
  size_t last = BytesInUse();
  printf("memory in use: %zu bytes after cycle %d, %zu after cycle %d\n", settled, kSettledCycle, last, kCycles);
  EXPECT_LE(last, settled + kToleratedGrowth) << "from " << settled << " to " << last << " bytes";
  EXPECT_EQ(server.Run("tw echo server_var(cy_count) server_var(cy_q) server_var(cy_heard) server_var(cy_args)"),
            "2 42 1 a b\n");
  EXPECT_EQ(output.find("rror"), std::string::npos) << output;
}

}  // namespace
