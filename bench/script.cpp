// Script engine throughput: script lines against the same commands queued raw, expanded lines against
// plain ones, and a chain of blocks 100,000 deep, whose buffer and frame memory must grow with depth only.
#include <benchmark/benchmark.h>

#include <string>

#include "../tests/unit/script/fake_server.h"
#include "host/console.h"
#include "script/machine.h"

namespace {

constexpr int kLinesPerBlock = 1000;
constexpr int kChainDepth = 100000;

void Quiet(SpewType_t, const char*) {}

// Loads the benchmark scripts once: a block of plain lines, a block of expanded lines, and a deep chain.
FakeServer& Prepared() {
  static FakeServer* server = [] {
    SpewOutputFunc(Quiet);
    FakeServer& s = Server();
    std::string plain = "block plain\n{\n", expanded = "block expanded\n{\n";
    for (int i = 0; i < kLinesPerBlock; ++i) {
      plain += "tw_xset bench_x 1\n";
      expanded += "tw_set bench_x server_var(bench_y)\n";
    }
    s.AddScript("bench", plain + "}\n" + expanded + "}\n");
    std::string chain;
    for (int i = 0; i < kChainDepth; ++i)
      chain += "block b" + std::to_string(i) + "\n{\ntw_xdoblock chain/b" + std::to_string(i + 1) + "\n}\n";
    chain += "block b" + std::to_string(kChainDepth) + "\n{\necho bottom\n}\n";
    s.AddScript("chain", chain);
    s.Run("tw_xset bench_x 0;tw_xset bench_y 1;tw_xload bench;tw_xload chain");
    return &s;
  }();
  return *server;
}

void BM_ScriptLines(benchmark::State& state) {
  FakeServer& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/plain", nullptr);
    server.Execute();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_ScriptLines);

void BM_RawCommands(benchmark::State& state) {
  FakeServer& server = Prepared();
  std::string commands;
  for (int i = 0; i < kLinesPerBlock; ++i) commands += "tw_xset bench_x 1\n";
  for (auto _ : state) {
    server.ServerCommand(commands.c_str());
    server.Execute();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_RawCommands);

void BM_ExpandedScriptLines(benchmark::State& state) {
  FakeServer& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/expanded", nullptr);
    server.Execute();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}
BENCHMARK(BM_ExpandedScriptLines);

// Every level of the chain leaves one pending tw__ip in the buffer and one frame on the machine's stacks;
// the counters give the peak of both per level of depth.
void BM_DeepChain(benchmark::State& state) {
  FakeServer& server = Prepared();
  size_t peakBytes = 0;
  for (auto _ : state) {
    server.ResetPeak();
    DoBlock("chain/b0", nullptr);
    server.Execute();
    peakBytes = server.PeakPendingBytes();
  }
  state.SetItemsProcessed(state.iterations() * kChainDepth);
  state.counters["depth"] = kChainDepth;
  state.counters["peak_buffer_bytes"] = double(peakBytes);
  state.counters["buffer_bytes_per_level"] = double(peakBytes) / kChainDepth;
  state.counters["frame_stack_capacity"] = double(g_scriptMachine.ifResultStack.capacity());
}
BENCHMARK(BM_DeepChain)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
