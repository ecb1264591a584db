// KeyValues text throughput: parsing and writing a file of 50,000 player records, the same bytes through a
// plain byte scan for a yardstick, an event resource file of the demo tree, and a deeply nested file. The
// record file is read both as a file read before (every name known) and as the first file a process reads
// (every record name new); both report their time against the byte scan's as `x_scan`.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include "KeyValues.h"
#include "filesystem.h"

namespace {

// 50,000 keys of four values each, in the writer's own layout.
const std::string& BigText() {
  static const std::string text = [] {
    std::string t = "\"players\"\n{\n";
    for (int i = 0; i < 50000; ++i) {
      t += "\t\"" + std::to_string(i) + "\"\n\t{\n";
      t += "\t\t\"name\"\t\t\"Player number " + std::to_string(i) + "\"\n";
      t += "\t\t\"kills\"\t\t\"" + std::to_string(i % 97) + "\"\n";
      t += "\t\t\"ratio\"\t\t\"" + std::to_string(i % 13) + ".500000\"\n";
      t += "\t\t\"steamid\"\t\t\"STEAM_0:1:" + std::to_string(i * 7) + "\"\n\t}\n";
    }
    return t + "}\n";
  }();
  return text;
}

// Writes go nowhere; only the byte count is kept.
class NullFileSystem : public IBaseFileSystem {
public:
  size_t written = 0;
  int Read(void*, int, FileHandle_t) override { return 0; }
  int Write(const void*, int size, FileHandle_t) override {
    written += size_t(size);
    return size;
  }
  FileHandle_t Open(const char*, const char*, const char*) override { return this; }
  void Close(FileHandle_t) override {}
  unsigned int Size(FileHandle_t) override { return 0; }
  bool FileExists(const char*, const char*) override { return false; }
};

// The demo tree's engine event file: many small sections, comments, typical of what start-up reads.
const std::string& EventFile() {
  static const std::string text = [] {
    std::ifstream in(TW_DEMO_TREE "/hl2/resource/serverevents.res", std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    if (all.str().empty()) abort();
    return all.str();
  }();
  return text;
}

// 500 sections, each a chain of groups 200 deep with a value at every level.
const std::string& DeepText() {
  static const std::string text = [] {
    constexpr int kSections = 500;
    constexpr int kDepth = 200;
    std::string t;
    for (int s = 0; s < kSections; ++s) {
      t += "\"section\"\n{\n";
      for (int d = 0; d < kDepth; ++d)
        t += "\"level" + std::to_string(d) + "\"\t\"" + std::to_string(d) + "\"\n\"g\"\n{\n";
      for (int d = 0; d <= kDepth; ++d) t += "}\n";
    }
    return t;
  }();
  return text;
}

// The yardstick: the least a reader must do, look at every byte once and tell a few of them apart.
__attribute__((noinline)) void ByteScan(const std::string& text) {
  size_t quotes = 0, braces = 0, lines = 0;
  for (const char* p = text.c_str(); *p; ++p) {
    switch (*p) {
      case '"': ++quotes; break;
      case '{': case '}': ++braces; break;
      case '\n': ++lines; break;
      default: break;
    }
  }
  benchmark::DoNotOptimize(quotes);
  benchmark::DoNotOptimize(braces);
  benchmark::DoNotOptimize(lines);
}

void BM_ByteScan50kKeys(benchmark::State& state) {
  const std::string& text = BigText();
  for (auto _ : state) ByteScan(text);
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_ByteScan50kKeys)->Unit(benchmark::kMillisecond);

double ThreadSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// One reading of `text` into a tree and the tree's deletion.
void ParseOnce(const std::string& text) {
  KeyValues* kv = new KeyValues("top");
  kv->LoadFromBuffer("bench.txt", text.c_str());
  benchmark::DoNotOptimize(kv);
  kv->deleteThis();
}

// A text read before: its names are known and its node memory is warm.
void Parse(benchmark::State& state, const std::string& text) {
  ParseOnce(text);
  for (auto _ : state) ParseOnce(text);
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// The same, with a byte scan of the same bytes timed beside every reading (outside the measured time), for
// the ratio.
void ParseAgainstScan(benchmark::State& state, const std::string& text) {
  ParseOnce(text);
  double scanSeconds = 0, parseSeconds = 0;
  for (auto _ : state) {
    const double start = ThreadSeconds();
    ParseOnce(text);
    parseSeconds += ThreadSeconds() - start;
    state.PauseTiming();
    const double scanStart = ThreadSeconds();
    ByteScan(text);
    scanSeconds += ThreadSeconds() - scanStart;
    state.ResumeTiming();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
  state.counters["x_scan"] = parseSeconds / scanSeconds;
}

void BM_KeyValuesParse50kKeys(benchmark::State& state) { ParseAgainstScan(state, BigText()); }
BENCHMARK(BM_KeyValuesParse50kKeys)->Unit(benchmark::kMillisecond);

void BM_KeyValuesParseEventFile(benchmark::State& state) { Parse(state, EventFile()); }
BENCHMARK(BM_KeyValuesParseEventFile)->Unit(benchmark::kMicrosecond);

void BM_KeyValuesParseDeep(benchmark::State& state) { Parse(state, DeepText()); }
BENCHMARK(BM_KeyValuesParseDeep)->Unit(benchmark::kMillisecond);

// The first reading of the record file in a process: every name is new to the name table, and the table
// and node memory grow from nothing, as in a newly started server. Each iteration starts this program
// afresh with kFirstReadingChild; that process times a byte scan of the bytes and then the reading (with the
// tree's deletion) in its own CPU time and writes both figures to its standard output.
constexpr const char* kFirstReadingChild = "--first-reading-child";

int FirstReadingChild() {
  const std::string& text = BigText();
  double seconds[2];
  double start = ThreadSeconds();
  ByteScan(text);
  seconds[0] = ThreadSeconds() - start;
  start = ThreadSeconds();
  ParseOnce(text);
  seconds[1] = ThreadSeconds() - start;
  return write(STDOUT_FILENO, seconds, sizeof seconds) == sizeof seconds ? 0 : 1;
}

// Runs a fresh copy of this program as the reading process; false when it failed.
bool RunFirstReading(double seconds[2]) {
  static const std::string self = [] {
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    return std::string(path, n > 0 ? size_t(n) : 0);
  }();
  int channel[2];
  if (self.empty() || pipe(channel) != 0) return false;
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    dup2(channel[1], STDOUT_FILENO);
    close(channel[0]);
    close(channel[1]);
    execl(self.c_str(), self.c_str(), kFirstReadingChild, static_cast<char*>(nullptr));
    _exit(127);
  }
  close(channel[1]);
  const bool reported = read(channel[0], seconds, 2 * sizeof(double)) == 2 * sizeof(double);
  close(channel[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return reported && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void BM_KeyValuesParse50kKeysFirstReading(benchmark::State& state) {
  double scanSeconds = 0, parseSeconds = 0;
  for (auto _ : state) {
    double seconds[2];
    if (!RunFirstReading(seconds)) {
      state.SkipWithError("the reading process failed");
      break;
    }
    scanSeconds += seconds[0];
    parseSeconds += seconds[1];
    state.SetIterationTime(seconds[1]);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(BigText().size()));
  if (scanSeconds > 0) state.counters["x_scan"] = parseSeconds / scanSeconds;
}
BENCHMARK(BM_KeyValuesParse50kKeysFirstReading)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_KeyValuesSave50kKeys(benchmark::State& state) {
  KeyValues* kv = new KeyValues("top");
  kv->LoadFromBuffer("bench.txt", BigText().c_str());
  NullFileSystem fs;
  for (auto _ : state) kv->SaveToFile(&fs, "out.txt");
  state.SetBytesProcessed(int64_t(fs.written));
  kv->deleteThis();
}
BENCHMARK(BM_KeyValuesSave50kKeys)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && strcmp(argv[1], kFirstReadingChild) == 0) return FirstReadingChild();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
