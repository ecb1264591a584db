// The fuzz targets' common shape. A target is a function from one input (any bytes) to nothing; it must
// neither crash nor leak nor hang, whatever the bytes. TW_FUZZ_TARGET(name) defines one and records it in
// the process's list, so that libFuzzer's entry (which picks one by name) and the unit test that replays
// every corpus and regression input (all targets in one binary) call the very same function.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct FuzzTarget {
  const char* name;
  void (*run)(const uint8_t* data, size_t size);
  FuzzTarget* next;
};

// The targets linked into this binary, most recently recorded first.
FuzzTarget* FuzzTargets();

struct FuzzTargetRecord {
  explicit FuzzTargetRecord(FuzzTarget* target);
};

#define TW_FUZZ_TARGET(NAME)                                                     \
  static void FuzzRun_##NAME(const uint8_t* data, size_t size);                  \
  static FuzzTarget s_fuzzTarget_##NAME{#NAME, &FuzzRun_##NAME, nullptr};        \
  static FuzzTargetRecord s_fuzzRecord_##NAME(&s_fuzzTarget_##NAME);             \
  static void FuzzRun_##NAME(const uint8_t* data, size_t size)

// The input cut at every `separator` into at most `maxParts` parts (the last takes the rest).
std::vector<std::string> FuzzSplit(const uint8_t* data, size_t size, char separator, size_t maxParts);
