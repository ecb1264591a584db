// An allocation counter for the benchmarks: the binary that includes this header (once) takes over malloc,
// calloc, realloc and free for the whole process, the plugin and the stand-in included, and counts calls
// and live bytes. The sanitizer build keeps its own allocator, and the counter then reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

struct AllocCounts {
  uint64_t calls = 0;     // malloc, calloc and realloc calls
  int64_t liveBytes = 0;  // usable bytes of the blocks not yet freed
  int64_t peakBytes = 0;  // the most live bytes seen since the last ResetPeak
};

#if defined(TW_SANITIZE)
inline bool AllocCounterAvailable() { return false; }
inline AllocCounts AllocSnapshot() { return {}; }
inline void AllocResetPeak() {}
#else
inline AllocCounts g_allocCounts;
inline bool AllocCounterAvailable() { return true; }
inline AllocCounts AllocSnapshot() { return g_allocCounts; }
inline void AllocResetPeak() { g_allocCounts.peakBytes = g_allocCounts.liveBytes; }
#endif

}  // namespace bench

#if !defined(TW_SANITIZE)
#include <malloc.h>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void __libc_free(void* memory);
}

namespace bench_alloc {
inline void Gained(void* memory) {
  if (!memory) return;
  bench::AllocCounts& c = bench::g_allocCounts;
  ++c.calls;
  c.liveBytes += int64_t(malloc_usable_size(memory));
  if (c.liveBytes > c.peakBytes) c.peakBytes = c.liveBytes;
}
inline void Lost(void* memory) {
  if (memory) bench::g_allocCounts.liveBytes -= int64_t(malloc_usable_size(memory));
}
}  // namespace bench_alloc

extern "C" {
void* malloc(size_t size) {
  void* memory = __libc_malloc(size);
  bench_alloc::Gained(memory);
  return memory;
}
void* calloc(size_t count, size_t size) {
  void* memory = __libc_calloc(count, size);
  bench_alloc::Gained(memory);
  return memory;
}
void* realloc(void* memory, size_t size) {
  bench_alloc::Lost(memory);
  void* moved = __libc_realloc(memory, size);
  if (moved)
    bench_alloc::Gained(moved);
  else if (memory && size)
    bench_alloc::Gained(memory);  // a failed realloc keeps the old block
  return moved;
}
void free(void* memory) {
  bench_alloc::Lost(memory);
  __libc_free(memory);
}
}
#endif
