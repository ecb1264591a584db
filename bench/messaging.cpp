// Messages to clients on the stand-in server with the real plugin and 64 people connected: a tell to one
// player and a chat line to all 64, through the console (tw_xtell, tw_xmsg) and straight through the send
// functions; a six-field tw_usermsg send; a menu of 1,000 characters (five pieces); an emitted sound. The
// delivery lines are off, so the stand-in only decodes menus. Each benchmark also reports the heap
// allocations per send: the direct sends show the plugin's own, which is the filter's one array.
// The replaced operator new counts and forwards to malloc; GCC can't see that the pair matches.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "bench_server.h"
#include "messaging/chat.h"

namespace {

std::atomic<long long> s_allocations{0};

}  // namespace

void* operator new(size_t size) {
  s_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { free(p); }
void operator delete(void* p, size_t) noexcept { free(p); }

namespace {

constexpr int kPeople = 64;

CStandIn* s_server = nullptr;

// A stand-in server with 64 slots, each taken by a person (userids 2 to 65), deliveries hidden, and the
// six-field message "six" in the store.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  StandInConfig config;
  config.gameDir = bench::CopyDemo().string();
  config.maxPlayers = kPeople;
  s_server = new CStandIn(config);
  s_server->Start(&CreateInterface, "tidewright");
  for (int i = 0; i < kPeople; ++i) s_server->RunLine(("sim_connect Person" + std::to_string(i)).c_str());
  s_server->RunLine("sim_messages off");
  s_server->RunLine(
      "tw_xusermsg create six HudMsg;tw_xusermsg write byte six 1;tw_xusermsg write short six 300;"
      "tw_xusermsg write long six 70000;tw_xusermsg write float six 0.5;tw_xusermsg write char six -3;"
      "tw_xusermsg write string six \"six fields\"");
  return *s_server;
}

// Runs `send` per iteration; messages per second and heap allocations per send.
template <class Send>
void Measure(benchmark::State& state, int messagesPerSend, Send send) {
  Prepared();
  long long before = s_allocations.load();
  for (auto _ : state) send();
  long long allocations = s_allocations.load() - before;
  state.SetItemsProcessed(state.iterations() * messagesPerSend);
  state.counters["allocs_per_send"] = benchmark::Counter(double(allocations) / double(state.iterations()));
}

void BM_TellOnePlayer(benchmark::State& state) {
  Measure(state, 1, [] { s_server->RunLine("tw_xtell 2 #green hello there"); });
}
BENCHMARK(BM_TellOnePlayer);

void BM_MsgSixtyFourPeople(benchmark::State& state) {
  Measure(state, 1, [] { s_server->RunLine("tw_xmsg hello everybody"); });
}
BENCHMARK(BM_MsgSixtyFourPeople);

void BM_SendChatLineToOne(benchmark::State& state) {
  Measure(state, 1, [] { SendChatLineTo(2, CHAT_PLAIN, "hello there\n"); });
}
BENCHMARK(BM_SendChatLineToOne);

void BM_SendChatLineToSixtyFour(benchmark::State& state) {
  Measure(state, 1, [] { SendChatLine(CHAT_PLAIN, "hello everybody\n"); });
}
BENCHMARK(BM_SendChatLineToSixtyFour);

void BM_UserMsgSendSixFields(benchmark::State& state) {
  Measure(state, 1, [] { s_server->RunLine("tw_xusermsg send six 2"); });
}
BENCHMARK(BM_UserMsgSendSixFields);

void BM_Menu1000Characters(benchmark::State& state) {
  static const std::string line = "tw_xmenu 0 2 \"" + std::string(1000, 'm') + "\"";
  Measure(state, 5, [] { s_server->RunLine(line.c_str()); });
}
BENCHMARK(BM_Menu1000Characters);

void BM_EmitSound(benchmark::State& state) {
  Measure(state, 1, [] { s_server->RunLine("tw_xemitsound player 2 ambient/bench.wav 1 1"); });
}
BENCHMARK(BM_EmitSound);

}  // namespace

BENCHMARK_MAIN();
