// World access on a 64-slot stand-in server with the real plugin: player lookups by the slot of the player
// found (with the allocations a call makes, counted by this binary's operator new), wanted events with and
// without the extended variables of both players, property reads against plain assignments as script
// lines, and the two lists.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "bench_server.h"
#include "igameevents.h"
#include "script/machine.h"
#include "world/players.h"
#include "world/sim_world.h"

namespace {
std::atomic<long> s_allocations{0};
}  // namespace

// This binary's allocator counts; the sanitizer-free build pairs malloc and free on both sides, which the
// compiler can't see through the replaced operators.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size) {
  s_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop

namespace {

constexpr int kSlots = 64;
constexpr int kEntities = 500;
constexpr int kLinesPerBlock = 1000;
constexpr int kEventsPerRound = 1000;

CStandIn* s_server = nullptr;
int s_useridAt[kSlots + 1] = {};  // by slot

// 64 people named "player 1".."player 64" ("the last one" in slot 64), a script that hears player_hurt,
// and blocks of property reads and of assignments.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  bench::WriteScript(game, "hears", "event player_hurt\n{\ntw_xset bench_x 1\n}\n");
  std::string props = "block props\n{\n", sets = "block sets\n{\n";
  for (int i = 0; i < kLinesPerBlock; ++i) {
    props += "tw_xgetplayerprop bench_x 2 CCSPlayer.baseclass.m_iHealth\n";
    sets += "tw_xset bench_x 1\n";
  }
  bench::WriteScript(game, "lines", props + "}\n" + sets + "}\n");
  StandInConfig config;
  config.gameDir = game.string();
  config.maxPlayers = kSlots;
  s_server = new CStandIn(config);
  s_server->Start(&CreateInterface, "tidewright");
  s_server->RunLine("tw_xset bench_x 0;tw_xload hears;tw_xload lines");
  for (int slot = 1; slot <= kSlots; ++slot) {
    std::string name = slot == kSlots ? "the last one" : "player " + std::to_string(slot);
    s_useridAt[slot] = SimWorld().Connect(name.c_str(), "", false)->userid;
  }
  return *s_server;
}

void CountAllocations(benchmark::State& state, long before) {
  state.counters["allocs/call"] =
      benchmark::Counter(double(s_allocations.load() - before), benchmark::Counter::kAvgIterations);
}

// ---- lookups ----

void BM_FindUserIDByString_PartOfLastName(benchmark::State& state) {
  Prepared();
  long before = s_allocations.load();
  for (auto _ : state) benchmark::DoNotOptimize(FindUserIDByString("LAST"));
  CountAllocations(state, before);
}
BENCHMARK(BM_FindUserIDByString_PartOfLastName);

// The player found stands in slot state.range(0) of 64.
void BM_LookupEdictByUserid(benchmark::State& state) {
  Prepared();
  const int userid = s_useridAt[state.range(0)];
  long before = s_allocations.load();
  for (auto _ : state) benchmark::DoNotOptimize(LookupEdictByUserid(userid));
  CountAllocations(state, before);
}
BENCHMARK(BM_LookupEdictByUserid)->Arg(16)->Arg(64);

// ---- events ----

// A round of player_hurt naming the players in `slot` (0: no players named, so no extended variables).
void FireRound(CStandIn& server, const char* name, int slot) {
  CGameEventManager& events = server.Events();
  for (int i = 0; i < kEventsPerRound; ++i) {
    IGameEvent* event = events.CreateEvent(name, false);
    if (!event) abort();
    event->SetInt("userid", slot ? s_useridAt[slot] : 0);
    event->SetInt("attacker", slot ? s_useridAt[slot - 1] : 0);
    events.FireEvent(event);
  }
  server.Settle();
}

void BM_WantedEventWithPlayers(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) FireRound(server, "player_hurt", int(state.range(0)));
  state.SetItemsProcessed(state.iterations() * kEventsPerRound);
}
BENCHMARK(BM_WantedEventWithPlayers)->Arg(0)->Arg(16)->Arg(64);

void BM_EventNobodyWants(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) FireRound(server, "player_spawn", kSlots);
  state.SetItemsProcessed(state.iterations() * kEventsPerRound);
}
BENCHMARK(BM_EventNobodyWants);

// ---- script lines ----

void RunBlock(benchmark::State& state, const char* block) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock(block, nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kLinesPerBlock);
}

void BM_GetPlayerPropLines(benchmark::State& state) { RunBlock(state, "lines/props"); }
BENCHMARK(BM_GetPlayerPropLines);

void BM_SetLines(benchmark::State& state) { RunBlock(state, "lines/sets"); }
BENCHMARK(BM_SetLines);

// ---- lists ----

void RunList(benchmark::State& state, const char* line) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    server.RunLine(line);
    state.PauseTiming();
    server.RunLine("tw_xkeygroupdelete benchlist");
    state.ResumeTiming();
  }
}

void BM_CreatePlayerList64(benchmark::State& state) { RunList(state, "tw_xcreateplayerlist benchlist"); }
BENCHMARK(BM_CreatePlayerList64)->Unit(benchmark::kMicrosecond);

void BM_CreateEntityList500(benchmark::State& state) {
  Prepared();
  const EntityType& type = *FindEntityType("prop_dynamic");
  while (SimWorld().GetEntityCount() < kEntities) SimWorld().CreateEntity(type, Vector());
  RunList(state, "tw_xcreateentitylist benchlist");
  state.counters["entities"] = SimWorld().GetEntityCount();
}
BENCHMARK(BM_CreateEntityList500)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
