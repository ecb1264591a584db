// KeyValues text throughput: parsing and writing a 50,000-key file.
#include <benchmark/benchmark.h>

#include <cstring>
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

void BM_KeyValuesParse50kKeys(benchmark::State& state) {
  const std::string& text = BigText();
  for (auto _ : state) {
    KeyValues* kv = new KeyValues("top");
    kv->LoadFromBuffer("bench.txt", text.c_str());
    benchmark::DoNotOptimize(kv);
    kv->deleteThis();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_KeyValuesParse50kKeys)->Unit(benchmark::kMillisecond);

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
