// Game event throughput on the stand-in server with the real plugin: events fired that nobody wants, events
// that one script hears, and events that twenty scripts hear, each section one tw_xset. An event counts once
// its commands have all run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

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

// Fires a round of events as the game would, then runs everything they queued.
void FireRound(CStandIn& server, const char* name) {
  CGameEventManager& events = server.Events();
  for (int i = 0; i < kEventsPerRound; ++i) {
    IGameEvent* event = events.CreateEvent(name, false);
    if (!event) abort();
    event->SetInt("userid", 2);
    event->SetInt("attacker", 3);
    events.FireEvent(event);
  }
  server.Settle();
}

void RunEvents(benchmark::State& state, const char* name) {
  CStandIn& server = Prepared();
  for (auto _ : state) FireRound(server, name);
  state.SetItemsProcessed(state.iterations() * kEventsPerRound);
}

void BM_EventNobodyWants(benchmark::State& state) { RunEvents(state, "player_spawn"); }
BENCHMARK(BM_EventNobodyWants);

void BM_EventOneScript(benchmark::State& state) { RunEvents(state, "player_hurt"); }
BENCHMARK(BM_EventOneScript);

void BM_EventTwentyScripts(benchmark::State& state) { RunEvents(state, "player_death"); }
BENCHMARK(BM_EventTwentyScripts);

}  // namespace

BENCHMARK_MAIN();
