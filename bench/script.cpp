// Script engine throughput on the stand-in server: script lines against the same commands queued raw,
// expanded lines against plain ones, and a chain of blocks 100,000 deep, whose buffer and frame memory
// must grow with depth only.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "language/doors.h"
#include "script/machine.h"
#include "standin.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace {

namespace fs = std::filesystem;

constexpr int kLinesPerBlock = 1000;
constexpr int kChainDepth = 100000;

CStandIn* s_server = nullptr;
size_t s_bottomPendingBytes = 0;
size_t s_bottomFrames = 0;

// Run by the last block of the chain: what waits in the buffer and on the frame stack at the deepest point.
void DepthProbe_f() {
  s_bottomPendingBytes = s_server->Cbuf().PendingBytes();
  s_bottomFrames = g_scriptMachine.ifResultStack.size();
}
const PlainCommandRow kBenchCommands[] = {{"twbench_depth_probe", DepthProbe_f, "Benchmark: measures the depth."}};
const CommandTable s_benchCommands(kBenchCommands);

void Quiet(SpewType_t, const char*) {}

void WriteScript(const fs::path& game, const std::string& name, const std::string& text) {
  fs::path path = game / "addons/tidewright" / name / ("tw_" + name + ".txt");
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

// A stand-in server on a copy of demo/, with the real plugin and the benchmark scripts loaded.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  SpewOutputFunc(Quiet);
  const char* tmp = getenv("TMPDIR");
  std::string pattern = std::string(tmp && tmp[0] ? tmp : "/tmp") + "/tw-bench-XXXXXX";
  if (!mkdtemp(pattern.data())) abort();
  // The server lives until the process ends, as the plugin's globals point into it; its folder goes at exit.
  static fs::path root = pattern;
  atexit([] {
    std::error_code ignored;
    fs::remove_all(root, ignored);
  });
  fs::copy(fs::path(TW_SOURCE_DIR) / "demo", root, fs::copy_options::recursive);
  fs::path game = root / "game";
  std::string plain = "block plain\n{\n", expanded = "block expanded\n{\n";
  for (int i = 0; i < kLinesPerBlock; ++i) {
    plain += "tw_xset bench_x 1\n";
    expanded += "tw_set bench_x server_var(bench_y)\n";
  }
  WriteScript(game, "bench", plain + "}\n" + expanded + "}\n");
  std::string chain;
  for (int i = 0; i < kChainDepth; ++i)
    chain += "block b" + std::to_string(i) + "\n{\ntw_xdoblock chain/b" + std::to_string(i + 1) + "\n}\n";
  chain += "block b" + std::to_string(kChainDepth) + "\n{\ntwbench_depth_probe\n}\n";
  WriteScript(game, "chain", chain);

  StandInConfig config;
  config.gameDir = game.string();
  s_server = new CStandIn(config);
  s_server->Start(&CreateInterface, "tidewright");
  s_server->RunLine("tw_xset bench_x 0;tw_xset bench_y 1;tw_xload bench;tw_xload chain");
  return *s_server;
}

void BM_ScriptLines(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/plain", nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_ScriptLines);

void BM_RawCommands(benchmark::State& state) {
  CStandIn& server = Prepared();
  std::string commands;
  for (int i = 0; i < kLinesPerBlock; ++i) commands += "tw_xset bench_x 1\n";
  for (auto _ : state) {
    server.Engine().ServerCommand(commands.c_str());
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_RawCommands);

void BM_ExpandedScriptLines(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/expanded", nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_ExpandedScriptLines);

// Every level of the chain leaves one pending tw__ip in the buffer and one frame on the machine's stacks.
void BM_DeepChain(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock("chain/b0", nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kChainDepth);
  state.counters["depth"] = kChainDepth;
  state.counters["frames_at_bottom"] = double(s_bottomFrames);
  state.counters["buffer_bytes_at_bottom"] = double(s_bottomPendingBytes);
  state.counters["buffer_bytes_per_level"] = double(s_bottomPendingBytes) / kChainDepth;
}
BENCHMARK(BM_DeepChain)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
