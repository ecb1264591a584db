// libFuzzer's entry into the target named by TW_FUZZ_TARGET in the environment.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz_target.h"

namespace {
FuzzTarget* s_target = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* name = getenv("TW_FUZZ_TARGET");
  for (FuzzTarget* t = FuzzTargets(); t; t = t->next)
    if (name && strcmp(t->name, name) == 0) s_target = t;
  if (s_target) return 0;
  fprintf(stderr, "tw_fuzz: set TW_FUZZ_TARGET to one of:");
  for (FuzzTarget* t = FuzzTargets(); t; t = t->next) fprintf(stderr, " %s", t->name);
  fprintf(stderr, "\n");
  exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  s_target->run(data, size);
  return 0;
}
