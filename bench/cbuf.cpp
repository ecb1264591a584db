// The command buffer's speed: commands per second through a whole stand-in frame (tokenizing, dispatch of a
// no-op command), and the cost of one insert at the head or append at the tail with few or many queued.
#include <benchmark/benchmark.h>

#include <string>

#include "cbuf.h"
#include "standin.h"

namespace {

void Noop_f() {}
const ConsoleCommandDef kNoop[] = {{"noop", Noop_f, "does nothing", 0}};

StandInConfig BenchConfig() {
  StandInConfig config;
  config.gameDir = TW_DEMO_TREE "/game";
  return config;
}

void BM_CommandsThroughTheServer(benchmark::State& state) {
  CStandIn server(BenchConfig());
  server.Console().AddCommands(kNoop, 1);
  const int batch = 1000;
  std::string text;
  for (int i = 0; i < batch; ++i) text += "noop arg1 \"arg two\"\n";
  for (auto _ : state) {
    server.Cbuf().AddText(text.c_str());
    server.Frame();
  }
  state.SetItemsProcessed(state.iterations() * batch);
}
BENCHMARK(BM_CommandsThroughTheServer);

void BM_InsertAtHead(benchmark::State& state) {
  CommandBuffer buffer;
  std::string cmd;
  for (int64_t i = 0; i < state.range(0); ++i) buffer.InsertText("tw__ip 123456789\n");
  for (auto _ : state) {
    buffer.InsertText("tw__ip 987654321\n");
    buffer.NextCommand(cmd);
    benchmark::DoNotOptimize(cmd.data());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InsertAtHead)->Arg(10)->Arg(100000);

void BM_AppendAtTail(benchmark::State& state) {
  CommandBuffer buffer;
  std::string cmd;
  for (int64_t i = 0; i < state.range(0); ++i) buffer.AddText("tw__ep 123456789\n");
  for (auto _ : state) {
    buffer.AddText("tw__ep 987654321\n");
    buffer.NextCommand(cmd);
    benchmark::DoNotOptimize(cmd.data());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AppendAtTail)->Arg(10)->Arg(100000);

}  // namespace

BENCHMARK_MAIN();
