// Python's costs on the stand-in server with the real plugin and the real package: a binder call against
// the same command as a console line and as a script line, one event to one Python handler against the same
// event to one script block, an event nobody wants while ten addons that want others are loaded, and the
// frame's tick with no addon and with ten addons that tick. Items are calls, lines or events.
#include <benchmark/benchmark.h>

#include <Python.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "bench_server.h"
#include "igameevents.h"
#include "python/steps.h"
#include "script/machine.h"

namespace {

constexpr int kPerRound = 1000;
constexpr int kAddons = 10;

CStandIn* s_server = nullptr;
PyObject* s_binderLoop = nullptr;
PyObject* s_globals = nullptr;

void WriteAddon(const bench::fs::path& game, const std::string& name, const std::string& source) {
  bench::fs::path path = game / "addons/tidewright" / name / (name + ".py");
  bench::fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << "import tw\nimport tw_C\n" << source;
}

// One script block of kPerRound lines of tw_xset; a script and an addon that hear one event each; ten addons
// that hear round_end and tick.
CStandIn& Prepared() {
  if (s_server) return *s_server;
  bench::fs::path game = bench::CopyDemo();
  std::string lines = "block lines\n{\n";
  for (int i = 0; i < kPerRound; ++i) lines += "tw_xset bench_x 1\n";
  bench::WriteScript(game, "bench", lines + "}\nevent player_death\n{\ntw_xset bench_x 1\n}\n");
  WriteAddon(game, "pysolo", "@tw.event('player_hurt')\ndef hurt(event):\n    tw_C.set('bench_x', 1)\n");
  for (int i = 0; i < kAddons; ++i)
    WriteAddon(game, "quiet" + std::to_string(i),
               "@tw.event('round_end')\ndef ended(event):\n    pass\n@tw.tick\ndef tick():\n    pass\n");
  s_server = bench::StartServer(game);
  s_server->RunLine("tw_xset bench_x 0;tw_xload bench;tw_xload pysolo");
  s_globals = PyDict_New();
  PyDict_SetItemString(s_globals, "__builtins__", PyEval_GetBuiltins());
  PyRun_String("import tw_C\nbinder = tw_C.set\nrounds = range(1000)\n", Py_file_input, s_globals, s_globals);
  s_binderLoop = Py_CompileString("for _ in rounds: binder('bench_x', 1)\n", "<bench>", Py_file_input);
  if (!s_binderLoop) abort();
  return *s_server;
}

void LoadQuietAddons(CStandIn& server, bool loaded) {
  for (int i = 0; i < kAddons; ++i)
    server.RunLine(((loaded ? "tw_xload quiet" : "tw__unload quiet") + std::to_string(i)).c_str());
}

// ---- a binder against a line ----

void BM_BinderSet(benchmark::State& state) {
  Prepared();
  for (auto _ : state) {
    PyObject* result = PyEval_EvalCode(s_binderLoop, s_globals, s_globals);
    if (!result) abort();
    Py_DECREF(result);
  }
  state.SetItemsProcessed(state.iterations() * kPerRound);
}
BENCHMARK(BM_BinderSet);

void BM_ConsoleLineSet(benchmark::State& state) {
  CStandIn& server = Prepared();
  std::string lines;
  for (int i = 0; i < kPerRound; ++i) lines += "tw_xset bench_x 1\n";
  for (auto _ : state) {
    server.Cbuf().AddText(lines.c_str());
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kPerRound);
}
BENCHMARK(BM_ConsoleLineSet);

void BM_ScriptLineSet(benchmark::State& state) {
  CStandIn& server = Prepared();
  for (auto _ : state) {
    DoBlock("bench/lines", nullptr);
    server.Settle();
  }
  state.SetItemsProcessed(state.iterations() * kPerRound);
}
BENCHMARK(BM_ScriptLineSet);

// ---- events ----

void FireRound(CStandIn& server, const char* name) {
  CGameEventManager& events = server.Events();
  for (int i = 0; i < kPerRound; ++i) {
    IGameEvent* event = events.CreateEvent(name, false);
    if (!event) abort();
    event->SetInt("userid", 2);
    events.FireEvent(event);
  }
  server.Settle();
}

void RunEvents(benchmark::State& state, const char* name, bool quietAddons) {
  CStandIn& server = Prepared();
  LoadQuietAddons(server, quietAddons);
  for (auto _ : state) FireRound(server, name);
  LoadQuietAddons(server, false);
  state.SetItemsProcessed(state.iterations() * kPerRound);
}

void BM_EventToOnePythonHandler(benchmark::State& state) { RunEvents(state, "player_hurt", false); }
BENCHMARK(BM_EventToOnePythonHandler);

void BM_EventToOneScriptBlock(benchmark::State& state) { RunEvents(state, "player_death", false); }
BENCHMARK(BM_EventToOneScriptBlock);

void BM_EventNobodyWantsBesideTenAddons(benchmark::State& state) { RunEvents(state, "player_spawn", true); }
BENCHMARK(BM_EventNobodyWantsBesideTenAddons);

// The same with brannock_python 0: what the stand-in and the script side cost without Python's question.
void BM_EventNobodyWantsPythonOff(benchmark::State& state) {
  Prepared().RunLine("brannock_python 0");
  RunEvents(state, "player_spawn", true);
  Prepared().RunLine("brannock_python 1");
}
BENCHMARK(BM_EventNobodyWantsPythonOff);

// ---- the frame's tick ----

void BM_Tick(benchmark::State& state) {
  CStandIn& server = Prepared();
  LoadQuietAddons(server, state.range(0) > 0);
  for (auto _ : state) Python_OnFrame();
  LoadQuietAddons(server, false);
}
BENCHMARK(BM_Tick)->Arg(0)->Arg(kAddons);

}  // namespace

BENCHMARK_MAIN();
