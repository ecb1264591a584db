// Script library throughput on the stand-in server with the real plugin: regex operations on a 100-character
// string through the console with the share of compiling the pattern, a 200-line file run by tw_mexec from
// its cache against the engine's exec, and push/pop pairs on a named stack of 10,000 entries.
#include <benchmark/benchmark.h>

#include <cstring>
#include <fstream>
#include <string>

#include "bench_server.h"
#include "library/regex.h"

namespace {

constexpr int kCommandsPerBatch = 100;
constexpr int kFileLines = 200;
constexpr int kStackEntries = 10000;

// 100 characters, the match at the start and the search's find near the end.
const char kSubject[] =
    "The quick brown fox jumps over the lazy dog while seven wizards quietly hex a jovial brave lazy cat.";
static_assert(sizeof kSubject - 1 == 100, "the subject is 100 characters");
const char kMatchPattern[] = "(The|A) ([a-z]+) ([a-z]+) fox";
const char kSearchPattern[] = "lazy c[a-z]+";

CStandIn* s_server = nullptr;

CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  std::ofstream file(game / "cfg/bench_lines.cfg", std::ios::binary);
  for (int i = 0; i < kFileLines; ++i) file << "tw_xset bench_x " << i << "\n";
  file.close();
  s_server = bench::StartServer(game);
  s_server->RunLine("tw_xset bench_x 0;tw_xset bench_v 0;stack create bench");
  std::string fill;
  for (int i = 0; i < kStackEntries; ++i) fill += "stack push bench entry" + std::to_string(i) + "\n";
  s_server->Engine().ServerCommand(fill.c_str());
  s_server->Settle();
  return *s_server;
}

// Runs `command` kCommandsPerBatch times through the engine's buffer per iteration.
void RunBatches(benchmark::State& state, const std::string& command) {
  CStandIn& server = Prepared();
  std::string batch;
  for (int i = 0; i < kCommandsPerBatch; ++i) batch += command + "\n";
  for (auto _ : state) {
    server.Engine().ServerCommand(batch.c_str());
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kCommandsPerBatch);
}

// ---- regular expressions ----

void BM_ConsoleCommandBaseline(benchmark::State& state) { RunBatches(state, "tw_xset bench_v 1"); }
BENCHMARK(BM_ConsoleCommandBaseline);

void BM_RegexMatch(benchmark::State& state) {
  RunBatches(state, std::string("tw_xregex match bench_v \"") + kMatchPattern + "\" \"" + kSubject + "\"");
}
BENCHMARK(BM_RegexMatch);

void BM_RegexSearch(benchmark::State& state) {
  RunBatches(state, std::string("tw_xregex search bench_v \"") + kSearchPattern + "\" \"" + kSubject + "\" 0 100");
}
BENCHMARK(BM_RegexSearch);

// Compiling alone, with the same syntax word. Compiling builds no automaton: the first match does.
void CompileAndFree(const char* pattern) {
  re_pattern_buffer buffer = {};
  re_syntax_options = kRegexSyntax;
  benchmark::DoNotOptimize(re_compile_pattern(pattern, strlen(pattern), &buffer));
  regfree(&buffer);
}

void BM_RegexCompileMatchPattern(benchmark::State& state) {
  for (auto _ : state) CompileAndFree(kMatchPattern);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RegexCompileMatchPattern);

void BM_RegexCompileSearchPattern(benchmark::State& state) {
  for (auto _ : state) CompileAndFree(kSearchPattern);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RegexCompileSearchPattern);

// Matching alone: a pattern compiled once and used again, so the engine's lazily built automaton is warm.
// The difference to a whole command is what compiling afresh for every call costs.
void MatchPrecompiled(benchmark::State& state, const char* pattern, bool search) {
  re_pattern_buffer buffer = {};
  re_syntax_options = kRegexSyntax;
  if (re_compile_pattern(pattern, strlen(pattern), &buffer)) state.SkipWithError("pattern does not compile");
  const regoff_t length = regoff_t(strlen(kSubject));
  for (auto _ : state)
    benchmark::DoNotOptimize(search ? re_search(&buffer, kSubject, length, 0, 100, nullptr)
                                    : re_match(&buffer, kSubject, length, 0, nullptr));
  regfree(&buffer);
  state.SetItemsProcessed(state.iterations());
}

void BM_RegexMatchPrecompiled(benchmark::State& state) { MatchPrecompiled(state, kMatchPattern, false); }
BENCHMARK(BM_RegexMatchPrecompiled);

void BM_RegexSearchPrecompiled(benchmark::State& state) { MatchPrecompiled(state, kSearchPattern, true); }
BENCHMARK(BM_RegexSearchPrecompiled);

// ---- memory exec against exec ----

void RunFile(benchmark::State& state, const char* command) {
  CStandIn& server = Prepared();
  server.RunLine(command);  // the first tw_mexec reads the file; the iterations run from the cache
  for (auto _ : state) {
    server.Engine().ServerCommand(command);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kFileLines);
}

void BM_MexecCachedFile(benchmark::State& state) { RunFile(state, "tw_xmexec bench_lines.cfg\n"); }
BENCHMARK(BM_MexecCachedFile);

void BM_ExecFile(benchmark::State& state) { RunFile(state, "exec bench_lines.cfg\n"); }
BENCHMARK(BM_ExecFile);

// ---- named stacks ----

void BM_StackPushPopPairs(benchmark::State& state) {
  RunBatches(state, "stack push bench value;stack pop bench_v bench");
}
BENCHMARK(BM_StackPushPopPairs);

}  // namespace

BENCHMARK_MAIN();
