// Keygroup throughput on the stand-in server with the real plugin: saving and loading a group of 10,000
// keys with 10 values each through the console commands and the real file system, and a foreachkey over
// those 10,000 keys, whose every step is a command through the engine's buffer.
#include <benchmark/benchmark.h>

#include <string>

#include "KeyValues.h"
#include "bench_server.h"
#include "host/console.h"
#include "keygroups/keygroups.h"

namespace {

constexpr int kKeys = 10000;
constexpr int kValuesPerKey = 10;

CStandIn* s_server = nullptr;
bench::fs::path s_game;

// The group "bench" of kKeys keys, each with kValuesPerKey text values, built in the tree directly.
void FillBenchGroup() {
  KeyValues* group = FindGroup("bench", true);
  for (int k = 0; k < kKeys; ++k) {
    KeyValues* key = group->CreateKey(("player" + std::to_string(k)).c_str());
    for (int v = 0; v < kValuesPerKey; ++v)
      key->SetString(("field" + std::to_string(v)).c_str(), ("value " + std::to_string(k * v)).c_str());
  }
}

// A stand-in server on a copy of demo/, with the real plugin and the bench group in its tree.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  s_game = bench::CopyDemo();
  s_server = bench::StartServer(s_game);
  FillBenchGroup();
  s_server->RunLine("tw_xset bench_key \"\";tw_xset bench_x 0");
  return *s_server;
}

int64_t BenchFileSize() { return int64_t(bench::fs::file_size(s_game / "cfg/tw_bench_db.txt")); }

void BM_KeyGroupSave(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) server.RunLine("tw_xkeygroupsave bench");
  state.SetBytesProcessed(state.iterations() * BenchFileSize());
  state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_KeyGroupSave)->Unit(benchmark::kMillisecond);

// Each load goes into a fresh group: the group read before is deleted outside the timing.
void BM_KeyGroupLoad(benchmark::State& state) {
  CStandIn& server = Prepared();
  server.RunLine("tw_xkeygroupsave bench;tw_xkeygroupcopy bench kept;tw_xkeygroupdelete bench");
  for (auto _ : state) {
    server.RunLine("tw_xkeygroupload bench");
    state.PauseTiming();
    server.RunLine("tw_xkeygroupdelete bench");
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * BenchFileSize());
  state.SetItemsProcessed(state.iterations() * kKeys);
  server.RunLine("tw_xkeygrouprename kept bench");
}
BENCHMARK(BM_KeyGroupLoad)->Unit(benchmark::kMillisecond);

// One step per key: the line with the variable, the body and the next step, run by the engine.
void BM_ForEachKey(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) server.RunLine("tw_xforeachkey bench_key in bench \"tw_xset bench_x 1\"");
  ConVar* last = FindServerVar("bench_key");
  if (!last || std::string(last->GetString()) != "player" + std::to_string(kKeys - 1))
    state.SkipWithError("the loop didn't reach the last key");
  state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_ForEachKey)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
