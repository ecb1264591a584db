// Game event throughput on the stand-in server with the real plugin: events fired that nobody wants, events
// that one script hears, and events that twenty scripts hear, each section one tw_xset; and bursts of
// 1,000 to 100,000 events pending at once, which must cost the same per event. An event counts once its
// commands have all run. An event nobody wants also counts its allocations, the stand-in's file test apart.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "alloc_counter.h"
#include "bench_server.h"
#include "igameevents.h"

namespace {

constexpr int kEventsPerRound = 1000;
constexpr int kCrowd = 20;

CStandIn* s_server = nullptr;

std::string Listener(const char* event) {
  return std::string("event ") + event + "\n{\ntw_xset bench_x 1\n}\n";
}

// A stand-in server on a copy of demo/ with the real plugin: nobody wants player_spawn, one script hears
// player_hurt, twenty hear player_death.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  bench::WriteScript(game, "solo", Listener("player_hurt"));
  std::string loads = "tw_xset bench_x 0;tw_xload solo";
  for (int i = 0; i < kCrowd; ++i) {
    std::string name = "crowd" + std::to_string(i);
    bench::WriteScript(game, name, Listener("player_death"));
    loads += ";tw_xload " + name;
  }
  s_server = bench::StartServer(game);
  s_server->RunLine(loads.c_str());
  return *s_server;
}

// Fires `count` events as the game would, then runs everything they queued. Gives the allocations made
// while the events were fired (their creation apart).
uint64_t FireRound(CStandIn& server, const char* name, int count = kEventsPerRound) {
  CGameEventManager& events = server.Events();
  uint64_t allocations = 0;
  for (int i = 0; i < count; ++i) {
    IGameEvent* event = events.CreateEvent(name, false);
    if (!event) abort();
    event->SetInt("userid", 2);
    event->SetInt("attacker", 3);
    uint64_t before = bench::AllocSnapshot().calls;
    events.FireEvent(event);
    allocations += bench::AllocSnapshot().calls - before;
  }
  server.Settle();
  return allocations;
}

void RunEvents(benchmark::State& state, const char* name) {
  CStandIn& server = Prepared();
  for (auto _ : state) FireRound(server, name);
  state.SetItemsProcessed(state.iterations() * kEventsPerRound);
}

// The allocations of the stand-in's own file test for the event's configuration file, as the plugin asks it.
uint64_t FileTestAllocations(CStandIn& server, const char* name) {
  std::string path = std::string("cfg/") + server.Console().FindVar("tidewright_subdirectory")->GetString() + "/" +
                     name + ".cfg";
  uint64_t before = bench::AllocSnapshot().calls;
  benchmark::DoNotOptimize(server.Files().FileExists(path.c_str()));
  return bench::AllocSnapshot().calls - before;
}

void BM_EventNobodyWants(benchmark::State& state) {
  CStandIn& server = Prepared();
  uint64_t allocations = 0;
  for (auto _ : state) allocations += FireRound(server, "player_spawn");
  const double events = double(state.iterations()) * kEventsPerRound;
  const double standIn = double(FileTestAllocations(server, "player_spawn"));
  state.SetItemsProcessed(state.iterations() * kEventsPerRound);
  if (!bench::AllocCounterAvailable()) return;
  state.counters["allocs_per_event"] = double(allocations) / events;
  state.counters["allocs_standin_file_test"] = standIn;
  state.counters["allocs_plugin"] = double(allocations) / events - standIn;
}
BENCHMARK(BM_EventNobodyWants);

void BM_EventOneScript(benchmark::State& state) { RunEvents(state, "player_hurt"); }
BENCHMARK(BM_EventOneScript);

void BM_EventTwentyScripts(benchmark::State& state) { RunEvents(state, "player_death"); }
BENCHMARK(BM_EventTwentyScripts);

// A burst: all events of the round wait in the queue before the first one runs.
void BM_EventBurst(benchmark::State& state) {
  CStandIn& server = Prepared();
  const int count = int(state.range(0));
  for (auto _ : state) FireRound(server, "player_hurt", count);
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_EventBurst)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
