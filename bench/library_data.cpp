// Script library throughput on the stand-in server with the real plugin: mathparse evaluations and ifx
// script lines through the shared expression parser, tw_format with nine placeholders, the delayed list
// (scheduling 10,000 commands, a frame with nothing due at 0 and at 10,000 pending, the cost of serving one
// command) and SQL (10,000 inserts in one transaction through tw_sql query, a select of them into a keygroup).
// Allocations are counted by this binary's operator new, so that an idle frame can show it makes none.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <new>
#include <string>

#include "bench_server.h"
#include "library/delayed.h"
#include "script/machine.h"

namespace {
size_t s_allocations = 0;
}  // namespace

// The replacements pair malloc with free by design; GCC can't see that through inlining.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size) {
  ++s_allocations;
  if (void* block = malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { free(block); }
void operator delete(void* block, size_t) noexcept { free(block); }

namespace {

constexpr int kCommandsPerBatch = 100;
constexpr int kIfxLines = 1000;
constexpr int kPending = 10000;
constexpr int kRows = 10000;

CStandIn* s_server = nullptr;

CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  std::string block = "block ifx\n{\n";
  for (int i = 0; i < kIfxLines; ++i) block += "ifx parse(\"2*bench_x+1 > 5\") do\n";
  bench::WriteScript(game, "bench", block + "}\n");
  s_server = bench::StartServer(game);
  s_server->RunLine("tw_xset bench_x 3;tw_xset bench_v 0;tw_xset bench_f \"\";tw_xload bench");
  s_server->RunLine("tw_sql open bench;tw_sql query bench \"create table t(id integer, name text)\"");
  return *s_server;
}

// `count` copies of a line, run as one text through the engine's buffer.
void RunRepeated(CStandIn& server, const std::string& line, int count) {
  std::string text;
  text.reserve((line.size() + 1) * size_t(count));
  for (int i = 0; i < count; ++i) text += line + "\n";
  server.Engine().ServerCommand(text.c_str());
  server.Settle();
}

// ---- expressions and formats ----

void BM_MathParse(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) RunRepeated(server, "tw_xmathparse bench_v \"2*bench_x+1\"", kCommandsPerBatch);
  state.SetItemsProcessed(state.iterations() * kCommandsPerBatch);
}
BENCHMARK(BM_MathParse);

void BM_IfxParseLines(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/ifx", nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kIfxLines);
}
BENCHMARK(BM_IfxParseLines);

void BM_FormatNinePlaceholders(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state)
    RunRepeated(server, "tw_xformat bench_f \"%1 %2 %3 %4 %5 %6 %7 %8 %9\" a bb ccc dddd e f g h i",
                kCommandsPerBatch);
  state.SetItemsProcessed(state.iterations() * kCommandsPerBatch);
}
BENCHMARK(BM_FormatNinePlaceholders);

// ---- delayed commands ----

// 10,000 tw_xdelayed lines with delays spread over 100 values, so that most land among equal times.
void BM_DelayedSchedule(benchmark::State& state) {
  CStandIn& server = Prepared();
  std::string text;
  for (int i = 0; i < kPending; ++i) text += "tw_xdelayed " + std::to_string(1000 + i % 100) + " echo x\n";
  for (auto _ : state) {
    server.Engine().ServerCommand(text.c_str());
    server.Settle();
    state.PauseTiming();
    Delayed_OnLevelInit();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kPending);
}
BENCHMARK(BM_DelayedSchedule)->Unit(benchmark::kMillisecond);

// A frame's hook with nothing due, with none, one or 10,000 commands pending that never fall due. With any
// pending it reads the engine's clock; the length of the list costs nothing.
void BM_DelayedIdleFrame(benchmark::State& state) {
  Prepared();
  Delayed_OnLevelInit();
  // Never due: the stand-in's clock gives the next larger float at each reading within a frame, so a finite
  // time would fall due after enough readings.
  for (int i = 0; i < state.range(0); ++i) Delayed_Schedule(INFINITY, "echo never");
  const size_t before = s_allocations;
  for (auto _ : state) Delayed_OnFrame();
  state.counters["allocations"] = double(s_allocations - before);
  Delayed_OnLevelInit();
}
BENCHMARK(BM_DelayedIdleFrame)->Arg(0)->Arg(1)->Arg(kPending);

// Handing one due command to the engine's buffer and unlinking it.
void BM_DelayedServe(benchmark::State& state) {
  CStandIn& server = Prepared();
  Delayed_OnLevelInit();
  const float due = server.Engine().Time() - 1.0f;
  int pending = 0;
  for (auto _ : state) {
    if (pending == 0) {
      state.PauseTiming();
      server.Cbuf().Clear();
      for (int i = 0; i < kPending; ++i) Delayed_Schedule(due, "echo served");
      pending = kPending;
      state.ResumeTiming();
    }
    Delayed_OnFrame();
    --pending;
  }
  Delayed_OnLevelInit();
  server.Cbuf().Clear();
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DelayedServe);

// ---- SQL ----

void BM_SqlInsertsInOneTransaction(benchmark::State& state) {
  CStandIn& server = Prepared();
  std::string text = "tw_sql query bench \"begin\"\n";
  for (int i = 0; i < kRows; ++i)
    text += "tw_sql query bench \"insert into t values(" + std::to_string(i) + ", 'name " + std::to_string(i) + "')\"\n";
  text += "tw_sql query bench \"commit\"\n";
  for (auto _ : state) {
    server.Engine().ServerCommand(text.c_str());
    server.Settle();
    state.PauseTiming();
    server.RunLine("tw_sql query bench \"delete from t\"");
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_SqlInsertsInOneTransaction)->Unit(benchmark::kMillisecond);

void BM_SqlSelectIntoKeygroup(benchmark::State& state) {
  CStandIn& server = Prepared();
  std::string fill = "tw_sql query bench \"begin\"\n";
  for (int i = 0; i < kRows; ++i)
    fill += "tw_sql query bench \"insert into t values(" + std::to_string(i) + ", 'name " + std::to_string(i) + "')\"\n";
  fill += "tw_sql query bench \"commit\"\n";
  server.Engine().ServerCommand(fill.c_str());
  server.Settle();
  for (auto _ : state) {
    server.RunLine("tw_sql query bench bench_rows \"select id, name from t\"");
    state.PauseTiming();
    server.RunLine("tw_keygroupdelete bench_rows");
    state.ResumeTiming();
  }
  server.RunLine("tw_sql query bench \"delete from t\"");
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_SqlSelectIntoKeygroup)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
