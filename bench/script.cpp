// Script engine throughput on the stand-in server: script lines against the same commands queued raw,
// expanded lines against plain ones, a chain of blocks 100,000 deep, whose buffer and frame memory must
// grow with depth only, and loading scripts of 1,000 to 100,000 one-line blocks, whose time and memory per
// block must stay flat.
#include <benchmark/benchmark.h>

#include <string>

#include "alloc_counter.h"
#include "bench_server.h"
#include "language/doors.h"
#include "script/machine.h"

namespace {

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

// A stand-in server on a copy of demo/, with the real plugin and the benchmark scripts loaded.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  std::string plain = "block plain\n{\n", expanded = "block expanded\n{\n";
  for (int i = 0; i < kLinesPerBlock; ++i) {
    plain += "tw_xset bench_x 1\n";
    expanded += "tw_set bench_x server_var(bench_y)\n";
  }
  bench::WriteScript(game, "bench", plain + "}\n" + expanded + "}\n");
  std::string chain;
  for (int i = 0; i < kChainDepth; ++i)
    chain += "block b" + std::to_string(i) + "\n{\ntw_xdoblock chain/b" + std::to_string(i + 1) + "\n}\n";
  chain += "block b" + std::to_string(kChainDepth) + "\n{\ntwbench_depth_probe\n}\n";
  bench::WriteScript(game, "chain", chain);
  for (int blocks : {1000, 10000, 100000}) {
    std::string many;
    for (int i = 0; i < blocks; ++i) many += "block b" + std::to_string(i) + "\n{\ntw_xset bench_x 1\n}\n";
    bench::WriteScript(game, "load" + std::to_string(blocks), many);
  }
  s_server = bench::StartServer(game);
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

// A script's life: tw_load of a script of one-line blocks, then tw_unload. Memory is what the loaded script
// holds (live heap bytes while it is loaded, per block) and the heap's peak during the load.
void BM_ScriptLoad(benchmark::State& state) {
  CStandIn& server = Prepared();
  const int blocks = int(state.range(0));
  const std::string name = "load" + std::to_string(blocks);
  const std::string load = "tw_xload " + name, unload = "tw_xunload " + name;
  int64_t held = 0, peak = 0;
  for (auto _ : state) {
    bench::AllocCounts before = bench::AllocSnapshot();
    bench::AllocResetPeak();
    server.RunLine(load.c_str());
    bench::AllocCounts loaded = bench::AllocSnapshot();
    held = loaded.liveBytes - before.liveBytes;
    peak = loaded.peakBytes - before.liveBytes;
    server.RunLine(unload.c_str());
  }
  state.SetItemsProcessed(state.iterations() * blocks);
  if (!bench::AllocCounterAvailable()) return;
  state.counters["bytes_per_block"] = double(held) / blocks;
  state.counters["load_peak_MB"] = double(peak) / (1 << 20);
}
BENCHMARK(BM_ScriptLoad)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
