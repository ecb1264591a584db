// KeyValues text throughput: parsing and writing a file of 50,000 player records, the same bytes through a
// plain byte scan for a yardstick, an event resource file of the demo tree, and a deeply nested file.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
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

void Parse(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    KeyValues* kv = new KeyValues("top");
    kv->LoadFromBuffer("bench.txt", text.c_str());
    benchmark::DoNotOptimize(kv);
    kv->deleteThis();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

void BM_KeyValuesParse50kKeys(benchmark::State& state) { Parse(state, BigText()); }
BENCHMARK(BM_KeyValuesParse50kKeys)->Unit(benchmark::kMillisecond);

void BM_KeyValuesParseEventFile(benchmark::State& state) { Parse(state, EventFile()); }
BENCHMARK(BM_KeyValuesParseEventFile)->Unit(benchmark::kMicrosecond);

void BM_KeyValuesParseDeep(benchmark::State& state) { Parse(state, DeepText()); }
BENCHMARK(BM_KeyValuesParseDeep)->Unit(benchmark::kMillisecond);

// The yardstick: the least a reader must do, look at every byte once and tell a few of them apart.
void BM_ByteScan50kKeys(benchmark::State& state) {
  const std::string& text = BigText();
  for (auto _ : state) {
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
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_ByteScan50kKeys)->Unit(benchmark::kMillisecond);

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

BENCHMARK_MAIN();
