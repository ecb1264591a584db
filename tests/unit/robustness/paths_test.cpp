// Every command that opens a file, offered every way out of the server root: climbing with "..", an
// absolute path, backslashes, the data and subdirectory variables pointing out, and links inside the root
// that lead out. Outside the root wait files that say OUTSIDE when they are read, run or loaded; none of
// them may be, and nothing may be written outside.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "test_server.h"

namespace {

namespace fs = std::filesystem;

std::set<std::string> Listing(const fs::path& dir) {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(dir)) names.insert(entry.path().string());
  return names;
}

// Whether any regular file under `dir` (links not followed) holds `needle`.
bool AnyFileHolds(const fs::path& dir, const std::string& needle) {
  for (const auto& entry : fs::recursive_directory_iterator(dir)) {
    if (!entry.is_regular_file() || entry.is_symlink()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    if (text.str().find(needle) != std::string::npos) return true;
  }
  return false;
}

class Paths : public ::testing::Test {
protected:
  void SetUp() override {
    outside = fs::path(server.Root()).string() + "-paths";
    WriteTestFile(outside / "evil.cfg", "echo OUTSIDE exec ran\n");
    WriteTestFile(outside / "x/tw_x.txt", "block load\n{\n  echo OUTSIDE script loaded\n}\n");
    WriteTestFile(outside / "tw_kept_db.txt", "\"kept\"\n{\n  \"k\"\n  {\n    \"v\" \"OUTSIDE\"\n  }\n}\n");
    sqlite3* db = nullptr;
    sqlite3_open((outside / "tw_canary.sqldb").c_str(), &db);
    sqlite3_exec(db, "create table t(x); insert into t values('OUTSIDE');", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    fs::path game = server.GameDir();
    fs::create_directory_symlink(outside, game / "cfg/inlink");
    fs::create_directory_symlink(outside, game / "addons/tidewright/inlink");
    before = Listing(outside);
    server.Run("tw_set fz_v none");
  }
  void TearDown() override {
    server.Run("tidewright_datadirectory cfg\ntidewright_subdirectory \"\"");
    for (const char* link : {"cfg/inlink", "addons/tidewright/inlink"}) fs::remove(fs::path(server.GameDir()) / link);
    fs::remove_all(outside);
  }

  TestServer& server = TestServer::Shared();
  fs::path outside;
  std::set<std::string> before;
};

TEST_F(Paths, NothingOutsideTheRootIsReadRunOrWritten) {
  const std::string out = outside.filename().string();
  // @ climbs out of cfg/ (three steps: cfg, game, the root); % out of addons/tidewright/ (four); # is the
  // absolute path of the outside folder.
  const std::string attempts[] = {
      "exec @/evil", "exec #/evil", "exec ..\\..\\..\\OUTDIR\\evil", "exec inlink/evil", "exec inlink\\evil",
      "tw_mexec @/evil.cfg", "tw_mexec #/evil.cfg", "tw_mexec ..\\..\\..\\OUTDIR\\evil.cfg", "tw_mexec inlink/evil.cfg",
      "tw_load %/x", "tw_load #/x", "tw_load ..\\..\\..\\..\\OUTDIR\\x", "tw_load inlink/x", "tw_load inlink\\x",
      "tw_keygroupload kept @", "tw_keygroupload kept #", "tw_keygroupload kept |%", "tw_keygroupload kept inlink",
      "tw_keygroupload kept |inlink", "tw_keygroupload kept ..\\..\\..\\OUTDIR",
      "tw_keygroupsave made @", "tw_keygroupsave made #", "tw_keygroupsave made |%", "tw_keygroupsave made inlink",
      "tw_keygroupsave made |inlink",
      "tw_sql open canary @", "tw_sql open canary #", "tw_sql open canary inlink", "tw_sql open fresh @",
      "tw_sql open fresh inlink", "tw_sql open fresh #",
      "tidewright_datadirectory ../../OUTDIR", "tidewright_datadirectory #", "tidewright_datadirectory cfg/inlink",
      "tidewright_datadirectory ..\\..\\OUTDIR",
      "tidewright_subdirectory @", "tidewright_subdirectory inlink", "tidewright_subdirectory #"};
  for (std::string line : attempts) {
    line = Replaced(Replaced(Replaced(Replaced(line, "@", "../../../" + out), "%", "../../../../" + out), "#",
                             outside.string()),
                    "OUTDIR", out);
    std::string output = server.Run(line);
    // Whatever a variable now points at, the keygroup and database commands go through it.
    output += server.Run(
        "tw_keygroupcreate made\ntw_keygroupsave made\ntw_keygroupload kept\ntw_keygroupsave kept\n"
        "tw_sql open canary\ntw_sql queryvalue canary fz_v \"select x from t\"\ntw echo server_var(fz_v)\n"
        "tw_sql close canary\ntw_sql open fresh\ntw_sql close fresh\ntw_keygroupdelete made\ntw_keygroupdelete kept");
    output += server.Run("tw_sql queryvalue canary fz_v \"select x from t\"\ntw echo server_var(fz_v)\n"
                         "tw_sql close canary\ntw_sql close fresh\ntw_keygroupdelete made\ntw_keygroupdelete kept\n"
                         "tidewright_datadirectory cfg\ntidewright_subdirectory \"\"\ntw_set fz_v none");
    EXPECT_EQ(output.find("OUTSIDE"), std::string::npos) << line << "\n" << output;
    EXPECT_EQ(Listing(outside), before) << line;
  }
  EXPECT_FALSE(AnyFileHolds(server.Root(), "OUTSIDE"));
}

// The same reads inside the root do find the marked files: the test above can see a file that was read.
TEST_F(Paths, TheMarkedFilesAreSeenWhenTheyAreInside) {
  fs::path cfg = fs::path(server.GameDir()) / "cfg";
  fs::copy(outside, cfg / "inner", fs::copy_options::recursive);
  fs::create_directories(fs::path(server.GameDir()) / "addons/tidewright/inner/x");
  fs::copy(outside / "x", fs::path(server.GameDir()) / "addons/tidewright/inner/x", fs::copy_options::recursive);
  const struct {
    const char* line;
    const char* seen;
  } cases[] = {
      {"exec inner/evil", "OUTSIDE exec ran"},
      {"tw_mexec inner/evil.cfg", "OUTSIDE exec ran"},
      {"tw_load inner/x", "OUTSIDE script loaded"},
      {"tw_keygroupload kept inner\ntw_keygetvalue fz_v kept k v\ntw echo server_var(fz_v)", "OUTSIDE"},
      {"tw_sql open canary inner\ntw_sql queryvalue canary fz_v \"select x from t\"\ntw echo server_var(fz_v)",
       "OUTSIDE"},
      {"tidewright_datadirectory cfg/inner\ntw_keygroupload kept\ntw_keygetvalue fz_v kept k v\ntw echo server_var(fz_v)",
       "OUTSIDE"},
      {"tidewright_subdirectory inner\ntw_keygroupdelete kept\ntw_keygroupload kept\ntw_keygetvalue fz_v kept k v\n"
       "tw echo server_var(fz_v)",
       "OUTSIDE"},
  };
  for (const auto& c : cases) {
    std::string output = server.Run(c.line);
    EXPECT_NE(output.find(c.seen), std::string::npos) << c.line << "\n" << output;
    server.Run("tw_set fz_v none\ntidewright_datadirectory cfg\ntidewright_subdirectory \"\"");
  }
  server.Run("tw_unload inner/x\ntw_keygroupdelete kept\ntw_sql close canary\ntw_set fz_v none");
  fs::remove_all(cfg / "inner");
  fs::remove_all(fs::path(server.GameDir()) / "addons/tidewright/inner");
}

}  // namespace
