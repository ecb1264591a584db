// The list of fuzz targets and the input splitting they share.
#include "fuzz_target.h"

namespace {
FuzzTarget* s_targets = nullptr;
}

FuzzTarget* FuzzTargets() { return s_targets; }

FuzzTargetRecord::FuzzTargetRecord(FuzzTarget* target) {
  target->next = s_targets;
  s_targets = target;
}

std::vector<std::string> FuzzSplit(const uint8_t* data, size_t size, char separator, size_t maxParts) {
  std::vector<std::string> parts(1);
  for (size_t i = 0; i < size; ++i) {
    if (char(data[i]) == separator && parts.size() < maxParts)
      parts.emplace_back();
    else
      parts.back().push_back(char(data[i]));
  }
  return parts;
}
