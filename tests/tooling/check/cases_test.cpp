// The checker's cases: cases/tw_NAME.txt holds a script with one kind of mistake (or none: tw_clean.txt),
// cases/NAME.expected the exact report. The names come from a stand-in on a copy of the demo tree as built,
// with one event file of a script's own (custom.res) and a Python addon (pyaddon). UPDATE=1 writes the
// reports instead of comparing.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "checks.h"

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

struct Source {
  std::string path;  // as shown in findings
  std::string text;
};

class CheckCases : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && tmp[0] ? tmp : "/tmp") + "/tw-check-cases-XXXXXX";
    ASSERT_TRUE(mkdtemp(pattern.data()));
    s_root = pattern;
    fs::copy(TW_DEMO_TREE, s_root, fs::copy_options::recursive);
    fs::create_directories(fs::path(s_root) / "game/addons/tidewright/custom");
    std::ofstream(fs::path(s_root) / "game/addons/tidewright/custom/custom.res")
        << "\"custom\"\n{\n  \"custom_signal\"\n  {\n    \"strength\" \"short\"\n  }\n}\n";
    fs::create_directories(fs::path(s_root) / "game/addons/tidewright/pyaddon");
    std::ofstream(fs::path(s_root) / "game/addons/tidewright/pyaddon/pyaddon.py")
        << "import tw\n\n@tw.block(\"report\")\ndef report() -> None:\n    print(\"report\")\n";
    std::vector<Source> all;
    for (const fs::path& file : CaseFiles()) all.push_back({file.filename().string(), ReadFile(file)});
    std::string error;
    s_known = new ServerKnowledge;
    ASSERT_TRUE(s_known->Learn(s_root + "/game", Facts(all).eventFiles, error)) << error;
  }

  static void TearDownTestSuite() {
    delete s_known;
    std::error_code ignored;
    fs::remove_all(s_root, ignored);
  }

  static std::vector<fs::path> CaseFiles() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(TW_CHECK_CASES))
      if (entry.path().extension() == ".txt") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
  }

  static ScriptFacts Facts(const std::vector<Source>& sources) {
    Findings ignored;
    std::vector<ScannedScript> scripts;
    for (const Source& s : sources) scripts.push_back(ScanScript(int(scripts.size()), s.path, s.text, ignored));
    return GatherFacts(scripts);
  }

  // The report of checking these scripts together.
  static std::string Report(const std::vector<Source>& sources) {
    Findings findings;
    std::vector<ScannedScript> scripts;
    for (const Source& s : sources) scripts.push_back(ScanScript(int(scripts.size()), s.path, s.text, findings));
    CheckScripts(scripts, GatherFacts(scripts), *s_known, findings);
    return findings.Text();
  }

  static inline std::string s_root;
  static inline ServerKnowledge* s_known = nullptr;
};

TEST_F(CheckCases, EachCaseGivesItsReport) {
  const bool update = getenv("UPDATE") && std::string(getenv("UPDATE")) == "1";
  const std::vector<fs::path> files = CaseFiles();
  ASSERT_GE(files.size(), 10u);
  for (const fs::path& file : files) {
    const std::string name = file.stem().string().substr(3);  // tw_NAME
    const fs::path expected = file.parent_path() / (name + ".expected");
    const std::string report = Report({{file.filename().string(), ReadFile(file)}});
    if (update) {
      std::ofstream(expected, std::ios::binary) << report;
      continue;
    }
    ASSERT_TRUE(fs::exists(expected)) << "no report for " << file.filename() << ": run with UPDATE=1 and read it";
    EXPECT_EQ(report, ReadFile(expected)) << "case " << name;
  }
}

TEST_F(CheckCases, CleanCaseReportsNothing) { EXPECT_EQ(ReadFile(fs::path(TW_CHECK_CASES) / "clean.expected"), ""); }

// A script may use what another checked script makes: its blocks, aliases, commands and variables.
TEST_F(CheckCases, ScriptsCheckedTogetherKnowWhatEachOtherMakes) {
  const Source maker{"addons/tidewright/maker/tw_maker.txt",
                     "block load\n{\n  alias maker_greet \"echo hi\"\n  tw_xregcmd maker_cmd maker/run \"runs\"\n"
                     "  tw_xset maker_var 1\n}\nblock run\n{\n  echo run\n}\n"};
  const Source user{"addons/tidewright/user/tw_user.txt",
                    "block go\n{\n  maker_greet\n  maker_cmd\n  maker_var 2\n  tw_xdoblock maker/run\n}\n"};
  EXPECT_EQ(Report({maker, user}), "");
  EXPECT_EQ(Report({user}),
            "addons/tidewright/user/tw_user.txt:3: error: unknown command \"maker_greet\"\n"
            "addons/tidewright/user/tw_user.txt:4: error: unknown command \"maker_cmd\"\n"
            "addons/tidewright/user/tw_user.txt:5: error: unknown command \"maker_var\"\n"
            "addons/tidewright/user/tw_user.txt:6: error: no block \"maker/run\" in the checked scripts or the scripts "
            "loaded at start-up\n");
}

// Two files of one script name: the second's sections take names already taken.
TEST_F(CheckCases, SectionsOfOneNameAcrossFiles) {
  const Source a{"one/addons/tidewright/same/tw_same.txt", "block hello\n{\n}\n"};
  const Source b{"two/addons/tidewright/same/tw_same.txt", "\n\nblock hello\n{\n}\n"};
  EXPECT_EQ(Report({a, b}), "two/addons/tidewright/same/tw_same.txt:3: error: duplicate block \"same/hello\" (first at "
                            "one/addons/tidewright/same/tw_same.txt:1): tw_doblock finds only the first\n");
}

// Names and events ignore case, block names don't: the cases spell everything as declared.
TEST_F(CheckCases, CaseOfNamesBlocksAndEvents) {
  EXPECT_TRUE(s_known->IsName("ECHO"));
  EXPECT_TRUE(s_known->IsEvent("PLAYER_DEATH"));
  EXPECT_TRUE(s_known->IsBlock("corelib/swap"));
  EXPECT_FALSE(s_known->IsBlock("corelib/Swap"));
}

}  // namespace
