// Every input kept for the fuzz targets, replayed through the targets' own functions in the ordinary build:
// the seed corpora (fuzz/corpus/<target>/) and the inputs that once crashed or hung a target
// (fuzz/regressions/<target>/). Each must run to its end; the sanitizer build checks the memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "fuzz_target.h"

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> Inputs(const std::string& kind, const char* target) {
  std::vector<fs::path> files;
  fs::path dir = fs::path(TW_FUZZ_DIR) / kind / target;
  if (fs::is_directory(dir))
    for (const fs::directory_entry& entry : fs::directory_iterator(dir))
      if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void Replay(const FuzzTarget& target, const std::vector<fs::path>& files) {
  for (const fs::path& file : files) {
    SCOPED_TRACE(file.string());
    std::ifstream in(file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    target.run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  }
}

std::vector<const FuzzTarget*> Targets() {
  std::vector<const FuzzTarget*> targets;
  for (const FuzzTarget* t = FuzzTargets(); t; t = t->next) targets.push_back(t);
  return targets;
}

TEST(FuzzCases, EveryTargetHasASeedCorpus) {
  std::set<std::string> names;
  for (const FuzzTarget* target : Targets()) {
    EXPECT_FALSE(Inputs("corpus", target->name).empty()) << target->name;
    names.insert(target->name);
  }
  EXPECT_GE(names.size(), 11u);
  // A folder of inputs for a target that no longer exists would be replayed by nothing.
  for (const char* kind : {"corpus", "regressions"}) {
    fs::path dir = fs::path(TW_FUZZ_DIR) / kind;
    if (!fs::is_directory(dir)) continue;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir))
      EXPECT_TRUE(names.count(entry.path().filename().string())) << entry.path();
  }
}

TEST(FuzzCases, RegressionInputsRunToTheirEnd) {
  for (const FuzzTarget* target : Targets()) Replay(*target, Inputs("regressions", target->name));
}

TEST(FuzzCases, SeedCorporaRunToTheirEnd) {
  for (const FuzzTarget* target : Targets()) Replay(*target, Inputs("corpus", target->name));
}

}  // namespace
